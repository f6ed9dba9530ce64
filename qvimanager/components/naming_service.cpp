#include "qvimanager/components/naming_service.h"

#include "qvimanager/components/dll_loader.h"
#include "qvimanager/components/local_loader.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/directory.h"
#include "qvimanager/platform/file.h"
#include "qvimanager/platform/language_service_interface.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace Utilities {

namespace {

// The service: null before the first Instance(), then the object, then
// the released mark for good.
NamingService* psmNamingServiceInstance = nullptr;
// The service while its constructor runs: a plug-in that asks for the
// service from its static initialisers, while the scan loads it, gets this
// one rather than starting a second scan.
NamingService* psmStartingInstance = nullptr;

NamingService* Released()
{
    return reinterpret_cast<NamingService*>(static_cast<std::intptr_t>(-1));
}

} // namespace

NamingServiceTestHooks::~NamingServiceTestHooks() = default;

NamingService::NamingService() : componentLoaders(), descriptors(), testHooks(), componentPool()
{
    // The service is made whatever start-up meets: what went wrong is a
    // diagnostic, and the service answers with what it registered.
    psmStartingInstance = this;
    try {
        RegisterLocalComponentsAndPlugins();
    } catch (const Exception& failure) {
        QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "NamingService",
                          "NamingService initialization: Unexpected exception occured: ", failure.GetExceptionText());
    } catch (...) {
        QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "NamingService",
                          "NamingService initialization: Unexpected exception occured.");
    }
    psmStartingInstance = nullptr;
}

void NamingService::RegisterLocalComponentsAndPlugins()
{
    QVI_TRACE(this, "Utilities", "NamingService", "RegisterLocalComponentsAndPlugins");
    // The library's own components come first and set the baseline that
    // plug-ins must beat.
    RegisterComponents(SmartPointer<DllLoaderBase>(new LocalLoader()));

    SmartPointer<Directory> application = Directory::NewInstance(Directory::ApplicationDirectory);
    std::vector<SmartPointer<Directory>> plugins = application->GetFirstDirectory(String("plugins"));
    if (plugins.empty()) {
        QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterLocalComponentsAndPlugins",
                          "NamingService: No plugin subdirectory exist in applications directory.");
        return;
    }
    std::vector<SmartPointer<File>> files = plugins.front()->GetFirstFile(String("*"), String("dll"));
    for (const SmartPointer<File>& file : files) {
        // A file that is no plug-in is skipped; any other failure ends the
        // scan at this file.
        try {
            LoadAdditionalPluginLibrary(*file);
        } catch (const ExceptionNamingService&) {
        }
    }
}

NamingService::~NamingService()
{
    // Pooled components go before any file does.
    componentPool = Map<String, SmartPointer<Component>>();
    // Each file is asked once, however many components it supplies.
    try {
        Map<String, String> asked;
        for (MapIterator<String, SmartPointer<DllLoaderBase>> entry = componentLoaders.Begin(); entry.IsValid();
             entry++) {
            const String dll = entry.GetValue()->GetDLLName();
            if (!asked.Find(dll).IsValid()) {
                asked[dll] = dll;
                entry.GetValue()->PrepareForUnload();
            }
        }
    } catch (const ExceptionDllLoader& failure) {
        QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "~NamingService",
                          "NamingService: Exception thrown in preparing for unload. Exception Text: ",
                          failure.GetExceptionText());
    } catch (const Exception& failure) {
        // Nothing can leave a destructor: any other failure ends the walk
        // the same way (the instrument manager, asked before it searched,
        // refuses so).
        QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "~NamingService",
                          "NamingService: Exception thrown in preparing for unload. Exception Text: ",
                          failure.GetExceptionText());
    } catch (...) {
    }
}

NamingService* NamingService::Instance()
{
    if (psmNamingServiceInstance == nullptr && psmStartingInstance != nullptr) {
        return psmStartingInstance;
    }
    if (psmNamingServiceInstance == nullptr) {
        psmNamingServiceInstance = new (std::nothrow) NamingService();
        if (psmNamingServiceInstance == nullptr) {
            throw ExceptionNamingService(String("Can't create instance of NamingService"));
        }
        std::atexit(&NamingService::ReleaseInstance);
    }
    if (psmNamingServiceInstance == Released()) {
        throw ExceptionNamingService(String("Can't recreate instance of NamingService"));
    }
    return psmNamingServiceInstance;
}

void NamingService::ReleaseInstance()
{
    QVI_TRACE(nullptr, "Utilities", "NamingService", "ReleaseInstance");
    if (psmNamingServiceInstance == Released()) {
        return;
    }
    // Marked released before it goes: whatever asks for the service while
    // it is destroyed (a plug-in's statics as its file unloads) is told
    // that it has gone.
    NamingService* const service = psmNamingServiceInstance;
    psmNamingServiceInstance = Released();
    delete service;
}

