// SmartPointer, ReferenceCounter, ReferenceManager and FreeInstance.
//
// The count of a SmartPointer is not readable from outside, so these tests
// watch it through the lifetime of the pointed-to object: a class that counts
// its live instances and its destructions shows when, and how often, the
// object is released.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/smart_pointer.h"

#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

using namespace Utilities;
using TestSupport::FailureText;

// The counter is 16 bits wide and hands back the new count.
static_assert(std::is_same_v<decltype(std::declval<ReferenceCounter&>().AddReference()), unsigned short>);
static_assert(std::is_same_v<decltype(std::declval<ReferenceCounter&>().ReleaseReference()), unsigned short>);
// Every SmartPointer is a ReferenceManager.
static_assert(std::is_base_of_v<ReferenceManager, SmartPointer<int>>);
// A ReferenceManager is only ever made as the base of a SmartPointer.
static_assert(!std::is_default_constructible_v<ReferenceManager>);
static_assert(!std::is_destructible_v<ReferenceManager>);
// Taking ownership is never implicit.
static_assert(!std::is_convertible_v<int*, SmartPointer<int>>);
static_assert(std::is_constructible_v<SmartPointer<int>, int*>);
static_assert(std::is_nothrow_move_constructible_v<SmartPointer<int>>);
static_assert(std::is_nothrow_move_assignable_v<SmartPointer<int>>);

namespace {

// Counts its live instances and its destructions.
class Tracked {
public:
    explicit Tracked(int initial = 0) : value(initial)
    {
        ++live;
    }
    Tracked(const Tracked&) = delete;
    Tracked& operator=(const Tracked&) = delete;
    ~Tracked()
    {
        --live;
        ++destroyed;
    }

    static void Reset()
    {
        live = 0;
        destroyed = 0;
    }

    int value;
    static int live;
    static int destroyed;
};

int Tracked::live = 0;
int Tracked::destroyed = 0;

// Releases itself through its own FreeInstance, which records the call and
// then deletes the object. Nobody else can delete it: its destructor is
// private, so the generic FreeInstance must not take the deleting path for it
// (this file would not compile if it did).
class SelfReleasing {
public:
    static SelfReleasing* Create()
    {
        return new SelfReleasing();
    }

    void FreeInstance()
    {
        ++freeInstanceCalls;
        insideFreeInstance = true;
        delete this;
        insideFreeInstance = false;
    }

    static void Reset()
    {
        live = 0;
        freeInstanceCalls = 0;
        destroyedInsideFreeInstance = 0;
        destroyedElsewhere = 0;
        insideFreeInstance = false;
    }

    static int live;
    static int freeInstanceCalls;
    static int destroyedInsideFreeInstance;
    static int destroyedElsewhere;

private:
    SelfReleasing()
    {
        ++live;
    }
    ~SelfReleasing()
    {
        --live;
        if (insideFreeInstance) {
            ++destroyedInsideFreeInstance;
        } else {
            ++destroyedElsewhere;
        }
    }

    static bool insideFreeInstance;
};

int SelfReleasing::live = 0;
int SelfReleasing::freeInstanceCalls = 0;
int SelfReleasing::destroyedInsideFreeInstance = 0;
int SelfReleasing::destroyedElsewhere = 0;
bool SelfReleasing::insideFreeInstance = false;

static_assert(!std::is_destructible_v<SelfReleasing>);

// A component-like family: the object goes back to the creator that made it,
// through a virtual FreeInstance, and is never deleted by the pointer.
class CreatorBase;

class Product {
public:
    explicit Product(CreatorBase& maker) : creator(maker) {}
    virtual ~Product() = default;
    virtual void FreeInstance();

protected:
    CreatorBase& creator;
};

class CreatorBase {
public:
    void TakeBack(Product* product)
    {
        ++takenBack;
        lastTakenBack = product;
        delete product;
    }

    int takenBack = 0;
    const Product* lastTakenBack = nullptr;
};

void Product::FreeInstance()
{
    creator.TakeBack(this);
}

class SpecialProduct : public Product {
public:
    explicit SpecialProduct(CreatorBase& maker) : Product(maker) {}
    void FreeInstance() override
    {
        ++specialReleases;
        Product::FreeInstance();
    }

