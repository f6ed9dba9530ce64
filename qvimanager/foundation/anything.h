#ifndef QVIMANAGER_FOUNDATION_ANYTHING_H
#define QVIMANAGER_FOUNDATION_ANYTHING_H

// Anything: the strict variant of the library, the value type of every
// component descriptor (Map<String, Anything>). It holds one of eight kinds:
// empty, bool, short, long, double, String, a map of Anythings or a vector of
// Anythings. It never converts: a getter for another kind than the one held
// throws ExceptionWrongType with an empty text, so GetLong on a short value
// throws, and GetDouble on a long one too.
//
// Copies share one immutable implementation object through a SmartPointer;
// an Anything changes only by being assigned, and then it may change kind.
// References returned by the getters stay valid while some Anything holds
// the implementation.
//
// Values of different kinds are never equal: Anything(short(1)) ==
// Anything(1L) is false. Doubles compare exactly; maps compare regardless of
// insertion order.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class Anything;

// The base of the eight kinds. Every getter throws ExceptionWrongType with an
// empty text; each kind overrides its own.
class AnythingImplementationBase {
public:
    virtual ~AnythingImplementationBase();
    // The empty text.
    virtual Diagnostics::String GetValueString() const;
    // False: reached only when the other value is of another kind.
    virtual bool operator==(const AnythingImplementationBase& other) const;
    // Throws ExceptionWrongType with an empty text: reached only when the
    // other value is of another kind.
    virtual const AnythingImplementationBase& operator=(const AnythingImplementationBase& other);
    // True for every kind but the empty one.
    virtual bool IsValid() const;
    virtual const String& GetString() const;
    virtual bool GetBool() const;
    virtual short GetShort() const;
    virtual long GetLong() const;
    virtual double GetDouble() const;
    virtual const Map<String, Anything>& GetMapOfAnythings() const;
    virtual const Vector<Anything>& GetVectorOfAnythings() const;

    void Invariant() const {}

protected:
    AnythingImplementationBase() = default;
    AnythingImplementationBase(const AnythingImplementationBase&) = default;
};

class Anything {
public:
    // The empty kind.
    Anything();
    Anything(bool value);
    Anything(short value);
    Anything(long value);
    Anything(double value);
    // The string kind.
    Anything(const char* value);
    Anything(const String& value);
    // The map and vector kinds copy the container deeply.
    Anything(const Map<String, Anything>& value);
    Anything(const Vector<Anything>& value);
    // There is no Anything of these: say which kind is meant.
    Anything(int) = delete;
    Anything(unsigned int) = delete;
    Anything(unsigned long) = delete;
    Anything(unsigned short) = delete;
    Anything(float) = delete;

    // Shares the other's implementation; no allocation.
    Anything(const Anything& other);
    // Lets go of the old implementation and shares the other's, so the kind
    // may change. Self-assignment does nothing.
    const Anything& operator=(const Anything& other);
    virtual ~Anything();

    // Same kind and equal value (see the kinds). Two empty values are equal.
    bool operator==(const Anything& other) const;

    // False only for the empty kind.
    bool IsValid() const;
    const String& GetString() const;
    bool GetBool() const;
    long GetLong() const;
    short GetShort() const;
    double GetDouble() const;
    const Map<String, Anything>& GetMapOfAnythings() const;
    const Vector<Anything>& GetVectorOfAnythings() const;

    // "AnythingEmpty", "true"/"false", the number, the text,
    // "MapOfAnythings", or the empty text for a vector.
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

private:
    // Never empty after construction. A missing implementation (which only
    // a failed allocation could leave) makes the getters, IsValid and
    // GetValueString throw ExceptionNullpointer "Failed to access to
    // nullpointer." and operator== "Failed to dereference nullpointer.".
    SmartPointer<AnythingImplementationBase> implementation;
};

// ---------------------------------------------------------------- the kinds
//
// Each kind has a constructor from its value, a copy constructor, a typed
// operator= and operator== besides the virtual forms (which cast the other
// value to their own kind and fall back on the base when it is another
// kind), and its own getter.

class AnythingEmptyImplementation : public AnythingImplementationBase {
public:
    AnythingEmptyImplementation();
    AnythingEmptyImplementation(const AnythingEmptyImplementation& other);
    ~AnythingEmptyImplementation() override;
    // "AnythingEmpty".
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    // Always true: two empty values are equal.
    bool operator==(const AnythingEmptyImplementation& other) const;
    const AnythingEmptyImplementation& operator=(const AnythingEmptyImplementation& other);
    // False.
    bool IsValid() const override;
    void Invariant() const {}
};

