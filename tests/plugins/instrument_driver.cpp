// Test instrument drivers, one per build of this file:
// - DRIVER_TWO_DEVICES: "TwoDeviceDriver", two devices with the serial
//   numbers 1001 and 1002. A device counts as available unless the
//   environment variable QVI_TEST_AVAILABLE says "no" ("throw": checking
//   it throws).
// - DRIVER_NO_FINDER: "NoFinderDriver", without "FindDevices_V1".
// - DRIVER_SERIAL_LESS: "SerialLessDriver", whose one device map lacks
//   "SerialNumber".
// Each instrument records what it is told (InstrumentProbe) and has a
// button the test presses (ButtonProbe). Every operation may come from any
// thread: the instrument takes a lock of its own.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/interfaces/find_devices_v1.h"
#include "tests/plugins/instrument_probe.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {

using Utilities::Anything;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::Map;
using Utilities::SmartPointer;
using Utilities::String;
using DeviceMap = Map<String, String>;

DeviceMap Device(const char* serial, const char* name)
{
    DeviceMap device;
    if (serial != nullptr) {
        device[String("SerialNumber")] = String(serial);
    }
    device[String("Name")] = String(name);
    device[String("Driver")] = String(DRIVER_NAME);
    device[String("Transport")] = String("USB");
    device[String("Port")] = String("usb-") + String(name);
    device[String("BaudRate")] = String("9600");
    return device;
}

class Finder : public QVIManager::FindDevices_V1 {
public:
    List<DeviceMap> FindDevices() override
    {
        List<DeviceMap> devices;
#if defined(DRIVER_SERIAL_LESS)
        devices.Append(Device(nullptr, "Nameless"));
#else
        devices.Append(Device("1001", "Sim A"));
        devices.Append(Device("1002", "Sim B"));
#endif
        return devices;
    }
    bool IsDeviceAvailable(DeviceMap) override
    {
        const char* available = std::getenv("QVI_TEST_AVAILABLE");
        const std::string answer = available == nullptr ? "yes" : available;
        if (answer == "throw") {
            throw Utilities::ExceptionResourceNotAvailable("the device cannot be asked");
        }
        return answer != "no";
    }
};

class Driver : public TestPlugins::InstrumentProbe, public TestPlugins::ButtonProbe {
public:
    static Map<String, Anything> GetDescriptor()
    {
        Map<String, Anything> descriptor =
            Utilities::MakeComponentDescriptor(DRIVER_NAME, "$Revision: 1.0 $", "TestInstruments");
        descriptor[String("QVIInstrument")] = Anything("1");
        return descriptor;
    }
    SmartPointer<Utilities::Component> GetInterface(const String& name) override
    {
#if defined(DRIVER_NO_FINDER)
        (void)name;
        return SmartPointer<Utilities::Component>();
#else
        if (std::string(name.GetCharPointer()) != "FindDevices_V1") {
            return SmartPointer<Utilities::Component>();
        }
        return SmartPointer<Utilities::Component>(new Finder());
#endif
    }
    void SetParameters(const DeviceMap& given) override
    {
        const std::lock_guard<std::mutex> hold(guard);
        ++parameterised;
        parameters = given;
    }
    void Connect() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        ++connected;
    }
    std::string Parameter(const std::string& key) override
    {
        const std::lock_guard<std::mutex> hold(guard);
        Utilities::MapIterator<String, String> found = parameters.Find(String(key.c_str()));
        return found.IsValid() ? found.GetValue().GetCharPointer() : "(none)";
    }
    int TimesParameterised() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        return parameterised;
    }
    int TimesConnected() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        return connected;
    }

    SmartPointer<List<String>> GetButtonEvents() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        ++cycles;
        return TestPlugins::EventNames(told);
    }
    Map<String, Anything> PollButtons(SmartPointer<List<String>> events) override
    {
        const std::lock_guard<std::mutex> hold(guard);
        Map<String, Anything> occurred;
        for (ListIterator<String> name = events->Begin(); name.IsValid(); name++) {
            const std::string event(name.Current().GetCharPointer());
            if (std::find(told.begin(), told.end(), event) == told.end()) {
                told.push_back(event);
            }
            const auto pressed = presses.find(event);
            if (pressed != presses.end()) {
                occurred[name.Current()] = Anything(pressed->second);
                presses.erase(pressed);
            }
        }
        return occurred;
    }
    void Press(const std::string& event, long value) override
    {
        const std::lock_guard<std::mutex> hold(guard);
        presses[event] = value;
    }
    long Cycles() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        return cycles;
    }

private:
    std::mutex guard;
    DeviceMap parameters;
    int parameterised = 0;
    int connected = 0;
    long cycles = 0;
    std::vector<std::string> told;
    std::map<std::string, long> presses;
};

Utilities::ComponentCreatorNormal<Driver> creator;

} // namespace
