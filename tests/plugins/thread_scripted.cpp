// A plug-in with its own "ThreadImplementation" and "MutexImplementation",
// of the revisions THREAD_VERSION and MUTEX_VERSION, which behave so that a
// test can tell them from the library's:
// - its thread implementation runs Run at once on the calling thread, and
//   refuses (throws ExceptionMultithreading "refused by the plug-in") a
//   thread of a class named "...RefusedThread", and refuses to kill
//   (throws ExceptionMultithreading "kill refused by the plug-in") with a
//   wait of exactly 1000 ms, the wait of ~Thread;
// - its mutex implementation does what the mutex's name says: "refuse"
//   never locks, "throw" throws ExceptionMultithreading from Lock and
//   Unlock, "throw-other" throws an int from both, "throw-init" refuses to
//   be initialised; any other name always locks.

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/mutex.h"
#include "qvimanager/platform/thread.h"
#include "tests/plugins/plugin_probe.h"

#include <string>

namespace {

using Utilities::Anything;
using Utilities::Map;
using Utilities::String;


class InlineThreadImplementation : public Utilities::ThreadImplementation {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("ThreadImplementation", THREAD_VERSION, "Multithreading");
    }
    Diagnostics::String GetValueString() const override
    {
        return Diagnostics::String("thread_scripted: inline");
    }
    void KillThread(unsigned long milliseconds) const override
    {
        if (milliseconds == 1000) {
            throw Utilities::ExceptionMultithreading(String("kill refused by the plug-in"));
        }
    }
    void StartThread(Utilities::Thread* thread) override
    {
        if (std::string(thread->GetValueString().c_str()).find("RefusedThread: ") != std::string::npos) {
            throw Utilities::ExceptionMultithreading(String("refused by the plug-in"));
        }
        thread->Run();
    }
};

class ScriptedMutexImplementation : public Utilities::MutexImplementation {
public:
    static Map<String, Anything> GetDescriptor()
    {
        return TestPlugins::Descriptor("MutexImplementation", MUTEX_VERSION, "Multithreading");
    }
    Diagnostics::String GetValueString() const override
    {
        Diagnostics::String text("thread_scripted: ");
        text += script.c_str();
        return text;
    }
    void Initialize(const String& name) override
    {
        if (std::string(name.GetCharPointer()) == "throw-init") {
            throw Utilities::ExceptionMultithreading(String("refused by the plug-in"));
        }
        script = name.GetCharPointer();
    }
    bool Lock(long) override
    {
        Act();
        return script != "refuse";
    }
    void Unlock() override
    {
        Act();
    }

private:
    void Act() const
    {
        if (script == "throw") {
            throw Utilities::ExceptionMultithreading(String("thrown by the plug-in"));
        }
        if (script == "throw-other") {
            throw 42;
        }
    }

    std::string script;
};

Utilities::ComponentCreatorNormal<InlineThreadImplementation> threadCreator;
Utilities::ComponentCreatorNormal<ScriptedMutexImplementation> mutexCreator;

} // namespace
