// The naming service's start-up scan. Each test makes a folder of its own,
// copies the host program into it (naming_service_host.cpp) and fills a
// "plugins" folder beside it with the files it chooses, under the names it
// chooses; then it runs the host and reads what it prints.

#include "tests/components/load_test_plugin.h"
#include "tests/support/library_components.h"
#include "tests/support/no_plugin_files.h"
#include "tests/support/scan_folder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// A scratch folder with the scan host.
class ScanFolder : public TestSupport::ScanFolder {
public:
    ScanFolder() : TestSupport::ScanFolder(QVIMANAGER_SCAN_HOST) {}
};

// The host's "names" line: the library's own components, then `plugins`.
std::string NamesLine(const std::string& plugins = "")
{
    return "names:" + TestSupport::LibraryComponentNames() + (plugins.empty() ? "" : " " + plugins);
}

TEST(PluginScan, WithoutAPluginFolderOnlyTheLibrarysComponentsAreThere)
{
    ScanFolder folder;
    const std::string label =
        "label: NamingService supports " + std::to_string(TestSupport::LibraryComponents().size()) + " components.";
    EXPECT_EQ((std::vector<std::string>{NamesLine(), label}),
              folder.Run({"names", "label"}));
}

TEST(PluginScan, EmptyPluginFolderRegistersNothing)
{
    ScanFolder folder;
    folder.Plugins();
    EXPECT_EQ(NamesLine(), folder.RunOne("names"));
}

TEST(PluginScan, FileNamedPluginsIsNoFolderToScan)
{
    ScanFolder folder;
    std::ofstream(folder.root / "plugins") << "not a folder\n";
    EXPECT_EQ(NamesLine(), folder.RunOne("names"));
}

TEST(PluginScan, EveryPluginIsRegisteredInTheByteOrderOfTheFileNames)
{
    ScanFolder folder;
    folder.Add("two_components", "b.dll");
    folder.Add("handmade_1", "a.dll");
    folder.Add("same_name_first", "C.dll");
    EXPECT_EQ(NamesLine("SharedName HandmadeGood PluginLamp PluginClock"), folder.RunOne("names"));
    EXPECT_EQ("who PluginClock: two_components: clock", folder.RunOne("who:PluginClock"));
}

TEST(PluginScan, OnlyFilesEndingInDotDllAreScanned)
{
    ScanFolder folder;
    folder.Add("two_components", "two_components.so");
    folder.Add("two_components", "two_components.DLL");
    folder.Add("two_components", "two_components.dll.old");
    folder.Add("same_name_first", "same_name.dll");
    EXPECT_EQ(NamesLine("SharedName"), folder.RunOne("names"));
}

TEST(PluginScan, NewerRevisionWinsWhenItComesFirst)
{
    ScanFolder folder;
    folder.Add("same_name_second", "a.dll");
    folder.Add("same_name_first", "b.dll");
    EXPECT_EQ((std::vector<std::string>{NamesLine("SharedName"), "who SharedName: same_name_second"}),
              folder.Run({"names", "who:SharedName"}));
}

TEST(PluginScan, NewerRevisionWinsWhenItComesSecond)
{
    ScanFolder folder;
    folder.Add("same_name_first", "a.dll");
    folder.Add("same_name_second", "b.dll");
    EXPECT_EQ((std::vector<std::string>{NamesLine("SharedName"), "who SharedName: same_name_second"}),
              folder.Run({"names", "who:SharedName"}));
}

TEST(PluginScan, RevisionOneTenLosesToOneNineInBothOrders)
{
    ScanFolder first;
    first.Add("same_name_1_10", "a.dll");
    first.Add("same_name_1_9", "b.dll");
    EXPECT_EQ("who SharedName: same_name_1_9", first.RunOne("who:SharedName"));
    ScanFolder second;
    second.Add("same_name_1_9", "a.dll");
    second.Add("same_name_1_10", "b.dll");
    EXPECT_EQ("who SharedName: same_name_1_9", second.RunOne("who:SharedName"));
}

TEST(PluginScan, TieKeepsTheFileScannedFirst)
{
    ScanFolder first;
    first.Add("same_name_equal", "a.dll");
    first.Add("same_name_first", "b.dll");
    EXPECT_EQ("who SharedName: same_name_equal", first.RunOne("who:SharedName"));
    ScanFolder second;
    second.Add("same_name_first", "a.dll");
    second.Add("same_name_equal", "b.dll");
    EXPECT_EQ("who SharedName: same_name_first", second.RunOne("who:SharedName"));
}