    static int specialReleases;
};

int SpecialProduct::specialReleases = 0;

} // namespace

// A type can also bring a FreeInstance of its own next to it; the pointer
// finds it by argument-dependent lookup.
namespace OwnRelease {

struct Pooled {
    bool released = false;
};

int releases = 0;
Pooled* lastReleased = nullptr;

void FreeInstance(Pooled* object)
{
    ++releases;
    lastReleased = object;
    object->released = true;
}

} // namespace OwnRelease

// ---------------------------------------------------------------- ReferenceCounter

TEST(ReferenceCounter, StartsAtZeroSoTheFirstAddReferenceGivesOne)
{
    ReferenceCounter counter;
    EXPECT_EQ(1u, counter.AddReference());
}

TEST(ReferenceCounter, AddReferenceAndReleaseReferenceReturnTheNewCount)
{
    ReferenceCounter counter;
    EXPECT_EQ(1u, counter.AddReference());
    EXPECT_EQ(2u, counter.AddReference());
    EXPECT_EQ(3u, counter.AddReference());
    EXPECT_EQ(2u, counter.ReleaseReference());
    EXPECT_EQ(1u, counter.ReleaseReference());
    EXPECT_EQ(0u, counter.ReleaseReference());
}

TEST(ReferenceCounter, CountIsSixteenBitsWideAndWrapsFrom65535ToZero)
{
    ReferenceCounter counter;
    unsigned short last = 0;
    for (int i = 0; i < 65535; ++i) {
        last = counter.AddReference();
    }
    EXPECT_EQ(65535u, last);
    EXPECT_EQ(0u, counter.AddReference());
    EXPECT_EQ(1u, counter.AddReference());
}

TEST(ReferenceCounter, ReleasingBelowZeroWrapsTo65535WithoutAnyCheck)
{
    ReferenceCounter counter;
    EXPECT_EQ(65535u, counter.ReleaseReference());
    EXPECT_EQ(0u, counter.AddReference());
}

// ---------------------------------------------------------------- construction

TEST(SmartPointer, DefaultConstructedIsEmpty)
{
    const SmartPointer<Tracked> pointer;
    EXPECT_FALSE(pointer.IsValid());
}

TEST(SmartPointer, ConstructedFromNullptrIsEmpty)
{
    const SmartPointer<Tracked> pointer(nullptr);
    EXPECT_FALSE(pointer.IsValid());
    EXPECT_STREQ("Failed to access to nullpointer.",
                 FailureText<ExceptionNullpointer>([&] { (void)pointer.operator->(); }).c_str());
}

TEST(SmartPointer, ConstructedFromAnObjectIsValidAndGivesThatObject)
{
    Tracked::Reset();
    Tracked* object = new Tracked(7);
    const SmartPointer<Tracked> pointer(object);
    EXPECT_TRUE(pointer.IsValid());
    EXPECT_EQ(object, pointer.operator->());
    EXPECT_EQ(object, &*pointer);
    EXPECT_EQ(7, pointer->value);
    EXPECT_EQ(7, (*pointer).value);
}

TEST(SmartPointer, ConstructedFromAnObjectCountsOneSoItsOwnDestructionReleasesIt)
{
    Tracked::Reset();
    {
        const SmartPointer<Tracked> pointer(new Tracked());
        EXPECT_EQ(1, Tracked::live);
        EXPECT_EQ(0, Tracked::destroyed);
    }
    EXPECT_EQ(0, Tracked::live);
    EXPECT_EQ(1, Tracked::destroyed);
}

TEST(SmartPointer, EmptyPointersReleaseNothing)
{
    Tracked::Reset();
    {
        SmartPointer<Tracked> empty;
        SmartPointer<Tracked> fromNull(nullptr);
        SmartPointer<Tracked> copy(empty);
        copy = fromNull;
        EXPECT_FALSE(copy.IsValid());
    }
    EXPECT_EQ(0, Tracked::destroyed);
}

