#include "qvimanager/components/naming_service.h"

#include "qvimanager/foundation/exception.h"

#include <cstdint>
#include <cstdlib>
#include <new>

namespace Utilities {

namespace {

// The service: null before the first Instance(), then the object, then
// the released mark for good.
NamingService* psmNamingServiceInstance = nullptr;

NamingService* Released()
{
    return reinterpret_cast<NamingService*>(static_cast<std::intptr_t>(-1));
}

} // namespace

NamingServiceTestHooks::~NamingServiceTestHooks() = default;

NamingService::NamingService() : componentLoaders(), descriptors(), testHooks(), componentPool() {}

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
        Diagnostics::String text("NamingService: Exception thrown in preparing for unload. Exception Text: ");
        text += failure.GetExceptionText().GetCharPointer();
    }
}

NamingService* NamingService::Instance()
{
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
    if (psmNamingServiceInstance == Released()) {
        return;
    }
    delete psmNamingServiceInstance;
    psmNamingServiceInstance = Released();
}

void NamingService::Resolve(const String& name, SmartPointer<Component>* out)
{
    if (testHooks.IsValid() && testHooks->ResolveHook(name, out)) {
        return;
    }
    MapIterator<String, SmartPointer<DllLoaderBase>> found = componentLoaders.Find(name);
    if (found.IsValid()) {
        try {
            found.GetValue()->Resolve(name, out);
        } catch (const ExceptionDllLoader& failure) {
            Diagnostics::String text("NamingService: Exception thrown in Resolve. Exception Text: ");
            text += failure.GetExceptionText().GetCharPointer();
        }
        return;
    }
    Diagnostics::String notFound("Component \"");
    notFound += name.GetCharPointer();
    notFound += "\" could not be found in NamingService!";
}

void NamingService::Resolve(const String& name, const String& poolName, SmartPointer<Component>* out, bool& created)
{
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
            Diagnostics::String text("NamingService: Can't add component into the pool with the name \"");
            text += poolKey.GetToken(1, ':').GetCharPointer();
            text += "\".\n               Component \"";
            text += poolKey.GetToken(0, ':').GetCharPointer();
            text += "\" is a singleton component\n               and already exists in the pool with the pool "
                    "name: \"";
            text += entry.GetKey().GetToken(1, ':').GetCharPointer();
            text += "\".";
            return;
        }
    }
    componentPool[poolKey] = component;
}

void NamingService::RegisterTestHooks(const SmartPointer<NamingServiceTestHooks>& hooks)
{
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
