#ifndef QVIMANAGER_INSTRUMENTS_INTERFACES_INSTRUMENT_BUTTONS_V1_H
#define QVIMANAGER_INSTRUMENTS_INTERFACES_INSTRUMENT_BUTTONS_V1_H

// InstrumentButtons_V1: what an instrument component offers, by being of
// this class too, so that InstrumentEvents_V1 can poll its buttons and its
// connection state.
//
// The virtual operations stand in their slot order, directly behind those
// of Component; slots 1 and 3 are placeholders the library never calls.
//
// Component is a virtual base: one class may implement several of these
// interfaces (an instrument that is also InstrumentButtons_V1, which
// InstrumentEvents_V1 needs, or its own FindDevices_V1) and its objects are
// still one Component each, made, counted and released once. Cast between
// the interfaces with DynamicCast, never with static_cast.

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace QVIManager {

class InstrumentButtons_V1 : public virtual Utilities::Component {
public:
    // Slot 1. A placeholder: never called by the library.
    virtual void ReservedButtonsOperation1() {}
    // Slot 2. The event names to ask about in this poll cycle.
    virtual Utilities::SmartPointer<Utilities::List<Utilities::String>> GetButtonEvents() = 0;
    // Slot 3. A placeholder: never called by the library.
    virtual void ReservedButtonsOperation3() {}
    // Slot 4. Of the given event names, the events that occurred since the
    // last poll, each with its value. The first call with a name tells the
    // instrument that someone listens to it.
    virtual Utilities::Map<Utilities::String, Utilities::Anything> PollButtons(
        Utilities::SmartPointer<Utilities::List<Utilities::String>> events) = 0;
};

} // namespace QVIManager

#endif
