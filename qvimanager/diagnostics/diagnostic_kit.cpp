#include "qvimanager/diagnostics/diagnostic_kit.h"

#include "qvimanager/diagnostics/memory_manager.h"

namespace Diagnostics {

DiagnosticKit* DiagnosticKit::psmInstance = nullptr;
bool DiagnosticKit::asmWasInstanciated = false;
DiagnosticKit::InstanceRemover DiagnosticKit::agInstanceRemover;

DiagnosticKit& DiagnosticKit::Instance()
{
    if (psmInstance == nullptr) {
        psmInstance = new DiagnosticKit();
        asmWasInstanciated = true;
    }
    return *psmInstance;
}

DiagnosticKit::DiagnosticKit() : memoryManager(nullptr) {}

DiagnosticKit::~DiagnosticKit()
{
    delete memoryManager;
}

MemoryManager& DiagnosticKit::Memory()
{
    if (memoryManager == nullptr) {
        memoryManager = new FixBlockSizeMemoryManager();
    }
    return *memoryManager;
}

DiagnosticKit::InstanceRemover::~InstanceRemover()
{
    delete psmInstance;
    psmInstance = nullptr;
}

} // namespace Diagnostics
