// Anything, its eight implementation kinds and BasicAlgorithm::IsMapEqual.
//
// Anything is a strict variant: a getter for another kind than the one held
// throws ExceptionWrongType with the empty text, there is no conversion at
// all, values of different kinds are never equal, and copies share one
// immutable implementation.

#include "qvimanager/foundation/anything.h"
#include "qvimanager/foundation/basic_algorithm.h"
#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

using namespace Utilities;
using TestSupport::FailureText;

// There is no Anything of these: the caller says which kind is meant.
static_assert(!std::is_constructible_v<Anything, int>);
static_assert(!std::is_constructible_v<Anything, unsigned int>);
static_assert(!std::is_constructible_v<Anything, unsigned long>);
static_assert(!std::is_constructible_v<Anything, unsigned short>);
static_assert(!std::is_constructible_v<Anything, float>);
// The eight kinds.
static_assert(std::is_default_constructible_v<Anything>);
static_assert(std::is_constructible_v<Anything, bool>);
static_assert(std::is_constructible_v<Anything, short>);
static_assert(std::is_constructible_v<Anything, long>);
static_assert(std::is_constructible_v<Anything, double>);
static_assert(std::is_constructible_v<Anything, const char*>);
static_assert(std::is_constructible_v<Anything, const String&>);
static_assert(std::is_constructible_v<Anything, const Map<String, Anything>&>);
static_assert(std::is_constructible_v<Anything, const Vector<Anything>&>);
// Copied and assigned, destroyed through a virtual destructor.
static_assert(std::is_copy_constructible_v<Anything>);
static_assert(std::is_copy_assignable_v<Anything>);
static_assert(std::has_virtual_destructor_v<Anything>);
// The base of the kinds is made only as the base of a kind.
static_assert(!std::is_default_constructible_v<AnythingImplementationBase>);
static_assert(std::has_virtual_destructor_v<AnythingImplementationBase>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingEmptyImplementation>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingBoolImplementation>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingShortImplementation>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingLongImplementation>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingDoubleImplementation>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingStringImplementation>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingMapOfAnythingsImplementation>);
static_assert(std::is_base_of_v<AnythingImplementationBase, AnythingVectorOfAnythingsImplementation>);
// A kind is made from its value only on purpose.
static_assert(!std::is_convertible_v<bool, AnythingBoolImplementation>);
static_assert(!std::is_convertible_v<long, AnythingLongImplementation>);
static_assert(!std::is_convertible_v<const String&, AnythingStringImplementation>);

