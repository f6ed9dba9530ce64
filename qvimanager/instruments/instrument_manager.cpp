#include "qvimanager/instruments/instrument_manager.h"

#include "qvimanager/components/component_creator.h"
#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/naming_service_iterator.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/instruments/interfaces/find_devices_v1.h"
#include "qvimanager/instruments/interfaces/preferences.h"

namespace QVIManager {

using Utilities::Anything;
using Utilities::DynamicCast;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::Resolve;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

Utilities::ComponentCreatorSingleton<QVIInstrumentManager> creator;

const char* const kSection = "QVIInstrumentManager";

// The driver's sub-interface "FindDevices_V1", or an empty pointer.
SmartPointer<FindDevices_V1> FindDevicesOf(const SmartPointer<QVIInstrument>& instrument)
{
    return DynamicCast<FindDevices_V1>(instrument->GetInterface(String("FindDevices_V1")));
}

} // namespace

QVIInstrumentManager::QVIInstrumentManager()
    : connected(), drivers(new List<String>()), parameters()
{
    QVI_TRACE(this, "QVIManager", "QVIInstrumentManager", "QVIInstrumentManager");
    for (Utilities::NamingServiceIterator entry =
             Utilities::NamingService::Instance()->GetNamingServiceIterator(String("QVIInstrument"), Anything());
         entry.IsValid(); entry++) {
        const Map<String, Anything>& descriptor = entry.Current();
        drivers->Append(descriptor[String("name")].GetString());
    }
}

QVIInstrumentManager::~QVIInstrumentManager() = default;

bool QVIInstrumentManager::PrepareForUnload()
{
    QVI_TRACE(this, "QVIManager", "QVIInstrumentManager", "PrepareForUnload");
    InstrumentMap& instruments = *connected;
    for (MapIterator<String, SmartPointer<QVIInstrument>> entry = instruments.Begin(); entry.IsValid(); entry++) {
        entry.GetValue() = SmartPointer<QVIInstrument>();
    }
    connected = SmartPointer<InstrumentMap>();
    return true;
}

SmartPointer<List<String>> QVIInstrumentManager::GetListOfInstrumentDrivers()
{
    return drivers;
}

SmartPointer<QVIInstrumentManager::InstrumentMap> QVIInstrumentManager::GetListOfConnectedInstruments()
{
    if (!connected.IsValid()) {
        FindAllInstruments();
    }
    return connected;
}

void QVIInstrumentManager::FindAllInstruments()
{
    QVI_TRACE(this, "QVIManager", "QVIInstrumentManager", "FindAllInstruments");
    if (!connected.IsValid()) {
        connected = SmartPointer<InstrumentMap>(new InstrumentMap());
    } else {
        for (MapIterator<String, SmartPointer<QVIInstrument>> entry = connected->Begin(); entry.IsValid();
             entry++) {
            entry.GetValue() = SmartPointer<QVIInstrument>();
        }
        *connected = InstrumentMap();
    }
    for (ListIterator<String> driver = drivers->Begin(); driver.IsValid(); driver++) {
        const String name = driver.Current();
        SmartPointer<QVIInstrument> probe = Resolve<QVIInstrument>(name);
        SmartPointer<FindDevices_V1> finder = FindDevicesOf(probe);
        if (!finder.IsValid()) {
            continue;
        }
        List<DeviceMap> devices = finder->FindDevices();
        for (ListIterator<DeviceMap> device = devices.Begin(); device.IsValid(); device++) {
            const DeviceMap& found = device.Current();
            MapIterator<String, String> serial = found.Find(String("SerialNumber"));
            if (!serial.IsValid()) {
                throw "Incorrect device- map";
            }
            String key = name;
            key += "_";
            key += serial.GetValue();
            parameters[key] = found;
            SmartPointer<QVIInstrument>& instrument = (*connected)[key];
            instrument = Resolve<QVIInstrument>(name, key);
            instrument->SetParameters(found);
            instrument->Connect();
            QVI_TRACE_MESSAGE(this, "QVIManager", "QVIInstrumentManager", "FindAllInstruments",
                              "QVIInstrumentManager: connected ", key);
        }
    }
}

