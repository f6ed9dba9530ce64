#ifndef QVIMANAGER_INSTRUMENTS_INTERFACES_PREFERENCES_H
#define QVIMANAGER_INSTRUMENTS_INTERFACES_PREFERENCES_H

// Preferences: the interface of the settings store, registered under the
// name "Preferences". The instrument manager keeps the recently used
// instrument in it, in the section "QVIInstrumentManager". How the store
// keeps its data, and whether its keys respect case, is the store's own
// choice.
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
#include "qvimanager/foundation/string.h"

namespace QVIManager {

class Preferences : public virtual Utilities::Component {
public:
    // Slot 1. A placeholder: never called by the library.
    virtual void ReservedPreferencesOperation1() {}
    // Slot 2. The text stored under `section` and `key`, or `defaultValue`.
    virtual Utilities::String GetValue(const Utilities::String& section, const Utilities::String& key,
                                       const Utilities::String& defaultValue) = 0;
    // Slot 3. Stores `value` under `section` and `key`.
    virtual void SetValue(const Utilities::String& section, const Utilities::String& key,
                          const Utilities::String& value) = 0;
};

} // namespace QVIManager

#endif
