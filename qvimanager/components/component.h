#ifndef QVIMANAGER_COMPONENTS_COMPONENT_H
#define QVIMANAGER_COMPONENTS_COMPONENT_H

// Components: everything that the library or a plug-in offers by name.
//
// A component class derives from Component and is made by a creator (a
// ComponentCreatorBase, see component_creator.h). The creators of one file
// (the library, a plug-in) live in that file's ComponentFactory; the naming
// service finds a file's factory through a loader. Client code asks for a
// component with Resolve<T> (resolve.h).
//
// The virtual operations of Component and ComponentCreatorBase are declared
// in a fixed slot order, which plug-ins built against this header rely on:
// new operations go behind them, never between them.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class ComponentCreatorBase;

// The root of all components: a virtual destructor, nothing else.
class ComponentBase {
public:
    virtual ~ComponentBase();
};

class Component : public ComponentBase {
public:
    Component();
    // Copies the creator, so the copy reports to the same creator when it
    // goes. The creator did not count the copy: components are handed out
    // by pointer, and a copy of a counted component counts its creator down
    // once more than it counted up.
    Component(const Component& other);
    // Takes the other's creator, unless it is this very object.
    Component& operator=(const Component& other);

    // Slot 1. Tells the creator that made this object that one instance
    // fewer lives, and forgets the creator.
    ~Component() override;
    // Slot 2. Deletes the object. SmartPointer<Component> releases a
    // component through this operation, so that it goes back the way it
    // came (a plug-in's object is deleted by the plug-in's code).
    virtual void FreeInstance();
    // Slot 3. Empty.
    virtual void Invariant() const;
    // Slot 4. False asks the owner of the object's file not to unload it
    // yet; a Component is always ready.
    virtual bool PrepareForUnload();

    // The creator that made this object and counts it; null for an object
    // that no counting creator made (a singleton, a copy, a plain `new`).
    // Not owned. ComponentCreatorNormal sets it.
    void SetCreator(ComponentCreatorBase* madeBy);
    ComponentCreatorBase* GetCreator() const;

private:
    ComponentCreatorBase* creator;
};

// Makes the components of one class and counts the live ones.
class ComponentCreatorBase {
public:
    // Slot 1.
    virtual ~ComponentCreatorBase();
    // Slot 2. Empty.
    virtual void Invariant() const;
    // Slot 3. The run-time class name of the creator, then
    // ": Actual instance count = " and GetInstanceCount().
    virtual Diagnostics::String GetValueString() const = 0;
    // Slot 4. The descriptor of the component, by value: a map with at least
    // "name" (the name it is resolved by), usually "version" ("$Revision: 1.5
    // $") and "category", all string values.
    virtual Map<String, Anything> GetDescriptor() const = 0;
    // Slot 5. Makes an instance, or hands out the one instance, into *out.
    virtual void CreateComponent(SmartPointer<Component>* out) = 0;
    // Slot 6. Called by ~Component of an object this creator counted;
    // returns the new count.
    virtual unsigned long DecrementInstanceCounter() = 0;
    // Slot 7. The instances alive now.
    virtual unsigned long GetInstanceCount() const = 0;
    // Slot 8. False if the file of this creator must not be unloaded yet.
    virtual bool PrepareForUnload() = 0;

protected:
    // The run-time class name of the creator, then ": Actual instance count
    // = " and GetInstanceCount(): the label of both kinds of creator.
    Diagnostics::String InstanceCountLabel() const;

    ComponentCreatorBase() = default;
    ComponentCreatorBase(const ComponentCreatorBase&) = default;
    ComponentCreatorBase& operator=(const ComponentCreatorBase&) = default;
};

// A descriptor of the three usual keys, as the GetDescriptor of a component
// class gives it: "name", "version" ("$Revision: 1.5 $") and "category",
// all texts.
Map<String, Anything> MakeComponentDescriptor(const char* name, const char* version, const char* category);

} // namespace Utilities

#endif
