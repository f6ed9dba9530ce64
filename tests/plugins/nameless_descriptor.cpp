// A plug-in with a component whose descriptor has no "name": the file
// cannot register its components, so it does not load.

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class Good : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("GoodBeforeNameless", "$Revision: 1.0 $", "TestNameless");
    }
    String Identify() override
    {
        return String("nameless_descriptor: good");
    }
};

class Nameless : public Good {
public:
    static Map<String, Anything> GetDescriptor()
    {
        Map<String, Anything> descriptor;
        descriptor[String("version")] = Anything("$Revision: 1.0 $");
        return descriptor;
    }
};

Utilities::ComponentCreatorNormal<Good> goodCreator;
Utilities::ComponentCreatorNormal<Nameless> namelessCreator;

} // namespace
