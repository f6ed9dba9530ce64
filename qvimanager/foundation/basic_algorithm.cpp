#include "qvimanager/foundation/basic_algorithm.h"

#include "qvimanager/foundation/anything.h"

namespace Utilities {

bool BasicAlgorithm::IsMapEqual(const Map<String, Anything>& a, const Map<String, Anything>& b)
{
    if (&a == &b) {
        return true;
    }
    if (a.GetCount() != b.GetCount()) {
        return false;
    }
    for (MapIterator<String, Anything> entry = a.Begin(); entry.IsValid(); entry++) {
        const MapIterator<String, Anything> other = b.Find(entry.GetKey());
        if (!other.IsValid()) {
            return false;
        }
        if (!(entry.GetValue() == other.GetValue())) {
            return false;
        }
    }
    return true;
}

} // namespace Utilities
