// Compiled into every module that defines components (the library itself,
// and through QVIManager::ComponentFactory each plug-in), with hidden
// visibility: each module has its own factory and its own statics.

#include "qvimanager/components/component_factory.h"

#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/foundation/exception.h"

#include <new>

namespace Utilities {

namespace {

ComponentFactory* factoryInstance = nullptr;

// The first registration of this module that failed.
String* loadFailure = nullptr;

// The module's factory goes when the module does: at the unload of a
// plug-in, and at the end of the process for the library and programs.
//
// The order around it, for the library:
// - At load, the static objects run first, among them the creators of the
//   library's components, which register in this factory. The naming
//   service is not made at load: the first NamingService::Instance() makes
//   it and registers its release with atexit.
// - When the library's file is unloaded before the process ends, this
//   function runs first, then the atexit handlers registered from the
//   library (the naming service's release: its LocalLoader then meets an
//   empty factory, and releases that one too) and the destructors of
//   static objects.
// - At the end of the process the runtime runs all atexit handlers and
//   static destructors first: the naming service goes, pooled components
//   first, while every creator still lives, and its LocalLoader releases
//   the factory. This function then finds nothing.
__attribute__((destructor)) void ReleaseFactoryAtUnload()
{
    ComponentFactory::ReleaseInstance();
    delete loadFailure;
    loadFailure = nullptr;
}

} // namespace

ComponentFactory* ComponentFactory::Instance()
{
    if (factoryInstance == nullptr) {
        factoryInstance = new (std::nothrow) ComponentFactory();
        if (factoryInstance == nullptr) {
            throw ExceptionComponentFactory(String("Can't create a ComponentFactory instance"));
        }
    }
    return factoryInstance;
}

void ComponentFactory::ReleaseInstance()
{
    delete factoryInstance;
    factoryInstance = nullptr;
}

void ComponentFactory::RegisterCreator(ComponentCreatorBase* creator)
{
    const Map<String, Anything> descriptor = creator->GetDescriptor();
    String name;
    try {
        name = descriptor[String("name")].GetString();
    } catch (const ExceptionOutOfBound&) {
        throw ExceptionComponentFactory(String("Component descriptor doesn't contain the name atttribute"));
    }
    if (creators.Find(name).IsValid()) {
        // The first registration wins; the second creator stays unused.
        QVI_TRACE_MESSAGE(this, "Utilities", "ComponentFactory", "RegisterCreator", name,
                          " component already registered in ComponentFactory; Remove one of it from DLL");
        return;
    }
    creators[name] = creator;
    descriptors.Append(descriptor);
}

void ComponentFactory::RegisterAtLoad(ComponentCreatorBase* creator) noexcept
{
    try {
        Instance()->RegisterCreator(creator);
        return;
    } catch (const Exception& failure) {
        if (loadFailure == nullptr) {
            loadFailure = new (std::nothrow) String(failure.GetExceptionText());
        }
    } catch (...) {
        if (loadFailure == nullptr) {
            loadFailure = new (std::nothrow) String("A component creator failed to register");
        }
    }
}

String ComponentFactory::GetLoadFailure()
{
    return loadFailure == nullptr ? String() : *loadFailure;
}

const List<Map<String, Anything>>& ComponentFactory::GetDescriptors() const
{
    return descriptors;
}

void ComponentFactory::Resolve(const String& name, SmartPointer<Component>* out)
{
    MapIterator<String, ComponentCreatorBase*> found = creators.Find(name);
    if (found.IsValid()) {
        found.GetValue()->CreateComponent(out);
    }
}

bool ComponentFactory::HasInstances()
{
    bool hasInstances = false;
    for (MapIterator<String, ComponentCreatorBase*> entry = creators.Begin(); entry.IsValid(); entry++) {
        const unsigned long count = entry.GetValue()->GetInstanceCount();
        if (count != 0) {
            QVI_TRACE_MESSAGE(this, "Utilities", "ComponentFactory", "HasInstances", "Component ", entry.GetKey(),
                              " has still ", count, " instance(s)");
            hasInstances = true;
        }
    }
    return hasInstances;
}

void ComponentFactory::PrepareForUnload()
{
    for (MapIterator<String, ComponentCreatorBase*> entry = creators.Begin(); entry.IsValid(); entry++) {
        if (!entry.GetValue()->PrepareForUnload()) {
            QVI_TRACE_MESSAGE(this, "Utilities", "ComponentFactory", "PrepareForUnload", "Component ", entry.GetKey(),
                              " didn't prepare for unload.");
        }
    }
}

Diagnostics::String ComponentFactory::GetValueString() const
{
    return Diagnostics::String("ComponentFactory");
}

} // namespace Utilities
