// SimulatedSpectrophotometer: an instrument driver without hardware. Its
// devices, their spectra and whether they are plugged in come from a
// configuration file; a control file per device stands in for the button
// and the cable (simulator_configuration.h has both formats). It is also
// the example to copy when writing a driver for a real device: replace the
// configuration by the device's own discovery, the control file by the
// device's protocol, and keep the rest.
//
// One class implements every interface the library knows of an
// instrument:
// - QVIInstrument: SetParameters takes the device map, Connect finds the
//   device in the configuration and reads its control file. Connect does
//   not fail for an unplugged device, nor for one the configuration does
//   not hold (the instrument manager connects every device it finds, and a
//   Connect that throws would end its search for all drivers); Measure
//   reports those instead. A malformed configuration raises.
// - FindDevices_V1 (GetInterface("FindDevices_V1")): every device of the
//   configuration, in file order, plugged in or not; IsDeviceAvailable
//   says whether it is plugged in now.
// - InstrumentButtons_V1: the events "Button" and "Connection" from the
//   control file.
// - Measurement_V1 (GetInterface("Measurement_V1")): the next spectrum of
//   the device's file.
//
// GetInterface hands out a new object of this class, made by the plug-in's
// creator and sharing this one's device: it is counted, so the plug-in file
// stays loaded while it lives (a plain `new` would not be), and it measures
// the device that this instrument was connected to.
//
// The position of the next reading belongs to the device (its serial
// number), not to an object: every instrument object of the device in the
// process, such as the manager's and the recently used one, reads on where
// the last reading stopped. A new process starts at the first spectrum.
//
// Threads: InstrumentEvents_V1 calls GetButtonEvents and PollButtons on its
// poll thread, RegisterCallback calls PollButtons on the application's
// thread, and the application measures: each object's device state has a
// lock, and the positions one of their own (taken in that order).
//
// Failures leave every operation as ExceptionQVIModule, "Error in
// SimulatedSpectrophotometer: <detail>", with the file and line of a
// malformed configuration or spectra file in the detail.

#include "plugins/simulator/simulator_configuration.h"
#include "plugins/simulator/simulator_spectra.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/components/component_creator.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/instruments/exception_qvi_module.h"
#include "qvimanager/instruments/interfaces/find_devices_v1.h"
#include "qvimanager/instruments/interfaces/instrument_buttons_v1.h"
#include "qvimanager/instruments/interfaces/measurement_v1.h"
#include "qvimanager/instruments/interfaces/qvi_instrument.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