// ---------------------------------------------------------------- dereferencing

TEST(SmartPointer, ArrowOnAnEmptyPointerThrowsNullpointerWithItsText)
{
    const SmartPointer<Tracked> pointer;
    EXPECT_STREQ("Failed to access to nullpointer.",
                 FailureText<ExceptionNullpointer>([&] { (void)pointer->value; }).c_str());
}

TEST(SmartPointer, DereferencingAnEmptyPointerThrowsNullpointerWithItsText)
{
    const SmartPointer<Tracked> pointer;
    EXPECT_STREQ("Failed to dereference nullpointer.",
                 FailureText<ExceptionNullpointer>([&] { (void)(*pointer).value; }).c_str());
}

TEST(SmartPointer, DereferencingAPointerMadeFromNullptrThrowsNullpointerWithItsText)
{
    const SmartPointer<Tracked> pointer(nullptr);
    EXPECT_STREQ("Failed to dereference nullpointer.",
                 FailureText<ExceptionNullpointer>([&] { (void)*pointer; }).c_str());
}

TEST(SmartPointer, ChangesThroughTheArrowAreSeenThroughTheStar)
{
    Tracked::Reset();
    const SmartPointer<Tracked> pointer(new Tracked(1));
    pointer->value = 42;
    EXPECT_EQ(42, (*pointer).value);
}

// ---------------------------------------------------------------- copies

TEST(SmartPointer, CopiesShareTheSameObject)
{
    Tracked::Reset();
    const SmartPointer<Tracked> original(new Tracked(3));
    const SmartPointer<Tracked> copy(original);
    SmartPointer<Tracked> assigned;
    assigned = original;

    EXPECT_TRUE(copy.IsValid());
    EXPECT_TRUE(assigned.IsValid());
    EXPECT_EQ(original.operator->(), copy.operator->());
    EXPECT_EQ(original.operator->(), assigned.operator->());
    EXPECT_EQ(1, Tracked::live);

    copy->value = 11;
    EXPECT_EQ(11, original->value);
    EXPECT_EQ(11, assigned->value);
}

TEST(SmartPointer, ObjectLivesWhileAnyCopyLives)
{
    Tracked::Reset();
    auto* original = new SmartPointer<Tracked>(new Tracked());
    auto* copy = new SmartPointer<Tracked>(*original);

    delete original;
    EXPECT_EQ(1, Tracked::live);
    EXPECT_EQ(0, Tracked::destroyed);
    EXPECT_TRUE(copy->IsValid());

    delete copy;
    EXPECT_EQ(0, Tracked::live);
    EXPECT_EQ(1, Tracked::destroyed);
}

TEST(SmartPointer, ObjectIsReleasedExactlyOnceWhenTheLastOfManyCopiesGoes)
{
    Tracked::Reset();
    {
        const SmartPointer<Tracked> first(new Tracked());
        {
            const SmartPointer<Tracked> second(first);
            SmartPointer<Tracked> third;
            third = second;
            {
                const SmartPointer<Tracked> fourth(third);
                EXPECT_EQ(0, Tracked::destroyed);
            }
            EXPECT_EQ(0, Tracked::destroyed);
        }
        EXPECT_EQ(0, Tracked::destroyed);
        EXPECT_EQ(1, Tracked::live);
    }
    EXPECT_EQ(1, Tracked::destroyed);
    EXPECT_EQ(0, Tracked::live);
}

TEST(SmartPointer, CopiesCanGoInAnyOrder)
{
    Tracked::Reset();
    auto* a = new SmartPointer<Tracked>(new Tracked());
    auto* b = new SmartPointer<Tracked>(*a);
    auto* c = new SmartPointer<Tracked>(*b);

    delete b;
    delete a;
    EXPECT_EQ(0, Tracked::destroyed);
    delete c;
    EXPECT_EQ(1, Tracked::destroyed);
}

TEST(SmartPointer, CopyOfAnEmptyPointerIsEmpty)
{
    const SmartPointer<Tracked> empty;
    const SmartPointer<Tracked> copy(empty);
    EXPECT_FALSE(copy.IsValid());
}

