#ifndef QVIMANAGER_COMPONENTS_NAMING_SERVICE_ITERATOR_H
#define QVIMANAGER_COMPONENTS_NAMING_SERVICE_ITERATOR_H

// NamingServiceIterator: a walk over the naming service's component
// descriptors that stops only on those matching a filter, forwards and
// backwards.
//
//     NamingServiceIterator drivers =
//         NamingService::Instance()->GetNamingServiceIterator("category", Anything("QVIInstrument"));
//     for (; drivers.IsValid(); drivers++) {
//         String name = drivers->operator[]("name").GetString();
//     }
//
// A descriptor matches when the filter key is empty (every descriptor), or
// when it has the key and the filter value is the empty Anything (any value
// under the key), or when its value under the key equals the filter value
// by Anything::operator==: same kind and same value, so the text "5" never
// matches the long 5.
//
// The iterator stands on an element of the service's list and keeps it
// alive; it has no lock. Plug-ins register only while the service starts
// or while LoadAdditionalPluginLibrary runs, so walks are safe once that
// is over.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class NamingService;

class NamingServiceIterator {
public:
    // No filter and no position: invalid.
    NamingServiceIterator();
    // Stands on the first descriptor of `descriptors` that matches; invalid
    // if there is none.
    NamingServiceIterator(const List<Map<String, Anything>>& descriptors, const String& key, const Anything& value);
    NamingServiceIterator(const NamingServiceIterator& other);
    NamingServiceIterator& operator=(const NamingServiceIterator& other);

    // On to the next match; past the last one the iterator is invalid.
    // Invalid already: ExceptionOutOfBound with "ListIterator::operator++():
    // Can't increment iterator because it's invalid".
    void operator++(int);
    // Back to the previous match; before the first one the iterator is
    // invalid (there is no wrap-around). Invalid already:
    // ExceptionOutOfBound with "ListIterator::operator--(): Can't decrement
    // iterator because it's invalid".
    void operator--(int);

    // The descriptor. Invalid: ExceptionOutOfBound with
    // "ListIterator::Current(): Can't return value because iterator is
    // invalid".
    const Map<String, Anything>& Current();
    // The descriptor. Invalid: ExceptionOutOfBound with
    // "ListIterator::operator->(): Can't return value because iterator is
    // invalid".
    const Map<String, Anything>* operator->();

    // Stands on a descriptor.
    bool IsValid() const;

    // "NamingServiceIterator".
    Diagnostics::String GetValueString();
    void Invariant() const {}

private:
    // The service replaces a descriptor in place where this stands.
    friend class NamingService;

    // Moves to the nearest match in the direction given, starting with the
    // descriptor it stands on.
    void MoveUpDown(bool up);

    String filterKey;
    Anything filterValue;
    ListIterator<Map<String, Anything>> position;
};

} // namespace Utilities

#endif
