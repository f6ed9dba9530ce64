#ifndef QVIMANAGER_INSTRUMENTS_INTERFACES_MESSAGE_SERVICE_H
#define QVIMANAGER_INSTRUMENTS_INTERFACES_MESSAGE_SERVICE_H

// GUI::MessageService: the interface of the component, registered under the
// name "MessageService", that delivers events to the callbacks an
// application registered under the events' names. InstrumentEvents_V1
// posts from its poll thread: a service must tolerate calls from a thread
// other than the one that made it, and its callbacks run on that thread.
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
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/callback.h"

namespace GUI {

class MessageService : public virtual Utilities::Component {
public:
    // Slot 1. A placeholder: never called by the library.
    virtual void ReservedMessageServiceOperation1() {}
    // Slot 2. Delivers `value` to the callbacks registered under `event`.
    virtual void PostEvent(const Utilities::String& event, Utilities::Anything& value) = 0;
    // Slot 3. Adds a callback for `event`.
    virtual void RegisterCallback(const Utilities::String& event, Utilities::Callback& callback) = 0;
    // Slot 4. Removes the callbacks of `event`.
    virtual void UnregisterCallback(const Utilities::String& event) = 0;
};

} // namespace GUI

#endif
