#ifndef QVIMANAGER_FOUNDATION_CONTAINERS_H
#define QVIMANAGER_FOUNDATION_CONTAINERS_H

// The foundation's containers: Pair, Vector, List with its elements and
// iterators, and Map with its iterator.
//
// Two things set them apart, and callers rely on both:
// - A list element outlives its list while an iterator stands on it. Clearing
//   a list unlinks such an element and marks it deleted; the iterator turns
//   invalid and the last iterator to leave deletes it.
// - Map is a hash table of exactly 53 buckets that never grows or rehashes.
//   It iterates by ascending bucket (String::GetHash(53) of the key), then in
//   insertion order, and that order is part of its contract: "category",
//   "name" and "version" iterate in that order whatever order they went in.
//
// Nothing here is synchronised.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <new>
#include <utility>

namespace Utilities {

// ---------------------------------------------------------------- Pair

template <typename A, typename B>
class Pair {
public:
    Pair() : first(), second() {}
    Pair(const A& firstValue, const B& secondValue) : first(firstValue), second(secondValue) {}
    // The second member default-constructed: how a Map makes a new entry.
    explicit Pair(const A& firstValue) : first(firstValue), second() {}
    virtual ~Pair() = default;
    Pair(const Pair&) = default;
    Pair& operator=(const Pair&) = default;

    A& GetFirst()
    {
        return first;
    }
    const A& GetFirst() const
    {
        return first;
    }
    B& GetSecond()
    {
        return second;
    }
    const B& GetSecond() const
    {
        return second;
    }

    void Invariant() const {}

private:
    A first;
    B second;
};

// ---------------------------------------------------------------- Vector

// A fixed-size array with checked access. Its size changes only through
// SetSize, never by adding an element. Copies are deep.
template <typename T>
class Vector {
public:
    // `count` default elements; 0 holds no array.
    explicit Vector(unsigned long count = 0) : size(count), data(count > 0 ? new T[count]() : nullptr) {}

    Vector(const Vector& other) : size(0), data(nullptr)
    {
        CopyFrom(other);
    }

    Vector& operator=(const Vector& other)
    {
        if (this != &other) {
            CopyFrom(other);
        }
        return *this;
    }

    virtual ~Vector()
    {
        delete[] data;
    }

    unsigned long GetSize() const
    {
        return size;
    }

    // Throws ExceptionOutOfBound with "vector index >= vector size" for an
    // index at or past the size.
    T& operator[](unsigned long index)
    {
        CheckIndex(index);
        return data[index];
    }
    const T& operator[](unsigned long index) const
    {
        CheckIndex(index);
        return data[index];
    }

    // The same size: nothing happens. Otherwise a new array of `count`
    // default elements (none for 0) takes the first min(count, size) old
    // elements by assignment, and the old array goes.
    void SetSize(unsigned long count)
    {
        if (count == size) {
            return;
        }
        T* fresh = count > 0 ? new T[count]() : nullptr;
        const unsigned long kept = count < size ? count : size;
        AssignElements(fresh, data, kept);
        delete[] data;
        data = fresh;
        size = count;
    }

    void Invariant() const {}

private:
    void CheckIndex(unsigned long index) const
    {
        if (index >= size) {
            throw ExceptionOutOfBound("vector index >= vector size");
        }
    }

    // Assigns `kept` elements into a fresh array; if an assignment throws,
    // the fresh array goes and the vector stays as it was.
    static void AssignElements(T* fresh, const T* source, unsigned long kept)
    {
        try {
            for (unsigned long i = 0; i < kept; ++i) {
                fresh[i] = source[i];
            }
        } catch (...) {
            delete[] fresh;
            throw;
        }
    }

    void CopyFrom(const Vector& other)
    {
        T* fresh = other.size > 0 ? new T[other.size]() : nullptr;
        AssignElements(fresh, other.data, other.size);
        delete[] data;
        data = fresh;
        size = other.size;
    }

