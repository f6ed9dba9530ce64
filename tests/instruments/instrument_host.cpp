// A program for the end-to-end tests of the instrument manager: it is copied
// into a folder of its own, beside a "plugins" folder with test drivers and
// a "Preferences" store, and runs the commands of its arguments in order,
// printing one line for each:
//   drivers     "drivers:" and the driver names
//   find        "found:" and the keys of the connected devices, sorted
//   use:KEY     SetUsedInstrument of the device KEY: "used: KEY"
//   recent      "recent: (none)" or "recent: NAME baud=BAUD connected=N"

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/instrument_manager.h"
#include "tests/plugins/instrument_probe.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using QVIManager::QVIInstrument;
using QVIManager::QVIInstrumentManager;
using Utilities::SmartPointer;
using Utilities::String;

void Run(QVIInstrumentManager& manager, const std::string& command)
{
    if (command == "drivers") {
        std::string line = "drivers:";
        SmartPointer<Utilities::List<String>> drivers = manager.GetListOfInstrumentDrivers();
        for (Utilities::ListIterator<String> driver = drivers->Begin(); driver.IsValid(); driver++) {
            line += std::string(" ") + driver.Current().GetCharPointer();
        }
        std::printf("%s\n", line.c_str());
    } else if (command == "find") {
        manager.FindAllInstruments();
        std::vector<std::string> keys;
        SmartPointer<QVIInstrumentManager::InstrumentMap> found = manager.GetListOfConnectedInstruments();
        for (Utilities::MapIterator<String, SmartPointer<QVIInstrument>> entry = found->Begin(); entry.IsValid();
             entry++) {
            keys.push_back(entry.GetKey().GetCharPointer());
        }
        std::sort(keys.begin(), keys.end());
        std::string line = "found:";
        for (const std::string& key : keys) {
            line += " " + key;
        }
        std::printf("%s\n", line.c_str());
    } else if (command.rfind("use:", 0) == 0) {
        const std::string key = command.substr(4);
        manager.SetUsedInstrument((*manager.GetListOfConnectedInstruments())[String(key.c_str())]);
        std::printf("used: %s\n", key.c_str());
    } else if (command == "recent") {
        QVIInstrumentManager::DeviceMap unused;
        SmartPointer<TestPlugins::InstrumentProbe> recent =
            Utilities::DynamicCast<TestPlugins::InstrumentProbe>(manager.GetRecentUsedInstrument(unused));
        if (!recent.IsValid()) {
            std::printf("recent: (none)\n");
        } else {
            std::printf("recent: %s baud=%s connected=%d\n", recent->Parameter("Name").c_str(),
                        recent->Parameter("BaudRate").c_str(), recent->TimesConnected());
        }
    } else {
        std::printf("unknown command: %s\n", command.c_str());
    }
}

} // namespace

int main(int argc, char** argv)
{
    SmartPointer<QVIInstrumentManager> manager =
        Utilities::Resolve<QVIInstrumentManager>(String("QVIInstrumentManager"));
    for (int index = 1; index < argc; ++index) {
        try {
            Run(*manager, argv[index]);
        } catch (const Utilities::Exception& failure) {
            std::printf("failure: %s\n", failure.GetExceptionText().GetCharPointer());
        } catch (const char* text) {
            std::printf("bare: %s\n", text);
        }
    }
    return 0;
}
