// A program for the traced scan tests: it is copied into a folder of its
// own, beside a "plugins" folder that the test fills, and run there with
// tracing on, so that its naming service scans exactly those files and its
// trace goes to "DebugOutput.txt" in that folder. It runs the commands of
// its arguments in order, after the naming service has started:
//   resolve:NAME     Resolve of the component NAME, released at once
//   pool:NAME:POOL   Resolve of NAME in the pool POOL, kept in the pool
//   load:PATH        LoadAdditionalPluginLibrary(PATH), its failure caught
//   unlock           Unlock of a MutexImplementation_PC that nobody locked
//   events           an InstrumentEvents_V1 without an instrument, made and
//                    destroyed
// and prints "done" at the end.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/instrument_events.h"
#include "qvimanager/platform/file.h"
#include "qvimanager/platform/posix/mutex_implementation_pc.h"

#include <cstdio>
#include <string>

namespace {

using Utilities::Component;
using Utilities::NamingService;
using Utilities::SmartPointer;
using Utilities::String;

void Run(const std::string& command)
{
    NamingService* const service = NamingService::Instance();
    if (command.rfind("resolve:", 0) == 0) {
        SmartPointer<Component> component;
        service->Resolve(String(command.substr(8).c_str()), &component);
    } else if (command.rfind("pool:", 0) == 0) {
        const std::string rest = command.substr(5);
        const std::string::size_type colon = rest.find(':');
        SmartPointer<Component> component;
        bool created = false;
        service->Resolve(String(rest.substr(0, colon).c_str()), String(rest.substr(colon + 1).c_str()), &component,
                         created);
    } else if (command.rfind("load:", 0) == 0) {
        try {
            service->LoadAdditionalPluginLibrary(*Utilities::File::NewInstance(String(command.substr(5).c_str())));
        } catch (const Utilities::Exception&) {
        }
    } else if (command == "unlock") {
        Utilities::MutexImplementation_PC implementation;
        implementation.Initialize(String(""));
        implementation.Unlock();
    } else if (command == "events") {
        QVIManager::InstrumentEvents_V1 events{SmartPointer<Component>()};
    } else {
        std::printf("unknown command: %s\n", command.c_str());
    }
}

} // namespace

int main(int argc, char** argv)
{
    NamingService::Instance();
    for (int index = 1; index < argc; ++index) {
        Run(argv[index]);
    }
    std::printf("done\n");
    return 0;
}
