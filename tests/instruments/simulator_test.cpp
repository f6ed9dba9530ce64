// The simulated spectrophotometer end to end: its plug-in and the console
// "MessageService" in the folder "plugins" beside a host program, which
// each test runs as new processes in a folder of its own, with a
// configuration, spectra and control files of its own. The host reaches the
// driver through the library only: the instrument manager, FindDevices_V1,
// Measurement_V1 and InstrumentEvents_V1.
//
// Waits: a test that waits for an event reads the host's next line; the
// host waits for the event with a patience of 30 s, far beyond a poll
// period, and says so when it gives up. Nothing here measures time.

#include "tests/support/scan_folder.h"

#include "cgats/cgats.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

const char* const kError = "failure: Error in SimulatedSpectrophotometer: ";
const char* const kChart = "chart24_babelcolor_avg.cgats";

// ---------------------------------------------------------------- helpers

void WriteFile(const fs::path& path, const std::string& content)
{
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file) {
        throw std::runtime_error("cannot write " + path.string());
    }
}

void Append(const fs::path& path, const std::string& content)
{
    std::ofstream file(path, std::ios::binary | std::ios::app);
    file << content;
    if (!file) {
        throw std::runtime_error("cannot append to " + path.string());
    }
}

// A [device] section with every required key; `more` adds lines.
std::string Section(const std::string& serial, const std::string& spectra, const std::string& more = "")
{
    return "[device]\nserial = " + serial + "\nname = Sim " + serial + "\ntransport = USB\nport = usb-" + serial +
           "\nbaud = 9600\nspectra = " + spectra + "\n" + more;
}

// A CGATS file of spectra, one row of written values per sample, the
// fields SPECTRAL_NM<from> .. SPECTRAL_NM<to> in 10 nm steps.
std::string Cgats(const std::vector<std::vector<std::string>>& rows, int from = 380, int to = 730,
                  const std::string& keywords = "")
{
    std::string text = "CGATS.17\n" + keywords + "BEGIN_DATA_FORMAT\nSAMPLE_ID";
    for (int wavelength = from; wavelength <= to; wavelength += 10) {
        text += "\tSPECTRAL_NM" + std::to_string(wavelength);
    }
    text += "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    for (std::size_t row = 0; row < rows.size(); ++row) {
        text += std::to_string(row + 1);
        for (const std::string& value : rows[row]) {
            text += "\t" + value;
        }
        text += "\n";
    }
    return text + "END_DATA\n";
}

// `count` values of sample `sample` (1, 2, ...): 0.0s0p, distinct for every
// sample and point, with as many digits as a float does not hold exactly.
std::vector<std::string> Written(int sample, int count = 36, double scale = 1.0)
{
    std::vector<std::string> values;
    for (int point = 0; point < count; ++point) {
        char text[32];
        std::snprintf(text, sizeof text, "%.5f", scale * (0.1 * sample + 0.0173 * point + 0.00011));
        values.push_back(text);
    }
    return values;
}

// The host's line for a reading of `values`.
std::string Reading(const std::array<float, 36>& values)
{
    std::string line = "reading:";
    for (float value : values) {
        char text[32];
        std::snprintf(text, sizeof text, " %.9g", static_cast<double>(value));
        line += text;
    }
    return line;
}

// The engine's reading of written 0..1 values: each rounded once to a
// float. Values written for fewer points are placed from `first` on, and
// the ends take the nearest one.
std::array<float, 36> AsFraction(const std::vector<std::string>& written, int first = 0)
{
    std::array<float, 36> values{};
    for (std::size_t index = 0; index < written.size(); ++index) {
        EXPECT_TRUE(Cgats::ParseNumber(written[index], values[first + index])) << written[index];
    }
    const int last = first + static_cast<int>(written.size()) - 1;
    for (int point = 0; point < 36; ++point) {
        values[point] = values[std::clamp(point, first, last)];
    }
    return values;
}

