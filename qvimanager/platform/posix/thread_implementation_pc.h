#ifndef QVIMANAGER_PLATFORM_POSIX_THREAD_IMPLEMENTATION_PC_H
#define QVIMANAGER_PLATFORM_POSIX_THREAD_IMPLEMENTATION_PC_H

// ThreadImplementation_PC: the library's component "ThreadImplementation"
// ("$Revision: 1.4 $", category "Multithreading"), one instance per started
// Thread. See thread.h for what Thread makes of it.
//
// The worker is a std::thread. Whether it is still active is a flag that
// the worker clears when Run has returned; the exit code is Run's result,
// -1 if an exception left Run, and 259 (StillActive) while Run runs.
//
// Forced termination: no thread can be stopped safely from outside on this
// platform. Where a worker would be terminated, the exit code becomes
// 99999 (ForcedTerminationExitCode), the worker is detached and left to end
// at its next check of the terminate flag; it then keeps the exit code
// 99999. The worker keeps what it needs of this object (its flag and exit
// code) to itself, so this object may go while the worker runs on; the
// Thread it runs must stay alive until Run returns (see thread.h).

#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/thread.h"

namespace Utilities {

class ThreadImplementation_PC : public ThreadImplementation {
public:
    // The exit code that a worker reports while Run runs.
    static constexpr long StillActive = 259;
    // The exit code of a worker that was given up.
    static constexpr long ForcedTerminationExitCode = 99999;

    // No worker.
    ThreadImplementation_PC();
    // Deletes the worker object: a worker that has ended is joined, one
    // that still runs is detached and runs on (a Thread started twice drops
    // its first implementation so).
    ~ThreadImplementation_PC() override;

    // "name" "ThreadImplementation", "version" "$Revision: 1.4 $",
    // "category" "Multithreading".
    static Map<String, Anything> GetDescriptor();

    // "Utilities::ThreadImplementation_PC: " then "no worker", "worker
    // running" or "worker ended, exit code " and the code.
    Diagnostics::String GetValueString() const override;
    // 1. No worker: returns. 2. Worker ended: returns. 3. Sleeps the whole
    // `milliseconds` in one sleep. 4. Worker ended: returns. 5. Gives the
    // worker up (exit code 99999, detached).
    void KillThread(unsigned long milliseconds) const override;
    // Starts a worker that calls thread->Run(), at once, with the default
    // stack size; a worker of an earlier call is dropped as by the
    // destructor. A null `thread`: ExceptionNullpointer "Failed to access
    // to nullpointer.". A worker that cannot be started:
    // ExceptionMultithreading "Could not start thread".
    void StartThread(Thread* thread) override;

    // The worker's exit code into *code (StillActive while it runs); false,
    // and *code untouched, without a worker.
    bool GetExitCode(long* code) const;

private:
    ThreadImplementation_PC(const ThreadImplementation_PC&);
    ThreadImplementation_PC& operator=(const ThreadImplementation_PC&);

    class Worker;
    // The platform worker-thread object: null until StartThread. Kept after
    // Run has returned, so that its exit code can still be read.
    Worker* worker;
};

} // namespace Utilities

#endif
