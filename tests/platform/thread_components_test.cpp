// The library's "ThreadImplementation" and "MutexImplementation" as
// components: their descriptors, their replacement by a plug-in of a newer
// revision, a plug-in whose components are no implementations, and what
// Thread and Mutex pass on or swallow of an implementation's failures.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/language_service_interface.h"
#include "qvimanager/platform/mutex.h"
#include "qvimanager/platform/thread.h"
#include "tests/components/load_test_plugin.h"
#include "tests/platform/thread_support.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

namespace {

using TestPlugins::LoadTestPlugin;
using TestSupport::FailureText;
using ThreadTests::MillisecondsOf;
using ThreadTests::WaitUntil;
using Utilities::Anything;
using Utilities::ExceptionMultithreading;
using Utilities::Mutex;
using Utilities::MutexImplementation;
using Utilities::NamingService;
using Utilities::NamingServiceIterator;
using Utilities::Resolve;
using Utilities::SmartPointer;
using Utilities::String;
using Utilities::Thread;
using Utilities::ThreadImplementation;

// The bound of a call that should not wait.
const long long kNoWait = ThreadTests::kSlack;

// Notes the thread Run runs on, and returns at once.
class Noting : public Thread {
public:
    ~Noting() override
    {
        WaitUntil([this] { return ran.load(); });
        KillThread(0);
    }
    long Run() override
    {
        runOn = std::this_thread::get_id();
        ran = true;
        return 0;
    }
    std::atomic<std::thread::id> runOn{};
    std::atomic<bool> ran{false};
};

// Refused by the scripted plug-in's thread implementation.
class RefusedThread : public Thread {
public:
    long Run() override
    {
        return 0;
    }
};

std::string Descriptor(const char* name, const char* key)
{
    NamingServiceIterator entry = NamingService::Instance()->GetNamingServiceIterator(String("name"), Anything(name));
    if (!entry.IsValid()) {
        return "(not registered)";
    }
    return entry->operator[](String(key)).GetString().GetCharPointer();
}

std::string MutexLabel(const char* name)
{
    return Mutex(String(name)).GetValueString().c_str();
}

// ---------------------------------------------------------------- the library's own

TEST(ThreadComponents, TheLibraryOffersBothWithRevisionAndCategory)
{
    EXPECT_EQ("$Revision: 1.4 $", Descriptor("ThreadImplementation", "version"));
    EXPECT_EQ("Multithreading", Descriptor("ThreadImplementation", "category"));
    EXPECT_EQ("$Revision: 1.5 $", Descriptor("MutexImplementation", "version"));
    EXPECT_EQ("Multithreading", Descriptor("MutexImplementation", "category"));
    EXPECT_STREQ("Utilities::ThreadImplementation_PC: no worker",
                 Resolve<ThreadImplementation>(String("ThreadImplementation"))->GetValueString().c_str());
    EXPECT_EQ("Utilities::Mutex: Utilities::MutexImplementation_PC: unnamed", MutexLabel(""));
}

// ---------------------------------------------------------------- replaced by a plug-in

TEST(ThreadComponents, NewerPluginRevisionsReplaceTheLibrarysImplementations)
{
    LoadTestPlugin("thread_scripted_newer");
    EXPECT_EQ("$Revision: 1.5 $", Descriptor("ThreadImplementation", "version"));
    EXPECT_EQ("$Revision: 1.6 $", Descriptor("MutexImplementation", "version"));
    // The plug-in runs Run at once, on the calling thread.
    Noting thread;
    thread.StartThread();
    EXPECT_TRUE(thread.ran.load());
    EXPECT_EQ(std::this_thread::get_id(), thread.runOn.load());
    EXPECT_EQ("Utilities::Mutex: thread_scripted: anything", MutexLabel("anything"));
}

TEST(ThreadComponents, OlderOrTiedPluginRevisionsLeaveTheLibrarysImplementations)
{
    LoadTestPlugin("thread_scripted_older");
    EXPECT_EQ("$Revision: 1.4 $", Descriptor("ThreadImplementation", "version"));
    EXPECT_EQ("$Revision: 1.5 $", Descriptor("MutexImplementation", "version"));
    Noting thread;
    thread.StartThread();
    ASSERT_TRUE(WaitUntil([&] { return thread.ran.load(); }));
    EXPECT_NE(std::this_thread::get_id(), thread.runOn.load());
    EXPECT_EQ("Utilities::Mutex: Utilities::MutexImplementation_PC: unnamed", MutexLabel(""));
}

// ---------------------------------------------------------------- no implementation

TEST(ThreadComponents, WithoutAThreadImplementationStartThrowsAndNothingRuns)
{
    LoadTestPlugin("thread_impostors");
    Noting thread;
    EXPECT_EQ("Could not load thread implementation",
              FailureText<ExceptionMultithreading>([&] { thread.StartThread(); }));
    EXPECT_FALSE(thread.ran.load());
    thread.ran = true;
    // Nothing to kill.
    EXPECT_LT(MillisecondsOf([&] { thread.KillThread(60000); }), kNoWait);
}

TEST(ThreadComponents, TheMissingImplementationTextIsNotTranslated)
{
    // The test service marks every text it cannot translate: a translated
    // text would come out in parentheses.
    LoadTestPlugin("language_service");
    LoadTestPlugin("thread_impostors");
    Utilities::LanguageServiceInterface().EnableMarking(true);
    Noting thread;
    thread.ran = true;
    EXPECT_EQ("Could not load thread implementation",
              FailureText<ExceptionMultithreading>([&] { thread.StartThread(); }));
}

TEST(ThreadComponents, WithoutAMutexImplementationLockSucceedsAtOnceForEveryone)
{
    LoadTestPlugin("thread_impostors");
    Mutex mutex{String("")};
    Mutex named{String("a name")};
    EXPECT_EQ("Utilities::Mutex: no implementation", std::string(mutex.GetValueString().c_str()));
    bool locked = false;
    EXPECT_LT(MillisecondsOf([&] { locked = mutex.Lock(-1); }), kNoWait);
    EXPECT_TRUE(locked);
    EXPECT_TRUE(mutex.Lock(-1));
    EXPECT_TRUE(named.Lock(0));
    std::thread other([&] {
        EXPECT_TRUE(mutex.Lock(-1));
        EXPECT_TRUE(named.Lock(-1));
    });
    other.join();
    EXPECT_NO_THROW(mutex.Unlock());
}

// ---------------------------------------------------------------- failures of an implementation

TEST(ThreadComponents, MutexSwallowsWhatLockAndUnlockThrowAndReportsLocked)
{
    LoadTestPlugin("thread_scripted_newer");
    for (const char* script : {"throw", "throw-other"}) {
        Mutex mutex{String(script)};
        EXPECT_TRUE(mutex.Lock(0)) << script;
        EXPECT_NO_THROW(mutex.Unlock()) << script;
    }
}

TEST(ThreadComponents, MutexPassesOnALockRefused)
{
    LoadTestPlugin("thread_scripted_newer");
    Mutex mutex{String("refuse")};
    EXPECT_FALSE(mutex.Lock(0));
}

TEST(ThreadComponents, WhatInitializeThrowsPassesThroughTheConstructor)
{
    LoadTestPlugin("thread_scripted_newer");
    EXPECT_EQ("refused by the plug-in",
              FailureText<ExceptionMultithreading>([] { Mutex mutex{String("throw-init")}; }));
}

TEST(ThreadComponents, WhatTheThreadImplementationThrowsPassesThroughStart)
{
    LoadTestPlugin("thread_scripted_newer");
    RefusedThread thread;
    EXPECT_EQ("refused by the plug-in", FailureText<ExceptionMultithreading>([&] { thread.StartThread(); }));
    // The implementation was kept: Start stores it before it starts.
    EXPECT_STREQ("(anonymous namespace)::RefusedThread: started (thread_scripted: inline)",
                 thread.GetValueString().c_str());
}

TEST(ThreadComponents, WhatTheKillThrowsPassesThroughKillButNotTheDestructor)
{
    LoadTestPlugin("thread_scripted_newer");
    {
        Noting thread;
        thread.StartThread();
        ASSERT_TRUE(thread.ran.load());
        EXPECT_EQ("kill refused by the plug-in",
                  FailureText<ExceptionMultithreading>([&] { thread.KillThread(1000); }));
        // The flag is set, and the implementation kept for another try.
        EXPECT_STREQ("(anonymous namespace)::Noting: started (thread_scripted: inline)",
                     thread.GetValueString().c_str());
        // ~Noting kills with 0 and succeeds.
    }
    {
        // ~Thread kills with 1000: refused, and swallowed.
        RefusedThread thread;
        EXPECT_THROW(thread.StartThread(), ExceptionMultithreading);
    }
}

} // namespace
