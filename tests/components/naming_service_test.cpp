// The naming service with real plug-in files, added one by one with
// LoadAdditionalPluginLibrary: registration, the revision rule, resolving,
// pools and shutdown. The program has no folder "plugins" beside it, so its
// service starts with the library's own components only.

#include "qvimanager/components/naming_service.h"
#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "tests/components/load_test_plugin.h"
#include "tests/plugins/plugin_probe.h"
#include "tests/support/failure_text.h"
#include "tests/support/library_components.h"
#include "tests/support/no_plugin_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using TestPlugins::PluginProbe;
using TestSupport::FailureText;
using Utilities::Anything;
using Utilities::Component;
using Utilities::DynamicCast;
using Utilities::ExceptionNamingService;
using Utilities::ExceptionResourceNotAvailable;
using Utilities::ExceptionWrongType;
using Utilities::Map;
using Utilities::MapIterator;
using Utilities::NamingService;
using Utilities::NamingServiceIterator;
using Utilities::Resolve;
using Utilities::SmartPointer;
using Utilities::String;

using TestPlugins::PluginPath;

void Load(const std::string& plugin)
{
    TestPlugins::LoadTestPlugin(plugin);
}

// The names of the components registered besides the library's own, in
// the order of the descriptors; the library's come first, before them.
std::vector<std::string> Names()
{
    std::vector<std::string> names;
    for (NamingServiceIterator entry = NamingService::Instance()->GetNamingServiceIterator(String(), Anything());
         entry.IsValid(); entry++) {
        names.push_back(entry->operator[](String("name")).GetString().GetCharPointer());
    }
    const std::vector<std::string> library = TestSupport::LibraryComponents();
    EXPECT_TRUE(names.size() >= library.size() && std::equal(library.begin(), library.end(), names.begin()))
        << "the library's components come first";
    if (names.size() < library.size()) {
        return names;
    }
    return std::vector<std::string>(names.begin() + static_cast<long>(library.size()), names.end());
}

// The label of the service, which counts every component, the library's
// own among them: "NamingService supports N components." for `plugins`
// components besides the library's.
std::string Label(std::size_t plugins)
{
    return "NamingService supports " + std::to_string(plugins + TestSupport::LibraryComponents().size()) +
           " components.";
}

// The registered "version" of `name`, or "(none)".
std::string Version(const char* name)
{
    NamingServiceIterator entry = NamingService::Instance()->GetNamingServiceIterator(String("name"), Anything(name));
    EXPECT_TRUE(entry.IsValid()) << name;
    if (!entry.IsValid()) {
        return "(not registered)";
    }
    MapIterator<String, Anything> version = entry->Find(String("version"));
    return version.IsValid() ? version.GetValue().GetString().GetCharPointer() : "(none)";
}

// Who answers for `name`: the probe's Identify(), or "(none)".
std::string Who(const char* name)
{
    SmartPointer<PluginProbe> probe = Resolve<PluginProbe>(String(name));
    return probe.IsValid() ? probe->Identify().GetCharPointer() : "(none)";
}

std::string NotAPluginText(const std::string& path)
{
    return "NamingService: " + path + " is not a valid plugin DLL.";
}

// ---------------------------------------------------------------- start and registration

TEST(NamingServiceStart, WithoutAPluginFolderOnlyTheLibrarysComponentsAreThere)
{
    EXPECT_EQ(std::vector<std::string>{}, Names());
    EXPECT_EQ(Label(0), NamingService::Instance()->GetValueString().c_str());
}

TEST(NamingServiceLoad, RegistersEveryComponentOfTheFileInItsOrder)
{
    Load("two_components");
    EXPECT_EQ((std::vector<std::string>{"PluginLamp", "PluginClock"}), Names());
    EXPECT_EQ("two_components: lamp", Who("PluginLamp"));
    EXPECT_EQ("two_components: clock", Who("PluginClock"));
    EXPECT_EQ(Label(2), NamingService::Instance()->GetValueString().c_str());
}

