#ifndef QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_VECTOR_H
#define QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_VECTOR_H

// Diagnostics::Vector: a fixed-size array for the diagnostics layer, which
// cannot use the foundation's containers. It changes size only through
// SetSize; copies are deep.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/exception_diagnostic.h"

namespace Diagnostics {

template <typename T>
class Vector {
public:
    // `size` default-constructed elements; 0 holds no array.
    explicit Vector(unsigned size = 0) : size(size), data(size > 0 ? new T[size]() : nullptr) {}

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

    unsigned GetSize() const
    {
        return size;
    }

    // Equal size: nothing happens. Otherwise a new array of `newSize`
    // default elements takes the first min(newSize, size) old ones.
    void SetSize(unsigned newSize)
    {
        if (newSize == size) {
            return;
        }
        T* fresh = newSize > 0 ? new T[newSize]() : nullptr;
        const unsigned kept = newSize < size ? newSize : size;
        for (unsigned i = 0; i < kept; ++i) {
            fresh[i] = data[i];
        }
        delete[] data;
        data = fresh;
        size = newSize;
    }

    // Throws ExceptionDiagnostic with
    // "Diagnostics::Vector::operator[]: index out of range" for an index at
    // or past the size.
    T& operator[](unsigned index)
    {
        Check(index);
        return data[index];
    }

    const T& operator[](unsigned index) const
    {
        Check(index);
        return data[index];
    }

private:
    void Check(unsigned index) const
    {
        if (index >= size) {
            throw ExceptionDiagnostic(String("Diagnostics::Vector::operator[]: index out of range"));
        }
    }

    void CopyFrom(const Vector& other)
    {
        T* fresh = other.size > 0 ? new T[other.size]() : nullptr;
        for (unsigned i = 0; i < other.size; ++i) {
            fresh[i] = other.data[i];
        }
        delete[] data;
        data = fresh;
        size = other.size;
    }

    unsigned size;
    T* data;
};

} // namespace Diagnostics

#endif
