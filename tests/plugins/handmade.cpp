// Plug-ins built without the kit, whose descriptor lists only a hand-made
// file could hold (the kit's factory refuses them). HANDMADE_VARIANT picks
// the list:
//   1: a descriptor without "name", then "HandmadeGood";
//   2: "HandmadeBeforeBadName", a descriptor whose "name" is a long, then
//      "HandmadeAfterBadName";
//   3: "HandmadeGood" again (as in 1), with a "version" that is a long.
// No component can be resolved: PluginResolve leaves the target alone.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace {

using Utilities::Anything;
using Utilities::List;
using Utilities::Map;
using Utilities::String;

Map<String, Anything> Descriptor(const Anything& name, const Anything& version = Anything("$Revision: 1.0 $"))
{
    Map<String, Anything> descriptor;
    if (name.IsValid()) {
        descriptor[String("name")] = name;
    }
    descriptor[String("version")] = version;
    descriptor[String("category")] = Anything("TestHandmade");
    return descriptor;
}

List<Map<String, Anything>> MakeDescriptors()
{
    List<Map<String, Anything>> list;
#if HANDMADE_VARIANT == 1
    list.Append(Descriptor(Anything()));
    list.Append(Descriptor(Anything("HandmadeGood")));
#elif HANDMADE_VARIANT == 2
    list.Append(Descriptor(Anything("HandmadeBeforeBadName")));
    list.Append(Descriptor(Anything(42L)));
    list.Append(Descriptor(Anything("HandmadeAfterBadName")));
#elif HANDMADE_VARIANT == 3
    list.Append(Descriptor(Anything("HandmadeGood"), Anything(2L)));
#else
#error "HANDMADE_VARIANT must be 1, 2 or 3"
#endif
    return list;
}

const List<Map<String, Anything>> descriptors = MakeDescriptors();

} // namespace

extern "C" {

__attribute__((visibility("default"))) void PluginResolve(const Utilities::String&,
                                                          Utilities::SmartPointer<Utilities::Component>*)
{
}

__attribute__((visibility("default"))) const List<Map<String, Anything>>& PluginGetComponentDescriptors()
{
    return descriptors;
}

__attribute__((visibility("default"))) bool PluginCanUnloadDll()
{
    return true;
}

__attribute__((visibility("default"))) void PluginPrepareForUnload() {}
}