TEST(NamingServiceLoad, DescriptorsAreCopiesOfTheFilesOwn)
{
    Load("two_components");
    NamingServiceIterator lamp = NamingService::Instance()->GetNamingServiceIterator(String("name"), Anything("PluginLamp"));
    ASSERT_TRUE(lamp.IsValid());
    EXPECT_EQ(3UL, lamp->GetCount());
    EXPECT_EQ("$Revision: 1.3 $", Version("PluginLamp"));
    EXPECT_STREQ("TestLight", lamp.Current()[String("category")].GetString().GetCharPointer());
}

TEST(NamingServiceLoad, TextFileIsRefusedWithItsPath)
{
    const std::string path = PluginPath("not_a_plugin");
    EXPECT_EQ(NotAPluginText(path), FailureText<ExceptionNamingService>([] { Load("not_a_plugin"); }));
    EXPECT_EQ(std::vector<std::string>{}, Names());
}

// Each file that is no plug-in (no_plugin_files.h), added in this process,
// which goes on.
class NoPluginFile : public ::testing::TestWithParam<TestSupport::NoPluginFile> {};

TEST_P(NoPluginFile, IsRefusedWithItsPathAndAPluginLoadsAfterIt)
{
    TestSupport::ScratchFolder folder;
    const std::string path = (folder.root / "x.dll").string();
    GetParam().make(path);
    EXPECT_EQ(NotAPluginText(path), FailureText<ExceptionNamingService>([&] {
                  NamingService::Instance()->LoadAdditionalPluginLibrary(
                      *Utilities::File::NewInstance(String(path.c_str())));
              }));
    EXPECT_EQ(std::vector<std::string>{}, Names());
    Load("two_components");
    EXPECT_EQ((std::vector<std::string>{"PluginLamp", "PluginClock"}), Names());
}

INSTANTIATE_TEST_SUITE_P(NamingServiceLoad, NoPluginFile, ::testing::ValuesIn(TestSupport::NoPluginFiles()),
                         TestSupport::NoPluginFileName);

TEST(NamingServiceLoad, FileWithoutAllFourEntryPointsIsRefused)
{
    EXPECT_EQ(NotAPluginText(PluginPath("three_entry_points")),
              FailureText<ExceptionNamingService>([] { Load("three_entry_points"); }));
}

TEST(NamingServiceLoad, MissingFileIsRefused)
{
    EXPECT_EQ(NotAPluginText(PluginPath("no_such_plugin")),
              FailureText<ExceptionNamingService>([] { Load("no_such_plugin"); }));
}

TEST(NamingServiceLoad, DescriptorWithoutNameIsSkipped)
{
    Load("handmade_1");
    EXPECT_EQ(std::vector<std::string>{"HandmadeGood"}, Names());
}

TEST(NamingServiceLoad, NameThatIsNoTextThrowsAndKeepsWhatCameBefore)
{
    EXPECT_EQ("", FailureText<ExceptionWrongType>([] { Load("handmade_2"); }));
    EXPECT_EQ(std::vector<std::string>{"HandmadeBeforeBadName"}, Names());
}

TEST(NamingServiceLoad, VersionThatIsNoTextThrowsAndKeepsTheComponent)
{
    // Read only when the name is registered already.
    Load("handmade_1");
    EXPECT_EQ("", FailureText<ExceptionWrongType>([] { Load("handmade_3"); }));
    EXPECT_EQ(std::vector<std::string>{"HandmadeGood"}, Names());
    EXPECT_EQ("$Revision: 1.0 $", Version("HandmadeGood"));
}

TEST(NamingServiceLoad, SameFileTwiceChangesNothing)
{
    Load("two_components");
    Load("two_components");
    EXPECT_EQ((std::vector<std::string>{"PluginLamp", "PluginClock"}), Names());
    EXPECT_EQ("two_components: lamp", Who("PluginLamp"));
}

// ---------------------------------------------------------------- the revision rule

TEST(NamingServiceRevisions, NewerRevisionLoadedSecondReplaces)
{
    Load("same_name_first");
    Load("same_name_second");
    EXPECT_EQ("same_name_second", Who("SharedName"));
    EXPECT_EQ("$Revision: 1.6 $", Version("SharedName"));
    EXPECT_EQ(std::vector<std::string>{"SharedName"}, Names());
}

