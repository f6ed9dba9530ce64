// Descriptor queries: NamingServiceIterator with its filter rules, forwards
// and backwards, and GetFilteredSortedDescriptorsList with its sort kinds
// and failure texts, on the descriptors of the test plug-ins.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/foundation/exception.h"
#include "tests/components/load_test_plugin.h"
#include "tests/plugins/plugin_probe.h"
#include "tests/support/failure_text.h"
#include "tests/support/library_components.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using TestPlugins::DescriptorValues;
using TestSupport::FailureText;
using Utilities::Anything;
using Utilities::ExceptionNamingService;
using Utilities::ExceptionOutOfBound;
using Utilities::List;
using Utilities::Map;
using Utilities::NamingService;
using Utilities::NamingServiceIterator;
using Utilities::String;

using Descriptors = List<Map<String, Anything>>;

// Registers, in this order, behind the library's own components: SortAlpha, SortBeta, SortGamma, SortDelta,
// LooksNumeric, Unranked (descriptor_kinds), PluginLamp, PluginClock
// (two_components).
NamingService* Service()
{
    TestPlugins::LoadTestPlugin("descriptor_kinds");
    TestPlugins::LoadTestPlugin("two_components");
    return NamingService::Instance();
}

std::string NameOf(NamingServiceIterator& iterator)
{
    return iterator.Current()[String("name")].GetString().GetCharPointer();
}

// The names that the iterator stands on, walking forwards from where it is.
std::vector<std::string> WalkForwards(NamingServiceIterator iterator)
{
    std::vector<std::string> names;
    for (; iterator.IsValid(); iterator++) {
        names.push_back(NameOf(iterator));
    }
    return names;
}

std::vector<std::string> Names(const Descriptors& descriptors)
{
    return DescriptorValues(descriptors, "name");
}

const std::vector<std::string> kAll = TestSupport::LibraryComponentsAnd(
    {"SortAlpha", "SortBeta", "SortGamma", "SortDelta", "LooksNumeric", "Unranked", "PluginLamp", "PluginClock"});
const std::vector<std::string> kTestSort = {"SortAlpha", "SortBeta", "SortGamma", "SortDelta"};

// ---------------------------------------------------------------- the iterator

TEST(NamingServiceIterator, DefaultIsInvalid)
{
    NamingServiceIterator iterator;
    EXPECT_FALSE(iterator.IsValid());
    EXPECT_STREQ("NamingServiceIterator", iterator.GetValueString().c_str());
}

TEST(NamingServiceIterator, EmptyKeyWalksEveryDescriptor)
{
    EXPECT_EQ(kAll, WalkForwards(Service()->GetNamingServiceIterator(String(), Anything())));
    // The value does not count without a key.
    EXPECT_EQ(kAll, WalkForwards(Service()->GetNamingServiceIterator(String(), Anything("TestSort"))));
}

TEST(NamingServiceIterator, KeyWithEmptyValueFindsEveryDescriptorThatHasTheKey)
{
    EXPECT_EQ((std::vector<std::string>{"SortAlpha", "SortBeta", "SortGamma", "LooksNumeric"}),
              WalkForwards(Service()->GetNamingServiceIterator(String("tier"), Anything())));
}

TEST(NamingServiceIterator, KeyAndValueFindExactlyThatCategory)
{
    EXPECT_EQ(kTestSort, WalkForwards(Service()->GetNamingServiceIterator(String("category"), Anything("TestSort"))));
    EXPECT_EQ(std::vector<std::string>{"PluginClock"},
              WalkForwards(Service()->GetNamingServiceIterator(String("category"), Anything("TestTime"))));
}

TEST(NamingServiceIterator, ValueOfAnotherKindNeverMatches)
{
    NamingService* const service = Service();
    EXPECT_EQ(std::vector<std::string>{"LooksNumeric"},
              WalkForwards(service->GetNamingServiceIterator(String("category"), Anything("5"))));
    EXPECT_FALSE(service->GetNamingServiceIterator(String("category"), Anything(5L)).IsValid());
    // A long 3 is no short 3.
    EXPECT_EQ((std::vector<std::string>{"SortAlpha", "SortGamma"}),
              WalkForwards(service->GetNamingServiceIterator(String("rank"), Anything(3L))));
    EXPECT_FALSE(service->GetNamingServiceIterator(String("rank"), Anything(static_cast<short>(3))).IsValid());
}

TEST(NamingServiceIterator, MissingKeyOrValueFindsNothing)
{
    NamingService* const service = Service();
    EXPECT_FALSE(service->GetNamingServiceIterator(String("colour"), Anything()).IsValid());
    EXPECT_FALSE(service->GetNamingServiceIterator(String("category"), Anything("NoSuchCategory")).IsValid());
}