namespace {

enum class Kind { Empty, Bool, Short, Long, Double, Text, MapOf, VectorOf };

constexpr Kind kAllKinds[] = {Kind::Empty, Kind::Bool,   Kind::Short, Kind::Long,
                              Kind::Double, Kind::Text, Kind::MapOf, Kind::VectorOf};

const char* KindName(Kind kind)
{
    switch (kind) {
    case Kind::Empty:
        return "empty";
    case Kind::Bool:
        return "bool";
    case Kind::Short:
        return "short";
    case Kind::Long:
        return "long";
    case Kind::Double:
        return "double";
    case Kind::Text:
        return "string";
    case Kind::MapOf:
        return "map";
    case Kind::VectorOf:
        return "vector";
    }
    return "unknown kind";
}

enum class Getter { GetString, GetBool, GetShort, GetLong, GetDouble, GetMapOfAnythings, GetVectorOfAnythings };

constexpr Getter kAllGetters[] = {Getter::GetString, Getter::GetBool,           Getter::GetShort,
                                  Getter::GetLong,   Getter::GetDouble,         Getter::GetMapOfAnythings,
                                  Getter::GetVectorOfAnythings};

const char* GetterName(Getter getter)
{
    switch (getter) {
    case Getter::GetString:
        return "GetString";
    case Getter::GetBool:
        return "GetBool";
    case Getter::GetShort:
        return "GetShort";
    case Getter::GetLong:
        return "GetLong";
    case Getter::GetDouble:
        return "GetDouble";
    case Getter::GetMapOfAnythings:
        return "GetMapOfAnythings";
    case Getter::GetVectorOfAnythings:
        return "GetVectorOfAnythings";
    }
    return "unknown getter";
}

// The one getter that answers for a kind; the empty kind has none.
std::optional<Getter> OwnGetter(Kind kind)
{
    switch (kind) {
    case Kind::Empty:
        return std::nullopt;
    case Kind::Bool:
        return Getter::GetBool;
    case Kind::Short:
        return Getter::GetShort;
    case Kind::Long:
        return Getter::GetLong;
    case Kind::Double:
        return Getter::GetDouble;
    case Kind::Text:
        return Getter::GetString;
    case Kind::MapOf:
        return Getter::GetMapOfAnythings;
    case Kind::VectorOf:
        return Getter::GetVectorOfAnythings;
    }
    return std::nullopt;
}

// Works for an Anything and for an implementation alike.
template <typename Holder>
void CallGetter(const Holder& holder, Getter getter)
{
    switch (getter) {
    case Getter::GetString:
        (void)holder.GetString();
        return;
    case Getter::GetBool:
        (void)holder.GetBool();
        return;
    case Getter::GetShort:
        (void)holder.GetShort();
        return;
    case Getter::GetLong:
        (void)holder.GetLong();
        return;
    case Getter::GetDouble:
        (void)holder.GetDouble();
        return;
    case Getter::GetMapOfAnythings:
        (void)holder.GetMapOfAnythings();
        return;
    case Getter::GetVectorOfAnythings:
        (void)holder.GetVectorOfAnythings();
        return;
    }
}

// The text of the ExceptionWrongType that the getter raises, or
// "no exception".
template <typename Holder>
std::string WrongTypeText(const Holder& holder, Getter getter)
{
    return FailureText<ExceptionWrongType>([&] { CallGetter(holder, getter); });
}

Map<String, Anything> MapWithOneEntry(long value)
{
    Map<String, Anything> map;
    map["key"] = Anything(value);
    return map;
}

Vector<Anything> VectorWithOneElement(long value)
{
    Vector<Anything> vector(1);
    vector[0] = Anything(value);
    return vector;
}

Vector<Anything> VectorOf(const std::vector<Anything>& elements)
{
    Vector<Anything> vector(elements.size());
    for (unsigned long i = 0; i < elements.size(); ++i) {
        vector[i] = elements[i];
    }
    return vector;
}

// A value of each kind; variants 0 and 1 differ in value (except for the
// empty kind, which has only one).
Anything MakeAnything(Kind kind, int variant = 0)
{
    switch (kind) {
    case Kind::Empty:
        return Anything();
    case Kind::Bool:
        return Anything(variant == 0);
    case Kind::Short:
        return Anything(static_cast<short>(10 + variant));
    case Kind::Long:
        return Anything(100L + variant);
    case Kind::Double:
        return Anything(0.5 + variant);
    case Kind::Text:
        return Anything(variant == 0 ? "first" : "second");
    case Kind::MapOf:
        return Anything(MapWithOneEntry(variant));
    case Kind::VectorOf:
        return Anything(VectorWithOneElement(variant));
    }
    return Anything();
}

std::unique_ptr<AnythingImplementationBase> MakeImplementation(Kind kind, int variant = 0)
{
    switch (kind) {
    case Kind::Empty:
        return std::make_unique<AnythingEmptyImplementation>();
    case Kind::Bool:
        return std::make_unique<AnythingBoolImplementation>(variant == 0);
    case Kind::Short:
        return std::make_unique<AnythingShortImplementation>(static_cast<short>(10 + variant));
    case Kind::Long:
        return std::make_unique<AnythingLongImplementation>(100L + variant);
    case Kind::Double:
        return std::make_unique<AnythingDoubleImplementation>(0.5 + variant);
    case Kind::Text:
        return std::make_unique<AnythingStringImplementation>(String(variant == 0 ? "first" : "second"));
    case Kind::MapOf:
        return std::make_unique<AnythingMapOfAnythingsImplementation>(MapWithOneEntry(variant));
    case Kind::VectorOf:
        return std::make_unique<AnythingVectorOfAnythingsImplementation>(VectorWithOneElement(variant));
    }
    return nullptr;
}

Kind KindOfGetter(Getter getter)
{
    switch (getter) {
    case Getter::GetString:
        return Kind::Text;
    case Getter::GetBool:
        return Kind::Bool;
    case Getter::GetShort:
        return Kind::Short;
    case Getter::GetLong:
        return Kind::Long;
    case Getter::GetDouble:
        return Kind::Double;
    case Getter::GetMapOfAnythings:
        return Kind::MapOf;
    case Getter::GetVectorOfAnythings:
        return Kind::VectorOf;
    }
    return Kind::Empty;
}

// The name of the kind an Anything holds, found by which getter answers and
// by IsValid; "inconsistent" when they disagree.
std::string KindHeld(const Anything& any)
{
    std::vector<Getter> answering;
    for (const Getter getter : kAllGetters) {
        if (WrongTypeText(any, getter) == "no exception") {
            answering.push_back(getter);
        }
    }
    if (answering.empty() && !any.IsValid()) {
        return KindName(Kind::Empty);
    }
    if (answering.size() == 1 && any.IsValid()) {
        return KindName(KindOfGetter(answering.front()));
    }
    return "inconsistent";
}

// The keys of a map in iteration order, joined by commas.
std::string IterationOrder(const Map<String, Anything>& map)
{
    std::string order;
    for (MapIterator<String, Anything> entry = map.Begin(); entry.IsValid(); entry++) {
        order += std::string(entry.GetKey()) + ",";
    }
    return order;
}

// Two keys in one bucket of a Map, so that their iteration order is their
// insertion order.
struct CollidingKeys {
    String first;
    String second;
};

CollidingKeys KeysInOneBucket()
{
    const unsigned long buckets = 53;
    const String first("k0");
    for (long i = 1; i < 100000; ++i) {
        const String candidate = String("k") + String(i);
        if (candidate.GetHash(buckets) == first.GetHash(buckets)) {
            return CollidingKeys{first, candidate};
        }
    }
    ADD_FAILURE() << "no two keys in one bucket";
    return CollidingKeys{first, String("k1")};
}

const double kNotANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

// ---------------------------------------------------------------- the empty kind

TEST(Anything, DefaultIsTheEmptyKindAndNotValid)
{
    const Anything empty;
    EXPECT_FALSE(empty.IsValid());
    EXPECT_EQ("empty", KindHeld(empty));
}

TEST(Anything, EmptyValueStringIsAnythingEmpty)
{
    EXPECT_STREQ("AnythingEmpty", Anything().GetValueString().c_str());
}

TEST(Anything, TwoEmptyValuesAreEqual)
{
    EXPECT_TRUE(Anything() == Anything());
}

TEST(Anything, EveryKindButEmptyIsValid)
{
    for (const Kind kind : kAllKinds) {
        SCOPED_TRACE(KindName(kind));
        EXPECT_EQ(kind != Kind::Empty, MakeAnything(kind).IsValid());
    }
}

TEST(Anything, DefaultElementsOfAVectorAndNewMapEntriesAreEmpty)
{
    const Vector<Anything> vector(2);
    EXPECT_FALSE(vector[0].IsValid());
    EXPECT_FALSE(vector[1].IsValid());
    Map<String, Anything> map;
    EXPECT_FALSE(map["absent"].IsValid());
}

// ---------------------------------------------------------------- getters

TEST(Anything, GetLongOnAStringThrowsWrongTypeWithEmptyText)
{
    const Anything text("x");
    try {
        (void)text.GetLong();
        FAIL() << "no exception";
    } catch (const ExceptionWrongType& failure) {
        EXPECT_STREQ("", failure.GetExceptionText().GetCharPointer());
        EXPECT_EQ(0u, failure.GetExceptionText().Length());
    }
}

TEST(Anything, GetterOfAnotherKindThrowsWrongTypeWithEmptyText)
{
    for (const Kind kind : kAllKinds) {
        const Anything any = MakeAnything(kind);
        for (const Getter getter : kAllGetters) {
            if (OwnGetter(kind) == getter) {
                continue;
            }
            SCOPED_TRACE(std::string(GetterName(getter)) + " on the " + KindName(kind) + " kind");
            EXPECT_STREQ("", WrongTypeText(any, getter).c_str());
        }
    }
}

TEST(Anything, GetterOfItsOwnKindDoesNotThrow)
{
    for (const Kind kind : kAllKinds) {
        const std::optional<Getter> own = OwnGetter(kind);
        if (!own) {
            continue;
        }
        SCOPED_TRACE(KindName(kind));
        EXPECT_STREQ("no exception", WrongTypeText(MakeAnything(kind), *own).c_str());
    }
}

TEST(Anything, EachKindAnswersExactlyOneGetter)
{
    for (const Kind kind : kAllKinds) {
        EXPECT_EQ(KindName(kind), KindHeld(MakeAnything(kind)));
    }
}

TEST(Anything, ThereIsNoConversionBetweenNumbers)
{
    EXPECT_STREQ("", WrongTypeText(Anything(static_cast<short>(1)), Getter::GetLong).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything(1L), Getter::GetShort).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything(1L), Getter::GetDouble).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything(1.0), Getter::GetLong).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything(true), Getter::GetShort).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything(static_cast<short>(1)), Getter::GetBool).c_str());
}

TEST(Anything, ThereIsNoConversionBetweenTextAndNumbers)
{
    EXPECT_STREQ("", WrongTypeText(Anything("1"), Getter::GetLong).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything("1.5"), Getter::GetDouble).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything("true"), Getter::GetBool).c_str());
    EXPECT_STREQ("", WrongTypeText(Anything(1L), Getter::GetString).c_str());
}

TEST(Anything, AFailedGetterLeavesTheValueAsItWas)
{
    const Anything number(42L);
    EXPECT_STREQ("", WrongTypeText(number, Getter::GetString).c_str());
    EXPECT_TRUE(number.IsValid());
    EXPECT_EQ(42L, number.GetLong());
}

TEST(Anything, BoolGivesItsValue)
{
    EXPECT_TRUE(Anything(true).GetBool());
    EXPECT_FALSE(Anything(false).GetBool());
}

TEST(Anything, ShortGivesItsValue)
{
    EXPECT_EQ(-12, Anything(static_cast<short>(-12)).GetShort());
    EXPECT_EQ(SHRT_MIN, Anything(static_cast<short>(SHRT_MIN)).GetShort());
    EXPECT_EQ(SHRT_MAX, Anything(static_cast<short>(SHRT_MAX)).GetShort());
}

