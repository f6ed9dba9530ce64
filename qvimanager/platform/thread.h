#ifndef QVIMANAGER_PLATFORM_THREAD_H
#define QVIMANAGER_PLATFORM_THREAD_H

// Thread: a worker that runs the Run of a derived class.
//
//     class Poller : public Utilities::Thread {
//     public:
//         ~Poller() override { KillThread(1000); }   // before the members go
//         long Run() override
//         {
//             while (!ShouldThreadTerminate()) {
//                 ... one short step ...
//             }
//             return 0;
//         }
//     };
//
//     Poller poller;
//     poller.StartThread();     // Run begins on a worker of its own
//     ...
//     poller.KillThread(500);   // asks Run to end, waits 500 ms
//
// Thread holds no platform code: StartThread resolves the component
// "ThreadImplementation" (ThreadImplementation below) through the naming
// service, so a plug-in with a newer revision of it replaces the library's.
//
// Stopping is cooperative. KillThread sets the terminate flag, and Run is
// expected to test ShouldThreadTerminate often and return when it is set.
// KillThread(ms) then waits in one single sleep of the whole `ms` (a worker
// that ends early still costs the full wait, and a worker that has ended
// before costs nothing). A worker that is still inside Run after the wait
// is given up ("forced termination", exit code 99999): on this platform no
// thread can be stopped from outside safely, so the worker is left to run
// on its own and ends at its next check of the terminate flag.
//
// What the caller must therefore see to:
// - Run tests ShouldThreadTerminate at least as often as the shortest wait
//   it is given (the destructor gives 1000 ms); a Run that blocks longer is
//   still running after KillThread has returned.
// - The Thread object, and everything Run uses, outlives Run. ~Thread stops
//   the worker, but it runs after the destructors of the derived class: a
//   derived class whose Run uses members of its own calls KillThread in its
//   own destructor (as above). After a forced termination the object must
//   stay alive until Run has returned; Run can signal that as its last act.
// - StartThread and KillThread come from one controlling thread: Thread
//   itself takes no lock. StartThread asks the naming service, which is
//   not synchronised either (see naming_service.h).
//
// The terminate flag is atomic: the worker reads it while the controlling
// thread writes it.

#include "qvimanager/components/component.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/smart_pointer.h"

#include <atomic>

namespace Utilities {

class ThreadImplementation;

class Thread {
public:
    // Terminate flag false, no implementation.
    Thread();

    // Slot 1. Empty.
    virtual void Invariant() const;
    // Slot 2. The run-time class name, then ": idle" or ": started (" and
    // the implementation's GetValueString() ")".
    virtual Diagnostics::String GetValueString() const;
    // Slot 3. The work of the thread, run on the worker. Its result is the
    // worker's exit code; an exception that leaves it is swallowed and the
    // exit code is then -1.
    virtual long Run() = 0;
    // Behind the three slots. If a worker was started and not killed:
    // KillThread(1000); what an implementation's KillThread throws is
    // swallowed here.
    virtual ~Thread();

    // Resolves "ThreadImplementation", replacing any implementation held
    // before (a worker started before keeps running: nothing checks for
    // one), clears the terminate flag and starts Run on a new worker.
    // Without an implementation: ExceptionMultithreading "Could not load
    // thread implementation" (never translated). What the implementation
    // throws passes through.
    void StartThread();
    // Without an implementation (never started, or killed already): does
    // nothing, and the terminate flag stays as it is. Otherwise sets the
    // terminate flag, lets the implementation wait up to `milliseconds` for
    // the worker (one sleep of the whole time, see above), and drops the
    // implementation.
    void KillThread(unsigned long milliseconds);

    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

protected:
    // True once KillThread has asked Run to end.
    bool ShouldThreadTerminate() const;

private:
    std::atomic<bool> terminate;
    SmartPointer<ThreadImplementation> implementation;
};

// The component that runs workers for Thread. The library's own is
// "ThreadImplementation" "$Revision: 1.4 $", category "Multithreading"; a
// plug-in may offer a newer one. Each Thread::StartThread resolves a new
// instance, which serves that one worker.
class ThreadImplementation : public Component {
public:
    // Slot 5 (behind Component's four). The run-time class name.
    virtual Diagnostics::String GetValueString() const;
    // Slot 6. Called by Thread::KillThread after it has set the terminate
    // flag: waits up to `milliseconds` for the worker to end and gives it
    // up if it has not.
    virtual void KillThread(unsigned long milliseconds) const = 0;
    // Slot 7. Runs thread->Run() on a new worker and returns at once.
    virtual void StartThread(Thread* thread) = 0;

protected:
    ThreadImplementation() = default;
};

} // namespace Utilities

#endif
