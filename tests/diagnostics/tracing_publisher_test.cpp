// The DiagnosticKit's publisher slots and indent, the life of publishers,
// the WinDebugPublisher's file, the end of the process and tracing from
// several threads at once.

#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/function_id.h"
#include "qvimanager/diagnostics/log_item.h"
#include "qvimanager/diagnostics/memory_manager.h"
#include "qvimanager/diagnostics/publisher.h"
#include "qvimanager/diagnostics/trace_item.h"
#include "qvimanager/diagnostics/win_debug_publisher.h"

#include "tracing_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using Diagnostics::CallLogItem;
using Diagnostics::DebugTraceItem;
using Diagnostics::DiagnosticKit;
using Diagnostics::FunctionID;
using Diagnostics::ObjectID;
using Diagnostics::StringPublisher;
using Diagnostics::TraceItem;
using Diagnostics::WinDebugPublisher;
using TracingSupport::FilterState;
using TracingSupport::Recorder;

namespace {

// A publisher that notes "<tag>:<line>" in a log shared with others, so that
// the order of the slots shows.
class Tagged : public StringPublisher {
public:
    Tagged(std::vector<std::string>& sharedLog, const std::string& name)
        : StringPublisher(false), log(sharedLog), tag(name)
    {
    }

    ~Tagged() override
    {
        DiagnosticKit::Instance().UnregisterPublisher(this);
    }

    using StringPublisher::Publish;
    void Publish(const Diagnostics::String& text) override
    {
        log.push_back(tag + ":" + text.c_str());
    }

private:
    std::vector<std::string>& log;
    std::string tag;
};

// A publisher that notes its destruction in a file, with a text it makes
// from the diagnostics pool at that moment.
class Marker : public StringPublisher {
public:
    Marker(bool deleteOnUnregister, const std::string& name, const std::string& notesFile)
        : StringPublisher(deleteOnUnregister), tag(name), notes(notesFile)
    {
    }

    ~Marker() override
    {
        DiagnosticKit::Instance().UnregisterPublisher(this);
        const Diagnostics::String pool("pool alive");
        std::ofstream(notes, std::ios::app) << tag << " destroyed, " << pool.c_str() << "\n";
    }

    using StringPublisher::Publish;
    void Publish(const Diagnostics::String&) override {}

private:
    std::string tag;
    std::string notes;
};

// Kept reachable, so that the leak checker does not count it.
Marker* gKeptMarker = nullptr;

// Publishes one call line "CALL - Pkg::Cls::Run" through the kit.
void PublishOneLine()
{
    CallLogItem item(1, ObjectID(), FunctionID("Pkg", "Cls", "Run"), Diagnostics::String());
    DiagnosticKit::Instance().Publish(item);
}

unsigned CurrentIndent()
{
    DiagnosticKit& kit = DiagnosticKit::Instance();
    const unsigned next = kit.GetIndent();
    kit.ReturnIndent();
    return next - 1;
}

std::string Joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}

class TracingKit : public TracingSupport::ScratchWorkingDirectory {
protected:
    std::vector<std::string> log;
};

class TracingPublisher : public TracingSupport::ScratchWorkingDirectory {};

} // namespace

// --- Indent -------------------------------------------------------------------

TEST_F(TracingKit, GetIndentAddsOneAndReturnsTheNewValue)
{
    DiagnosticKit& kit = DiagnosticKit::Instance();
    EXPECT_EQ(1U, kit.GetIndent());
    EXPECT_EQ(2U, kit.GetIndent());
    EXPECT_EQ(3U, kit.GetIndent());
    kit.ReturnIndent();
    kit.ReturnIndent();
    EXPECT_EQ(2U, kit.GetIndent());
}

TEST_F(TracingKit, InstanceIsOneObject)
{
    EXPECT_EQ(&DiagnosticKit::Instance(), &DiagnosticKit::Instance());
}

// --- Slots --------------------------------------------------------------------

TEST_F(TracingKit, PublishReachesEachRegisteredPublisherFromSlotZeroOn)
{
    Tagged a(log, "A");
    Tagged b(log, "B");
    Tagged c(log, "C");
    PublishOneLine();
    const std::vector<std::string> expected = {"A:CALL - Pkg::Cls::Run", "B:CALL - Pkg::Cls::Run",
                                               "C:CALL - Pkg::Cls::Run"};
    EXPECT_EQ(expected, log);
}

TEST_F(TracingKit, WithoutPublishersNothingHappens)
{
    PublishOneLine();
    EXPECT_TRUE(log.empty());
}

