#include "qvimanager/platform/posix/thread_implementation_pc.h"

#include "qvimanager/components/component_creator.h"
#include "qvimanager/foundation/class_name.h"
#include "qvimanager/foundation/exception.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <typeinfo>

namespace Utilities {

namespace {

// What the worker and its owner share. The worker holds its own reference,
// so it may outlive the worker object.
struct WorkerState {
    std::mutex guard;
    bool active = true;
    long exitCode = ThreadImplementation_PC::StillActive;
};

// Runs Run and records its result, unless the worker was given up first.
// Any exception that leaves Run ends here: the exit code is then -1.
void ThreadFunction(Thread* thread, const std::shared_ptr<WorkerState>& state)
{
    long exitCode;
    try {
        exitCode = thread->Run();
    } catch (...) {
        exitCode = -1;
    }
    const std::lock_guard<std::mutex> hold(state->guard);
    if (state->active) {
        state->active = false;
        state->exitCode = exitCode;
    }
}

// One sleep of the whole time. Times beyond what the clock can count sleep
// as long as it can count, which is for ever in practice.
void SleepWhole(unsigned long milliseconds)
{
    using Milliseconds = std::chrono::milliseconds;
    const unsigned long longest = static_cast<unsigned long>(Milliseconds::max().count());
    std::this_thread::sleep_for(Milliseconds(static_cast<Milliseconds::rep>(std::min(milliseconds, longest))));
}

ComponentCreatorNormal<ThreadImplementation_PC> creator;

} // namespace

class ThreadImplementation_PC::Worker {
public:
    explicit Worker(Thread* runs) : state(std::make_shared<WorkerState>()), thread()
    {
        std::shared_ptr<WorkerState> shared = state;
        thread = std::thread([runs, shared] { ThreadFunction(runs, shared); });
    }

    ~Worker()
    {
        if (!thread.joinable()) {
            return;
        }
        if (IsActive()) {
            thread.detach();
        } else {
            thread.join();
        }
    }

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    bool IsActive() const
    {
        const std::lock_guard<std::mutex> hold(state->guard);
        return state->active;
    }

    long GetExitCode() const
    {
        const std::lock_guard<std::mutex> hold(state->guard);
        return state->exitCode;
    }

    // Records the exit code of a worker that is still active and lets the
    // worker go; one that has ended meanwhile keeps its own exit code.
    void GiveUp(long exitCode)
    {
        {
            const std::lock_guard<std::mutex> hold(state->guard);
            if (state->active) {
                state->active = false;
                state->exitCode = exitCode;
            }
        }
        if (thread.joinable()) {
            thread.detach();
        }
    }

private:
    std::shared_ptr<WorkerState> state;
    std::thread thread;
};

ThreadImplementation_PC::ThreadImplementation_PC() : worker(nullptr)
{
}

ThreadImplementation_PC::~ThreadImplementation_PC()
{
    delete worker;
    worker = nullptr;
}

Map<String, Anything> ThreadImplementation_PC::GetDescriptor()
{
    return MakeComponentDescriptor("ThreadImplementation", "$Revision: 1.4 $", "Multithreading");
}

Diagnostics::String ThreadImplementation_PC::GetValueString() const
{
    Diagnostics::String text(GetRuntimeClassName(typeid(*this)).GetCharPointer());
    if (worker == nullptr) {
        text += ": no worker";
    } else if (worker->IsActive()) {
        text += ": worker running";
    } else {
        text += ": worker ended, exit code ";
        text += Diagnostics::String(worker->GetExitCode());
    }
    return text;
}

void ThreadImplementation_PC::KillThread(unsigned long milliseconds) const
{
    if (worker == nullptr) {
        return;
    }
    if (!worker->IsActive()) {
        return;
    }
    SleepWhole(milliseconds);
    if (!worker->IsActive()) {
        return;
    }
    worker->GiveUp(ForcedTerminationExitCode);
}

void ThreadImplementation_PC::StartThread(Thread* thread)
{
    if (thread == nullptr) {
        throw ExceptionNullpointer("Failed to access to nullpointer.");
    }
    Worker* started = nullptr;
    try {
        started = new Worker(thread);
    } catch (const std::system_error&) {
        throw ExceptionMultithreading(String("Could not start thread"));
    }
    delete worker;
    worker = started;
}

bool ThreadImplementation_PC::GetExitCode(long* code) const
{
    if (worker == nullptr) {
        return false;
    }
    *code = worker->GetExitCode();
    return true;
}

} // namespace Utilities