// ---------------------------------------------------------------- assignment

TEST(SmartPointer, AssigningAPointerToItselfLeavesTheObjectAlive)
{
    Tracked::Reset();
    SmartPointer<Tracked> pointer(new Tracked(5));
    const SmartPointer<Tracked>& sameOne = pointer;
    pointer = sameOne;

    EXPECT_EQ(1, Tracked::live);
    EXPECT_EQ(0, Tracked::destroyed);
    ASSERT_TRUE(pointer.IsValid());
    EXPECT_EQ(5, pointer->value);
}

TEST(SmartPointer, AssigningAPointerToItselfKeepsTheCountSoTheObjectGoesOnce)
{
    Tracked::Reset();
    {
        SmartPointer<Tracked> pointer(new Tracked());
        const SmartPointer<Tracked>& sameOne = pointer;
        pointer = sameOne;
        pointer = sameOne;
    }
    EXPECT_EQ(1, Tracked::destroyed);
    EXPECT_EQ(0, Tracked::live);
}

TEST(SmartPointer, AssigningACopyOfTheSameObjectKeepsItAlive)
{
    Tracked::Reset();
    SmartPointer<Tracked> pointer(new Tracked());
    SmartPointer<Tracked> copy(pointer);
    pointer = copy;
    copy = pointer;
    EXPECT_EQ(0, Tracked::destroyed);
    copy = SmartPointer<Tracked>();
    EXPECT_EQ(0, Tracked::destroyed);
    pointer = SmartPointer<Tracked>();
    EXPECT_EQ(1, Tracked::destroyed);
}

TEST(SmartPointer, AssignmentReleasesWhatTheTargetHeld)
{
    Tracked::Reset();
    SmartPointer<Tracked> target(new Tracked(1));
    const SmartPointer<Tracked> source(new Tracked(2));
    EXPECT_EQ(2, Tracked::live);

    target = source;
    EXPECT_EQ(1, Tracked::destroyed);
    EXPECT_EQ(1, Tracked::live);
    EXPECT_EQ(2, target->value);
    EXPECT_EQ(source.operator->(), target.operator->());
}

TEST(SmartPointer, AssignmentOnlyCountsDownAnObjectTheTargetShared)
{
    Tracked::Reset();
    SmartPointer<Tracked> target(new Tracked(1));
    const SmartPointer<Tracked> otherOwner(target);
    const SmartPointer<Tracked> source(new Tracked(2));

    target = source;
    EXPECT_EQ(0, Tracked::destroyed);
    EXPECT_EQ(2, Tracked::live);
    EXPECT_EQ(1, otherOwner->value);
}

TEST(SmartPointer, AssigningAnEmptyPointerReleasesTheObjectAndEmptiesTheTarget)
{
    Tracked::Reset();
    SmartPointer<Tracked> target(new Tracked());
    const SmartPointer<Tracked> empty;

    target = empty;
    EXPECT_FALSE(target.IsValid());
    EXPECT_EQ(1, Tracked::destroyed);
    EXPECT_STREQ("Failed to access to nullpointer.",
                 FailureText<ExceptionNullpointer>([&] { (void)target.operator->(); }).c_str());
}

TEST(SmartPointer, AssignmentToAnEmptyPointerSharesTheObject)
{
    Tracked::Reset();
    SmartPointer<Tracked> target;
    {
        const SmartPointer<Tracked> source(new Tracked(9));
        target = source;
    }
    EXPECT_EQ(0, Tracked::destroyed);
    ASSERT_TRUE(target.IsValid());
    EXPECT_EQ(9, target->value);
}

TEST(SmartPointer, AssignmentReturnsTheTarget)
{
    SmartPointer<Tracked> target;
    const SmartPointer<Tracked> source(new Tracked());
    EXPECT_EQ(&target, &(target = source));
}

// ---------------------------------------------------------------- moves

