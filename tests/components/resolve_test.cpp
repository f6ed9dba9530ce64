// Resolve<T> and the naming service's resolve operations, answered by test
// hooks.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/resolve.h"
#include "tests/components/test_components.h"
#include "tests/support/failure_text.h"
#include "tests/support/library_components.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace ComponentTests;
using Utilities::Component;
using Utilities::ExceptionNamingService;
using Utilities::NamingService;
using Utilities::NamingServiceTestHooks;
using Utilities::Resolve;
using Utilities::SmartPointer;

// Answers "Lamp" with a new Lamp, "Clock" with one shared Clock, and "Mute"
// by leaving the target alone; records every name it is asked.
class Hooks : public NamingServiceTestHooks {
public:
    bool ResolveHook(const String& name, SmartPointer<Component>* out) override
    {
        asked.push_back(name.GetCharPointer());
        if (name == String("Lamp")) {
            *out = SmartPointer<Component>(new Lamp());
            return true;
        }
        if (name == String("Clock")) {
            if (!clock.IsValid()) {
                clock = SmartPointer<Component>(new Clock());
            }
            *out = clock;
            return true;
        }
        return name == String("Mute");
    }

    std::vector<std::string> asked;
    SmartPointer<Component> clock;
};

Hooks* InstallHooks()
{
    Hooks* const hooks = new Hooks();
    NamingService::Instance()->RegisterTestHooks(SmartPointer<NamingServiceTestHooks>(hooks));
    return hooks;
}

TEST(ResolveTemplate, UnknownNameGivesEmptyPointer)
{
    SmartPointer<Lamp> lamp;
    EXPECT_NO_THROW(lamp = Resolve<Lamp>(String("Lamp")));
    EXPECT_FALSE(lamp.IsValid());
}

TEST(ResolveTemplate, GivesTheComponentAsItsClass)
{
    InstallHooks();
    SmartPointer<Lamp> lamp = Resolve<Lamp>(String("Lamp"));
    ASSERT_TRUE(lamp.IsValid());
    EXPECT_EQ(1, lamp.GetReferenceCount());
}

TEST(ResolveTemplate, ComponentOfAnotherClassGivesEmptyPointer)
{
    InstallHooks();
    SmartPointer<Switch> wrong;
    EXPECT_NO_THROW(wrong = Resolve<Switch>(String("Lamp")));
    EXPECT_FALSE(wrong.IsValid());
}

TEST(ResolveTemplate, PoolFormKeepsOneInstancePerPool)
{
    InstallHooks();
    SmartPointer<Lamp> first = Resolve<Lamp>(String("Lamp"), String("Kitchen"));
    SmartPointer<Lamp> again = Resolve<Lamp>(String("Lamp"), String("Kitchen"));
    SmartPointer<Lamp> other = Resolve<Lamp>(String("Lamp"), String("Hall"));
    ASSERT_TRUE(first.IsValid());
    EXPECT_EQ(first.operator->(), again.operator->());
    ASSERT_TRUE(other.IsValid());
    EXPECT_NE(first.operator->(), other.operator->());
    EXPECT_FALSE(Resolve<Switch>(String("Lamp"), String("Kitchen")).IsValid());
}

TEST(ResolveTemplate, FailsOnceTheServiceIsReleased)
{
    NamingService::ReleaseInstance();
    EXPECT_EQ("Can't recreate instance of NamingService",
              TestSupport::FailureText<ExceptionNamingService>([] { Resolve<Lamp>(String("Lamp")); }));
}

TEST(NamingService, InstanceIsMadeOnce)
{
    EXPECT_EQ(NamingService::Instance(), NamingService::Instance());
}

TEST(NamingService, CannotBeRecreatedAfterRelease)
{
    NamingService::Instance();
    NamingService::ReleaseInstance();
    EXPECT_EQ("Can't recreate instance of NamingService",
              TestSupport::FailureText<ExceptionNamingService>([] { NamingService::Instance(); }));
    // Released for good: a second release does nothing.
    NamingService::ReleaseInstance();
    EXPECT_EQ("Can't recreate instance of NamingService",
              TestSupport::FailureText<ExceptionNamingService>([] { NamingService::Instance(); }));
}

TEST(NamingService, ReleaseBeforeAnyInstanceAlsoEndsIt)
{
    NamingService::ReleaseInstance();
    EXPECT_EQ("Can't recreate instance of NamingService",
              TestSupport::FailureText<ExceptionNamingService>([] { NamingService::Instance(); }));
}

