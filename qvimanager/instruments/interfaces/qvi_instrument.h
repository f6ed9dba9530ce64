#ifndef QVIMANAGER_INSTRUMENTS_INTERFACES_QVI_INSTRUMENT_H
#define QVIMANAGER_INSTRUMENTS_INTERFACES_QVI_INSTRUMENT_H

// QVIInstrument: the interface of an instrument driver's component. A
// driver registers it under its own component name, in a descriptor that
// the instrument manager finds by the query "QVIInstrument" (the key
// "QVIInstrument" present, whatever its value):
//
//     static Utilities::Map<Utilities::String, Utilities::Anything> GetDescriptor()
//     {
//         Utilities::Map<Utilities::String, Utilities::Anything> descriptor =
//             Utilities::MakeComponentDescriptor("MyDriver", "$Revision: 1.0 $", "Instruments");
//         descriptor[Utilities::String("QVIInstrument")] = Utilities::Anything("1");
//         return descriptor;
//     }
//
// The manager makes one instance per device (a named pool per device key)
// and one more to ask the driver for its devices.
//
// The virtual operations stand in their slot order, directly behind those
// of Component: drivers rely on it, so do not reorder them. Slots the
// library never calls hold placeholders, whose meaning is the driver's own;
// they do nothing unless overridden.
//
// Component is a virtual base: one class may implement several of these
// interfaces (an instrument that is also InstrumentButtons_V1, which
// InstrumentEvents_V1 needs, or its own FindDevices_V1) and its objects are
// still one Component each, made, counted and released once. Cast between
// the interfaces with DynamicCast, never with static_cast.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace QVIManager {

class QVIInstrument : public virtual Utilities::Component {
public:
    // Slot 1. A placeholder: never called by the library.
    virtual void ReservedInstrumentOperation1() {}
    // Slot 2. A placeholder: never called by the library.
    virtual void ReservedInstrumentOperation2() {}
    // Slot 3. The driver's sub-interface `name` ("FindDevices_V1", and
    // whatever else the driver offers), or an empty pointer.
    virtual Utilities::SmartPointer<Utilities::Component> GetInterface(const Utilities::String& name) = 0;
    // Slot 4. Takes the device map of the device this instance serves
    // ("SerialNumber", "Name", "Driver", "Transport", "Port", "BaudRate").
    virtual void SetParameters(const Utilities::Map<Utilities::String, Utilities::String>& parameters) = 0;
    // Slot 5. A placeholder: never called by the library.
    virtual void ReservedInstrumentOperation5() {}
    // Slot 6. Opens the device named by the parameters.
    virtual void Connect() = 0;
};

} // namespace QVIManager

#endif
