#ifndef QVIMANAGER_COMPONENTS_NAMING_SERVICE_H
#define QVIMANAGER_COMPONENTS_NAMING_SERVICE_H

// NamingService: the one process-wide registry that maps a component name
// to the loader of the file that supplies it, and hands out components by
// name, optionally kept in named pools.
//
// This service does not register components yet: its registry is empty,
// so every name is unknown unless test hooks answer it, and a resolve gives
// an empty pointer. Callers such as the RGB conversion and translation then
// take their built-in paths.
//
// It is forgiving: an unknown name gives an empty pointer, never an
// exception. It has no lock: make the first Instance() call before threads
// share it, and serialise later changes.

#include "qvimanager/components/component.h"
#include "qvimanager/components/dll_loader_base.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

// Interception of NamingService::Resolve, for tests.
class NamingServiceTestHooks {
public:
    virtual ~NamingServiceTestHooks();
    // Called first by every Resolve(name, out). True means the hook has
    // answered (into *out, or by leaving it alone) and the service does
    // nothing further.
    virtual bool ResolveHook(const String& name, SmartPointer<Component>* out) = 0;
};

class NamingService {
public:
    // The service, made on the first call; its release is then registered
    // with atexit. Throws ExceptionNamingService with "Can't create
    // instance of NamingService" if it cannot be allocated, and with "Can't
    // recreate instance of NamingService" once it has been released: a
    // released service does not come back within the process.
    static NamingService* Instance();
    // Deletes the service, if there is one, for good. A second call does
    // nothing.
    static void ReleaseInstance();

    // The component `name` into *out. Test hooks answer first. Otherwise
    // the loader registered for the name resolves it; an ExceptionDllLoader
    // from it is absorbed and leaves *out as it was, while anything else
    // (a component's constructor that throws) passes through. An unknown
    // name leaves *out as it was and is no failure.
    void Resolve(const String& name, SmartPointer<Component>* out);

    // The component `name` kept in the pool `poolName`: one instance per
    // name and pool for the life of the service. `created` is true only if
    // this call made the pool entry; it is false for a hit and for a
    // failure. A singleton already pooled under another pool name is not
    // pooled twice: *out is emptied. Neither name may contain ':'.
    void Resolve(const String& name, const String& poolName, SmartPointer<Component>* out, bool& created);

    // Stores the hooks, replacing any earlier ones.
    void RegisterTestHooks(const SmartPointer<NamingServiceTestHooks>& hooks);

    // "NamingService supports <n> components."
    Diagnostics::String GetValueString();
    void Invariant() const {}

protected:
    NamingService();
    virtual ~NamingService();

    // Pools `component` under `poolKey`, unless the very same object is
    // already pooled (a singleton): then `component` is emptied.
    void AddComponentToPool(const String& poolKey, SmartPointer<Component>& component);

private:
    NamingService(const NamingService&) = delete;
    NamingService& operator=(const NamingService&) = delete;

    Map<String, SmartPointer<DllLoaderBase>> componentLoaders;
    List<Map<String, Anything>> descriptors;
    SmartPointer<NamingServiceTestHooks> testHooks;
    Map<String, SmartPointer<Component>> componentPool;
};

} // namespace Utilities

#endif
