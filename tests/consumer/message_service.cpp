// A "MessageService" as an application supplies one: it keeps the
// callbacks by event name and runs those of an event when it is posted.
// Posts come from the poll thread of InstrumentEvents_V1, registrations
// from the application's thread: one lock guards both, and the callbacks
// run under it (copies of a Callback share a count that is not
// synchronised).

#include <qvimanager/components/component_creator.h>
#include <qvimanager/instruments/interfaces/message_service.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {

using Utilities::String;

class ConsumerMessageService : public GUI::MessageService {
public:
    static Utilities::Map<String, Utilities::Anything> GetDescriptor()
    {
        return Utilities::MakeComponentDescriptor("MessageService", "$Revision: 1.0 $", "GUI");
    }
    void PostEvent(const String& event, Utilities::Anything& value) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        for (Utilities::Callback& callback : callbacks[event.GetCharPointer()]) {
            callback.Execute(value);
        }
    }
    void RegisterCallback(const String& event, Utilities::Callback& callback) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        callbacks[event.GetCharPointer()].push_back(callback);
    }
    void UnregisterCallback(const String& event) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        callbacks.erase(event.GetCharPointer());
    }

private:
    std::recursive_mutex guard;
    std::map<std::string, std::vector<Utilities::Callback>> callbacks;
};

// One service for the whole program.
Utilities::ComponentCreatorSingleton<ConsumerMessageService> creator;

} // namespace