// The engine's reading of written percent: the quotient by 100 of the
// written number, rounded once to a float.
std::array<float, 36> AsPercent(const std::vector<std::string>& written)
{
    std::array<float, 36> values{};
    for (std::size_t index = 0; index < written.size(); ++index) {
        double number = 0.0;
        EXPECT_TRUE(Cgats::ParseNumber(written[index], number)) << written[index];
        values[index] = static_cast<float>(number / 100.0);
    }
    return values;
}

// The rows of a sample file of data/samples, as the engine reads them
// (0..1, every point measured).
std::vector<std::array<float, 36>> ChartReadings(const std::string& path)
{
    std::ifstream input(path, std::ios::binary);
    Cgats::Reader reader(input, path);
    std::vector<int> fields;
    for (int wavelength = 380; wavelength <= 730; wavelength += 10) {
        fields.push_back(reader.FieldIndex("SPECTRAL_NM" + std::to_string(wavelength)));
    }
    std::vector<std::array<float, 36>> readings;
    Cgats::Row row;
    while (reader.Next(row)) {
        std::vector<std::string> written;
        for (int field : fields) {
            written.emplace_back(row.values[field]);
        }
        readings.push_back(AsFraction(written));
    }
    return readings;
}

// A scratch folder with the host and both plug-ins, and a configuration
// file "instruments.conf" that the host is pointed at.
class SimulatorFolder : public TestSupport::ScanFolder {
public:
    SimulatorFolder() : TestSupport::ScanFolder(QVIMANAGER_SIMULATOR_HOST)
    {
        fs::copy_file(QVIMANAGER_SIMULATOR_PLUGIN, Plugins() / "simulated_spectrophotometer.dll");
        fs::copy_file(QVIMANAGER_MESSAGES_PLUGIN, Plugins() / "console_message_service.dll");
    }

    fs::path Configuration() const
    {
        return root / "instruments.conf";
    }
    void Configure(const std::string& content)
    {
        WriteFile(Configuration(), content);
    }
    // A file in the folder.
    fs::path Write(const std::string& name, const std::string& content)
    {
        WriteFile(root / name, content);
        return root / name;
    }
    fs::path Control(const std::string& serial) const
    {
        return root / (serial + ".control");
    }

    // The host's environment: pointed at the configuration, without echo,
    // and `more`.
    std::string Environment(const std::string& more) const
    {
        return "QVIMANAGER_SIMULATOR='" + Configuration().string() + "' QVIMANAGER_MESSAGES= " + more;
    }
    // The command line of the host with the commands.
    std::string Command(const Lines& commands, const std::string& more = "") const
    {
        std::string line = Environment(more) + " '" + (root / "host").string() + "'";
        for (const std::string& command : commands) {
            line += " '" + command + "'";
        }
        return line + " 2>&1";
    }
    Lines RunHost(const Lines& commands, const std::string& more = "")
    {
        return Run(commands, Environment(more));
    }
};

// The host running while the test reads its lines one at a time.
class RunningHost {
public:
    explicit RunningHost(const std::string& command) : pipe(popen(command.c_str(), "r")) {}
    ~RunningHost()
    {
        if (pipe != nullptr) {
            pclose(pipe);
        }
    }
    RunningHost(const RunningHost&) = delete;
    RunningHost& operator=(const RunningHost&) = delete;

    // The next line, or "(end of output)".
    std::string Line()
    {
        std::array<char, 4096> buffer{};
        if (pipe == nullptr || std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) == nullptr) {
            return "(end of output)";
        }
        std::string text(buffer.data());
        if (!text.empty() && text.back() == '\n') {
            text.pop_back();
        }
        return text;
    }
    // The rest of the lines; the exit status.
    int Finish(Lines& rest)
    {
        for (std::string line = Line(); line != "(end of output)"; line = Line()) {
            rest.push_back(line);
        }
        const int status = pclose(pipe);
        pipe = nullptr;
        return status;
    }

private:
    FILE* pipe;
};

