#include "qvimanager/platform/mutex.h"

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/class_name.h"

#include <typeinfo>

namespace Utilities {

Mutex::Mutex(const String& name) : implementation(Resolve<MutexImplementation>(String("MutexImplementation")))
{
    if (implementation.IsValid()) {
        implementation->Initialize(name);
    }
}

bool Mutex::Lock(long timeout)
{
    bool locked = true;
    if (implementation.IsValid()) {
        try {
            locked = implementation->Lock(timeout);
        } catch (...) {
        }
    }
    return locked;
}

void Mutex::Unlock()
{
    if (implementation.IsValid()) {
        try {
            implementation->Unlock();
        } catch (...) {
        }
    }
}

Diagnostics::String Mutex::GetValueString() const
{
    Diagnostics::String text("Utilities::Mutex: ");
    if (implementation.IsValid()) {
        text += implementation->GetValueString();
    } else {
        text += "no implementation";
    }
    return text;
}

Diagnostics::String MutexImplementation::GetValueString() const
{
    return Diagnostics::String(GetRuntimeClassName(typeid(*this)).GetCharPointer());
}

} // namespace Utilities
