#include "qvimanager/diagnostics/trace.h"

#include <cstdlib>
#include <cstring>

namespace Diagnostics {

namespace {

constexpr int SwitchUnread = 0;
constexpr int SwitchOn = 1;
constexpr int SwitchOff = 2;

std::atomic<int> gSwitch{SwitchUnread};

int ReadSwitch()
{
    const char* const value = std::getenv("QVIMANAGER_TRACE");
    const bool on = value != nullptr && value[0] != '\0' && std::strcmp(value, "0") != 0;
    return on ? SwitchOn : SwitchOff;
}

} // namespace

bool TraceSwitch::IsOn()
{
    int state = gSwitch.load(std::memory_order_acquire);
    if (state == SwitchUnread) {
        // Two threads may read the variable at once; the first answer stays,
        // and a Close in between wins.
        int expected = SwitchUnread;
        gSwitch.compare_exchange_strong(expected, ReadSwitch(), std::memory_order_acq_rel);
        state = gSwitch.load(std::memory_order_acquire);
    }
    return state == SwitchOn;
}

void TraceSwitch::Close()
{
    gSwitch.store(SwitchOff, std::memory_order_release);
}

bool TraceSite::Decide() const
{
    if (!TraceSwitch::IsOn()) {
        // Off for good: the switch never turns on again.
        state.store(Off, std::memory_order_relaxed);
        return false;
    }
    unsigned char decided = state.load(std::memory_order_relaxed);
    if (decided == Undecided) {
        // The filter lists are fixed once read, so the answer holds for the
        // life of the process. Two threads may ask at once: both get the
        // same answer.
        decided = TraceItem::IsDiagnosticsToBeCarriedOut(package, className) ? On : Off;
        state.store(decided, std::memory_order_relaxed);
    }
    return decided == On;
}

void TraceMessage(const TraceSite& site, const void* object, const char* function, const String& text)
{
    DebugTraceItem item(object, site.Package(), site.ClassName(), function);
    item.AddParameter(text.c_str());
    item.LogCall();
}

} // namespace Diagnostics
