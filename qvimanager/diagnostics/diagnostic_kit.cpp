#include "qvimanager/diagnostics/diagnostic_kit.h"

#include "qvimanager/diagnostics/memory_manager.h"
#include "qvimanager/diagnostics/publisher.h"
#include "qvimanager/diagnostics/trace.h"

#include <mutex>

namespace Diagnostics {

namespace {

using Hold = std::lock_guard<std::recursive_mutex>;

} // namespace

DiagnosticKit* DiagnosticKit::psmInstance = nullptr;
bool DiagnosticKit::asmWasInstanciated = false;
DiagnosticKit::InstanceRemover DiagnosticKit::agInstanceRemover;

DiagnosticKit& DiagnosticKit::Instance()
{
    const Hold hold(PoolGuard());
    if (psmInstance == nullptr) {
        psmInstance = new DiagnosticKit();
        asmWasInstanciated = true;
    }
    return *psmInstance;
}

DiagnosticKit::DiagnosticKit() : memoryManager(nullptr), publishers(), indent(0) {}

DiagnosticKit::~DiagnosticKit()
{
    const Hold hold(PoolGuard());
    for (unsigned slot = 0; slot < PublisherCount; ++slot) {
        if (publishers[slot] != nullptr) {
            publishers[slot]->UnregisterPublisher();
        }
    }
    delete memoryManager;
    memoryManager = nullptr;
}

void DiagnosticKit::Publish(LogItem& item) const
{
    const Hold hold(PoolGuard());
    for (unsigned slot = 0; slot < PublisherCount; ++slot) {
        if (publishers[slot] != nullptr) {
            publishers[slot]->Publish(item);
        }
    }
}

MemoryManager& DiagnosticKit::Memory()
{
    const Hold hold(PoolGuard());
    if (memoryManager == nullptr) {
        memoryManager = new FixBlockSizeMemoryManager();
    }
    return *memoryManager;
}

unsigned DiagnosticKit::GetIndent()
{
    const Hold hold(PoolGuard());
    ++indent;
    return indent;
}

void DiagnosticKit::ReturnIndent()
{
    const Hold hold(PoolGuard());
    --indent;
}

void DiagnosticKit::RegisterPublisher(Publisher* publisher)
{
    const Hold hold(PoolGuard());
    for (Publisher*& slot : publishers) {
        if (slot == nullptr) {
            slot = publisher;
            return;
        }
    }
    // All five slots are taken: the publisher is not stored.
}

void DiagnosticKit::UnregisterPublisher(Publisher* publisher)
{
    const Hold hold(PoolGuard());
    for (Publisher*& slot : publishers) {
        if (slot == publisher) {
            slot = nullptr;
            return;
        }
    }
    // No slot holds it: nothing to clear.
}

DiagnosticKit::InstanceRemover::~InstanceRemover()
{
    // No trace point may make the kit and its publisher anew from here on.
    TraceSwitch::Close();
    const Hold hold(PoolGuard());
    delete psmInstance;
    psmInstance = nullptr;
}

} // namespace Diagnostics
