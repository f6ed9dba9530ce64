// Test instrument drivers, one per build of this file:
// - DRIVER_TWO_DEVICES: "TwoDeviceDriver", two devices with the serial
//   numbers 1001 and 1002. A device counts as available unless the
//   environment variable QVI_TEST_AVAILABLE says "no" ("throw": checking
//   it throws).
// - DRIVER_NO_FINDER: "NoFinderDriver", without "FindDevices_V1".
// - DRIVER_SERIAL_LESS: "SerialLessDriver", whose one device map lacks
//   "SerialNumber".
// Each instrument records what it is told (InstrumentProbe).

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/interfaces/find_devices_v1.h"
#include "tests/plugins/instrument_probe.h"

#include <cstdlib>
#include <string>

namespace {

using Utilities::Anything;
using Utilities::List;
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

class Driver : public TestPlugins::InstrumentProbe {
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
        ++parameterised;
        parameters = given;
    }
    void Connect() override
    {
        ++connected;
    }
    std::string Parameter(const std::string& key) override
    {
        Utilities::MapIterator<String, String> found = parameters.Find(String(key.c_str()));
        return found.IsValid() ? found.GetValue().GetCharPointer() : "(none)";
    }
    int TimesParameterised() override
    {
        return parameterised;
    }
    int TimesConnected() override
    {
        return connected;
    }

private:
    DeviceMap parameters;
    int parameterised = 0;
    int connected = 0;
};

Utilities::ComponentCreatorNormal<Driver> creator;

} // namespace
