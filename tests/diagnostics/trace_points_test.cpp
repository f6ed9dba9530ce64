// Trace points (trace.h): the run-time switch, the filter files deciding per
// site, the lines the macros write, the texts of traced values, and that a
// trace point that is off makes nothing: no trace object, no publisher, no
// file, no rendered value.
//
// Each test runs in its own process and a scratch working directory of its
// own (tracing_support.h), and sets QVIMANAGER_TRACE itself before the first
// trace point is reached: the switch is read once.

#include "qvimanager/cmetry/cmetry_service.h"
#include "qvimanager/cmetry/measure_conditions.h"
#include "qvimanager/cmetry/spectrum.h"
#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/diagnostics/win_debug_publisher.h"
#include "qvimanager/foundation/string.h"

#include "tracing_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using TracingSupport::ScratchWorkingDirectory;

// A value that counts how often its value string is asked for.
struct Counted {
    Diagnostics::String GetValueString() const
    {
        ++asked;
        return Diagnostics::String("counted");
    }
    static int asked;
};
int Counted::asked = 0;

namespace Probe {

enum class Shade { Light, Dark };

// Found by argument-dependent lookup, as the engine's enumerations' are.
Diagnostics::String GetValueString(Shade shade)
{
    return Diagnostics::String(shade == Shade::Light ? "Shade light" : "Shade dark");
}

} // namespace Probe

// The traced functions of the tests: package "Probe", classes "Alpha" and
// "Beta".
class Alpha {
public:
    int Twice(int value, const char* label)
    {
        QVI_TRACE_BEGIN(this, "Probe", "Alpha", "Twice");
        QVI_TRACE_PARAMETER("value", value);
        QVI_TRACE_PARAMETER("label", label);
        QVI_TRACE_CALL();
        const int result = 2 * value;
        QVI_TRACE_RETURN(result);
        return result;
    }

    void Plain()
    {
        QVI_TRACE(this, "Probe", "Alpha", "Plain");
    }

    void Outer()
    {
        QVI_TRACE(this, "Probe", "Alpha", "Outer");
        Plain();
    }

    void Counting()
    {
        QVI_TRACE_BEGIN(this, "Probe", "Alpha", "Counting");
        QVI_TRACE_PARAMETER("counted", Counted());
        QVI_TRACE_CALL();
        QVI_TRACE_MESSAGE(this, "Probe", "Alpha", "Counting", "message of ", Counted());
    }
};

class Beta {
public:
    static void Static()
    {
        QVI_TRACE(nullptr, "Probe", "Beta", "Static");
    }

    static void Say(const char* text, long number)
    {
        QVI_TRACE_MESSAGE(nullptr, "Probe", "Beta", "Say", text, number, " done");
    }
};

void FreeFunction()
{
    QVI_TRACE(nullptr, "Probe", "", "FreeFunction");
}

std::string Hex(const void* object)
{
    std::ostringstream text;
    text << "0x" << std::hex << reinterpret_cast<std::uintptr_t>(object);
    return text.str();
}

class TracePoints : public ScratchWorkingDirectory {
protected:
    // Sets the switch's variable for this process; nullptr removes it.
    static void Switch(const char* value)
    {
        if (value == nullptr) {
            unsetenv("QVIMANAGER_TRACE");
        } else {
            setenv("QVIMANAGER_TRACE", value, 1);
        }
    }

    bool OutputExists() const
    {
        return std::filesystem::exists(In("DebugOutput.txt"));
    }

    std::vector<std::string> Lines() const
    {
        std::vector<std::string> lines;
        std::istringstream text(Content("DebugOutput.txt"));
        std::string line;
        while (std::getline(text, line)) {
            lines.push_back(line);
        }
        return lines;
    }
};

// The switch.

TEST_F(TracePoints, WithoutTheVariableNothingIsTracedAndNoFileIsMade)
{
    Switch(nullptr);
    Alpha alpha;
    EXPECT_EQ(8, alpha.Twice(4, "four"));
    alpha.Outer();
    Beta::Static();
    Beta::Say("x", 1);
    FreeFunction();
    EXPECT_FALSE(Diagnostics::TraceSwitch::IsOn());
    EXPECT_FALSE(OutputExists());
}

TEST_F(TracePoints, WithoutTheVariableNoFilterFileIsRead)
{
    Switch(nullptr);
    Put("PackageDiagnosticsFilter.txt", "Other\n");
    Alpha().Plain();
    EXPECT_FALSE(TracingSupport::FilterState::ListsExist());
}

TEST_F(TracePoints, ZeroAndEmptyLeaveTracingOff)
{
    Switch("0");
    EXPECT_FALSE(Diagnostics::TraceSwitch::IsOn());
    Alpha().Plain();
    EXPECT_FALSE(OutputExists());
}

TEST_F(TracePoints, AnEmptyValueLeavesTracingOff)
{
    Switch("");
    Alpha().Plain();
    EXPECT_FALSE(Diagnostics::TraceSwitch::IsOn());
    EXPECT_FALSE(OutputExists());
}

