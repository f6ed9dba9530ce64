#ifndef QVIMANAGER_COMPONENTS_DYNAMIC_CAST_H
#define QVIMANAGER_COMPONENTS_DYNAMIC_CAST_H

// DynamicCast<T>(source): the object of `source` seen as a T.
//
// An empty source gives an empty result. Otherwise the object is cast at
// run time; on success the result shares the source's reference counter,
// which counts one up, and the object lives as long as either pointer does.
// On failure the result is empty and nothing is thrown: a pointer to an
// object of another class gives an empty pointer, never an exception.

#include "qvimanager/foundation/smart_pointer.h"

namespace Utilities {

template <typename To, typename From>
SmartPointer<To> DynamicCast(const SmartPointer<From>& source)
{
    if (source.object == nullptr) {
        return SmartPointer<To>();
    }
    To* const target = dynamic_cast<To*>(source.object);
    if (target == nullptr) {
        return SmartPointer<To>();
    }
    return SmartPointer<To>(source.counter, target);
}

} // namespace Utilities

#endif
