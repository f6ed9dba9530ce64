// The instrument manager end to end: test drivers and a "Preferences"
// store in the folder "plugins" beside a host program, which each test runs
// as new processes, so that what one run stores the next one finds.

#include "tests/support/scan_folder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

class InstrumentFolder : public TestSupport::ScanFolder {
public:
    explicit InstrumentFolder(const char* store) : TestSupport::ScanFolder(QVIMANAGER_INSTRUMENT_HOST)
    {
        Add("driver_two_devices");
        Add("driver_no_finder");
        Add(store);
    }
    // The host with the commands, and the store's file in this folder.
    Lines RunHost(const Lines& commands, const std::string& more = "")
    {
        return Run(commands, "QVI_TEST_PREFERENCES='" + (root / "preferences.txt").string() + "' " + more);
    }
};

TEST(InstrumentProcesses, PluginsBesideTheProgramAreFoundAndUsed)
{
    InstrumentFolder folder("preferences_no_case");
    EXPECT_EQ((Lines{"drivers: NoFinderDriver TwoDeviceDriver", "found: TwoDeviceDriver_1001 TwoDeviceDriver_1002",
                     "recent: (none)", "used: TwoDeviceDriver_1002"}),
              folder.RunHost({"drivers", "find", "recent", "use:TwoDeviceDriver_1002"}));
}

TEST(InstrumentProcesses, ANewProcessFindsTheRecentInstrumentWithItsBaudRate)
{
    InstrumentFolder folder("preferences_no_case");
    ASSERT_EQ((Lines{"found: TwoDeviceDriver_1001 TwoDeviceDriver_1002", "used: TwoDeviceDriver_1002"}),
              folder.RunHost({"find", "use:TwoDeviceDriver_1002"}));
    EXPECT_EQ((Lines{"recent: Sim B_1002 baud=9600 connected=1"}), folder.RunHost({"recent"}));
}

TEST(InstrumentProcesses, AStoreThatRespectsCaseGivesNoBaudRateBack)
{
    InstrumentFolder folder("preferences_case");
    ASSERT_EQ((Lines{"found: TwoDeviceDriver_1001 TwoDeviceDriver_1002", "used: TwoDeviceDriver_1001"}),
              folder.RunHost({"find", "use:TwoDeviceDriver_1001"}));
    EXPECT_EQ((Lines{"recent: Sim A_1001 baud= connected=1"}), folder.RunHost({"recent"}));
}

TEST(InstrumentProcesses, ARecentDeviceNoLongerAttachedIsNotGiven)
{
    InstrumentFolder folder("preferences_no_case");
    ASSERT_EQ((Lines{"found: TwoDeviceDriver_1001 TwoDeviceDriver_1002", "used: TwoDeviceDriver_1001"}),
              folder.RunHost({"find", "use:TwoDeviceDriver_1001"}));
    EXPECT_EQ((Lines{"recent: (none)"}), folder.RunHost({"recent"}, "QVI_TEST_AVAILABLE=no"));
}

} // namespace
