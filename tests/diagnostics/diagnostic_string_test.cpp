#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/exception_diagnostic.h"
#include "qvimanager/diagnostics/memory_manager.h"
#include "qvimanager/foundation/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using Diagnostics::DiagnosticKit;
using Diagnostics::ExceptionDiagnostic;
using Diagnostics::MemoryBlock;

namespace {

const char* const kIndexOutOfRange = "Diagnostics::String::operator[]: index out of range";

// A text of `count` characters that differ from their neighbours, so that a
// shifted or dropped character shows.
std::string Pattern(unsigned count, char base = 'a')
{
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += static_cast<char>(base + i % 26);
    }
    return text;
}

// The text of the ExceptionDiagnostic thrown by s[index], or "no exception".
std::string IndexFailure(const Diagnostics::String& s, unsigned index)
{
    try {
        static_cast<void>(s[index]);
    } catch (const ExceptionDiagnostic& e) {
        return e.GetExceptionText().c_str();
    }
    return "no exception";
}

// The block the next new string will take from the kit's pool.
MemoryBlock<char>* NextBlock()
{
    return DiagnosticKit::Instance().Memory().Allocate(char(), 1U);
}

} // namespace

// --- Numbers ----------------------------------------------------------------

TEST(DiagnosticString, IntIsRenderedInDecimal)
{
    EXPECT_STREQ(Diagnostics::String(0).c_str(), "0");
    EXPECT_STREQ(Diagnostics::String(42).c_str(), "42");
    EXPECT_STREQ(Diagnostics::String(-5).c_str(), "-5");
}

TEST(DiagnosticString, IntExtremesAreRenderedWhole)
{
    EXPECT_STREQ(Diagnostics::String(2147483647).c_str(), "2147483647");
    EXPECT_STREQ(Diagnostics::String(-2147483647 - 1).c_str(), "-2147483648");
}

TEST(DiagnosticString, LongWithin32BitsIsRenderedInDecimal)
{
    EXPECT_STREQ(Diagnostics::String(-5L).c_str(), "-5");
    EXPECT_STREQ(Diagnostics::String(2147483647L).c_str(), "2147483647");
    EXPECT_STREQ(Diagnostics::String(-2147483648L).c_str(), "-2147483648");
}

TEST(DiagnosticString, LongBeyond32BitsIsRenderedAsItsLow32BitsSigned)
{
    EXPECT_STREQ(Diagnostics::String(2147483648L).c_str(), "-2147483648");
    EXPECT_STREQ(Diagnostics::String(4294967295L).c_str(), "-1");
    EXPECT_STREQ(Diagnostics::String(4294967297L).c_str(), "1");
    EXPECT_STREQ(Diagnostics::String(-4294967297L).c_str(), "-1");
    EXPECT_STREQ(Diagnostics::String(-2147483649L).c_str(), "2147483647");
}

TEST(DiagnosticString, ShortIsRenderedInDecimal)
{
    EXPECT_STREQ(Diagnostics::String(static_cast<short>(-32768)).c_str(), "-32768");
    EXPECT_STREQ(Diagnostics::String(static_cast<short>(32767)).c_str(), "32767");
    EXPECT_STREQ(Diagnostics::String(static_cast<short>(-7)).c_str(), "-7");
}

TEST(DiagnosticString, UnsignedIntIsRenderedWithoutSign)
{
    EXPECT_STREQ(Diagnostics::String(0U).c_str(), "0");
    EXPECT_STREQ(Diagnostics::String(4294967295U).c_str(), "4294967295");
    EXPECT_STREQ(Diagnostics::String(2147483648U).c_str(), "2147483648");
}

TEST(DiagnosticString, UnsignedLongWithin32BitsIsRenderedWithoutSign)
{
    EXPECT_STREQ(Diagnostics::String(7UL).c_str(), "7");
    EXPECT_STREQ(Diagnostics::String(4294967295UL).c_str(), "4294967295");
}

