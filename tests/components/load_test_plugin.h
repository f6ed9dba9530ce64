#ifndef QVIMANAGER_TESTS_COMPONENTS_LOAD_TEST_PLUGIN_H
#define QVIMANAGER_TESTS_COMPONENTS_LOAD_TEST_PLUGIN_H

// Adds a test plug-in to the program's naming service, as an application
// adds a file later: LoadAdditionalPluginLibrary. The programs that use it
// are given QVIMANAGER_TEST_PLUGIN_DIR, the folder of the test plug-ins.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/platform/file.h"

#include <string>

namespace TestPlugins {

// The path of the test plug-in `plugin` ("two_components").
inline std::string PluginPath(const std::string& plugin)
{
    return std::string(QVIMANAGER_TEST_PLUGIN_DIR) + "/" + plugin + ".dll";
}

inline void LoadTestPlugin(const std::string& plugin)
{
    Utilities::NamingService::Instance()->LoadAdditionalPluginLibrary(
        *Utilities::File::NewInstance(Utilities::String(PluginPath(plugin).c_str())));
}

} // namespace TestPlugins

#endif
