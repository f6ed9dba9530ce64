// The console "MessageService" plug-in, added to the test program's naming
// service and used through GUI::MessageService: callbacks by event name, in
// the order registered, unregistering, callbacks that call the service,
// failures, and posts from another thread while the application registers.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/interfaces/message_service.h"
#include "qvimanager/platform/callback.h"
#include "qvimanager/platform/file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using GUI::MessageService;
using Utilities::Anything;
using Utilities::Callback;
using Utilities::CallbackImplementation;
using Utilities::SmartPointer;
using Utilities::String;

// The service, without callbacks for the events of these tests: it lives
// as long as the program, and ctest runs each test alone, but a run of the
// whole program must not meet the callbacks of an earlier test.
SmartPointer<MessageService> LoadService()
{
    Utilities::NamingService::Instance()->LoadAdditionalPluginLibrary(
        *Utilities::File::NewInstance(String(QVIMANAGER_MESSAGES_PLUGIN)));
    SmartPointer<MessageService> service = Utilities::Resolve<MessageService>(String("MessageService"));
    if (!service.IsValid()) {
        throw std::runtime_error("no MessageService");
    }
    for (const char* event : {"Button", "Connection", "Other", "Nobody"}) {
        service->UnregisterCallback(String(event));
    }
    return service;
}

// What the callbacks saw: "label:value" in the order they ran. Guarded: a
// thread test fills it on another thread.
struct Record {
    std::mutex guard;
    std::vector<std::string> seen;

    void Add(const std::string& entry)
    {
        const std::lock_guard<std::mutex> hold(guard);
        seen.push_back(entry);
    }
    std::vector<std::string> Seen()
    {
        const std::lock_guard<std::mutex> hold(guard);
        return seen;
    }
};

// A callback that records its label and the value, then does `then`.
class Recording : public CallbackImplementation {
public:
    Recording(std::shared_ptr<Record> into, std::string label, std::function<void()> then)
        : record(std::move(into)), label(std::move(label)), then(std::move(then))
    {
    }
    long Execute(const Anything& argument) override
    {
        record->Add(label + ":" + argument.GetValueString().c_str());
        if (then) {
            then();
        }
        return 0;
    }
    bool IsValid() const override
    {
        return true;
    }

private:
    std::shared_ptr<Record> record;
    std::string label;
    std::function<void()> then;
};

Callback Recorder(const std::shared_ptr<Record>& record, const std::string& label,
                  std::function<void()> then = nullptr)
{
    return Callback(SmartPointer<CallbackImplementation>(new Recording(record, label, std::move(then))));
}

void Register(const SmartPointer<MessageService>& service, const char* event, Callback callback)
{
    service->RegisterCallback(String(event), callback);
}

void Post(const SmartPointer<MessageService>& service, const char* event, Anything value)
{
    service->PostEvent(String(event), value);
}

TEST(ConsoleMessageService, IsOneServiceForTheWholeProgram)
{
    SmartPointer<MessageService> service = LoadService();
    SmartPointer<MessageService> again = Utilities::Resolve<MessageService>(String("MessageService"));
    EXPECT_EQ(&*service, &*again);
}

TEST(ConsoleMessageService, RunsTheCallbacksOfTheEventInTheOrderRegistered)
{
    SmartPointer<MessageService> service = LoadService();
    auto record = std::make_shared<Record>();
    Register(service, "Button", Recorder(record, "first"));
    Register(service, "Connection", Recorder(record, "connection"));
    Register(service, "Button", Recorder(record, "second"));
    Post(service, "Button", Anything(3L));
    Post(service, "Nobody", Anything(4L));
    Post(service, "Connection", Anything("lost"));
    EXPECT_EQ((std::vector<std::string>{"first:3", "second:3", "connection:lost"}), record->Seen());
}

