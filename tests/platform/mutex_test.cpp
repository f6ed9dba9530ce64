// Mutex and the library's MutexImplementation within one process: owned by
// a thread and re-entrant for it, timeouts (0 tries, -1 waits for ever),
// abandoned mutexes, failures that have no visible effect, and names
// shared by every Mutex of the name.

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/mutex.h"
#include "qvimanager/platform/posix/cmutex.h"
#include "qvimanager/platform/posix/mutex_implementation_pc.h"
#include "tests/platform/thread_support.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

using TestSupport::FailureText;
using ThreadTests::Gate;
using ThreadTests::MillisecondsOf;
using ThreadTests::WaitUntil;
using Utilities::CMutex;
using Utilities::ExceptionMultithreading;
using Utilities::ExceptionNullpointer;
using Utilities::Mutex;
using Utilities::MutexImplementation;
using Utilities::MutexImplementation_PC;
using Utilities::Resolve;
using Utilities::SmartPointer;
using Utilities::String;

// The bound of a call that should not wait.
const long long kNoWait = ThreadTests::kSlack;

// What Lock(timeout) gives on another thread.
bool LockElsewhere(Mutex& mutex, long timeout)
{
    bool locked = false;
    std::thread other([&] {
        locked = mutex.Lock(timeout);
        if (locked) {
            mutex.Unlock();
        }
    });
    other.join();
    return locked;
}

// A name of this test process alone.
std::string UniqueName(const char* what)
{
    return std::string("test-") + what + "-" + std::to_string(getpid());
}

bool SharedObjectExists(const std::string& name)
{
    return std::filesystem::exists("/dev/shm/qvimanager-mutex-" + name);
}

// ---------------------------------------------------------------- unnamed

TEST(Mutex, LockOfAFreeMutexSucceedsAtOnce)
{
    Mutex mutex(String(""));
    bool locked = false;
    EXPECT_LT(MillisecondsOf([&] { locked = mutex.Lock(0); }), kNoWait);
    EXPECT_TRUE(locked);
    mutex.Unlock();
}

TEST(Mutex, OwnerLocksAgainWithoutWaitingAndNeedsAnUnlockForEachLock)
{
    Mutex mutex(String(""));
    ASSERT_TRUE(mutex.Lock(0));
    ASSERT_TRUE(mutex.Lock(0));
    ASSERT_TRUE(mutex.Lock(-1));
    mutex.Unlock();
    mutex.Unlock();
    EXPECT_FALSE(LockElsewhere(mutex, 0));
    mutex.Unlock();
    EXPECT_TRUE(LockElsewhere(mutex, 0));
}

TEST(Mutex, OtherThreadTimesOutAfterAtLeastTheTimeout)
{
    Mutex mutex(String(""));
    ASSERT_TRUE(mutex.Lock(0));
    bool locked = true;
    EXPECT_TRUE(ThreadTests::TakesAtLeast(300, [&] { locked = LockElsewhere(mutex, 300); }));
    EXPECT_FALSE(locked);
    mutex.Unlock();
}

TEST(Mutex, TimeoutZeroOnlyTries)
{
    Mutex mutex(String(""));
    ASSERT_TRUE(mutex.Lock(0));
    bool locked = true;
    EXPECT_LT(MillisecondsOf([&] { locked = LockElsewhere(mutex, 0); }), kNoWait);
    EXPECT_FALSE(locked);
    mutex.Unlock();
}

TEST(Mutex, WaiterGetsTheMutexWhenItIsReleasedWithinTheTimeout)
{
    Mutex mutex(String(""));
    ASSERT_TRUE(mutex.Lock(0));
    Gate waiting;
    std::atomic<bool> locked{false};
    std::thread other([&] {
        waiting.Open();
        locked = mutex.Lock(60000);
        if (locked) {
            mutex.Unlock();
        }
    });
    ASSERT_TRUE(waiting.WaitFor());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    mutex.Unlock();
    other.join();
    EXPECT_TRUE(locked);
}

