#include "qvimanager/platform/thread.h"

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/class_name.h"
#include "qvimanager/foundation/exception.h"

#include <typeinfo>

namespace Utilities {

Thread::Thread() : terminate(false), implementation()
{
}

Thread::~Thread()
{
    if (implementation.IsValid()) {
        try {
            KillThread(1000);
        } catch (...) {
            // A destructor cannot pass it on.
        }
    }
}

void Thread::Invariant() const
{
}

Diagnostics::String Thread::GetValueString() const
{
    Diagnostics::String text(GetRuntimeClassName(typeid(*this)).GetCharPointer());
    if (!implementation.IsValid()) {
        text += ": idle";
        return text;
    }
    text += ": started (";
    text += implementation->GetValueString();
    text += ")";
    return text;
}

void Thread::StartThread()
{
    implementation = Resolve<ThreadImplementation>(String("ThreadImplementation"));
    if (!implementation.IsValid()) {
        throw ExceptionMultithreading(String("Could not load thread implementation"));
    }
    terminate = false;
    implementation->StartThread(this);
}

void Thread::KillThread(unsigned long milliseconds)
{
    if (!implementation.IsValid()) {
        return;
    }
    terminate = true;
    implementation->KillThread(milliseconds);
    implementation = SmartPointer<ThreadImplementation>();
}

bool Thread::ShouldThreadTerminate() const
{
    return terminate;
}

Diagnostics::String ThreadImplementation::GetValueString() const
{
    return Diagnostics::String(GetRuntimeClassName(typeid(*this)).GetCharPointer());
}

} // namespace Utilities