void NamingService::Resolve(const String& name, SmartPointer<Component>* out)
{
    QVI_TRACE_BEGIN(this, "Utilities", "NamingService", "Resolve");
    QVI_TRACE_PARAMETER("name", name);
    QVI_TRACE_CALL();
    if (testHooks.IsValid() && testHooks->ResolveHook(name, out)) {
        return;
    }
    MapIterator<String, SmartPointer<DllLoaderBase>> found = componentLoaders.Find(name);
    if (found.IsValid()) {
        try {
            found.GetValue()->Resolve(name, out);
        } catch (const ExceptionDllLoader& failure) {
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "Resolve",
                              "NamingService: Exception thrown in Resolve. Exception Text: ",
                              failure.GetExceptionText());
        }
        return;
    }
    QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "Resolve", "Component \"", name,
                      "\" could not be found in NamingService!");
}

void NamingService::Resolve(const String& name, const String& poolName, SmartPointer<Component>* out, bool& created)
{
    QVI_TRACE_BEGIN(this, "Utilities", "NamingService", "Resolve");
    QVI_TRACE_PARAMETER("name", name);
    QVI_TRACE_PARAMETER("poolName", poolName);
    QVI_TRACE_CALL();
    created = false;
    const String poolKey = name + String(":") + poolName;
    MapIterator<String, SmartPointer<Component>> pooled = componentPool.Find(poolKey);
    if (pooled.IsValid()) {
        *out = pooled.GetValue();
        return;
    }
    Resolve(name, out);
    AddComponentToPool(poolKey, *out);
    created = out->IsValid();
}

void NamingService::AddComponentToPool(const String& poolKey, SmartPointer<Component>& component)
{
    if (!component.IsValid()) {
        return;
    }
    for (MapIterator<String, SmartPointer<Component>> entry = componentPool.Begin(); entry.IsValid(); entry++) {
        if (entry.GetValue().operator->() == component.operator->()) {
            // A singleton, already pooled under another pool name.
            component = SmartPointer<Component>();
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "AddComponentToPool",
                              "NamingService: Can't add component into the pool with the name \"",
                              poolKey.GetToken(1, ':'), "\".\n               Component \"", poolKey.GetToken(0, ':'),
                              "\" is a singleton component\n               and already exists in the pool with the "
                              "pool name: \"",
                              entry.GetKey().GetToken(1, ':'), "\".");
            return;
        }
    }
    componentPool[poolKey] = component;
}

void NamingService::RegisterComponents(SmartPointer<DllLoaderBase> loader)
{
    QVI_TRACE_BEGIN(this, "Utilities", "NamingService", "RegisterComponents");
    QVI_TRACE_PARAMETER("loader", loader->GetDLLName());
    QVI_TRACE_CALL();
    const String dllName = loader->GetDLLName();
    const List<Map<String, Anything>> offered(loader->GetComponentDescriptors());
    for (ListIterator<Map<String, Anything>> entry = offered.Begin(); entry.IsValid(); entry++) {
        const Map<String, Anything>& descriptor = entry.Current();
        MapIterator<String, Anything> nameEntry = descriptor.Find(String("name"));
        if (!nameEntry.IsValid()) {
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterComponents", "NamingService: Component DLL: ",
                              dllName, " contains a component without a name tag in the descriptor.");
            continue;
        }
        const String name = nameEntry.GetValue().GetString();

        MapIterator<String, SmartPointer<DllLoaderBase>> registered = componentLoaders.Find(name);
        if (!registered.IsValid()) {
            componentLoaders[name] = loader;
            descriptors.Append(descriptor);
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterComponents",
                              "NamingService: Component added: ", name);
            continue;
        }

        MapIterator<String, Anything> newVersionEntry = descriptor.Find(String("version"));
        if (!newVersionEntry.IsValid()) {
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterComponents", "NamingService: Component: ",
                              name, " in DLL: ", dllName, " contains no revision information");
            continue;
        }
        NamingServiceIterator existing = GetNamingServiceIterator(String("name"), Anything(name));
        MapIterator<String, Anything> oldVersionEntry = existing->Find(String("version"));
        if (!oldVersionEntry.IsValid()) {
            continue;
        }
        const String newVersion = newVersionEntry.GetValue().GetString();
        const String oldVersion = oldVersionEntry.GetValue().GetString();
        const String oldDllName = registered.GetValue()->GetDLLName();
        if (newVersion.GetTokenCount(' ') != 3 || oldVersion.GetTokenCount(' ') != 3) {
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterComponents", "NamingService: Component: ",
                              name, " (", newVersion, ") in DLL: ", dllName,
                              " has a different revision format than same component (", oldVersion, ") in DLL:",
                              oldDllName);
            continue;
        }
        // The middle token compares as a decimal number: "1.10" is below
        // "1.9".
        const double newRevision = newVersion.GetToken(1, ' ').GetDouble();
        const double oldRevision = oldVersion.GetToken(1, ' ').GetDouble();
        if (newRevision > oldRevision) {
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterComponents", "NamingService: Component: ",
                              name, " in DLL: ", dllName,
                              " is newer (and has been replaced) than the same component in DLL: ", oldDllName);
            registered.GetValue() = loader;
            // The descriptor keeps its place in the list.
            existing.position.Current() = descriptor;
        } else {
            // A tie keeps the file registered first.
            QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterComponents", "NamingService: Component: ",
                              name, " in DLL: ", dllName, " is older than the same component in DLL: ", oldDllName);
        }
    }
}

