// A program for the tests of the simulated spectrophotometer: it is copied
// into a folder of its own, beside a "plugins" folder with the simulator's
// plug-ins, and runs the commands of its arguments in order, printing one
// line for each (every line is written out at once, so that a test can
// read them while the program runs):
//   devices          for each device of the driver's FindDevices_V1:
//                    "device: SERIAL name=NAME driver=DRIVER transport=T
//                    port=P baud=B available=yes|no"
//   find             FindAllInstruments: "found:" and the keys, sorted
//   measure:KEY:N    N readings of the connected instrument KEY through its
//                    Measurement_V1: "reading: " and the 36 values (%.9g)
//   fresh:SERIAL:N   the same with a new instrument object, given only the
//                    serial number and connected
//   available:SERIAL "available: yes|no" (IsDeviceAvailable)
//   use:KEY          SetUsedInstrument of the device KEY: "used: KEY"
//   recent:N         N readings of the recently used instrument, or
//                    "recent: (none)"
//   watch:KEY:N      watches the instrument KEY with an InstrumentEvents_V1
//                    and callbacks registered for "Button" and
//                    "Connection", prints "watching", then prints each of
//                    the next N events the callbacks get as "event: NAME
//                    VALUE" ("event: none within 30 s" when one does not
//                    come); then lets the events object go
// A failure prints "failure: " and the exception's text and ends that
// command.

#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/instrument_events.h"
#include "qvimanager/instruments/instrument_manager.h"
#include "qvimanager/instruments/interfaces/find_devices_v1.h"
#include "qvimanager/instruments/interfaces/measurement_v1.h"
#include "qvimanager/platform/callback.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

using QVIManager::Measurement_V1;
using QVIManager::QVIInstrument;
using QVIManager::QVIInstrumentManager;
using Utilities::SmartPointer;
using Utilities::String;

const char* const kDriver = "SimulatedSpectrophotometer";

// How long to wait for an event at most: far beyond any poll period, so
// that only a lost event reaches it.
const std::chrono::seconds kPatience(30);

