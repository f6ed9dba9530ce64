#include "qvimanager/diagnostics/win_debug_publisher.h"

#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/memory_manager.h"

#include <mutex>

namespace Diagnostics {

namespace {

using Hold = std::lock_guard<std::recursive_mutex>;

const char* const kOutputFile = "DebugOutput.txt";

} // namespace

WinDebugPublisher* WinDebugPublisher::amInstance = nullptr;

WinDebugPublisher& WinDebugPublisher::Instance()
{
    // Held while the object is made: it is registered with the kit before
    // its file is open, and no item may reach it before then.
    const Hold hold(PoolGuard());
    if (amInstance == nullptr) {
        amInstance = new WinDebugPublisher();
    }
    return *amInstance;
}

WinDebugPublisher::WinDebugPublisher()
    : StringPublisher(true), output(kOutputFile, std::ios::out | std::ios::trunc)
{
}

WinDebugPublisher::~WinDebugPublisher()
{
    const Hold hold(PoolGuard());
    DiagnosticKit::Instance().UnregisterPublisher(this);
    if (amInstance == this) {
        amInstance = nullptr;
    }
    output.close();
}

void WinDebugPublisher::Publish(const String& text)
{
    const Hold hold(PoolGuard());
    if (!output.is_open()) {
        return;
    }
    output << text.c_str() << '\n';
    output.flush();
}

} // namespace Diagnostics
