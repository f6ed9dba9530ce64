#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/diagnostic_vector.h"
#include "qvimanager/diagnostics/exception_diagnostic.h"
#include "qvimanager/diagnostics/memory_manager.h"

#include <gtest/gtest.h>

#include <string>

using Diagnostics::ExceptionDiagnostic;
using Diagnostics::Vector;

namespace {

const char* const kIndexOutOfRange = "Diagnostics::Vector::operator[]: index out of range";

// The text of the ExceptionDiagnostic thrown by v[index], or "no exception".
template <typename T>
std::string IndexFailure(Vector<T>& v, unsigned index)
{
    try {
        static_cast<void>(v[index]);
    } catch (const ExceptionDiagnostic& e) {
        return e.GetExceptionText().c_str();
    }
    return "no exception";
}

template <typename T>
std::string ConstIndexFailure(const Vector<T>& v, unsigned index)
{
    try {
        static_cast<void>(v[index]);
    } catch (const ExceptionDiagnostic& e) {
        return e.GetExceptionText().c_str();
    }
    return "no exception";
}

Vector<int> Numbered(unsigned size)
{
    Vector<int> v(size);
    for (unsigned i = 0; i < size; ++i) {
        v[i] = static_cast<int>(10 * (i + 1));
    }
    return v;
}

} // namespace

// --- Construction -------------------------------------------------------------

TEST(DiagnosticVector, SizeConstructorMakesDefaultElements)
{
    Vector<int> v(3);
    EXPECT_EQ(v.GetSize(), 3U);
    EXPECT_EQ(v[0], 0);
    EXPECT_EQ(v[1], 0);
    EXPECT_EQ(v[2], 0);
}

TEST(DiagnosticVector, SizeConstructorValueInitialisesDoubles)
{
    Vector<double> v(2);
    EXPECT_EQ(v[0], 0.0);
    EXPECT_EQ(v[1], 0.0);
}

TEST(DiagnosticVector, DefaultVectorHasSizeZero)
{
    Vector<int> v;
    EXPECT_EQ(v.GetSize(), 0U);
    EXPECT_EQ(IndexFailure(v, 0), kIndexOutOfRange);
}

TEST(DiagnosticVector, SizeZeroHoldsNoElements)
{
    Vector<int> v(0);
    EXPECT_EQ(v.GetSize(), 0U);
    EXPECT_EQ(IndexFailure(v, 0), kIndexOutOfRange);
}

TEST(DiagnosticVector, ElementsCanBeWrittenAndRead)
{
    Vector<int> v = Numbered(4);
    EXPECT_EQ(v[0], 10);
    EXPECT_EQ(v[1], 20);
    EXPECT_EQ(v[2], 30);
    EXPECT_EQ(v[3], 40);
}

TEST(DiagnosticVector, ConstAccessReadsTheSameElements)
{
    const Vector<int> v = Numbered(2);
    EXPECT_EQ(v[0], 10);
    EXPECT_EQ(v[1], 20);
}

// --- Indexing out of range ------------------------------------------------------

TEST(DiagnosticVector, IndexAtTheSizeThrowsWithTheExactText)
{
    Vector<int> v(3);
    EXPECT_EQ(IndexFailure(v, 3), kIndexOutOfRange);
}

TEST(DiagnosticVector, IndexFarPastTheSizeThrowsWithTheExactText)
{
    Vector<int> v(3);
    EXPECT_EQ(IndexFailure(v, 4000000000U), kIndexOutOfRange);
}

TEST(DiagnosticVector, ConstIndexPastTheSizeThrowsWithTheExactText)
{
    const Vector<int> v(2);
    EXPECT_EQ(ConstIndexFailure(v, 2), kIndexOutOfRange);
}

TEST(DiagnosticVector, IndexPastTheSizeThrowsExceptionDiagnostic)
{
    Vector<int> v(1);
    EXPECT_THROW(static_cast<void>(v[1]), ExceptionDiagnostic);
    EXPECT_NO_THROW(static_cast<void>(v[0]));
}

// --- SetSize ----------------------------------------------------------------------

TEST(DiagnosticVector, GrowingKeepsTheElementsAndAddsDefaultOnes)
{
    Vector<int> v = Numbered(2);
    v.SetSize(4);
    EXPECT_EQ(v.GetSize(), 4U);
    EXPECT_EQ(v[0], 10);
    EXPECT_EQ(v[1], 20);
    EXPECT_EQ(v[2], 0);
    EXPECT_EQ(v[3], 0);
    EXPECT_EQ(IndexFailure(v, 4), kIndexOutOfRange);
}