TEST(Anything, LongGivesItsFullValue)
{
    EXPECT_EQ(-7L, Anything(-7L).GetLong());
    EXPECT_EQ(LONG_MIN, Anything(LONG_MIN).GetLong());
    EXPECT_EQ(LONG_MAX, Anything(LONG_MAX).GetLong());
}

TEST(Anything, DoubleGivesItsExactValue)
{
    EXPECT_EQ(0.1, Anything(0.1).GetDouble());
    EXPECT_EQ(0.1 + 0.2, Anything(0.1 + 0.2).GetDouble());
    EXPECT_EQ(-1e300, Anything(-1e300).GetDouble());
    EXPECT_EQ(std::numeric_limits<double>::denorm_min(),
              Anything(std::numeric_limits<double>::denorm_min()).GetDouble());
}

TEST(Anything, StringGivesItsText)
{
    EXPECT_STREQ("hello", Anything("hello").GetString().GetCharPointer());
    EXPECT_STREQ("a text of more than twenty characters",
                 Anything(String("a text of more than twenty characters")).GetString().GetCharPointer());
    EXPECT_STREQ("", Anything("").GetString().GetCharPointer());
}

TEST(Anything, EmptyTextIsStillTheValidStringKind)
{
    const Anything empty("");
    EXPECT_TRUE(empty.IsValid());
    EXPECT_EQ("string", KindHeld(empty));
}

TEST(Anything, NullTextGivesTheStringKindWithEmptyText)
{
    const Anything fromNull(static_cast<const char*>(nullptr));
    EXPECT_EQ("string", KindHeld(fromNull));
    EXPECT_STREQ("", fromNull.GetString().GetCharPointer());
}

TEST(Anything, MapGivesItsEntries)
{
    Map<String, Anything> source;
    source["number"] = Anything(5L);
    source["text"] = Anything("five");
    const Anything any(source);

    const Map<String, Anything>& map = any.GetMapOfAnythings();
    EXPECT_EQ(2u, map.GetCount());
    EXPECT_EQ(5L, map["number"].GetLong());
    EXPECT_STREQ("five", map["text"].GetString().GetCharPointer());
}

TEST(Anything, VectorGivesItsElements)
{
    const Anything any(VectorOf({Anything(1L), Anything("two"), Anything(true)}));

    const Vector<Anything>& vector = any.GetVectorOfAnythings();
    ASSERT_EQ(3u, vector.GetSize());
    EXPECT_EQ(1L, vector[0].GetLong());
    EXPECT_STREQ("two", vector[1].GetString().GetCharPointer());
    EXPECT_TRUE(vector[2].GetBool());
}

// ---------------------------------------------------------------- value strings

TEST(Anything, BoolValueStringIsTrueOrFalse)
{
    EXPECT_STREQ("true", Anything(true).GetValueString().c_str());
    EXPECT_STREQ("false", Anything(false).GetValueString().c_str());
}

TEST(Anything, ShortValueStringIsTheDecimalNumber)
{
    EXPECT_STREQ("0", Anything(static_cast<short>(0)).GetValueString().c_str());
    EXPECT_STREQ("-5", Anything(static_cast<short>(-5)).GetValueString().c_str());
    EXPECT_STREQ("32767", Anything(static_cast<short>(32767)).GetValueString().c_str());
    EXPECT_STREQ("-32768", Anything(static_cast<short>(-32768)).GetValueString().c_str());
}

TEST(Anything, LongValueStringIsTheDecimalNumber)
{
    EXPECT_STREQ("-7", Anything(-7L).GetValueString().c_str());
    EXPECT_STREQ("0", Anything(0L).GetValueString().c_str());
    EXPECT_STREQ("123456", Anything(123456L).GetValueString().c_str());
    EXPECT_STREQ("2147483647", Anything(2147483647L).GetValueString().c_str());
    EXPECT_STREQ("-2147483648", Anything(-2147483647L - 1).GetValueString().c_str());
}

TEST(Anything, LongValueStringRendersThirtyTwoBitsAsDiagnosticsStringDoes)
{
    if constexpr (sizeof(long) > 4) {
        const long beyond = 2147483648L;
        EXPECT_STREQ("-2147483648", Anything(beyond).GetValueString().c_str());
        EXPECT_STREQ("5", Anything(4294967296L + 5).GetValueString().c_str());
        EXPECT_STREQ(Diagnostics::String(beyond).c_str(), Anything(beyond).GetValueString().c_str());
    } else {
        GTEST_SKIP() << "long has 32 bits here";
    }
}

TEST(Anything, DoubleValueStringHasFifteenSignificantDigits)
{
    EXPECT_STREQ("0.1", Anything(0.1).GetValueString().c_str());
    EXPECT_STREQ("0.3", Anything(0.1 + 0.2).GetValueString().c_str());
    EXPECT_STREQ("-2.5", Anything(-2.5).GetValueString().c_str());
    EXPECT_STREQ("100", Anything(100.0).GetValueString().c_str());
    EXPECT_STREQ("0", Anything(0.0).GetValueString().c_str());
    EXPECT_STREQ("0.333333333333333", Anything(1.0 / 3.0).GetValueString().c_str());
    EXPECT_STREQ("1e+20", Anything(1e20).GetValueString().c_str());
    EXPECT_STREQ("1.23456789012346e+17", Anything(123456789012345678.0).GetValueString().c_str());
}

TEST(Anything, NumberValueStringsMatchDiagnosticsString)
{
    const short small = -321;
    const long large = 987654321L;
    const double fraction = 2.0 / 7.0;
    EXPECT_STREQ(Diagnostics::String(small).c_str(), Anything(small).GetValueString().c_str());
    EXPECT_STREQ(Diagnostics::String(large).c_str(), Anything(large).GetValueString().c_str());
    EXPECT_STREQ(Diagnostics::String(fraction).c_str(), Anything(fraction).GetValueString().c_str());
    EXPECT_STREQ("0.285714285714286", Anything(fraction).GetValueString().c_str());
}

TEST(Anything, StringValueStringIsTheText)
{
    EXPECT_STREQ("hello world", Anything("hello world").GetValueString().c_str());
    EXPECT_STREQ("", Anything("").GetValueString().c_str());
}

TEST(Anything, StringValueStringIsCutAsADiagnosticsStringIs)
{
    const std::string text(300, 'x');
    const Anything any(String(text.c_str()));
    EXPECT_STREQ(std::string(255, 'x').c_str(), any.GetValueString().c_str());
    EXPECT_STREQ(String(text.c_str()).GetValueString().c_str(), any.GetValueString().c_str());
}

TEST(Anything, MapValueStringIsMapOfAnythings)
{
    EXPECT_STREQ("MapOfAnythings", Anything(Map<String, Anything>()).GetValueString().c_str());
    EXPECT_STREQ("MapOfAnythings", Anything(MapWithOneEntry(1)).GetValueString().c_str());
}

TEST(Anything, VectorValueStringIsEmptyUnlikeTheMapLabel)
{
    const Diagnostics::String filled = Anything(VectorOf({Anything(1L), Anything("x")})).GetValueString();
    EXPECT_STREQ("", filled.c_str());
    EXPECT_TRUE(filled.IsEmpty());
    EXPECT_STREQ("", Anything(Vector<Anything>()).GetValueString().c_str());
}