SmartPointer<QVIInstrument> QVIInstrumentManager::GetRecentUsedInstrument(DeviceMap&)
{
    QVI_TRACE(this, "QVIManager", "QVIInstrumentManager", "GetRecentUsedInstrument");
    SmartPointer<Preferences> preferences = Resolve<Preferences>(String("Preferences"));
    const String section(kSection);
    const String recent = preferences->GetValue(section, String("RecentUsed"), String(""));
    if (recent.Length() == 0) {
        return SmartPointer<QVIInstrument>();
    }
    DeviceMap device;
    device[String("Name")] = recent;
    device[String("Driver")] = preferences->GetValue(section, String("RUDriver"), String(""));
    device[String("Transport")] = preferences->GetValue(section, String("RUTransport"), String(""));
    device[String("Port")] = preferences->GetValue(section, String("RUPort"), String(""));
    device[String("BaudRate")] = preferences->GetValue(section, String("RUBaudRate"), String(""));

    SmartPointer<QVIInstrument> instrument = Resolve<QVIInstrument>(device[String("Driver")], recent);
    if (!instrument.IsValid()) {
        return SmartPointer<QVIInstrument>();
    }
    try {
        if (FindDevicesOf(instrument)->IsDeviceAvailable(device)) {
            instrument->SetParameters(device);
            instrument->Connect();
            return instrument;
        }
    } catch (...) {
        // A device that cannot be checked is no recent device.
    }
    return SmartPointer<QVIInstrument>();
}

void QVIInstrumentManager::SetUsedInstrument(SmartPointer<QVIInstrument> instrument)
{
    QVI_TRACE(this, "QVIManager", "QVIInstrumentManager", "SetUsedInstrument");
    if (!connected.IsValid() || !instrument.IsValid()) {
        return;
    }
    for (MapIterator<String, SmartPointer<QVIInstrument>> entry = connected->Begin(); entry.IsValid(); entry++) {
        if (entry.GetValue() == instrument) {
            WriteParameterMap(parameters[entry.GetKey()]);
            return;
        }
    }
}

void QVIInstrumentManager::SetUsedInstrument(const String&)
{
}

void QVIInstrumentManager::DisconnectInstrument(String key)
{
    QVI_TRACE_BEGIN(this, "QVIManager", "QVIInstrumentManager", "DisconnectInstrument");
    QVI_TRACE_PARAMETER("key", key);
    QVI_TRACE_CALL();
    SmartPointer<QVIInstrument>& instrument = (*connected)[key];
    if (instrument.IsValid()) {
        instrument = SmartPointer<QVIInstrument>();
    }
}

void QVIInstrumentManager::WriteParameterMap(DeviceMap device)
{
    QVI_TRACE(this, "QVIManager", "QVIInstrumentManager", "WriteParameterMap");
    SmartPointer<Preferences> preferences = Resolve<Preferences>(String("Preferences"));
    const String section(kSection);
    String recent = device[String("Name")];
    recent += "_";
    recent += device[String("SerialNumber")];
    preferences->SetValue(section, String("RecentUsed"), recent);
    preferences->SetValue(section, String("RUDriver"), device[String("Driver")]);
    preferences->SetValue(section, String("RUTransport"), device[String("Transport")]);
    preferences->SetValue(section, String("RUPort"), device[String("Port")]);
    preferences->SetValue(section, String("RUbaudrate"), device[String("BaudRate")]);
}

Map<String, Anything> QVIInstrumentManager::GetDescriptor()
{
    return Utilities::MakeComponentDescriptor("QVIInstrumentManager", "$Revision: 1.4 $", "QVIManager");
}

Diagnostics::String QVIInstrumentManager::GetValueString() const
{
    Diagnostics::String text("QVIInstrumentManager: ");
    text += Diagnostics::String(drivers->GetItemCount());
    text += " driver(s), ";
    if (!connected.IsValid()) {
        text += "not searched";
    } else {
        text += Diagnostics::String(connected->GetCount());
        text += " device(s) connected";
    }
    return text;
}

} // namespace QVIManager
