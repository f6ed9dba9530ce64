// A plug-in whose components cannot be made: their constructors throw,
// "Faulty" an ExceptionResourceNotAvailable, "FaultyLoader" an
// ExceptionDllLoader.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/exception.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class Faulty : public TestPlugins::PluginProbe {
public:
    Faulty()
    {
        throw Utilities::ExceptionResourceNotAvailable("Faulty component cannot start");
    }
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("Faulty", "$Revision: 1.0 $", "TestFaulty");
    }
    String Identify() override
    {
        return String("throwing_constructor: faulty");
    }
};

class FaultyLoader : public TestPlugins::PluginProbe {
public:
    FaultyLoader()
    {
        throw Utilities::ExceptionDllLoader("FaultyLoader cannot start");
    }
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("FaultyLoader", "$Revision: 1.0 $", "TestFaulty");
    }
    String Identify() override
    {
        return String("throwing_constructor: faulty loader");
    }
};

Utilities::ComponentCreatorNormal<Faulty> creator;
Utilities::ComponentCreatorNormal<FaultyLoader> loaderCreator;

} // namespace
