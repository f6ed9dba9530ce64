#ifndef QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_KIT_H
#define QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_KIT_H

// The diagnostics singleton. It owns the memory manager that every
// Diagnostics::String takes its blocks from, holds up to five publishers
// that every log item goes to, and counts the call depth of the trace
// objects (the indent). It is made on first use and deleted by a static
// remover at the end of the process: its destructor first unregisters each
// publisher it still holds (one whose delete flag is set, such as the
// WinDebugPublisher, deletes itself then), and only then deletes the pool,
// which those publishers' strings still need. A Diagnostics::String must not
// outlive the library's static objects.
//
// The publisher table has five slots and no more:
// - RegisterPublisher stores into the first empty slot; when all five are
//   taken, the registration is ignored (the publisher gets no items).
// - UnregisterPublisher clears the first slot holding the pointer; a
//   pointer that no slot holds changes nothing.
//
// Threads: the kit, its slots and its indent are used under PoolGuard()
// (memory_manager.h), the one recursive lock of the diagnostics layer,
// which also guards the pool, the filter lists of Publisher and the
// publishers' output. Every operation here may be called from any thread.
// Publish holds the lock while the publishers run, so lines never mix; a
// publisher must therefore not wait for a lock that another thread may hold
// while it traces or makes a Diagnostics::String. The indent is one count
// for the whole process: when two threads trace at once their lines
// interleave and the indent of either means nothing, but no count is lost.

#include <cstdint>

namespace Diagnostics {

class LogItem;
class MemoryManager;
class Publisher;

class DiagnosticKit {
public:
    static constexpr unsigned PublisherCount = 5;

    static DiagnosticKit& Instance();

    // Hands the item to the publisher of each occupied slot, from slot 0 to
    // slot 4.
    void Publish(LogItem& item) const;

    // The fixed-block pool, made on first use.
    MemoryManager& Memory();

    // Adds 1 to the indent and returns the new value.
    unsigned GetIndent();
    // Subtracts 1 from the indent (an unsigned count: below 0 it wraps).
    void ReturnIndent();

    // Stores the publisher in the first empty slot; ignored when all five
    // slots are taken.
    void RegisterPublisher(Publisher* publisher);
    // Clears the first slot holding the publisher; nothing happens when no
    // slot holds it. The publisher itself is not deleted here.
    void UnregisterPublisher(Publisher* publisher);

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
    Publisher* publishers[PublisherCount];
    std::uint32_t indent;

    static DiagnosticKit* psmInstance;
    static bool asmWasInstanciated;
    static InstanceRemover agInstanceRemover;
};

} // namespace Diagnostics

#endif
