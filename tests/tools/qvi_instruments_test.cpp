// qvi instruments and qvi measure, end to end: the qvi of the build with
// the plug-ins that ship beside it (the simulated spectrophotometer, the
// console MessageService, the "Preferences" store), each test with a
// device configuration, control files and a preferences file of its own in
// a scratch folder.

#include "tests/support/scan_folder.h"
#include "tests/tools/qvi_harness.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace qvi_test;

const std::string kChartFile = std::string(QVIMANAGER_SAMPLE_DIR) + "/chart24_babelcolor_avg.cgats";
const std::string kDevice = "SimulatedSpectrophotometer_SIM-1";
const std::string kSpare = "SimulatedSpectrophotometer_SIM-2";

// A scratch folder with a configuration of two devices reading the
// 24-patch chart (SIM-1 plugged in, SIM-2 not), their control files and a
// preferences file.
class QviInstruments : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "qvi-instruments-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        folder = pattern;
        std::ofstream config(folder / "devices.conf");
        config << "[device]\nserial = SIM-1\nname = Bench unit\ntransport = USB\nport = usb-3\nbaud = 9600\n"
               << "spectra = " << kChartFile << "\n\n"
               << "[device]\nserial = SIM-2\nname = Spare unit\ntransport = Serial\nport = ttyS1\nbaud = 19200\n"
               << "spectra = " << kChartFile << "\nplugged = no\n";
    }
    void TearDown() override
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    Strings Environment() const
    {
        return {"QVIMANAGER_SIMULATOR=" + (folder / "devices.conf").string(),
                "QVIMANAGER_PREFERENCES=" + (folder / "preferences.ini").string(), "QVIMANAGER_MESSAGES",
                "QVIMANAGER_TRACE"};
    }
    Outcome Run(const Strings& arguments) const
    {
        return Qvi(arguments, folder.string(), "/dev/null", Environment());
    }
    void Control(const std::string& serial, const std::string& line) const
    {
        std::ofstream control(folder / (serial + ".control"), std::ios::app);
        control << line << "\n";
    }

    fs::path folder;
};

// The rows of a table of qvi (after its header line), split at blanks.
std::vector<Strings> TableRows(const std::string& text)
{
    std::vector<Strings> rows;
    std::istringstream lines(text);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) && !line.empty()) {
        std::istringstream words(line);
        Strings row;
        std::string word;
        while (words >> word) {
            row.push_back(word);
        }
        rows.push_back(row);
    }
    return rows;
}

// The colour values of the first `count` patches of the chart, as qvi color
// gives them with `options`.
std::vector<Strings> ChartValues(std::size_t count, const Strings& options)
{
    Strings arguments = {"color", kChartFile, "--format", "csv"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = Qvi(arguments);
    EXPECT_EQ(0, outcome.status) << outcome;
    std::vector<Strings> values;
    std::istringstream lines(outcome.out);
    std::string line;
    std::getline(lines, line);
    while (values.size() < count && std::getline(lines, line)) {
        Strings fields;
        std::istringstream cells(line);
        std::string cell;
        while (std::getline(cells, cell, ',')) {
            fields.push_back(cell);
        }
        // SAMPLE_ID, SAMPLE_NAME, then the three values.
        values.push_back(Strings(fields.end() - 3, fields.end()));
    }
    return values;
}

std::vector<Strings> MeasuredValues(const std::string& csv)
{
    std::vector<Strings> values;
    std::istringstream lines(csv);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        Strings fields;
        std::istringstream cells(line);
        std::string cell;
        while (std::getline(cells, cell, ',')) {
            fields.push_back(cell);
        }
        values.push_back(Strings(fields.begin() + 1, fields.end()));
    }
    return values;
}

TEST_F(QviInstruments, InstrumentsListsTheDriverItsDevicesAndNoRecentOne)
{
    const Outcome outcome = Run({"instruments"});
    ASSERT_EQ(0, outcome.status) << outcome;
    const std::vector<Strings> rows = TableRows(outcome.out);
    ASSERT_GE(rows.size(), 2u) << outcome;
    EXPECT_EQ((Strings{"SimulatedSpectrophotometer", kDevice, "Bench", "unit", "SIM-1", "USB", "usb-3", "yes"}),
              rows[0]);
    EXPECT_EQ((Strings{"SimulatedSpectrophotometer", kSpare, "Spare", "unit", "SIM-2", "Serial", "ttyS1", "no"}),
              rows[1]);
    EXPECT_NE(std::string::npos, outcome.out.find("recent:  none")) << outcome;
}