TEST_F(TracePoints, TheVariableIsReadOnce)
{
    Switch(nullptr);
    Alpha().Plain();
    Switch("1");
    Alpha().Plain();
    EXPECT_FALSE(Diagnostics::TraceSwitch::IsOn());
    EXPECT_FALSE(OutputExists());
}

// The lines.

TEST_F(TracePoints, WithTheVariableAndNoFilterFilesEverythingIsTraced)
{
    Switch("1");
    Alpha alpha;
    EXPECT_EQ(8, alpha.Twice(4, "four"));
    Beta::Static();
    FreeFunction();
    const std::string object = Hex(&alpha);
    const std::vector<std::string> expected = {
        "CALL - " + object + " - Probe::Alpha::Twice - ( value:4, label:four )",
        "RETURN - " + object + " - Probe::Alpha::Twice - {8}",
        "CALL - Probe::Beta::Static - ()",
        "RETURN - Probe::Beta::Static",
        "CALL - Probe::FreeFunction - ()",
        "RETURN - Probe::FreeFunction",
    };
    EXPECT_EQ(expected, Lines());
}

TEST_F(TracePoints, AnyValueButZeroSwitchesItOn)
{
    Switch("yes");
    Beta::Static();
    EXPECT_EQ(2u, Lines().size());
}

TEST_F(TracePoints, NestedTracePointsAreIndented)
{
    Switch("1");
    Alpha alpha;
    alpha.Outer();
    const std::string object = Hex(&alpha);
    const std::vector<std::string> expected = {
        "CALL - " + object + " - Probe::Alpha::Outer - ()",
        "| CALL - " + object + " - Probe::Alpha::Plain - ()",
        "| RETURN - " + object + " - Probe::Alpha::Plain",
        "RETURN - " + object + " - Probe::Alpha::Outer",
    };
    EXPECT_EQ(expected, Lines());
}

TEST_F(TracePoints, AMessageIsOneLineOfItsJoinedPieces)
{
    Switch("1");
    Beta::Say("Component ", 3);
    const std::vector<std::string> expected = {"Component 3 done"};
    EXPECT_EQ(expected, Lines());
}

TEST_F(TracePoints, AMessageWithinATracedCallIsIndentedByTwoBlanks)
{
    Switch("1");
    Alpha alpha;
    alpha.Counting();
    const std::string object = Hex(&alpha);
    const std::vector<std::string> expected = {
        "CALL - " + object + " - Probe::Alpha::Counting - ( counted:counted )",
        "  message of counted",
        "RETURN - " + object + " - Probe::Alpha::Counting",
    };
    EXPECT_EQ(expected, Lines());
}

// The filter files decide per package and class.

TEST_F(TracePoints, AFilteredPackageMakesNoPublisherAndNoFile)
{
    Put("PackageDiagnosticsFilter.txt", "Probe\n");
    Switch("1");
    Alpha().Twice(1, "one");
    Beta::Say("x", 1);
    FreeFunction();
    EXPECT_FALSE(OutputExists());
    EXPECT_TRUE(TracingSupport::FilterState::ListsExist());
}

TEST_F(TracePoints, AFilteredClassIsLeftOutAndTheOthersAreTraced)
{
    Put("ClassDiagnosticsFilter.txt", "Alpha\n");
    Switch("1");
    Alpha().Outer();
    Beta::Static();
    const std::vector<std::string> expected = {"CALL - Probe::Beta::Static - ()", "RETURN - Probe::Beta::Static"};
    EXPECT_EQ(expected, Lines());
}

TEST_F(TracePoints, ShowOnlyTracesTheListedClassAlone)
{
    Put("ClassDiagnosticsFilter.txt", "{ShowOnly}\nBeta\n");
    Switch("1");
    Alpha().Outer();
    Beta::Static();
    FreeFunction();
    const std::vector<std::string> expected = {"CALL - Probe::Beta::Static - ()", "RETURN - Probe::Beta::Static"};
    EXPECT_EQ(expected, Lines());
}

TEST_F(TracePoints, ASiteKeepsItsDecisionThoughTheFileChanges)
{
    Switch("1");
    Beta::Static();
    Put("ClassDiagnosticsFilter.txt", "Beta\n");
    Beta::Static();
    EXPECT_EQ(4u, Lines().size());
}

// Nothing is rendered for a trace point that is off.

TEST_F(TracePoints, ValuesAreNotRenderedWhenTheSwitchIsOff)
{
    Switch(nullptr);
    Counted::asked = 0;
    Alpha().Counting();
    EXPECT_EQ(0, Counted::asked);
}

TEST_F(TracePoints, ValuesAreNotRenderedWhenTheClassIsFilteredOut)
{
    Put("ClassDiagnosticsFilter.txt", "Alpha\n");
    Switch("1");
    Counted::asked = 0;
    Alpha().Counting();
    EXPECT_EQ(0, Counted::asked);
    EXPECT_FALSE(OutputExists());
}

TEST_F(TracePoints, ValuesAreRenderedOnceEachWhenTraced)
{
    Switch("1");
    Counted::asked = 0;
    Alpha().Counting();
    EXPECT_EQ(2, Counted::asked);
}

