#include "qvimanager/platform/callback.h"

#include "qvimanager/foundation/class_name.h"

#include <typeinfo>

namespace Utilities {

void CallbackImplementation::Invariant() const
{
}

Diagnostics::String CallbackImplementation::GetValueString() const
{
    return Diagnostics::String(GetRuntimeClassName(typeid(*this)).GetCharPointer());
}

CallbackImplementation::~CallbackImplementation() = default;

long NullCallbackImplementation::Execute(const Anything& argument)
{
    const Diagnostics::String ignored = argument.GetValueString();
    (void)ignored;
    return 0;
}

bool NullCallbackImplementation::IsValid() const
{
    return false;
}

Callback::Callback() : implementation(new NullCallbackImplementation())
{
}

Callback::Callback(const SmartPointer<CallbackImplementation>& held) : implementation(held)
{
}

Callback::Callback(const Callback& other) = default;
Callback& Callback::operator=(const Callback& other) = default;
Callback::~Callback() = default;

// The pointer's own access throws "Failed to access to nullpointer." when
// it is empty.
long Callback::Execute(const Anything& argument)
{
    return implementation->Execute(argument);
}

bool Callback::IsValid() const
{
    return implementation->IsValid();
}

Diagnostics::String Callback::GetValueString() const
{
    Diagnostics::String text("Utilities::Callback: ");
    if (implementation.IsValid()) {
        text += implementation->GetValueString();
    } else {
        text += "no implementation";
    }
    return text;
}

} // namespace Utilities