// Three samples, and the folder's configuration with one device reading
// them.
class SimulatorWithThreeSpectra : public ::testing::Test {
protected:
    void SetUp() override
    {
        folder.Write("three.cgats", Cgats({Written(1), Written(2), Written(3)}));
        folder.Configure(Section("S1", "three.cgats") + Section("S2", "three.cgats"));
    }
    std::string Sample(int sample) const
    {
        return Reading(AsFraction(Written(sample)));
    }

    SimulatorFolder folder;
};

// ---------------------------------------------------------------- devices

TEST(SimulatorDevices, TheConfigurationGivesTheDevicesInFileOrder)
{
    SimulatorFolder folder;
    folder.Write("spectra.cgats", Cgats({Written(1)}));
    folder.Configure("# two devices\n\n[device]\n  serial = B-2 \nname = Second One\ntransport = Bluetooth\n"
                     "port = bt:00:11\nbaud = 0\nspectra = spectra.cgats\n"
                     "[Device]\nSerial=a.1\nNAME=First\ntransport=USB\nport=/dev/ttyUSB0\nbaud=115200\n"
                     "spectra=spectra.cgats\nplugged = no\n");
    EXPECT_EQ((Lines{"device: B-2 name=Second One driver=SimulatedSpectrophotometer transport=Bluetooth "
                     "port=bt:00:11 baud=0 available=yes",
                     "device: a.1 name=First driver=SimulatedSpectrophotometer transport=USB port=/dev/ttyUSB0 "
                     "baud=115200 available=no",
                     "found: SimulatedSpectrophotometer_B-2 SimulatedSpectrophotometer_a.1"}),
              folder.RunHost({"devices", "find"}));
}

TEST(SimulatorDevices, WithoutTheVariableTheConfigurationBesideThePluginCounts)
{
    SimulatorFolder folder;
    folder.Write("spectra.cgats", Cgats({Written(1)}));
    WriteFile(folder.Plugins() / "simulated_instruments.conf", Section("BESIDE", "../spectra.cgats"));
    folder.Configure(Section("ELSEWHERE", "spectra.cgats"));
    // An empty variable counts as none.
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_BESIDE", Reading(AsFraction(Written(1)))}),
              folder.Run({"find", "measure:SimulatedSpectrophotometer_BESIDE:1"}, "QVIMANAGER_SIMULATOR="));
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_ELSEWHERE"}), folder.RunHost({"find"}));
}

TEST(SimulatorDevices, AnUnpluggedDeviceIsListedButNotAvailableAndDoesNotMeasure)
{
    SimulatorFolder folder;
    folder.Write("spectra.cgats", Cgats({Written(1)}));
    folder.Configure(Section("IN", "spectra.cgats", "plugged = yes\n") + Section("OUT", "spectra.cgats",
                                                                                 "plugged = no\n"));
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_IN SimulatedSpectrophotometer_OUT", "available: yes",
                     "available: no", "available: no", Reading(AsFraction(Written(1))),
                     std::string(kError) + "Sim OUT (OUT) is not plugged in"}),
              folder.RunHost({"find", "available:IN", "available:OUT", "available:UNKNOWN",
                              "measure:SimulatedSpectrophotometer_IN:1", "measure:SimulatedSpectrophotometer_OUT:1"}));
}

// ---------------------------------------------------------------- readings

TEST_F(SimulatorWithThreeSpectra, ReadingsFollowTheFileAndStartAgainAfterTheLast)
{
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", Sample(1), Sample(2),
                     Sample(3), Sample(1), Sample(2), Sample(3), Sample(1)}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_S1:7"}));
}

TEST_F(SimulatorWithThreeSpectra, EachDeviceHasItsOwnPositionWhichEveryObjectOfTheDeviceShares)
{
    // The manager's object, a new object given the serial number, the
    // manager's object again, after a second search.
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", Sample(1), Sample(1),
                     Sample(2), Sample(2), Sample(3),
                     "found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", Sample(3)}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_S1:1",
                              "measure:SimulatedSpectrophotometer_S2:1", "fresh:S1:1",
                              "measure:SimulatedSpectrophotometer_S2:1", "fresh:S2:1", "find",
                              "measure:SimulatedSpectrophotometer_S1:1"}));
}

