#ifndef QVIMANAGER_PLATFORM_MUTEX_H
#define QVIMANAGER_PLATFORM_MUTEX_H

// Mutex: a lock owned by a thread, with a timeout.
//
//     Utilities::Mutex guard(Utilities::String("Calibration"));  // named
//     if (guard.Lock(5000)) {       // wait up to 5 s; -1 waits for ever
//         ...
//         guard.Unlock();
//     }
//
// The owner may lock again without waiting (each Lock needs its Unlock).
// An unnamed Mutex (empty name) serves the threads of one process; a named
// one is shared by every process of the user that makes a Mutex of the
// same name. A thread or process that ends owning it leaves it abandoned,
// and the next Lock gets it.
//
// Mutex holds no platform code: its constructor resolves the component
// "MutexImplementation" (MutexImplementation below) through the naming
// service. A Mutex without an implementation does nothing, and its Lock
// always reports success. Lock and Unlock never throw: a failure of the
// implementation is swallowed (Lock then reports success too).
//
// Copies share the implementation, and so the lock. Make, copy and drop
// Mutex objects on one thread at a time (their sharing is not
// synchronised, and the constructor asks the naming service, which is not
// either); Lock and Unlock may come from any thread.

#include "qvimanager/components/component.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class MutexImplementation;

class Mutex {
public:
    // Resolves "MutexImplementation" and initialises it with `name`; an
    // empty name makes an unnamed mutex. Without an implementation nothing
    // is raised. What the naming service or the implementation's
    // Initialize throws passes through.
    explicit Mutex(const String& name);

    // Waits up to `timeout` milliseconds (negative: for ever; 0: only
    // tries) and reports whether this thread owns the mutex now. True
    // without an implementation, and true when the implementation throws.
    bool Lock(long timeout);
    // Releases one Lock of this thread. Failures are swallowed.
    void Unlock();

    // "Utilities::Mutex: " and the implementation's GetValueString(), or
    // "Utilities::Mutex: no implementation".
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

private:
    SmartPointer<MutexImplementation> implementation;
};

// The component that does the locking for Mutex. The library's own is
// "MutexImplementation" "$Revision: 1.5 $", category "Multithreading"; a
// plug-in may offer a newer one. Each Mutex resolves an instance of its
// own.
class MutexImplementation : public Component {
public:
    // Slot 5 (behind Component's four). The run-time class name.
    virtual Diagnostics::String GetValueString() const;
    // Slot 6. Makes the platform mutex, not owned: named if `name` is not
    // empty.
    virtual void Initialize(const String& name) = 0;
    // Slot 7. Waits up to `timeout` ms; true if this thread owns it now.
    virtual bool Lock(long timeout) = 0;
    // Slot 8. Releases one Lock of this thread.
    virtual void Unlock() = 0;

protected:
    MutexImplementation() = default;
};

} // namespace Utilities

#endif
