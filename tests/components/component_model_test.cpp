// Components, creators and the ComponentFactory of this test program (a
// module of its own, with its own factory).

#include "qvimanager/components/component.h"
#include "qvimanager/components/component_creator.h"
#include "qvimanager/components/component_factory.h"
#include "tests/components/test_components.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace ComponentTests;
using Utilities::Component;
using Utilities::ComponentCreatorBase;
using Utilities::ComponentCreatorNormal;
using Utilities::ComponentCreatorSingleton;
using Utilities::ComponentFactory;
using Utilities::DynamicCast;
using Utilities::ExceptionComponentFactory;
using Utilities::ExceptionResourceNotAvailable;
using Utilities::List;
using Utilities::ListIterator;
using Utilities::SmartPointer;

// The creators of this program, registered while it loads, in this order.
ComponentCreatorNormal<Lamp> lampCreator;
ComponentCreatorNormal<Switch> switchCreator;
ComponentCreatorSingleton<Clock> clockCreator;
ComponentCreatorNormal<SecondLamp> secondLampCreator;
ComponentCreatorNormal<Fuse> fuseCreator;

SmartPointer<Component> ResolveHere(const char* name)
{
    SmartPointer<Component> out;
    ComponentFactory::Instance()->Resolve(String(name), &out);
    return out;
}

// A creator that records what is asked of it.
class RecordingCreator : public ComponentCreatorBase {
public:
    // Registers in the factory only when it lives as long as the program
    // (the factory keeps the pointer).
    RecordingCreator(const char* componentName, unsigned long liveInstances, bool readyForUnload,
                     bool registerInFactory)
        : name(componentName), instances(liveInstances), ready(readyForUnload)
    {
        if (registerInFactory) {
            ComponentFactory::RegisterAtLoad(this);
        }
    }
    Diagnostics::String GetValueString() const override
    {
        return Diagnostics::String("RecordingCreator");
    }
    Map<String, Anything> GetDescriptor() const override
    {
        return Descriptor(name, "$Revision: 1.0 $", "Test");
    }
    void CreateComponent(SmartPointer<Component>*) override {}
    unsigned long DecrementInstanceCounter() override
    {
        return --instances;
    }
    unsigned long GetInstanceCount() const override
    {
        ++countsAsked;
        return instances;
    }
    bool PrepareForUnload() override
    {
        ++prepared;
        return ready;
    }

    const char* name;
    unsigned long instances;
    bool ready;
    mutable int countsAsked = 0;
    int prepared = 0;
};

// --- Component ---------------------------------------------------------------

TEST(ComponentDescriptor, HasTheThreeUsualKeysAsTexts)
{
    Utilities::Map<Utilities::String, Utilities::Anything> descriptor =
        Utilities::MakeComponentDescriptor("MyGreeter", "$Revision: 1.0 $", "Examples");
    EXPECT_EQ(3UL, descriptor.GetCount());
    EXPECT_STREQ("MyGreeter", descriptor[Utilities::String("name")].GetString().GetCharPointer());
    EXPECT_STREQ("$Revision: 1.0 $", descriptor[Utilities::String("version")].GetString().GetCharPointer());
    EXPECT_STREQ("Examples", descriptor[Utilities::String("category")].GetString().GetCharPointer());
}

TEST(Component, StartsWithoutCreator)
{
    Lamp lamp;
    EXPECT_EQ(nullptr, lamp.GetCreator());
}

TEST(Component, DestructorCountsDownItsCreatorOnce)
{
    RecordingCreator creator("Recorder", 5, true, false);
    {
        Lamp lamp;
        lamp.SetCreator(&creator);
    }
    EXPECT_EQ(4UL, creator.instances);
}

TEST(Component, WithoutCreatorTheDestructorReportsToNobody)
{
    RecordingCreator creator("Recorder", 5, true, false);
    {
        Lamp lamp;
    }
    EXPECT_EQ(5UL, creator.instances);
}

TEST(Component, CopyReportsToTheSameCreator)
{
    RecordingCreator creator("Recorder", 5, true, false);
    {
        Lamp lamp;
        lamp.SetCreator(&creator);
        Lamp copy(lamp);
        EXPECT_EQ(&creator, copy.GetCreator());
    }
    // Two objects went, each counted down once.
    EXPECT_EQ(3UL, creator.instances);
}

TEST(Component, AssignmentTakesTheCreatorUnlessSelf)
{
    RecordingCreator creator("Recorder", 5, true, false);
    Lamp lamp;
    lamp.SetCreator(&creator);
    Lamp other;
    other = lamp;
    EXPECT_EQ(&creator, other.GetCreator());
    Lamp& same = lamp;
    lamp = same;
    EXPECT_EQ(&creator, lamp.GetCreator());
    other.SetCreator(nullptr);
    lamp.SetCreator(nullptr);
}