TEST_F(SimulatorWithThreeSpectra, ANewProcessStartsAtTheFirstSpectrum)
{
    ASSERT_EQ((Lines{"found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", Sample(1), Sample(2)}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_S1:2"}));
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", Sample(1)}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_S1:1"}));
}

// The recently used device is an object of its own (the manager keeps it
// in another pool): it reads on where the searched one stopped.
TEST_F(SimulatorWithThreeSpectra, TheRecentlyUsedInstrumentReadsOnWhereTheDeviceStopped)
{
    fs::copy_file(TestPlugins::PluginPath("preferences_no_case"), folder.Plugins() / "preferences_no_case.dll");
    const std::string store = "QVI_TEST_PREFERENCES='" + (folder.root / "preferences.txt").string() + "'";
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", Sample(1),
                     "used: SimulatedSpectrophotometer_S1", Sample(2), Sample(3)}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_S1:1", "use:SimulatedSpectrophotometer_S1",
                              "recent:1", "measure:SimulatedSpectrophotometer_S1:1"},
                             store));
    EXPECT_EQ((Lines{Sample(1)}), folder.RunHost({"recent:1"}, store));
}

TEST(SimulatorReadings, TheChartReadsAsTheEngineReadsTheFile)
{
    SimulatorFolder folder;
    const std::string chart = std::string(QVIMANAGER_SAMPLE_DIR) + "/" + kChart;
    folder.Configure(Section("CHART", chart));
    const std::vector<std::array<float, 36>> expected = ChartReadings(chart);
    ASSERT_EQ(24u, expected.size());
    Lines wanted{"found: SimulatedSpectrophotometer_CHART"};
    for (const std::array<float, 36>& values : expected) {
        wanted.push_back(Reading(values));
    }
    wanted.push_back(Reading(expected[0]));
    EXPECT_EQ(wanted, folder.RunHost({"find", "measure:SimulatedSpectrophotometer_CHART:25"}));
}

TEST(SimulatorReadings, PercentIsDividedBy100)
{
    SimulatorFolder folder;
    folder.Write("percent.cgats", Cgats({Written(1, 36, 100.0), Written(2, 36, 100.0)}));
    folder.Configure(Section("P", "percent.cgats"));
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_P", Reading(AsPercent(Written(1, 36, 100.0))),
                     Reading(AsPercent(Written(2, 36, 100.0)))}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_P:2"}));
}

// Values up to 2 are neither clearly 0..1 nor clearly 0..100: the device's
// scale decides, and without it the reading fails.
TEST(SimulatorReadings, AnAmbiguousScaleIsRefusedUnlessTheDeviceGivesIt)
{
    SimulatorFolder folder;
    const std::vector<std::string> written = Written(1, 36, 1.8 / 0.8);
    const fs::path spectra = folder.Write("high.cgats", Cgats({Written(1, 36, 0.5), written}));
    folder.Configure(Section("AUTO", "high.cgats") + Section("ONE", "high.cgats", "scale = 1\n") +
                     Section("HUNDRED", "high.cgats", "scale = 100\n"));
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_AUTO SimulatedSpectrophotometer_HUNDRED "
                     "SimulatedSpectrophotometer_ONE",
                     std::string(kError) + spectra.string() +
                         ": the reflectance scale is ambiguous: the largest value, 1.58762, is high for 0..1 and low "
                         "for 0..100; give the device \"scale = 1\" or \"scale = 100\"",
                     Reading(AsFraction(Written(1, 36, 0.5))), Reading(AsFraction(written)),
                     Reading(AsPercent(Written(1, 36, 0.5)))}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_AUTO:1",
                              "measure:SimulatedSpectrophotometer_ONE:2",
                              "measure:SimulatedSpectrophotometer_HUNDRED:1"}));
}

