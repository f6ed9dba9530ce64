// A program for the end-to-end tests of the instrument manager: it is copied
// into a folder of its own, beside a "plugins" folder with test drivers and
// a "Preferences" store, and runs the commands of its arguments in order,
// printing one line for each:
//   drivers     "drivers:" and the driver names
//   find        "found:" and the keys of the connected devices, sorted
//   use:KEY     SetUsedInstrument of the device KEY: "used: KEY"
//   recent      "recent: (none)" or "recent: NAME baud=BAUD connected=N"
//   watch:KEY:N watches the buttons of the device KEY ("recent": the
//               recent instrument) with an InstrumentEvents_V1 and a
//               callback registered for "Button", presses the button N
//               times, one press at a time, and prints for each press
//               "button: VALUE cycles=C ms=T": the value the callback got,
//               the poll cycles begun between the press and its delivery,
//               and the milliseconds between them; then destroys the
//               events object
//   exit-threads (wherever it stands) prints, as the very last thing the
//               process does, "threads left at exit: N": the threads then
//               running beyond those running when main began

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/instrument_events.h"
#include "qvimanager/instruments/instrument_manager.h"
#include "qvimanager/platform/callback.h"
#include "tests/plugins/instrument_probe.h"
#include "tests/support/process_threads.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

using QVIManager::QVIInstrument;
using QVIManager::QVIInstrumentManager;
using TestSupport::ThreadsOfProcess;
using Utilities::SmartPointer;
using Utilities::String;
using Clock = std::chrono::steady_clock;

// How long to wait for an event at most before giving up: far beyond any
// poll period, so that only a lost event reaches it.
const std::chrono::seconds kPatience(30);

long threadsAtStart = 0;

void PrintThreadsLeft()
{
    std::printf("threads left at exit: %ld\n", ThreadsOfProcess() - threadsAtStart);
}

// What the callback got, with the poll cycle and the time of its arrival;
// filled on the poll thread, read on the main thread.
struct Deliveries {
    struct Delivery {
        std::string value;
        long cycle;
        Clock::time_point time;
    };
    std::mutex guard;
    std::condition_variable arrived;
    std::vector<Delivery> list;
};

class ButtonCallback : public Utilities::CallbackImplementation {
public:
    // `of` outlives the callback.
    ButtonCallback(std::shared_ptr<Deliveries> into, TestPlugins::ButtonProbe* of)
        : deliveries(std::move(into)), buttons(of)
    {
    }
    long Execute(const Utilities::Anything& argument) override
    {
        const long cycle = buttons->Cycles();
        const std::lock_guard<std::mutex> hold(deliveries->guard);
        deliveries->list.push_back({argument.GetValueString().c_str(), cycle, Clock::now()});
        deliveries->arrived.notify_all();
        return 0;
    }
    bool IsValid() const override
    {
        return true;
    }

private:
    std::shared_ptr<Deliveries> deliveries;
    TestPlugins::ButtonProbe* buttons;
};

void Watch(QVIInstrumentManager& manager, const std::string& key, int presses)
{
    SmartPointer<QVIInstrument> instrument;
    if (key == "recent") {
        QVIInstrumentManager::DeviceMap unused;
        instrument = manager.GetRecentUsedInstrument(unused);
    } else {
        instrument = (*manager.GetListOfConnectedInstruments())[String(key.c_str())];
    }
    SmartPointer<TestPlugins::ButtonProbe> buttons = Utilities::DynamicCast<TestPlugins::ButtonProbe>(instrument);
    if (!buttons.IsValid()) {
        std::printf("watch: %s has no buttons\n", key.c_str());
        return;
    }
    auto deliveries = std::make_shared<Deliveries>();
    QVIManager::InstrumentEvents_V1 events(Utilities::DynamicCast<Utilities::Component>(instrument));
    events.RegisterCallback(String("Button"), Utilities::Callback(SmartPointer<Utilities::CallbackImplementation>(
                                                  new ButtonCallback(deliveries, &*buttons))));
    for (int press = 1; press <= presses; ++press) {
        // Presses fall at different points of the poll period.
        std::this_thread::sleep_for(std::chrono::milliseconds(130 * press));
        const long cycle = buttons->Cycles();
        const Clock::time_point pressed = Clock::now();
        buttons->Press("Button", press);
        std::unique_lock<std::mutex> hold(deliveries->guard);
        const std::size_t wanted = static_cast<std::size_t>(press);
        if (!deliveries->arrived.wait_for(hold, kPatience, [&] { return deliveries->list.size() >= wanted; })) {
            std::printf("button: %d never arrived\n", press);
            break;
        }
        const Deliveries::Delivery& delivery = deliveries->list.back();
        std::printf("button: %s cycles=%ld ms=%lld\n", delivery.value.c_str(), delivery.cycle - cycle,
                    static_cast<long long>(
                        std::chrono::duration_cast<std::chrono::milliseconds>(delivery.time - pressed).count()));
    }
    events.UnregisterCallback(String("Button"));
}

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
    } else if (command.rfind("watch:", 0) == 0) {
        const std::string::size_type colon = command.rfind(':');
        Watch(manager, command.substr(6, colon - 6), std::atoi(command.c_str() + colon + 1));
    } else if (command == "exit-threads") {
        // Taken care of in main.
    } else {
        std::printf("unknown command: %s\n", command.c_str());
    }
}

} // namespace

int main(int argc, char** argv)
{
    // Registered before the naming service exists, so that it runs after
    // the service is released and its files are unloaded.
    for (int index = 1; index < argc; ++index) {
        if (std::string(argv[index]) == "exit-threads") {
            // A tool (the thread sanitizer) may start a thread of its own
            // when the program makes its first one: make one before counting.
            std::thread([] {}).join();
            threadsAtStart = ThreadsOfProcess();
            std::atexit(PrintThreadsLeft);
        }
    }
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
