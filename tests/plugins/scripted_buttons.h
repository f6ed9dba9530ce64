#ifndef QVIMANAGER_TESTS_PLUGINS_SCRIPTED_BUTTONS_H
#define QVIMANAGER_TESTS_PLUGINS_SCRIPTED_BUTTONS_H

// The interface of the test plug-in "scripted_buttons": an instrument
// component "ScriptedButtons" (a new one for each Resolve) whose button
// events follow a script that the test sets. Shared by the plug-in and the
// test programs.
//
// A poll cycle of InstrumentEvents_V1 calls GetButtonEvents once and then
// PollButtons. GetButtonEvents counts the cycle and takes the script's next
// step (an empty one once the script is used up); the PollButtons that
// follows hands that step out, and any later PollButtons before the next
// GetButtonEvents gets an empty map. GetButtonEvents returns the names that
// PollButtons was told of so far, in the order first told.
//
// Every operation may come from any thread: the instrument takes a lock of
// its own.

#include "qvimanager/instruments/interfaces/instrument_buttons_v1.h"

#include <chrono>
#include <string>
#include <vector>

namespace TestPlugins {

// One event of a step: its name and a value, a number or (with `isText`) a
// text.
struct ScriptedEvent {
    std::string name;
    long number = 0;
    std::string text;
    bool isText = false;
};

// The events of one poll cycle.
using ScriptedStep = std::vector<ScriptedEvent>;

class ScriptedButtons : public QVIManager::InstrumentButtons_V1 {
public:
    // Behind the four slots of InstrumentButtons_V1. Replaces the script;
    // the next GetButtonEvents takes its first step.
    virtual void SetScript(const std::vector<ScriptedStep>& steps) = 0;
    // How often GetButtonEvents was called (the poll cycles begun), and
    // when, on the steady clock.
    virtual long Cycles() = 0;
    virtual std::vector<std::chrono::steady_clock::time_point> CycleTimes() = 0;
    // The names of each PollButtons call, in call order.
    virtual std::vector<std::vector<std::string>> PollCalls() = 0;
};

} // namespace TestPlugins

#endif
