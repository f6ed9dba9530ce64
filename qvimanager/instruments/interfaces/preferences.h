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

#include "qvimanager/components/component.h"
#include "qvimanager/foundation/string.h"

namespace QVIManager {

class Preferences : public Utilities::Component {
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
