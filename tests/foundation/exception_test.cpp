#include "qvimanager/foundation/exception.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using namespace Utilities;

// The tree.
static_assert(std::is_base_of_v<Exception, ExceptionResource>);
static_assert(std::is_base_of_v<Exception, ExceptionBusiness>);
static_assert(std::is_base_of_v<Exception, ExceptionGUI>);
static_assert(std::is_base_of_v<ExceptionGUI, ExceptionGUICreation>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionNullpointer>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionOutOfBound>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionOutOfMemory>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionResourceNotAvailable>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionComponentFactory>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionDllLoader>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionMultithreading>);
static_assert(std::is_base_of_v<ExceptionResource, ExceptionNamingService>);
static_assert(std::is_base_of_v<ExceptionBusiness, ExceptionWrongType>);
static_assert(std::is_base_of_v<ExceptionBusiness, ExceptionCalculationProblem>);
static_assert(!std::is_base_of_v<ExceptionResource, ExceptionBusiness>);
static_assert(!std::is_base_of_v<ExceptionBusiness, ExceptionGUI>);

// Exception itself cannot be made from a text by anyone but a subclass.
static_assert(!std::is_constructible_v<Exception, const String&>);
// Thrown by value: copyable, but never assigned.
static_assert(std::is_copy_constructible_v<ExceptionOutOfBound>);
static_assert(!std::is_copy_assignable_v<Exception>);
static_assert(!std::is_copy_assignable_v<ExceptionOutOfBound>);
// Which constructors each class has.
static_assert(std::is_constructible_v<ExceptionResource, const char* const>);
static_assert(std::is_constructible_v<ExceptionGUICreation, const char* const>);
static_assert(std::is_constructible_v<ExceptionWrongType, const char* const>);
static_assert(std::is_constructible_v<ExceptionComponentFactory, const String&>);
static_assert(std::is_constructible_v<ExceptionCalculationProblem, const String&>);
// No subclass adds a field.
static_assert(sizeof(ExceptionOutOfBound) == sizeof(Exception));
static_assert(sizeof(ExceptionCalculationProblem) == sizeof(Exception));

namespace {

template <typename E, typename Argument>
void ExpectTextAndName(const Argument& text, const char* name)
{
    try {
        throw E(text);
    } catch (const Exception& failure) {
        EXPECT_STREQ("the text", failure.GetExceptionText().GetCharPointer()) << name;
        EXPECT_EQ(std::string(name) + ": the text", failure.GetValueString().c_str());
        EXPECT_NE(nullptr, dynamic_cast<const E*>(&failure)) << name;
    }
}

} // namespace

TEST(Exception, EveryClassCarriesItsTextAndReportsItsRuntimeName)
{
    const String text("the text");
    ExpectTextAndName<ExceptionResource>(text, "Utilities::ExceptionResource");
    ExpectTextAndName<ExceptionBusiness>(text, "Utilities::ExceptionBusiness");
    ExpectTextAndName<ExceptionGUI>(text, "Utilities::ExceptionGUI");
    ExpectTextAndName<ExceptionGUICreation>(text, "Utilities::ExceptionGUICreation");
    ExpectTextAndName<ExceptionNullpointer>(text, "Utilities::ExceptionNullpointer");
    ExpectTextAndName<ExceptionOutOfBound>(text, "Utilities::ExceptionOutOfBound");
    ExpectTextAndName<ExceptionOutOfMemory>(text, "Utilities::ExceptionOutOfMemory");
    ExpectTextAndName<ExceptionResourceNotAvailable>(text, "Utilities::ExceptionResourceNotAvailable");
    ExpectTextAndName<ExceptionComponentFactory>(text, "Utilities::ExceptionComponentFactory");
    ExpectTextAndName<ExceptionDllLoader>(text, "Utilities::ExceptionDllLoader");
    ExpectTextAndName<ExceptionMultithreading>(text, "Utilities::ExceptionMultithreading");
    ExpectTextAndName<ExceptionNamingService>(text, "Utilities::ExceptionNamingService");
    ExpectTextAndName<ExceptionWrongType>(text, "Utilities::ExceptionWrongType");
    ExpectTextAndName<ExceptionCalculationProblem>(text, "Utilities::ExceptionCalculationProblem");
}

