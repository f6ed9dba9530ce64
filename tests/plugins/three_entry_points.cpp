// A shared object with three of the four entry points (no
// "PluginPrepareForUnload"): not a plug-in. Built without the kit, as a
// hand-made file would be.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace {

Utilities::List<Utilities::Map<Utilities::String, Utilities::Anything>> descriptors;

} // namespace

extern "C" {

__attribute__((visibility("default"))) void PluginResolve(const Utilities::String&,
                                                          Utilities::SmartPointer<Utilities::Component>*)
{
}

__attribute__((visibility("default"))) const Utilities::List<Utilities::Map<Utilities::String, Utilities::Anything>>&
PluginGetComponentDescriptors()
{
    return descriptors;
}

__attribute__((visibility("default"))) bool PluginCanUnloadDll()
{
    return true;
}
}