TEST_F(TracingKit, RegistrationTakesTheFirstEmptySlot)
{
    Tagged a(log, "A");
    auto b = std::make_unique<Tagged>(log, "B");
    Tagged c(log, "C");
    b.reset();
    Tagged d(log, "D");
    PublishOneLine();
    const std::vector<std::string> expected = {"A:CALL - Pkg::Cls::Run", "D:CALL - Pkg::Cls::Run",
                                               "C:CALL - Pkg::Cls::Run"};
    EXPECT_EQ(expected, log);
}

TEST_F(TracingKit, FiveSlotsHoldFivePublishersAndASixthIsIgnored)
{
    DiagnosticKit& kit = DiagnosticKit::Instance();
    EXPECT_EQ(1U, kit.GetIndent());
    std::vector<std::unique_ptr<Tagged>> publishers;
    for (int i = 0; i < 6; ++i) {
        publishers.push_back(std::make_unique<Tagged>(log, "P" + std::to_string(i)));
    }
    // The sixth registration wrote nothing else: the indent is as it was.
    EXPECT_EQ(2U, kit.GetIndent());

    PublishOneLine();
    std::vector<std::string> expected;
    for (int i = 0; i < 5; ++i) {
        expected.push_back("P" + std::to_string(i) + ":CALL - Pkg::Cls::Run");
    }
    EXPECT_EQ(expected, log);

    // The sixth was never stored: a freed slot does not bring it in, a new
    // publisher takes the slot.
    publishers[0].reset();
    log.clear();
    PublishOneLine();
    EXPECT_EQ(std::vector<std::string>(expected.begin() + 1, expected.end()), log);
    Tagged late(log, "Late");
    log.clear();
    PublishOneLine();
    ASSERT_EQ(5U, log.size());
    EXPECT_EQ("Late:CALL - Pkg::Cls::Run", log[0]);
    EXPECT_EQ(3U, kit.GetIndent());
}

TEST_F(TracingKit, UnregisteringAnUnknownPublisherChangesNothing)
{
    DiagnosticKit& kit = DiagnosticKit::Instance();
    kit.GetIndent();
    kit.GetIndent();
    Tagged a(log, "A");
    Tagged b(log, "B");
    kit.UnregisterPublisher(&b);
    // b is in no slot now.
    kit.UnregisterPublisher(&b);
    kit.UnregisterPublisher(&b);
    EXPECT_EQ(3U, kit.GetIndent());
    PublishOneLine();
    EXPECT_EQ(std::vector<std::string>{"A:CALL - Pkg::Cls::Run"}, log);
}

TEST_F(TracingKit, UnregisteringWithAllSlotsTakenAndAnUnknownPointerChangesNothing)
{
    DiagnosticKit& kit = DiagnosticKit::Instance();
    std::vector<std::unique_ptr<Tagged>> publishers;
    for (int i = 0; i < 5; ++i) {
        publishers.push_back(std::make_unique<Tagged>(log, "P" + std::to_string(i)));
    }
    Tagged outsider(log, "Outsider");
    kit.UnregisterPublisher(&outsider);
    kit.UnregisterPublisher(nullptr);
    EXPECT_EQ(1U, kit.GetIndent());
    PublishOneLine();
    EXPECT_EQ(5U, log.size());
}

TEST_F(TracingKit, UnregisteringClearsOnlyTheFirstSlotHoldingThePublisher)
{
    DiagnosticKit& kit = DiagnosticKit::Instance();
    Tagged a(log, "A");
    Tagged b(log, "B");
    kit.RegisterPublisher(&a);
    PublishOneLine();
    const std::vector<std::string> twice = {"A:CALL - Pkg::Cls::Run", "B:CALL - Pkg::Cls::Run",
                                            "A:CALL - Pkg::Cls::Run"};
    EXPECT_EQ(twice, log);

    kit.UnregisterPublisher(&a);
    log.clear();
    PublishOneLine();
    const std::vector<std::string> once = {"B:CALL - Pkg::Cls::Run", "A:CALL - Pkg::Cls::Run"};
    EXPECT_EQ(once, log);
}

// --- Publishers ---------------------------------------------------------------

TEST_F(TracingPublisher, PublisherRegistersWhenMadeAndLeavesWhenDestroyed)
{
    std::vector<std::string> log;
    Tagged a(log, "A");
    {
        Tagged b(log, "B");
        PublishOneLine();
        EXPECT_EQ(2U, log.size());
    }
    log.clear();
    PublishOneLine();
    EXPECT_EQ(std::vector<std::string>{"A:CALL - Pkg::Cls::Run"}, log);
}