class AnythingBoolImplementation : public AnythingImplementationBase {
public:
    explicit AnythingBoolImplementation(bool value);
    AnythingBoolImplementation(const AnythingBoolImplementation& other);
    ~AnythingBoolImplementation() override;
    // "true" or "false".
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    bool operator==(const AnythingBoolImplementation& other) const;
    const AnythingBoolImplementation& operator=(const AnythingBoolImplementation& other);
    bool GetBool() const override;
    void Invariant() const {}

private:
    bool value;
};

class AnythingShortImplementation : public AnythingImplementationBase {
public:
    explicit AnythingShortImplementation(short value);
    AnythingShortImplementation(const AnythingShortImplementation& other);
    ~AnythingShortImplementation() override;
    // The number, as Diagnostics::String renders a short.
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    bool operator==(const AnythingShortImplementation& other) const;
    const AnythingShortImplementation& operator=(const AnythingShortImplementation& other);
    short GetShort() const override;
    void Invariant() const {}

private:
    short value;
};

class AnythingLongImplementation : public AnythingImplementationBase {
public:
    explicit AnythingLongImplementation(long value);
    AnythingLongImplementation(const AnythingLongImplementation& other);
    ~AnythingLongImplementation() override;
    // The number, as Diagnostics::String renders a long.
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    bool operator==(const AnythingLongImplementation& other) const;
    const AnythingLongImplementation& operator=(const AnythingLongImplementation& other);
    long GetLong() const override;
    // The value; the only kind with an operation of its own.
    virtual long AsLong() const;
    void Invariant() const {}

private:
    long value;
};

class AnythingDoubleImplementation : public AnythingImplementationBase {
public:
    explicit AnythingDoubleImplementation(double value);
    AnythingDoubleImplementation(const AnythingDoubleImplementation& other);
    ~AnythingDoubleImplementation() override;
    // The number, as Diagnostics::String renders a double ("%.15g").
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    // Exact equality, no tolerance.
    bool operator==(const AnythingDoubleImplementation& other) const;
    const AnythingDoubleImplementation& operator=(const AnythingDoubleImplementation& other);
    double GetDouble() const override;
    void Invariant() const {}

private:
    double value;
};

class AnythingStringImplementation : public AnythingImplementationBase {
public:
    explicit AnythingStringImplementation(const String& value);
    AnythingStringImplementation(const AnythingStringImplementation& other);
    ~AnythingStringImplementation() override;
    // The text.
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    // String::operator==.
    bool operator==(const AnythingStringImplementation& other) const;
    const AnythingStringImplementation& operator=(const AnythingStringImplementation& other);
    const String& GetString() const override;
    void Invariant() const {}

private:
    String value;
};

class AnythingMapOfAnythingsImplementation : public AnythingImplementationBase {
public:
    explicit AnythingMapOfAnythingsImplementation(const Map<String, Anything>& value);
    AnythingMapOfAnythingsImplementation(const AnythingMapOfAnythingsImplementation& other);
    ~AnythingMapOfAnythingsImplementation() override;
    // "MapOfAnythings".
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    // BasicAlgorithm::IsMapEqual: insertion order plays no part.
    bool operator==(const AnythingMapOfAnythingsImplementation& other) const;
    const AnythingMapOfAnythingsImplementation& operator=(const AnythingMapOfAnythingsImplementation& other);
    const Map<String, Anything>& GetMapOfAnythings() const override;
    void Invariant() const {}

private:
    Map<String, Anything> value;
};

class AnythingVectorOfAnythingsImplementation : public AnythingImplementationBase {
public:
    explicit AnythingVectorOfAnythingsImplementation(const Vector<Anything>& value);
    AnythingVectorOfAnythingsImplementation(const AnythingVectorOfAnythingsImplementation& other);
    ~AnythingVectorOfAnythingsImplementation() override;
    // The empty text (unlike the map kind's label).
    Diagnostics::String GetValueString() const override;
    bool operator==(const AnythingImplementationBase& other) const override;
    const AnythingImplementationBase& operator=(const AnythingImplementationBase& other) override;
    // The same vector object: equal. Different sizes: unequal without
    // comparing any element. Otherwise element by element in ascending index
    // up to the first difference.
    bool operator==(const AnythingVectorOfAnythingsImplementation& other) const;
    const AnythingVectorOfAnythingsImplementation& operator=(const AnythingVectorOfAnythingsImplementation& other);
    const Vector<Anything>& GetVectorOfAnythings() const override;
    void Invariant() const {}

private:
    Vector<Anything> value;
};

} // namespace Utilities

#endif