TEST(NamingServiceRevisions, NewerRevisionLoadedFirstStays)
{
    Load("same_name_second");
    Load("same_name_first");
    EXPECT_EQ("same_name_second", Who("SharedName"));
    EXPECT_EQ("$Revision: 1.6 $", Version("SharedName"));
    EXPECT_EQ(std::vector<std::string>{"SharedName"}, Names());
}

TEST(NamingServiceRevisions, ReplacedDescriptorKeepsItsPlace)
{
    Load("same_name_first");
    Load("two_components");
    Load("same_name_second");
    EXPECT_EQ((std::vector<std::string>{"SharedName", "PluginLamp", "PluginClock"}), Names());
    EXPECT_EQ("$Revision: 1.6 $", Version("SharedName"));
    EXPECT_EQ("same_name_second", Who("SharedName"));
}

TEST(NamingServiceRevisions, RevisionsCompareAsDecimalNumbers)
{
    // 1.10 is below 1.9, in either order of loading.
    Load("same_name_1_9");
    Load("same_name_1_10");
    EXPECT_EQ("same_name_1_9", Who("SharedName"));
    EXPECT_EQ("$Revision: 1.9 $", Version("SharedName"));
}

TEST(NamingServiceRevisions, DecimalRuleHoldsInTheOtherOrder)
{
    Load("same_name_1_10");
    Load("same_name_1_9");
    EXPECT_EQ("same_name_1_9", Who("SharedName"));
    EXPECT_EQ("$Revision: 1.9 $", Version("SharedName"));
}

TEST(NamingServiceRevisions, TieKeepsTheFirstFile)
{
    Load("same_name_equal");
    Load("same_name_first");
    EXPECT_EQ("same_name_equal", Who("SharedName"));
    EXPECT_EQ(std::vector<std::string>{"SharedName"}, Names());
}

TEST(NamingServiceRevisions, OneTokenVersionNeverReplaces)
{
    Load("same_name_first");
    Load("same_name_one_token");
    EXPECT_EQ("same_name_first", Who("SharedName"));
    EXPECT_EQ("$Revision: 1.5 $", Version("SharedName"));
}

TEST(NamingServiceRevisions, OneTokenVersionIsNeverReplaced)
{
    // "1.7" reads as the revision 1.7 nowhere: the formats differ.
    Load("same_name_one_token");
    Load("same_name_second");
    EXPECT_EQ("same_name_one_token", Who("SharedName"));
    EXPECT_EQ("1.7", Version("SharedName"));
}

TEST(NamingServiceRevisions, NewcomerWithoutVersionNeverReplaces)
{
    Load("same_name_first");
    Load("same_name_no_version");
    EXPECT_EQ("same_name_first", Who("SharedName"));
    EXPECT_EQ("$Revision: 1.5 $", Version("SharedName"));
}

TEST(NamingServiceRevisions, ComponentWithoutVersionIsNeverReplaced)
{
    Load("same_name_no_version");
    Load("same_name_second");
    EXPECT_EQ("same_name_no_version", Who("SharedName"));
    EXPECT_EQ("(none)", Version("SharedName"));
}

// ---------------------------------------------------------------- resolving

TEST(NamingServiceResolve, UnknownNameLeavesTheTargetAsItWas)
{
    Load("two_components");
    SmartPointer<Component> out = Resolve<Component>(String("PluginLamp"));
    const SmartPointer<Component> before = out;
    NamingService::Instance()->Resolve(String("NoSuchComponent"), &out);
    EXPECT_TRUE(out == before);
}

TEST(NamingServiceResolve, ComponentConstructorFailurePassesThrough)
{
    Load("throwing_constructor");
    EXPECT_EQ("Faulty component cannot start",
              FailureText<ExceptionResourceNotAvailable>([] { Resolve<Component>(String("Faulty")); }));
}

TEST(NamingServiceResolve, LoaderFailureIsAbsorbedAndLeavesTheTarget)
{
    Load("throwing_constructor");
    Load("two_components");
    SmartPointer<Component> out = Resolve<Component>(String("PluginLamp"));
    const SmartPointer<Component> before = out;
    // Its constructor throws ExceptionDllLoader: absorbed.
    EXPECT_NO_THROW(NamingService::Instance()->Resolve(String("FaultyLoader"), &out));
    EXPECT_TRUE(out == before);
}