// ---------------------------------------------------------------- copies and assignment

TEST(Anything, CopyHasTheSameKindAndValue)
{
    for (const Kind kind : kAllKinds) {
        SCOPED_TRACE(KindName(kind));
        const Anything original = MakeAnything(kind, 1);
        const Anything copy(original);
        EXPECT_EQ(KindName(kind), KindHeld(copy));
        EXPECT_TRUE(copy == MakeAnything(kind, 1));
    }
}

TEST(Anything, CopiesShareTheStringObject)
{
    const Anything original("shared text");
    const Anything copy(original);
    Anything assigned;
    assigned = original;
    EXPECT_EQ(&original.GetString(), &copy.GetString());
    EXPECT_EQ(&original.GetString(), &assigned.GetString());
    // Separately built values hold separate strings.
    EXPECT_NE(&original.GetString(), &Anything("shared text").GetString());
}

TEST(Anything, CopiesShareTheMapAndTheVectorObjects)
{
    const Anything map(MapWithOneEntry(3));
    const Anything mapCopy(map);
    EXPECT_EQ(&map.GetMapOfAnythings(), &mapCopy.GetMapOfAnythings());

    const Anything vector(VectorWithOneElement(3));
    Anything vectorCopy;
    vectorCopy = vector;
    EXPECT_EQ(&vector.GetVectorOfAnythings(), &vectorCopy.GetVectorOfAnythings());

    EXPECT_NE(&map.GetMapOfAnythings(), &Anything(MapWithOneEntry(3)).GetMapOfAnythings());
}

TEST(Anything, StringReferenceOutlivesTheOriginalWhileACopyLives)
{
    auto original = std::make_unique<Anything>("a text long enough for a heap block");
    const Anything copy(*original);
    const String& text = original->GetString();

    original.reset();
    EXPECT_STREQ("a text long enough for a heap block", text.GetCharPointer());
    EXPECT_EQ(&text, &copy.GetString());
}

TEST(Anything, MapAndVectorReferencesOutliveTheOriginalWhileACopyLives)
{
    auto mapOriginal = std::make_unique<Anything>(MapWithOneEntry(8));
    auto vectorOriginal = std::make_unique<Anything>(VectorWithOneElement(9));
    const Anything mapCopy(*mapOriginal);
    const Anything vectorCopy(*vectorOriginal);
    const Map<String, Anything>& map = mapOriginal->GetMapOfAnythings();
    const Vector<Anything>& vector = vectorOriginal->GetVectorOfAnythings();

    mapOriginal.reset();
    vectorOriginal.reset();
    EXPECT_EQ(8L, map["key"].GetLong());
    ASSERT_EQ(1u, vector.GetSize());
    EXPECT_EQ(9L, vector[0].GetLong());
}

TEST(Anything, AssignmentFromAnotherKindTakesThatKind)
{
    for (const Kind from : kAllKinds) {
        for (const Kind to : kAllKinds) {
            SCOPED_TRACE(std::string(KindName(from)) + " assigned a " + KindName(to));
            Anything target = MakeAnything(from, 0);
            const Anything source = MakeAnything(to, 1);
            target = source;
            EXPECT_EQ(KindName(to), KindHeld(target));
            EXPECT_TRUE(target == source);
        }
    }
}

TEST(Anything, AssignmentFromAStringKindToALongKindChangesTheGetters)
{
    Anything value(5L);
    value = Anything("now text");
    EXPECT_STREQ("now text", value.GetString().GetCharPointer());
    EXPECT_STREQ("", WrongTypeText(value, Getter::GetLong).c_str());
}

TEST(Anything, AssigningEmptyMakesAValueInvalidAndBack)
{
    Anything value(true);
    value = Anything();
    EXPECT_FALSE(value.IsValid());
    value = Anything(false);
    EXPECT_TRUE(value.IsValid());
    EXPECT_FALSE(value.GetBool());
}

TEST(Anything, AssignmentSharesTheSourceImplementation)
{
    const Anything source("text");
    Anything target(1L);
    target = source;
    EXPECT_EQ(&source.GetString(), &target.GetString());
}

TEST(Anything, AssignmentReturnsTheTarget)
{
    Anything target;
    const Anything source(1L);
    EXPECT_EQ(&target, &(target = source));
}

TEST(Anything, SelfAssignmentKeepsTheValueAndItsObject)
{
    Anything value("kept text");
    const String* before = &value.GetString();
    const Anything& sameOne = value;
    value = sameOne;
    EXPECT_EQ(before, &value.GetString());
    EXPECT_STREQ("kept text", value.GetString().GetCharPointer());
}

TEST(Anything, AssignedValueStaysWhenTheSourceGoes)
{
    Anything target;
    {
        const Anything source("a text long enough for a heap block");
        target = source;
    }
    EXPECT_STREQ("a text long enough for a heap block", target.GetString().GetCharPointer());
}

// ---------------------------------------------------------------- deep copy at construction

TEST(Anything, MapKindCopiesTheMapAtConstruction)
{
    Map<String, Anything> source;
    source["a"] = Anything(1L);
    const Anything any(source);

    source["a"] = Anything(2L);
    source["b"] = Anything(3L);

    const Map<String, Anything>& held = any.GetMapOfAnythings();
    EXPECT_NE(&source, &held);
    EXPECT_EQ(1u, held.GetCount());
    EXPECT_EQ(1L, held["a"].GetLong());
    EXPECT_FALSE(held.Find(String("b")).IsValid());
}

TEST(Anything, MapKindOutlivesTheSourceMap)
{
    auto source = std::make_unique<Map<String, Anything>>();
    (*source)["key"] = Anything("a text long enough for a heap block");
    const Anything any(*source);
    source.reset();
    EXPECT_STREQ("a text long enough for a heap block",
                 any.GetMapOfAnythings()["key"].GetString().GetCharPointer());
}

TEST(Anything, VectorKindCopiesTheVectorAtConstruction)
{
    Vector<Anything> source = VectorOf({Anything(1L), Anything(2L)});
    const Anything any(source);

    source[0] = Anything(10L);
    source.SetSize(5);

    const Vector<Anything>& held = any.GetVectorOfAnythings();
    EXPECT_NE(&source, &held);
    ASSERT_EQ(2u, held.GetSize());
    EXPECT_EQ(1L, held[0].GetLong());
    EXPECT_EQ(2L, held[1].GetLong());
}

// ---------------------------------------------------------------- equality

TEST(Anything, ValuesOfDifferentKindsAreNeverEqual)
{
    for (const Kind left : kAllKinds) {
        for (const Kind right : kAllKinds) {
            SCOPED_TRACE(std::string(KindName(left)) + " == " + KindName(right));
            EXPECT_EQ(left == right, MakeAnything(left) == MakeAnything(right));
        }
    }
}

TEST(Anything, ShortOneAndLongOneAreNotEqual)
{
    EXPECT_FALSE(Anything(static_cast<short>(1)) == Anything(1L));
    EXPECT_FALSE(Anything(1L) == Anything(static_cast<short>(1)));
}

TEST(Anything, TextOneAndLongOneAreNotEqual)
{
    EXPECT_FALSE(Anything("1") == Anything(1L));
    EXPECT_FALSE(Anything(1L) == Anything("1"));
}