TEST(PluginScan, FilesThatAreNoPluginsAreSkipped)
{
    ScanFolder folder;
    folder.Add("not_a_plugin", "a_text.dll");
    folder.Add("three_entry_points", "b_three.dll");
    fs::create_directory(folder.Plugins() / "c_folder.dll");
    std::ofstream(folder.Plugins() / "d_empty.dll").close();
    folder.Add("two_components", "e.dll");
    EXPECT_EQ(NamesLine("PluginLamp PluginClock"), folder.RunOne("names"));
}

TEST(PluginScan, SkippedFileIsRefusedWhenAddedDirectly)
{
    ScanFolder folder;
    folder.Add("not_a_plugin", "a_text.dll");
    const std::string path = (folder.Plugins() / "a_text.dll").string();
    EXPECT_EQ((std::vector<std::string>{NamesLine(), "load: NamingService: " + path + " is not a valid plugin DLL."}),
              folder.Run({"names", "load:" + path}));
}

// Each file that is no plug-in (no_plugin_files.h), whatever is wrong
// with it: the host neither dies nor stops.
class NoPluginFile : public ::testing::TestWithParam<TestSupport::NoPluginFile> {};

TEST_P(NoPluginFile, IsSkippedAndThePluginsBeforeAndAfterItAreRegistered)
{
    ScanFolder folder;
    folder.Add("two_components", "a.dll");
    GetParam().make(folder.Plugins() / "b.dll");
    folder.Add("same_name_first", "c.dll");
    EXPECT_EQ(NamesLine("PluginLamp PluginClock SharedName"), folder.RunOne("names"));
}

TEST_P(NoPluginFile, IsRefusedWhenAddedDirectlyAndTheHostGoesOn)
{
    ScanFolder folder;
    const std::string path = (folder.root / "x.dll").string();
    GetParam().make(path);
    EXPECT_EQ((std::vector<std::string>{"load: NamingService: " + path + " is not a valid plugin DLL.", "load: ok",
                                        NamesLine("PluginLamp PluginClock")}),
              folder.Run({"load:" + path, "load:" + TestPlugins::PluginPath("two_components"), "names"}));
}

INSTANTIATE_TEST_SUITE_P(PluginScan, NoPluginFile, ::testing::ValuesIn(TestSupport::NoPluginFiles()),
                         TestSupport::NoPluginFileName);

TEST(PluginScan, FileAddedAfterTheScanMeetsTheRevisionRule)
{
    ScanFolder folder;
    folder.Add("same_name_first", "a.dll");
    EXPECT_EQ((std::vector<std::string>{"load: ok", "who SharedName: same_name_second", NamesLine("SharedName")}),
              folder.Run({"load:" + TestPlugins::PluginPath("same_name_second"), "who:SharedName", "names"}));
}

TEST(PluginScan, OtherFailureOfAFileEndsTheScanThere)
{
    // The second file has a descriptor whose name is no text: what it
    // registered before stays, and the third file is never scanned.
    ScanFolder folder;
    folder.Add("two_components", "a.dll");
    folder.Add("handmade_2", "b.dll");
    folder.Add("same_name_first", "c.dll");
    EXPECT_EQ(NamesLine("PluginLamp PluginClock HandmadeBeforeBadName"), folder.RunOne("names"));
}

TEST(PluginScan, PluginThatAsksForTheServiceWhileItLoadsGetsItAsRegisteredSoFar)
{
    // The language service is scanned first, so the plug-in that translates
    // while it loads finds it.
    ScanFolder folder;
    folder.Add("language_service", "a.dll");
    folder.Add("asks_at_load", "b.dll");
    EXPECT_EQ("who AskedAtLoad: asks_at_load: Fehler: Verzeichnis %DIR% existiert nicht",
              folder.RunOne("who:AskedAtLoad"));
}

TEST(PluginScan, PluginThatAsksBeforeTheLanguageServiceIsRegisteredGetsTheEnglishText)
{
    ScanFolder folder;
    folder.Add("asks_at_load", "a.dll");
    folder.Add("language_service", "b.dll");
    EXPECT_EQ("who AskedAtLoad: asks_at_load: Error: Directory %DIR% does not exist",
              folder.RunOne("who:AskedAtLoad"));
}

} // namespace
