// InstrumentEvents_V1 with the test plug-ins "recording_message_service"
// (a "MessageService" that records what is posted) and "scripted_buttons"
// (an instrument whose events follow a script): starting and stopping the
// poll thread and what they cost, the poll period, events reaching the
// callbacks, failed cycles, registering, the destructor; and the texts of
// ExceptionQVIModule.
//
// Timing: promised waits are checked from below, and from above only by a
// bound that a loaded machine keeps easily; a wait for the poll thread is a
// wait for what it does, with a patience of 30 s.

#include "qvimanager/components/component.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/exception_qvi_module.h"
#include "qvimanager/instruments/instrument_events.h"
#include "qvimanager/platform/callback.h"
#include "qvimanager/platform/language_service_interface.h"
#include "tests/components/load_test_plugin.h"
#include "tests/platform/thread_support.h"
#include "tests/plugins/recording_service.h"
#include "tests/plugins/scripted_buttons.h"
#include "tests/support/failure_text.h"
#include "tests/support/process_threads.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using QVIManager::ExceptionQVIModule;
using QVIManager::InstrumentEvents_V1;
using TestPlugins::PostedEvent;
using TestPlugins::RecordingMessageService;
using TestPlugins::ScriptedButtons;
using TestPlugins::ScriptedEvent;
using TestPlugins::ScriptedStep;
using TestSupport::FailureText;
using TestSupport::ThreadsOfProcess;
using ThreadTests::Clock;
using ThreadTests::MillisecondsOf;
using ThreadTests::WaitUntil;
using Utilities::Anything;
using Utilities::Callback;
using Utilities::CallbackImplementation;
using Utilities::Component;
using Utilities::DynamicCast;
using Utilities::ExceptionNullpointer;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::Resolve;
using Utilities::SmartPointer;
using Utilities::String;

const char* const kNullpointer = "Failed to access to nullpointer.";
// The poll period and the wait of stopping.
const long long kPeriod = 500;
const long long kStopWait = 1000;
using ThreadTests::kSlack;

// ---------------------------------------------------------------- helpers

SmartPointer<RecordingMessageService> LoadService()
{
    TestPlugins::LoadTestPlugin("recording_message_service");
    SmartPointer<RecordingMessageService> service = Resolve<RecordingMessageService>(String("MessageService"));
    if (!service.IsValid()) {
        throw std::runtime_error("no recording MessageService");
    }
    return service;
}

SmartPointer<ScriptedButtons> LoadButtons()
{
    TestPlugins::LoadTestPlugin("scripted_buttons");
    SmartPointer<ScriptedButtons> buttons = Resolve<ScriptedButtons>(String("ScriptedButtons"));
    if (!buttons.IsValid()) {
        throw std::runtime_error("no ScriptedButtons");
    }
    return buttons;
}

// Whether `buttons` is polled no more over three poll periods.
::testing::AssertionResult NoMoreCycles(const SmartPointer<ScriptedButtons>& buttons)
{
    const long cycles = buttons->Cycles();
    std::this_thread::sleep_for(std::chrono::milliseconds(3 * kPeriod));
    const long after = buttons->Cycles();
    if (after != cycles) {
        return ::testing::AssertionFailure() << after - cycles << " more cycle(s)";
    }
    return ::testing::AssertionSuccess();
}

// Whether the first 20 poll cycles of `buttons` came faster than 19
// pauses could (9.5 s): the loop ran without its pause.
::testing::AssertionResult FirstCyclesWithoutAPause(const SmartPointer<ScriptedButtons>& buttons)
{
    const std::vector<Clock::time_point> times = buttons->CycleTimes();
    if (times.size() < 20) {
        return ::testing::AssertionFailure() << "only " << times.size() << " cycle(s)";
    }
    const long long took = std::chrono::duration_cast<std::chrono::milliseconds>(times[19] - times[0]).count();
    if (took >= 19 * kPeriod) {
        return ::testing::AssertionFailure() << "20 cycles took " << took << " ms";
    }
    return ::testing::AssertionSuccess();
}

SmartPointer<Component> AsInstrument(const SmartPointer<ScriptedButtons>& buttons)
{
    return DynamicCast<Component>(buttons);
}

ScriptedEvent Number(const char* name, long number)
{
    ScriptedEvent event;
    event.name = name;
    event.number = number;
    return event;
}

ScriptedEvent Text(const char* name, const char* text)
{
    ScriptedEvent event;
    event.name = name;
    event.text = text;
    event.isText = true;
    return event;
}

