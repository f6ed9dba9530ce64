// Starts a thread and locks a mutex with the plug-in consumer_threads in
// the folder "plugins" beside this program: the plug-in's newer
// "ThreadImplementation" runs the thread, the library's mutex locks.

#include <qvimanager/qvimanager.h>

#include <cstdio>
#include <thread>

namespace {

class Noting : public Utilities::Thread {
public:
    long Run() override
    {
        ranOn = std::this_thread::get_id();
        return 0;
    }
    std::thread::id ranOn;
};

} // namespace

int main()
{
    try {
        Noting thread;
        thread.StartThread();
        if (thread.ranOn != std::this_thread::get_id()) {
            std::printf("consumer threads: the plug-in did not run the thread\n");
            return 1;
        }
        thread.KillThread(0);
        Utilities::Mutex mutex{Utilities::String("")};
        if (!mutex.Lock(0) || !mutex.Lock(0)) {
            std::printf("consumer threads: the mutex did not lock\n");
            return 1;
        }
        mutex.Unlock();
        mutex.Unlock();
    } catch (const Utilities::Exception& failure) {
        std::printf("consumer threads: %s\n", failure.GetExceptionText().GetCharPointer());
        return 1;
    }
    std::printf("consumer threads: ok\n");
    return 0;
}
