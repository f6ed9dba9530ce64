// The plug-ins that register a component of the same name, "SharedName",
// are built from this file: SAME_NAME_PLUGIN names the plug-in,
// SAME_NAME_VERSION is the whole "version" of its descriptor, and without
// it the descriptor has no "version".

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class Shared : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
#ifdef SAME_NAME_VERSION
        return TestPlugins::Descriptor("SharedName", SAME_NAME_VERSION, "TestShared");
#else
        Map<String, Anything> descriptor;
        descriptor[String("name")] = Anything("SharedName");
        descriptor[String("category")] = Anything("TestShared");
        return descriptor;
#endif
    }
    String Identify() override
    {
        return String(SAME_NAME_PLUGIN);
    }
};

Utilities::ComponentCreatorNormal<Shared> creator;

} // namespace