TEST(Anything, NumbersOfOtherKindsWithTheSameValueAreNotEqual)
{
    EXPECT_FALSE(Anything(1.0) == Anything(1L));
    EXPECT_FALSE(Anything(true) == Anything(static_cast<short>(1)));
    EXPECT_FALSE(Anything(false) == Anything(0L));
    EXPECT_FALSE(Anything() == Anything(""));
    EXPECT_FALSE(Anything(Map<String, Anything>()) == Anything(Vector<Anything>()));
    EXPECT_FALSE(Anything() == Anything(Vector<Anything>()));
}

TEST(Anything, SameKindWithAnotherValueIsNotEqual)
{
    for (const Kind kind : kAllKinds) {
        if (kind == Kind::Empty) {
            continue;
        }
        SCOPED_TRACE(KindName(kind));
        EXPECT_FALSE(MakeAnything(kind, 0) == MakeAnything(kind, 1));
        EXPECT_TRUE(MakeAnything(kind, 1) == MakeAnything(kind, 1));
    }
}

TEST(Anything, BoolsCompareByValue)
{
    EXPECT_TRUE(Anything(true) == Anything(true));
    EXPECT_TRUE(Anything(false) == Anything(false));
    EXPECT_FALSE(Anything(true) == Anything(false));
}

TEST(Anything, ShortsAndLongsCompareByValue)
{
    EXPECT_TRUE(Anything(static_cast<short>(-3)) == Anything(static_cast<short>(-3)));
    EXPECT_FALSE(Anything(static_cast<short>(-3)) == Anything(static_cast<short>(3)));
    EXPECT_TRUE(Anything(LONG_MAX) == Anything(LONG_MAX));
    EXPECT_FALSE(Anything(LONG_MAX) == Anything(LONG_MAX - 1));
    // Values equal in their low 32 bits are still different longs.
    if constexpr (sizeof(long) > 4) {
        EXPECT_FALSE(Anything(5L) == Anything(4294967296L + 5));
    }
}

TEST(Anything, DoubleAndItsCopyAreEqual)
{
    const Anything sum(0.1 + 0.2);
    const Anything copy(sum);
    EXPECT_TRUE(sum == copy);
    EXPECT_TRUE(copy == sum);
    EXPECT_TRUE(Anything(0.5) == Anything(0.5));
}

TEST(Anything, DoublesCompareExactlyWithoutTolerance)
{
    EXPECT_FALSE(Anything(0.1 + 0.2) == Anything(0.3));
    EXPECT_FALSE(Anything(1.0) == Anything(1.0 + std::numeric_limits<double>::epsilon()));
}

TEST(Anything, DoublesCompareAsTheirNumbersDo)
{
    // Exact comparison of the numbers: the two zeros are equal, and a value
    // that is not a number equals nothing, not even its own copy.
    EXPECT_TRUE(Anything(0.0) == Anything(-0.0));
    const Anything notANumber(kNotANumber);
    const Anything copy(notANumber);
    EXPECT_FALSE(notANumber == copy);
}

TEST(Anything, StringsCompareByText)
{
    EXPECT_TRUE(Anything("abc") == Anything(String("abc")));
    EXPECT_TRUE(Anything("") == Anything(String()));
    EXPECT_FALSE(Anything("abc") == Anything("abd"));
    EXPECT_FALSE(Anything("abc") == Anything("abcd"));
    EXPECT_FALSE(Anything("abcd") == Anything("abc"));
    EXPECT_FALSE(Anything("abc") == Anything("ABC"));
}

TEST(Anything, StringsCompareTheirTextEvenWhenTheyShareAStamp)
{
    // An upper-case copy keeps the stamp of its source: a comparison that
    // trusted the stamp would call them equal.
    const String lower("abc");
    const String upper = lower.GetAsUpper();
    EXPECT_FALSE(Anything(lower) == Anything(upper));
    EXPECT_TRUE(Anything(upper) == Anything("ABC"));
}

// ---------------------------------------------------------------- map equality

TEST(Anything, MapsWithTheSameEntriesInsertedInDifferentOrdersAreEqual)
{
    const CollidingKeys keys = KeysInOneBucket();
    Map<String, Anything> forward;
    forward[keys.first] = Anything(1L);
    forward[keys.second] = Anything("two");
    forward["flag"] = Anything(true);
    Map<String, Anything> backward;
    backward["flag"] = Anything(true);
    backward[keys.second] = Anything("two");
    backward[keys.first] = Anything(1L);
    // The two maps really iterate in different orders.
    ASSERT_NE(IterationOrder(forward), IterationOrder(backward));

    EXPECT_TRUE(Anything(forward) == Anything(backward));
    EXPECT_TRUE(Anything(backward) == Anything(forward));
}

TEST(Anything, EmptyMapsAreEqual)
{
    EXPECT_TRUE(Anything(Map<String, Anything>()) == Anything(Map<String, Anything>()));
}

TEST(Anything, MapsWithDifferentCountsAreNotEqual)
{
    Map<String, Anything> smaller;
    smaller["a"] = Anything(1L);
    Map<String, Anything> larger(smaller);
    larger["b"] = Anything(2L);

    EXPECT_FALSE(Anything(smaller) == Anything(larger));
    EXPECT_FALSE(Anything(larger) == Anything(smaller));
    EXPECT_FALSE(Anything(Map<String, Anything>()) == Anything(smaller));
}

TEST(Anything, MapsWithAKeyMissingAreNotEqual)
{
    Map<String, Anything> left;
    left["a"] = Anything(1L);
    left["b"] = Anything(2L);
    Map<String, Anything> right;
    right["a"] = Anything(1L);
    right["c"] = Anything(2L);

    EXPECT_FALSE(Anything(left) == Anything(right));
    EXPECT_FALSE(Anything(right) == Anything(left));
}

TEST(Anything, MapsWithADifferentValueAreNotEqual)
{
    Map<String, Anything> left;
    left["a"] = Anything(1L);
    left["b"] = Anything("text");
    Map<String, Anything> right(left);
    right["b"] = Anything("other");

    EXPECT_FALSE(Anything(left) == Anything(right));
    EXPECT_FALSE(Anything(right) == Anything(left));
}

TEST(Anything, MapsWithAValueOfAnotherKindAreNotEqual)
{
    Map<String, Anything> left;
    left["a"] = Anything(1L);
    Map<String, Anything> right;
    right["a"] = Anything(static_cast<short>(1));

    EXPECT_FALSE(Anything(left) == Anything(right));
}

TEST(Anything, NestedMapsCompareByContentRegardlessOfOrder)
{
    const CollidingKeys keys = KeysInOneBucket();
    Map<String, Anything> innerForward;
    innerForward[keys.first] = Anything(1L);
    innerForward[keys.second] = Anything(2L);
    Map<String, Anything> innerBackward;
    innerBackward[keys.second] = Anything(2L);
    innerBackward[keys.first] = Anything(1L);
    ASSERT_NE(IterationOrder(innerForward), IterationOrder(innerBackward));

    Map<String, Anything> outerForward;
    outerForward["inner"] = Anything(innerForward);
    outerForward["x"] = Anything(5L);
    Map<String, Anything> outerBackward;
    outerBackward["x"] = Anything(5L);
    outerBackward["inner"] = Anything(innerBackward);
    EXPECT_TRUE(Anything(outerForward) == Anything(outerBackward));

    Map<String, Anything> innerChanged(innerBackward);
    innerChanged[keys.first] = Anything(9L);
    Map<String, Anything> outerChanged(outerBackward);
    outerChanged["inner"] = Anything(innerChanged);
    EXPECT_FALSE(Anything(outerForward) == Anything(outerChanged));
    EXPECT_FALSE(Anything(outerChanged) == Anything(outerForward));
}

