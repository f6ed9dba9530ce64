// Two plug-ins that register a component of the same name are built from
// this file: SAME_NAME_PLUGIN names the plug-in, SAME_NAME_REVISION its
// component's revision.

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
        return TestPlugins::Descriptor("SharedName", "$Revision: " SAME_NAME_REVISION " $", "TestShared");
    }
    String Identify() override
    {
        return String(SAME_NAME_PLUGIN);
    }
};

Utilities::ComponentCreatorNormal<Shared> creator;

} // namespace
