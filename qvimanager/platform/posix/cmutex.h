#ifndef QVIMANAGER_PLATFORM_POSIX_CMUTEX_H
#define QVIMANAGER_PLATFORM_POSIX_CMUTEX_H

// CMutex: the platform mutex under MutexImplementation_PC.
//
// A mutex is owned by a thread and re-entrant for that thread: each Lock of
// the owner counts, and it is free again after as many Unlocks. A thread
// that ends, or a process that dies, while it owns the mutex leaves it
// abandoned: the next Lock gets it (and succeeds).
//
// Unnamed: private to the process. Named: shared between the processes of
// the user under its name (a POSIX shared-memory object named
// "/qvimanager-mutex-" and the name, with every byte other than a letter,
// a digit, '.', '_' or '-' written as "%XX"). The object is removed when
// the last CMutex of that name, in any process, is closed; a process that
// dies counts as closed. (If every process that had it open died, the
// object stays until a process opens the name again and closes it.) Within a process, the CMutex objects of one name
// share one mapping of the object.
//
// The calls mirror the platform interface the library was written for:
// Lock returns 1 when the mutex is owned and 0 when not, Unlock returns 0
// on failure and GetLastError then gives the error number (ETIMEDOUT for a
// Lock that timed out, EPERM for an Unlock by a thread that does not own
// the mutex, whichever CMutex of the name it locked it through).
//
// Built on the robust, recursive mutexes of the GNU C library, whose lock
// word holds the owner's thread id: that is how Unlock tells the owner.

namespace Utilities {

class CMutex {
public:
    // A mutex not initially owned; unnamed for a null or empty `name`.
    // Throws ExceptionMultithreading with "Could not create mutex \"NAME\":
    // " and the reason when the platform refuses (a name longer than 230
    // bytes once written as above: "name too long").
    explicit CMutex(const char* name);
    // Releases what the calling thread still holds through this object. A
    // mutex that another live thread of the process still owns through
    // this object is left in place, open, for the rest of the process (a
    // small leak instead of a fault); one whose owner ended owning it is
    // destroyed as usual.
    ~CMutex();

    CMutex(const CMutex&) = delete;
    CMutex& operator=(const CMutex&) = delete;

    // Waits up to `timeout` milliseconds for the mutex; a negative timeout
    // waits for ever, 0 only tries. 1: owned (also when it was abandoned);
    // 0: timed out or failed (GetLastError tells which: ETIMEDOUT or the
    // error).
    int Lock(long timeout);
    // Releases one Lock of the calling thread. 0 on failure.
    int Unlock();

    // The error number of the calling thread's last failed Lock or Unlock.
    static unsigned long GetLastError();

private:
    struct Named;
    struct Holding;

    // The mutex itself: on the heap (unnamed) or in the shared object.
    void* mutex;
    // Named only: the shared object, mapped once per process and shared by
    // every CMutex of the name in it.
    Named* named;
    // What the threads hold through this object: the owner and its depth.
    Holding* holding;
};

} // namespace Utilities

#endif
