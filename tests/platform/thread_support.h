#ifndef QVIMANAGER_TESTS_PLATFORM_THREAD_SUPPORT_H
#define QVIMANAGER_TESTS_PLATFORM_THREAD_SUPPORT_H

// What the thread and mutex tests share: a gate that one thread opens and
// others wait at, a clock, and a patient wait for a condition.
//
// Timing rules of these tests: a wait that the code under test promises is
// checked from below (at least the promised time) and from above only by a
// bound that a loaded machine keeps easily; a wait for another thread is a
// wait for what it signals, never a guess of how long it takes.

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

} // namespace ThreadTests

#endif