TEST(Anything, MapComparedWithItsCopyIsEqualWithoutComparingEntries)
{
    // A value that is not a number equals nothing, so only the same map
    // object compares equal.
    Map<String, Anything> source;
    source["nan"] = Anything(kNotANumber);
    const Anything original(source);
    const Anything copy(original);

    EXPECT_TRUE(original == copy);
    EXPECT_FALSE(original == Anything(source));
}

// ---------------------------------------------------------------- vector equality

TEST(Anything, VectorsWithTheSameContentAreEqual)
{
    const Anything left(VectorOf({Anything(1L), Anything("x"), Anything(MapWithOneEntry(2))}));
    const Anything right(VectorOf({Anything(1L), Anything("x"), Anything(MapWithOneEntry(2))}));
    EXPECT_NE(&left.GetVectorOfAnythings(), &right.GetVectorOfAnythings());
    EXPECT_TRUE(left == right);
    EXPECT_TRUE(right == left);
}

TEST(Anything, EmptyVectorsAreEqual)
{
    EXPECT_TRUE(Anything(Vector<Anything>()) == Anything(Vector<Anything>()));
    EXPECT_TRUE(Anything(Vector<Anything>(3)) == Anything(Vector<Anything>(3)));
}

TEST(Anything, VectorsOfDifferentSizeAreNotEqual)
{
    EXPECT_FALSE(Anything(Vector<Anything>(2)) == Anything(Vector<Anything>(3)));
    EXPECT_FALSE(Anything(Vector<Anything>(3)) == Anything(Vector<Anything>(2)));
    EXPECT_FALSE(Anything(Vector<Anything>()) == Anything(Vector<Anything>(1)));
    // Equal as far as the shorter one goes.
    const Anything shorter(VectorOf({Anything(1L)}));
    const Anything longer(VectorOf({Anything(1L), Anything(2L)}));
    EXPECT_FALSE(shorter == longer);
    EXPECT_FALSE(longer == shorter);
}

TEST(Anything, VectorsOfEqualSizeCompareElementByElement)
{
    const Anything base(VectorOf({Anything(1L), Anything("x")}));
    EXPECT_FALSE(base == Anything(VectorOf({Anything(2L), Anything("x")})));
    EXPECT_FALSE(base == Anything(VectorOf({Anything(1L), Anything("y")})));
    EXPECT_FALSE(base == Anything(VectorOf({Anything(static_cast<short>(1)), Anything("x")})));
    EXPECT_FALSE(base == Anything(VectorOf({Anything("x"), Anything(1L)})));
    EXPECT_TRUE(base == Anything(VectorOf({Anything(1L), Anything("x")})));
}

TEST(Anything, NestedVectorsCompareByContent)
{
    const Anything inner(VectorOf({Anything(1L), Anything(2L)}));
    const Anything left(VectorOf({inner, Anything("x")}));
    const Anything right(VectorOf({Anything(VectorOf({Anything(1L), Anything(2L)})), Anything("x")}));
    const Anything changed(VectorOf({Anything(VectorOf({Anything(1L), Anything(3L)})), Anything("x")}));
    EXPECT_TRUE(left == right);
    EXPECT_FALSE(left == changed);
}

TEST(Anything, VectorComparedWithItselfIsEqualWithoutComparingElements)
{
    // A copy shares the vector object. Its element is not a number, which
    // equals nothing, so only the same-object rule makes the two equal.
    const Anything original(VectorOf({Anything(kNotANumber)}));
    const Anything copy(original);
    EXPECT_EQ(&original.GetVectorOfAnythings(), &copy.GetVectorOfAnythings());
    EXPECT_TRUE(original == copy);
    EXPECT_TRUE(original == original);

    EXPECT_FALSE(original == Anything(VectorOf({Anything(kNotANumber)})));
}

// ---------------------------------------------------------------- the kinds directly

TEST(AnythingImplementation, EmptyKindIsNotValidAndEveryOtherIs)
{
    EXPECT_FALSE(AnythingEmptyImplementation().IsValid());
    for (const Kind kind : kAllKinds) {
        SCOPED_TRACE(KindName(kind));
        EXPECT_EQ(kind != Kind::Empty, MakeImplementation(kind)->IsValid());
    }
}

TEST(AnythingImplementation, EmptyKindsAreAlwaysEqual)
{
    const AnythingEmptyImplementation first;
    const AnythingEmptyImplementation second;
    EXPECT_TRUE(first == second);
    AnythingEmptyImplementation target;
    EXPECT_EQ(&target, &(target = first));
}

TEST(AnythingImplementation, GetterOfAnotherKindThrowsWrongTypeWithEmptyText)
{
    for (const Kind kind : kAllKinds) {
        const std::unique_ptr<AnythingImplementationBase> implementation = MakeImplementation(kind);
        for (const Getter getter : kAllGetters) {
            SCOPED_TRACE(std::string(GetterName(getter)) + " on the " + KindName(kind) + " kind");
            const std::string expected = OwnGetter(kind) == getter ? "no exception" : "";
            EXPECT_STREQ(expected.c_str(), WrongTypeText(*implementation, getter).c_str());
        }
    }
}

TEST(AnythingImplementation, ValueStringsOfTheKinds)
{
    EXPECT_STREQ("AnythingEmpty", AnythingEmptyImplementation().GetValueString().c_str());
    EXPECT_STREQ("true", AnythingBoolImplementation(true).GetValueString().c_str());
    EXPECT_STREQ("-9", AnythingShortImplementation(static_cast<short>(-9)).GetValueString().c_str());
    EXPECT_STREQ("-7", AnythingLongImplementation(-7L).GetValueString().c_str());
    EXPECT_STREQ("0.1", AnythingDoubleImplementation(0.1).GetValueString().c_str());
    EXPECT_STREQ("text", AnythingStringImplementation(String("text")).GetValueString().c_str());
    EXPECT_STREQ("MapOfAnythings",
                 AnythingMapOfAnythingsImplementation(MapWithOneEntry(1)).GetValueString().c_str());
    EXPECT_STREQ("", AnythingVectorOfAnythingsImplementation(VectorWithOneElement(1)).GetValueString().c_str());
}

TEST(AnythingImplementation, LongAsLongReturnsTheValue)
{
    EXPECT_EQ(-42L, AnythingLongImplementation(-42L).AsLong());
    EXPECT_EQ(LONG_MAX, AnythingLongImplementation(LONG_MAX).AsLong());
    const AnythingLongImplementation copy(AnythingLongImplementation(17L));
    EXPECT_EQ(17L, copy.AsLong());
}

