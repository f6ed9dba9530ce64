// The plug-in file of the descriptors target: a hand-made plug-in (built
// without the kit, whose factory would refuse most of these descriptors)
// whose descriptor list is whatever the fuzz target hands it through
// FuzzSetDescriptors before the naming service loads it.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace {

using Descriptors = Utilities::List<Utilities::Map<Utilities::String, Utilities::Anything>>;

const Descriptors* current = nullptr;
const Descriptors none;

} // namespace

// The entry points return a C++ reference under C linkage, on purpose (see
// plugin_entry_points.h).
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif

extern "C" {

__attribute__((visibility("default"))) void FuzzSetDescriptors(const Descriptors* descriptors)
{
    current = descriptors;
}

__attribute__((visibility("default"))) void PluginResolve(const Utilities::String&,
                                                          Utilities::SmartPointer<Utilities::Component>*)
{
}

__attribute__((visibility("default"))) const Descriptors& PluginGetComponentDescriptors()
{
    return current != nullptr ? *current : none;
}

__attribute__((visibility("default"))) bool PluginCanUnloadDll()
{
    return true;
}

__attribute__((visibility("default"))) void PluginPrepareForUnload() {}
}

#if defined(__clang__)
#pragma clang diagnostic pop
#endif