TEST(Exception, CharacterPointerConstructors)
{
    const char* const text = "the text";
    ExpectTextAndName<ExceptionResource>(text, "Utilities::ExceptionResource");
    ExpectTextAndName<ExceptionBusiness>(text, "Utilities::ExceptionBusiness");
    ExpectTextAndName<ExceptionGUI>(text, "Utilities::ExceptionGUI");
    ExpectTextAndName<ExceptionGUICreation>(text, "Utilities::ExceptionGUICreation");
    ExpectTextAndName<ExceptionNullpointer>(text, "Utilities::ExceptionNullpointer");
    ExpectTextAndName<ExceptionOutOfBound>(text, "Utilities::ExceptionOutOfBound");
    ExpectTextAndName<ExceptionOutOfMemory>(text, "Utilities::ExceptionOutOfMemory");
    ExpectTextAndName<ExceptionResourceNotAvailable>(text, "Utilities::ExceptionResourceNotAvailable");
    ExpectTextAndName<ExceptionWrongType>(text, "Utilities::ExceptionWrongType");
}

TEST(Exception, CaughtThroughEachBase)
{
    EXPECT_THROW(throw ExceptionOutOfBound("x"), ExceptionResource);
    EXPECT_THROW(throw ExceptionOutOfBound("x"), Exception);
    EXPECT_THROW(throw ExceptionWrongType("x"), ExceptionBusiness);
    EXPECT_THROW(throw ExceptionGUICreation("x"), ExceptionGUI);
    EXPECT_THROW(throw ExceptionCalculationProblem(String("x")), ExceptionBusiness);
}

TEST(Exception, CopyOwnsItsOwnText)
{
    const ExceptionNullpointer original("Failed to access to nullpointer.");
    const ExceptionNullpointer copy(original);
    EXPECT_STREQ("Failed to access to nullpointer.", copy.GetExceptionText().GetCharPointer());
    EXPECT_NE(&original.GetExceptionText(), &copy.GetExceptionText());
    EXPECT_STREQ("Utilities::ExceptionNullpointer: Failed to access to nullpointer.", copy.GetValueString().c_str());
}

TEST(Exception, CopySurvivesTheOriginal)
{
    auto* original = new ExceptionOutOfBound("vector index >= vector size");
    const ExceptionOutOfBound copy(*original);
    delete original;
    EXPECT_STREQ("vector index >= vector size", copy.GetExceptionText().GetCharPointer());
}

TEST(Exception, TextIsReturnedByReference)
{
    const ExceptionBusiness failure("text");
    EXPECT_EQ(&failure.GetExceptionText(), &failure.GetExceptionText());
}

TEST(Exception, CopyThroughTheBaseKeepsTheRuntimeClass)
{
    try {
        try {
            throw ExceptionDllLoader(String("cannot load"));
        } catch (const Exception&) {
            throw;
        }
    } catch (const Exception& failure) {
        EXPECT_STREQ("Utilities::ExceptionDllLoader: cannot load", failure.GetValueString().c_str());
    }
}

TEST(Exception, ValueStringIsCutAt255Characters)
{
    const std::string longText(400, 'x');
    const ExceptionOutOfBound failure{String(longText)};
    const std::string value = failure.GetValueString().c_str();
    EXPECT_EQ(255U, value.size());
    EXPECT_EQ("Utilities::ExceptionOutOfBound: xxx", value.substr(0, 35));
    EXPECT_EQ(400UL, failure.GetExceptionText().Length());
}

TEST(Exception, EmptyText)
{
    const ExceptionGUI failure("");
    EXPECT_STREQ("", failure.GetExceptionText().GetCharPointer());
    EXPECT_STREQ("Utilities::ExceptionGUI: ", failure.GetValueString().c_str());
}
