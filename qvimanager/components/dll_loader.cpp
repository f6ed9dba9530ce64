#include "qvimanager/components/dll_loader.h"

#include "qvimanager/platform/posix/dll_loader_pc.h"

namespace Utilities {

SmartPointer<DllLoader> DllLoader::NewInstance()
{
    return SmartPointer<DllLoader>(new DllLoader_PC());
}

} // namespace Utilities
