#ifndef QVIMANAGER_TESTS_PLUGINS_INSTRUMENT_PROBE_H
#define QVIMANAGER_TESTS_PLUGINS_INSTRUMENT_PROBE_H

// What the test drivers and stores tell the tests beyond their interfaces,
// shared by the plug-ins and the test programs.

#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/instruments/interfaces/instrument_buttons_v1.h"
#include "qvimanager/instruments/interfaces/preferences.h"
#include "qvimanager/instruments/interfaces/qvi_instrument.h"

#include <string>
#include <vector>

namespace TestPlugins {

// A test driver's instrument: what it was told.
class InstrumentProbe : public QVIManager::QVIInstrument {
public:
    // The parameter `key` of the last SetParameters, or "(none)".
    virtual std::string Parameter(const std::string& key) = 0;
    // How often SetParameters and Connect were called on this instance.
    virtual int TimesParameterised() = 0;
    virtual int TimesConnected() = 0;
};

// A test driver's instrument is an InstrumentButtons_V1 too, with one
// button that the test presses. GetButtonEvents counts the poll cycles and
// names the events told so far; PollButtons tells the events it is given
// and hands out, once, the presses of those events since the last poll.
class ButtonProbe : public QVIManager::InstrumentButtons_V1 {
public:
    // Presses the button `event` with `value`; a later press of the same
    // event before the next poll replaces the value.
    virtual void Press(const std::string& event, long value) = 0;
    // How often GetButtonEvents was called: the poll cycles begun.
    virtual long Cycles() = 0;
};

// `names` as the list GetButtonEvents hands out.
inline Utilities::SmartPointer<Utilities::List<Utilities::String>> EventNames(const std::vector<std::string>& names)
{
    Utilities::SmartPointer<Utilities::List<Utilities::String>> list(new Utilities::List<Utilities::String>);
    for (const std::string& name : names) {
        list->Append(Utilities::String(name.c_str()));
    }
    return list;
}

// A test store: every key and value it holds, one "section/key=value" per
// line, in the order written.
class PreferencesProbe : public QVIManager::Preferences {
public:
    virtual std::string Contents() = 0;
};

} // namespace TestPlugins

#endif
