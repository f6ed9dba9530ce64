#ifndef QVIMANAGER_PLATFORM_CALLBACK_H
#define QVIMANAGER_PLATFORM_CALLBACK_H

// Callback: how the library calls back into an application.
//
// The application derives from CallbackImplementation and hands it over in
// a Callback:
//
//     class OnButton : public Utilities::CallbackImplementation {
//     public:
//         long Execute(const Utilities::Anything& event) override { ...; return 0; }
//         bool IsValid() const override { return true; }
//     };
//
//     Utilities::Callback callback(Utilities::SmartPointer<Utilities::CallbackImplementation>(new OnButton));
//
// A default Callback holds a NullCallbackImplementation: safe to execute,
// and not valid. Copies share the implementation.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/smart_pointer.h"

namespace Utilities {

class CallbackImplementation {
public:
    CallbackImplementation() = default;
    CallbackImplementation(const CallbackImplementation&) = default;
    CallbackImplementation& operator=(const CallbackImplementation&) = default;

    // Slot 1. Empty.
    virtual void Invariant() const;
    // Slot 2. The run-time class name.
    virtual Diagnostics::String GetValueString() const;
    // Slot 3. Does what the callback is for with `argument`; the result is
    // the callback's own.
    virtual long Execute(const Anything& argument) = 0;
    // Slot 4. Whether this callback does anything.
    virtual bool IsValid() const = 0;
    // Behind the four slots.
    virtual ~CallbackImplementation();
};

// The callback that does nothing.
class NullCallbackImplementation : public CallbackImplementation {
public:
    // Asks `argument` for its value string, drops it, and returns 0.
    long Execute(const Anything& argument) override;
    // False.
    bool IsValid() const override;
};

class Callback {
public:
    // Holds a new NullCallbackImplementation.
    Callback();
    // Holds `implementation`, which may be empty: Execute and IsValid then
    // throw.
    explicit Callback(const SmartPointer<CallbackImplementation>& implementation);
    // Shares the other's implementation.
    Callback(const Callback& other);
    Callback& operator=(const Callback& other);
    ~Callback();

    // The implementation's Execute. Without one: ExceptionNullpointer
    // "Failed to access to nullpointer.".
    long Execute(const Anything& argument);
    // The implementation's IsValid. Without one: ExceptionNullpointer
    // "Failed to access to nullpointer.".
    bool IsValid() const;

    // "Utilities::Callback: " and the implementation's GetValueString(), or
    // "Utilities::Callback: no implementation".
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

private:
    SmartPointer<CallbackImplementation> implementation;
};

} // namespace Utilities

#endif