TEST(SimulatorReadings, AFileFrom400To700NmExtendsItsEnds)
{
    SimulatorFolder folder;
    folder.Write("narrow.cgats", Cgats({Written(1, 31)}, 400, 700));
    folder.Configure(Section("N", "narrow.cgats"));
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_N", Reading(AsFraction(Written(1, 31), 2))}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_N:1"}));
}

TEST(SimulatorReadings, ASpectraFileThatCannotBeReadFailsTheReadingWithItsFileAndLine)
{
    SimulatorFolder folder;
    std::vector<std::string> broken = Written(2);
    broken[5] = "0,1x";
    const fs::path bad = folder.Write("bad.cgats", Cgats({Written(1), broken}));
    const fs::path narrow = folder.Write("narrow.cgats", Cgats({Written(1, 30)}, 400, 690));
    const fs::path emission = folder.Write("emission.cgats", Cgats({Written(1)}, 380, 730, "MEAS_TYPE\tEMISSION\n"));
    folder.Configure(Section("BAD", "bad.cgats") + Section("MISSING", "missing.cgats") +
                     Section("NARROW", "narrow.cgats") + Section("EMISSION", "emission.cgats"));
    EXPECT_EQ((Lines{std::string(kError) + bad.string() + ":7: the value \"0,1x\" of SPECTRAL_NM430 is not a number",
                     std::string(kError) + (folder.root / "missing.cgats").string() +
                         ": cannot read the spectra: No such file or directory",
                     std::string(kError) + narrow.string() +
                         ":4: no spectral field for 700 nm (fields such as SPECTRAL_NM400 ... SPECTRAL_NM700 are "
                         "needed at least)",
                     std::string(kError) + emission.string() +
                         ": holds emission data (MEAS_TYPE EMISSION), not reflectance"}),
              folder.RunHost({"fresh:BAD:1", "fresh:MISSING:1", "fresh:NARROW:1", "fresh:EMISSION:1"}));
}

// ---------------------------------------------------------------- malformed configurations

struct Malformed {
    const char* name;
    std::string content;
    // The line and the text of the message ("" for the file as a whole).
    std::string line;
    std::string text;
};

// Names the case in test listings.
void PrintTo(const Malformed& malformed, std::ostream* output)
{
    *output << malformed.name;
}

class SimulatorConfiguration : public ::testing::TestWithParam<Malformed> {};

// Reported by FindDevices (through the manager's search too, which it
// ends) and by IsDeviceAvailable, with the file and the line.
TEST_P(SimulatorConfiguration, AMalformedConfigurationIsReportedWithFileAndLine)
{
    SimulatorFolder folder;
    folder.Configure(GetParam().content);
    const std::string place = folder.Configuration().string() + GetParam().line;
    const std::string message = std::string(kError) + place + ": " + GetParam().text;
    EXPECT_EQ((Lines{message, message, message}), folder.RunHost({"devices", "find", "available:S"}));
}

const std::string kGood = Section("S", "s.cgats");

