#ifndef QVIMANAGER_INSTRUMENTS_INSTRUMENT_MANAGER_H
#define QVIMANAGER_INSTRUMENTS_INSTRUMENT_MANAGER_H

// QVIInstrumentManager: where an application finds its measuring devices.
//
//     SmartPointer<QVIInstrumentManager> manager =
//         Utilities::Resolve<QVIInstrumentManager>("QVIInstrumentManager");
//     manager->FindAllInstruments();     // asks every driver, connects every device
//     SmartPointer<Map<String, SmartPointer<QVIInstrument>>> devices =
//         manager->GetListOfConnectedInstruments();
//     manager->SetUsedInstrument(chosen);             // remembered in "Preferences"
//     ...                                             // next run:
//     Map<String, String> unused;
//     SmartPointer<QVIInstrument> recent = manager->GetRecentUsedInstrument(unused);
//
// The library's singleton component "QVIInstrumentManager" ("$Revision: 1.4
// $", category "QVIManager"). The drivers are plug-in components of the
// interface QVIInstrument whose descriptors hold the key "QVIInstrument";
// the manager lists them once, when it is made, so drivers added later are
// not seen. A device's key is the driver's component name, "_" and the
// device's serial number; each device gets an instance of its own, the
// driver's component in the pool of that key.
//
// The recently used device is kept in the component "Preferences", section
// "QVIInstrumentManager": "RecentUsed" (name "_" serial), "RUDriver",
// "RUTransport", "RUPort" and the baud rate, written under "RUbaudrate" and
// read under "RUBaudRate". Both spellings are kept on purpose: a store that
// compares keys without regard to case gives the baud rate back, one that
// respects case gives "".
//
// Failures a caller sees:
// - FindAllInstruments throws the bare text "Incorrect device- map" (a
//   `const char*`, no exception class: catch (const char*)) for a device
//   map without "SerialNumber"; the search stops there, and the devices of
//   the drivers before stay connected.
// - Without a "Preferences" component, GetRecentUsedInstrument and
//   SetUsedInstrument throw ExceptionNullpointer "Failed to access to
//   nullpointer.".
// - DisconnectInstrument and PrepareForUnload before the first search throw
//   ExceptionNullpointer "Failed to dereference nullpointer." (the naming
//   service drops that one at its shutdown).
// - What a driver throws while it is found, made or connected passes
//   through, except while the recent device is checked.
//
// No lock: use the manager from one thread.

#include "qvimanager/components/component.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/instruments/interfaces/qvi_instrument.h"

namespace QVIManager {

class QVIInstrumentManager : public Utilities::Component {
public:
    using DeviceMap = Utilities::Map<Utilities::String, Utilities::String>;
    using InstrumentMap = Utilities::Map<Utilities::String, Utilities::SmartPointer<QVIInstrument>>;

    // Lists the drivers: the "name" of every registered descriptor that has
    // the key "QVIInstrument", in descriptor order. A descriptor without
    // "name": ExceptionOutOfBound "Not a valid key for 'operator[key]
    // const'".
    QVIInstrumentManager();
    ~QVIInstrumentManager() override;

    void Invariant() const override {}
    // Before the first search: ExceptionNullpointer "Failed to dereference
    // nullpointer.". Otherwise lets go of every connected instrument and
    // forgets the search; true.
    bool PrepareForUnload() override;

    // The manager's own list of driver names, shared, not copied. The list
    // lives as long as the manager or any pointer to it.
    Utilities::SmartPointer<Utilities::List<Utilities::String>> GetListOfInstrumentDrivers();
    // The connected instruments by device key, shared with the manager;
    // searches first if there was no search yet.
    Utilities::SmartPointer<InstrumentMap> GetListOfConnectedInstruments();
    // Drops every instrument of an earlier search, then asks each driver in
    // list order for its devices (through its "FindDevices_V1"; a driver
    // without one is skipped) and makes, parameterises and connects an
    // instance for each device. The device maps are kept by key; old keys
    // stay among them.
    void FindAllInstruments();
    // The recently used device, connected, if "Preferences" names one and
    // its driver says it is available now; otherwise empty. `ignored` is
    // neither read nor written. The instrument is not among the connected
    // ones. What fails while the device is checked is swallowed (empty
    // result).
    Utilities::SmartPointer<QVIInstrument> GetRecentUsedInstrument(DeviceMap& ignored);
    // Remembers `instrument` as the recently used device in "Preferences",
    // if it is one of the connected instruments (the same object); otherwise
    // stores nothing. An empty pointer is no instrument: a disconnected
    // entry does not match it.
    void SetUsedInstrument(Utilities::SmartPointer<QVIInstrument> instrument);
    // Does nothing.
    void SetUsedInstrument(const Utilities::String& name);
    // Lets go of the instrument of `key` (nothing is called on it); the key
    // stays, and an unknown key is added with an empty pointer. Before the
    // first search: ExceptionNullpointer "Failed to dereference
    // nullpointer.".
    void DisconnectInstrument(Utilities::String key);

    // "name" "QVIInstrumentManager", "version" "$Revision: 1.4 $",
    // "category" "QVIManager".
    static Utilities::Map<Utilities::String, Utilities::Anything> GetDescriptor();
    // "QVIInstrumentManager: N driver(s), " then "not searched" or "M
    // device(s) connected".
    Diagnostics::String GetValueString() const;

    QVIInstrumentManager(const QVIInstrumentManager&) = delete;
    QVIInstrumentManager& operator=(const QVIInstrumentManager&) = delete;

private:
    // Stores the device map as the recently used device.
    void WriteParameterMap(DeviceMap device);

    Utilities::SmartPointer<InstrumentMap> connected;
    Utilities::SmartPointer<Utilities::List<Utilities::String>> drivers;
    Utilities::Map<Utilities::String, DeviceMap> parameters;
};

} // namespace QVIManager

#endif
