#ifndef QVIMANAGER_FOUNDATION_SMART_POINTER_H
#define QVIMANAGER_FOUNDATION_SMART_POINTER_H

// Shared ownership: SmartPointer<T> shares a separately allocated 16-bit
// ReferenceCounter among its copies. When the last copy lets go, the object
// is released through the free function FreeInstance(T*) and the counter is
// deleted.
//
// FreeInstance is the customisation point. For plain classes it deletes the
// object. A class that has its own FreeInstance() member (a Component, which
// must go back to the creator that made it) is released through that member
// and never deleted directly. A type may also bring an overload of its own,
// found next to the type by argument-dependent lookup.
//
// Nothing here is synchronised, and the 16-bit count is not checked for
// overflow: 65536 copies of one pointer wrap it.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/exception.h"

namespace Utilities {

class ReferenceCounter {
public:
    ReferenceCounter() : count(0) {}

    // Change the count by one and return the new count, 16 bits wide.
    unsigned short AddReference()
    {
        return ++count;
    }
    unsigned short ReleaseReference()
    {
        return --count;
    }
    unsigned short GetCount() const
    {
        return count;
    }

private:
    unsigned short count;
};

template <typename T>
void FreeInstance(T* object)
{
    if constexpr (requires { object->FreeInstance(); }) {
        if (object != nullptr) {
            object->FreeInstance();
        }
    } else {
        static_assert(sizeof(T) > 0, "FreeInstance of an incomplete type");
        delete object;
    }
}

template <typename T>
class SmartPointer;

template <typename To, typename From>
SmartPointer<To> DynamicCast(const SmartPointer<From>& source);

// The base of every SmartPointer.
class ReferenceManager {
public:
    virtual void Invariant() const {}
    // A fixed label of the class.
    virtual Diagnostics::String GetValueString() const;

protected:
    ReferenceManager() = default;
    ReferenceManager(const ReferenceManager&) = default;
    ReferenceManager& operator=(const ReferenceManager&) = default;
    virtual ~ReferenceManager() = default;
};

template <typename T>
class SmartPointer : public ReferenceManager {
public:
    // Empty.
    SmartPointer() : counter(nullptr), object(nullptr) {}

    // Takes ownership: the count is 1. A null argument makes an empty pointer.
    explicit SmartPointer(T* owned) : counter(nullptr), object(nullptr)
    {
        if (owned != nullptr) {
            counter = new ReferenceCounter();
            counter->AddReference();
            object = owned;
        }
    }

    // Shares the object and counts one up.
    SmartPointer(const SmartPointer& other) : ReferenceManager(other), counter(other.counter), object(other.object)
    {
        if (counter != nullptr) {
            counter->AddReference();
        }
    }

    // Takes over the other's share; the other is left empty.
    SmartPointer(SmartPointer&& other) noexcept : counter(other.counter), object(other.object)
    {
        other.counter = nullptr;
        other.object = nullptr;
    }

    // Shares the other's object and releases what this one held. Assigning a
    // pointer to itself leaves the object alive.
    SmartPointer& operator=(const SmartPointer& other)
    {
        // Read before releasing: `other` may be this very pointer.
        ReferenceCounter* const sharedCounter = other.counter;
        T* const sharedObject = other.object;
        if (sharedCounter != nullptr) {
            sharedCounter->AddReference();
        }
        Release();
        counter = sharedCounter;
        object = sharedObject;
        return *this;
    }

    SmartPointer& operator=(SmartPointer&& other) noexcept
    {
        if (this != &other) {
            Release();
            counter = other.counter;
            object = other.object;
            other.counter = nullptr;
            other.object = nullptr;
        }
        return *this;
    }

    ~SmartPointer() override
    {
        Release();
    }

    // Throws ExceptionNullpointer with "Failed to access to nullpointer." on
    // an empty pointer.
    T* operator->() const
    {
        if (object == nullptr) {
            throw ExceptionNullpointer("Failed to access to nullpointer.");
        }
        return object;
    }

    // Throws ExceptionNullpointer with "Failed to dereference nullpointer." on
    // an empty pointer.
    T& operator*() const
    {
        if (object == nullptr) {
            throw ExceptionNullpointer("Failed to dereference nullpointer.");
        }
        return *object;
    }

    bool IsValid() const
    {
        return object != nullptr;
    }

    // Identity: both share one reference counter, or both are empty. Two
    // pointers to equal but separate objects are not equal.
    bool operator==(const SmartPointer& other) const
    {
        return counter == other.counter;
    }

    // How many pointers share the object: 0 for an empty pointer.
    unsigned short GetReferenceCount() const
    {
        return counter == nullptr ? 0 : counter->GetCount();
    }

    void Invariant() const override {}

private:
    template <typename To, typename From>
    friend SmartPointer<To> DynamicCast(const SmartPointer<From>& source);

    // Joins the share of another pointer to the same object (as another
    // class of it) and counts one up.
    SmartPointer(ReferenceCounter* shared, T* sharedObject) : counter(shared), object(sharedObject)
    {
        counter->AddReference();
    }

    // Counts one down; at 0 the object is released through FreeInstance and
    // the counter deleted. Either way this pointer is left empty.
    void Release()
    {
        if (counter == nullptr) {
            return;
        }
        if (counter->ReleaseReference() == 0) {
            Dispose(counter, object);
        }
        counter = nullptr;
        object = nullptr;
    }

    // The end of the last share. Kept out of line: inlined into a caller
    // that holds two copies, the compiler cannot see that only the last one
    // reaches here, and warns about a use after free that never happens.
    [[gnu::noinline]] static void Dispose(ReferenceCounter* lastCounter, T* lastObject)
    {
        FreeInstance(lastObject);
        delete lastCounter;
    }

    ReferenceCounter* counter;
    T* object;
};

// DynamicCast<T>(source): the object of `source` seen as a T.
//
// An empty source gives an empty result. Otherwise the object is cast at
// run time; on success the result shares the source's reference counter,
// which counts one up, and the object lives as long as either pointer does.
// On failure the result is empty and nothing is thrown: a pointer to an
// object of another class gives an empty pointer, never an exception.
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
