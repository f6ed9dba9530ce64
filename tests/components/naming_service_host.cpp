// A small program for the scan tests: it is copied into a folder of its
// own, beside a "plugins" folder that the test fills, so that its naming
// service scans exactly those files. It runs the commands of its arguments
// in order and prints one line for each:
//   names        the registered components in descriptor order
//   who:NAME     who answers for NAME (PluginProbe::Identify), or "(none)"
//   label        NamingService::GetValueString()
//   load:PATH    LoadAdditionalPluginLibrary(PATH): "ok" or the failure text

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/file.h"
#include "tests/plugins/plugin_probe.h"

#include <cstdio>
#include <string>

namespace {

using Utilities::Anything;
using Utilities::NamingService;
using Utilities::NamingServiceIterator;
using Utilities::String;

void Run(const std::string& command)
{
    NamingService* const service = NamingService::Instance();
    if (command == "names") {
        std::string line = "names:";
        for (NamingServiceIterator entry = service->GetNamingServiceIterator(String(), Anything()); entry.IsValid();
             entry++) {
            line += " ";
            line += entry->operator[](String("name")).GetString().GetCharPointer();
        }
        std::printf("%s\n", line.c_str());
    } else if (command.rfind("who:", 0) == 0) {
        const std::string name = command.substr(4);
        Utilities::SmartPointer<TestPlugins::PluginProbe> probe =
            Utilities::Resolve<TestPlugins::PluginProbe>(String(name.c_str()));
        std::printf("who %s: %s\n", name.c_str(), probe.IsValid() ? probe->Identify().GetCharPointer() : "(none)");
    } else if (command == "label") {
        std::printf("label: %s\n", service->GetValueString().c_str());
    } else if (command.rfind("load:", 0) == 0) {
        try {
            service->LoadAdditionalPluginLibrary(*Utilities::File::NewInstance(String(command.substr(5).c_str())));
            std::printf("load: ok\n");
        } catch (const Utilities::Exception& failure) {
            std::printf("load: %s\n", failure.GetExceptionText().GetCharPointer());
        }
    } else {
        std::printf("unknown command: %s\n", command.c_str());
    }
}

} // namespace

int main(int argc, char** argv)
{
    for (int index = 1; index < argc; ++index) {
        Run(argv[index]);
    }
    return 0;
}