TEST(Component, IsReadyForUnload)
{
    Lamp lamp;
    EXPECT_TRUE(lamp.PrepareForUnload());
    lamp.Invariant();
}

// A component that records its release.
class Released : public Component {
public:
    void FreeInstance() override
    {
        ++freed;
        Component::FreeInstance();
    }
    static inline int freed = 0;
};

TEST(Component, SmartPointerReleasesThroughFreeInstance)
{
    Released::freed = 0;
    {
        SmartPointer<Component> pointer(new Released());
        SmartPointer<Component> copy(pointer);
    }
    EXPECT_EQ(1, Released::freed);
}

// --- ComponentCreatorNormal --------------------------------------------------

TEST(ComponentCreatorNormal, EachCreateMakesANewCountedObject)
{
    Census::made = 0;
    SmartPointer<Component> first = ResolveHere("Lamp");
    SmartPointer<Component> second = ResolveHere("Lamp");
    ASSERT_TRUE(first.IsValid());
    ASSERT_TRUE(second.IsValid());
    EXPECT_NE(first.operator->(), second.operator->());
    EXPECT_EQ(2, Census::made);
    EXPECT_EQ(2UL, lampCreator.GetInstanceCount());
    EXPECT_EQ(&lampCreator, first->GetCreator());
    EXPECT_TRUE(DynamicCast<Lamp>(first).IsValid());
}

TEST(ComponentCreatorNormal, DestroyedObjectsBringTheCountBackToZero)
{
    {
        SmartPointer<Component> first = ResolveHere("Lamp");
        SmartPointer<Component> second = ResolveHere("Lamp");
        EXPECT_EQ(2UL, lampCreator.GetInstanceCount());
        first = SmartPointer<Component>();
        EXPECT_EQ(1UL, lampCreator.GetInstanceCount());
    }
    EXPECT_EQ(0UL, lampCreator.GetInstanceCount());
}

TEST(ComponentCreatorNormal, ReplacingTheTargetReleasesWhatItHeld)
{
    SmartPointer<Component> out = ResolveHere("Lamp");
    lampCreator.CreateComponent(&out);
    EXPECT_EQ(1UL, lampCreator.GetInstanceCount());
}

TEST(ComponentCreatorNormal, DecrementReturnsTheNewCount)
{
    SmartPointer<Component> a = ResolveHere("Switch");
    SmartPointer<Component> b = ResolveHere("Switch");
    EXPECT_EQ(1UL, switchCreator.DecrementInstanceCounter());
    a->SetCreator(nullptr);
}

TEST(ComponentCreatorNormal, NullTargetMakesAndDropsAnUncountedObject)
{
    Census::made = 0;
    Census::gone = 0;
    lampCreator.CreateComponent(nullptr);
    EXPECT_EQ(1, Census::made);
    EXPECT_EQ(1, Census::gone);
    EXPECT_EQ(0UL, lampCreator.GetInstanceCount());
}

TEST(ComponentCreatorNormal, ConstructorFailurePassesThroughUncounted)
{
    SmartPointer<Component> out;
    EXPECT_EQ("Fuse blown",
              TestSupport::FailureText<ExceptionResourceNotAvailable>([&] { fuseCreator.CreateComponent(&out); }));
    EXPECT_FALSE(out.IsValid());
    EXPECT_EQ(0UL, fuseCreator.GetInstanceCount());
}

TEST(ComponentCreatorNormal, DescriptorIsTheClassDescriptor)
{
    const Map<String, Anything> descriptor = lampCreator.GetDescriptor();
    EXPECT_STREQ("Lamp", descriptor[String("name")].GetString().GetCharPointer());
    EXPECT_STREQ("$Revision: 1.2 $", descriptor[String("version")].GetString().GetCharPointer());
    EXPECT_STREQ("Light", descriptor[String("category")].GetString().GetCharPointer());
}

TEST(ComponentCreatorNormal, IsAlwaysReadyForUnload)
{
    SmartPointer<Component> lamp = ResolveHere("Lamp");
    EXPECT_TRUE(lampCreator.PrepareForUnload());
}

TEST(ComponentCreatorNormal, LabelNamesTheCreatorClassAndCount)
{
    SmartPointer<Component> a = ResolveHere("Lamp");
    SmartPointer<Component> b = ResolveHere("Lamp");
    EXPECT_STREQ("Utilities::ComponentCreatorNormal<ComponentTests::Lamp>: Actual instance count = 2",
                 lampCreator.GetValueString().c_str());
}

// --- ComponentCreatorSingleton -----------------------------------------------