TEST(NamingServicePool, PluginComponentIsPooledOncePerPool)
{
    Load("two_components");
    NamingService* const service = NamingService::Instance();
    SmartPointer<Component> first;
    SmartPointer<Component> second;
    SmartPointer<Component> other;
    bool created = false;
    service->Resolve(String("PluginLamp"), String("pool"), &first, created);
    EXPECT_TRUE(created);
    service->Resolve(String("PluginLamp"), String("pool"), &second, created);
    EXPECT_FALSE(created);
    EXPECT_TRUE(first == second);
    service->Resolve(String("PluginLamp"), String("other"), &other, created);
    EXPECT_TRUE(created);
    EXPECT_FALSE(first.operator->() == other.operator->());
}

TEST(NamingServicePool, PluginSingletonInASecondPoolGivesEmptyPointer)
{
    Load("two_components");
    NamingService* const service = NamingService::Instance();
    SmartPointer<Component> first;
    SmartPointer<Component> second;
    bool created = false;
    service->Resolve(String("PluginClock"), String("one"), &first, created);
    EXPECT_TRUE(created);
    service->Resolve(String("PluginClock"), String("two"), &second, created);
    EXPECT_FALSE(created);
    EXPECT_FALSE(second.IsValid());
    // The first pool still has it.
    service->Resolve(String("PluginClock"), String("one"), &second, created);
    EXPECT_TRUE(first == second);
}

// ---------------------------------------------------------------- shutdown

TEST(NamingServiceShutdown, EachFileIsAskedOnceToPrepareForUnload)
{
    Load("two_components");
    // The clock (a singleton) counts for the whole file; holding it keeps
    // the file loaded after the service has gone.
    SmartPointer<PluginProbe> clock = Resolve<PluginProbe>(String("PluginClock"));
    ASSERT_TRUE(clock.IsValid());
    EXPECT_EQ(0, clock->TimesPrepared());
    NamingService::ReleaseInstance();
    EXPECT_EQ(1, clock->TimesPrepared());
}

TEST(NamingServiceShutdown, PooledComponentsGoBeforeAnyFileIsAsked)
{
    Load("two_components");
    SmartPointer<Component> pooled;
    bool created = false;
    NamingService::Instance()->Resolve(String("PluginLamp"), String("pool"), &pooled, created);
    ASSERT_TRUE(created);
    pooled = SmartPointer<Component>();
    SmartPointer<PluginProbe> clock = Resolve<PluginProbe>(String("PluginClock"));
    NamingService::ReleaseInstance();
    EXPECT_EQ(1, clock->TimesPrepared());
    EXPECT_EQ(0, clock->OthersAliveWhenPrepared());
}

TEST(NamingServiceShutdown, LoaderFailureEndsTheWalkQuietly)
{
    Load("refuses_unload");
    Load("two_components");
    SmartPointer<PluginProbe> refuser = Resolve<PluginProbe>(String("UnloadRefuser"));
    SmartPointer<PluginProbe> clock = Resolve<PluginProbe>(String("PluginClock"));
    ASSERT_TRUE(refuser.IsValid());
    // The walk follows the order of the service's map; the files behind the
    // refusing one are not asked.
    Map<String, long> order;
    order[String("UnloadRefuser")] = 0;
    order[String("PluginLamp")] = 1;
    order[String("PluginClock")] = 1;
    bool twoComponentsBeforeRefuser = false;
    for (MapIterator<String, long> entry = order.Begin(); entry.IsValid(); entry++) {
        if (entry.GetValue() == 0) {
            break;
        }
        twoComponentsBeforeRefuser = true;
    }
    EXPECT_NO_THROW(NamingService::ReleaseInstance());
    EXPECT_EQ(twoComponentsBeforeRefuser ? 1 : 0, clock->TimesPrepared());
}

TEST(NamingServiceShutdown, FileAddedLaterOutlivesTheServiceAtExit)
{
    // The service was made before this file was added, so the file's static
    // objects would be destroyed at exit before the service's first release
    // runs. The service must still go first: the plug-in ends the program
    // with exit code 3 if it finds the service alive when its statics go.
    NamingService::Instance();
    Load("exit_order");
    EXPECT_EQ("exit_order: watcher", Who("ExitWatcher"));
}

} // namespace
