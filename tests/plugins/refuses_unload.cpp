// A plug-in whose singleton "UnloadRefuser" throws ExceptionDllLoader when
// asked to prepare for unload, once it has been made.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/exception.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class UnloadRefuser : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("UnloadRefuser", "$Revision: 1.0 $", "TestUnload");
    }
    String Identify() override
    {
        return String("refuses_unload: refuser");
    }
    bool PrepareForUnload() override
    {
        throw Utilities::ExceptionDllLoader("The refuser cannot prepare for unload");
    }
};

Utilities::ComponentCreatorSingleton<UnloadRefuser> creator;

} // namespace