TEST_F(TracingPublisher, StringPublisherPassesOnTheItemsLine)
{
    Recorder recorder;
    const int object = 0;
    CallLogItem item(2, ObjectID(&object), FunctionID("Pkg", "", "Sum"), Diagnostics::String("( a:1 )"));
    static_cast<StringPublisher&>(recorder).Publish(item);
    EXPECT_EQ(std::vector<std::string>{item.ToString().c_str()}, recorder.lines);
}

TEST_F(TracingPublisher, PublisherWithDeleteFlagDeletedDirectlyIsDeletedOnce)
{
    // Its destructor unregisters it, and it does not delete itself again.
    const std::string notes = In("notes.txt");
    auto* marker = new Marker(true, "marker", notes);
    delete marker;
    EXPECT_EQ("marker destroyed, pool alive\n", Content("notes.txt"));
    Recorder recorder;
    PublishOneLine();
    EXPECT_EQ(1U, recorder.lines.size());
}

TEST_F(TracingPublisher, AtTheEndOfTheProcessTheKitUnregistersItsPublishersThenDeletesThePool)
{
    // In a child process that ends: the kit's remover deletes the kit, which
    // unregisters each publisher; one with the delete flag deletes itself
    // (and finds the pool still there), one without it stays.
    const std::string notes = In("notes.txt");
    EXPECT_EXIT(
        {
            Put("ClassDiagnosticsFilter.txt", "Cls\nOther\n");
            if (TraceItem::IsDiagnosticsToBeCarriedOut("Pkg", "Run")) {
                Marker* deleting = new Marker(true, "deleting", notes);
                static_cast<void>(deleting);
                gKeptMarker = new Marker(false, "kept", notes);
                TraceItem trace("Pkg", "Run", "Run");
                trace.LogCall();
            }
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    EXPECT_EQ("deleting destroyed, pool alive\n", Content("notes.txt"));
    EXPECT_EQ("CALL - Pkg::Run::Run - ()\nRETURN - Pkg::Run::Run\n", Content("DebugOutput.txt"));
}

// --- WinDebugPublisher --------------------------------------------------------

TEST_F(TracingPublisher, WinDebugPublisherIsASingleton)
{
    WinDebugPublisher& first = WinDebugPublisher::Instance();
    EXPECT_EQ(&first, &WinDebugPublisher::Instance());
    TraceItem trace("Pkg", "Cls", "Run");
    EXPECT_EQ(&first, &WinDebugPublisher::Instance());
}

TEST_F(TracingPublisher, OutputFileIsEmptiedAtStartAndHoldsExactlyThePublishedLines)
{
    Put("DebugOutput.txt", "a line of an earlier run\nand another\n");
    Recorder recorder;
    {
        const int object = 0;
        TraceItem outer(&object, "Pkg", "Cls", "Outer");
        outer.AddParameter("a") << 1;
        outer.AddParameter("b") << "two";
        outer.LogCall();
        {
            TraceItem inner("Pkg", "", "Inner");
            inner.LogCall();
            inner.AddReturnValue() << -3;
            DebugTraceItem debug("Pkg", "", "Inner");
            debug.AddParameter("halfway");
            debug.LogCall();
        }
    }
    ASSERT_EQ(5U, recorder.lines.size());
    EXPECT_EQ(Joined(recorder.lines), Content("DebugOutput.txt"));
}

TEST_F(TracingPublisher, PublishWritesTheTextAndANewlineAtOnce)
{
    WinDebugPublisher& publisher = WinDebugPublisher::Instance();
    EXPECT_EQ("", Content("DebugOutput.txt"));
    publisher.Publish(Diagnostics::String("hello"));
    EXPECT_EQ("hello\n", Content("DebugOutput.txt"));
    publisher.Publish(Diagnostics::String());
    EXPECT_EQ("hello\n\n", Content("DebugOutput.txt"));
}

TEST_F(TracingPublisher, OutputFileStaysInTheDirectoryWhereItWasOpened)
{
    {
        TraceItem trace("Pkg", "Cls", "First");
    }
    std::filesystem::create_directory(In("elsewhere"));
    std::filesystem::current_path(In("elsewhere"));
    {
        TraceItem trace("Pkg", "Cls", "Second");
    }
    EXPECT_EQ("RETURN - Pkg::Cls::First\nRETURN - Pkg::Cls::Second\n", Content("DebugOutput.txt"));
    EXPECT_FALSE(std::filesystem::exists(In("elsewhere/DebugOutput.txt")));
}

TEST_F(TracingPublisher, OutputThatCannotBeOpenedIsLostSilently)
{
    // A directory of that name cannot be opened as a file.
    std::filesystem::create_directory(In("DebugOutput.txt"));
    Recorder recorder;
    {
        TraceItem trace("Pkg", "Cls", "Run");
        trace.LogCall();
    }
    WinDebugPublisher::Instance().Publish(Diagnostics::String("lost"));
    const std::vector<std::string> expected = {"CALL - Pkg::Cls::Run - ()", "RETURN - Pkg::Cls::Run"};
    EXPECT_EQ(expected, recorder.lines);
    EXPECT_TRUE(std::filesystem::is_directory(In("DebugOutput.txt")));
    EXPECT_TRUE(std::filesystem::is_empty(In("DebugOutput.txt")));
}

// --- Threads ------------------------------------------------------------------

namespace {

// Leading bars and blanks off: what a line says whatever its indent.
std::string WithoutIndent(const std::string& line)
{
    const std::size_t start = line.find_first_not_of("| ");
    return start == std::string::npos ? std::string() : line.substr(start);
}

constexpr int kRounds = 150;

void TraceRounds(const char* className)
{
    for (int i = 0; i < kRounds; ++i) {
        if (!TraceItem::IsDiagnosticsToBeCarriedOut("Pkg", className)) {
            continue;
        }
        TraceItem outer("Pkg", className, "Outer");
        outer.AddParameter("i") << i;
        outer.LogCall();
        {
            TraceItem inner("Pkg", className, "Inner");
            inner.LogCall();
            inner.AddReturnValue() << i;
        }
        DebugTraceItem debug("Pkg", className, "Outer");
        debug.AddParameter("note");
        debug.LogCall();
    }
}

} // namespace

TEST_F(TracingPublisher, ThreadsTraceAtOnceAndEveryLineArrivesWhole)
{
    Put("ClassDiagnosticsFilter.txt", "Hidden\n");
    Recorder recorder;
    std::thread first(TraceRounds, "First");
    std::thread second(TraceRounds, "Second");
    std::thread hidden(TraceRounds, "Hidden");
    // Meanwhile publishers come and go; each one's destruction drops the
    // filter lists, so the next decision reads the files again.
    std::thread churn([] {
        for (int i = 0; i < 50; ++i) {
            Recorder* passing = nullptr;
            {
                const std::lock_guard<std::recursive_mutex> hold(Diagnostics::PoolGuard());
                passing = new Recorder();
            }
            delete passing;
        }
    });
    first.join();
    second.join();
    hidden.join();
    churn.join();

    std::vector<std::string> expected;
    for (const std::string className : {"First", "Second"}) {
        for (int i = 0; i < kRounds; ++i) {
            const std::string function = "Pkg::" + className + "::";
            expected.push_back("CALL - " + function + "Outer - ( i:" + std::to_string(i) + " )");
            expected.push_back("CALL - " + function + "Inner - ()");
            expected.push_back("RETURN - " + function + "Inner - {" + std::to_string(i) + "}");
            expected.push_back("note");
            expected.push_back("RETURN - " + function + "Outer");
        }
    }
    std::vector<std::string> seen;
    for (const std::string& line : recorder.lines) {
        seen.push_back(WithoutIndent(line));
    }
    std::sort(expected.begin(), expected.end());
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(expected, seen);
    EXPECT_EQ(recorder.lines.size(), static_cast<std::size_t>(2 * kRounds * 5));
    EXPECT_EQ(Joined(recorder.lines), Content("DebugOutput.txt"));
    EXPECT_EQ(0U, CurrentIndent());
}

TEST_F(TracingPublisher, FirstDecisionsOnSeveralThreadsReadTheFilesOnce)
{
    Put("PackageDiagnosticsFilter.txt", "{ShowOnly}\nPkg\n");
    std::vector<std::thread> threads;
    std::vector<int> traced(4, -1);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &traced] { traced[t] = TraceItem::IsDiagnosticsToBeCarriedOut("Pkg", "") ? 1 : 0; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::vector<int>(4, 1), traced);
    std::vector<std::string> names = {"{ShowOnly}", "Pkg"};
    names.resize(20);
    EXPECT_EQ(names, FilterState::PackageNames());
}