    unsigned long size;
    T* data;
};

// ---------------------------------------------------------------- List

template <typename T>
class List;
template <typename T>
class ListIterator;
template <typename K, typename V>
class Map;
template <typename K, typename V>
class MapIterator;

// One element of a List, with the value stored inline. It knows how many
// iterators stand on it, so that it can outlive its list for them.
template <typename T>
class ListElement {
public:
    template <typename... Arguments>
    explicit ListElement(Arguments&&... arguments)
        : next(nullptr), before(nullptr), deleted(false), iteratorReferences(0), lastIteratorMustDestroy(false),
          element(std::forward<Arguments>(arguments)...)
    {
    }
    ListElement(const ListElement&) = delete;
    ListElement& operator=(const ListElement&) = delete;

    ListElement* GetNext() const
    {
        return next;
    }
    ListElement* GetBefore() const
    {
        return before;
    }
    void SetNext(ListElement* element)
    {
        next = element;
    }
    void SetBefore(ListElement* element)
    {
        before = element;
    }
    T& GetElement()
    {
        return element;
    }
    const T& GetElement() const
    {
        return element;
    }
    void SetElement(const T& value)
    {
        element = value;
    }
    bool IsDeleted() const
    {
        return deleted;
    }
    void SetDeletedFlag()
    {
        deleted = true;
    }
    bool LastIteratorMustDestroy() const
    {
        return lastIteratorMustDestroy;
    }
    void SetLastIteratorMustDestroyFlag()
    {
        lastIteratorMustDestroy = true;
    }
    unsigned long GetIteratorReferences() const
    {
        return iteratorReferences;
    }
    // Both return the new count.
    unsigned long IncrementIteratorReferences()
    {
        return ++iteratorReferences;
    }
    unsigned long DecrementIteratorReferences()
    {
        return --iteratorReferences;
    }

private:
    ListElement* next;
    ListElement* before;
    bool deleted;
    unsigned long iteratorReferences;
    bool lastIteratorMustDestroy;
    T element;
};

// A position in a List. An iterator counts as a reference on the element it
// stands on; it is valid while that element is still in its list.
template <typename T>
class ListIterator {
public:
    // Invalid.
    ListIterator() : element(nullptr) {}

    // Stands on `target` (which may be null: invalid).
    explicit ListIterator(ListElement<T>* target) : element(target)
    {
        Enter();
    }

    ListIterator(const ListIterator& other) : element(other.element)
    {
        Enter();
    }

    // Leaves the old element as the destructor does, then stands on the
    // other's.
    ListIterator& operator=(const ListIterator& other)
    {
        if (this != &other) {
            Leave();
            element = other.element;
            Enter();
        }
        return *this;
    }

    // Counts one down on the element; the last iterator to leave an element
    // that its list let go deletes it.
    ~ListIterator()
    {
        Leave();
    }

    // Stands on an element that is still in its list.
    bool IsValid() const
    {
        return element != nullptr && !element->IsDeleted();
    }

    // Throws ExceptionOutOfBound with "ListIterator::Current(): Can't return
    // value because iterator is invalid" when invalid.
    T& Current()
    {
        CheckValid("ListIterator::Current(): Can't return value because iterator is invalid");
        return element->GetElement();
    }
    const T& Current() const
    {
        CheckValid("ListIterator::Current(): Can't return value because iterator is invalid");
        return element->GetElement();
    }

    // Throws ExceptionOutOfBound with "ListIterator::operator->(): Can't
    // return value because iterator is invalid" when invalid.
    T* operator->() const
    {
        CheckValid("ListIterator::operator->(): Can't return value because iterator is invalid");
        return &element->GetElement();
    }

    // One element on, skipping elements marked deleted; past the tail the
    // iterator is invalid. Throws ExceptionOutOfBound with
    // "ListIterator::operator++(): Can't increment iterator because it's
    // invalid" when invalid. Stepping off an element never deletes it, even
    // when this was its last iterator; only the destructor and assignment do.
    void operator++(int)
    {
        CheckValid("ListIterator::operator++(): Can't increment iterator because it's invalid");
        Step(&ListElement<T>::GetNext);
    }

    // One element back, the same way. Throws ExceptionOutOfBound with
    // "ListIterator::operator--(): Can't decrement iterator because it's
    // invalid" when invalid.
    void operator--(int)
    {
        CheckValid("ListIterator::operator--(): Can't decrement iterator because it's invalid");
        Step(&ListElement<T>::GetBefore);
    }