std::string ValueString(const Anything& value)
{
    return value.GetValueString().c_str();
}

// The names of `events`, in order.
std::vector<std::string> Names(const std::vector<PostedEvent>& events)
{
    std::vector<std::string> names;
    for (const PostedEvent& event : events) {
        names.push_back(event.event);
    }
    return names;
}

// The keys of a map of these events, in the map's iteration order: the
// order in which one cycle posts them.
std::vector<std::string> IterationOrder(const ScriptedStep& step)
{
    Map<String, Anything> map;
    for (const ScriptedEvent& event : step) {
        map[String(event.name.c_str())] = Anything(event.number);
    }
    std::vector<std::string> keys;
    for (MapIterator<String, Anything> entry = map.Begin(); entry.IsValid(); entry++) {
        keys.push_back(entry.GetKey().GetCharPointer());
    }
    return keys;
}

// What the application's callbacks were given, shared between the poll
// thread and the test.
class Received {
public:
    void Add(const std::string& tag, const Anything& value)
    {
        const std::lock_guard<std::mutex> hold(guard);
        entries.push_back(tag + "=" + ValueString(value));
    }
    std::vector<std::string> Entries()
    {
        const std::lock_guard<std::mutex> hold(guard);
        return entries;
    }
    std::size_t Count()
    {
        const std::lock_guard<std::mutex> hold(guard);
        return entries.size();
    }

private:
    std::mutex guard;
    std::vector<std::string> entries;
};

// Records what it is given under its tag; throws (an int, as an
// application may) once it has recorded, if told to.
class Recording : public CallbackImplementation {
public:
    Recording(std::shared_ptr<Received> into, std::string name, bool throwing)
        : received(std::move(into)), tag(std::move(name)), throws(throwing)
    {
    }
    long Execute(const Anything& argument) override
    {
        received->Add(tag, argument);
        if (throws) {
            throw 42;
        }
        return 0;
    }
    bool IsValid() const override
    {
        return true;
    }

private:
    std::shared_ptr<Received> received;
    std::string tag;
    bool throws;
};

Callback MakeCallback(const std::shared_ptr<Received>& received, const std::string& tag, bool throws = false)
{
    return Callback(SmartPointer<CallbackImplementation>(new Recording(received, tag, throws)));
}

// ---------------------------------------------------------------- starting and stopping

TEST(InstrumentEventsPolling, ConstructionStartsPolling)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    EXPECT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 1; }));
    const std::string text = events.GetValueString().c_str();
    EXPECT_NE(std::string::npos, text.find("InstrumentEvents_V1: polling")) << text;
}

TEST(InstrumentEventsPolling, WithoutAMutexImplementationTheLoopRunsWithoutAPause)
{
    // A newer "MutexImplementation" that is none: the wait mutex does
    // nothing, and its Lock returns at once.
    TestPlugins::LoadTestPlugin("mutex_impostor");
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 20; }));
    events.StopPolling();
    EXPECT_TRUE(FirstCyclesWithoutAPause(buttons));
}

TEST(InstrumentEventsPolling, AWaitMutexThatCannotBeTakenCostsTheConstructorNothingAndThePollLoopItsPause)
{
    // A newer "MutexImplementation" whose mutexes never lock: the
    // constructor's Lock(-1) fails, which is noted and dropped, and every
    // timed Lock of the poll loop returns at once.
    TestPlugins::LoadTestPlugin("refusing_mutex");
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.RegisterCallback(String("Button"), MakeCallback(received, "button"));
    buttons->SetScript({{Number("Button", 5)}});
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 20 && received->Count() >= 1; }));
    // A loop without a pause may end before KillThread looks: stopping
    // then costs nothing, so only its end is checked.
    events.StopPolling();
    EXPECT_NE(std::string::npos, std::string(events.GetValueString().c_str()).find(": stopped"));
    EXPECT_EQ((std::vector<std::string>{"button=" + ValueString(Anything(5L))}), received->Entries());
    EXPECT_TRUE(FirstCyclesWithoutAPause(buttons));
    EXPECT_TRUE(NoMoreCycles(buttons));
}