TEST(NamingService, UnknownNameLeavesTheTargetAlone)
{
    SmartPointer<Component> out(new Lamp());
    Component* const before = out.operator->();
    EXPECT_NO_THROW(NamingService::Instance()->Resolve(String("Candle"), &out));
    EXPECT_EQ(before, out.operator->());
}

TEST(NamingService, HooksAnswerFirst)
{
    Hooks* const hooks = InstallHooks();
    SmartPointer<Component> out;
    NamingService::Instance()->Resolve(String("Lamp"), &out);
    EXPECT_TRUE(out.IsValid());
    // A hook that answers without a component leaves the target as it was.
    SmartPointer<Component> kept(new Switch());
    NamingService::Instance()->Resolve(String("Mute"), &kept);
    EXPECT_TRUE(Utilities::DynamicCast<Switch>(kept).IsValid());
    EXPECT_EQ((std::vector<std::string>{"Lamp", "Mute"}), hooks->asked);
}

TEST(NamingService, NewHooksReplaceTheOld)
{
    Hooks* const first = InstallHooks();
    Hooks* const second = InstallHooks();
    SmartPointer<Component> out;
    NamingService::Instance()->Resolve(String("Lamp"), &out);
    EXPECT_EQ(1UL, second->asked.size());
    static_cast<void>(first);
}

TEST(NamingService, SameHooksAgainKeepThem)
{
    Hooks* const hooks = new Hooks();
    SmartPointer<NamingServiceTestHooks> held(hooks);
    NamingService::Instance()->RegisterTestHooks(held);
    NamingService::Instance()->RegisterTestHooks(held);
    SmartPointer<Component> out;
    NamingService::Instance()->Resolve(String("Lamp"), &out);
    EXPECT_EQ(1UL, hooks->asked.size());
}

TEST(NamingService, PoolResolveTwiceGivesOneObject)
{
    InstallHooks();
    SmartPointer<Component> first;
    SmartPointer<Component> second;
    bool created = false;
    NamingService::Instance()->Resolve(String("Lamp"), String("Kitchen"), &first, created);
    EXPECT_TRUE(created);
    NamingService::Instance()->Resolve(String("Lamp"), String("Kitchen"), &second, created);
    EXPECT_FALSE(created);
    ASSERT_TRUE(first.IsValid());
    EXPECT_EQ(first.operator->(), second.operator->());
}

TEST(NamingService, PoolResolveOfUnknownNameCreatesNothing)
{
    InstallHooks();
    SmartPointer<Component> out;
    bool created = true;
    NamingService::Instance()->Resolve(String("Candle"), String("Kitchen"), &out, created);
    EXPECT_FALSE(created);
    EXPECT_FALSE(out.IsValid());
}

TEST(NamingService, SingletonInASecondPoolGivesEmptyPointer)
{
    InstallHooks();
    SmartPointer<Component> kitchen;
    SmartPointer<Component> hall;
    bool created = false;
    NamingService::Instance()->Resolve(String("Clock"), String("Kitchen"), &kitchen, created);
    EXPECT_TRUE(created);
    ASSERT_TRUE(kitchen.IsValid());
    NamingService::Instance()->Resolve(String("Clock"), String("Hall"), &hall, created);
    EXPECT_FALSE(created);
    EXPECT_FALSE(hall.IsValid());
    // The first pool still has it.
    SmartPointer<Component> again;
    NamingService::Instance()->Resolve(String("Clock"), String("Kitchen"), &again, created);
    EXPECT_FALSE(created);
    EXPECT_EQ(kitchen.operator->(), again.operator->());
}

TEST(NamingService, PooledComponentsGoWithTheService)
{
    InstallHooks();
    Census::made = 0;
    Census::gone = 0;
    {
        SmartPointer<Component> out;
        bool created = false;
        NamingService::Instance()->Resolve(String("Lamp"), String("Kitchen"), &out, created);
    }
    EXPECT_EQ(1, Census::made);
    EXPECT_EQ(0, Census::gone);
    NamingService::ReleaseInstance();
    EXPECT_EQ(1, Census::gone);
}

TEST(NamingService, Label)
{
    // The library's own components, and none of this program's: a program
    // is no plug-in.
    EXPECT_EQ("NamingService supports " + std::to_string(TestSupport::LibraryComponents().size()) + " components.",
              NamingService::Instance()->GetValueString().c_str());
}

} // namespace