TEST(DiagnosticVector, ShrinkingKeepsTheFirstElements)
{
    Vector<int> v = Numbered(4);
    v.SetSize(2);
    EXPECT_EQ(v.GetSize(), 2U);
    EXPECT_EQ(v[0], 10);
    EXPECT_EQ(v[1], 20);
    EXPECT_EQ(IndexFailure(v, 2), kIndexOutOfRange);
}

TEST(DiagnosticVector, ShrinkingThenGrowingGivesDefaultElementsBack)
{
    Vector<int> v = Numbered(3);
    v.SetSize(1);
    v.SetSize(3);
    EXPECT_EQ(v[0], 10);
    EXPECT_EQ(v[1], 0);
    EXPECT_EQ(v[2], 0);
}

TEST(DiagnosticVector, SetSizeZeroEmptiesTheVector)
{
    Vector<int> v = Numbered(3);
    v.SetSize(0);
    EXPECT_EQ(v.GetSize(), 0U);
    EXPECT_EQ(IndexFailure(v, 0), kIndexOutOfRange);
}

TEST(DiagnosticVector, GrowingAnEmptyVector)
{
    Vector<int> v;
    v.SetSize(2);
    EXPECT_EQ(v.GetSize(), 2U);
    EXPECT_EQ(v[0], 0);
    EXPECT_EQ(v[1], 0);
    v[1] = 5;
    EXPECT_EQ(v[1], 5);
}

TEST(DiagnosticVector, SetSizeToTheSameSizeDoesNothing)
{
    Vector<int> v = Numbered(3);
    const int* const before = &v[0];
    v.SetSize(3);
    EXPECT_EQ(v.GetSize(), 3U);
    // The same array, not a copy of it.
    EXPECT_EQ(&v[0], before);
    EXPECT_EQ(v[0], 10);
    EXPECT_EQ(v[1], 20);
    EXPECT_EQ(v[2], 30);
}

TEST(DiagnosticVector, SetSizeZeroOnAnEmptyVectorDoesNothing)
{
    Vector<int> v;
    v.SetSize(0);
    EXPECT_EQ(v.GetSize(), 0U);
    EXPECT_EQ(IndexFailure(v, 0), kIndexOutOfRange);
}

// --- Copies ----------------------------------------------------------------------------

TEST(DiagnosticVector, CopyConstructorCopiesTheElements)
{
    const Vector<int> original = Numbered(3);
    const Vector<int> copy(original);
    EXPECT_EQ(copy.GetSize(), 3U);
    EXPECT_EQ(copy[0], 10);
    EXPECT_EQ(copy[1], 20);
    EXPECT_EQ(copy[2], 30);
}

TEST(DiagnosticVector, CopyIsDeep)
{
    Vector<int> original = Numbered(2);
    Vector<int> copy(original);
    EXPECT_NE(&copy[0], &original[0]);
    copy[0] = 99;
    original[1] = 77;
    EXPECT_EQ(original[0], 10);
    EXPECT_EQ(copy[1], 20);
}

TEST(DiagnosticVector, CopyOfAnEmptyVectorIsEmpty)
{
    const Vector<int> original;
    Vector<int> copy(original);
    EXPECT_EQ(copy.GetSize(), 0U);
    EXPECT_EQ(IndexFailure(copy, 0), kIndexOutOfRange);
}

TEST(DiagnosticVector, AssignmentTakesTheSizeAndElements)
{
    const Vector<int> source = Numbered(3);
    Vector<int> target = Numbered(5);
    target = source;
    EXPECT_EQ(target.GetSize(), 3U);
    EXPECT_EQ(target[0], 10);
    EXPECT_EQ(target[1], 20);
    EXPECT_EQ(target[2], 30);
    EXPECT_EQ(IndexFailure(target, 3), kIndexOutOfRange);
}

TEST(DiagnosticVector, AssignmentIsDeep)
{
    Vector<int> source = Numbered(2);
    Vector<int> target;
    target = source;
    target[0] = -1;
    EXPECT_EQ(source[0], 10);
    source[1] = -2;
    EXPECT_EQ(target[1], 20);
}

