// my_driver.cpp
#include <qvimanager/components/component_creator.h>
#include <qvimanager/diagnostics/trace.h>
#include <qvimanager/instruments/interfaces/find_devices_v1.h>
#include <qvimanager/instruments/interfaces/instrument_buttons_v1.h>
#include <qvimanager/instruments/interfaces/qvi_instrument.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace {

using Utilities::String;
using DeviceMap = Utilities::Map<String, String>;
using EventNames = Utilities::SmartPointer<Utilities::List<String>>;

class MyFinder : public QVIManager::FindDevices_V1 {
public:
    Utilities::List<DeviceMap> FindDevices() override
    {
        Utilities::List<DeviceMap> devices;
        DeviceMap device;                                    // one per attached device
        device[String("SerialNumber")] = String("4711");     // required
        device[String("Name")] = String("My Spectro");
        device[String("Driver")] = String("MyDriver");       // the component's name
        device[String("Transport")] = String("USB");
        device[String("Port")] = String("/dev/ttyUSB0");
        device[String("BaudRate")] = String("115200");
        devices.Append(device);
        return devices;
    }
    bool IsDeviceAvailable(DeviceMap) override
    {
        return true;   // can the device of this map be reached now?
    }
};

class MyDriver : public QVIManager::QVIInstrument, public QVIManager::InstrumentButtons_V1 {
public:
    static Utilities::Map<String, Utilities::Anything> GetDescriptor()
    {
        Utilities::Map<String, Utilities::Anything> descriptor =
            Utilities::MakeComponentDescriptor("MyDriver", "$Revision: 1.0 $", "Instruments");
        descriptor[String("QVIInstrument")] = Utilities::Anything("1");   // found by the manager
        return descriptor;
    }

    // QVIInstrument
    Utilities::SmartPointer<Utilities::Component> GetInterface(const String& name) override
    {
        if (name == String("FindDevices_V1")) {
            return Utilities::SmartPointer<Utilities::Component>(new MyFinder());
        }
        return Utilities::SmartPointer<Utilities::Component>();
    }
    void SetParameters(const DeviceMap& device) override
    {
        parameters = device;
    }
    void Connect() override
    {
        QVI_TRACE(this, "MyDrivers", "MyDriver", "Connect");   // logged when tracing is on
        // open parameters[String("Port")]
    }

    // InstrumentButtons_V1: called on the poll thread, and PollButtons on
    // the application's thread too when it registers a callback.
    EventNames GetButtonEvents() override   // the events someone listens to
    {
        const std::lock_guard<std::mutex> hold(guard);
        EventNames names(new Utilities::List<String>);
        for (const std::string& name : listened) {
            names->Append(String(name.c_str()));
        }
        return names;
    }
    Utilities::Map<String, Utilities::Anything> PollButtons(EventNames events) override
    {
        const std::lock_guard<std::mutex> hold(guard);
        Utilities::Map<String, Utilities::Anything> occurred;   // of `events`, what happened since the last poll
        for (Utilities::ListIterator<String> event = events->Begin(); event.IsValid(); event++) {
            const std::string name = event.Current().GetCharPointer();
            if (std::find(listened.begin(), listened.end(), name) == listened.end()) {
                listened.push_back(name);   // the first call with a name tells who listens
            }
            if (name == "Button" && ButtonWasPressed()) {
                occurred[event.Current()] = Utilities::Anything(1L);
            }
        }
        return occurred;
    }

private:
    // Asks the device. This one is pressed at every third question.
    bool ButtonWasPressed()
    {
        return ++questions % 3 == 0;
    }

    DeviceMap parameters;
    std::mutex guard;
    std::vector<std::string> listened;
    long questions = 0;
};

Utilities::ComponentCreatorNormal<MyDriver> creator;

} // namespace