INSTANTIATE_TEST_SUITE_P(
    Simulator, SimulatorConfiguration,
    ::testing::Values(
        Malformed{"UnknownKey", kGood + "colour = red\n", ":8",
                  "unknown key \"colour\" (the keys are serial, name, transport, port, baud, spectra, scale, plugged, "
                  "control)"},
        Malformed{"MissingKey", "[device]\nserial = S\nname = N\ntransport = T\nport = P\nspectra = s.cgats\n", ":1",
                  "the [device] section lacks \"baud\""},
        Malformed{"KeyTwice", kGood + "name = again\n", ":8",
                  "\"name\" is given twice in this section (first on line 3)"},
        Malformed{"EmptyValue", "[device]\nserial =\n", ":2", "\"serial\" has no value"},
        Malformed{"SettingBeforeASection", "# devices\nserial = S\n" + kGood, ":2",
                  "\"serial\" stands before the first [device] section"},
        Malformed{"UnknownSection", kGood + "[printer]\n", ":8",
                  "unknown section [printer]: each device has a [device] section"},
        Malformed{"UnclosedHeading", "[device\n", ":1", "a section heading ends with \"]\": [device"},
        Malformed{"NoKeyValue", kGood + "plugged\n", ":8",
                  "expected \"key = value\" or a [device] heading, not \"plugged\""},
        Malformed{"BadBaud", Section("S", "s.cgats").replace(Section("S", "s.cgats").find("9600"), 4, "fast"), ":6",
                  "the baud rate \"fast\" is not a number of baud"},
        Malformed{"BadPlugged", kGood + "plugged = maybe\n", ":8", "plugged is \"yes\" or \"no\", not \"maybe\""},
        Malformed{"BadScale", kGood + "scale = 10\n", ":8", "scale is \"auto\", \"1\" or \"100\", not \"10\""},
        Malformed{"BadSerial", Section("S/1", "s.cgats"), ":2",
                  "the serial number \"S/1\" may hold letters, digits, \"-\", \"_\" and \".\" only"},
        Malformed{"SerialTwice", kGood + "\n" + Section("S", "t.cgats"), ":10",
                  "the serial number S is already the one of the device on line 1"},
        Malformed{"NoDevice", "# nothing yet\n\n", "", "names no device: give each device a [device] section"}),
    [](const ::testing::TestParamInfo<Malformed>& info) { return std::string(info.param.name); });

TEST(SimulatorConfigurationFile, AMissingConfigurationIsReported)
{
    SimulatorFolder folder;
    EXPECT_EQ((Lines{std::string(kError) + folder.Configuration().string() +
                     ": cannot read the configuration: No such file or directory"}),
              folder.RunHost({"find"}));
}

// A FIFO could hold the driver until someone writes to it, and a device
// could never end: only regular files are read.
TEST(SimulatorConfigurationFile, AFifoInsteadOfTheConfigurationIsRefusedWithoutWaiting)
{
    SimulatorFolder folder;
    ASSERT_EQ(0, mkfifo(folder.Configuration().c_str(), 0600));
    EXPECT_EQ((Lines{std::string(kError) + folder.Configuration().string() + ": is not a regular file"}),
              folder.RunHost({"find"}));
}

TEST(SimulatorReadings, AFifoInsteadOfTheSpectraIsRefusedWithoutWaiting)
{
    SimulatorFolder folder;
    const fs::path spectra = folder.root / "fifo.cgats";
    ASSERT_EQ(0, mkfifo(spectra.c_str(), 0600));
    folder.Configure(Section("F", "fifo.cgats"));
    EXPECT_EQ((Lines{"found: SimulatedSpectrophotometer_F", std::string(kError) + spectra.string() +
                                                                ": is not a regular file"}),
              folder.RunHost({"find", "measure:SimulatedSpectrophotometer_F:1"}));
}

// ---------------------------------------------------------------- the control file

// The plug state is the configuration's, changed by every "plug" and
// "unplug" of the control file: it holds for every later process, until
// the file says otherwise or is emptied.
TEST_F(SimulatorWithThreeSpectra, TheControlFileUnplugsAndPlugsTheDeviceForLaterProcesses)
{
    Append(folder.Control("S1"), "unplug\n");
    EXPECT_EQ((Lines{"available: no", "available: yes"}), folder.RunHost({"available:S1", "available:S2"}));
    Append(folder.Control("S1"), "# back again\nplug\nnonsense\n");
    EXPECT_EQ((Lines{"available: yes"}), folder.RunHost({"available:S1"}));
    // A line without its newline is not taken yet.
    Append(folder.Control("S1"), "unplug");
    EXPECT_EQ((Lines{"available: yes"}), folder.RunHost({"available:S1"}));
    Append(folder.Control("S1"), "\n");
    EXPECT_EQ((Lines{"available: no"}), folder.RunHost({"available:S1"}));
    WriteFile(folder.Control("S1"), "");
    EXPECT_EQ((Lines{"available: yes"}), folder.RunHost({"available:S1"}));
}

