// The instrument manager end to end: test drivers and a "Preferences"
// store in the folder "plugins" beside a host program, which each test runs
// as new processes, so that what one run stores the next one finds.

#include "tests/support/scan_folder.h"

#include "qvimanager/foundation/anything.h"
#include "tests/platform/thread_support.h"

#include <gtest/gtest.h>

#include <cstdio>
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

// A press of the recent instrument's button reaches the application's
// callback within two poll periods: the first poll cycle that begins after
// the press delivers it (one that has begun and not yet polled may deliver
// it already). When the program ends, no thread of the events is left.
TEST(InstrumentProcesses, ButtonPressesOfTheRecentInstrumentReachTheCallbackAndNoThreadOutlivesThem)
{
    InstrumentFolder folder("preferences_no_case");
    folder.Add("recording_message_service");
    ASSERT_EQ((Lines{"found: TwoDeviceDriver_1001 TwoDeviceDriver_1002", "used: TwoDeviceDriver_1002"}),
              folder.RunHost({"find", "use:TwoDeviceDriver_1002"}));
    const Lines output = folder.RunHost({"recent", "watch:recent:3", "exit-threads"});
    ASSERT_EQ(5u, output.size()) << ::testing::PrintToString(output);
    EXPECT_EQ("recent: Sim B_1002 baud=9600 connected=1", output[0]);
    for (long press = 1; press <= 3; ++press) {
        const std::string& line = output[static_cast<std::size_t>(press)];
        char value[64] = {};
        long cycles = -1;
        long long milliseconds = -1;
        ASSERT_EQ(3, std::sscanf(line.c_str(), "button: %63s cycles=%ld ms=%lld", value, &cycles, &milliseconds))
            << line;
        EXPECT_EQ(Utilities::Anything(press).GetValueString().c_str(), std::string(value)) << line;
        EXPECT_LE(0, cycles) << line;
        EXPECT_GE(1, cycles) << line;
        EXPECT_LT(milliseconds, 2 * 500 + ThreadTests::kSlack) << line;
    }
    EXPECT_EQ("threads left at exit: 0", output[4]);
}

} // namespace