TEST(DiagnosticVector, AssigningAnEmptyVectorEmptiesTheTarget)
{
    const Vector<int> source;
    Vector<int> target = Numbered(2);
    target = source;
    EXPECT_EQ(target.GetSize(), 0U);
    EXPECT_EQ(IndexFailure(target, 0), kIndexOutOfRange);
}

TEST(DiagnosticVector, SelfAssignmentKeepsTheElements)
{
    Vector<int> v = Numbered(2);
    const int* const before = &v[0];
    Vector<int>& alias = v;
    v = alias;
    EXPECT_EQ(v.GetSize(), 2U);
    EXPECT_EQ(&v[0], before);
    EXPECT_EQ(v[0], 10);
    EXPECT_EQ(v[1], 20);
}

TEST(DiagnosticVector, AssignmentReturnsTheTarget)
{
    const Vector<int> source = Numbered(1);
    Vector<int> target;
    Vector<int>& result = (target = source);
    EXPECT_EQ(&result, &target);
}

// --- Vectors of strings --------------------------------------------------------------------

TEST(DiagnosticVectorOfStrings, ElementsStartEmpty)
{
    Vector<Diagnostics::String> v(3);
    EXPECT_EQ(v.GetSize(), 3U);
    for (unsigned i = 0; i < 3; ++i) {
        EXPECT_TRUE(v[i].IsEmpty()) << "element " << i;
        EXPECT_STREQ(v[i].c_str(), "") << "element " << i;
    }
}

TEST(DiagnosticVectorOfStrings, ElementsHoldTheirTexts)
{
    Vector<Diagnostics::String> v(2);
    v[0] = "first";
    v[1] = Diagnostics::String(2);
    EXPECT_STREQ(v[0].c_str(), "first");
    EXPECT_STREQ(v[1].c_str(), "2");
}

TEST(DiagnosticVectorOfStrings, GrowingKeepsTheTexts)
{
    Vector<Diagnostics::String> v(2);
    v[0] = "a";
    v[1] = "b";
    v.SetSize(22);
    EXPECT_EQ(v.GetSize(), 22U);
    EXPECT_STREQ(v[0].c_str(), "a");
    EXPECT_STREQ(v[1].c_str(), "b");
    EXPECT_TRUE(v[2].IsEmpty());
    EXPECT_TRUE(v[21].IsEmpty());
}

TEST(DiagnosticVectorOfStrings, ShrinkingKeepsTheFirstTexts)
{
    Vector<Diagnostics::String> v(3);
    v[0] = "a";
    v[1] = "b";
    v[2] = "c";
    v.SetSize(1);
    EXPECT_EQ(v.GetSize(), 1U);
    EXPECT_STREQ(v[0].c_str(), "a");
    EXPECT_EQ(IndexFailure(v, 1), kIndexOutOfRange);
}

TEST(DiagnosticVectorOfStrings, CopiedVectorHasItsOwnStrings)
{
    Vector<Diagnostics::String> original(2);
    original[0] = "keep";
    original[1] = "me";
    Vector<Diagnostics::String> copy(original);
    copy[0] += " changed";
    copy[1] = "other";
    EXPECT_STREQ(original[0].c_str(), "keep");
    EXPECT_STREQ(original[1].c_str(), "me");
    EXPECT_STREQ(copy[0].c_str(), "keep changed");
    EXPECT_STREQ(copy[1].c_str(), "other");
}

TEST(DiagnosticVectorOfStrings, ElementsCompareByText)
{
    Vector<Diagnostics::String> v(2);
    v[0] = "name";
    v[1] = "Name";
    EXPECT_TRUE(v[0] == Diagnostics::String("name"));
    EXPECT_FALSE(v[1] == Diagnostics::String("name"));
}

TEST(DiagnosticVectorOfStrings, DroppedStringsGiveTheirBlocksBack)
{
    Diagnostics::MemoryManager& pool = Diagnostics::DiagnosticKit::Instance().Memory();
    Diagnostics::MemoryBlock<char>* block = pool.Allocate(char(), 1U);
    ASSERT_TRUE(block->IsFree());
    {
        Vector<Diagnostics::String> v(1);
        v[0] = "held";
        ASSERT_EQ(v[0].c_str(), static_cast<const char*>(*block));
        EXPECT_FALSE(block->IsFree());
        v.SetSize(0);
        EXPECT_TRUE(block->IsFree());
    }
    EXPECT_TRUE(block->IsFree());
}