TEST(ComponentCreatorSingleton, CountsZeroBeforeTheFirstCreate)
{
    EXPECT_EQ(0UL, clockCreator.GetInstanceCount());
    EXPECT_EQ(0UL, clockCreator.DecrementInstanceCounter());
}

TEST(ComponentCreatorSingleton, TwoCreatesGiveOneObjectCountedTwice)
{
    Census::made = 0;
    SmartPointer<Component> first = ResolveHere("Clock");
    SmartPointer<Component> second = ResolveHere("Clock");
    ASSERT_TRUE(first.IsValid());
    EXPECT_EQ(first.operator->(), second.operator->());
    EXPECT_EQ(1, Census::made);
    EXPECT_EQ(2UL, clockCreator.GetInstanceCount());
    // The object does not report back: the count follows the pointer.
    EXPECT_EQ(nullptr, first->GetCreator());
    EXPECT_EQ(2UL, clockCreator.DecrementInstanceCounter());
    second = SmartPointer<Component>();
    EXPECT_EQ(1UL, clockCreator.GetInstanceCount());
    first = SmartPointer<Component>();
    EXPECT_EQ(0UL, clockCreator.GetInstanceCount());
}

TEST(ComponentCreatorSingleton, KeepsTheInstanceWhenNobodyElseHoldsIt)
{
    Census::made = 0;
    Census::gone = 0;
    ResolveHere("Clock");
    ResolveHere("Clock");
    EXPECT_EQ(1, Census::made);
    EXPECT_EQ(0, Census::gone);
}

TEST(ComponentCreatorSingleton, NullTargetStillMakesTheInstance)
{
    Census::made = 0;
    clockCreator.CreateComponent(nullptr);
    EXPECT_EQ(1, Census::made);
    EXPECT_EQ(0UL, clockCreator.GetInstanceCount());
}

TEST(ComponentCreatorSingleton, PrepareForUnloadAsksTheInstanceAndKeepsIt)
{
    Clock::asked = 0;
    EXPECT_TRUE(clockCreator.PrepareForUnload());
    EXPECT_EQ(0, Clock::asked);
    ResolveHere("Clock");
    Clock::ready = false;
    EXPECT_FALSE(clockCreator.PrepareForUnload());
    Clock::ready = true;
    EXPECT_TRUE(clockCreator.PrepareForUnload());
    EXPECT_EQ(2, Clock::asked);
    Census::made = 0;
    ResolveHere("Clock");
    EXPECT_EQ(0, Census::made);
}

TEST(ComponentCreatorSingleton, LabelNamesTheCreatorClassAndCount)
{
    SmartPointer<Component> clock = ResolveHere("Clock");
    EXPECT_STREQ("Utilities::ComponentCreatorSingleton<ComponentTests::Clock>: Actual instance count = 1",
                 clockCreator.GetValueString().c_str());
}

// --- ComponentFactory --------------------------------------------------------

TEST(ComponentFactory, HoldsTheDescriptorsInOrderOfRegistration)
{
    EXPECT_EQ((std::vector<std::string>{"Lamp", "Switch", "Clock", "Fuse"}),
              TestPlugins::DescriptorValues(ComponentFactory::Instance()->GetDescriptors(), "name"));
}

TEST(ComponentFactory, FirstRegistrationOfANameWinsSilently)
{
    // SecondLamp registered after Lamp under the same name: no failure, its
    // descriptor is not kept, and "Lamp" still makes a Lamp.
    EXPECT_EQ("", std::string(ComponentFactory::GetLoadFailure().GetCharPointer()));
    SmartPointer<Component> lamp = ResolveHere("Lamp");
    EXPECT_TRUE(DynamicCast<Lamp>(lamp).IsValid());
    EXPECT_FALSE(DynamicCast<SecondLamp>(lamp).IsValid());
    const List<Map<String, Anything>>& descriptors = ComponentFactory::Instance()->GetDescriptors();
    for (ListIterator<Map<String, Anything>> entry = descriptors.Begin(); entry.IsValid(); entry++) {
        EXPECT_STRNE("Duplicate", entry.Current()[String("category")].GetString().GetCharPointer());
    }
    EXPECT_EQ(0UL, secondLampCreator.GetInstanceCount());
}

TEST(ComponentFactory, DescriptorWithoutNameThrows)
{
    static ComponentCreatorNormal<Nameless> nameless;
    EXPECT_EQ("Component descriptor doesn't contain the name atttribute",
              TestSupport::FailureText<ExceptionComponentFactory>(
                  [] { ComponentFactory::Instance()->RegisterCreator(&nameless); }));
}