TEST(NamingServiceIterator, CategoryMultithreadingFindsTheLibrarysThreadAndMutexImplementations)
{
    NamingService* const service = Service();
    EXPECT_EQ((std::vector<std::string>{"MutexImplementation", "ThreadImplementation"}),
              WalkForwards(service->GetNamingServiceIterator(String("category"), Anything("Multithreading"))));
    // Sorted by revision: the thread's "$Revision: 1.4 $" before the
    // mutex's "$Revision: 1.5 $".
    EXPECT_EQ((std::vector<std::string>{"ThreadImplementation", "MutexImplementation"}),
              Names(service->GetFilteredSortedDescriptorsList(String("category"), Anything("Multithreading"),
                                                              String("version"), NamingService::SortAsString)));
}

TEST(NamingServiceIterator, StepPastTheLastMatchIsInvalidAndASecondStepThrows)
{
    NamingServiceIterator iterator = Service()->GetNamingServiceIterator(String("category"), Anything("TestTime"));
    ASSERT_TRUE(iterator.IsValid());
    iterator++;
    EXPECT_FALSE(iterator.IsValid());
    EXPECT_EQ("ListIterator::operator++(): Can't increment iterator because it's invalid",
              FailureText<ExceptionOutOfBound>([&] { iterator++; }));
}

TEST(NamingServiceIterator, StepsBackOverNonMatchesToThePreviousMatch)
{
    // tier: SortAlpha, SortBeta, SortGamma, LooksNumeric; SortDelta has none.
    NamingServiceIterator iterator = Service()->GetNamingServiceIterator(String("tier"), Anything());
    for (int step = 0; step < 3; ++step) {
        iterator++;
    }
    ASSERT_EQ("LooksNumeric", NameOf(iterator));
    iterator--;
    EXPECT_EQ("SortGamma", NameOf(iterator));
    iterator--;
    EXPECT_EQ("SortBeta", NameOf(iterator));
    iterator++;
    EXPECT_EQ("SortGamma", NameOf(iterator));
}

TEST(NamingServiceIterator, StepBackFromTheFirstMatchIsInvalidWithoutWrapAround)
{
    NamingServiceIterator iterator = Service()->GetNamingServiceIterator(String("category"), Anything("TestSort"));
    ASSERT_EQ("SortAlpha", NameOf(iterator));
    iterator--;
    EXPECT_FALSE(iterator.IsValid());
    EXPECT_EQ("ListIterator::operator--(): Can't decrement iterator because it's invalid",
              FailureText<ExceptionOutOfBound>([&] { iterator--; }));
}

TEST(NamingServiceIterator, StepBackStopsBeforeAnEarlierNonMatch)
{
    // The first match is not the first descriptor.
    NamingServiceIterator iterator = Service()->GetNamingServiceIterator(String("category"), Anything("TestLight"));
    ASSERT_EQ("PluginLamp", NameOf(iterator));
    iterator--;
    EXPECT_FALSE(iterator.IsValid());
}

TEST(NamingServiceIterator, InvalidIteratorRefusesAccessWithTheListTexts)
{
    NamingServiceIterator iterator;
    EXPECT_EQ("ListIterator::Current(): Can't return value because iterator is invalid",
              FailureText<ExceptionOutOfBound>([&] { iterator.Current(); }));
    EXPECT_EQ("ListIterator::operator->(): Can't return value because iterator is invalid",
              FailureText<ExceptionOutOfBound>([&] { iterator.operator->(); }));
    EXPECT_EQ("ListIterator::operator++(): Can't increment iterator because it's invalid",
              FailureText<ExceptionOutOfBound>([&] { iterator++; }));
    EXPECT_EQ("ListIterator::operator--(): Can't decrement iterator because it's invalid",
              FailureText<ExceptionOutOfBound>([&] { iterator--; }));
}

TEST(NamingServiceIterator, CopiesWalkOnTheirOwn)
{
    NamingServiceIterator first = Service()->GetNamingServiceIterator(String("category"), Anything("TestSort"));
    NamingServiceIterator second(first);
    second++;
    EXPECT_EQ("SortAlpha", NameOf(first));
    EXPECT_EQ("SortBeta", NameOf(second));
    NamingServiceIterator third;
    third = second;
    third++;
    EXPECT_EQ("SortBeta", NameOf(second));
    EXPECT_EQ("SortGamma", NameOf(third));
    // The copy keeps the filter.
    third++;
    third++;
    EXPECT_FALSE(third.IsValid());
}

TEST(NamingServiceIterator, OverAListOfItsOwn)
{
    Descriptors descriptors;
    descriptors.Append(TestPlugins::Descriptor("A", "$Revision: 1.0 $", "x"));
    descriptors.Append(TestPlugins::Descriptor("B", "$Revision: 1.0 $", "y"));
    descriptors.Append(TestPlugins::Descriptor("C", "$Revision: 1.0 $", "x"));
    EXPECT_EQ((std::vector<std::string>{"A", "C"}),
              WalkForwards(NamingServiceIterator(descriptors, String("category"), Anything("x"))));
    EXPECT_FALSE(NamingServiceIterator(Descriptors(), String(), Anything()).IsValid());
}

