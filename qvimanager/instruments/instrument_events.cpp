#include "qvimanager/instruments/instrument_events.h"

#include "qvimanager/components/resolve.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/class_name.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/interfaces/instrument_buttons_v1.h"

#include <typeinfo>

namespace QVIManager {

using Utilities::Anything;
using Utilities::Component;
using Utilities::DynamicCast;
using Utilities::List;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::SmartPointer;
using Utilities::String;

namespace {

// The poll period: how long each cycle waits on the wait mutex.
const long kPollPeriod = 500;
// How long stopping waits for the poll thread.
const unsigned long kStopWait = 1000;

// The instrument as an InstrumentButtons_V1, as DynamicCast and operator->
// give it (ExceptionNullpointer "Failed to access to nullpointer." for an
// empty pointer or an object of another class), but without a counted
// copy: the poll thread must not touch the reference count, which the
// controlling thread shares and which is not synchronised.
InstrumentButtons_V1* ButtonsOf(const SmartPointer<Component>& instrument)
{
    InstrumentButtons_V1* buttons = instrument.IsValid() ? dynamic_cast<InstrumentButtons_V1*>(&*instrument) : nullptr;
    if (buttons == nullptr) {
        throw Utilities::ExceptionNullpointer("Failed to access to nullpointer.");
    }
    return buttons;
}

} // namespace

InstrumentEvents_V1::InstrumentEvents_V1(const SmartPointer<Component>& instrument)
    : Utilities::Thread(), Utilities::Component(), polling(0), messageService(), wait(String("")),
      instrument(instrument)
{
    messageService = Utilities::Resolve<GUI::MessageService>(String("MessageService"));
    if (!wait.Lock(-1)) {
        // The failure goes to the trace and no further: polling then runs
        // without a pause, and nothing is shown or raised.
        QVI_TRACE_MESSAGE(this, "QVIManager", "InstrumentEvents_V1", "InstrumentEvents_V1", "Could lock Wait mutex.");
    }
    StartPolling();
}

InstrumentEvents_V1::~InstrumentEvents_V1()
{
    // The poll thread uses the members below: it is stopped (or, after the
    // wait, given up) before they go. The members then go in reverse order
    // of declaration: instrument, wait mutex, message service.
    try {
        KillThread(kStopWait);
    } catch (...) {
        // A destructor cannot pass it on.
    }
}

void InstrumentEvents_V1::Invariant() const
{
}

Diagnostics::String InstrumentEvents_V1::GetValueString() const
{
    Diagnostics::String text(Utilities::GetRuntimeClassName(typeid(*this)).GetCharPointer());
    text += polling != 0 ? ": polling" : ": stopped";
    return text;
}

long InstrumentEvents_V1::Run()
{
    QVI_TRACE(this, "QVIManager", "InstrumentEvents_V1", "Run");
    while (!ShouldThreadTerminate()) {
        try {
            // Times out: the constructing thread holds the mutex for good.
            static_cast<void>(wait.Lock(kPollPeriod));
            SmartPointer<List<String>> events = ButtonsOf(instrument)->GetButtonEvents();
            Map<String, Anything> occurred = ButtonsOf(instrument)->PollButtons(events);
            for (MapIterator<String, Anything> entry = occurred.Begin(); entry.IsValid(); entry++) {
                messageService->PostEvent(entry.GetKey(), entry.GetValue());
            }
        } catch (...) {
            // A failed cycle is not reported; the next one comes as usual.
        }
    }
    return 0;
}

void InstrumentEvents_V1::RegisterCallback(const String& event, Utilities::Callback callback)
{
    QVI_TRACE_BEGIN(this, "QVIManager", "InstrumentEvents_V1", "RegisterCallback");
    QVI_TRACE_PARAMETER("event", event);
    QVI_TRACE_CALL();
    SmartPointer<List<String>> events(new List<String>);
    events->Append(event);
    // "Connection" is the one event that the instrument need not be told
    // of; any other is announced by a first PollButtons with its name.
    if (!(event == String("Connection"))) {
        static_cast<void>(DynamicCast<InstrumentButtons_V1>(instrument)->PollButtons(events));
    }
    messageService->RegisterCallback(event, callback);
}

void InstrumentEvents_V1::UnregisterCallback(const String& event)
{
    QVI_TRACE_BEGIN(this, "QVIManager", "InstrumentEvents_V1", "UnregisterCallback");
    QVI_TRACE_PARAMETER("event", event);
    QVI_TRACE_CALL();
    messageService->UnregisterCallback(event);
}

void InstrumentEvents_V1::StopPolling()
{
    QVI_TRACE(this, "QVIManager", "InstrumentEvents_V1", "StopPolling");
    if (polling != 1) {
        return;
    }
    KillThread(kStopWait);
    polling = 0;
}

void InstrumentEvents_V1::StartPolling()
{
    QVI_TRACE(this, "QVIManager", "InstrumentEvents_V1", "StartPolling");
    if (polling != 0) {
        return;
    }
    StartThread();
    polling = 1;
}

InstrumentEvents_V1& InstrumentEvents_V1::operator=(const InstrumentEvents_V1&)
{
    return *this;
}

} // namespace QVIManager
