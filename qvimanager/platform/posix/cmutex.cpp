#include "qvimanager/platform/posix/cmutex.h"

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Utilities {

namespace {

// The shared object of a named mutex. `ready` holds ReadyMark once the
// mutex has been initialised; a creator that died before that leaves it
// for the next opener to initialise.
struct SharedBlock {
    std::uint32_t ready;
    pthread_mutex_t mutex;
};

const std::uint32_t ReadyMark = 0x51564D31u; // "QVM1"
const std::size_t LongestObjectName = 230;

// The byte ranges of the shared object's lock file: the gate is held
// exclusively while a process opens or closes the object, the user byte
// shared for as long as a process has it open.
const off_t GateByte = 0;
const off_t UserByte = 1;

// The owner's thread id in the lock word of a robust mutex.
const unsigned int OwnerMask = 0x3FFFFFFFu;

thread_local unsigned long lastError = 0;

[[noreturn]] void Refuse(const char* name, const char* reason)
{
    std::string text = "Could not create mutex \"";
    text += name;
    text += "\": ";
    text += reason;
    throw ExceptionMultithreading(String(text.c_str()));
}

// Takes (F_RDLCK, F_WRLCK) or drops (F_UNLCK) the lock on one byte of the
// object, for this open file description; `wait` blocks until it is free.
bool LockByte(int descriptor, short type, off_t byte, bool wait)
{
    struct flock range;
    std::memset(&range, 0, sizeof range);
    range.l_type = type;
    range.l_whence = SEEK_SET;
    range.l_start = byte;
    range.l_len = 1;
    for (;;) {
        if (fcntl(descriptor, wait ? F_OFD_SETLKW : F_OFD_SETLK, &range) == 0) {
            return true;
        }
        if (errno != EINTR) {
            return false;
        }
    }
}

// A recursive, robust mutex; shared between processes if `shared`.
int InitialiseMutex(pthread_mutex_t* mutex, bool shared)
{
    pthread_mutexattr_t attributes;
    int result = pthread_mutexattr_init(&attributes);
    if (result != 0) {
        return result;
    }
    result = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    if (result == 0) {
        result = pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    }
    if (result == 0 && shared) {
        result = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    }
    if (result == 0) {
        result = pthread_mutex_init(mutex, &attributes);
    }
    pthread_mutexattr_destroy(&attributes);
    return result;
}

// Whether the calling thread owns `mutex`.
bool OwnedByCaller(pthread_mutex_t* mutex)
{
    const unsigned int word = static_cast<unsigned int>(__atomic_load_n(&mutex->__data.__lock, __ATOMIC_RELAXED));
    return (word & OwnerMask) == static_cast<unsigned int>(gettid());
}

// Whether a live thread of this process owns `mutex`. A thread that ends
// owning it leaves no owner in the lock word (the system marks the owner
// dead instead); a thread of another process is not one of this process's
// tasks.
bool OwnedByALiveThreadOfThisProcess(pthread_mutex_t* mutex)
{
    const unsigned int word = static_cast<unsigned int>(__atomic_load_n(&mutex->__data.__lock, __ATOMIC_RELAXED));
    const unsigned int owner = word & OwnerMask;
    return owner != 0 && access(("/proc/self/task/" + std::to_string(owner)).c_str(), F_OK) == 0;
}

// "/qvimanager-mutex-" and the name, bytes outside [A-Za-z0-9._-] as %XX.
std::string ObjectName(const char* name)
{
    static const char hex[] = "0123456789ABCDEF";
    std::string object = "/qvimanager-mutex-";
    for (const char* at = name; *at != '\0'; ++at) {
        const unsigned char byte = static_cast<unsigned char>(*at);
        if ((byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
            byte == '.' || byte == '_' || byte == '-') {
            object += static_cast<char>(byte);
        } else {
            object += '%';
            object += hex[byte >> 4];
            object += hex[byte & 0x0F];
        }
    }
    return object;
}

// Waits for `mutex` up to `timeout` ms (negative: for ever) after a first
// try. The waits are measured on the monotonic clock; the platform's timed
// wait counts on the wall clock, so it is asked in slices, and a step of
// the wall clock costs at most one slice.
//
// Built with the thread sanitizer, the timed wait is a try every
// millisecond instead: the sanitizer cannot see that a timed wait got a
// mutex whose owner died (it takes the dead thread for the owner still and
// reports the next lock as a double lock), while a try that gets it
// repairs its view. Results and timeouts are the same.
int WaitFor(pthread_mutex_t* mutex, long timeout)
{
    const int tried = pthread_mutex_trylock(mutex);
    if (tried != EBUSY) {
        return tried;
    }
    if (timeout == 0) {
        return ETIMEDOUT;
    }
    if (timeout < 0) {
        return pthread_mutex_lock(mutex);
    }
    using Clock = std::chrono::steady_clock;
    const long longestWait = 1000L * 60 * 60 * 24 * 365 * 100;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(std::min(timeout, longestWait));
#if defined(__SANITIZE_THREAD__)
    for (;;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        const int result = pthread_mutex_trylock(mutex);
        if (result != EBUSY) {
            return result;
        }
        if (Clock::now() >= deadline) {
            return ETIMEDOUT;
        }
    }
#else
    const std::chrono::nanoseconds slice = std::chrono::milliseconds(250);
    for (;;) {
        const std::chrono::nanoseconds left =
            std::max(std::chrono::nanoseconds(0), std::chrono::nanoseconds(deadline - Clock::now()));
        const std::chrono::nanoseconds wait = std::min(left, slice);
        struct timespec until;
        clock_gettime(CLOCK_REALTIME, &until);
        const long long nanoseconds = static_cast<long long>(until.tv_nsec) + wait.count();
        until.tv_sec += static_cast<time_t>(nanoseconds / 1000000000LL);
        until.tv_nsec = static_cast<long>(nanoseconds % 1000000000LL);
        const int result = pthread_mutex_timedlock(mutex, &until);
        if (result != ETIMEDOUT || Clock::now() >= deadline) {
            return result;
        }
    }
#endif
}

} // namespace

// The shared object of one name, as this process has it open.
struct CMutex::Named {
    std::string objectName;
    int descriptor = -1;
    SharedBlock* block = nullptr;
    // The CMutex objects of this process that use it.
    long users = 0;
};

struct CMutex::Holding {
    std::atomic<std::thread::id> owner;
    long depth = 0;
};

namespace {

// The names this process has open. Never destroyed: a CMutex may outlive
// the static objects of the library.
std::mutex& RegistryGuard()
{
    static std::mutex* guard = new std::mutex();
    return *guard;
}

std::map<std::string, void*>& Registry()
{
    static std::map<std::string, void*>* registry = new std::map<std::string, void*>();
    return *registry;
}

// Opens the shared object `object`, made and initialised if need be.
// Throws the refusal for `name`.
void OpenShared(const char* name, const std::string& object, int& descriptor, SharedBlock*& block)
{
    for (;;) {
        const int opened = shm_open(object.c_str(), O_RDWR | O_CREAT, 0600);
        if (opened < 0) {
            Refuse(name, std::strerror(errno));
        }
        if (!LockByte(opened, F_WRLCK, GateByte, true)) {
            const int error = errno;
            close(opened);
            Refuse(name, std::strerror(error));
        }
        struct stat status;
        if (fstat(opened, &status) != 0) {
            const int error = errno;
            close(opened);
            Refuse(name, std::strerror(error));
        }
        if (status.st_nlink == 0) {
            // Its last user removed it while this one waited at the gate:
            // open the name again.
            close(opened);
            continue;
        }
        if (static_cast<std::size_t>(status.st_size) < sizeof(SharedBlock) &&
            ftruncate(opened, sizeof(SharedBlock)) != 0) {
            const int error = errno;
            close(opened);
            Refuse(name, std::strerror(error));
        }
        void* mapped = mmap(nullptr, sizeof(SharedBlock), PROT_READ | PROT_WRITE, MAP_SHARED, opened, 0);
        if (mapped == MAP_FAILED) {
            const int error = errno;
            close(opened);
            Refuse(name, std::strerror(error));
        }
        SharedBlock* const shared = static_cast<SharedBlock*>(mapped);
        if (__atomic_load_n(&shared->ready, __ATOMIC_ACQUIRE) != ReadyMark) {
            const int result = InitialiseMutex(&shared->mutex, true);
            if (result != 0) {
                munmap(mapped, sizeof(SharedBlock));
                close(opened);
                Refuse(name, std::strerror(result));
            }
            __atomic_store_n(&shared->ready, ReadyMark, __ATOMIC_RELEASE);
        }
        // Nobody holds the user byte exclusively without the gate, which is
        // this process's now: the shared lock is granted at once.
        LockByte(opened, F_RDLCK, UserByte, false);
        LockByte(opened, F_UNLCK, GateByte, false);
        descriptor = opened;
        block = shared;
        return;
    }
}

// Closes the shared object, and removes its name if no other process has
// it open.
void CloseShared(const std::string& object, int descriptor, SharedBlock* block)
{
    LockByte(descriptor, F_WRLCK, GateByte, true);
    if (LockByte(descriptor, F_WRLCK, UserByte, false)) {
        shm_unlink(object.c_str());
    }
    munmap(block, sizeof(SharedBlock));
    close(descriptor);
}

} // namespace

CMutex::CMutex(const char* name) : mutex(nullptr), named(nullptr), holding(nullptr)
{
    holding = new Holding();
    if (name == nullptr || *name == '\0') {
        pthread_mutex_t* own = new pthread_mutex_t;
        const int result = InitialiseMutex(own, false);
        if (result != 0) {
            delete own;
            delete holding;
            Refuse("", std::strerror(result));
        }
        mutex = own;
        return;
    }
    const std::string object = ObjectName(name);
    if (object.size() > LongestObjectName) {
        delete holding;
        Refuse(name, "name too long");
    }
    const std::lock_guard<std::mutex> hold(RegistryGuard());
    std::map<std::string, void*>& registry = Registry();
    std::map<std::string, void*>::iterator found = registry.find(object);
    if (found == registry.end()) {
        Named* opened = new Named();
        opened->objectName = object;
        try {
            OpenShared(name, object, opened->descriptor, opened->block);
        } catch (...) {
            delete opened;
            delete holding;
            throw;
        }
        found = registry.emplace(object, opened).first;
    }
    named = static_cast<Named*>(found->second);
    ++named->users;
    mutex = &named->block->mutex;
}

CMutex::~CMutex()
{
    pthread_mutex_t* const own = static_cast<pthread_mutex_t*>(mutex);
    const std::thread::id owner = holding->owner.load();
    if (owner == std::this_thread::get_id()) {
        for (; holding->depth > 0 && OwnedByCaller(own); --holding->depth) {
            pthread_mutex_unlock(own);
        }
    } else if (owner != std::thread::id()) {
        if (OwnedByALiveThreadOfThisProcess(own)) {
            // Another thread owns the mutex through this object, and the
            // platform keeps a list of the owned mutexes of each thread
            // that points into it: the object stays where it is, for good.
            return;
        }
        // The thread ended owning it: take the mutex over and release it,
        // so that it goes unowned. (Taken by another process meanwhile, it
        // is that process's business.)
        const int taken = pthread_mutex_trylock(own);
        if (taken == EOWNERDEAD) {
            pthread_mutex_consistent(own);
        }
        if (taken == 0 || taken == EOWNERDEAD) {
            pthread_mutex_unlock(own);
        }
    }
    delete holding;
    if (named == nullptr) {
        pthread_mutex_destroy(own);
        delete own;
        return;
    }
    const std::lock_guard<std::mutex> hold(RegistryGuard());
    if (--named->users == 0) {
        CloseShared(named->objectName, named->descriptor, named->block);
        Registry().erase(named->objectName);
        delete named;
    }
}

int CMutex::Lock(long timeout)
{
    pthread_mutex_t* const own = static_cast<pthread_mutex_t*>(mutex);
    int result = WaitFor(own, timeout);
    if (result == EOWNERDEAD) {
        // Abandoned by a thread or process that died owning it: it is this
        // thread's now.
        result = pthread_mutex_consistent(own);
        if (result == 0) {
            holding->depth = 0;
        }
    }
    if (result != 0) {
        lastError = static_cast<unsigned long>(result);
        return 0;
    }
    if (holding->owner.load() != std::this_thread::get_id()) {
        holding->owner.store(std::this_thread::get_id());
        holding->depth = 0;
    }
    ++holding->depth;
    return 1;
}

int CMutex::Unlock()
{
    pthread_mutex_t* const own = static_cast<pthread_mutex_t*>(mutex);
    if (!OwnedByCaller(own)) {
        lastError = EPERM;
        return 0;
    }
    // The books are kept before the mutex is released: once it is free,
    // another thread may take it and write them.
    const bool mine = holding->owner.load() == std::this_thread::get_id();
    if (mine && --holding->depth == 0) {
        holding->owner.store(std::thread::id());
    }
    const int result = pthread_mutex_unlock(own);
    if (result != 0) {
        if (mine && holding->depth++ == 0) {
            holding->owner.store(std::this_thread::get_id());
        }
        lastError = static_cast<unsigned long>(result);
        return 0;
    }
    return 1;
}

unsigned long CMutex::GetLastError()
{
    return lastError;
}

} // namespace Utilities