// ---------------------------------------------------------------- the sorted list

TEST(SortedDescriptors, ByTextInByteOrder)
{
    const Descriptors sorted = Service()->GetFilteredSortedDescriptorsList(
        String("category"), Anything("TestSort"), String("label"), NamingService::SortAsString);
    // "Zed" sorts before the lower-case words.
    EXPECT_EQ((std::vector<std::string>{"SortDelta", "SortBeta", "SortGamma", "SortAlpha"}), Names(sorted));
}

TEST(SortedDescriptors, ByLongKeepsEqualValuesInDescriptorOrder)
{
    const Descriptors sorted = Service()->GetFilteredSortedDescriptorsList(
        String("category"), Anything("TestSort"), String("rank"), NamingService::SortAsLong);
    // Ranks 3, 1, 3, 2: the two 3s keep their order.
    EXPECT_EQ((std::vector<std::string>{"SortBeta", "SortDelta", "SortAlpha", "SortGamma"}), Names(sorted));
}

TEST(SortedDescriptors, ByShort)
{
    const Descriptors sorted =
        Service()->GetFilteredSortedDescriptorsList(String("tier"), Anything(), String("tier"), NamingService::SortAsShort);
    // Tiers 2, 2, 1, 4.
    EXPECT_EQ((std::vector<std::string>{"SortGamma", "SortAlpha", "SortBeta", "LooksNumeric"}), Names(sorted));
}

TEST(SortedDescriptors, OtherSortTypeKeepsTheOrderOfTheFilter)
{
    const Descriptors sorted = Service()->GetFilteredSortedDescriptorsList(
        String("category"), Anything("TestSort"), String("label"), static_cast<NamingService::SortType>(7));
    EXPECT_EQ(kTestSort, Names(sorted));
}

TEST(SortedDescriptors, ResultHoldsCopies)
{
    NamingService* const service = Service();
    Descriptors sorted = service->GetFilteredSortedDescriptorsList(String("category"), Anything("TestTime"),
                                                                   String("name"), NamingService::SortAsString);
    ASSERT_EQ(1UL, sorted.GetItemCount());
    sorted.Begin().Current()[String("name")] = Anything("Changed");
    EXPECT_EQ(std::vector<std::string>{"PluginClock"},
              WalkForwards(service->GetNamingServiceIterator(String("category"), Anything("TestTime"))));
}

TEST(SortedDescriptors, NoMatchGivesAnEmptyListWhateverTheSortKey)
{
    const Descriptors sorted = Service()->GetFilteredSortedDescriptorsList(
        String("category"), Anything("NoSuchCategory"), String("no such key"), NamingService::SortAsLong);
    EXPECT_EQ(0UL, sorted.GetItemCount());
}

TEST(SortedDescriptors, SortKeyMissingInAMatchThrows)
{
    // SortDelta has no "tier".
    EXPECT_EQ("Sort key doesn't exist in all components corresponding to filter settings.",
              FailureText<ExceptionNamingService>([] {
                  Service()->GetFilteredSortedDescriptorsList(String("category"), Anything("TestSort"),
                                                              String("tier"), NamingService::SortAsShort);
              }));
}

TEST(SortedDescriptors, SortKeyMayLackOutsideTheFilter)
{
    // Unranked and the two_components descriptors have no "rank".
    const Descriptors sorted = Service()->GetFilteredSortedDescriptorsList(String("rank"), Anything(), String("rank"),
                                                                           NamingService::SortAsLong);
    EXPECT_EQ((std::vector<std::string>{"SortBeta", "SortDelta", "SortAlpha", "SortGamma", "LooksNumeric"}),
              Names(sorted));
}

TEST(SortedDescriptors, WrongKindThrows)
{
    EXPECT_EQ("Specified sort type is not correct", FailureText<ExceptionNamingService>([] {
                  Service()->GetFilteredSortedDescriptorsList(String("category"), Anything("TestSort"),
                                                              String("label"), NamingService::SortAsLong);
              }));
    // A long is no short.
    EXPECT_EQ("Specified sort type is not correct", FailureText<ExceptionNamingService>([] {
                  Service()->GetFilteredSortedDescriptorsList(String("category"), Anything("TestSort"),
                                                              String("rank"), NamingService::SortAsShort);
              }));
}

TEST(SortedDescriptors, SingleMatchIsNotCompared)
{
    // Nothing to compare with, so the kind is never read.
    const Descriptors sorted = Service()->GetFilteredSortedDescriptorsList(
        String("category"), Anything("TestTime"), String("name"), NamingService::SortAsLong);
    EXPECT_EQ(std::vector<std::string>{"PluginClock"}, Names(sorted));
}

} // namespace