TEST_F(SimulatorWithThreeSpectra, TheControlFileCanBeNamedInTheConfiguration)
{
    folder.Configure(Section("S1", "three.cgats", "control = cable/s1.txt\nplugged = no\n"));
    fs::create_directories(folder.root / "cable");
    Append(folder.root / "cable" / "s1.txt", "plug\n");
    Append(folder.Control("S1"), "unplug\n");
    EXPECT_EQ((Lines{"available: yes"}), folder.RunHost({"available:S1"}));
}

// A control file that is a FIFO counts as missing: the device keeps its
// configured state and nothing waits for a writer.
TEST_F(SimulatorWithThreeSpectra, AFifoAsTheControlFileCountsAsMissing)
{
    folder.Configure(Section("S1", "three.cgats", "control = s1.fifo\nplugged = no\n") +
                     Section("S2", "three.cgats", "control = s2.fifo\n"));
    ASSERT_EQ(0, mkfifo((folder.root / "s1.fifo").c_str(), 0600));
    ASSERT_EQ(0, mkfifo((folder.root / "s2.fifo").c_str(), 0600));
    EXPECT_EQ((Lines{"available: no", "available: yes"}), folder.RunHost({"available:S1", "available:S2"}));
}

// A press reaches the callback registered through InstrumentEvents_V1 with
// the "MessageService", with the button's number; presses taken in
// together arrive one after the other.
TEST_F(SimulatorWithThreeSpectra, PressesReachTheCallbackThroughTheMessageService)
{
    RunningHost host(folder.Command({"find", "watch:SimulatedSpectrophotometer_S1:3"}));
    ASSERT_EQ("found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", host.Line());
    ASSERT_EQ("watching", host.Line());
    Append(folder.Control("S1"), "press\n");
    EXPECT_EQ("event: Button 1", host.Line());
    Append(folder.Control("S1"), "press 2\npress 3\n");
    EXPECT_EQ("event: Button 2", host.Line());
    EXPECT_EQ("event: Button 3", host.Line());
    Lines rest;
    EXPECT_EQ(0, host.Finish(rest));
    EXPECT_EQ(Lines{}, rest);
}

// What the control file held before the instrument was connected, and
// presses of another device, are no events of this one.
TEST_F(SimulatorWithThreeSpectra, OnlyPressesOfTheDeviceAfterItWasConnectedAreEvents)
{
    Append(folder.Control("S1"), "press 7\n");
    RunningHost host(folder.Command({"find", "watch:SimulatedSpectrophotometer_S1:1"}));
    ASSERT_EQ("found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", host.Line());
    ASSERT_EQ("watching", host.Line());
    Append(folder.Control("S2"), "press 9\n");
    Append(folder.Control("S1"), "press 8\n");
    EXPECT_EQ("event: Button 8", host.Line());
    Lines rest;
    EXPECT_EQ(0, host.Finish(rest));
}

// An unplugged device reports the loss of its connection, does not
// measure, ignores presses, and reports its return; then it reads on
// where it stopped.
TEST_F(SimulatorWithThreeSpectra, ADisconnectIsAnEventAndStopsTheReadings)
{
    RunningHost host(folder.Command({"find", "measure:SimulatedSpectrophotometer_S1:1",
                                     "watch:SimulatedSpectrophotometer_S1:1",
                                     "measure:SimulatedSpectrophotometer_S1:1",
                                     "watch:SimulatedSpectrophotometer_S1:2",
                                     "measure:SimulatedSpectrophotometer_S1:1"}));
    ASSERT_EQ("found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", host.Line());
    EXPECT_EQ(Sample(1), host.Line());
    ASSERT_EQ("watching", host.Line());
    Append(folder.Control("S1"), "unplug\n");
    EXPECT_EQ("event: Connection disconnected", host.Line());
    EXPECT_EQ(std::string(kError) + "Sim S1 (S1) is not plugged in", host.Line());
    ASSERT_EQ("watching", host.Line());
    Append(folder.Control("S1"), "press\nunplug\nplug\npress 4\n");
    // Taken in by one poll, they are posted in the order of its map.
    Lines events{host.Line(), host.Line()};
    std::sort(events.begin(), events.end());
    EXPECT_EQ((Lines{"event: Button 4", "event: Connection connected"}), events);
    EXPECT_EQ(Sample(2), host.Line());
    Lines rest;
    EXPECT_EQ(0, host.Finish(rest));
    EXPECT_EQ(Lines{}, rest);
}