    void Invariant() const {}

private:
    friend class List<T>;

    void CheckValid(const char* message) const
    {
        if (!IsValid()) {
            throw ExceptionOutOfBound(message);
        }
    }

    void Enter()
    {
        if (element != nullptr) {
            element->IncrementIteratorReferences();
        }
    }

    void Leave()
    {
        if (element != nullptr && element->DecrementIteratorReferences() == 0 && element->LastIteratorMustDestroy()) {
            DestroyDetached(element);
        }
        element = nullptr;
    }

    // The rare end of an element that its list let go. Kept out of line:
    // inlined, the compiler cannot see that the flag is never set on an
    // element still in a list, and warns about every list destroyed after
    // an iterator on it.
    [[gnu::noinline, gnu::cold]] static void DestroyDetached(ListElement<T>* detached)
    {
        delete detached;
    }

    void Step(ListElement<T>* (ListElement<T>::*neighbour)() const)
    {
        do {
            element->DecrementIteratorReferences();
            element = (element->*neighbour)();
            if (element != nullptr) {
                element->IncrementIteratorReferences();
            }
        } while (element != nullptr && element->IsDeleted());
    }

    ListElement<T>* element;
};

// A doubly linked list. Copies are deep. There is no operation that removes
// one element.
template <typename T>
class List {
public:
    List() : count(0), head(nullptr), tail(nullptr) {}

    // Throws ExceptionNullpointer with "Can't create copy of list. System is
    // out of memory" when an element cannot be allocated.
    List(const List& other) : count(0), head(nullptr), tail(nullptr)
    {
        CopyFrom(other);
    }

    // Takes over the other's elements (iterators on them stay valid); the
    // other is left empty.
    List(List&& other) noexcept : count(other.count), head(other.head), tail(other.tail)
    {
        other.count = 0;
        other.head = nullptr;
        other.tail = nullptr;
    }

    // Clears this list as its destructor does, then copies the other element
    // by element. Assigning a list to itself changes nothing.
    List& operator=(const List& other)
    {
        if (this != &other) {
            Clear();
            CopyFrom(other);
        }
        return *this;
    }

    ~List()
    {
        Clear();
    }

    // The insertions throw ExceptionNullpointer with "Out of memory. Can't
    // insert element into list" when an element cannot be allocated, and
    // leave the list as it was.
    //
    // A new element at the tail; the iterator stands on it.
    ListIterator<T> Append(const T& value)
    {
        return ListIterator<T>(Link(NewElement(kInsertFailure, value), tail));
    }

    // A new element at the head; the iterator stands on it.
    ListIterator<T> InsertAtBegin(const T& value)
    {
        return ListIterator<T>(Link(NewElement(kInsertFailure, value), nullptr));
    }

    // A new element behind the one `position` stands on, which must be an
    // element of this list: otherwise ExceptionOutOfBound with
    // "List::InsertAfter(): iterator does not stand on an element of this
    // list".
    ListIterator<T> InsertAfter(const ListIterator<T>& position, const T& value)
    {
        if (!Contains(position.element)) {
            throw ExceptionOutOfBound("List::InsertAfter(): iterator does not stand on an element of this list");
        }
        return ListIterator<T>(Link(NewElement(kInsertFailure, value), position.element));
    }

    // On the head; invalid on an empty list.
    ListIterator<T> Begin() const
    {
        return ListIterator<T>(head);
    }

    unsigned long GetItemCount() const
    {
        return count;
    }

    void Invariant() const {}

private:
    template <typename K, typename V>
    friend class Map;

    static constexpr const char* kInsertFailure = "Out of memory. Can't insert element into list";
    static constexpr const char* kCopyFailure = "Can't create copy of list. System is out of memory";

    template <typename... Arguments>
    static ListElement<T>* NewElement(const char* failure, Arguments&&... arguments)
    {
        try {
            return new ListElement<T>(std::forward<Arguments>(arguments)...);
        } catch (const std::bad_alloc&) {
            throw ExceptionNullpointer(failure);
        }
    }

