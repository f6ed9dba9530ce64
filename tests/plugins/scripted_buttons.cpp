// An instrument "ScriptedButtons" for the tests (see scripted_buttons.h):
// its button events follow the script the test sets, and it records how it
// was polled.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "tests/plugins/instrument_probe.h"
#include "tests/plugins/plugin_probe.h"
#include "tests/plugins/scripted_buttons.h"

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

namespace {

using Utilities::Anything;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::Map;
using Utilities::SmartPointer;
using Utilities::String;

class Buttons : public TestPlugins::ScriptedButtons {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("ScriptedButtons", "$Revision: 1.0 $", "Instrument");
    }

    SmartPointer<List<String>> GetButtonEvents() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        cycleTimes.push_back(std::chrono::steady_clock::now());
        pending.clear();
        if (next < script.size()) {
            pending = script[next];
            ++next;
        }
        return TestPlugins::EventNames(told);
    }

    Map<String, Anything> PollButtons(SmartPointer<List<String>> events) override
    {
        const std::lock_guard<std::mutex> hold(guard);
        std::vector<std::string> asked;
        for (ListIterator<String> name = events->Begin(); name.IsValid(); name++) {
            asked.emplace_back(name.Current().GetCharPointer());
            if (std::find(told.begin(), told.end(), asked.back()) == told.end()) {
                told.push_back(asked.back());
            }
        }
        pollCalls.push_back(asked);
        Map<String, Anything> occurred;
        for (const TestPlugins::ScriptedEvent& event : pending) {
            const String key(event.name.c_str());
            occurred[key] = event.isText ? Anything(String(event.text.c_str())) : Anything(event.number);
        }
        pending.clear();
        return occurred;
    }

    void SetScript(const std::vector<TestPlugins::ScriptedStep>& steps) override
    {
        const std::lock_guard<std::mutex> hold(guard);
        script = steps;
        next = 0;
    }
    long Cycles() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        return static_cast<long>(cycleTimes.size());
    }
    std::vector<std::chrono::steady_clock::time_point> CycleTimes() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        return cycleTimes;
    }
    std::vector<std::vector<std::string>> PollCalls() override
    {
        const std::lock_guard<std::mutex> hold(guard);
        return pollCalls;
    }

private:
    std::mutex guard;
    std::vector<TestPlugins::ScriptedStep> script;
    std::size_t next = 0;
    TestPlugins::ScriptedStep pending;
    std::vector<std::string> told;
    std::vector<std::chrono::steady_clock::time_point> cycleTimes;
    std::vector<std::vector<std::string>> pollCalls;
};

Utilities::ComponentCreatorNormal<Buttons> creator;

} // namespace