TEST(InstrumentEventsPolling, AnObjectThatOutlivesTheThreadThatMadeItPollsWithoutAPause)
{
    // The thread that made the object ends while holding the wait mutex:
    // the mutex is abandoned, the poll thread's Lock gets it and, its owner
    // now, gets it again at once in every later cycle.
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    std::unique_ptr<InstrumentEvents_V1> events;
    std::thread maker([&] { events = std::make_unique<InstrumentEvents_V1>(AsInstrument(buttons)); });
    maker.join();
    ASSERT_NE(nullptr, events);
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 20; }));
    events.reset();
    EXPECT_TRUE(FirstCyclesWithoutAPause(buttons));
    EXPECT_TRUE(NoMoreCycles(buttons));
}

TEST(InstrumentEventsPolling, WithoutAThreadImplementationTheConstructorThrows)
{
    // A newer "ThreadImplementation" that is none.
    TestPlugins::LoadTestPlugin("thread_impostors");
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    EXPECT_EQ("Could not load thread implementation", FailureText<Utilities::ExceptionMultithreading>([&] {
                  InstrumentEvents_V1 events(AsInstrument(buttons));
              }));
    EXPECT_EQ(0, buttons->Cycles());
}

TEST(InstrumentEventsPolling, WithoutAThreadImplementationStartPollingThrowsAndStaysStopped)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.StopPolling();
    TestPlugins::LoadTestPlugin("thread_impostors");
    EXPECT_EQ("Could not load thread implementation",
              FailureText<Utilities::ExceptionMultithreading>([&] { events.StartPolling(); }));
    EXPECT_NE(std::string::npos, std::string(events.GetValueString().c_str()).find(": stopped"));
    EXPECT_TRUE(NoMoreCycles(buttons));
}

TEST(InstrumentEventsPolling, StopPollingWaitsTheFullSecondAndStops)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 1; }));
    EXPECT_TRUE(ThreadTests::TakesAtLeast(kStopWait, [&] { events.StopPolling(); }));
    const std::string text = events.GetValueString().c_str();
    EXPECT_NE(std::string::npos, text.find("InstrumentEvents_V1: stopped")) << text;
    // No more cycles once stopped.
    EXPECT_TRUE(NoMoreCycles(buttons));
}

TEST(InstrumentEventsPolling, StopPollingWhenStoppedReturnsAtOnce)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.StopPolling();
    EXPECT_LT(MillisecondsOf([&] { events.StopPolling(); }), kStopWait);
    EXPECT_LT(MillisecondsOf([&] { events.StopPolling(); }), kStopWait);
    EXPECT_NE(std::string::npos, std::string(events.GetValueString().c_str()).find(": stopped"));
}

TEST(InstrumentEventsPolling, StartPollingTwiceStartsOneThread)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 1; }));
    const long polling = ThreadsOfProcess();
    events.StartPolling();
    events.StartPolling();
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 4; }));
    EXPECT_EQ(polling, ThreadsOfProcess());
    // One thread polls: cycles keep their period (two would poll twice as
    // often).
    const std::vector<Clock::time_point> times = buttons->CycleTimes();
    const long long span = std::chrono::duration_cast<std::chrono::milliseconds>(times[3] - times[0]).count();
    EXPECT_GE(span, 3 * kPeriod - 50);
    // And one stop ends it.
    events.StopPolling();
    EXPECT_TRUE(WaitUntil([&] { return ThreadsOfProcess() == polling - 1; }));
}

TEST(InstrumentEventsPolling, PollingCanBeStartedAgainAfterAStop)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.StopPolling();
    const long cycles = buttons->Cycles();
    events.StartPolling();
    EXPECT_NE(std::string::npos, std::string(events.GetValueString().c_str()).find(": polling"));
    EXPECT_TRUE(WaitUntil([&] { return buttons->Cycles() >= cycles + 2; }));
    EXPECT_TRUE(ThreadTests::TakesAtLeast(kStopWait, [&] { events.StopPolling(); }));
}

TEST(InstrumentEventsPolling, PollPeriodIsAboutHalfASecond)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    const Clock::time_point start = Clock::now();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    const long cycles = 5;
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= cycles; }));
    // Each cycle begins after its wait of 500 ms.
    const std::vector<Clock::time_point> times = buttons->CycleTimes();
    const long long first = std::chrono::duration_cast<std::chrono::milliseconds>(times[0] - start).count();
    EXPECT_GE(first, kPeriod - 5);
    const long long span =
        std::chrono::duration_cast<std::chrono::milliseconds>(times[cycles - 1] - times[0]).count();
    EXPECT_GE(span, (cycles - 1) * kPeriod - 5);
    EXPECT_LT(span, (cycles - 1) * kPeriod + kSlack);
}

