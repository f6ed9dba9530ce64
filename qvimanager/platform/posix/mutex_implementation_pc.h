#ifndef QVIMANAGER_PLATFORM_POSIX_MUTEX_IMPLEMENTATION_PC_H
#define QVIMANAGER_PLATFORM_POSIX_MUTEX_IMPLEMENTATION_PC_H

// MutexImplementation_PC: the library's component "MutexImplementation"
// ("$Revision: 1.5 $", category "Multithreading") over the platform mutex
// CMutex (cmutex.h, which tells how names are shared).

#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/mutex.h"

namespace Utilities {

class CMutex;

class MutexImplementation_PC : public MutexImplementation {
public:
    // No mutex until Initialize.
    MutexImplementation_PC();
    ~MutexImplementation_PC() override;

    // "name" "MutexImplementation", "version" "$Revision: 1.5 $",
    // "category" "Multithreading".
    static Map<String, Anything> GetDescriptor();

    // "Utilities::MutexImplementation_PC: " then "not initialised",
    // "unnamed" or "named \"NAME\"".
    Diagnostics::String GetValueString() const override;
    // Makes a CMutex, not initially owned, in place of any earlier one;
    // named if `name` is not empty. The platform's refusal passes through
    // (ExceptionMultithreading, see cmutex.h).
    void Initialize(const String& name) override;
    // True only if CMutex::Lock gives 1. Before Initialize:
    // ExceptionNullpointer "Failed to access to nullpointer.".
    bool Lock(long timeout) override;
    // CMutex::Unlock. A failure traces "Could not unlock CMutex. Error
    // number: " and the error number (package "Utilities", class
    // "MutexImplementation_PC") and has no other effect. Before Initialize:
    // ExceptionNullpointer as Lock.
    void Unlock() override;

private:
    MutexImplementation_PC(const MutexImplementation_PC&);
    MutexImplementation_PC& operator=(const MutexImplementation_PC&);

    SmartPointer<CMutex> mutex;
    String name;
};

} // namespace Utilities

#endif