TEST_F(QviInstruments, InstrumentsAsCgatsOnRequest)
{
    const Outcome outcome = Run({"instruments", "--format", "cgats"});
    ASSERT_EQ(0, outcome.status) << outcome;
    EXPECT_EQ(0u, outcome.out.rfind("CGATS.17", 0)) << outcome;
    EXPECT_NE(std::string::npos, outcome.out.find("DEVICE_KEY")) << outcome;
}

TEST_F(QviInstruments, MeasureGivesTheReadingsInFileOrderAsQviColorComputesThem)
{
    const Outcome outcome = Run({"measure", "--device", kDevice, "--count", "3", "--format", "csv"});
    ASSERT_EQ(0, outcome.status) << outcome;
    EXPECT_EQ(ChartValues(3, {}), MeasuredValues(outcome.out));
    EXPECT_EQ(0u, outcome.out.rfind("SAMPLE_ID,LAB_L,LAB_A,LAB_B\n1,", 0)) << outcome;
}

TEST_F(QviInstruments, MeasureTakesTheColourOptionsOfColor)
{
    const Strings options = {"--space", "CIELCh", "--illuminant", "D50", "--observer", "10", "--decimals", "6"};
    Strings arguments = {"measure", "--device", kDevice, "--count", "2", "--format", "csv"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Outcome outcome = Run(arguments);
    ASSERT_EQ(0, outcome.status) << outcome;
    EXPECT_EQ(ChartValues(2, options), MeasuredValues(outcome.out));
}

TEST_F(QviInstruments, MeasureNamesTheInstrumentAndTheConditionsInItsHeader)
{
    const Outcome outcome = Run({"measure", "--device", kDevice});
    ASSERT_EQ(0, outcome.status) << outcome;
    EXPECT_NE(std::string::npos, outcome.out.find("INSTRUMENT\t\"" + kDevice + "\"")) << outcome;
    EXPECT_NE(std::string::npos, outcome.out.find("ILLUMINATION\t\"D65\"")) << outcome;
    EXPECT_NE(std::string::npos, outcome.out.find("NUMBER_OF_SETS\t1")) << outcome;
}

TEST_F(QviInstruments, TheRecentInstrumentIsRememberedAcrossRuns)
{
    ASSERT_EQ(1, Run({"measure"}).status);
    ASSERT_EQ(0, Run({"measure", "--device", kDevice, "--count", "2"}).status);
    const Outcome listed = Run({"instruments"});
    EXPECT_NE(std::string::npos, listed.out.find("recent:  Bench unit_SIM-1 (SimulatedSpectrophotometer)")) << listed;
    // A new process: the recent instrument, from its first reading again.
    const Outcome outcome = Run({"measure", "--format", "csv"});
    ASSERT_EQ(0, outcome.status) << outcome;
    EXPECT_EQ(ChartValues(1, {}), MeasuredValues(outcome.out));
}

TEST_F(QviInstruments, WithoutARecentInstrumentMeasureSaysWhatToDo)
{
    const Outcome outcome = Run({"measure"});
    EXPECT_EQ(1, outcome.status) << outcome;
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ("qvi: no instrument was used yet: name one with --device KEY (qvi instruments lists them)\n",
              outcome.err);
}

TEST_F(QviInstruments, AnUnknownDeviceIsRefused)
{
    const Outcome outcome = Run({"measure", "--device", "SimulatedSpectrophotometer_SIM-9"});
    EXPECT_EQ(1, outcome.status) << outcome;
    EXPECT_EQ("qvi: --device SimulatedSpectrophotometer_SIM-9: no such device (qvi instruments lists them)\n",
              outcome.err);
    EXPECT_FALSE(fs::exists(folder / "preferences.ini"));
}

TEST_F(QviInstruments, AnUnpluggedDeviceGivesTheDriversTextAndIsNotRemembered)
{
    const Outcome outcome = Run({"measure", "--device", kSpare});
    EXPECT_EQ(1, outcome.status) << outcome;
    EXPECT_EQ("", outcome.out);
    EXPECT_EQ(0u, outcome.err.rfind("qvi: " + kSpare + ", reading 1: Error in SimulatedSpectrophotometer", 0))
        << outcome;
    EXPECT_FALSE(fs::exists(folder / "preferences.ini"));
}

TEST_F(QviInstruments, ABrokenConfigurationIsReported)
{
    std::ofstream(folder / "devices.conf") << "[device]\nserial = SIM-1\n";
    const Outcome outcome = Run({"instruments"});
    EXPECT_EQ(1, outcome.status) << outcome;
    EXPECT_EQ(0u, outcome.err.rfind("qvi: driver SimulatedSpectrophotometer: Error in SimulatedSpectrophotometer", 0))
        << outcome;
}

TEST_F(QviInstruments, WrongCountsAndOptionsAreRefused)
{
    for (const char* count : {"0", "-1", "x", "1000001", ""}) {
        const Outcome outcome = Run({"measure", "--device", kDevice, "--count", count});
        EXPECT_EQ(2, outcome.status) << count << "\n" << outcome;
    }
    EXPECT_EQ(2, Run({"color", kChartFile, "--device", kDevice}).status);
    EXPECT_EQ(2, Run({"measure", "--scale", "100"}).status);
    EXPECT_EQ(2, Run({"instruments", "extra"}).status);
}

TEST_F(QviInstruments, TheRecentInstrumentNoLongerThereIsNamed)
{
    ASSERT_EQ(0, Run({"measure", "--device", kDevice}).status);
    Control("SIM-1", "unplug");
    const Outcome outcome = Run({"measure"});
    EXPECT_EQ(1, outcome.status) << outcome;
    EXPECT_EQ("qvi: the instrument used last, Bench unit_SIM-1 (SimulatedSpectrophotometer), is not available: "
              "name one with --device KEY (qvi instruments lists them)\n",
              outcome.err);
    EXPECT_EQ("", outcome.out);
}

TEST_F(QviInstruments, TheTextsOfAWrongCommandLine)
{
    const std::vector<std::pair<Strings, std::string>> cases = {
        {{"measure", "--count", "0"}, "qvi: --count: \"0\" is not a whole number from 1 to 1000000\n"},
        {{"measure", "--count", "1000001"}, "qvi: --count: \"1000001\" is not a whole number from 1 to 1000000\n"},
        {{"measure", "--device", ""}, "qvi: --device needs a device key (qvi instruments lists them)\n"},
        {{"color", kChartFile, "--device", kDevice},
         "qvi: --device does not apply to qvi color: it sets the device to measure with, for measure\n"},
        {{"color", kChartFile, "--wait-button"},
         "qvi: --wait-button does not apply to qvi color: it sets a reading per button press, for measure\n"},
        {{"instruments", "--count", "2"},
         "qvi: --count does not apply to qvi instruments: it sets the number of readings, for measure\n"},
        {{"measure", "--scale", "100"},
         "qvi: --scale does not apply to qvi measure: it sets how reflectance in the input files is read, for "
         "color, delta-e, density and cct\n"},
    };
    for (const auto& [arguments, expected] : cases) {
        SCOPED_TRACE(arguments[0] + " " + arguments[1]);
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(2, outcome.status) << outcome;
        EXPECT_EQ(expected + "Try `qvi --help`.\n", outcome.err);
    }
    const Outcome extra = Run({"instruments", "extra"});
    EXPECT_EQ(2, extra.status) << extra;
    EXPECT_EQ("qvi: qvi instruments takes 0 arguments; see qvi instruments --help\n", extra.err);
    const Outcome file = Run({"measure", kChartFile});
    EXPECT_EQ(2, file.status) << file;
    EXPECT_EQ("qvi: qvi measure takes 0 arguments; see qvi measure --help\n", file.err);
}

// qvi copied beside test drivers of its own choosing (and a test
// "Preferences" store), for what the simulated driver never does.
class QviWithTestDrivers : public ::testing::Test {
protected:
    QviWithTestDrivers() : folder(kQvi)
    {
        folder.Add("preferences_no_case");
    }

    // qvi's standard output and error, and its exit status as the last
    // line ("status: N").
    Strings Run(const Strings& arguments)
    {
        std::string line = "cd '" + folder.root.string() + "' && QVI_TEST_PREFERENCES='" +
                           (folder.root / "preferences.txt").string() + "' '" + (folder.root / "host").string() + "'";
        for (const std::string& argument : arguments) {
            line += " '" + argument + "'";
        }
        line += " 2>&1; echo \"status: $?\"";
        FILE* const pipe = popen(line.c_str(), "r");
        if (pipe == nullptr) {
            ADD_FAILURE() << "cannot run qvi";
            return {};
        }
        const Strings output = TestSupport::OutputLines(pipe);
        pclose(pipe);
        return output;
    }

    TestSupport::ScanFolder folder;
};

TEST_F(QviWithTestDrivers, ADeviceWhoseDriverTakesNoReadingsIsRefused)
{
    folder.Add("driver_two_devices");
    EXPECT_EQ((Strings{"qvi: TwoDeviceDriver_1002 takes no readings: its driver offers no Measurement_V1",
                       "status: 1"}),
              Run({"measure", "--device", "TwoDeviceDriver_1002"}));
}

TEST_F(QviWithTestDrivers, ADriverWithoutDevicesHasARowOfItsOwn)
{
    folder.Add("driver_no_finder");
    folder.Add("driver_two_devices");
    const Strings output = Run({"instruments", "--format", "csv"});
    EXPECT_EQ((Strings{"DRIVER,DEVICE_KEY,NAME,SERIAL,TRANSPORT,PORT,AVAILABLE", "NoFinderDriver,,,,,,",
                       "TwoDeviceDriver,TwoDeviceDriver_1001,Sim A,1001,USB,usb-Sim A,yes",
                       "TwoDeviceDriver,TwoDeviceDriver_1002,Sim B,1002,USB,usb-Sim B,yes",
                       // CSV holds the table only: the summary goes to standard error.
                       "drivers: 2", "devices: 2", "recent: none", "status: 0"}),
              output);
}

TEST_F(QviWithTestDrivers, ADeviceWithoutSerialNumberStopsTheSearch)
{
    folder.Add("driver_serial_less");
    EXPECT_EQ((Strings{"qvi: searching the instruments: Incorrect device- map", "status: 1"}),
              Run({"measure", "--device", "SerialLessDriver_1"}));
}

// qvi measure --wait-button in the background; the test presses the button
// through the device's control file once qvi asks for the press.
class Background {
public:
    Background(const Strings& arguments, const fs::path& folder, const Strings& environment)
        : outPath((folder / "measure.out").string()), errPath((folder / "measure.err").string())
    {
        Strings words;
        std::vector<char*> argv = QviArgv(words, arguments);
        child = fork();
        if (child == 0) {
            SetEnvironment(environment);
            const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            if (out < 0 || err < 0 || chdir(folder.c_str()) != 0 || dup2(out, STDOUT_FILENO) < 0 ||
                dup2(err, STDERR_FILENO) < 0) {
                _exit(126);
            }
            execv(kQvi.c_str(), argv.data());
            _exit(127);
        }
    }
    ~Background()
    {
        if (child > 0 && !ended) {
            kill(child, SIGKILL);
            Wait();
        }
    }

    // Waits (30 s at most, against a hang) until standard error holds
    // `text` `times` times.
    bool WaitForError(const std::string& text, int times) const
    {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (std::chrono::steady_clock::now() < deadline) {
            const std::string err = ReadText(errPath);
            int found = 0;
            for (std::size_t at = err.find(text); at != std::string::npos; at = err.find(text, at + 1)) {
                ++found;
            }
            if (found >= times) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return false;
    }
    int Wait()
    {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        ended = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    static std::string ReadText(const std::string& path)
    {
        std::ifstream file(path);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    std::string outPath;
    std::string errPath;
    pid_t child = -1;
    bool ended = false;
};

TEST_F(QviInstruments, WaitButtonTakesAReadingPerPress)
{
    Background measure({"measure", "--device", kDevice, "--count", "2", "--wait-button", "--format", "csv"}, folder,
                       Environment());
    const std::string ask = "press the button of " + kDevice;
    ASSERT_TRUE(measure.WaitForError(ask + " (reading 1 of 2)", 1)) << Background::ReadText(measure.errPath);
    Control("SIM-1", "press");
    ASSERT_TRUE(measure.WaitForError(ask + " (reading 2 of 2)", 1)) << Background::ReadText(measure.errPath);
    Control("SIM-1", "press");
    ASSERT_EQ(0, measure.Wait()) << Background::ReadText(measure.errPath);
    EXPECT_EQ(ChartValues(2, {}), MeasuredValues(Background::ReadText(measure.outPath)));
}

TEST_F(QviInstruments, ADisconnectWhileWaitingEndsTheRun)
{
    Background measure({"measure", "--device", kDevice, "--wait-button"}, folder, Environment());
    ASSERT_TRUE(measure.WaitForError("press the button of " + kDevice, 1)) << Background::ReadText(measure.errPath);
    Control("SIM-1", "unplug");
    EXPECT_EQ(1, measure.Wait());
    EXPECT_NE(std::string::npos,
              Background::ReadText(measure.errPath).find("qvi: " + kDevice + ", reading 1: the instrument was disconnected"))
        << Background::ReadText(measure.errPath);
    EXPECT_EQ("", Background::ReadText(measure.outPath));
    EXPECT_FALSE(fs::exists(folder / "preferences.ini"));
}

} // namespace