    // Links `fresh` behind `predecessor` (at the head when null) and counts
    // it.
    ListElement<T>* Link(ListElement<T>* fresh, ListElement<T>* predecessor)
    {
        ListElement<T>* successor = predecessor != nullptr ? predecessor->GetNext() : head;
        fresh->SetBefore(predecessor);
        fresh->SetNext(successor);
        if (predecessor != nullptr) {
            predecessor->SetNext(fresh);
        } else {
            head = fresh;
        }
        if (successor != nullptr) {
            successor->SetBefore(fresh);
        } else {
            tail = fresh;
        }
        ++count;
        return fresh;
    }

    // A new element built in place from `arguments` at the tail.
    template <typename... Arguments>
    ListElement<T>* Emplace(Arguments&&... arguments)
    {
        return Link(NewElement(kInsertFailure, std::forward<Arguments>(arguments)...), tail);
    }

    bool Contains(const ListElement<T>* element) const
    {
        for (const ListElement<T>* current = head; current != nullptr; current = current->GetNext()) {
            if (current == element) {
                return true;
            }
        }
        return false;
    }

    // Teardown: an element with iterators on it is unlinked, marked deleted
    // and left for its last iterator to delete; any other is deleted now.
    void Clear()
    {
        ListElement<T>* current = head;
        while (current != nullptr) {
            ListElement<T>* following = current->GetNext();
            if (current->GetIteratorReferences() > 0) {
                current->SetNext(nullptr);
                current->SetBefore(nullptr);
                current->SetDeletedFlag();
                current->SetLastIteratorMustDestroyFlag();
            } else {
                delete current;
            }
            current = following;
        }
        head = nullptr;
        tail = nullptr;
        count = 0;
    }

    // Copies the other's elements in order onto this empty list, leaving out
    // elements marked deleted. On failure this list is left empty.
    void CopyFrom(const List& other)
    {
        for (const ListElement<T>* current = other.head; current != nullptr; current = current->GetNext()) {
            if (current->IsDeleted()) {
                continue;
            }
            try {
                Link(NewElement(kCopyFailure, current->GetElement()), tail);
            } catch (...) {
                Clear();
                throw;
            }
        }
    }

    unsigned long count;
    ListElement<T>* head;
    ListElement<T>* tail;
};

// ---------------------------------------------------------------- Map

// A position in a Map: a bucket and a position in that bucket's list.
template <typename K, typename V>
class MapIterator {
public:
    // Invalid.
    MapIterator() : bucket(0), position(), map(nullptr) {}

    // Stands on a valid position of `bucketIndex` of `owner`.
    MapIterator(unsigned long bucketIndex, const ListIterator<Pair<K, V>>& at, const Map<K, V>* owner)
        : bucket(bucketIndex), position(at), map(owner)
    {
    }

    bool IsValid() const
    {
        return position.IsValid();
    }

    // Both throw ExceptionOutOfBound with "MapIterator is not valid" when
    // invalid.
    const K& GetKey() const
    {
        CheckValid();
        return position.Current().GetFirst();
    }
    V& GetValue()
    {
        CheckValid();
        return position.Current().GetSecond();
    }
    const V& GetValue() const
    {
        CheckValid();
        return position.Current().GetSecond();
    }

    // The next entry in iteration order: the next one in this bucket, else
    // the head of the next non-empty bucket; after the last entry the
    // iterator is invalid. An invalid iterator throws the ListIterator's
    // "ListIterator::operator++(): Can't increment iterator because it's
    // invalid".
    void operator++(int)
    {
        position++;
        while (!position.IsValid()) {
            ++bucket;
            if (bucket >= map->bucketCount) {
                return;
            }
            position = (*map->buckets)[bucket].Begin();
        }
    }

    void Invariant() const {}

private:
    void CheckValid() const
    {
        if (!position.IsValid()) {
            throw ExceptionOutOfBound("MapIterator is not valid");
        }
    }

    unsigned long bucket;
    ListIterator<Pair<K, V>> position;
    const Map<K, V>* map;
};

// A hash table with String keys and exactly 53 buckets. It never grows and
// never rehashes: chains just grow, and the iteration order (ascending
// bucket, then insertion order) stays what callers see. Copies are deep and
// iterate in the same order. There is no operation that removes an entry.
template <typename K, typename V>
class Map {
public:
    // Empty, with no bucket vector yet.
    Map() : count(0), buckets(nullptr), bucketCount(kBucketCount) {}

