#ifndef QVIMANAGER_COMPONENTS_NAMING_SERVICE_H
#define QVIMANAGER_COMPONENTS_NAMING_SERVICE_H

// NamingService: the one process-wide registry that maps a component name
// to the loader of the file that supplies it, and hands out components by
// name, optionally kept in named pools.
//
// The first Instance() makes it. It registers the library's own components
// first, then every plug-in file "*.dll" in the folder "plugins" beside
// the running program, in byte order of the file names. A file there that
// is no plug-in is skipped; a missing folder is no failure.
//
// When two files offer a component of the same name, the newer revision
// wins. A revision is the descriptor's "version", three blank-separated
// tokens as in "$Revision: 1.5 $", whose middle token compares as a
// decimal number: "1.10" is older than "1.9", and that is the rule. A tie
// keeps the file registered first. A version of another form (one token
// such as "1.7") or none at all never replaces anything.
//
// It is forgiving: an unknown name gives an empty pointer, never an
// exception. It has no lock: make the first Instance() call before threads
// share it, and serialise LoadAdditionalPluginLibrary and pool use.
//
// What the service notices on the way (a component added or replaced, a
// file skipped, a name not found) goes to the trace as a line of its own,
// package "Utilities", class "NamingService", when tracing is on
// (diagnostics/trace.h); no result depends on those lines.

#include "qvimanager/components/component.h"
#include "qvimanager/components/dll_loader_base.h"
#include "qvimanager/components/naming_service_iterator.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

#include <cstdint>

namespace Utilities {

class File;

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
    // As which kind of value GetFilteredSortedDescriptorsList reads the
    // entries under its sort key. Any other value never compares as less,
    // so the list keeps the order of the descriptors.
    enum SortType : std::int32_t {
        // String::operator< on GetString(): byte order.
        SortAsString = 0,
        // < on GetLong().
        SortAsLong = 1,
        // < on GetShort().
        SortAsShort = 2
    };

    // The service, made on the first call; its release is then registered
    // with atexit. A call made while the first one is still registering
    // (from a plug-in's static initialiser, as the scan loads it) gets the
    // service as registered so far. Throws ExceptionNamingService with
    // "Can't create instance of NamingService" if it cannot be allocated,
    // and with "Can't recreate instance of NamingService" once it has been
    // released: a released service does not come back within the process.
    static NamingService* Instance();
    // Deletes the service, if there is one, for good; Instance() called
    // while it is being deleted already counts as after the release. A
    // second call does nothing.
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

    // Registers the components of the plug-in `file` by the revision rule,
    // against what is registered already. A file that is no plug-in (it
    // cannot be loaded, or lacks one of the four entry points) throws
    // ExceptionNamingService with "NamingService: <path> is not a valid
    // plugin DLL.". A descriptor whose "name" or "version" is not a text
    // throws ExceptionWrongType; the descriptors before it stay registered.
    // A shared object that lacks an entry point stays loaded until the
    // process ends (see DllLoaderBase::IsValidPluginDLL).
    void LoadAdditionalPluginLibrary(const File& file);

    // Stores the hooks, replacing any earlier ones.
    void RegisterTestHooks(const SmartPointer<NamingServiceTestHooks>& hooks);

    // A walk over the descriptors of the registered components, in order of
    // first registration (a replaced component keeps its place), standing on
    // the first that matches the filter (naming_service_iterator.h).
    NamingServiceIterator GetNamingServiceIterator(const String& key, const Anything& value);

    // Copies of the descriptors that match the filter, sorted ascending by
    // their value under `sortKey` read as `sortType` says; equal values keep
    // the order of the descriptors. No match: an empty list, whatever the
    // sort key. Failures throw ExceptionNamingService with these texts, each
    // passed through LanguageServiceInterface::GetTranslation:
    //   a matching descriptor without `sortKey`: "Sort key doesn't exist in
    //     all components corresponding to filter settings."
    //   a value of another kind than `sortType` reads: "Specified sort type
    //     is not correct"
    //   any other Exception: "An unexpected error occured. Error text:",
    //     then two line feeds and the text of the exception.
    // Descriptors outside the filter need not have the sort key.
    List<Map<String, Anything>> GetFilteredSortedDescriptorsList(const String& filterKey,
                                                                 const Anything& filterValue,
                                                                 const String& sortKey,
                                                                 const SortType& sortType) const;

    // "NamingService supports <n> components."
    Diagnostics::String GetValueString();
    void Invariant() const {}

protected:
    NamingService();
    // Releases the pooled components, then asks each file once to prepare
    // for unload, in the order of the registered components. A failure of
    // one file ends that walk (its text goes to the trace): an
    // ExceptionDllLoader, and, since nothing may leave a destructor, any
    // other exception too.
    virtual ~NamingService();

    // Pools `component` under `poolKey`, unless the very same object is
    // already pooled (a singleton): then `component` is emptied.
    void AddComponentToPool(const String& poolKey, SmartPointer<Component>& component);

private:
    // Registers each component that `loader` offers by the revision rule.
    void RegisterComponents(SmartPointer<DllLoaderBase> loader);
    // The library's own components, then the plug-in folder.
    void RegisterLocalComponentsAndPlugins();

    NamingService(const NamingService&) = delete;
    NamingService& operator=(const NamingService&) = delete;

    Map<String, SmartPointer<DllLoaderBase>> componentLoaders;
    List<Map<String, Anything>> descriptors;
    SmartPointer<NamingServiceTestHooks> testHooks;
    Map<String, SmartPointer<Component>> componentPool;
};

} // namespace Utilities

#endif