TEST(InstrumentEventsPolling, DestructorOfAPollingObjectWaitsTheSecondAndLeavesNoThread)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto events = std::make_unique<InstrumentEvents_V1>(AsInstrument(buttons));
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 1; }));
    const long polling = ThreadsOfProcess();
    events.reset();
    EXPECT_TRUE(WaitUntil([&] { return ThreadsOfProcess() == polling - 1; }));
    // The instrument is no longer polled.
    EXPECT_TRUE(NoMoreCycles(buttons));
}

TEST(InstrumentEventsPolling, DestructorOfAStoppedObjectDoesNotWait)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto events = std::make_unique<InstrumentEvents_V1>(AsInstrument(buttons));
    events->StopPolling();
    EXPECT_LT(MillisecondsOf([&] { events.reset(); }), kStopWait);
}

TEST(InstrumentEventsPolling, AssignmentChangesNothing)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 polling(AsInstrument(buttons));
    InstrumentEvents_V1 stopped((SmartPointer<Component>()));
    stopped.StopPolling();
    polling = stopped;
    EXPECT_NE(std::string::npos, std::string(polling.GetValueString().c_str()).find(": polling"));
    const long cycles = buttons->Cycles();
    EXPECT_TRUE(WaitUntil([&] { return buttons->Cycles() > cycles; }));
}

// ---------------------------------------------------------------- events

TEST(InstrumentEventsDelivery, ScriptedEventsReachTheCallbacksInOrderOfTheCycles)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.RegisterCallback(String("Button"), MakeCallback(received, "button"));
    events.RegisterCallback(String("Connection"), MakeCallback(received, "connection"));
    buttons->SetScript({{Number("Button", 1)}, {}, {Number("Button", 2)}, {Text("Connection", "lost")}});
    ASSERT_TRUE(WaitUntil([&] { return received->Count() >= 3; }));
    const std::vector<std::string> expected = {"button=" + ValueString(Anything(1L)),
                                               "button=" + ValueString(Anything(2L)),
                                               "connection=" + ValueString(Anything(String("lost")))};
    EXPECT_EQ(expected, received->Entries());
    std::vector<std::string> posted = Names(service->PostedEvents());
    EXPECT_EQ((std::vector<std::string>{"Button", "Button", "Connection"}), posted);
}

TEST(InstrumentEventsDelivery, AnEventArrivesWithinTwoPollPeriods)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.RegisterCallback(String("Button"), MakeCallback(received, "button"));
    // The script's first step goes to the next cycle.
    buttons->SetScript({{Number("Button", 7)}});
    ASSERT_TRUE(WaitUntil([&] { return received->Count() >= 1; }));
    EXPECT_EQ("button=" + ValueString(Anything(7L)), received->Entries().at(0));
}

TEST(InstrumentEventsDelivery, EmptyEventMapPostsNothing)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    buttons->SetScript({{}, {}, {}});
    const long cycles = buttons->Cycles();
    ASSERT_TRUE(WaitUntil([&] { return buttons->Cycles() >= cycles + 5; }));
    EXPECT_TRUE(service->PostedEvents().empty());
}

TEST(InstrumentEventsDelivery, ExceptionInACallbackEndsThatCycleOnly)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    const ScriptedStep step = {Number("Alpha", 1), Number("Beta", 2), Number("Gamma", 3)};
    const std::vector<std::string> order = IterationOrder(step);
    ASSERT_EQ(3u, order.size());
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    // The callback of the first event in the cycle's order throws.
    events.RegisterCallback(String(order[0].c_str()), MakeCallback(received, order[0], true));
    events.RegisterCallback(String(order[1].c_str()), MakeCallback(received, order[1]));
    events.RegisterCallback(String(order[2].c_str()), MakeCallback(received, order[2]));
    events.RegisterCallback(String("Connection"), MakeCallback(received, "Connection"));
    buttons->SetScript({step, {Text("Connection", "lost")}});
    ASSERT_TRUE(WaitUntil([&] { return received->Count() >= 2; }));
    // The first event was delivered and threw; the other two of its cycle
    // were lost; the next cycle's event came.
    const long first = order[0] == "Alpha" ? 1 : order[0] == "Beta" ? 2 : 3;
    EXPECT_EQ((std::vector<std::string>{order[0] + "=" + ValueString(Anything(first)),
                                         "Connection=" + ValueString(Anything(String("lost")))}),
              received->Entries());
    EXPECT_EQ((std::vector<std::string>{order[0], "Connection"}), Names(service->PostedEvents()));
    // Polling goes on.
    const long cycles = buttons->Cycles();
    EXPECT_TRUE(WaitUntil([&] { return buttons->Cycles() >= cycles + 2; }));
}