namespace {

using Utilities::Anything;
using Utilities::Component;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::SmartPointer;
using Utilities::String;
using DeviceMap = Map<String, String>;

// A constant expression: trace points keep it in a constant-initialised site.
constexpr const char* kDriver = "SimulatedSpectrophotometer";
const char* const kButton = "Button";
const char* const kConnection = "Connection";

[[noreturn]] void Fail(const std::string& detail)
{
    throw QVIManager::ExceptionQVIModule(String(kDriver), String(detail.c_str()));
}

// Runs `operation`. Exceptions of the library's tree pass; any other
// leaves as ExceptionQVIModule: nothing else may cross into the program.
template <typename Operation>
auto Guarded(Operation&& operation) -> decltype(operation())
{
    try {
        return operation();
    } catch (const std::exception& failure) {
        Fail(failure.what());
    }
}

std::string Text(const String& text)
{
    return text.GetCharPointer();
}

// The device of `parameters` in the configuration: by "SerialNumber", or,
// without one, by "Name" as the instrument manager gives it for the
// recently used device (name "_" serial number).
const Simulator::Device* Identify(const Simulator::Configuration& configuration,
                                  const std::map<std::string, std::string>& parameters)
{
    const auto serial = parameters.find("SerialNumber");
    if (serial != parameters.end()) {
        return Simulator::FindBySerial(configuration, serial->second);
    }
    const auto name = parameters.find("Name");
    return name != parameters.end() ? Simulator::FindByNameAndSerial(configuration, name->second) : nullptr;
}

std::map<std::string, std::string> Parameters(const DeviceMap& device)
{
    std::map<std::string, std::string> parameters;
    for (MapIterator<String, String> entry = device.Begin(); entry.IsValid(); entry++) {
        parameters[Text(entry.GetKey())] = Text(entry.GetValue());
    }
    return parameters;
}

// What a device keeps for the whole process: the spectra as last read and
// the position of the next reading.
struct Readings {
    std::string path;
    double scale = 0.0;
    std::filesystem::file_time_type stamp{};
    std::uintmax_t size = 0;
    std::vector<Simulator::Spectrum> spectra;
    std::size_t next = 0;
};

// The readings of every device, by serial number. A spectra file that has
// changed (its time or size) is read again at the next reading; the
// position stays, counted round the new number of spectra.
class Positions {
public:
    Simulator::Spectrum Next(const Simulator::Device& device)
    {
        const std::lock_guard<std::mutex> hold(guard);
        Readings& readings = devices[device.serial];
        std::error_code ignored;
        const std::filesystem::file_time_type stamp = std::filesystem::last_write_time(device.spectra, ignored);
        const std::uintmax_t size = std::filesystem::file_size(device.spectra, ignored);
        if (readings.spectra.empty() || readings.path != device.spectra || readings.scale != device.scale ||
            readings.stamp != stamp || readings.size != size) {
            readings.spectra = Simulator::ReadSpectra(device.spectra, device.scale);
            readings.path = device.spectra;
            readings.scale = device.scale;
            readings.stamp = stamp;
            readings.size = size;
        }
        const std::size_t index = readings.next % readings.spectra.size();
        readings.next = (index + 1) % readings.spectra.size();
        return readings.spectra[index];
    }

private:
    std::mutex guard;
    std::map<std::string, Readings> devices;
};

Positions& ThePositions()
{
    static Positions positions;
    return positions;
}

// The device an instrument object serves, shared with the objects its
// GetInterface hands out.
struct Session {
    std::mutex guard;
    std::map<std::string, std::string> parameters;
    // Connect was called, and found the device in the configuration.
    bool connected = false;
    bool found = false;
    // Why Connect did not find it.
    std::string missing;
    Simulator::Device device;
    bool plugged = false;
    // The bytes of the control file taken in.
    std::size_t controlRead = 0;
    // The event names announced by a first PollButtons, in that order.
    std::vector<std::string> listened;
    // Events not yet polled: button numbers, and plug states.
    std::deque<long> presses;
    std::deque<bool> connections;
};

class SimulatedSpectrophotometer : public QVIManager::QVIInstrument,
                                   public QVIManager::FindDevices_V1,
                                   public QVIManager::InstrumentButtons_V1,
                                   public QVIManager::Measurement_V1 {
public:
    SimulatedSpectrophotometer() : session(std::make_shared<Session>()) {}

    static Map<String, Anything> GetDescriptor()
    {
        Map<String, Anything> descriptor =
            Utilities::MakeComponentDescriptor(kDriver, "$Revision: 1.0 $", "Instruments");
        // Found by the instrument manager.
        descriptor[String("QVIInstrument")] = Anything("1");
        return descriptor;
    }

    // ---------------------------------------------------------- QVIInstrument

    SmartPointer<Component> GetInterface(const String& name) override;

    void SetParameters(const DeviceMap& parameters) override
    {
        Guarded([&] {
            std::map<std::string, std::string> given = Parameters(parameters);
            const std::lock_guard<std::mutex> hold(session->guard);
            session->parameters.swap(given);
        });
    }

    void Connect() override
    {
        QVI_TRACE(this, "Simulator", kDriver, "Connect");
        Guarded([&] {
            const Simulator::Configuration configuration =
                Simulator::ReadConfiguration(Simulator::ConfigurationPath());
            const std::lock_guard<std::mutex> hold(session->guard);
            Session& state = *session;
            const Simulator::Device* device = Identify(configuration, state.parameters);
            state.connected = true;
            state.found = device != nullptr;
            state.presses.clear();
            state.connections.clear();
            if (device == nullptr) {
                state.missing = "no device of " + Described(state.parameters) + " in " + configuration.path;
                return;
            }
            state.device = *device;
            // What the control file says so far is the device's past: its
            // plug state counts, its presses do not.
            const Simulator::ControlLines control = Simulator::ReadControl(device->control, 0);
            state.plugged = Simulator::PluggedAfter(*device, control.lines);
            state.controlRead = control.end;
        });
    }

    // --------------------------------------------------------- FindDevices_V1

    List<DeviceMap> FindDevices() override
    {
        return Guarded([&] {
            const Simulator::Configuration configuration =
                Simulator::ReadConfiguration(Simulator::ConfigurationPath());
            List<DeviceMap> devices;
            for (const Simulator::Device& device : configuration.devices) {
                DeviceMap map;
                map[String("SerialNumber")] = String(device.serial.c_str());
                map[String("Name")] = String(device.name.c_str());
                map[String("Driver")] = String(kDriver);
                map[String("Transport")] = String(device.transport.c_str());
                map[String("Port")] = String(device.port.c_str());
                map[String("BaudRate")] = String(device.baudRate.c_str());
                devices.Append(map);
            }
            return devices;
        });
    }

    bool IsDeviceAvailable(DeviceMap device) override
    {
        return Guarded([&] {
            const Simulator::Configuration configuration =
                Simulator::ReadConfiguration(Simulator::ConfigurationPath());
            const Simulator::Device* found = Identify(configuration, Parameters(device));
            if (found == nullptr) {
                return false;
            }
            return Simulator::PluggedAfter(*found, Simulator::ReadControl(found->control, 0).lines);
        });
    }

    // --------------------------------------------------- InstrumentButtons_V1

    SmartPointer<List<String>> GetButtonEvents() override
    {
        return Guarded([&] {
            SmartPointer<List<String>> names(new List<String>);
            const std::lock_guard<std::mutex> hold(session->guard);
            for (const std::string& name : session->listened) {
                names->Append(String(name.c_str()));
            }
            // Needs no announcement.
            names->Append(String(kConnection));
            return names;
        });
    }

    Map<String, Anything> PollButtons(SmartPointer<List<String>> events) override
    {
        return Guarded([&] {
            Map<String, Anything> occurred;
            const std::lock_guard<std::mutex> hold(session->guard);
            Session& state = *session;
            // First what happened so far, so that a press before an
            // announcement of "Button" is lost, as it is on a device.
            TakeInControl(state);
            for (ListIterator<String> event = events->Begin(); event.IsValid(); event++) {
                const std::string name = Text(event.Current());
                if (name == kConnection) {
                    if (!state.connections.empty()) {
                        occurred[event.Current()] = Anything(String(state.connections.front() ? "connected"
                                                                                              : "disconnected"));
                        state.connections.pop_front();
                    }
                } else if (std::find(state.listened.begin(), state.listened.end(), name) == state.listened.end()) {
                    // The first call with a name announces it, and reports
                    // nothing for it (InstrumentEvents_V1 drops the result).
                    state.listened.push_back(name);
                } else if (name == kButton && !state.presses.empty()) {
                    // One press per poll: presses taken in together arrive
                    // one poll after the other.
                    occurred[event.Current()] = Anything(state.presses.front());
                    state.presses.pop_front();
                }
            }
            return occurred;
        });
    }

    // --------------------------------------------------------- Measurement_V1

    CMetry::QVSpectrum Measure() override
    {
        QVI_TRACE(this, "Simulator", kDriver, "Measure");
        return Guarded([&] {
            const std::lock_guard<std::mutex> hold(session->guard);
            Session& state = *session;
            if (!state.connected) {
                Fail("the instrument is not connected: give it a device (SetParameters) and Connect it");
            }
            if (!state.found) {
                Fail(state.missing);
            }
            TakeInControl(state);
            if (!state.plugged) {
                Fail(state.device.name + " (" + state.device.serial + ") is not plugged in");
            }
            const Simulator::Spectrum spectrum = ThePositions().Next(state.device);
            float values[CMetry::QVSpectrum::NumberOfDataPoints];
            std::copy(spectrum.begin(), spectrum.end(), values);
            return CMetry::QVSpectrum(values);
        });
    }

private:
    static std::string Described(const std::map<std::string, std::string>& parameters)
    {
        const auto serial = parameters.find("SerialNumber");
        if (serial != parameters.end()) {
            return "serial number " + serial->second;
        }
        const auto name = parameters.find("Name");
        return name != parameters.end() ? "the name " + name->second : "the given parameters";
    }

    static void Plug(Session& state, bool plugged)
    {
        if (state.plugged != plugged) {
            state.plugged = plugged;
            state.connections.push_back(plugged);
        }
    }

    // Takes in the lines appended to the control file since the last time
    // (the caller holds the lock).
    static void TakeInControl(Session& state)
    {
        if (!state.connected || !state.found) {
            return;
        }
        const Simulator::ControlLines control = Simulator::ReadControl(state.device.control, state.controlRead);
        if (control.restarted) {
            Plug(state, state.device.plugged);
        }
        const bool listening =
            std::find(state.listened.begin(), state.listened.end(), kButton) != state.listened.end();
        for (const std::string& line : control.lines) {
            const Simulator::Command command = Simulator::ParseCommand(line);
            if (command.kind == Simulator::Command::Press && state.plugged && listening) {
                state.presses.push_back(command.button);
            } else if (command.kind == Simulator::Command::Unplug) {
                Plug(state, false);
            } else if (command.kind == Simulator::Command::Plug) {
                Plug(state, true);
            }
        }
        state.controlRead = control.end;
    }

    std::shared_ptr<Session> session;
};

Utilities::ComponentCreatorNormal<SimulatedSpectrophotometer> instrumentCreator;

SmartPointer<Component> SimulatedSpectrophotometer::GetInterface(const String& name)
{
    const std::string wanted = Text(name);
    if (wanted != "FindDevices_V1" && wanted != "Measurement_V1") {
        return SmartPointer<Component>();
    }
    return Guarded([&] {
        SmartPointer<Component> handle;
        instrumentCreator.CreateComponent(&handle);
        dynamic_cast<SimulatedSpectrophotometer&>(*handle).session = session;
        return handle;
    });
}

} // namespace
