// A plug-in that asks the naming service for a component while it loads:
// a static initialiser translates a text, which resolves
// "LanguageService". Loaded by the naming service's own start-up, it asks
// a service that is still registering.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/platform/language_service_interface.h"
#include "tests/plugins/plugin_probe.h"

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;

// The translation made while the file loaded.
const String translatedAtLoad =
    Utilities::LanguageServiceInterface().GetTranslation(String("Error: Directory %DIR% does not exist"));

class AskedAtLoad : public TestPlugins::PluginProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("AskedAtLoad", "$Revision: 1.0 $", "TestAtLoad");
    }
    String Identify() override
    {
        return String("asks_at_load: ") + translatedAtLoad;
    }
};

Utilities::ComponentCreatorNormal<AskedAtLoad> creator;

} // namespace
