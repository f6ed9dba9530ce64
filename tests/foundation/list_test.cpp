// List, its elements and iterators. An element outlives its list while an
// iterator stands on it: the iterator turns invalid and the last one to
// leave deletes the element (the sanitizer run proves no leak and no use
// after free).

#include "qvimanager/foundation/containers.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

using TestSupport::FailureText;
using Utilities::ExceptionNullpointer;
using Utilities::List;
using Utilities::ListElement;
using Utilities::ListIterator;
using Utilities::String;

namespace {

const char* const kCurrentInvalid = "ListIterator::Current(): Can't return value because iterator is invalid";
const char* const kIncrementInvalid = "ListIterator::operator++(): Can't increment iterator because it's invalid";
const char* const kDecrementInvalid = "ListIterator::operator--(): Can't decrement iterator because it's invalid";
const char* const kArrowInvalid = "ListIterator::operator->(): Can't return value because iterator is invalid";

std::vector<std::string> Forward(const List<String>& list)
{
    std::vector<std::string> texts;
    for (ListIterator<String> it = list.Begin(); it.IsValid(); it++) {
        texts.push_back(it.Current());
    }
    return texts;
}

// A value whose copies can be made to fail as an allocation failure would.
struct Fragile {
    static int copiesBeforeFailure; // negative: never fail
    int value = 0;
    Fragile() = default;
    explicit Fragile(int v) : value(v) {}
    Fragile(const Fragile& other) : value(other.value)
    {
        if (copiesBeforeFailure == 0) {
            throw std::bad_alloc();
        }
        if (copiesBeforeFailure > 0) {
            --copiesBeforeFailure;
        }
    }
    Fragile& operator=(const Fragile&) = default;
};
int Fragile::copiesBeforeFailure = -1;

} // namespace

TEST(List, EmptyListHasNoElementsAndAnInvalidBegin)
{
    const List<String> list;
    EXPECT_EQ(0UL, list.GetItemCount());
    EXPECT_FALSE(list.Begin().IsValid());
}

TEST(List, AppendAddsAtTheTail)
{
    List<String> list;
    ListIterator<String> added = list.Append(String("a"));
    EXPECT_STREQ("a", added.Current().GetCharPointer());
    list.Append(String("b"));
    list.Append(String("c"));
    EXPECT_EQ(3UL, list.GetItemCount());
    EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), Forward(list));
}

TEST(List, InsertAtBeginAddsAtTheHead)
{
    List<String> list;
    list.Append(String("b"));
    ListIterator<String> added = list.InsertAtBegin(String("a"));
    EXPECT_STREQ("a", added.Current().GetCharPointer());
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), Forward(list));
    List<String> fresh;
    fresh.InsertAtBegin(String("only"));
    fresh.Append(String("after"));
    EXPECT_EQ((std::vector<std::string>{"only", "after"}), Forward(fresh));
}

TEST(List, InsertAfterPutsTheElementBehindTheGivenOne)
{
    List<String> list;
    ListIterator<String> first = list.Append(String("a"));
    ListIterator<String> last = list.Append(String("c"));
    ListIterator<String> middle = list.InsertAfter(first, String("b"));
    EXPECT_STREQ("b", middle.Current().GetCharPointer());
    list.InsertAfter(last, String("d"));
    list.Append(String("e"));
    EXPECT_EQ(5UL, list.GetItemCount());
    EXPECT_EQ((std::vector<std::string>{"a", "b", "c", "d", "e"}), Forward(list));
}

TEST(List, InsertAfterRefusesAForeignOrInvalidIterator)
{
    List<String> list;
    list.Append(String("a"));
    List<String> other;
    const ListIterator<String> foreign = other.Append(String("x"));
    const char* const expected = "List::InsertAfter(): iterator does not stand on an element of this list";
    EXPECT_EQ(expected, FailureText([&] { list.InsertAfter(foreign, String("b")); }));
    EXPECT_EQ(expected, FailureText([&] { list.InsertAfter(ListIterator<String>(), String("b")); }));
    EXPECT_EQ(1UL, list.GetItemCount());
    EXPECT_EQ(1UL, other.GetItemCount());
}

TEST(ListIterator, StepsForwardAndBack)
{
    List<String> list;
    list.Append(String("a"));
    list.Append(String("b"));
    ListIterator<String> it = list.Begin();
    it++;
    EXPECT_STREQ("b", it.Current().GetCharPointer());
    it--;
    EXPECT_STREQ("a", it->GetCharPointer());
    it--;
    EXPECT_FALSE(it.IsValid());
    ListIterator<String> end = list.Begin();
    end++;
    end++;
    EXPECT_FALSE(end.IsValid());
}