TEST(AnythingImplementation, TypedEqualityComparesTheValue)
{
    EXPECT_TRUE(AnythingBoolImplementation(true) == AnythingBoolImplementation(true));
    EXPECT_FALSE(AnythingBoolImplementation(true) == AnythingBoolImplementation(false));
    EXPECT_TRUE(AnythingShortImplementation(static_cast<short>(4)) == AnythingShortImplementation(static_cast<short>(4)));
    EXPECT_FALSE(AnythingShortImplementation(static_cast<short>(4)) == AnythingShortImplementation(static_cast<short>(5)));
    EXPECT_TRUE(AnythingLongImplementation(5L) == AnythingLongImplementation(5L));
    EXPECT_FALSE(AnythingLongImplementation(5L) == AnythingLongImplementation(6L));
    EXPECT_TRUE(AnythingDoubleImplementation(0.25) == AnythingDoubleImplementation(0.25));
    EXPECT_FALSE(AnythingDoubleImplementation(0.1 + 0.2) == AnythingDoubleImplementation(0.3));
    EXPECT_TRUE(AnythingStringImplementation(String("s")) == AnythingStringImplementation(String("s")));
    EXPECT_FALSE(AnythingStringImplementation(String("s")) == AnythingStringImplementation(String("t")));
    EXPECT_TRUE(AnythingMapOfAnythingsImplementation(MapWithOneEntry(1)) ==
                AnythingMapOfAnythingsImplementation(MapWithOneEntry(1)));
    EXPECT_FALSE(AnythingMapOfAnythingsImplementation(MapWithOneEntry(1)) ==
                 AnythingMapOfAnythingsImplementation(MapWithOneEntry(2)));
    EXPECT_TRUE(AnythingVectorOfAnythingsImplementation(VectorWithOneElement(1)) ==
                AnythingVectorOfAnythingsImplementation(VectorWithOneElement(1)));
    EXPECT_FALSE(AnythingVectorOfAnythingsImplementation(VectorWithOneElement(1)) ==
                 AnythingVectorOfAnythingsImplementation(VectorWithOneElement(2)));
    EXPECT_FALSE(AnythingVectorOfAnythingsImplementation(Vector<Anything>(1)) ==
                 AnythingVectorOfAnythingsImplementation(Vector<Anything>(2)));
}

TEST(AnythingImplementation, VirtualEqualityIsFalseBetweenKindsAndByValueWithinAKind)
{
    for (const Kind left : kAllKinds) {
        for (const Kind right : kAllKinds) {
            SCOPED_TRACE(std::string(KindName(left)) + " == " + KindName(right));
            const std::unique_ptr<AnythingImplementationBase> a = MakeImplementation(left);
            const std::unique_ptr<AnythingImplementationBase> b = MakeImplementation(right);
            EXPECT_EQ(left == right, *a == *b);
            if (left == right && left != Kind::Empty) {
                EXPECT_FALSE(*a == *MakeImplementation(right, 1));
            }
        }
    }
}

TEST(AnythingImplementation, TypedAssignmentCopiesTheValueAndReturnsTheTarget)
{
    AnythingBoolImplementation boolean(true);
    EXPECT_EQ(&boolean, &(boolean = AnythingBoolImplementation(false)));
    EXPECT_FALSE(boolean.GetBool());

    AnythingShortImplementation shortValue(static_cast<short>(1));
    EXPECT_EQ(&shortValue, &(shortValue = AnythingShortImplementation(static_cast<short>(-2))));
    EXPECT_EQ(-2, shortValue.GetShort());

    AnythingLongImplementation longValue(1L);
    EXPECT_EQ(&longValue, &(longValue = AnythingLongImplementation(LONG_MIN)));
    EXPECT_EQ(LONG_MIN, longValue.GetLong());
    EXPECT_EQ(LONG_MIN, longValue.AsLong());

    AnythingDoubleImplementation doubleValue(1.0);
    EXPECT_EQ(&doubleValue, &(doubleValue = AnythingDoubleImplementation(0.1)));
    EXPECT_EQ(0.1, doubleValue.GetDouble());
}

TEST(AnythingImplementation, TypedAssignmentOfATextCopiesIt)
{
    AnythingStringImplementation target(String("old"));
    const AnythingStringImplementation source(String("a text long enough for a heap block"));
    EXPECT_EQ(&target, &(target = source));
    EXPECT_STREQ("a text long enough for a heap block", target.GetString().GetCharPointer());
    EXPECT_NE(&source.GetString(), &target.GetString());
    EXPECT_TRUE(target == source);
}

TEST(AnythingImplementation, TypedAssignmentOfAMapCopiesItDeeply)
{
    AnythingMapOfAnythingsImplementation target(MapWithOneEntry(1));
    auto source = std::make_unique<AnythingMapOfAnythingsImplementation>(MapWithOneEntry(2));
    EXPECT_EQ(&target, &(target = *source));
    EXPECT_NE(&source->GetMapOfAnythings(), &target.GetMapOfAnythings());
    source.reset();
    EXPECT_EQ(1u, target.GetMapOfAnythings().GetCount());
    EXPECT_EQ(2L, target.GetMapOfAnythings()["key"].GetLong());
}

TEST(AnythingImplementation, TypedAssignmentOfAVectorCopiesIt)
{
    AnythingVectorOfAnythingsImplementation target(Vector<Anything>(3));
    auto source = std::make_unique<AnythingVectorOfAnythingsImplementation>(VectorWithOneElement(4));
    EXPECT_EQ(&target, &(target = *source));
    EXPECT_NE(&source->GetVectorOfAnythings(), &target.GetVectorOfAnythings());
    source.reset();
    ASSERT_EQ(1u, target.GetVectorOfAnythings().GetSize());
    EXPECT_EQ(4L, target.GetVectorOfAnythings()[0].GetLong());
}

TEST(AnythingImplementation, TypedSelfAssignmentKeepsTheValue)
{
    AnythingStringImplementation text(String("a text long enough for a heap block"));
    const AnythingStringImplementation& sameText = text;
    text = sameText;
    EXPECT_STREQ("a text long enough for a heap block", text.GetString().GetCharPointer());

    AnythingMapOfAnythingsImplementation map(MapWithOneEntry(6));
    const AnythingMapOfAnythingsImplementation& sameMap = map;
    map = sameMap;
    EXPECT_EQ(6L, map.GetMapOfAnythings()["key"].GetLong());

    AnythingVectorOfAnythingsImplementation vector(VectorWithOneElement(7));
    const AnythingVectorOfAnythingsImplementation& sameVector = vector;
    vector = sameVector;
    EXPECT_EQ(7L, vector.GetVectorOfAnythings()[0].GetLong());
}

TEST(AnythingImplementation, CopyConstructorCopiesTheValue)
{
    const AnythingStringImplementation text(String("copied"));
    const AnythingStringImplementation textCopy(text);
    EXPECT_STREQ("copied", textCopy.GetString().GetCharPointer());
    EXPECT_NE(&text.GetString(), &textCopy.GetString());

    const AnythingMapOfAnythingsImplementation map(MapWithOneEntry(3));
    const AnythingMapOfAnythingsImplementation mapCopy(map);
    EXPECT_NE(&map.GetMapOfAnythings(), &mapCopy.GetMapOfAnythings());
    EXPECT_TRUE(map == mapCopy);

    const AnythingDoubleImplementation number(2.5);
    EXPECT_EQ(2.5, AnythingDoubleImplementation(number).GetDouble());
}

