#ifndef QVIMANAGER_TESTS_PLUGINS_RECORDING_SERVICE_H
#define QVIMANAGER_TESTS_PLUGINS_RECORDING_SERVICE_H

// The interface of the test plug-in "recording_message_service": a
// "MessageService" that delivers events as a real one does and keeps a
// record of every posted event for the tests. Shared by the plug-in and the
// test programs.
//
// Every operation may come from any thread: the service takes a lock of its
// own around its lists and around the callbacks it runs.

#include "qvimanager/instruments/interfaces/message_service.h"

#include <string>
#include <vector>

namespace TestPlugins {

// One PostEvent: the event's name and the value's GetValueString().
struct PostedEvent {
    std::string event;
    std::string value;
};

class RecordingMessageService : public GUI::MessageService {
public:
    // Behind the four slots of MessageService. A copy of the record of
    // posted events, oldest first. An event is recorded before its
    // callbacks run, also when one of them throws.
    virtual std::vector<PostedEvent> PostedEvents() = 0;
    // How many callbacks are registered under `event` now.
    virtual long CallbackCount(const std::string& event) = 0;
    // Forgets the record and every callback.
    virtual void Clear() = 0;
};

} // namespace TestPlugins

#endif
