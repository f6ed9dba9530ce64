#ifndef QVIMANAGER_INSTRUMENTS_INSTRUMENT_EVENTS_H
#define QVIMANAGER_INSTRUMENTS_INSTRUMENT_EVENTS_H

// InstrumentEvents_V1: turns the state of an instrument's buttons and its
// connection into events for the application.
//
//     SmartPointer<Component> instrument = ...;        // an InstrumentButtons_V1
//     InstrumentEvents_V1 events(instrument);          // polls from now on
//     events.RegisterCallback(String("Button"), Callback(...));
//     ...
//     events.StopPolling();                            // waits 1000 ms
//
// A poll thread asks the instrument about every 500 ms which event names
// matter (GetButtonEvents), asks it which of them occurred (PollButtons),
// and posts each of those, in the map's iteration order, to the component
// "MessageService" (GUI::MessageService), which hands them to the
// callbacks that applications registered under the events' names.
//
// The poll period is a timed Lock(500) on the wait mutex, which the
// constructing thread holds for the object's whole life and never
// releases: the Lock always times out, and nothing shortens the wait. With
// no "MutexImplementation" the Lock returns at once and the loop runs
// without a pause. So does it when the thread that made the object ends
// before the object: the wait mutex is then abandoned, the poll thread's
// Lock gets it, and the poll thread, its owner now, gets it again at once
// in every later cycle. Make the object on a thread that outlives it.
//
// Any exception in a poll cycle is swallowed and ends that cycle only: an
// application callback that throws loses the events that would have
// followed it in the same cycle, and polling goes on. A null instrument, an
// instrument that is no InstrumentButtons_V1, or a missing message service
// costs one failed cycle per period, with no report.
//
// Threads: the instrument, the message service and the application's
// callbacks are called on the poll thread, without a lock; they must
// tolerate that. RegisterCallback calls the instrument from the
// controlling thread too. The polling flag, StartPolling, StopPolling and
// the destructor belong to the controlling thread only. The poll thread
// makes no copy of the instrument's or the service's SmartPointer, whose
// counts are not synchronised.
//
// Destruction: the destructor first stops the poll thread with
// KillThread(1000), and only then releases the instrument, the wait mutex
// and the message service, so the poll thread never uses a member that is
// gone. (Leaving the stop to ~Thread, which runs after the members are
// destroyed, would let the poll thread touch destroyed objects.) The cost
// of destroying a polling object is the full 1000 ms wait, as for
// StopPolling; a poll thread still inside a cycle after that wait is given
// up (see thread.h).

#include "qvimanager/components/component.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/instruments/interfaces/message_service.h"
#include "qvimanager/platform/callback.h"
#include "qvimanager/platform/mutex.h"
#include "qvimanager/platform/thread.h"

namespace QVIManager {

class InstrumentEvents_V1 : public Utilities::Thread, public Utilities::Component {
public:
    // Keeps `instrument` (which may be empty), resolves "MessageService"
    // (an empty result is no error), takes the wait mutex for good and
    // starts polling. A wait mutex that cannot be taken is traced as
    // "Could lock Wait mutex." (package "QVIManager", class
    // "InstrumentEvents_V1"); polling then runs without a pause. Without a
    // thread implementation:
    // ExceptionMultithreading, from StartThread.
    explicit InstrumentEvents_V1(const Utilities::SmartPointer<Utilities::Component>& instrument);
    // Stops the poll thread (KillThread(1000)) before any member goes.
    ~InstrumentEvents_V1() override;

    // Thread slot 1. Empty.
    void Invariant() const override;
    // Thread slot 2. The run-time class name, then ": polling" or
    // ": stopped".
    Diagnostics::String GetValueString() const override;
    // Thread slot 3. The poll loop; ends when asked to, with 0.
    long Run() override;

    // Thread slot 4. Registers `callback` under `event` with the message
    // service. Any event but "Connection" is first announced to the
    // instrument: PollButtons with a list of just that name, the result
    // dropped. An instrument that is no InstrumentButtons_V1 (for such an
    // event), or no message service: ExceptionNullpointer "Failed to access
    // to nullpointer.". What the instrument or the service throws passes
    // through.
    virtual void RegisterCallback(const Utilities::String& event, Utilities::Callback callback);
    // Thread slot 5. The message service's UnregisterCallback; without a
    // service ExceptionNullpointer "Failed to access to nullpointer.".
    virtual void UnregisterCallback(const Utilities::String& event);
    // Thread slot 6. When polling: KillThread(1000), which waits the full
    // second, and stopped. (A loop without a pause, see above, may have
    // ended before KillThread looks, and then costs nothing.) When stopped:
    // nothing.
    virtual void StopPolling();
    // Thread slot 7. When stopped: starts a new poll thread (resolving a new
    // thread implementation), and polling. When polling: nothing.
    virtual void StartPolling();

    InstrumentEvents_V1(const InstrumentEvents_V1&) = delete;
    // Changes nothing: an object keeps its own instrument and thread.
    InstrumentEvents_V1& operator=(const InstrumentEvents_V1& other);

private:
    // 1 while the poll thread runs, else 0.
    int polling;
    Utilities::SmartPointer<GUI::MessageService> messageService;
    // Held by the constructing thread; only ever waited on.
    Utilities::Mutex wait;
    Utilities::SmartPointer<Utilities::Component> instrument;
};

} // namespace QVIManager

#endif