TEST(ListIterator, InvalidIteratorThrowsItsMessages)
{
    ListIterator<String> invalid;
    const ListIterator<String>& constant = invalid;
    EXPECT_FALSE(invalid.IsValid());
    EXPECT_EQ(kCurrentInvalid, FailureText([&] { invalid.Current(); }));
    EXPECT_EQ(kCurrentInvalid, FailureText([&] { constant.Current(); }));
    EXPECT_EQ(kIncrementInvalid, FailureText([&] { invalid++; }));
    EXPECT_EQ(kDecrementInvalid, FailureText([&] { invalid--; }));
    EXPECT_EQ(kArrowInvalid, FailureText([&] { (void)invalid->Length(); }));
}

TEST(ListIterator, CurrentGivesWritableAccess)
{
    List<String> list;
    ListIterator<String> it = list.Append(String("old"));
    it.Current() = String("new");
    EXPECT_EQ((std::vector<std::string>{"new"}), Forward(list));
}

TEST(ListIterator, IteratorsCountAsReferencesOnTheirElement)
{
    ListElement<String> element(String("p"));
    ListIterator<String> first(&element);
    EXPECT_EQ(1UL, element.GetIteratorReferences());
    {
        ListIterator<String> second(first);
        EXPECT_EQ(2UL, element.GetIteratorReferences());
        ListIterator<String> third;
        third = second;
        EXPECT_EQ(3UL, element.GetIteratorReferences());
        third = ListIterator<String>();
        EXPECT_EQ(2UL, element.GetIteratorReferences());
    }
    EXPECT_EQ(1UL, element.GetIteratorReferences());
}

TEST(ListElement, AccessorsAndFlags)
{
    ListElement<String> element(String("v"));
    EXPECT_EQ(nullptr, element.GetNext());
    EXPECT_EQ(nullptr, element.GetBefore());
    EXPECT_FALSE(element.IsDeleted());
    EXPECT_FALSE(element.LastIteratorMustDestroy());
    EXPECT_EQ(0UL, element.GetIteratorReferences());
    EXPECT_EQ(1UL, element.IncrementIteratorReferences());
    EXPECT_EQ(2UL, element.IncrementIteratorReferences());
    EXPECT_EQ(1UL, element.DecrementIteratorReferences());
    EXPECT_EQ(0UL, element.DecrementIteratorReferences());
    element.SetDeletedFlag();
    element.SetLastIteratorMustDestroyFlag();
    EXPECT_TRUE(element.IsDeleted());
    EXPECT_TRUE(element.LastIteratorMustDestroy());
    element.SetElement(String("w"));
    EXPECT_STREQ("w", element.GetElement().GetCharPointer());
    ListElement<String> other(String("o"));
    element.SetNext(&other);
    element.SetBefore(&other);
    EXPECT_EQ(&other, element.GetNext());
    EXPECT_EQ(&other, element.GetBefore());
}

TEST(ListLifeCycle, IteratorHeldAcrossListDestructionTurnsInvalid)
{
    ListIterator<String> survivor;
    {
        List<String> list;
        list.Append(String("first"));
        survivor = list.Append(String("a text long enough to live on the heap"));
    }
    EXPECT_FALSE(survivor.IsValid());
    EXPECT_EQ(kCurrentInvalid, FailureText([&] { survivor.Current(); }));
    EXPECT_EQ(kIncrementInvalid, FailureText([&] { survivor++; }));
    // The destructor of `survivor` frees the element.
}

TEST(ListLifeCycle, LastOfSeveralIteratorsFreesTheElement)
{
    auto* first = new ListIterator<String>();
    auto* second = new ListIterator<String>();
    {
        List<String> list;
        *first = list.Append(String("a text long enough to live on the heap"));
        *second = *first;
    }
    EXPECT_FALSE(first->IsValid());
    delete first;
    EXPECT_FALSE(second->IsValid());
    EXPECT_EQ(kCurrentInvalid, FailureText([&] { second->Current(); }));
    delete second;
}

TEST(ListLifeCycle, AssigningAnIteratorAwayFreesTheElementItLeaves)
{
    List<String> other;
    other.Append(String("other"));
    ListIterator<String> it;
    {
        List<String> list;
        it = list.Append(String("a text long enough to live on the heap"));
    }
    it = other.Begin();
    EXPECT_STREQ("other", it.Current().GetCharPointer());
}

