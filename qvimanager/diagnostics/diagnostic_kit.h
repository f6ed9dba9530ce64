#ifndef QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_KIT_H
#define QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_KIT_H

// The diagnostics singleton. It owns the memory manager that every
// Diagnostics::String takes its blocks from. It is made on first use and
// deleted, with the pool, by a static remover at the end of the process: a
// Diagnostics::String must not outlive the library's static objects.

namespace Diagnostics {

class MemoryManager;

class DiagnosticKit {
public:
    static DiagnosticKit& Instance();

    // The fixed-block pool, made on first use.
    MemoryManager& Memory();

    DiagnosticKit(const DiagnosticKit&) = delete;
    DiagnosticKit& operator=(const DiagnosticKit&) = delete;

    // Deletes the instance at the end of the process and clears the pointer.
    class InstanceRemover {
    public:
        InstanceRemover() = default;
        ~InstanceRemover();
        InstanceRemover(const InstanceRemover&) = delete;
        InstanceRemover& operator=(const InstanceRemover&) = delete;
    };

private:
    DiagnosticKit();
    ~DiagnosticKit();

    MemoryManager* memoryManager;

    static DiagnosticKit* psmInstance;
    static bool asmWasInstanciated;
    static InstanceRemover agInstanceRemover;
};

} // namespace Diagnostics

#endif
