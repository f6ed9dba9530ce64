#include "qvimanager/platform/posix/mutex_implementation_pc.h"

#include "qvimanager/components/component_creator.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/platform/posix/cmutex.h"

namespace Utilities {

namespace {

ComponentCreatorNormal<MutexImplementation_PC> creator;

} // namespace

MutexImplementation_PC::MutexImplementation_PC() : mutex(), name()
{
}

MutexImplementation_PC::~MutexImplementation_PC() = default;

Map<String, Anything> MutexImplementation_PC::GetDescriptor()
{
    return MakeComponentDescriptor("MutexImplementation", "$Revision: 1.5 $", "Multithreading");
}

Diagnostics::String MutexImplementation_PC::GetValueString() const
{
    Diagnostics::String text(MutexImplementation::GetValueString());
    if (!mutex.IsValid()) {
        text += ": not initialised";
    } else if (name.Length() == 0) {
        text += ": unnamed";
    } else {
        text += ": named \"";
        text += name.GetCharPointer();
        text += "\"";
    }
    return text;
}

void MutexImplementation_PC::Initialize(const String& mutexName)
{
    mutex = SmartPointer<CMutex>(new CMutex(mutexName.GetCharPointer()));
    name = mutexName;
}

bool MutexImplementation_PC::Lock(long timeout)
{
    return mutex->Lock(timeout) == 1;
}

void MutexImplementation_PC::Unlock()
{
    if (mutex->Unlock() == 0) {
        QVI_TRACE_MESSAGE(this, "Utilities", "MutexImplementation_PC", "Unlock",
                          "Could not unlock CMutex. Error number: ", CMutex::GetLastError());
    }
}

} // namespace Utilities