TEST(SmartPointer, MoveConstructionEmptiesTheSourceAndReleasesNothing)
{
    Tracked::Reset();
    Tracked* object = new Tracked(4);
    SmartPointer<Tracked> source(object);
    {
        const SmartPointer<Tracked> moved(std::move(source));
        EXPECT_FALSE(source.IsValid()); // NOLINT(bugprone-use-after-move): the rule under test
        EXPECT_TRUE(moved.IsValid());
        EXPECT_EQ(object, moved.operator->());
        EXPECT_EQ(0, Tracked::destroyed);
        EXPECT_EQ(1, Tracked::live);
    }
    // The moved-to pointer held the only count.
    EXPECT_EQ(1, Tracked::destroyed);
    EXPECT_EQ(0, Tracked::live);
}

TEST(SmartPointer, MoveAssignmentEmptiesTheSourceAndReleasesOnlyWhatTheTargetHeld)
{
    Tracked::Reset();
    Tracked* kept = new Tracked(1);
    SmartPointer<Tracked> target(new Tracked(2));
    SmartPointer<Tracked> source(kept);

    target = std::move(source);
    EXPECT_FALSE(source.IsValid()); // NOLINT(bugprone-use-after-move): the rule under test
    ASSERT_TRUE(target.IsValid());
    EXPECT_EQ(kept, target.operator->());
    EXPECT_EQ(1, Tracked::destroyed);
    EXPECT_EQ(1, Tracked::live);

    target = SmartPointer<Tracked>();
    EXPECT_EQ(2, Tracked::destroyed);
    EXPECT_EQ(0, Tracked::live);
}

TEST(SmartPointer, MoveLeavesTheCountOfSharedCopiesUnchanged)
{
    Tracked::Reset();
    SmartPointer<Tracked> first(new Tracked());
    SmartPointer<Tracked> second(first);
    SmartPointer<Tracked> moved(std::move(first));

    second = SmartPointer<Tracked>();
    EXPECT_EQ(0, Tracked::destroyed);
    moved = SmartPointer<Tracked>();
    EXPECT_EQ(1, Tracked::destroyed);
}

TEST(SmartPointer, MoveAssigningAPointerToItselfLeavesTheObjectAlive)
{
    Tracked::Reset();
    SmartPointer<Tracked> pointer(new Tracked(6));
    SmartPointer<Tracked>& sameOne = pointer;
    pointer = std::move(sameOne);

    EXPECT_EQ(0, Tracked::destroyed);
    ASSERT_TRUE(pointer.IsValid());
    EXPECT_EQ(6, pointer->value);
}

TEST(SmartPointer, MovedFromPointerThrowsOnDereference)
{
    SmartPointer<Tracked> source(new Tracked());
    const SmartPointer<Tracked> moved(std::move(source));
    EXPECT_STREQ("Failed to dereference nullpointer.",
                 FailureText<ExceptionNullpointer>([&] { (void)*source; }).c_str());
}

// ---------------------------------------------------------------- FreeInstance

TEST(SmartPointerFreeInstance, DeletesAPlainObject)
{
    Tracked::Reset();
    FreeInstance(new Tracked());
    EXPECT_EQ(1, Tracked::destroyed);
    EXPECT_EQ(0, Tracked::live);
}

TEST(SmartPointerFreeInstance, OfANullPlainPointerDoesNothing)
{
    Tracked::Reset();
    FreeInstance(static_cast<Tracked*>(nullptr));
    EXPECT_EQ(0, Tracked::destroyed);
}

TEST(SmartPointerFreeInstance, GoesThroughTheObjectsOwnMemberAndNeverDeletesDirectly)
{
    SelfReleasing::Reset();
    FreeInstance(SelfReleasing::Create());
    EXPECT_EQ(1, SelfReleasing::freeInstanceCalls);
    EXPECT_EQ(1, SelfReleasing::destroyedInsideFreeInstance);
    EXPECT_EQ(0, SelfReleasing::destroyedElsewhere);
    EXPECT_EQ(0, SelfReleasing::live);
}

TEST(SmartPointerFreeInstance, OfANullPointerToASelfReleasingClassDoesNothing)
{
    SelfReleasing::Reset();
    FreeInstance(static_cast<SelfReleasing*>(nullptr));
    EXPECT_EQ(0, SelfReleasing::freeInstanceCalls);
}

