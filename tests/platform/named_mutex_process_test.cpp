// Named mutexes between processes: a second process (mutex_holder) holds
// or wants the mutex of a name that this test process uses too.

#include "qvimanager/platform/mutex.h"
#include "tests/platform/thread_support.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <poll.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace {

using ThreadTests::MillisecondsOf;
using Utilities::Mutex;
using Utilities::String;

// The bound of a call that should not wait.
const long long kNoWait = ThreadTests::kSlack;

// The mutex_holder program, running with pipes to its standard input and
// output.
class Holder {
public:
    explicit Holder(const std::string& name)
    {
        int input[2];
        int output[2];
        if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
            ADD_FAILURE() << "pipe: " << std::strerror(errno);
            return;
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, input[0], 0);
        posix_spawn_file_actions_adddup2(&actions, output[1], 1);
        std::string program = QVIMANAGER_MUTEX_HOLDER;
        char* arguments[] = {program.data(), const_cast<char*>(name.c_str()), nullptr};
        const int spawned = posix_spawn(&process, program.c_str(), &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(input[0]);
        close(output[1]);
        toHolder = input[1];
        fromHolder = output[0];
        if (spawned != 0) {
            ADD_FAILURE() << "posix_spawn: " << std::strerror(spawned);
            process = -1;
            return;
        }
        EXPECT_EQ("ready", Read());
    }

    // Lets a holder that still runs end normally, so that it closes its
    // mutex (the last process to close a name removes it); kills it if it
    // does not.
    ~Holder()
    {
        if (process > 0) {
            Send("exit");
            const ThreadTests::Clock::time_point end = ThreadTests::Clock::now() + ThreadTests::kPatience;
            int status = 0;
            pid_t ended = 0;
            while ((ended = waitpid(process, &status, WNOHANG)) == 0 && ThreadTests::Clock::now() < end) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            if (ended == 0) {
                kill(process, SIGKILL);
                Wait();
            }
        }
        close(toHolder);
        close(fromHolder);
    }

    // Sends one command and reads its answer.
    std::string Ask(const std::string& command)
    {
        Send(command);
        return Read();
    }

    void Send(const std::string& command)
    {
        const std::string line = command + "\n";
        EXPECT_EQ(static_cast<ssize_t>(line.size()), write(toHolder, line.data(), line.size()));
    }

    // One line of the holder's output, or "(no answer)" after the test's
    // patience.
    std::string Read()
    {
        std::string line;
        const ThreadTests::Clock::time_point end = ThreadTests::Clock::now() + ThreadTests::kPatience;
        for (;;) {
            struct pollfd wanted = {fromHolder, POLLIN, 0};
            const long long left =
                std::chrono::duration_cast<ThreadTests::Milliseconds>(end - ThreadTests::Clock::now()).count();
            if (left <= 0 || poll(&wanted, 1, static_cast<int>(left)) <= 0) {
                return "(no answer)";
            }
            char byte;
            if (read(fromHolder, &byte, 1) != 1) {
                return "(no answer)";
            }
            if (byte == '\n') {
                return line;
            }
            line += byte;
        }
    }

    // The holder's exit status, once it has ended.
    int Wait()
    {
        int status = 0;
        while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
        }
        process = -1;
        return status;
    }

    void Kill()
    {
        kill(process, SIGKILL);
    }

private:
    pid_t process = -1;
    int toHolder = -1;
    int fromHolder = -1;
};

std::string UniqueName(const char* what)
{
    return std::string("process-test-") + what + "-" + std::to_string(getpid());
}

bool SharedObjectExists(const std::string& name)
{
    return std::filesystem::exists("/dev/shm/qvimanager-mutex-" + name);
}

