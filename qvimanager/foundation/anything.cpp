#include "qvimanager/foundation/anything.h"

#include "qvimanager/foundation/basic_algorithm.h"
#include "qvimanager/foundation/exception.h"

namespace Utilities {

namespace {

[[noreturn]] void ThrowWrongType()
{
    throw ExceptionWrongType("");
}

// The virtual comparison of a kind: the other value cast to the same kind
// at run time; another kind falls back on the base, which gives false.
template <typename Kind>
bool CompareSameKind(const Kind& self, const AnythingImplementationBase& other)
{
    const auto* same = dynamic_cast<const Kind*>(&other);
    if (same == nullptr) {
        return self.AnythingImplementationBase::operator==(other);
    }
    return self == *same;
}

// The virtual assignment of a kind: the same kind copies the value, another
// kind falls back on the base, which throws.
template <typename Kind>
const AnythingImplementationBase& AssignSameKind(Kind& self, const AnythingImplementationBase& other)
{
    const auto* same = dynamic_cast<const Kind*>(&other);
    if (same == nullptr) {
        return self.AnythingImplementationBase::operator=(other);
    }
    return self = *same;
}

} // namespace

// ---------------------------------------------------------------- base

AnythingImplementationBase::~AnythingImplementationBase() = default;

Diagnostics::String AnythingImplementationBase::GetValueString() const
{
    return Diagnostics::String();
}

bool AnythingImplementationBase::operator==(const AnythingImplementationBase&) const
{
    return false;
}

const AnythingImplementationBase& AnythingImplementationBase::operator=(const AnythingImplementationBase&)
{
    ThrowWrongType();
}

bool AnythingImplementationBase::IsValid() const
{
    return true;
}

const String& AnythingImplementationBase::GetString() const
{
    ThrowWrongType();
}

bool AnythingImplementationBase::GetBool() const
{
    ThrowWrongType();
}

short AnythingImplementationBase::GetShort() const
{
    ThrowWrongType();
}

long AnythingImplementationBase::GetLong() const
{
    ThrowWrongType();
}

double AnythingImplementationBase::GetDouble() const
{
    ThrowWrongType();
}

const Map<String, Anything>& AnythingImplementationBase::GetMapOfAnythings() const
{
    ThrowWrongType();
}

const Vector<Anything>& AnythingImplementationBase::GetVectorOfAnythings() const
{
    ThrowWrongType();
}

// ---------------------------------------------------------------- Anything

Anything::Anything() : implementation(new AnythingEmptyImplementation()) {}
Anything::Anything(bool value) : implementation(new AnythingBoolImplementation(value)) {}
Anything::Anything(short value) : implementation(new AnythingShortImplementation(value)) {}
Anything::Anything(long value) : implementation(new AnythingLongImplementation(value)) {}
Anything::Anything(double value) : implementation(new AnythingDoubleImplementation(value)) {}
Anything::Anything(const char* value) : implementation(new AnythingStringImplementation(String(value))) {}
Anything::Anything(const String& value) : implementation(new AnythingStringImplementation(value)) {}
Anything::Anything(const Map<String, Anything>& value)
    : implementation(new AnythingMapOfAnythingsImplementation(value))
{
}
Anything::Anything(const Vector<Anything>& value)
    : implementation(new AnythingVectorOfAnythingsImplementation(value))
{
}

Anything::Anything(const Anything& other) = default;

const Anything& Anything::operator=(const Anything& other)
{
    if (this != &other) {
        implementation = other.implementation;
    }
    return *this;
}

Anything::~Anything() = default;

bool Anything::operator==(const Anything& other) const
{
    return *implementation == *other.implementation;
}

bool Anything::IsValid() const
{
    return implementation->IsValid();
}

const String& Anything::GetString() const
{
    return implementation->GetString();
}

bool Anything::GetBool() const
{
    return implementation->GetBool();
}

long Anything::GetLong() const
{
    return implementation->GetLong();
}

short Anything::GetShort() const
{
    return implementation->GetShort();
}

double Anything::GetDouble() const
{
    return implementation->GetDouble();
}

const Map<String, Anything>& Anything::GetMapOfAnythings() const
{
    return implementation->GetMapOfAnythings();
}

const Vector<Anything>& Anything::GetVectorOfAnythings() const
{
    return implementation->GetVectorOfAnythings();
}

Diagnostics::String Anything::GetValueString() const
{
    return implementation->GetValueString();
}

// ---------------------------------------------------------------- empty

AnythingEmptyImplementation::AnythingEmptyImplementation() = default;
AnythingEmptyImplementation::AnythingEmptyImplementation(const AnythingEmptyImplementation& other) = default;
AnythingEmptyImplementation::~AnythingEmptyImplementation() = default;

Diagnostics::String AnythingEmptyImplementation::GetValueString() const
{
    return Diagnostics::String("AnythingEmpty");
}

bool AnythingEmptyImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingEmptyImplementation::operator=(const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingEmptyImplementation::operator==(const AnythingEmptyImplementation&) const
{
    return true;
}

const AnythingEmptyImplementation& AnythingEmptyImplementation::operator=(const AnythingEmptyImplementation&)
{
    return *this;
}

bool AnythingEmptyImplementation::IsValid() const
{
    return false;
}

// ---------------------------------------------------------------- bool

AnythingBoolImplementation::AnythingBoolImplementation(bool initial) : value(initial) {}
AnythingBoolImplementation::AnythingBoolImplementation(const AnythingBoolImplementation& other) = default;
AnythingBoolImplementation::~AnythingBoolImplementation() = default;

Diagnostics::String AnythingBoolImplementation::GetValueString() const
{
    return Diagnostics::String(value);
}

bool AnythingBoolImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingBoolImplementation::operator=(const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingBoolImplementation::operator==(const AnythingBoolImplementation& other) const
{
    return value == other.value;
}

const AnythingBoolImplementation& AnythingBoolImplementation::operator=(const AnythingBoolImplementation& other)
{
    value = other.value;
    return *this;
}

bool AnythingBoolImplementation::GetBool() const
{
    return value;
}

// ---------------------------------------------------------------- short

AnythingShortImplementation::AnythingShortImplementation(short initial) : value(initial) {}
AnythingShortImplementation::AnythingShortImplementation(const AnythingShortImplementation& other) = default;
AnythingShortImplementation::~AnythingShortImplementation() = default;

Diagnostics::String AnythingShortImplementation::GetValueString() const
{
    return Diagnostics::String(value);
}

bool AnythingShortImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingShortImplementation::operator=(const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingShortImplementation::operator==(const AnythingShortImplementation& other) const
{
    return value == other.value;
}

const AnythingShortImplementation& AnythingShortImplementation::operator=(const AnythingShortImplementation& other)
{
    value = other.value;
    return *this;
}

short AnythingShortImplementation::GetShort() const
{
    return value;
}

// ---------------------------------------------------------------- long

AnythingLongImplementation::AnythingLongImplementation(long initial) : value(initial) {}
AnythingLongImplementation::AnythingLongImplementation(const AnythingLongImplementation& other) = default;
AnythingLongImplementation::~AnythingLongImplementation() = default;

Diagnostics::String AnythingLongImplementation::GetValueString() const
{
    return Diagnostics::String(value);
}

bool AnythingLongImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingLongImplementation::operator=(const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingLongImplementation::operator==(const AnythingLongImplementation& other) const
{
    return value == other.value;
}

const AnythingLongImplementation& AnythingLongImplementation::operator=(const AnythingLongImplementation& other)
{
    value = other.value;
    return *this;
}

long AnythingLongImplementation::GetLong() const
{
    return value;
}

long AnythingLongImplementation::AsLong() const
{
    return value;
}

// ---------------------------------------------------------------- double

AnythingDoubleImplementation::AnythingDoubleImplementation(double initial) : value(initial) {}
AnythingDoubleImplementation::AnythingDoubleImplementation(const AnythingDoubleImplementation& other) = default;
AnythingDoubleImplementation::~AnythingDoubleImplementation() = default;

Diagnostics::String AnythingDoubleImplementation::GetValueString() const
{
    return Diagnostics::String(value);
}

bool AnythingDoubleImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingDoubleImplementation::operator=(const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingDoubleImplementation::operator==(const AnythingDoubleImplementation& other) const
{
    return value == other.value;
}

const AnythingDoubleImplementation& AnythingDoubleImplementation::operator=(const AnythingDoubleImplementation& other)
{
    value = other.value;
    return *this;
}

double AnythingDoubleImplementation::GetDouble() const
{
    return value;
}

// ---------------------------------------------------------------- String

AnythingStringImplementation::AnythingStringImplementation(const String& initial) : value(initial) {}
AnythingStringImplementation::AnythingStringImplementation(const AnythingStringImplementation& other) = default;
AnythingStringImplementation::~AnythingStringImplementation() = default;

Diagnostics::String AnythingStringImplementation::GetValueString() const
{
    return Diagnostics::String(value.GetCharPointer());
}

bool AnythingStringImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingStringImplementation::operator=(const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingStringImplementation::operator==(const AnythingStringImplementation& other) const
{
    return value == other.value;
}

const AnythingStringImplementation& AnythingStringImplementation::operator=(const AnythingStringImplementation& other)
{
    value = other.value;
    return *this;
}

const String& AnythingStringImplementation::GetString() const
{
    return value;
}

// ---------------------------------------------------------------- map

AnythingMapOfAnythingsImplementation::AnythingMapOfAnythingsImplementation(const Map<String, Anything>& initial)
    : value(initial)
{
}
AnythingMapOfAnythingsImplementation::AnythingMapOfAnythingsImplementation(
    const AnythingMapOfAnythingsImplementation& other) = default;
AnythingMapOfAnythingsImplementation::~AnythingMapOfAnythingsImplementation() = default;

Diagnostics::String AnythingMapOfAnythingsImplementation::GetValueString() const
{
    return Diagnostics::String("MapOfAnythings");
}

bool AnythingMapOfAnythingsImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingMapOfAnythingsImplementation::operator=(
    const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingMapOfAnythingsImplementation::operator==(const AnythingMapOfAnythingsImplementation& other) const
{
    return BasicAlgorithm::IsMapEqual(value, other.value);
}

const AnythingMapOfAnythingsImplementation& AnythingMapOfAnythingsImplementation::operator=(
    const AnythingMapOfAnythingsImplementation& other)
{
    value = other.value;
    return *this;
}

const Map<String, Anything>& AnythingMapOfAnythingsImplementation::GetMapOfAnythings() const
{
    return value;
}

// ---------------------------------------------------------------- vector

AnythingVectorOfAnythingsImplementation::AnythingVectorOfAnythingsImplementation(const Vector<Anything>& initial)
    : value(initial)
{
}
AnythingVectorOfAnythingsImplementation::AnythingVectorOfAnythingsImplementation(
    const AnythingVectorOfAnythingsImplementation& other) = default;
AnythingVectorOfAnythingsImplementation::~AnythingVectorOfAnythingsImplementation() = default;

Diagnostics::String AnythingVectorOfAnythingsImplementation::GetValueString() const
{
    return Diagnostics::String();
}

bool AnythingVectorOfAnythingsImplementation::operator==(const AnythingImplementationBase& other) const
{
    return CompareSameKind(*this, other);
}

const AnythingImplementationBase& AnythingVectorOfAnythingsImplementation::operator=(
    const AnythingImplementationBase& other)
{
    return AssignSameKind(*this, other);
}

bool AnythingVectorOfAnythingsImplementation::operator==(const AnythingVectorOfAnythingsImplementation& other) const
{
    if (&value == &other.value) {
        return true;
    }
    if (value.GetSize() != other.value.GetSize()) {
        return false;
    }
    for (unsigned long i = 0; i < value.GetSize(); ++i) {
        if (!(value[i] == other.value[i])) {
            return false;
        }
    }
    return true;
}

const AnythingVectorOfAnythingsImplementation& AnythingVectorOfAnythingsImplementation::operator=(
    const AnythingVectorOfAnythingsImplementation& other)
{
    value = other.value;
    return *this;
}

const Vector<Anything>& AnythingVectorOfAnythingsImplementation::GetVectorOfAnythings() const
{
    return value;
}

} // namespace Utilities