TEST(ListLifeCycle, AssignmentClearsTheTargetLikeTeardown)
{
    List<String> target;
    ListIterator<String> held = target.Append(String("old"));
    List<String> source;
    source.Append(String("new"));
    target = source;
    EXPECT_FALSE(held.IsValid());
    EXPECT_EQ((std::vector<std::string>{"new"}), Forward(target));
}

TEST(ListCopy, CopyIsDeepAndInOrder)
{
    List<String> source;
    source.Append(String("a"));
    source.Append(String("b"));
    List<String> copy(source);
    EXPECT_EQ(2UL, copy.GetItemCount());
    copy.Begin().Current() = String("changed");
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), Forward(source));
    EXPECT_EQ((std::vector<std::string>{"changed", "b"}), Forward(copy));
}

TEST(ListCopy, SelfAssignmentChangesNothing)
{
    List<String> list;
    list.Append(String("a"));
    ListIterator<String> held = list.Begin();
    const List<String>& self = list;
    list = self;
    EXPECT_TRUE(held.IsValid());
    EXPECT_EQ((std::vector<std::string>{"a"}), Forward(list));
}

TEST(ListCopy, MoveTakesTheElementsAndTheirIterators)
{
    List<String> source;
    ListIterator<String> held = source.Append(String("a"));
    List<String> moved(std::move(source));
    EXPECT_EQ(0UL, source.GetItemCount()); // NOLINT(bugprone-use-after-move): the moved-from state is specified
    EXPECT_EQ(1UL, moved.GetItemCount());
    EXPECT_TRUE(held.IsValid());
    EXPECT_STREQ("a", held.Current().GetCharPointer());
}

TEST(ListFailure, FailedInsertionThrowsAndLeavesTheList)
{
    List<Fragile> list;
    list.Append(Fragile(1));
    Fragile::copiesBeforeFailure = 0;
    EXPECT_EQ("Out of memory. Can't insert element into list",
              FailureText<ExceptionNullpointer>([&] { list.Append(Fragile(2)); }));
    EXPECT_EQ("Out of memory. Can't insert element into list",
              FailureText<ExceptionNullpointer>([&] { list.InsertAtBegin(Fragile(2)); }));
    EXPECT_EQ("Out of memory. Can't insert element into list",
              FailureText<ExceptionNullpointer>([&] { list.InsertAfter(list.Begin(), Fragile(2)); }));
    Fragile::copiesBeforeFailure = -1;
    EXPECT_EQ(1UL, list.GetItemCount());
    EXPECT_EQ(1, list.Begin().Current().value);
    ListIterator<Fragile> it = list.Begin();
    it++;
    EXPECT_FALSE(it.IsValid());
}

TEST(ListFailure, FailedCopyThrowsItsMessage)
{
    List<Fragile> source;
    source.Append(Fragile(1));
    source.Append(Fragile(2));
    source.Append(Fragile(3));
    Fragile::copiesBeforeFailure = 1;
    EXPECT_EQ("Can't create copy of list. System is out of memory",
              FailureText<ExceptionNullpointer>([&] { List<Fragile> copy(source); }));
    Fragile::copiesBeforeFailure = 1;
    List<Fragile> target;
    EXPECT_EQ("Can't create copy of list. System is out of memory",
              FailureText<ExceptionNullpointer>([&] { target = source; }));
    Fragile::copiesBeforeFailure = -1;
    EXPECT_EQ(0UL, target.GetItemCount());
    EXPECT_EQ(3UL, source.GetItemCount());
}

TEST(StringGetTokens, ReturnsTheNonEmptyPiecesThatASeparatorFollows)
{
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), Forward(String("a,b,c").GetTokens(',')));
    EXPECT_EQ((std::vector<std::string>{"a"}), Forward(String("a,,b").GetTokens(',')));
    EXPECT_EQ((std::vector<std::string>{"a"}), Forward(String(",a,").GetTokens(',')));
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), Forward(String("a,b,").GetTokens(',')));
}

TEST(StringGetTokens, TextWithoutSeparatorGivesAnEmptyList)
{
    EXPECT_EQ(0UL, String("abc").GetTokens(',').GetItemCount());
    EXPECT_EQ(0UL, String().GetTokens(',').GetItemCount());
    EXPECT_EQ(0UL, String(",,,").GetTokens(',').GetItemCount());
}

TEST(StringGetTokens, DisagreesWithGetTokenOnPurpose)
{
    const String s("a,,b");
    EXPECT_EQ(3UL, s.GetTokenCount(','));
    EXPECT_STREQ("b", s.GetToken(2, ',').GetCharPointer());
    EXPECT_EQ(1UL, s.GetTokens(',').GetItemCount());
}