TEST(ConsoleMessageService, UnregisteringDropsEveryCallbackOfTheEventOnly)
{
    SmartPointer<MessageService> service = LoadService();
    auto record = std::make_shared<Record>();
    Register(service, "Button", Recorder(record, "a"));
    Register(service, "Button", Recorder(record, "b"));
    Register(service, "Connection", Recorder(record, "c"));
    service->UnregisterCallback(String("Button"));
    service->UnregisterCallback(String("Nobody"));
    Post(service, "Button", Anything(1L));
    Post(service, "Connection", Anything(2L));
    Register(service, "Button", Recorder(record, "d"));
    Post(service, "Button", Anything(5L));
    EXPECT_EQ((std::vector<std::string>{"c:2", "d:5"}), record->Seen());
}

TEST(ConsoleMessageService, ACallbackMayUnregisterItsEventWhileItRuns)
{
    SmartPointer<MessageService> service = LoadService();
    auto record = std::make_shared<Record>();
    Register(service, "Button", Recorder(record, "first", [&] { service->UnregisterCallback(String("Button")); }));
    Register(service, "Button", Recorder(record, "second"));
    Post(service, "Button", Anything(1L));
    Post(service, "Button", Anything(2L));
    EXPECT_EQ((std::vector<std::string>{"first:1", "second:1"}), record->Seen());
}

TEST(ConsoleMessageService, ACallbackRegisteredDuringADeliveryHearsTheNextEvent)
{
    SmartPointer<MessageService> service = LoadService();
    auto record = std::make_shared<Record>();
    bool registered = false;
    Register(service, "Button", Recorder(record, "old", [&] {
                 if (!registered) {
                     registered = true;
                     Register(service, "Button", Recorder(record, "new"));
                 }
             }));
    Post(service, "Button", Anything(1L));
    Post(service, "Button", Anything(2L));
    EXPECT_EQ((std::vector<std::string>{"old:1", "old:2", "new:2"}), record->Seen());
}

TEST(ConsoleMessageService, WhatACallbackThrowsEndsTheDeliveryAndReachesThePoster)
{
    SmartPointer<MessageService> service = LoadService();
    auto record = std::make_shared<Record>();
    Register(service, "Button",
             Recorder(record, "thrower", [] { throw Utilities::ExceptionResourceNotAvailable("callback failed"); }));
    Register(service, "Button", Recorder(record, "after"));
    Anything value(1L);
    try {
        service->PostEvent(String("Button"), value);
        ADD_FAILURE() << "no exception";
    } catch (const Utilities::ExceptionResourceNotAvailable& failure) {
        EXPECT_EQ(std::string("callback failed"), std::string(failure.GetExceptionText().GetCharPointer()));
    }
    EXPECT_EQ((std::vector<std::string>{"thrower:1"}), record->Seen());
}

// One thread posts, as the poll thread does, while this one registers and
// unregisters: every post of "Button" reaches the callback registered for
// good, in order, and nothing breaks (the thread sanitizer watches).
TEST(ConsoleMessageService, PostsFromAnotherThreadMeetRegistrations)
{
    SmartPointer<MessageService> service = LoadService();
    auto record = std::make_shared<Record>();
    Register(service, "Button", Recorder(record, "b"));
    MessageService* const shared = &*service;
    const long posts = 500;
    std::atomic<bool> done(false);
    std::thread poster([&] {
        for (long post = 1; post <= posts; ++post) {
            Anything value(post);
            shared->PostEvent(String("Button"), value);
            Anything other(post);
            shared->PostEvent(String("Other"), other);
        }
        done = true;
    });
    auto others = std::make_shared<Record>();
    while (!done) {
        Register(service, "Other", Recorder(others, "o"));
        service->UnregisterCallback(String("Other"));
        std::this_thread::yield();
    }
    poster.join();
    const std::vector<std::string> seen = record->Seen();
    ASSERT_EQ(static_cast<std::size_t>(posts), seen.size());
    for (long post = 1; post <= posts; ++post) {
        EXPECT_EQ("b:" + std::to_string(post), seen[static_cast<std::size_t>(post - 1)]);
    }
}

} // namespace
