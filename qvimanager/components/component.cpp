#include "qvimanager/components/component.h"

#include "qvimanager/foundation/class_name.h"

#include <typeinfo>

namespace Utilities {

ComponentBase::~ComponentBase() = default;

Component::Component() : creator(nullptr) {}

Component::Component(const Component& other) : ComponentBase(other), creator(other.creator) {}

Component& Component::operator=(const Component& other)
{
    if (this != &other) {
        creator = other.creator;
    }
    return *this;
}

Component::~Component()
{
    if (creator != nullptr) {
        creator->DecrementInstanceCounter();
        creator = nullptr;
    }
}

void Component::FreeInstance()
{
    delete this;
}

void Component::Invariant() const {}

bool Component::PrepareForUnload()
{
    return true;
}

void Component::SetCreator(ComponentCreatorBase* madeBy)
{
    creator = madeBy;
}

ComponentCreatorBase* Component::GetCreator() const
{
    return creator;
}

ComponentCreatorBase::~ComponentCreatorBase() = default;

void ComponentCreatorBase::Invariant() const {}

Diagnostics::String ComponentCreatorBase::InstanceCountLabel() const
{
    Diagnostics::String value(GetRuntimeClassName(typeid(*this)).GetCharPointer());
    value += ": Actual instance count = ";
    value += Diagnostics::String(GetInstanceCount());
    return value;
}

Map<String, Anything> MakeComponentDescriptor(const char* name, const char* version, const char* category)
{
    Map<String, Anything> descriptor;
    descriptor[String("name")] = Anything(name);
    descriptor[String("version")] = Anything(version);
    descriptor[String("category")] = Anything(category);
    return descriptor;
}

} // namespace Utilities
