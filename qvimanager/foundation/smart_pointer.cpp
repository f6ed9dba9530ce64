#include "qvimanager/foundation/smart_pointer.h"

namespace Utilities {

Diagnostics::String ReferenceManager::GetValueString() const
{
    return Diagnostics::String("SmartPointer");
}

} // namespace Utilities