TEST(NamedMutexProcesses, AHolderMakesTheOtherProcessTimeOut)
{
    const std::string name = UniqueName("holder");
    Holder holder(name);
    ASSERT_EQ("locked", holder.Ask("lock 0"));
    Mutex mutex{String(name.c_str())};
    bool locked = true;
    EXPECT_TRUE(ThreadTests::TakesAtLeast(300, [&] { locked = mutex.Lock(300); }));
    EXPECT_FALSE(locked);
    EXPECT_FALSE(mutex.Lock(0));
    // Released there, free here.
    ASSERT_EQ("unlocked", holder.Ask("unlock"));
    EXPECT_TRUE(mutex.Lock(0));
    mutex.Unlock();
}

TEST(NamedMutexProcesses, ThisProcessHoldingMakesTheHolderTimeOut)
{
    const std::string name = UniqueName("this");
    Mutex mutex{String(name.c_str())};
    ASSERT_TRUE(mutex.Lock(0));
    Holder holder(name);
    EXPECT_EQ("timeout", holder.Ask("lock 200"));
    EXPECT_EQ("timeout", holder.Ask("lock 0"));
    mutex.Unlock();
    EXPECT_EQ("locked", holder.Ask("lock 0"));
}

TEST(NamedMutexProcesses, WaiterInTheOtherProcessGetsItWhenReleased)
{
    const std::string name = UniqueName("waiter");
    Mutex mutex{String(name.c_str())};
    ASSERT_TRUE(mutex.Lock(0));
    Holder holder(name);
    holder.Send("lock -1");
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    mutex.Unlock();
    EXPECT_EQ("locked", holder.Read());
    EXPECT_FALSE(mutex.Lock(0));
}

TEST(NamedMutexProcesses, AHolderThatDiesDoesNotLeaveTheNameLocked)
{
    const std::string name = UniqueName("dies");
    Mutex mutex{String(name.c_str())};
    {
        Holder holder(name);
        ASSERT_EQ("locked", holder.Ask("lock 0"));
        ASSERT_EQ("locked", holder.Ask("lock 0"));
        holder.Send("die");
        EXPECT_EQ(0, holder.Wait());
    }
    bool locked = false;
    EXPECT_LT(MillisecondsOf([&] { locked = mutex.Lock(10000); }), kNoWait);
    EXPECT_TRUE(locked);
    mutex.Unlock();
}

TEST(NamedMutexProcesses, AHolderThatIsKilledDoesNotLeaveTheNameLocked)
{
    const std::string name = UniqueName("killed");
    Mutex mutex{String(name.c_str())};
    {
        Holder holder(name);
        ASSERT_EQ("locked", holder.Ask("lock 0"));
        holder.Kill();
        const int status = holder.Wait();
        EXPECT_TRUE(WIFSIGNALED(status));
    }
    bool locked = false;
    EXPECT_LT(MillisecondsOf([&] { locked = mutex.Lock(10000); }), kNoWait);
    EXPECT_TRUE(locked);
    mutex.Unlock();
    // And another process can have it after this one.
    Holder next(name);
    EXPECT_EQ("locked", next.Ask("lock 0"));
}

TEST(NamedMutexProcesses, TheNameGoesWithTheLastProcessThatHasIt)
{
    const std::string name = UniqueName("last");
    {
        Holder holder(name);
        EXPECT_TRUE(SharedObjectExists(name));
        {
            Mutex mutex{String(name.c_str())};
        }
        // Still open in the holder.
        EXPECT_TRUE(SharedObjectExists(name));
        holder.Send("exit");
        EXPECT_EQ(0, holder.Wait());
    }
    EXPECT_FALSE(SharedObjectExists(name));
}

TEST(NamedMutexProcesses, ADeadProcessDoesNotKeepTheNameAlive)
{
    const std::string name = UniqueName("dead");
    {
        Holder holder(name);
        ASSERT_EQ("locked", holder.Ask("lock 0"));
        holder.Kill();
        holder.Wait();
    }
    EXPECT_TRUE(SharedObjectExists(name));
    {
        Mutex mutex{String(name.c_str())};
        EXPECT_TRUE(mutex.Lock(0));
        mutex.Unlock();
    }
    EXPECT_FALSE(SharedObjectExists(name));
}

} // namespace
