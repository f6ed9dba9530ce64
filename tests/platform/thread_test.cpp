// Thread and the library's ThreadImplementation: the four steps of
// starting and killing a worker, the full single sleep, exit codes, the
// worker given up after the wait, a second start, the destructor.

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/posix/thread_implementation_pc.h"
#include "qvimanager/platform/thread.h"
#include "tests/platform/thread_support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using ThreadTests::Gate;
using ThreadTests::MillisecondsOf;
using ThreadTests::TakesAtLeast;
using ThreadTests::WaitUntil;
using Utilities::Resolve;
using Utilities::SmartPointer;
using Utilities::String;
using Utilities::Thread;
using Utilities::ThreadImplementation;
using Utilities::ThreadImplementation_PC;

// The bound of a call that should not wait.
const long long kNoWait = ThreadTests::kSlack;

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Runs until asked to end, testing the flag every millisecond; counts the
// workers inside Run. Kills its worker, and waits for every worker to leave
// Run, before its members go.
class Looping : public Thread {
public:
    ~Looping() override
    {
        KillThread(1000);
        WaitUntil([this] { return running == 0; });
    }
    long Run() override
    {
        ++started;
        ++running;
        while (!ShouldThreadTerminate()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        --running;
        return 7;
    }
    using Thread::ShouldThreadTerminate;

    std::atomic<int> started{0};
    std::atomic<int> running{0};
};

// Waits at a gate that the test opens, then returns 3; signals when it has
// entered and when it is about to return.
class Blocking : public Thread {
public:
    ~Blocking() override
    {
        release.Open();
        left.WaitFor();
    }
    long Run() override
    {
        entered.Open();
        release.WaitFor();
        left.Open();
        return 3;
    }
    using Thread::ShouldThreadTerminate;

    Gate entered;
    Gate release;
    Gate left;
};

// Returns `result` at once, or throws what it is told to. Every test
// starts it: its destructor waits until Run has been left.
class Returning : public Thread {
public:
    enum Ending { Result, LibraryException, StandardException, Integer };
    Returning(Ending how, long result) : how(how), result(result) {}
    ~Returning() override
    {
        left.WaitFor();
        KillThread(0);
    }
    long Run() override
    {
        struct Leave {
            Gate& left;
            ~Leave()
            {
                left.Open();
            }
        } leave{left};
        runOn = std::this_thread::get_id();
        switch (how) {
        case LibraryException:
            throw Utilities::ExceptionMultithreading(String("thrown in Run"));
        case StandardException:
            throw std::runtime_error("thrown in Run");
        case Integer:
            throw 42;
        case Result:
            break;
        }
        return result;
    }