// -1 and every other negative timeout wait for as long as it takes.
void ExpectWaitForEver(long timeout)
{
    Mutex mutex(String(""));
    ASSERT_TRUE(mutex.Lock(0));
    std::atomic<bool> done{false};
    std::atomic<bool> locked{false};
    std::thread other([&] {
        locked = mutex.Lock(timeout);
        done = true;
        if (locked) {
            mutex.Unlock();
        }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_FALSE(done.load()) << timeout;
    mutex.Unlock();
    other.join();
    EXPECT_TRUE(locked) << timeout;
}

TEST(Mutex, MinusOneWaitsForEver)
{
    ExpectWaitForEver(-1);
}

TEST(Mutex, AnyNegativeTimeoutWaitsForEver)
{
    ExpectWaitForEver(-5);
}

TEST(Mutex, MutexAbandonedByAThreadThatEndedGoesToTheNextLock)
{
    Mutex mutex(String(""));
    std::thread owner([&] {
        ASSERT_TRUE(mutex.Lock(0));
        ASSERT_TRUE(mutex.Lock(0));
    });
    owner.join();
    EXPECT_TRUE(mutex.Lock(0));
    // Owned once now, however often the dead owner locked it.
    mutex.Unlock();
    EXPECT_TRUE(LockElsewhere(mutex, 0));
}

TEST(Mutex, AMutexWhoseOwnerEndedOwningItGoesWithItsObject)
{
    // Nobody owns it any more: the object is destroyed as usual (the leak
    // checker of the sanitizer build sees whether it stayed behind).
    auto mutex = std::make_unique<Mutex>(String(""));
    std::thread owner([&] { ASSERT_TRUE(mutex->Lock(0)); });
    owner.join();
    EXPECT_NO_THROW(mutex.reset());
}

TEST(Mutex, UnlockByAThreadThatDoesNotOwnItHasNoEffect)
{
    Mutex mutex(String(""));
    ASSERT_TRUE(mutex.Lock(0));
    std::thread other([&] { EXPECT_NO_THROW(mutex.Unlock()); });
    other.join();
    EXPECT_FALSE(LockElsewhere(mutex, 0));
    mutex.Unlock();
    EXPECT_TRUE(LockElsewhere(mutex, 0));
}

TEST(Mutex, UnlockWithoutALockHasNoEffect)
{
    Mutex mutex(String(""));
    EXPECT_NO_THROW(mutex.Unlock());
    EXPECT_TRUE(mutex.Lock(0));
    mutex.Unlock();
    EXPECT_NO_THROW(mutex.Unlock());
    EXPECT_TRUE(LockElsewhere(mutex, 0));
}

TEST(Mutex, CopiesShareTheLock)
{
    Mutex mutex(String(""));
    Mutex copy(mutex);
    ASSERT_TRUE(mutex.Lock(0));
    EXPECT_FALSE(LockElsewhere(copy, 0));
    // The owner may go through the copy.
    EXPECT_TRUE(copy.Lock(0));
    copy.Unlock();
    mutex.Unlock();
    EXPECT_TRUE(LockElsewhere(copy, 0));
}

TEST(Mutex, UnnamedMutexesAreIndependent)
{
    Mutex first(String(""));
    Mutex second(String(""));
    ASSERT_TRUE(first.Lock(0));
    EXPECT_TRUE(LockElsewhere(second, 0));
    first.Unlock();
}

TEST(Mutex, EachMutexHasAnImplementationOfItsOwn)
{
    SmartPointer<MutexImplementation> probe = Resolve<MutexImplementation>(String("MutexImplementation"));
    ASSERT_TRUE(probe.IsValid());
    ASSERT_NE(nullptr, probe->GetCreator());
    EXPECT_EQ(1UL, probe->GetCreator()->GetInstanceCount());
    {
        Mutex first(String(""));
        Mutex copy(first);
        Mutex second(String(UniqueName("own").c_str()));
        EXPECT_EQ(3UL, probe->GetCreator()->GetInstanceCount());
    }
    EXPECT_EQ(1UL, probe->GetCreator()->GetInstanceCount());
}

TEST(Mutex, Labels)
{
    const std::string name = UniqueName("label");
    EXPECT_STREQ("Utilities::Mutex: Utilities::MutexImplementation_PC: unnamed",
                 Mutex(String("")).GetValueString().c_str());
    EXPECT_EQ("Utilities::Mutex: Utilities::MutexImplementation_PC: named \"" + name + "\"",
              Mutex(String(name.c_str())).GetValueString().c_str());
}

// ---------------------------------------------------------------- named, in one process

TEST(NamedMutex, MutexesOfOneNameAreOneLock)
{
    const std::string name = UniqueName("one-lock");
    Mutex first(String(name.c_str()));
    Mutex second(String(name.c_str()));
    ASSERT_TRUE(first.Lock(0));
    EXPECT_FALSE(LockElsewhere(second, 0));
    // The owner is the thread, whichever Mutex it goes through.
    EXPECT_TRUE(second.Lock(0));
    second.Unlock();
    first.Unlock();
    EXPECT_TRUE(LockElsewhere(second, 0));
}

TEST(NamedMutex, OtherNamesAndUnnamedMutexesAreOtherLocks)
{
    const std::string name = UniqueName("mine");
    Mutex mine(String(name.c_str()));
    Mutex other(String((name + "-other").c_str()));
    Mutex unnamed(String(""));
    ASSERT_TRUE(mine.Lock(0));
    EXPECT_TRUE(LockElsewhere(other, 0));
    EXPECT_TRUE(LockElsewhere(unnamed, 0));
    mine.Unlock();
}

TEST(NamedMutex, NamesAreCaseSensitive)
{
    const std::string name = UniqueName("Case");
    std::string lower = name;
    lower[5] = 'c';
    Mutex upper(String(name.c_str()));
    Mutex other(String(lower.c_str()));
    ASSERT_TRUE(upper.Lock(0));
    EXPECT_TRUE(LockElsewhere(other, 0));
    upper.Unlock();
}

TEST(NamedMutex, AnyBytesMakeAName)
{
    const std::string name = UniqueName("a/b c%d\\e");
    Mutex first(String(name.c_str()));
    Mutex second(String(name.c_str()));
    ASSERT_TRUE(first.Lock(0));
    EXPECT_FALSE(LockElsewhere(second, 0));
    first.Unlock();
    EXPECT_TRUE(SharedObjectExists("test-a%2Fb%20c%25d%5Ce-" + std::to_string(getpid())));
}

TEST(NamedMutex, TooLongANameIsRefused)
{
    const std::string name(300, 'n');
    EXPECT_EQ("Could not create mutex \"" + name + "\": name too long",
              FailureText<ExceptionMultithreading>([&] { Mutex mutex(String(name.c_str())); }));
}

TEST(NamedMutex, TheNameGoesWithTheLastMutexOfIt)
{
    const std::string name = UniqueName("goes");
    {
        Mutex first(String(name.c_str()));
        EXPECT_TRUE(SharedObjectExists(name));
        {
            Mutex second(String(name.c_str()));
        }
        EXPECT_TRUE(SharedObjectExists(name));
    }
    EXPECT_FALSE(SharedObjectExists(name));
}

TEST(NamedMutex, AbandonedByAThreadThatEndedGoesToTheNextLock)
{
    const std::string name = UniqueName("abandoned");
    Mutex mutex(String(name.c_str()));
    std::thread owner([&] { ASSERT_TRUE(mutex.Lock(0)); });
    owner.join();
    EXPECT_TRUE(mutex.Lock(0));
    mutex.Unlock();
    EXPECT_TRUE(LockElsewhere(mutex, 0));
}

TEST(NamedMutex, AMutexWhoseOwnerEndedOwningItGoesWithItsObjectAndItsName)
{
    // The last object of the name goes, and with it the name, although its
    // owner thread ended holding it.
    const std::string name = UniqueName("owner-ended");
    auto mutex = std::make_unique<Mutex>(String(name.c_str()));
    std::thread owner([&] { ASSERT_TRUE(mutex->Lock(0)); });
    owner.join();
    ASSERT_TRUE(SharedObjectExists(name));
    mutex.reset();
    EXPECT_FALSE(SharedObjectExists(name));
    // A new mutex of the name starts free.
    Mutex again(String(name.c_str()));
    EXPECT_TRUE(LockElsewhere(again, 0));
}

TEST(NamedMutex, ManyThreadsOpeningAndClosingOneNameKeepOneLock)
{
    // Every thread counts inside the lock; a lost exclusion would lose
    // counts.
    const std::string name = UniqueName("many");
    long counted = 0;
    std::vector<std::thread> threads;
    std::vector<Mutex> mutexes;
    for (int index = 0; index < 4; ++index) {
        mutexes.emplace_back(String(name.c_str()));
    }
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&, index] {
            for (int round = 0; round < 2000; ++round) {
                ASSERT_TRUE(mutexes[static_cast<std::size_t>(index)].Lock(-1));
                const long seen = counted;
                counted = seen + 1;
                mutexes[static_cast<std::size_t>(index)].Unlock();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(8000, counted);
}

// ---------------------------------------------------------------- the implementation

TEST(MutexImplementation, LockAndUnlockBeforeInitializeThrow)
{
    MutexImplementation_PC implementation;
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { implementation.Lock(0); }));
    EXPECT_EQ("Failed to access to nullpointer.",
              FailureText<ExceptionNullpointer>([&] { implementation.Unlock(); }));
    EXPECT_STREQ("Utilities::MutexImplementation_PC: not initialised", implementation.GetValueString().c_str());
}

TEST(MutexImplementation, FailedUnlockHasNoVisibleEffect)
{
    MutexImplementation_PC implementation;
    implementation.Initialize(String(""));
    EXPECT_NO_THROW(implementation.Unlock());
    EXPECT_TRUE(implementation.Lock(0));
    implementation.Unlock();
}

TEST(MutexImplementation, Descriptor)
{
    Utilities::Map<String, Utilities::Anything> descriptor = MutexImplementation_PC::GetDescriptor();
    EXPECT_EQ(3UL, descriptor.GetCount());
    EXPECT_STREQ("MutexImplementation", descriptor[String("name")].GetString().GetCharPointer());
    EXPECT_STREQ("$Revision: 1.5 $", descriptor[String("version")].GetString().GetCharPointer());
    EXPECT_STREQ("Multithreading", descriptor[String("category")].GetString().GetCharPointer());
}

TEST(CMutex, FailuresLeaveTheirErrorNumber)
{
    CMutex mutex("");
    EXPECT_EQ(0, mutex.Unlock());
    EXPECT_EQ(static_cast<unsigned long>(EPERM), CMutex::GetLastError());
    ASSERT_EQ(1, mutex.Lock(0));
    std::thread other([&] {
        EXPECT_EQ(0, mutex.Lock(0));
        EXPECT_EQ(static_cast<unsigned long>(ETIMEDOUT), CMutex::GetLastError());
        EXPECT_EQ(0, mutex.Unlock());
        EXPECT_EQ(static_cast<unsigned long>(EPERM), CMutex::GetLastError());
    });
    other.join();
    EXPECT_EQ(1, mutex.Unlock());
}

TEST(CMutex, ClosingReleasesWhatTheClosingThreadHolds)
{
    const std::string name = UniqueName("closing");
    CMutex keeper(name.c_str());
    {
        CMutex holder(name.c_str());
        ASSERT_EQ(1, holder.Lock(0));
        ASSERT_EQ(1, holder.Lock(0));
    }
    std::thread other([&] {
        EXPECT_EQ(1, keeper.Lock(0));
        EXPECT_EQ(1, keeper.Unlock());
    });
    other.join();
}

} // namespace