TEST(InstrumentEventsDelivery, EventsWithoutACallbackArePostedAndDropped)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    buttons->SetScript({{Number("Button", 1)}, {Number("Button", 2)}});
    ASSERT_TRUE(WaitUntil([&] { return service->PostedEvents().size() >= 2; }));
    const std::vector<PostedEvent> posted = service->PostedEvents();
    EXPECT_EQ(ValueString(Anything(1L)), posted[0].value);
    EXPECT_EQ(ValueString(Anything(2L)), posted[1].value);
}

TEST(InstrumentEventsDelivery, UnregisteredCallbackGetsNothingMore)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.RegisterCallback(String("Button"), MakeCallback(received, "button"));
    EXPECT_EQ(1, service->CallbackCount("Button"));
    events.UnregisterCallback(String("Button"));
    EXPECT_EQ(0, service->CallbackCount("Button"));
    buttons->SetScript({{Number("Button", 1)}});
    ASSERT_TRUE(WaitUntil([&] { return service->PostedEvents().size() >= 1; }));
    EXPECT_EQ(0u, received->Count());
}

TEST(InstrumentEventsDelivery, GetButtonEventsNamesArePolled)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.RegisterCallback(String("Button"), MakeCallback(received, "button"));
    const std::size_t calls = buttons->PollCalls().size();
    ASSERT_TRUE(WaitUntil([&] { return buttons->PollCalls().size() >= calls + 2; }));
    // Each cycle asks PollButtons about what GetButtonEvents named.
    EXPECT_EQ(std::vector<std::string>{"Button"}, buttons->PollCalls().back());
}

// ---------------------------------------------------------------- registering

TEST(InstrumentEventsRegistering, OtherEventThanConnectionIsAnnouncedByOnePollButtons)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.StopPolling();
    const std::size_t calls = buttons->PollCalls().size();
    auto received = std::make_shared<Received>();
    events.RegisterCallback(String("Button"), MakeCallback(received, "button"));
    const std::vector<std::vector<std::string>> after = buttons->PollCalls();
    ASSERT_EQ(calls + 1, after.size());
    EXPECT_EQ(std::vector<std::string>{"Button"}, after.back());
    EXPECT_EQ(1, service->CallbackCount("Button"));
}

TEST(InstrumentEventsRegistering, ConnectionIsNotAnnounced)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    events.StopPolling();
    const std::size_t calls = buttons->PollCalls().size();
    auto received = std::make_shared<Received>();
    events.RegisterCallback(String("Connection"), MakeCallback(received, "connection"));
    EXPECT_EQ(calls, buttons->PollCalls().size());
    EXPECT_EQ(1, service->CallbackCount("Connection"));
}

TEST(InstrumentEventsRegistering, ConnectionNeedsNoButtonsInstrument)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    auto received = std::make_shared<Received>();
    {
        InstrumentEvents_V1 events(SmartPointer<Component>(new Component));
        events.RegisterCallback(String("Connection"), MakeCallback(received, "plain"));
    }
    {
        InstrumentEvents_V1 events((SmartPointer<Component>()));
        events.RegisterCallback(String("Connection"), MakeCallback(received, "empty"));
    }
    EXPECT_EQ(2, service->CallbackCount("Connection"));
}

TEST(InstrumentEventsRegistering, OtherEventNeedsAButtonsInstrument)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 plain(SmartPointer<Component>(new Component));
    EXPECT_EQ(kNullpointer, FailureText<ExceptionNullpointer>([&] {
                  plain.RegisterCallback(String("Button"), MakeCallback(received, "plain"));
              }));
    InstrumentEvents_V1 empty((SmartPointer<Component>()));
    EXPECT_EQ(kNullpointer, FailureText<ExceptionNullpointer>([&] {
                  empty.RegisterCallback(String("Button"), MakeCallback(received, "empty"));
              }));
    // Nothing was registered.
    EXPECT_EQ(0, service->CallbackCount("Button"));
}