    Map(const Map& other) : count(other.count), buckets(nullptr), bucketCount(other.bucketCount)
    {
        if (other.buckets != nullptr) {
            buckets = new Vector<List<Pair<K, V>>>(*other.buckets);
        }
    }

    Map& operator=(const Map& other)
    {
        if (this != &other) {
            Vector<List<Pair<K, V>>>* copy =
                other.buckets != nullptr ? new Vector<List<Pair<K, V>>>(*other.buckets) : nullptr;
            delete buckets;
            buckets = copy;
            count = other.count;
            bucketCount = other.bucketCount;
        }
        return *this;
    }

    virtual ~Map()
    {
        delete buckets;
    }

    // The value for the key, a default value inserted at the tail of the
    // key's bucket if the key is absent: a read through a non-const map can
    // add an entry. One allocation per new entry.
    V& operator[](const K& key)
    {
        const unsigned long index = key.GetHash(bucketCount);
        if (buckets == nullptr) {
            buckets = new Vector<List<Pair<K, V>>>(bucketCount);
        }
        List<Pair<K, V>>& chain = (*buckets)[index];
        for (ListElement<Pair<K, V>>* entry = chain.head; entry != nullptr; entry = entry->GetNext()) {
            if (entry->GetElement().GetFirst() == key) {
                return entry->GetElement().GetSecond();
            }
        }
        ListElement<Pair<K, V>>* added = chain.Emplace(key);
        ++count;
        return added->GetElement().GetSecond();
    }

    // The value for the key. Throws ExceptionOutOfBound with "Not a valid key
    // for 'operator[key] const'" for an absent key or an empty map.
    const V& operator[](const K& key) const
    {
        const ListElement<Pair<K, V>>* entry = Lookup(key);
        if (entry == nullptr) {
            throw ExceptionOutOfBound("Not a valid key for 'operator[key] const'");
        }
        return entry->GetElement().GetSecond();
    }

    // On the key's entry; invalid if absent or the map is empty.
    MapIterator<K, V> Find(const K& key) const
    {
        unsigned long bucket = 0;
        ListElement<Pair<K, V>>* entry = Lookup(key, &bucket);
        if (entry == nullptr) {
            return MapIterator<K, V>();
        }
        return MapIterator<K, V>(bucket, ListIterator<Pair<K, V>>(entry), this);
    }

    // On the first entry in iteration order; invalid on an empty map.
    MapIterator<K, V> Begin() const
    {
        if (count == 0) {
            return MapIterator<K, V>();
        }
        for (unsigned long index = 0; index < bucketCount; ++index) {
            const List<Pair<K, V>>& chain = (*buckets)[index];
            if (chain.head != nullptr) {
                return MapIterator<K, V>(index, chain.Begin(), this);
            }
        }
        return MapIterator<K, V>();
    }

    // The number of entries.
    unsigned long GetCount() const
    {
        return count;
    }

    void Invariant() const {}

private:
    friend class MapIterator<K, V>;

    static constexpr unsigned long kBucketCount = 53;

    // The entry of the key, or null.
    // The entry of `key`, or null; its bucket goes to *bucketOut when given
    // (hashing once).
    ListElement<Pair<K, V>>* Lookup(const K& key, unsigned long* bucketOut = nullptr) const
    {
        if (count == 0) {
            return nullptr;
        }
        const unsigned long bucket = key.GetHash(bucketCount);
        if (bucketOut != nullptr) {
            *bucketOut = bucket;
        }
        const List<Pair<K, V>>& chain = (*buckets)[bucket];
        for (ListElement<Pair<K, V>>* entry = chain.head; entry != nullptr; entry = entry->GetNext()) {
            if (entry->GetElement().GetFirst() == key) {
                return entry;
            }
        }
        return nullptr;
    }

    unsigned long count;
    Vector<List<Pair<K, V>>>* buckets;
    unsigned long bucketCount;
};

} // namespace Utilities

#endif
