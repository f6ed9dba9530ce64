#include "qvimanager/foundation/containers.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

using TestSupport::FailureText;
using Utilities::String;
using Utilities::Vector;

TEST(Vector, SizeConstructorMakesDefaultElements)
{
    const Vector<float> numbers(3);
    ASSERT_EQ(3UL, numbers.GetSize());
    EXPECT_EQ(0.0f, numbers[0]);
    EXPECT_EQ(0.0f, numbers[2]);
    const Vector<String> texts(2);
    EXPECT_EQ(0UL, texts[1].Length());
}

TEST(Vector, SizeZeroHoldsNothing)
{
    const Vector<float> empty(0);
    EXPECT_EQ(0UL, empty.GetSize());
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)empty[0]; }));
    const Vector<float> defaulted;
    EXPECT_EQ(0UL, defaulted.GetSize());
}

TEST(Vector, IndexAtTheSizeThrows)
{
    Vector<long> values(4);
    const Vector<long>& constant = values;
    EXPECT_EQ("vector index >= vector size", FailureText([&] { values[4] = 1; }));
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)constant[4]; }));
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)constant[static_cast<unsigned long>(-1)]; }));
    EXPECT_NO_THROW(values[3] = 7);
    EXPECT_EQ(7L, constant[3]);
}

TEST(Vector, SetSizeZeroEmptiesIt)
{
    Vector<String> texts(3);
    texts.SetSize(0);
    EXPECT_EQ(0UL, texts.GetSize());
    EXPECT_EQ("vector index >= vector size", FailureText([&] { (void)texts[0]; }));
}

TEST(Vector, ShrinkingKeepsTheFirstElements)
{
    Vector<String> texts(4);
    texts[0] = String("a");
    texts[1] = String("b");
    texts[2] = String("c");
    texts.SetSize(2);
    ASSERT_EQ(2UL, texts.GetSize());
    EXPECT_STREQ("a", texts[0].GetCharPointer());
    EXPECT_STREQ("b", texts[1].GetCharPointer());
}

TEST(Vector, GrowingKeepsElementsAndAddsDefaults)
{
    Vector<long> values(2);
    values[0] = 5;
    values[1] = 6;
    values.SetSize(4);
    ASSERT_EQ(4UL, values.GetSize());
    EXPECT_EQ(5L, values[0]);
    EXPECT_EQ(6L, values[1]);
    EXPECT_EQ(0L, values[2]);
    EXPECT_EQ(0L, values[3]);
}

TEST(Vector, SetSizeToTheSameSizeDoesNothing)
{
    Vector<long> values(2);
    values[1] = 9;
    const long* before = &values[0];
    values.SetSize(2);
    EXPECT_EQ(before, &values[0]);
    EXPECT_EQ(9L, values[1]);
}

TEST(Vector, CopiesAreDeep)
{
    Vector<String> source(2);
    source[0] = String("x");
    Vector<String> copy(source);
    copy[0] = String("y");
    EXPECT_STREQ("x", source[0].GetCharPointer());
    EXPECT_STREQ("y", copy[0].GetCharPointer());

    Vector<String> assigned(5);
    assigned = source;
    EXPECT_EQ(2UL, assigned.GetSize());
    assigned[0] = String("z");
    EXPECT_STREQ("x", source[0].GetCharPointer());
}

TEST(Vector, SelfAssignmentKeepsTheElements)
{
    Vector<String> texts(1);
    texts[0] = String("kept");
    const Vector<String>& self = texts;
    texts = self;
    EXPECT_STREQ("kept", texts[0].GetCharPointer());
}
