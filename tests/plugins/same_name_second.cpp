// One of two plug-ins that register a component of the same name.

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
        return TestPlugins::Descriptor("SharedName", "$Revision: 1.6 $", "TestShared");
    }
    String Identify() override
    {
        return String("same_name_second");
    }
    long TimesPrepared() override
    {
        return 0;
    }
};

Utilities::ComponentCreatorNormal<Shared> creator;

} // namespace
