#ifndef QVIMANAGER_COMPONENTS_RESOLVE_H
#define QVIMANAGER_COMPONENTS_RESOLVE_H

// Resolve<T>(name): the component registered under `name`, as a T, or an
// empty pointer when there is none. It never raises.
//
// Components are registered by the naming service, which the library does
// not have yet: until then no name is known and every resolve gives an
// empty pointer, which is the defined behaviour for an unknown name. Callers
// (the RGB conversion, translation) then take their built-in paths.

#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

template <typename T>
SmartPointer<T> Resolve(const String& name)
{
    static_cast<void>(name);
    return SmartPointer<T>();
}

} // namespace Utilities

#endif
