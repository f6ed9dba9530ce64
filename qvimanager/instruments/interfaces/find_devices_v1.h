#ifndef QVIMANAGER_INSTRUMENTS_INTERFACES_FIND_DEVICES_V1_H
#define QVIMANAGER_INSTRUMENTS_INTERFACES_FIND_DEVICES_V1_H

// FindDevices_V1: the sub-interface that a driver's QVIInstrument hands out
// for GetInterface("FindDevices_V1"): which devices are attached. A driver
// without it is skipped by the instrument manager's search.
//
// The virtual operations stand in their slot order, directly behind those
// of Component; slot 1 is a placeholder the library never calls.
//
// Component is a virtual base: one class may implement several of these
// interfaces (an instrument that is also InstrumentButtons_V1, which
// InstrumentEvents_V1 needs, or its own FindDevices_V1) and its objects are
// still one Component each, made, counted and released once. Cast between
// the interfaces with DynamicCast, never with static_cast.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

namespace QVIManager {

class FindDevices_V1 : public virtual Utilities::Component {
public:
    // Slot 1. A placeholder: never called by the library.
    virtual void ReservedFindDevicesOperation1() {}
    // Slot 2. One device map for each attached device. Each holds
    // "SerialNumber" (the manager refuses a map without it), and usually
    // "Name", "Driver" (the driver's component name), "Transport", "Port"
    // and "BaudRate".
    virtual Utilities::List<Utilities::Map<Utilities::String, Utilities::String>> FindDevices() = 0;
    // Slot 3. Whether the device the map describes can be reached now.
    virtual bool IsDeviceAvailable(Utilities::Map<Utilities::String, Utilities::String> device) = 0;
};

} // namespace QVIManager

#endif
