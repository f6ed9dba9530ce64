// A plug-in that checks the order of the end of the process: its static
// objects must outlive the naming service. The destructor of its sentinel
// asks for the service; if the service is still there, the plug-in's
// statics went first, and the program ends at once with exit code 3 and a
// note on stderr.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/components/naming_service.h"
#include "qvimanager/foundation/exception.h"
#include "tests/plugins/plugin_probe.h"

#include <cstdio>
#include <cstdlib>

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

class ExitWatcher : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("ExitWatcher", "$Revision: 1.0 $", "TestExit");
    }
    String Identify() override
    {
        return String("exit_order: watcher");
    }
};

struct Sentinel {
    ~Sentinel()
    {
        try {
            Utilities::NamingService::Instance();
        } catch (const Utilities::ExceptionNamingService&) {
            // Released already, or going: the right order.
            return;
        }
        std::fputs("exit_order: the naming service outlived the plug-in's static objects\n", stderr);
        std::_Exit(3);
    }
};

Utilities::ComponentCreatorNormal<ExitWatcher> creator;
Sentinel sentinel;

} // namespace
