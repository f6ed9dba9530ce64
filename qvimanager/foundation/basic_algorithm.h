#ifndef QVIMANAGER_FOUNDATION_BASIC_ALGORITHM_H
#define QVIMANAGER_FOUNDATION_BASIC_ALGORITHM_H

// The foundation's one cross-container algorithm.

#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class Anything;

class BasicAlgorithm {
public:
    // Two maps are equal when they are the same object, or have the same
    // number of entries and every key of `a` is in `b` with a value equal by
    // Anything::operator==. Insertion order plays no part. The walk goes
    // through `a` in iteration order and stops at the first difference.
    static bool IsMapEqual(const Map<String, Anything>& a, const Map<String, Anything>& b);

private:
    BasicAlgorithm();
    BasicAlgorithm(const BasicAlgorithm&);
};

} // namespace Utilities

#endif