TEST(InstrumentEventsRegistering, WithoutAMessageServiceRegisteringThrows)
{
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    auto received = std::make_shared<Received>();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    EXPECT_EQ(kNullpointer, FailureText<ExceptionNullpointer>([&] {
                  events.RegisterCallback(String("Connection"), MakeCallback(received, "connection"));
              }));
    EXPECT_EQ(kNullpointer, FailureText<ExceptionNullpointer>([&] {
                  events.RegisterCallback(String("Button"), MakeCallback(received, "button"));
              }));
    EXPECT_EQ(kNullpointer, FailureText<ExceptionNullpointer>([&] { events.UnregisterCallback(String("Button")); }));
}

// ---------------------------------------------------------------- failed cycles

TEST(InstrumentEventsFailedCycles, WithoutAMessageServicePollingGoesOn)
{
    SmartPointer<ScriptedButtons> buttons = LoadButtons();
    InstrumentEvents_V1 events(AsInstrument(buttons));
    buttons->SetScript({{Number("Button", 1)}, {Number("Button", 2)}, {Number("Button", 3)}});
    EXPECT_TRUE(WaitUntil([&] { return buttons->Cycles() >= 4; }));
    EXPECT_TRUE(ThreadTests::TakesAtLeast(kStopWait, [&] { events.StopPolling(); }));
}

TEST(InstrumentEventsFailedCycles, WithoutAButtonsInstrumentPollingGoesOnAndStops)
{
    SmartPointer<RecordingMessageService> service = LoadService();
    for (const SmartPointer<Component>& instrument :
         {SmartPointer<Component>(), SmartPointer<Component>(new Component)}) {
        InstrumentEvents_V1 events(instrument);
        // Several failed cycles pass; the object still polls.
        std::this_thread::sleep_for(std::chrono::milliseconds(3 * kPeriod));
        EXPECT_NE(std::string::npos, std::string(events.GetValueString().c_str()).find(": polling"));
        const long polling = ThreadsOfProcess();
        EXPECT_TRUE(ThreadTests::TakesAtLeast(kStopWait, [&] { events.StopPolling(); }));
        EXPECT_TRUE(WaitUntil([&] { return ThreadsOfProcess() == polling - 1; }));
    }
    EXPECT_TRUE(service->PostedEvents().empty());
}

// ---------------------------------------------------------------- ExceptionQVIModule

std::string ModuleText(const ExceptionQVIModule& failure)
{
    return failure.GetExceptionText().GetCharPointer();
}

TEST(ExceptionQVIModuleText, OneArgumentIsTheTextAsGiven)
{
    EXPECT_EQ("Instrument not found", ModuleText(ExceptionQVIModule(String("Instrument not found"))));
    EXPECT_EQ("", ModuleText(ExceptionQVIModule(String(""))));
}

TEST(ExceptionQVIModuleText, ModuleAndDetail)
{
    EXPECT_EQ("Error in Scanner: Lamp failed",
              ModuleText(ExceptionQVIModule(String("Scanner"), String("Lamp failed"))));
}

TEST(ExceptionQVIModuleText, EmptyDetailIsNoResponse)
{
    EXPECT_EQ("Error in Scanner: No response.", ModuleText(ExceptionQVIModule(String("Scanner"), String(""))));
}

TEST(ExceptionQVIModuleText, IsAnExceptionResource)
{
    try {
        throw ExceptionQVIModule(String("Scanner"), String("x"));
    } catch (const Utilities::ExceptionResource& failure) {
        EXPECT_STREQ("Error in Scanner: x", failure.GetExceptionText().GetCharPointer());
    }
}

// The test language service knows neither "Error in " nor "No response.":
// with marking on, a text that was asked for and not translated comes out
// in brackets. The module name and the detail are not asked for.
TEST(ExceptionQVIModuleText, FixedWordsAreTranslatedModuleNameIsNot)
{
    TestPlugins::LoadTestPlugin("language_service");
    Utilities::LanguageServiceInterface().EnableMarking(true);
    EXPECT_EQ("(Error in )Scanner: (No response.)", ModuleText(ExceptionQVIModule(String("Scanner"), String(""))));
    EXPECT_EQ("(Error in )Scanner: Lamp failed",
              ModuleText(ExceptionQVIModule(String("Scanner"), String("Lamp failed"))));
    // A module name that the service would translate stays as it is.
    EXPECT_EQ("(Error in )Missing WhiteReference: (No response.)",
              ModuleText(ExceptionQVIModule(String("Missing WhiteReference"), String(""))));
    // The one-argument form is not translated.
    EXPECT_EQ("Missing WhiteReference", ModuleText(ExceptionQVIModule(String("Missing WhiteReference"))));
}

} // namespace