TEST(DiagnosticString, UnsignedLongBeyond32BitsIsRenderedAsItsLow32Bits)
{
    EXPECT_STREQ(Diagnostics::String(4294967296UL).c_str(), "0");
    EXPECT_STREQ(Diagnostics::String(4294967297UL).c_str(), "1");
    EXPECT_STREQ(Diagnostics::String(18446744073709551615UL).c_str(), "4294967295");
}

TEST(DiagnosticString, UnsignedShortIsRenderedWithoutSign)
{
    EXPECT_STREQ(Diagnostics::String(static_cast<unsigned short>(65535)).c_str(), "65535");
    EXPECT_STREQ(Diagnostics::String(static_cast<unsigned short>(0)).c_str(), "0");
}

TEST(DiagnosticString, DoubleIsRenderedWith15SignificantDigits)
{
    EXPECT_STREQ(Diagnostics::String(0.1).c_str(), "0.1");
    EXPECT_STREQ(Diagnostics::String(1.0 / 3.0).c_str(), "0.333333333333333");
    EXPECT_STREQ(Diagnostics::String(2.0 / 3.0).c_str(), "0.666666666666667");
    EXPECT_STREQ(Diagnostics::String(-2.5).c_str(), "-2.5");
    EXPECT_STREQ(Diagnostics::String(100.0).c_str(), "100");
    EXPECT_STREQ(Diagnostics::String(0.0).c_str(), "0");
}

TEST(DiagnosticString, LargeAndSmallDoublesUseTheExponentForm)
{
    EXPECT_STREQ(Diagnostics::String(1e20).c_str(), "1e+20");
    EXPECT_STREQ(Diagnostics::String(123456789012345678.0).c_str(), "1.23456789012346e+17");
    EXPECT_STREQ(Diagnostics::String(1e-5).c_str(), "1e-05");
    EXPECT_STREQ(Diagnostics::String(1e15).c_str(), "1e+15");
    EXPECT_STREQ(Diagnostics::String(1e14).c_str(), "100000000000000");
}

TEST(DiagnosticString, FloatIsRenderedFromItsExactValueWith15Digits)
{
    EXPECT_STREQ(Diagnostics::String(0.1f).c_str(), "0.100000001490116");
    EXPECT_STREQ(Diagnostics::String(0.5f).c_str(), "0.5");
    EXPECT_STREQ(Diagnostics::String(-1.25f).c_str(), "-1.25");
}

TEST(DiagnosticString, BoolIsRenderedAsAWord)
{
    EXPECT_STREQ(Diagnostics::String(true).c_str(), "true");
    EXPECT_STREQ(Diagnostics::String(false).c_str(), "false");
}

// --- Empty strings -----------------------------------------------------------

TEST(DiagnosticString, DefaultStringIsEmpty)
{
    const Diagnostics::String s;
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_FALSE(s.HasText());
    EXPECT_STREQ(s.c_str(), "");
}

TEST(DiagnosticString, NullTextGivesAnEmptyString)
{
    const Diagnostics::String s(static_cast<const char*>(nullptr));
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_FALSE(s.HasText());
    ASSERT_NE(s.c_str(), nullptr);
    EXPECT_STREQ(s.c_str(), "");
}

TEST(DiagnosticString, EmptyTextGivesAnEmptyString)
{
    const Diagnostics::String s("");
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_FALSE(s.HasText());
    EXPECT_STREQ(s.c_str(), "");
}

TEST(DiagnosticString, EmptyStringTakesNoBlock)
{
    MemoryBlock<char>* next = NextBlock();
    const Diagnostics::String empty("");
    const Diagnostics::String null(static_cast<const char*>(nullptr));
    EXPECT_TRUE(next->IsFree());
    EXPECT_EQ(NextBlock(), next);
    // The next string with text takes the block that was free before.
    const Diagnostics::String text("x");
    EXPECT_EQ(text.c_str(), static_cast<const char*>(*next));
}

