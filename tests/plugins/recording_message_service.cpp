// A "MessageService" for the tests (see recording_service.h): one service
// for the whole plug-in, which records every posted event and delivers it
// to the callbacks registered under its name, in the order registered.
// A callback that throws ends the delivery; the exception passes on to the
// caller of PostEvent.

#include "qvimanager/components/component_creator.h"
#include "tests/plugins/plugin_probe.h"
#include "tests/plugins/recording_service.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {

using Utilities::Anything;
using Utilities::Callback;
using Utilities::Map;
using Utilities::String;

class RecordingService : public TestPlugins::RecordingMessageService {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("MessageService", "$Revision: 1.0 $", "GUI");
    }

    // Callbacks run under the lock: they are not copied on the posting
    // thread (copies of a Callback share a count that is not synchronised),
    // and none can be unregistered while it runs. The lock is recursive, so
    // a callback may ask the service too.
    void PostEvent(const String& event, Anything& value) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        const std::string name(event.GetCharPointer());
        posted.push_back(TestPlugins::PostedEvent{name, value.GetValueString().c_str()});
        const auto found = callbacks.find(name);
        if (found == callbacks.end()) {
            return;
        }
        for (Callback& callback : found->second) {
            callback.Execute(value);
        }
    }
    void RegisterCallback(const String& event, Callback& callback) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        callbacks[event.GetCharPointer()].push_back(callback);
    }
    void UnregisterCallback(const String& event) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        callbacks.erase(event.GetCharPointer());
    }

    std::vector<TestPlugins::PostedEvent> PostedEvents() override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        return posted;
    }
    long CallbackCount(const std::string& event) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        const auto found = callbacks.find(event);
        return found == callbacks.end() ? 0 : static_cast<long>(found->second.size());
    }
    void Clear() override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        posted.clear();
        callbacks.clear();
    }

private:
    std::recursive_mutex guard;
    std::vector<TestPlugins::PostedEvent> posted;
    std::map<std::string, std::vector<Callback>> callbacks;
};

Utilities::ComponentCreatorSingleton<RecordingService> creator;

} // namespace