TEST(ComponentFactory, FailedRegistrationAtLoadIsKeptNotThrown)
{
    EXPECT_EQ("", std::string(ComponentFactory::GetLoadFailure().GetCharPointer()));
    static ComponentCreatorNormal<Nameless> nameless;
    EXPECT_EQ("Component descriptor doesn't contain the name atttribute",
              std::string(ComponentFactory::GetLoadFailure().GetCharPointer()));
    EXPECT_EQ(4UL, ComponentFactory::Instance()->GetDescriptors().GetItemCount());
    // The first failure is the one kept.
    static ComponentCreatorNormal<Nameless> again;
    EXPECT_EQ("Component descriptor doesn't contain the name atttribute",
              std::string(ComponentFactory::GetLoadFailure().GetCharPointer()));
}

TEST(ComponentFactory, UnknownNameLeavesTheTargetAlone)
{
    SmartPointer<Component> out = ResolveHere("Lamp");
    Component* const before = out.operator->();
    ComponentFactory::Instance()->Resolve(String("Candle"), &out);
    EXPECT_EQ(before, out.operator->());
    SmartPointer<Component> empty;
    ComponentFactory::Instance()->Resolve(String("Candle"), &empty);
    EXPECT_FALSE(empty.IsValid());
}

TEST(ComponentFactory, HasNoInstancesWhenNothingLives)
{
    EXPECT_FALSE(ComponentFactory::Instance()->HasInstances());
    {
        SmartPointer<Component> lamp = ResolveHere("Lamp");
        EXPECT_TRUE(ComponentFactory::Instance()->HasInstances());
    }
    EXPECT_FALSE(ComponentFactory::Instance()->HasInstances());
}

TEST(ComponentFactory, SingletonHeldOnlyByItsCreatorIsNoInstance)
{
    {
        SmartPointer<Component> clock = ResolveHere("Clock");
        EXPECT_TRUE(ComponentFactory::Instance()->HasInstances());
    }
    EXPECT_FALSE(ComponentFactory::Instance()->HasInstances());
}

TEST(ComponentFactory, HasInstancesAsksEveryCreator)
{
    static RecordingCreator first("AliveFirst", 1, true, true);
    static RecordingCreator second("AliveSecond", 2, true, true);
    EXPECT_TRUE(ComponentFactory::Instance()->HasInstances());
    // No early stop at the first creator with instances.
    EXPECT_EQ(1, first.countsAsked);
    EXPECT_EQ(1, second.countsAsked);
}

TEST(ComponentFactory, PrepareForUnloadAsksEveryCreator)
{
    static RecordingCreator refusing("Refusing", 0, false, true);
    static RecordingCreator willing("Willing", 0, true, true);
    Clock::asked = 0;
    ResolveHere("Clock");
    ComponentFactory::Instance()->PrepareForUnload();
    EXPECT_EQ(1, refusing.prepared);
    EXPECT_EQ(1, willing.prepared);
    EXPECT_EQ(1, Clock::asked);
}

TEST(ComponentFactory, ReleaseInstanceStartsAnEmptyFactory)
{
    ComponentFactory* const first = ComponentFactory::Instance();
    EXPECT_EQ(first, ComponentFactory::Instance());
    ComponentFactory::ReleaseInstance();
    ComponentFactory::ReleaseInstance();
    EXPECT_EQ(0UL, ComponentFactory::Instance()->GetDescriptors().GetItemCount());
    EXPECT_FALSE(ResolveHere("Lamp").IsValid());
}

TEST(ComponentFactory, Label)
{
    EXPECT_STREQ("ComponentFactory", ComponentFactory::Instance()->GetValueString().c_str());
}

// --- DynamicCast -------------------------------------------------------------

TEST(DynamicCast, EmptySourceGivesEmptyResult)
{
    EXPECT_FALSE(DynamicCast<Lamp>(SmartPointer<Component>()).IsValid());
}

TEST(DynamicCast, SuccessSharesTheCounter)
{
    SmartPointer<Component> component(new Lamp());
    SmartPointer<Lamp> lamp = DynamicCast<Lamp>(component);
    ASSERT_TRUE(lamp.IsValid());
    EXPECT_EQ(2, component.GetReferenceCount());
    EXPECT_EQ(2, lamp.GetReferenceCount());
    Census::gone = 0;
    component = SmartPointer<Component>();
    EXPECT_EQ(0, Census::gone);
    EXPECT_EQ(1, lamp.GetReferenceCount());
    lamp = SmartPointer<Lamp>();
    EXPECT_EQ(1, Census::gone);
}

TEST(DynamicCast, WrongClassGivesEmptyResultWithoutException)
{
    SmartPointer<Component> component(new Lamp());
    SmartPointer<Switch> wrong;
    EXPECT_NO_THROW(wrong = DynamicCast<Switch>(component));
    EXPECT_FALSE(wrong.IsValid());
    EXPECT_EQ(1, component.GetReferenceCount());
}

} // namespace