TEST(SmartPointer, ReleasesAPlainObjectByDeletingIt)
{
    Tracked::Reset();
    {
        const SmartPointer<Tracked> pointer(new Tracked());
    }
    EXPECT_EQ(1, Tracked::destroyed);
}

TEST(SmartPointer, ReleasesAnObjectWithItsOwnFreeInstanceThroughThatMemberOnce)
{
    SelfReleasing::Reset();
    {
        const SmartPointer<SelfReleasing> pointer(SelfReleasing::Create());
        const SmartPointer<SelfReleasing> copy(pointer);
        EXPECT_EQ(1, SelfReleasing::live);
    }
    EXPECT_EQ(1, SelfReleasing::freeInstanceCalls);
    EXPECT_EQ(1, SelfReleasing::destroyedInsideFreeInstance);
    EXPECT_EQ(0, SelfReleasing::destroyedElsewhere);
    EXPECT_EQ(0, SelfReleasing::live);
}

TEST(SmartPointer, AssignmentReleasesTheOldObjectThroughItsOwnFreeInstance)
{
    SelfReleasing::Reset();
    SmartPointer<SelfReleasing> target(SelfReleasing::Create());
    const SmartPointer<SelfReleasing> source(SelfReleasing::Create());
    target = source;
    EXPECT_EQ(1, SelfReleasing::freeInstanceCalls);
    EXPECT_EQ(1, SelfReleasing::destroyedInsideFreeInstance);
    EXPECT_EQ(1, SelfReleasing::live);
}

TEST(SmartPointer, ReleasesThroughTheVirtualFreeInstanceOfTheDynamicClass)
{
    SpecialProduct::specialReleases = 0;
    CreatorBase creator;
    Product* made = new SpecialProduct(creator);
    {
        const SmartPointer<Product> pointer(made);
        const SmartPointer<Product> copy(pointer);
    }
    EXPECT_EQ(1, SpecialProduct::specialReleases);
    EXPECT_EQ(1, creator.takenBack);
    EXPECT_EQ(made, creator.lastTakenBack);
}

TEST(SmartPointer, ReleasesThroughAFreeInstanceDeclaredNextToTheType)
{
    OwnRelease::releases = 0;
    OwnRelease::lastReleased = nullptr;
    OwnRelease::Pooled slot; // not on the heap: deleting it would be fatal
    {
        const SmartPointer<OwnRelease::Pooled> pointer(&slot);
        const SmartPointer<OwnRelease::Pooled> copy(pointer);
    }
    EXPECT_EQ(1, OwnRelease::releases);
    EXPECT_EQ(&slot, OwnRelease::lastReleased);
    EXPECT_TRUE(slot.released);
}

// ---------------------------------------------------------------- ReferenceManager

TEST(SmartPointer, ValueStringIsAFixedNonEmptyLabel)
{
    const SmartPointer<Tracked> empty;
    const SmartPointer<Tracked> full(new Tracked());
    const SmartPointer<int> other(new int(3));

    const Diagnostics::String label = empty.GetValueString();
    EXPECT_TRUE(label.HasText());
    EXPECT_STRNE("", label.c_str());
    EXPECT_STREQ(label.c_str(), full.GetValueString().c_str());
    EXPECT_STREQ(label.c_str(), other.GetValueString().c_str());
    EXPECT_STREQ(label.c_str(), empty.GetValueString().c_str());
}

TEST(SmartPointer, ValueStringIsTheSameThroughTheReferenceManagerBase)
{
    const SmartPointer<Tracked> first(new Tracked());
    const SmartPointer<Tracked> second(new Tracked());
    const ReferenceManager& firstBase = first;
    const ReferenceManager& secondBase = second;

    EXPECT_STRNE("", firstBase.GetValueString().c_str());
    EXPECT_STREQ(firstBase.GetValueString().c_str(), secondBase.GetValueString().c_str());
    EXPECT_STREQ(first.GetValueString().c_str(), firstBase.GetValueString().c_str());
}