TEST(DiagnosticString, TextIsNotEmpty)
{
    const Diagnostics::String s("a");
    EXPECT_FALSE(s.IsEmpty());
    EXPECT_TRUE(s.HasText());
    EXPECT_STREQ(s.c_str(), "a");
}

TEST(DiagnosticString, IndexingAnEmptyStringThrows)
{
    const Diagnostics::String s;
    EXPECT_EQ(IndexFailure(s, 0), kIndexOutOfRange);
}

// --- Indexing ----------------------------------------------------------------

TEST(DiagnosticString, IndexReadsTheCharacters)
{
    const Diagnostics::String s("abc");
    EXPECT_EQ(s[0], 'a');
    EXPECT_EQ(s[1], 'b');
    EXPECT_EQ(s[2], 'c');
}

TEST(DiagnosticString, IndexAtTheLengthThrowsWithTheExactText)
{
    const Diagnostics::String s("abc");
    EXPECT_EQ(IndexFailure(s, 3), kIndexOutOfRange);
    EXPECT_EQ(IndexFailure(s, 4000000000U), kIndexOutOfRange);
}

TEST(DiagnosticString, IndexPastTheLengthThrowsExceptionDiagnostic)
{
    const Diagnostics::String s("abc");
    EXPECT_THROW(static_cast<void>(s[3]), ExceptionDiagnostic);
}

// --- Cutting at 255 characters --------------------------------------------------

TEST(DiagnosticString, TextOf300CharactersIsCutTo255)
{
    const std::string text = Pattern(300);
    const Diagnostics::String s(text.c_str());
    EXPECT_EQ(std::strlen(s.c_str()), 255U);
    EXPECT_EQ(std::string(s.c_str()), text.substr(0, 255));
    EXPECT_EQ(s[254], text[254]);
    // A cut string reports the block's size as its length: index 255 reads
    // the terminator, 256 is out of range.
    EXPECT_EQ(s[255], '\0');
    EXPECT_EQ(IndexFailure(s, 256), kIndexOutOfRange);
    EXPECT_TRUE(s.HasText());
}

TEST(DiagnosticString, TextOfExactly255CharactersIsKeptWhole)
{
    const std::string text = Pattern(255);
    const Diagnostics::String s(text.c_str());
    EXPECT_EQ(std::strlen(s.c_str()), 255U);
    EXPECT_STREQ(s.c_str(), text.c_str());
    EXPECT_EQ(s[254], text[254]);
    EXPECT_EQ(IndexFailure(s, 255), kIndexOutOfRange);
}

TEST(DiagnosticString, TextOf256CharactersIsCutTo255)
{
    const std::string text = Pattern(256);
    const Diagnostics::String s(text.c_str());
    EXPECT_EQ(std::strlen(s.c_str()), 255U);
    EXPECT_EQ(std::string(s.c_str()), text.substr(0, 255));
    EXPECT_EQ(s[255], '\0');
    EXPECT_EQ(IndexFailure(s, 256), kIndexOutOfRange);
}

TEST(DiagnosticString, CutStringEqualsThe255CharacterText)
{
    const std::string text = Pattern(300);
    const Diagnostics::String cut(text.c_str());
    const Diagnostics::String whole(text.substr(0, 255).c_str());
    EXPECT_TRUE(cut == whole);
}

// --- Sharing and copy-on-write ------------------------------------------------------

TEST(DiagnosticString, CopiesShareTheBlock)
{
    const Diagnostics::String original("shared");
    const Diagnostics::String copy(original);
    EXPECT_EQ(copy.c_str(), original.c_str());
    EXPECT_STREQ(copy.c_str(), "shared");
}

TEST(DiagnosticString, AssignmentSharesTheBlock)
{
    const Diagnostics::String original("shared");
    Diagnostics::String other("other");
    other = original;
    EXPECT_EQ(other.c_str(), original.c_str());
    EXPECT_STREQ(other.c_str(), "shared");
    EXPECT_STREQ(original.c_str(), "shared");
}