// ---------------------------------------------------------------- the console message service

TEST_F(SimulatorWithThreeSpectra, TheMessageServiceEchoesEachEventWhenAsked)
{
    RunningHost host(folder.Command({"find", "watch:SimulatedSpectrophotometer_S1:2"}, "QVIMANAGER_MESSAGES=stdout"));
    ASSERT_EQ("found: SimulatedSpectrophotometer_S1 SimulatedSpectrophotometer_S2", host.Line());
    ASSERT_EQ("watching", host.Line());
    Append(folder.Control("S1"), "press 5\n");
    EXPECT_EQ("MessageService: Button = 5", host.Line());
    EXPECT_EQ("event: Button 5", host.Line());
    Append(folder.Control("S1"), "unplug\n");
    EXPECT_EQ("MessageService: Connection = disconnected", host.Line());
    EXPECT_EQ("event: Connection disconnected", host.Line());
    Lines rest;
    EXPECT_EQ(0, host.Finish(rest));
    EXPECT_EQ(Lines{}, rest);
}

// ---------------------------------------------------------------- the bundled configuration

// The configuration beside the plug-in in the build tree: the 24-patch
// chart on a plugged device, and an unplugged one.
// Both are copied into the test's folder, so that their control files are
// the test's own: the one of the build tree (which names the chart in the
// source tree), and the one of the source tree with the chart where it
// names it, in the folder "samples" beside its own.
TEST(SimulatorBundled, TheBundledConfigurationsReadTheChart)
{
    SimulatorFolder folder;
    const std::string chart = std::string(QVIMANAGER_SAMPLE_DIR) + "/" + kChart;
    const std::vector<std::array<float, 36>> expected = ChartReadings(chart);
    fs::copy_file(QVIMANAGER_BUILD_TREE_SIMULATOR_CONFIG, folder.root / "build_tree.conf");
    fs::create_directories(folder.root / "data" / "simulator");
    fs::create_directories(folder.root / "data" / "samples");
    fs::copy_file(QVIMANAGER_SOURCE_SIMULATOR_CONFIG, folder.root / "data" / "simulator" / "source.conf");
    fs::copy_file(chart, folder.root / "data" / "samples" / kChart);
    for (const fs::path& configuration :
         {folder.root / "build_tree.conf", folder.root / "data" / "simulator" / "source.conf"}) {
        SCOPED_TRACE(configuration.string());
        EXPECT_EQ((Lines{"device: SIM-0001 name=Simulated Spectrophotometer driver=SimulatedSpectrophotometer "
                         "transport=Simulated port=sim-1 baud=115200 available=yes",
                         "device: SIM-0002 name=Simulated Spectrophotometer (spare) driver=SimulatedSpectrophotometer "
                         "transport=Simulated port=sim-2 baud=115200 available=no",
                         "found: SimulatedSpectrophotometer_SIM-0001 SimulatedSpectrophotometer_SIM-0002",
                         Reading(expected[0]), Reading(expected[1])}),
                  folder.Run({"devices", "find", "measure:SimulatedSpectrophotometer_SIM-0001:2"},
                             "QVIMANAGER_SIMULATOR='" + configuration.string() + "'"));
    }
}

} // namespace
