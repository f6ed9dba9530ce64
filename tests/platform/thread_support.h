#ifndef QVIMANAGER_TESTS_PLATFORM_THREAD_SUPPORT_H
#define QVIMANAGER_TESTS_PLATFORM_THREAD_SUPPORT_H

// What the thread and mutex tests share: a gate that one thread opens and
// others wait at, a clock, and a patient wait for a condition.
//
// Timing rules of these tests: a wait that the code under test promises is
// checked from below (at least the promised time) and from above only by a
// bound that a loaded machine keeps easily; a wait for another thread is a
// wait for what it signals, never a guess of how long it takes.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace ThreadTests {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

// How long a test waits at most for another thread or process to do what
// it will surely do: far longer than any machine needs, far shorter than
// the test's timeout.
const Milliseconds kPatience(30000);

// How much longer than a promised wait a loaded machine may take, and the
// bound of a call that should not wait at all.
const long long kSlack = 5000;

class Gate {
public:
    void Open()
    {
        const std::lock_guard<std::mutex> hold(guard);
        open = true;
        opened.notify_all();
    }
    // True once open; false if `limit` passed first.
    bool WaitFor(Milliseconds limit = kPatience)
    {
        std::unique_lock<std::mutex> hold(guard);
        return opened.wait_for(hold, limit, [this] { return open; });
    }
    bool IsOpen()
    {
        const std::lock_guard<std::mutex> hold(guard);
        return open;
    }

private:
    std::mutex guard;
    std::condition_variable opened;
    bool open = false;
};

// Polls `condition` every millisecond until it holds (true) or `limit`
// passes (false).
inline bool WaitUntil(const std::function<bool()>& condition, Milliseconds limit = kPatience)
{
    const Clock::time_point end = Clock::now() + limit;
    while (!condition()) {
        if (Clock::now() >= end) {
            return false;
        }
        std::this_thread::sleep_for(Milliseconds(1));
    }
    return true;
}

// The milliseconds that `call` takes.
inline long long MillisecondsOf(const std::function<void()>& call)
{
    const Clock::time_point start = Clock::now();
    call();
    return std::chrono::duration_cast<Milliseconds>(Clock::now() - start).count();
}

// Whether `call` takes at least `least` ms (a wait it promises) and less
// than `least` + kSlack ms.
inline ::testing::AssertionResult TakesAtLeast(long long least, const std::function<void()>& call)
{
    const long long took = MillisecondsOf(call);
    if (took < least) {
        return ::testing::AssertionFailure() << "took " << took << " ms, less than " << least << " ms";
    }
    if (took >= least + kSlack) {
        return ::testing::AssertionFailure() << "took " << took << " ms, not less than " << least + kSlack << " ms";
    }
    return ::testing::AssertionSuccess() << "took " << took << " ms";
}

} // namespace ThreadTests

#endif