TEST(DiagnosticString, CopiesCountReferencesOnTheBlock)
{
    MemoryBlock<char>* block = NextBlock();
    const Diagnostics::String original("counted");
    ASSERT_EQ(original.c_str(), static_cast<const char*>(*block));
    EXPECT_EQ(block->GetReferenceCount(), 1U);
    {
        const Diagnostics::String copy(original);
        EXPECT_EQ(block->GetReferenceCount(), 2U);
        Diagnostics::String assigned;
        assigned = copy;
        EXPECT_EQ(block->GetReferenceCount(), 3U);
    }
    EXPECT_EQ(block->GetReferenceCount(), 1U);
    EXPECT_STREQ(original.c_str(), "counted");
}

TEST(DiagnosticString, DestroyingTheLastHolderFreesTheBlock)
{
    MemoryBlock<char>* block = NextBlock();
    {
        const Diagnostics::String s("short-lived");
        ASSERT_EQ(s.c_str(), static_cast<const char*>(*block));
        EXPECT_FALSE(block->IsFree());
    }
    EXPECT_TRUE(block->IsFree());
    EXPECT_TRUE(block->IsUsed());
}

TEST(DiagnosticString, AssignmentReleasesTheOldBlock)
{
    MemoryBlock<char>* oldBlock = NextBlock();
    Diagnostics::String target("old");
    ASSERT_EQ(target.c_str(), static_cast<const char*>(*oldBlock));
    const Diagnostics::String source("new");
    target = source;
    EXPECT_TRUE(oldBlock->IsFree());
    EXPECT_STREQ(target.c_str(), "new");
}

TEST(DiagnosticString, AssigningAnEmptyStringReleasesTheBlock)
{
    MemoryBlock<char>* block = NextBlock();
    Diagnostics::String target("text");
    ASSERT_EQ(target.c_str(), static_cast<const char*>(*block));
    target = Diagnostics::String();
    EXPECT_TRUE(block->IsFree());
    EXPECT_TRUE(target.IsEmpty());
    EXPECT_STREQ(target.c_str(), "");
}

TEST(DiagnosticString, SelfAssignmentKeepsTheTextAndTheCount)
{
    MemoryBlock<char>* block = NextBlock();
    {
        Diagnostics::String s("self");
        ASSERT_EQ(s.c_str(), static_cast<const char*>(*block));
        Diagnostics::String& alias = s;
        s = alias;
        EXPECT_STREQ(s.c_str(), "self");
        EXPECT_TRUE(s.HasText());
        EXPECT_EQ(s.c_str(), static_cast<const char*>(*block));
        EXPECT_EQ(block->GetReferenceCount(), 1U);
    }
    // The one holder is gone, so the block is free again.
    EXPECT_TRUE(block->IsFree());
    // Leave the pool as it was for whatever runs next in this process.
    while (!block->IsFree()) {
        block->RemoveReference();
    }
}

TEST(DiagnosticString, AppendingToACopyLeavesTheOriginalUnchanged)
{
    const Diagnostics::String original("abc");
    Diagnostics::String copy(original);
    copy += "def";
    EXPECT_STREQ(copy.c_str(), "abcdef");
    EXPECT_STREQ(original.c_str(), "abc");
    EXPECT_NE(copy.c_str(), original.c_str());
}

TEST(DiagnosticString, AppendingAStringToACopyLeavesTheOriginalUnchanged)
{
    const Diagnostics::String original("abc");
    Diagnostics::String copy(original);
    copy += Diagnostics::String("xyz");
    EXPECT_STREQ(copy.c_str(), "abcxyz");
    EXPECT_STREQ(original.c_str(), "abc");
    EXPECT_NE(copy.c_str(), original.c_str());
}

TEST(DiagnosticString, ChangedCopyGivesBackItsReferenceToTheSharedBlock)
{
    MemoryBlock<char>* block = NextBlock();
    const Diagnostics::String original("abc");
    ASSERT_EQ(original.c_str(), static_cast<const char*>(*block));
    Diagnostics::String copy(original);
    ASSERT_EQ(block->GetReferenceCount(), 2U);
    copy += "!";
    EXPECT_EQ(block->GetReferenceCount(), 1U);
}