void NamingService::LoadAdditionalPluginLibrary(const File& file)
{
    QVI_TRACE_BEGIN(this, "Utilities", "NamingService", "LoadAdditionalPluginLibrary");
    QVI_TRACE_PARAMETER("file", const_cast<File&>(file).GetPathWithName());
    QVI_TRACE_CALL();
    SmartPointer<DllLoader> loader = DllLoader::NewInstance();
    if (!loader.IsValid()) {
        QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "LoadAdditionalPluginLibrary",
                          "NamingService: !!!! Can't create a DllLoader instance !!!! Perhaps NamingService will not "
                          "support all components !!!!");
        return;
    }
    // GetPathWithName changes nothing, though File does not declare it
    // const.
    loader->SetDLLName(const_cast<File&>(file).GetPathWithName());
    if (loader->IsValidPluginDLL()) {
        QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "LoadAdditionalPluginLibrary", "NamingService: ",
                          loader->GetDLLName(), " a valid plugin DLL, is loaded into memory");
        // At exit, the static objects of a file (its creators) are destroyed
        // among the atexit handlers, latest first. The service must go
        // before them, since it asks the file's creators to prepare for
        // unload: a file added after the service was made has its release
        // registered once more, behind the file's statics. A second release
        // finds nothing to do.
        if (psmNamingServiceInstance == this) {
            std::atexit(&NamingService::ReleaseInstance);
        }
        RegisterComponents(DynamicCast<DllLoaderBase>(loader));
        return;
    }
    throw ExceptionNamingService(String("NamingService: ") + loader->GetDLLName() +
                                 String(" is not a valid plugin DLL."));
}

NamingServiceIterator NamingService::GetNamingServiceIterator(const String& key, const Anything& value)
{
    return NamingServiceIterator(descriptors, key, value);
}

namespace {

// Whether `value` sorts before `other` as `sortType` reads them.
bool SortsBefore(const Anything& value, const Anything& other, NamingService::SortType sortType)
{
    switch (sortType) {
    case NamingService::SortAsString:
        return value.GetString() < other.GetString();
    case NamingService::SortAsLong:
        return value.GetLong() < other.GetLong();
    case NamingService::SortAsShort:
        return value.GetShort() < other.GetShort();
    }
    return false;
}

String Translated(const char* text)
{
    return LanguageServiceInterface().GetTranslation(String(text));
}

} // namespace

List<Map<String, Anything>> NamingService::GetFilteredSortedDescriptorsList(const String& filterKey,
                                                                            const Anything& filterValue,
                                                                            const String& sortKey,
                                                                            const SortType& sortType) const
{
    List<Map<String, Anything>> sorted;
    try {
        for (NamingServiceIterator match(descriptors, filterKey, filterValue); match.IsValid(); match++) {
            const Map<String, Anything>& descriptor = match.Current();
            const Anything& value = descriptor[sortKey];
            bool inserted = false;
            for (ListIterator<Map<String, Anything>> element = sorted.Begin(); element.IsValid(); element++) {
                if (SortsBefore(value, element.Current()[sortKey], sortType)) {
                    // Insertion before the first greater element keeps equal
                    // values in the order of the descriptors.
                    ListIterator<Map<String, Anything>> before = element;
                    before--;
                    if (before.IsValid()) {
                        sorted.InsertAfter(before, descriptor);
                    } else {
                        sorted.InsertAtBegin(descriptor);
                    }
                    inserted = true;
                    break;
                }
            }
            if (!inserted) {
                sorted.Append(descriptor);
            }
        }
    } catch (const ExceptionWrongType&) {
        throw ExceptionNamingService(Translated("Specified sort type is not correct"));
    } catch (const ExceptionOutOfBound&) {
        throw ExceptionNamingService(
            Translated("Sort key doesn't exist in all components corresponding to filter settings."));
    } catch (const Exception& failure) {
        throw ExceptionNamingService(Translated("An unexpected error occured. Error text:") + String("\n\n") +
                                     failure.GetExceptionText());
    }
    return sorted;
}

void NamingService::RegisterTestHooks(const SmartPointer<NamingServiceTestHooks>& hooks)
{
    // Assigning the pointer it holds already changes nothing.
    testHooks = hooks;
}

Diagnostics::String NamingService::GetValueString()
{
    Diagnostics::String value("NamingService supports ");
    value += Diagnostics::String(componentLoaders.GetCount());
    value += " components.";
    return value;
}

} // namespace Utilities