void Print(const std::string& line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

std::string Text(const String& text)
{
    return text.GetCharPointer();
}

// "measure:KEY:N": the middle part and the number.
std::pair<std::string, int> KeyAndCount(const std::string& command, std::size_t prefix)
{
    const std::string::size_type colon = command.rfind(':');
    return {command.substr(prefix, colon - prefix), std::atoi(command.c_str() + colon + 1)};
}

void Readings(const SmartPointer<QVIInstrument>& instrument, int count)
{
    if (!instrument.IsValid()) {
        Print("measure: no instrument");
        return;
    }
    SmartPointer<Measurement_V1> measurement =
        Utilities::DynamicCast<Measurement_V1>(instrument->GetInterface(String("Measurement_V1")));
    if (!measurement.IsValid()) {
        Print("measure: no Measurement_V1");
        return;
    }
    for (int reading = 0; reading < count; ++reading) {
        const CMetry::QVSpectrum spectrum = measurement->Measure();
        std::string line = "reading:";
        for (long point = 0; point < CMetry::QVSpectrum::NumberOfDataPoints; ++point) {
            char value[32];
            std::snprintf(value, sizeof value, " %.9g", static_cast<double>(spectrum[point]));
            line += value;
        }
        Print(line);
    }
}

SmartPointer<QVIInstrument> Connected(QVIInstrumentManager& manager, const std::string& key)
{
    return (*manager.GetListOfConnectedInstruments())[String(key.c_str())];
}

// The events the callbacks got, filled on the poll thread.
struct Events {
    std::mutex guard;
    std::condition_variable arrived;
    std::vector<std::string> list;
};

class Recorder : public Utilities::CallbackImplementation {
public:
    Recorder(std::shared_ptr<Events> into, std::string event) : events(std::move(into)), name(std::move(event)) {}
    long Execute(const Utilities::Anything& argument) override
    {
        const std::lock_guard<std::mutex> hold(events->guard);
        events->list.push_back(name + " " + argument.GetValueString().c_str());
        events->arrived.notify_all();
        return 0;
    }
    bool IsValid() const override
    {
        return true;
    }

private:
    std::shared_ptr<Events> events;
    std::string name;
};

void Watch(QVIInstrumentManager& manager, const std::string& key, int count)
{
    SmartPointer<QVIInstrument> instrument = Connected(manager, key);
    auto events = std::make_shared<Events>();
    QVIManager::InstrumentEvents_V1 watcher(Utilities::DynamicCast<Utilities::Component>(instrument));
    for (const char* name : {"Button", "Connection"}) {
        watcher.RegisterCallback(String(name), Utilities::Callback(SmartPointer<Utilities::CallbackImplementation>(
                                                   new Recorder(events, name))));
    }
    Print("watching");
    for (std::size_t wanted = 1; wanted <= static_cast<std::size_t>(count); ++wanted) {
        std::unique_lock<std::mutex> hold(events->guard);
        if (!events->arrived.wait_for(hold, kPatience, [&] { return events->list.size() >= wanted; })) {
            hold.unlock();
            Print("event: none within 30 s");
            break;
        }
        const std::string event = events->list[wanted - 1];
        hold.unlock();
        Print("event: " + event);
    }
    watcher.UnregisterCallback(String("Button"));
    watcher.UnregisterCallback(String("Connection"));
}

void Run(QVIInstrumentManager& manager, const std::string& command)
{
    if (command == "devices") {
        SmartPointer<QVIInstrument> driver = Utilities::Resolve<QVIInstrument>(String(kDriver));
        SmartPointer<QVIManager::FindDevices_V1> finder =
            Utilities::DynamicCast<QVIManager::FindDevices_V1>(driver->GetInterface(String("FindDevices_V1")));
        Utilities::List<QVIInstrumentManager::DeviceMap> devices = finder->FindDevices();
        for (Utilities::ListIterator<QVIInstrumentManager::DeviceMap> device = devices.Begin(); device.IsValid();
             device++) {
            QVIInstrumentManager::DeviceMap map = device.Current();
            Print("device: " + Text(map[String("SerialNumber")]) + " name=" + Text(map[String("Name")]) +
                  " driver=" + Text(map[String("Driver")]) + " transport=" + Text(map[String("Transport")]) +
                  " port=" + Text(map[String("Port")]) + " baud=" + Text(map[String("BaudRate")]) +
                  " available=" + (finder->IsDeviceAvailable(map) ? "yes" : "no"));
        }
    } else if (command == "find") {
        manager.FindAllInstruments();
        std::vector<std::string> keys;
        SmartPointer<QVIInstrumentManager::InstrumentMap> found = manager.GetListOfConnectedInstruments();
        for (Utilities::MapIterator<String, SmartPointer<QVIInstrument>> entry = found->Begin(); entry.IsValid();
             entry++) {
            keys.push_back(Text(entry.GetKey()));
        }
        std::sort(keys.begin(), keys.end());
        std::string line = "found:";
        for (const std::string& key : keys) {
            line += " " + key;
        }
        Print(line);
    } else if (command.rfind("measure:", 0) == 0) {
        const auto [key, count] = KeyAndCount(command, 8);
        Readings(Connected(manager, key), count);
    } else if (command.rfind("fresh:", 0) == 0) {
        const auto [serial, count] = KeyAndCount(command, 6);
        SmartPointer<QVIInstrument> instrument = Utilities::Resolve<QVIInstrument>(String(kDriver));
        QVIInstrumentManager::DeviceMap device;
        device[String("SerialNumber")] = String(serial.c_str());
        instrument->SetParameters(device);
        instrument->Connect();
        Readings(instrument, count);
    } else if (command.rfind("available:", 0) == 0) {
        SmartPointer<QVIInstrument> driver = Utilities::Resolve<QVIInstrument>(String(kDriver));
        SmartPointer<QVIManager::FindDevices_V1> finder =
            Utilities::DynamicCast<QVIManager::FindDevices_V1>(driver->GetInterface(String("FindDevices_V1")));
        QVIInstrumentManager::DeviceMap device;
        device[String("SerialNumber")] = String(command.substr(10).c_str());
        Print(std::string("available: ") + (finder->IsDeviceAvailable(device) ? "yes" : "no"));
    } else if (command.rfind("use:", 0) == 0) {
        const std::string key = command.substr(4);
        manager.SetUsedInstrument(Connected(manager, key));
        Print("used: " + key);
    } else if (command.rfind("recent:", 0) == 0) {
        QVIInstrumentManager::DeviceMap unused;
        SmartPointer<QVIInstrument> recent = manager.GetRecentUsedInstrument(unused);
        if (!recent.IsValid()) {
            Print("recent: (none)");
        } else {
            Readings(recent, std::atoi(command.c_str() + 7));
        }
    } else if (command.rfind("watch:", 0) == 0) {
        const auto [key, count] = KeyAndCount(command, 6);
        Watch(manager, key, count);
    } else {
        Print("unknown command: " + command);
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
            Print(std::string("failure: ") + failure.GetExceptionText().GetCharPointer());
        } catch (const char* text) {
            Print(std::string("bare: ") + text);
        }
    }
    return 0;
}