TEST(DiagnosticString, AppendingToAnUnsharedStringKeepsItsBlock)
{
    Diagnostics::String s("abc");
    const char* const before = s.c_str();
    s += "def";
    EXPECT_EQ(s.c_str(), before);
    EXPECT_STREQ(s.c_str(), "abcdef");
}

// --- Appending ----------------------------------------------------------------

TEST(DiagnosticString, AppendText)
{
    Diagnostics::String s("Hello");
    s += ", ";
    s += "world";
    EXPECT_STREQ(s.c_str(), "Hello, world");
    EXPECT_EQ(s[11], 'd');
    EXPECT_EQ(IndexFailure(s, 12), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendString)
{
    Diagnostics::String s("count: ");
    s += Diagnostics::String(12);
    EXPECT_STREQ(s.c_str(), "count: 12");
    EXPECT_EQ(s[8], '2');
    EXPECT_EQ(IndexFailure(s, 9), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendReturnsTheString)
{
    Diagnostics::String s("a");
    Diagnostics::String& result = (s += "b");
    EXPECT_EQ(&result, &s);
    Diagnostics::String& again = (s += Diagnostics::String("c"));
    EXPECT_EQ(&again, &s);
    EXPECT_STREQ(s.c_str(), "abc");
}

TEST(DiagnosticString, AppendingNothingChangesNothing)
{
    Diagnostics::String s("abc");
    s += "";
    s += static_cast<const char*>(nullptr);
    s += Diagnostics::String();
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(s[2], 'c');
    EXPECT_EQ(IndexFailure(s, 3), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingTextToAnEmptyString)
{
    Diagnostics::String s;
    s += "abc";
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_TRUE(s.HasText());
    EXPECT_EQ(s[2], 'c');
    EXPECT_EQ(IndexFailure(s, 3), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingAStringToAnEmptyString)
{
    Diagnostics::String s;
    const Diagnostics::String text("abc");
    s += text;
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_TRUE(s.HasText());
    EXPECT_EQ(IndexFailure(s, 3), kIndexOutOfRange);
    // Changing the result leaves the appended string alone.
    s += "d";
    EXPECT_STREQ(s.c_str(), "abcd");
    EXPECT_STREQ(text.c_str(), "abc");
}

TEST(DiagnosticString, AppendingAnEmptyStringToAnEmptyStringStaysEmpty)
{
    Diagnostics::String s;
    s += Diagnostics::String();
    s += "";
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_STREQ(s.c_str(), "");
}

TEST(DiagnosticString, AppendingAStringToItself)
{
    Diagnostics::String s("abc");
    s += s;
    EXPECT_STREQ(s.c_str(), "abcabc");
    EXPECT_EQ(s[5], 'c');
    EXPECT_EQ(IndexFailure(s, 6), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingASharedStringToItselfLeavesTheOtherHolder)
{
    Diagnostics::String s("ab");
    const Diagnostics::String other(s);
    s += s;
    EXPECT_STREQ(s.c_str(), "abab");
    EXPECT_STREQ(other.c_str(), "ab");
}

TEST(DiagnosticString, AppendingItsOwnTextToItself)
{
    Diagnostics::String s("xyz");
    s += s.c_str();
    EXPECT_STREQ(s.c_str(), "xyzxyz");
    EXPECT_EQ(IndexFailure(s, 6), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingALongStringToItselfCutsAt255)
{
    const std::string text = Pattern(200);
    Diagnostics::String s(text.c_str());
    s += s;
    const std::string expected = (text + text).substr(0, 255);
    EXPECT_EQ(std::string(s.c_str()), expected);
    EXPECT_EQ(s[255], '\0');
}

TEST(DiagnosticString, AppendingPast255CharactersCuts)
{
    const std::string head = Pattern(200, 'a');
    const std::string tail = Pattern(100, 'A');
    Diagnostics::String s(head.c_str());
    s += tail.c_str();
    EXPECT_EQ(std::strlen(s.c_str()), 255U);
    EXPECT_EQ(std::string(s.c_str()), head + tail.substr(0, 55));
    EXPECT_EQ(s[254], tail[54]);
    EXPECT_EQ(s[255], '\0');
    EXPECT_EQ(IndexFailure(s, 256), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingAStringPast255CharactersCuts)
{
    const std::string head = Pattern(200, 'a');
    const std::string tail = Pattern(100, 'A');
    Diagnostics::String s(head.c_str());
    s += Diagnostics::String(tail.c_str());
    EXPECT_EQ(std::string(s.c_str()), head + tail.substr(0, 55));
    EXPECT_EQ(s[255], '\0');
    EXPECT_EQ(IndexFailure(s, 256), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingUpToExactly255CharactersKeepsEverything)
{
    const std::string head = Pattern(200, 'a');
    const std::string tail = Pattern(55, 'A');
    Diagnostics::String s(head.c_str());
    s += tail.c_str();
    EXPECT_EQ(std::string(s.c_str()), head + tail);
    EXPECT_EQ(IndexFailure(s, 255), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingToACutStringKeepsItsText)
{
    const std::string text = Pattern(300);
    Diagnostics::String s(text.c_str());
    s += "more";
    s += Diagnostics::String("more");
    EXPECT_EQ(std::string(s.c_str()), text.substr(0, 255));
    EXPECT_EQ(s[255], '\0');
    EXPECT_EQ(IndexFailure(s, 256), kIndexOutOfRange);
}

TEST(DiagnosticString, AppendingACutStringAppends255Characters)
{
    const std::string text = Pattern(300, 'A');
    const Diagnostics::String cut(text.c_str());
    Diagnostics::String s("x");
    s += cut;
    EXPECT_EQ(std::string(s.c_str()), "x" + text.substr(0, 254));
}

TEST(DiagnosticString, PlusJoinsAndLeavesBothOperands)
{
    const Diagnostics::String left("left");
    const Diagnostics::String right("right");
    const Diagnostics::String joined = left + right;
    EXPECT_STREQ(joined.c_str(), "leftright");
    EXPECT_STREQ(left.c_str(), "left");
    EXPECT_STREQ(right.c_str(), "right");
    EXPECT_EQ(IndexFailure(joined, 9), kIndexOutOfRange);
}

TEST(DiagnosticString, PlusWithEmptyOperands)
{
    const Diagnostics::String empty;
    const Diagnostics::String text("t");
    EXPECT_STREQ((empty + text).c_str(), "t");
    EXPECT_STREQ((text + empty).c_str(), "t");
    EXPECT_TRUE((empty + empty).IsEmpty());
}

TEST(DiagnosticString, PlusWithATextOperand)
{
    const Diagnostics::String left("n=");
    EXPECT_STREQ((left + "3").c_str(), "n=3");
    EXPECT_STREQ((left + Diagnostics::String(3)).c_str(), "n=3");
}

// --- Comparison ----------------------------------------------------------------

TEST(DiagnosticString, EqualTextsInDifferentBlocksAreEqual)
{
    const Diagnostics::String a("same");
    const Diagnostics::String b("same");
    ASSERT_NE(a.c_str(), b.c_str());
    EXPECT_TRUE(a == b);
}

TEST(DiagnosticString, DifferentTextsAreNotEqual)
{
    EXPECT_FALSE(Diagnostics::String("abc") == Diagnostics::String("abd"));
    EXPECT_FALSE(Diagnostics::String("abc") == Diagnostics::String("abcd"));
    EXPECT_FALSE(Diagnostics::String("abcd") == Diagnostics::String("abc"));
    EXPECT_FALSE(Diagnostics::String("abc") == Diagnostics::String("ABC"));
    EXPECT_FALSE(Diagnostics::String("a") == Diagnostics::String());
}

TEST(DiagnosticString, EmptyStringsAreEqual)
{
    EXPECT_TRUE(Diagnostics::String() == Diagnostics::String(""));
    EXPECT_TRUE(Diagnostics::String(static_cast<const char*>(nullptr)) == Diagnostics::String());
}

TEST(DiagnosticString, CopyEqualsTheOriginal)
{
    const Diagnostics::String a("copy");
    const Diagnostics::String b(a);
    EXPECT_TRUE(a == b);
    EXPECT_TRUE(a == Diagnostics::String("copy"));
}

TEST(DiagnosticString, NumberEqualsItsText)
{
    EXPECT_TRUE(Diagnostics::String(-12) == Diagnostics::String("-12"));
    EXPECT_FALSE(Diagnostics::String(12) == Diagnostics::String("12.0"));
}

// --- Value strings -----------------------------------------------------------------

TEST(DiagnosticString, GetValueStringGivesTheSameText)
{
    const Diagnostics::String s("value");
    const Diagnostics::String value = s.GetValueString();
    EXPECT_STREQ(value.c_str(), "value");
    EXPECT_TRUE(value == s);
}

TEST(DiagnosticString, GetValueStringOfAnEmptyStringIsEmpty)
{
    const Diagnostics::String s;
    EXPECT_TRUE(s.GetValueString().IsEmpty());
    EXPECT_STREQ(s.GetValueString().c_str(), "");
}

TEST(DiagnosticString, GetValueStringIsNotChangedByTheOriginal)
{
    Diagnostics::String s("value");
    const Diagnostics::String value = s.GetValueString();
    s += "!";
    EXPECT_STREQ(value.c_str(), "value");
    EXPECT_STREQ(s.c_str(), "value!");
}

TEST(FoundationStringValueString, GivesADiagnosticsStringWithTheSameText)
{
    const Utilities::String text("a foundation text");
    const Diagnostics::String value = text.GetValueString();
    EXPECT_STREQ(value.c_str(), "a foundation text");
    EXPECT_STREQ(text.GetCharPointer(), "a foundation text");
}

TEST(FoundationStringValueString, EmptyTextGivesAnEmptyDiagnosticsString)
{
    const Utilities::String text;
    const Diagnostics::String value = text.GetValueString();
    EXPECT_TRUE(value.IsEmpty());
    EXPECT_STREQ(value.c_str(), "");
}

TEST(FoundationStringValueString, TextOf300CharactersIsCutAt255)
{
    const std::string long_text = Pattern(300);
    const Utilities::String text(long_text.c_str());
    const Diagnostics::String value = text.GetValueString();
    EXPECT_EQ(std::strlen(value.c_str()), 255U);
    EXPECT_EQ(std::string(value.c_str()), long_text.substr(0, 255));
    EXPECT_EQ(value[255], '\0');
}

// --- Exceptions -----------------------------------------------------------------------

TEST(ExceptionDiagnostic, GetExceptionTextGivesTheText)
{
    const ExceptionDiagnostic e(Diagnostics::String("it failed"));
    EXPECT_STREQ(e.GetExceptionText().c_str(), "it failed");
}

TEST(ExceptionDiagnostic, GetExceptionTextGivesACopy)
{
    const ExceptionDiagnostic e(Diagnostics::String("it failed"));
    Diagnostics::String text = e.GetExceptionText();
    text += " badly";
    EXPECT_STREQ(text.c_str(), "it failed badly");
    EXPECT_STREQ(e.GetExceptionText().c_str(), "it failed");
}

TEST(ExceptionDiagnostic, KeepsItsTextWhenTheSourceChanges)
{
    Diagnostics::String source("original");
    const ExceptionDiagnostic e(source);
    source += " changed";
    EXPECT_STREQ(e.GetExceptionText().c_str(), "original");
}

TEST(ExceptionDiagnostic, EmptyText)
{
    const ExceptionDiagnostic e{Diagnostics::String()};
    EXPECT_TRUE(e.GetExceptionText().IsEmpty());
    EXPECT_STREQ(e.GetExceptionText().c_str(), "");
}

TEST(ExceptionDiagnostic, CopiedExceptionKeepsTheText)
{
    try {
        throw ExceptionDiagnostic(Diagnostics::String("thrown"));
    } catch (const ExceptionDiagnostic& e) {
        const ExceptionDiagnostic copy(e);
        EXPECT_STREQ(copy.GetExceptionText().c_str(), "thrown");
        EXPECT_STREQ(e.GetExceptionText().c_str(), "thrown");
    }
}

// --- A full pool --------------------------------------------------------------------------

TEST(DiagnosticStringExhaustion, With128LiveStringsANewOneOverwritesTheLastTakenBlock)
{
    std::vector<Diagnostics::String> live;
    live.reserve(128);
    for (int i = 0; i < 128; ++i) {
        ASSERT_TRUE(NextBlock()->IsFree()) << "the kit's pool was full before string " << i;
        // Built outside the pool: a number string would take a block of its
        // own while the last text is made.
        live.emplace_back(("s" + std::to_string(i)).c_str());
    }
    // All 128 blocks are held: each string has its own.
    for (int i = 0; i < 128; ++i) {
        for (int j = i + 1; j < 128; ++j) {
            ASSERT_NE(live[i].c_str(), live[j].c_str()) << i << " and " << j;
        }
    }
    ASSERT_FALSE(NextBlock()->IsFree());

    const Diagnostics::String extra("new!");
    EXPECT_STREQ(extra.c_str(), "new!");
    // It shares the block at the cursor, the one taken last, and overwrites
    // that string's text; every other string keeps its own.
    EXPECT_EQ(extra.c_str(), live[127].c_str());
    EXPECT_STREQ(live[127].c_str(), "new!");
    for (int i = 0; i < 127; ++i) {
        EXPECT_STREQ(live[i].c_str(), ("s" + std::to_string(i)).c_str());
    }
}

TEST(DiagnosticStringExhaustion, SharingABlockCountsBothHolders)
{
    std::vector<Diagnostics::String> live;
    live.reserve(128);
    for (int i = 0; i < 128; ++i) {
        live.emplace_back("x");
    }
    MemoryBlock<char>* cursorBlock = NextBlock();
    ASSERT_EQ(static_cast<const char*>(*cursorBlock), live[127].c_str());
    {
        const Diagnostics::String extra("y");
        EXPECT_EQ(cursorBlock->GetReferenceCount(), 2U);
    }
    // The live string still holds the block.
    EXPECT_EQ(cursorBlock->GetReferenceCount(), 1U);
    EXPECT_FALSE(cursorBlock->IsFree());
}

TEST(DiagnosticStringExhaustion, ChangingASharedStringWithThePoolFullDoesNotCrash)
{
    std::vector<Diagnostics::String> live;
    live.reserve(128);
    for (int i = 0; i < 128; ++i) {
        live.emplace_back("x");
    }
    // live[3] shares its block with a copy; changing the copy needs a block
    // of its own, which a full pool cannot give: it gets the block at the
    // cursor, which live[127] holds.
    Diagnostics::String copy(live[3]);
    copy += "yz";
    EXPECT_STREQ(copy.c_str(), "xyz");
    EXPECT_STREQ(live[3].c_str(), "x");
    EXPECT_EQ(copy.c_str(), live[127].c_str());
}

TEST(DiagnosticStringExhaustion, PoolIsUsableAgainWhenStringsDie)
{
    {
        std::vector<Diagnostics::String> live;
        live.reserve(128);
        for (int i = 0; i < 128; ++i) {
            live.emplace_back("x");
        }
        ASSERT_FALSE(NextBlock()->IsFree());
    }
    MemoryBlock<char>* next = NextBlock();
    EXPECT_TRUE(next->IsFree());
    const Diagnostics::String a("a");
    const Diagnostics::String b("b");
    EXPECT_NE(a.c_str(), b.c_str());
    EXPECT_STREQ(a.c_str(), "a");
    EXPECT_STREQ(b.c_str(), "b");
}