TEST(AnythingImplementation, VirtualAssignmentBetweenDifferentKindsThrowsWrongTypeWithEmptyText)
{
    for (const Kind targetKind : kAllKinds) {
        for (const Kind sourceKind : kAllKinds) {
            if (targetKind == sourceKind) {
                continue;
            }
            SCOPED_TRACE(std::string(KindName(targetKind)) + " assigned a " + KindName(sourceKind));
            const std::unique_ptr<AnythingImplementationBase> target = MakeImplementation(targetKind, 0);
            const std::unique_ptr<AnythingImplementationBase> source = MakeImplementation(sourceKind, 1);
            AnythingImplementationBase& targetBase = *target;
            const AnythingImplementationBase& sourceBase = *source;
            EXPECT_STREQ("", FailureText<ExceptionWrongType>([&] { targetBase = sourceBase; }).c_str());
            // The target keeps its value.
            EXPECT_TRUE(*target == *MakeImplementation(targetKind, 0));
        }
    }
}

TEST(AnythingImplementation, VirtualAssignmentWithinAKindCopiesTheValue)
{
    for (const Kind kind : kAllKinds) {
        SCOPED_TRACE(KindName(kind));
        const std::unique_ptr<AnythingImplementationBase> target = MakeImplementation(kind, 0);
        const std::unique_ptr<AnythingImplementationBase> source = MakeImplementation(kind, 1);
        AnythingImplementationBase& targetBase = *target;
        const AnythingImplementationBase& sourceBase = *source;
        EXPECT_EQ(kind == Kind::Empty, targetBase == sourceBase);

        const AnythingImplementationBase* result = nullptr;
        EXPECT_STREQ("no exception",
                     FailureText<ExceptionWrongType>([&] { result = &(targetBase = sourceBase); }).c_str());
        EXPECT_EQ(target.get(), result);
        EXPECT_TRUE(targetBase == sourceBase);
    }
}

TEST(AnythingImplementation, VirtualAssignmentOfALongCopiesItsValue)
{
    AnythingLongImplementation target(5L);
    const AnythingLongImplementation source(9L);
    AnythingImplementationBase& targetBase = target;
    const AnythingImplementationBase& sourceBase = source;
    targetBase = sourceBase;
    EXPECT_EQ(9L, target.GetLong());
    EXPECT_EQ(9L, target.AsLong());
}

TEST(AnythingImplementation, VirtualSelfAssignmentKeepsTheValue)
{
    for (const Kind kind : kAllKinds) {
        SCOPED_TRACE(KindName(kind));
        const std::unique_ptr<AnythingImplementationBase> implementation = MakeImplementation(kind, 1);
        AnythingImplementationBase& base = *implementation;
        const AnythingImplementationBase& sameOne = base;
        EXPECT_STREQ("no exception", FailureText<ExceptionWrongType>([&] { base = sameOne; }).c_str());
        EXPECT_TRUE(*implementation == *MakeImplementation(kind, 1));
    }
}

TEST(AnythingImplementation, MapKindCopiesTheMapAtConstruction)
{
    Map<String, Anything> source = MapWithOneEntry(1);
    const AnythingMapOfAnythingsImplementation implementation(source);
    source["key"] = Anything(2L);
    source["more"] = Anything(3L);
    EXPECT_EQ(1u, implementation.GetMapOfAnythings().GetCount());
    EXPECT_EQ(1L, implementation.GetMapOfAnythings()["key"].GetLong());
}

TEST(AnythingImplementation, VectorKindCopiesTheVectorAtConstruction)
{
    Vector<Anything> source = VectorWithOneElement(1);
    const AnythingVectorOfAnythingsImplementation implementation(source);
    source[0] = Anything(2L);
    source.SetSize(4);
    ASSERT_EQ(1u, implementation.GetVectorOfAnythings().GetSize());
    EXPECT_EQ(1L, implementation.GetVectorOfAnythings()[0].GetLong());
}

// ---------------------------------------------------------------- BasicAlgorithm::IsMapEqual

TEST(BasicAlgorithm, MapIsEqualToItselfWithoutComparingEntries)
{
    // A value that is not a number equals nothing, so only the same-object
    // rule can make these equal.
    Map<String, Anything> map;
    map["nan"] = Anything(kNotANumber);
    EXPECT_TRUE(BasicAlgorithm::IsMapEqual(map, map));
    const Map<String, Anything> copy(map);
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(map, copy));
}

TEST(BasicAlgorithm, EmptyMapsAreEqual)
{
    const Map<String, Anything> first;
    const Map<String, Anything> second;
    EXPECT_TRUE(BasicAlgorithm::IsMapEqual(first, second));
}

TEST(BasicAlgorithm, MapsWithDifferentCountsAreNotEqual)
{
    Map<String, Anything> smaller;
    smaller["a"] = Anything(1L);
    Map<String, Anything> larger(smaller);
    larger["b"] = Anything(2L);
    const Map<String, Anything> empty;

    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(smaller, larger));
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(larger, smaller));
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(empty, smaller));
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(smaller, empty));
}

TEST(BasicAlgorithm, MapsWithAKeyMissingAreNotEqual)
{
    Map<String, Anything> left;
    left["a"] = Anything(1L);
    left["b"] = Anything(2L);
    Map<String, Anything> right;
    right["a"] = Anything(1L);
    right["B"] = Anything(2L);

    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(left, right));
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(right, left));
}

TEST(BasicAlgorithm, MapsWithADifferentValueAreNotEqual)
{
    Map<String, Anything> left;
    left["a"] = Anything(1L);
    left["b"] = Anything(2L);
    Map<String, Anything> right(left);
    right["b"] = Anything(3L);
    Map<String, Anything> otherKind(left);
    otherKind["b"] = Anything(2.0);

    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(left, right));
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(right, left));
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(left, otherKind));
}

TEST(BasicAlgorithm, MapsWithTheSameEntriesAreEqualWhateverTheInsertionOrder)
{
    const CollidingKeys keys = KeysInOneBucket();
    Map<String, Anything> forward;
    forward[keys.first] = Anything("first");
    forward[keys.second] = Anything("second");
    forward["name"] = Anything("n");
    forward["version"] = Anything(static_cast<short>(2));
    Map<String, Anything> backward;
    backward["version"] = Anything(static_cast<short>(2));
    backward["name"] = Anything("n");
    backward[keys.second] = Anything("second");
    backward[keys.first] = Anything("first");
    ASSERT_NE(IterationOrder(forward), IterationOrder(backward));

    EXPECT_TRUE(BasicAlgorithm::IsMapEqual(forward, backward));
    EXPECT_TRUE(BasicAlgorithm::IsMapEqual(backward, forward));
}

TEST(BasicAlgorithm, CopiedMapsAreEqual)
{
    Map<String, Anything> map;
    map["a"] = Anything(1L);
    map["b"] = Anything(MapWithOneEntry(2));
    map["c"] = Anything(VectorWithOneElement(3));
    const Map<String, Anything> copy(map);
    EXPECT_TRUE(BasicAlgorithm::IsMapEqual(map, copy));
}

TEST(BasicAlgorithm, EntriesWithEmptyValuesCompareLikeAnyOther)
{
    Map<String, Anything> implicitEmpty;
    (void)implicitEmpty["a"];
    Map<String, Anything> explicitEmpty;
    explicitEmpty["a"] = Anything();
    Map<String, Anything> filled;
    filled["a"] = Anything(0L);

    EXPECT_TRUE(BasicAlgorithm::IsMapEqual(implicitEmpty, explicitEmpty));
    EXPECT_FALSE(BasicAlgorithm::IsMapEqual(implicitEmpty, filled));
}
