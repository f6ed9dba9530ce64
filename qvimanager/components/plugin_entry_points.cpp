// The entry points of a plug-in, compiled into each plug-in by
// qvimanager_add_plugin. They answer from the plug-in's own
// ComponentFactory, which its creators filled while the file loaded.

#include "qvimanager/components/plugin_entry_points.h"

#include "qvimanager/components/component_factory.h"

namespace {

// The text that PluginLoadFailure hands out; lives as long as the file.
Utilities::String loadFailureText;

} // namespace

// As in the header: a C++ reference under C linkage, on purpose.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

__attribute__((visibility("default"))) void PluginResolve(const Utilities::String& name,
                                                          Utilities::SmartPointer<Utilities::Component>* out)
{
    Utilities::ComponentFactory::Instance()->Resolve(name, out);
}

__attribute__((visibility("default"))) const Utilities::List<Utilities::Map<Utilities::String, Utilities::Anything>>&
PluginGetComponentDescriptors()
{
    return Utilities::ComponentFactory::Instance()->GetDescriptors();
}

__attribute__((visibility("default"))) bool PluginCanUnloadDll()
{
    return !Utilities::ComponentFactory::Instance()->HasInstances();
}

__attribute__((visibility("default"))) void PluginPrepareForUnload()
{
    Utilities::ComponentFactory::Instance()->PrepareForUnload();
}

__attribute__((visibility("default"))) const char* PluginLoadFailure()
{
    loadFailureText = Utilities::ComponentFactory::GetLoadFailure();
    return loadFailureText.Length() == 0 ? nullptr : loadFailureText.GetCharPointer();
}
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif
