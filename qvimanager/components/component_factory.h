#ifndef QVIMANAGER_COMPONENTS_COMPONENT_FACTORY_H
#define QVIMANAGER_COMPONENTS_COMPONENT_FACTORY_H

// ComponentFactory: the creators of one file, by component name.
//
// Every file that offers components (the library itself, each plug-in) has
// a factory of its own. The creators of the file register in it while the
// file loads, and the file answers for its components from it: the naming
// service reaches a plug-in's factory only through the plug-in's entry
// points, and the library's own through LocalLoader.
//
// One factory per file, not per process: the class is compiled into every
// module that defines components and is hidden there, so a plug-in's
// creators can never land in the library's factory or in another plug-in's.
// A plug-in gets it by being built with qvimanager_add_plugin; any other
// module that defines creators links QVIManager::ComponentFactory.
//
// Nothing here is synchronised: registration runs while the file loads, and
// later use is serialised by the naming service's caller.

#include "qvimanager/components/component.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class __attribute__((visibility("hidden"))) ComponentFactory {
public:
    // The factory of this file, made on first use. Throws
    // ExceptionComponentFactory with "Can't create a ComponentFactory
    // instance" if it cannot be allocated.
    static ComponentFactory* Instance();
    // Deletes the factory, if there is one. The next Instance() makes a new,
    // empty one. Runs when the file is unloaded (and from LocalLoader's
    // destructor for the library); a second call finds nothing.
    static void ReleaseInstance();

    // Registers a creator under the "name" of its descriptor; the creator
    // is not owned. The first creator of a name wins: a second one is
    // ignored without an error and its descriptor is not kept. A
    // descriptor without "name" throws ExceptionComponentFactory with
    // "Component descriptor doesn't contain the name atttribute" (spelled
    // so).
    void RegisterCreator(ComponentCreatorBase* creator);

    // What a creator's constructor calls: RegisterCreator on this file's
    // factory, made if need be. A failure cannot leave a constructor of a
    // static object (the process would end while the file loads), so its
    // text is kept instead, the rest of the file's creators still register,
    // and GetLoadFailure() reports it: a plug-in with such a creator does
    // not load (see DllLoader).
    static void RegisterAtLoad(ComponentCreatorBase* creator) noexcept;
    // The text of the first registration that failed in this file, or an
    // empty string.
    static String GetLoadFailure();

    // The descriptors of the registered creators, in order of registration.
    const List<Map<String, Anything>>& GetDescriptors() const;

    // Makes or hands out the component `name` into *out through its
    // creator. An unknown name leaves *out as it was and is no failure.
    // Whatever the component's constructor throws passes through.
    void Resolve(const String& name, SmartPointer<Component>* out);

    // True if any creator counts live instances. Asks every creator, in map
    // order, and traces "Component <name> has still <count> instance(s)" for
    // each that has some (package "Utilities", class "ComponentFactory").
    bool HasInstances();

    // Asks every creator to prepare for unload and traces "Component <name>
    // didn't prepare for unload." for each that answers false. No result.
    void PrepareForUnload();

    // "ComponentFactory".
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

private:
    ComponentFactory() = default;
    ComponentFactory(const ComponentFactory&) = delete;
    ComponentFactory& operator=(const ComponentFactory&) = delete;
    ~ComponentFactory() = default;

    Map<String, ComponentCreatorBase*> creators;
    List<Map<String, Anything>> descriptors;
};

} // namespace Utilities

#endif
