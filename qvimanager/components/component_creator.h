#ifndef QVIMANAGER_COMPONENTS_COMPONENT_CREATOR_H
#define QVIMANAGER_COMPONENTS_COMPONENT_CREATOR_H

// The two kinds of creator. A component class T offers a static
// `Map<String, Anything> GetDescriptor()`, and its file defines one creator
// object at file scope:
//
//     static Utilities::ComponentCreatorNormal<MyDriver> creator;
//
// The creator's constructor registers it in the file's ComponentFactory, so
// a file announces its components just by being loaded. A module that
// defines creators links QVIManager::ComponentFactory (a plug-in built with
// qvimanager_add_plugin does).
//
// A creator must live as long as its file: the factory keeps a pointer to
// it and has no way to forget one.

#include "qvimanager/components/component.h"
#include "qvimanager/components/component_factory.h"

#include <type_traits>

namespace Utilities {

// Each CreateComponent makes a new T and counts it; ~Component counts it
// down again.
template <typename T>
class ComponentCreatorNormal : public ComponentCreatorBase {
    static_assert(std::is_base_of_v<Component, T>, "a component class derives from Utilities::Component");

public:
    ComponentCreatorNormal() : instanceCount(0)
    {
        ComponentFactory::RegisterAtLoad(this);
    }

    // The run-time class name of the creator, then ": Actual instance count
    // = " and the count.
    Diagnostics::String GetValueString() const override
    {
        return InstanceCountLabel();
    }

    // T::GetDescriptor().
    Map<String, Anything> GetDescriptor() const override
    {
        return T::GetDescriptor();
    }

    // Makes a new T into *out, which lets go of what it held; the new
    // object reports to this creator and is counted. With a null `out` the
    // object is made and released at once, uncounted. Whatever T's
    // constructor throws passes through, and nothing is counted.
    void CreateComponent(SmartPointer<Component>* out) override
    {
        SmartPointer<T> made(new T);
        if (out != nullptr) {
            *out = DynamicCast<Component>(made);
            (*out)->SetCreator(this);
            ++instanceCount;
        }
    }

    // One instance fewer; returns the new count.
    unsigned long DecrementInstanceCounter() override
    {
        return --instanceCount;
    }

    unsigned long GetInstanceCount() const override
    {
        return instanceCount;
    }

    // Always ready: the owner of the file asks the instance count.
    bool PrepareForUnload() override
    {
        return true;
    }

private:
    unsigned long instanceCount;
};

// One T for the whole file, made on the first CreateComponent and kept by
// the creator until the file goes. Its counts are read from the shared
// pointer: the object does not report back to the creator.
template <typename T>
class ComponentCreatorSingleton : public ComponentCreatorBase {
    static_assert(std::is_base_of_v<Component, T>, "a component class derives from Utilities::Component");

public:
    ComponentCreatorSingleton() : instance()
    {
        ComponentFactory::RegisterAtLoad(this);
    }

    // As ComponentCreatorNormal's.
    Diagnostics::String GetValueString() const override
    {
        return InstanceCountLabel();
    }

    Map<String, Anything> GetDescriptor() const override
    {
        return T::GetDescriptor();
    }

    // Makes the one T if there is none yet, then shares it into *out (with
    // a null `out`, only the first part).
    void CreateComponent(SmartPointer<Component>* out) override
    {
        if (!instance.IsValid()) {
            instance = SmartPointer<T>(new T);
        }
        if (out != nullptr) {
            *out = DynamicCast<Component>(instance);
        }
    }

    // Changes nothing: the count follows the shared pointer.
    unsigned long DecrementInstanceCounter() override
    {
        return GetInstanceCount();
    }

    // The pointers that share the instance, without the creator's own; 0
    // before the first CreateComponent.
    unsigned long GetInstanceCount() const override
    {
        if (!instance.IsValid()) {
            return 0;
        }
        return static_cast<unsigned long>(instance.GetReferenceCount()) - 1;
    }

    // True without an instance, otherwise what the instance answers. The
    // instance is kept either way.
    bool PrepareForUnload() override
    {
        if (!instance.IsValid()) {
            return true;
        }
        return instance->PrepareForUnload();
    }

private:
    SmartPointer<T> instance;
};

} // namespace Utilities

#endif