// The end of the process: once the kit has gone, nothing traces, and the
// file is neither made anew nor emptied.

TEST_F(TracePoints, AfterTheSwitchClosesNothingIsTracedAndTheFileStays)
{
    Switch("1");
    Beta::Static();
    ASSERT_EQ(2u, Lines().size());
    Diagnostics::TraceSwitch::Close();
    EXPECT_FALSE(Diagnostics::TraceSwitch::IsOn());
    Beta::Static();
    Beta::Say("late", 1);
    Alpha().Plain();
    EXPECT_EQ(2u, Lines().size());
}

// Several threads reach the same trace points at once: every call is
// traced whole (the thread sanitizer runs this too).

TEST_F(TracePoints, ThreadsReachingTheSameSitesAtOnce)
{
    Switch("1");
    constexpr int kThreads = 4;
    constexpr int kCalls = 50;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < kCalls; ++i) {
                Beta::Static();
                Beta::Say("say ", i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    int calls = 0;
    int says = 0;
    for (const std::string& line : Lines()) {
        calls += line.find("CALL - Probe::Beta::Static - ()") != std::string::npos ? 1 : 0;
        says += line.find("say ") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(kThreads * kCalls, calls);
    EXPECT_EQ(kThreads * kCalls, says);
}

// The texts of traced values.

TEST(TraceText, Numbers)
{
    EXPECT_STREQ("-3", Diagnostics::TraceText(-3).c_str());
    EXPECT_STREQ("-3", Diagnostics::TraceText(static_cast<short>(-3)).c_str());
    EXPECT_STREQ("-3", Diagnostics::TraceText(-3L).c_str());
    EXPECT_STREQ("7", Diagnostics::TraceText(7u).c_str());
    EXPECT_STREQ("7", Diagnostics::TraceText(static_cast<unsigned short>(7)).c_str());
    EXPECT_STREQ("7", Diagnostics::TraceText(std::size_t{7}).c_str());
    EXPECT_STREQ("0.5", Diagnostics::TraceText(0.5).c_str());
    EXPECT_STREQ("0.100000001490116", Diagnostics::TraceText(0.1f).c_str());
    EXPECT_STREQ("true", Diagnostics::TraceText(true).c_str());
    EXPECT_STREQ("false", Diagnostics::TraceText(false).c_str());
}

TEST(TraceText, TextsAndPointers)
{
    EXPECT_STREQ("abc", Diagnostics::TraceText("abc").c_str());
    const char* const none = nullptr;
    EXPECT_STREQ("", Diagnostics::TraceText(none).c_str());
    int value = 0;
    EXPECT_EQ(Hex(&value), Diagnostics::TraceText(static_cast<const void*>(&value)).c_str());
    EXPECT_STREQ("", Diagnostics::TraceText(static_cast<const void*>(nullptr)).c_str());
}

TEST(TraceText, ValuesWithAValueString)
{
    EXPECT_STREQ("name", Diagnostics::TraceText(Utilities::String("name")).c_str());
    EXPECT_STREQ("Shade dark", Diagnostics::TraceText(Probe::Shade::Dark).c_str());
    EXPECT_STREQ("valid", Diagnostics::TraceText(CMetry::QVSpectrum()).c_str());
    EXPECT_STREQ("CMetryService", Diagnostics::TraceText(CMetry::CMetryService()).c_str());
}

TEST(TraceText, JoinPutsThePiecesTogether)
{
    EXPECT_STREQ("a1-2.5true", Diagnostics::TraceJoin("a", 1, "-", 2.5, true).c_str());
    EXPECT_STREQ("", Diagnostics::TraceJoin().c_str());
}

// A trace point of the library: CMetryService::GetVector, with the colour
// space and the three values of its result.

TEST_F(TracePoints, TheServicesGetVectorIsTracedWithItsResult)
{
    Switch("1");
    Put("ClassDiagnosticsFilter.txt", "{ShowOnly}\nCMetryService\n");
    float reflectance[CMetry::QVSpectrum::NumberOfDataPoints];
    for (float& value : reflectance) {
        value = 0.5f;
    }
    const CMetry::QVSpectrum spectrum(reflectance);
    CMetry::QVMeasureConditions conditions;
    conditions.SetMeasureCondition(Utilities::String("ColorSpaceDescription.Type"), Utilities::String("CIELab"));
    const CMetry::QVColorVector lab = CMetry::CMetryService::GetVector(spectrum, conditions);
    const std::vector<std::string> lines = Lines();
    ASSERT_EQ(2u, lines.size()) << Content("DebugOutput.txt");
    EXPECT_EQ("CALL - CMetry::CMetryService::GetVector - ( spectrum:valid, ColorSpace:CIELab )", lines[0]);
    const std::string values = std::string(Diagnostics::String(lab[0]).c_str()) + ", " +
                               Diagnostics::String(lab[1]).c_str() + ", " + Diagnostics::String(lab[2]).c_str();
    EXPECT_EQ("RETURN - CMetry::CMetryService::GetVector - {" + values + "}", lines[1]);
}

} // namespace
