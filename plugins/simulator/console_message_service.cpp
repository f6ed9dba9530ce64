// "MessageService" for console programs: one service for the whole
// program, which keeps the callbacks that the application registered by
// event name and runs those of an event when the event is posted
// (InstrumentEvents_V1 posts the instruments' button and connection
// events).
//
// Echo. With the environment variable QVIMANAGER_MESSAGES set to "stdout"
// or "stderr" when the service is made (its first Resolve), each posted
// event is also written there as one line, before its callbacks run:
//
//     MessageService: Button = 1
//
// (the event's name and its value's GetValueString()). Unset, empty or any
// other value: nothing is written.
//
// Callbacks of an event run in the order they were registered. A callback
// registered while an event is being delivered hears the next event, not
// this one. UnregisterCallback drops every callback of the event; a
// callback may unregister its own event while it runs, and the callbacks
// after it in the same delivery still run. What a callback throws ends the
// delivery and passes to the caller of PostEvent (InstrumentEvents_V1
// swallows it).
//
// Threads: PostEvent comes from the poll thread, registrations from the
// application's. One recursive lock guards everything, and the callbacks
// run under it: a Callback is never copied on the posting thread (copies
// share a count that is not synchronised), and a callback may call the
// service itself. (Callbacks that a callback unregistered are released on
// the posting thread, when the delivery ends.) A callback must therefore
// not wait for a thread that is registering or posting.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/instruments/interfaces/message_service.h"
#include "qvimanager/platform/callback.h"

#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace {

using Utilities::Anything;
using Utilities::Callback;
using Utilities::Map;
using Utilities::String;

// Where QVIMANAGER_MESSAGES sends the echo, or null.
std::FILE* EchoTarget()
{
    const char* const target = std::getenv("QVIMANAGER_MESSAGES");
    const std::string chosen = target != nullptr ? target : "";
    if (chosen == "stdout") {
        return stdout;
    }
    if (chosen == "stderr") {
        return stderr;
    }
    return nullptr;
}

class ConsoleMessageService : public GUI::MessageService {
public:
    ConsoleMessageService() : echo(EchoTarget()) {}

    static Map<String, Anything> GetDescriptor()
    {
        return Utilities::MakeComponentDescriptor("MessageService", "$Revision: 1.0 $", "GUI");
    }

    void PostEvent(const String& event, Anything& value) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        const std::string name(event.GetCharPointer());
        if (echo != nullptr) {
            std::fprintf(echo, "MessageService: %s = %s\n", name.c_str(), value.GetValueString().c_str());
            std::fflush(echo);
        }
        const auto found = callbacks.find(name);
        if (found == callbacks.end()) {
            return;
        }
        // The list stays alive while it is delivered, also if a callback
        // unregisters the event; a list never moves its elements, so one
        // registered meanwhile moves none either.
        const std::shared_ptr<std::list<Callback>> delivered = found->second;
        std::list<Callback>::iterator callback = delivered->begin();
        for (std::size_t count = delivered->size(); count > 0; --count, ++callback) {
            callback->Execute(value);
        }
    }

    void RegisterCallback(const String& event, Callback& callback) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        std::shared_ptr<std::list<Callback>>& list = callbacks[event.GetCharPointer()];
        if (!list) {
            list = std::make_shared<std::list<Callback>>();
        }
        list->push_back(callback);
    }

    void UnregisterCallback(const String& event) override
    {
        const std::lock_guard<std::recursive_mutex> hold(guard);
        callbacks.erase(event.GetCharPointer());
    }

private:
    std::recursive_mutex guard;
    std::FILE* const echo;
    std::map<std::string, std::shared_ptr<std::list<Callback>>> callbacks;
};

Utilities::ComponentCreatorSingleton<ConsoleMessageService> creator;

} // namespace