    const Ending how;
    const long result;
    std::atomic<std::thread::id> runOn{};
    Gate left;
};

// An implementation of the library, used directly.
SmartPointer<ThreadImplementation_PC> Implementation()
{
    SmartPointer<ThreadImplementation> resolved = Resolve<ThreadImplementation>(String("ThreadImplementation"));
    return Utilities::DynamicCast<ThreadImplementation_PC>(resolved);
}

long ExitCodeOf(const SmartPointer<ThreadImplementation_PC>& implementation)
{
    long code = -12345;
    EXPECT_TRUE(implementation->GetExitCode(&code));
    return code;
}

// Waits until the worker of `implementation` has ended, and gives its exit
// code.
long EndedExitCode(const SmartPointer<ThreadImplementation_PC>& implementation)
{
    EXPECT_TRUE(WaitUntil([&] { return ExitCodeOf(implementation) != ThreadImplementation_PC::StillActive; }));
    return ExitCodeOf(implementation);
}

// ---------------------------------------------------------------- Thread

TEST(Thread, NewThreadIsIdleWithTheFlagClear)
{
    Looping thread;
    EXPECT_FALSE(thread.ShouldThreadTerminate());
    EXPECT_TRUE(EndsWith(thread.GetValueString().c_str(), "Looping: idle")) << thread.GetValueString().c_str();
}

TEST(Thread, KillingAThreadNeverStartedDoesNothingAndLeavesTheFlag)
{
    Looping thread;
    EXPECT_LT(MillisecondsOf([&] { thread.KillThread(60000); }), kNoWait);
    EXPECT_FALSE(thread.ShouldThreadTerminate());
}

TEST(Thread, StartRunsRunOnAWorkerAndReturnsAtOnce)
{
    Blocking thread;
    // Run waits at its gate: StartThread returning proves it did not wait
    // for Run.
    thread.StartThread();
    ASSERT_TRUE(thread.entered.WaitFor());
    EXPECT_FALSE(thread.left.IsOpen());
    EXPECT_TRUE(EndsWith(thread.GetValueString().c_str(),
                         "Blocking: started (Utilities::ThreadImplementation_PC: worker running)"))
        << thread.GetValueString().c_str();
    thread.release.Open();
    ASSERT_TRUE(thread.left.WaitFor());
}

TEST(Thread, RunIsNotRunOnTheCallingThread)
{
    Returning thread(Returning::Result, 5);
    thread.StartThread();
    ASSERT_TRUE(WaitUntil([&] { return thread.runOn.load() != std::thread::id(); }));
    EXPECT_NE(std::this_thread::get_id(), thread.runOn.load());
}

TEST(Thread, KillSetsTheFlagWaitsTheWholeTimeAndDropsTheImplementation)
{
    Looping thread;
    thread.StartThread();
    ASSERT_TRUE(WaitUntil([&] { return thread.running == 1; }));
    // Run ends within a millisecond of the flag, yet the wait is one sleep
    // of the whole time.
    EXPECT_TRUE(TakesAtLeast(400, [&] { thread.KillThread(400); }));
    EXPECT_TRUE(thread.ShouldThreadTerminate());
    EXPECT_TRUE(EndsWith(thread.GetValueString().c_str(), "Looping: idle"));
    EXPECT_TRUE(WaitUntil([&] { return thread.running == 0; }));
    // A second kill finds no implementation and returns at once.
    EXPECT_LT(MillisecondsOf([&] { thread.KillThread(60000); }), kNoWait);
}

TEST(Thread, KillAfterRunHasReturnedDoesNotWait)
{
    Returning thread(Returning::Result, 5);
    thread.StartThread();
    // After a normal end the implementation stays until KillThread.
    ASSERT_TRUE(WaitUntil([&] {
        return EndsWith(thread.GetValueString().c_str(),
                        "started (Utilities::ThreadImplementation_PC: worker ended, exit code 5)");
    })) << thread.GetValueString().c_str();
    EXPECT_LT(MillisecondsOf([&] { thread.KillThread(60000); }), kNoWait);
    EXPECT_TRUE(EndsWith(thread.GetValueString().c_str(), "Returning: idle"));
}

TEST(Thread, StartClearsTheFlagOfAnEarlierKill)
{
    Looping thread;
    thread.StartThread();
    ASSERT_TRUE(WaitUntil([&] { return thread.running == 1; }));
    thread.KillThread(0);
    EXPECT_TRUE(thread.ShouldThreadTerminate());
    ASSERT_TRUE(WaitUntil([&] { return thread.running == 0; }));
    thread.StartThread();
    EXPECT_FALSE(thread.ShouldThreadTerminate());
    ASSERT_TRUE(WaitUntil([&] { return thread.started == 2 && thread.running == 1; }));
}

TEST(Thread, SecondStartKeepsTheFirstWorkerRunning)
{
    Looping thread;
    thread.StartThread();
    ASSERT_TRUE(WaitUntil([&] { return thread.running == 1; }));
    // The first implementation is dropped; its worker runs on.
    thread.StartThread();
    ASSERT_TRUE(WaitUntil([&] { return thread.started == 2; }));
    EXPECT_EQ(2, thread.running.load());
    // One kill sets the flag that both test.
    thread.KillThread(100);
    EXPECT_TRUE(WaitUntil([&] { return thread.running == 0; }));
}

TEST(Thread, KillZeroDoesNotWaitAndGivesUpAWorkerStillInRun)
{
    Blocking thread;
    thread.StartThread();
    ASSERT_TRUE(thread.entered.WaitFor());
    EXPECT_LT(MillisecondsOf([&] { thread.KillThread(0); }), kNoWait);
    EXPECT_TRUE(thread.ShouldThreadTerminate());
    EXPECT_TRUE(EndsWith(thread.GetValueString().c_str(), "Blocking: idle"));
    // The worker given up is still in Run, which this object outlives.
    EXPECT_FALSE(thread.left.IsOpen());
    thread.release.Open();
    EXPECT_TRUE(thread.left.WaitFor());
}

// Workers inside the Run of Unguarded.
std::atomic<int> unguardedRunning{0};

// Leaves the kill to ~Thread: its Run uses nothing of its own.
class Unguarded : public Thread {
public:
    long Run() override
    {
        ++unguardedRunning;
        while (!ShouldThreadTerminate()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        --unguardedRunning;
        return 0;
    }
};

TEST(Thread, DestructorKillsWithAFullSecond)
{
    std::unique_ptr<Unguarded> thread(new Unguarded());
    thread->StartThread();
    ASSERT_TRUE(WaitUntil([] { return unguardedRunning == 1; }));
    EXPECT_TRUE(TakesAtLeast(1000, [&] { thread.reset(); }));
    EXPECT_TRUE(WaitUntil([] { return unguardedRunning == 0; }));
}

TEST(Thread, DestructorOfAThreadNeverStartedDoesNotWait)
{
    std::unique_ptr<Unguarded> thread(new Unguarded());
    EXPECT_LT(MillisecondsOf([&] { thread.reset(); }), kNoWait);
}

// ---------------------------------------------------------------- the implementation

TEST(ThreadImplementation, ExitCodeIsWhatRunReturns)
{
    Returning thread(Returning::Result, 1234567);
    SmartPointer<ThreadImplementation_PC> implementation = Implementation();
    ASSERT_TRUE(implementation.IsValid());
    implementation->StartThread(&thread);
    EXPECT_EQ(1234567, EndedExitCode(implementation));
}

TEST(ThreadImplementation, ExitCodeIsMinusOneForAnyExceptionLeavingRun)
{
    for (Returning::Ending how : {Returning::LibraryException, Returning::StandardException, Returning::Integer}) {
        Returning thread(how, 5);
        SmartPointer<ThreadImplementation_PC> implementation = Implementation();
        implementation->StartThread(&thread);
        EXPECT_EQ(-1, EndedExitCode(implementation)) << how;
        // Ended: the kill returns at its first read.
        EXPECT_LT(MillisecondsOf([&] { implementation->KillThread(60000); }), kNoWait);
    }
}

TEST(ThreadImplementation, ExceptionInRunEndsTheThreadQuietly)
{
    Returning thread(Returning::StandardException, 5);
    thread.StartThread();
    ASSERT_TRUE(WaitUntil([&] {
        return EndsWith(thread.GetValueString().c_str(), "worker ended, exit code -1)");
    })) << thread.GetValueString().c_str();
    EXPECT_LT(MillisecondsOf([&] { thread.KillThread(60000); }), kNoWait);
}

TEST(ThreadImplementation, WithoutAWorkerTheKillReturnsAndNoExitCodeIsRead)
{
    SmartPointer<ThreadImplementation_PC> implementation = Implementation();
    long code = 77;
    EXPECT_FALSE(implementation->GetExitCode(&code));
    EXPECT_EQ(77, code);
    EXPECT_LT(MillisecondsOf([&] { implementation->KillThread(60000); }), kNoWait);
    EXPECT_STREQ("Utilities::ThreadImplementation_PC: no worker", implementation->GetValueString().c_str());
}

TEST(ThreadImplementation, KillZeroGivesUpAWorkerStillActiveWithExitCode99999)
{
    Blocking thread;
    SmartPointer<ThreadImplementation_PC> implementation = Implementation();
    implementation->StartThread(&thread);
    ASSERT_TRUE(thread.entered.WaitFor());
    EXPECT_EQ(ThreadImplementation_PC::StillActive, ExitCodeOf(implementation));
    EXPECT_LT(MillisecondsOf([&] { implementation->KillThread(0); }), kNoWait);
    EXPECT_EQ(99999, ExitCodeOf(implementation));
    // Given up, the worker ends at its own pace and keeps the exit code.
    thread.release.Open();
    ASSERT_TRUE(thread.left.WaitFor());
    EXPECT_EQ(99999, ExitCodeOf(implementation));
    EXPECT_STREQ("Utilities::ThreadImplementation_PC: worker ended, exit code 99999",
                 implementation->GetValueString().c_str());
}

TEST(ThreadImplementation, KillWaitsTheWholeTimeBeforeGivingUp)
{
    Blocking thread;
    SmartPointer<ThreadImplementation_PC> implementation = Implementation();
    implementation->StartThread(&thread);
    ASSERT_TRUE(thread.entered.WaitFor());
    EXPECT_TRUE(TakesAtLeast(300, [&] { implementation->KillThread(300); }));
    EXPECT_EQ(99999, ExitCodeOf(implementation));
}

TEST(ThreadImplementation, WorkerThatEndsBeforeTheSecondReadKeepsItsExitCode)
{
    Blocking thread;
    SmartPointer<ThreadImplementation_PC> implementation = Implementation();
    implementation->StartThread(&thread);
    ASSERT_TRUE(thread.entered.WaitFor());
    thread.release.Open();
    ASSERT_TRUE(thread.left.WaitFor());
    // Run is returning: the worker has ended by the first read, or by the
    // second, after the wait.
    implementation->KillThread(5000);
    EXPECT_EQ(3, ExitCodeOf(implementation));
}

TEST(ThreadImplementation, DroppingTheImplementationLetsAWorkerRunOn)
{
    Blocking thread;
    {
        SmartPointer<ThreadImplementation_PC> implementation = Implementation();
        implementation->StartThread(&thread);
        ASSERT_TRUE(thread.entered.WaitFor());
    }
    EXPECT_FALSE(thread.left.IsOpen());
    thread.release.Open();
    EXPECT_TRUE(thread.left.WaitFor());
}

TEST(ThreadImplementation, StartWithoutAThreadThrows)
{
    SmartPointer<ThreadImplementation_PC> implementation = Implementation();
    try {
        implementation->StartThread(nullptr);
        FAIL() << "no exception";
    } catch (const Utilities::ExceptionNullpointer& failure) {
        EXPECT_STREQ("Failed to access to nullpointer.", failure.GetExceptionText().GetCharPointer());
    }
    long code = 0;
    EXPECT_FALSE(implementation->GetExitCode(&code));
}

TEST(ThreadImplementation, EachResolveIsANewCountedInstance)
{
    SmartPointer<ThreadImplementation> first = Resolve<ThreadImplementation>(String("ThreadImplementation"));
    SmartPointer<ThreadImplementation> second = Resolve<ThreadImplementation>(String("ThreadImplementation"));
    ASSERT_TRUE(first.IsValid());
    ASSERT_TRUE(second.IsValid());
    EXPECT_NE(&*first, &*second);
    ASSERT_NE(nullptr, first->GetCreator());
    EXPECT_EQ(2UL, first->GetCreator()->GetInstanceCount());
    second = SmartPointer<ThreadImplementation>();
    EXPECT_EQ(1UL, first->GetCreator()->GetInstanceCount());
}

} // namespace
