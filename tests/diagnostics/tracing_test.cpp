// The trace lines: FunctionID, ObjectID, Stream, the log items and the
// trace objects (TraceItem, DebugTraceItem, UserDebugTraceItem).

#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/diagnostic_stream.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/function_id.h"
#include "qvimanager/diagnostics/log_item.h"
#include "qvimanager/diagnostics/trace_item.h"
#include "qvimanager/diagnostics/win_debug_publisher.h"

#include "tracing_support.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

using Diagnostics::CallLogItem;
using Diagnostics::DebugBreakLogItem;
using Diagnostics::DebugTraceItem;
using Diagnostics::DiagnosticKit;
using Diagnostics::FunctionID;
using Diagnostics::ObjectID;
using Diagnostics::ReturnLogItem;
using Diagnostics::Stream;
using Diagnostics::TraceItem;
using Diagnostics::UserDebugLogItem;
using Diagnostics::UserDebugTraceItem;
using TracingSupport::Recorder;
using TracingSupport::Repeat;

namespace {

const char* const kMissingReturn = "********** Developer Exception : Missing return statement! **********";

// "0x" and the address in lower-case hexadecimal, made independently of the
// library.
std::string HexAddress(const void* object)
{
    std::ostringstream text;
    text << "0x" << std::hex << reinterpret_cast<std::uintptr_t>(object);
    return text.str();
}

// The kit's indent as it stands (GetIndent adds one, ReturnIndent takes it
// back).
unsigned CurrentIndent()
{
    DiagnosticKit& kit = DiagnosticKit::Instance();
    const unsigned next = kit.GetIndent();
    kit.ReturnIndent();
    return next - 1;
}

// A TraceItem whose protected accessors the tests may call.
class ExposedTraceItem : public TraceItem {
public:
    using TraceItem::TraceItem;
    using TraceItem::GeFunctionID;
    using TraceItem::GetDestructMode;
    using TraceItem::GetDiagnosticKit;
    using TraceItem::GetIndent;
    using TraceItem::GetObjectID;
    using TraceItem::GetStream;
    using TraceItem::SetDestructMode;
};

// Every test of lines runs in a scratch working directory (the first trace
// object makes "DebugOutput.txt" there) with a recorder registered.
class TracingLines : public TracingSupport::ScratchWorkingDirectory {
protected:
    Recorder recorder;
};

} // namespace

// --- FunctionID ---------------------------------------------------------------

TEST(TracingFunctionID, EmptyClassIsAFreeFunction)
{
    const FunctionID id("Pkg", "", "Compute");
    EXPECT_EQ(FunctionID::FreeFunction, id.GetTypeCode());
    EXPECT_EQ(1, id.GetTypeCode());
    EXPECT_STREQ("Pkg::Compute", id.GetDescription().c_str());
}

TEST(TracingFunctionID, FunctionNamedLikeItsClassIsAConstructor)
{
    const FunctionID id("Pkg", "Cls", "Cls");
    EXPECT_EQ(FunctionID::Constructor, id.GetTypeCode());
    EXPECT_EQ(2, id.GetTypeCode());
    EXPECT_STREQ("Pkg::Cls::Cls", id.GetDescription().c_str());
}

TEST(TracingFunctionID, FunctionStartingWithTildeIsADestructor)
{
    const FunctionID id("Pkg", "Cls", "~Cls");
    EXPECT_EQ(FunctionID::Destructor, id.GetTypeCode());
    EXPECT_EQ(3, id.GetTypeCode());
    EXPECT_STREQ("Pkg::Cls::~Cls", id.GetDescription().c_str());
}

TEST(TracingFunctionID, AnyOtherMemberIsAMethod)
{
    const FunctionID id("Pkg", "Cls", "Run");
    EXPECT_EQ(FunctionID::Method, id.GetTypeCode());
    EXPECT_EQ(4, id.GetTypeCode());
    EXPECT_STREQ("Pkg::Cls::Run", id.GetDescription().c_str());
}

TEST(TracingFunctionID, ConstructorIsTestedFirst)
{
    // Equal names win over an empty class and over a leading tilde.
    EXPECT_EQ(FunctionID::Constructor, FunctionID("Pkg", "", "").GetTypeCode());
    EXPECT_EQ(FunctionID::Constructor, FunctionID("Pkg", "~Odd", "~Odd").GetTypeCode());
}

TEST(TracingFunctionID, EmptyClassIsTestedBeforeTheTilde)
{
    EXPECT_EQ(FunctionID::FreeFunction, FunctionID("Pkg", "", "~Cls").GetTypeCode());
}

TEST(TracingFunctionID, NullNamesCountAsEmpty)
{
    const FunctionID id(nullptr, nullptr, "Compute");
    EXPECT_EQ(FunctionID::FreeFunction, id.GetTypeCode());
    EXPECT_STREQ("::Compute", id.GetDescription().c_str());
    EXPECT_EQ(FunctionID::Constructor, FunctionID("Pkg", nullptr, nullptr).GetTypeCode());
}

TEST(TracingFunctionID, NamesAreComparedWholeAndCaseSensitive)
{
    EXPECT_EQ(FunctionID::Method, FunctionID("Pkg", "Cls", "cls").GetTypeCode());
    EXPECT_EQ(FunctionID::Method, FunctionID("Pkg", "Cls", "Clsx").GetTypeCode());
}

// --- ObjectID -----------------------------------------------------------------

TEST(TracingObjectID, NullPointerIsEmptyWithEmptyText)
{
    const ObjectID id(nullptr);
    EXPECT_TRUE(id.IsEmpty());
    EXPECT_FALSE(id.KnowsObject());
    EXPECT_STREQ("", id.ToString().c_str());
    EXPECT_TRUE(ObjectID().IsEmpty());
}

TEST(TracingObjectID, PointerIsPrintedInLowerCaseHexadecimal)
{
    const int object = 0;
    const ObjectID id(&object);
    EXPECT_FALSE(id.IsEmpty());
    EXPECT_TRUE(id.KnowsObject());
    EXPECT_EQ(HexAddress(&object), id.ToString().c_str());
}

TEST(TracingObjectID, AllSixtyFourBitsAreShownWithoutPadding)
{
    const auto* high = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(0xABCDEF0123456789ULL));
    EXPECT_STREQ("0xabcdef0123456789", ObjectID(high).ToString().c_str());
    const auto* low = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(0x10));
    EXPECT_STREQ("0x10", ObjectID(low).ToString().c_str());
}

// --- Stream -------------------------------------------------------------------

TEST(TracingStream, StartsClearAndGathersTextsAndNumbers)
{
    Stream stream;
    EXPECT_TRUE(stream.IsClear());
    stream << "a:" << Diagnostics::String("b") << -12 << 0;
    EXPECT_FALSE(stream.IsClear());
    EXPECT_STREQ("a:b-120", stream.c_str());
}

TEST(TracingStream, ClearEmptiesIt)
{
    Stream stream;
    stream << "text";
    stream.Clear();
    EXPECT_TRUE(stream.IsClear());
    EXPECT_STREQ("", stream.c_str());
    stream << 7;
    EXPECT_STREQ("7", stream.c_str());
}

TEST(TracingStream, IsCutAt255Characters)
{
    Stream stream;
    stream << Repeat("x", 300).c_str();
    EXPECT_EQ(Repeat("x", 255), stream.c_str());
}

// --- Log items ----------------------------------------------------------------

TEST(TracingLogItem, CallLineWithoutObjectOrInfo)
{
    const CallLogItem item(1, ObjectID(), FunctionID("Pkg", "Cls", "Run"), Diagnostics::String());
    EXPECT_FALSE(item.HasInfo());
    EXPECT_STREQ("CALL - Pkg::Cls::Run", item.ToString().c_str());
}

TEST(TracingLogItem, CallLineWithObjectAndInfo)
{
    const int object = 0;
    const CallLogItem item(1, ObjectID(&object), FunctionID("Pkg", "Cls", "Run"), Diagnostics::String("( a:1 )"));
    EXPECT_TRUE(item.HasInfo());
    EXPECT_EQ("CALL - " + HexAddress(&object) + " - Pkg::Cls::Run - ( a:1 )", item.ToString().c_str());
}

TEST(TracingLogItem, ReturnLineWrapsItsInfoInBraces)
{
    const ReturnLogItem item(1, ObjectID(), FunctionID("Pkg", "", "Sum"), Diagnostics::String("42"));
    EXPECT_STREQ("RETURN - Pkg::Sum - {42}", item.ToString().c_str());
    const ReturnLogItem bare(1, ObjectID(), FunctionID("Pkg", "", "Sum"), Diagnostics::String());
    EXPECT_STREQ("RETURN - Pkg::Sum", bare.ToString().c_str());
}

TEST(TracingLogItem, EachLevelAboveOneAddsABar)
{
    const FunctionID id("Pkg", "Cls", "Run");
    EXPECT_STREQ("CALL - Pkg::Cls::Run", CallLogItem(0, ObjectID(), id, "").ToString().c_str());
    EXPECT_STREQ("CALL - Pkg::Cls::Run", CallLogItem(1, ObjectID(), id, "").ToString().c_str());
    EXPECT_STREQ("| CALL - Pkg::Cls::Run", CallLogItem(2, ObjectID(), id, "").ToString().c_str());
    EXPECT_STREQ("| | RETURN - Pkg::Cls::Run", ReturnLogItem(3, ObjectID(), id, "").ToString().c_str());
}

TEST(TracingLogItem, DebugLinesHaveTwoBlanksPerLevelAboveOne)
{
    const FunctionID id("Pkg", "Cls", "Run");
    EXPECT_STREQ("note", DebugBreakLogItem(1, ObjectID(), id, "note").ToString().c_str());
    EXPECT_STREQ("    note", DebugBreakLogItem(3, ObjectID(), id, "note").ToString().c_str());
    EXPECT_STREQ("  ( a:1 )", UserDebugLogItem(2, ObjectID(), id, "( a:1 )").ToString().c_str());
    EXPECT_STREQ("  ", UserDebugLogItem(2, ObjectID(), id, "").ToString().c_str());
}

TEST(TracingLogItem, DebugLinesShowNeitherTypeNorObjectNorFunction)
{
    const int object = 0;
    const DebugBreakLogItem item(1, ObjectID(&object), FunctionID("Pkg", "Cls", "Run"), "note");
    EXPECT_STREQ("note", item.ToString().c_str());
    Diagnostics::String type("[");
    item.AddType(type);
    EXPECT_STREQ("[", type.c_str());
}

TEST(TracingLogItem, SeparatorIsBlankDashBlank)
{
    const CallLogItem item(1, ObjectID(), FunctionID("Pkg", "Cls", "Run"), "");
    Diagnostics::String text("a");
    item.AddSeparator(text);
    EXPECT_STREQ("a - ", text.c_str());
}

TEST(TracingLogItem, AHugeIndentFillsTheLineAndStops)
{
    // As an indent that has run below zero: the line is cut at 255
    // characters, all of them bars.
    const FunctionID id("Pkg", "Cls", "Run");
    const std::string bars = Repeat("| ", 128).substr(0, 255);
    EXPECT_EQ(bars, CallLogItem(1000, ObjectID(), id, "").ToString().c_str());
    EXPECT_EQ(bars, CallLogItem(0xFFFFFFFFU, ObjectID(), id, "").ToString().c_str());
    EXPECT_EQ(Repeat(" ", 255), DebugBreakLogItem(0xFFFFFFFFU, ObjectID(), id, "x").ToString().c_str());
}

// --- TraceItem ----------------------------------------------------------------

TEST_F(TracingLines, CallWithoutParametersLogsEmptyParentheses)
{
    {
        TraceItem trace("Pkg", "Cls", "Run");
        trace.LogCall();
    }
    const std::vector<std::string> expected = {"CALL - Pkg::Cls::Run - ()", "RETURN - Pkg::Cls::Run"};
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, CallWithTwoParametersListsThem)
{
    {
        TraceItem trace("Pkg", "Cls", "Run");
        trace.AddParameter("a") << 1;
        trace.AddParameter("b") << 2;
        trace.LogCall();
    }
    ASSERT_FALSE(recorder.lines.empty());
    EXPECT_EQ("CALL - Pkg::Cls::Run - ( a:1, b:2 )", recorder.lines[0]);
}

TEST_F(TracingLines, CallWithOneParameter)
{
    {
        TraceItem trace("Pkg", "", "Sum");
        trace.AddParameter("text") << "abc";
        trace.LogCall();
    }
    ASSERT_FALSE(recorder.lines.empty());
    EXPECT_EQ("CALL - Pkg::Sum - ( text:abc )", recorder.lines[0]);
}

TEST_F(TracingLines, LogCallClearsTheStream)
{
    ExposedTraceItem trace("Pkg", "Cls", "Run");
    trace.AddParameter("a") << 1;
    trace.LogCall();
    EXPECT_TRUE(trace.GetStream().IsClear());
    trace.LogCall();
    ASSERT_EQ(2U, recorder.lines.size());
    EXPECT_EQ("CALL - Pkg::Cls::Run - ()", recorder.lines[1]);
}

TEST_F(TracingLines, ReturnValueIsLoggedByTheDestructorInBraces)
{
    {
        TraceItem trace("Pkg", "Cls", "Count");
        trace.LogCall();
        trace.AddReturnValue() << 42;
    }
    const std::vector<std::string> expected = {"CALL - Pkg::Cls::Count - ()", "RETURN - Pkg::Cls::Count - {42}"};
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, AddReturnValueGivesTheStream)
{
    ExposedTraceItem trace("Pkg", "Cls", "Count");
    EXPECT_EQ(&trace.GetStream(), &trace.AddReturnValue());
    EXPECT_EQ(&trace.GetStream(), &trace.AddParameter("a"));
}

TEST_F(TracingLines, LogReturnPublishesAtOnceAndTheDestructorAgain)
{
    {
        TraceItem trace("Pkg", "Cls", "Count");
        trace.AddReturnValue() << 7;
        trace.LogReturn();
        EXPECT_EQ(std::vector<std::string>{"RETURN - Pkg::Cls::Count - {7}"}, recorder.lines);
    }
    const std::vector<std::string> expected = {"RETURN - Pkg::Cls::Count - {7}", "RETURN - Pkg::Cls::Count - {7}"};
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, ObjectIsShownAfterTheType)
{
    const int object = 0;
    {
        TraceItem trace(&object, "Pkg", "Cls", "Run");
        trace.LogCall();
    }
    const std::string address = HexAddress(&object);
    const std::vector<std::string> expected = {"CALL - " + address + " - Pkg::Cls::Run - ()",
                                               "RETURN - " + address + " - Pkg::Cls::Run"};
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, NullObjectIsNotShown)
{
    {
        TraceItem trace(nullptr, "Pkg", "Cls", "Run");
        trace.LogCall();
    }
    ASSERT_FALSE(recorder.lines.empty());
    EXPECT_EQ("CALL - Pkg::Cls::Run - ()", recorder.lines[0]);
}

TEST_F(TracingLines, NestedCallsAreIndentedByBars)
{
    {
        TraceItem outer("Pkg", "Cls", "Outer");
        outer.LogCall();
        {
            TraceItem middle("Pkg", "Cls", "Middle");
            middle.LogCall();
            {
                TraceItem inner("Pkg", "Cls", "Inner");
                inner.AddParameter("x") << 3;
                inner.LogCall();
                inner.AddReturnValue() << 9;
            }
        }
    }
    const std::vector<std::string> expected = {
        "CALL - Pkg::Cls::Outer - ()",
        "| CALL - Pkg::Cls::Middle - ()",
        "| | CALL - Pkg::Cls::Inner - ( x:3 )",
        "| | RETURN - Pkg::Cls::Inner - {9}",
        "| RETURN - Pkg::Cls::Middle",
        "RETURN - Pkg::Cls::Outer",
    };
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, IndentFollowsTheCallDepthAndIsGivenBack)
{
    EXPECT_EQ(0U, CurrentIndent());
    {
        ExposedTraceItem outer("Pkg", "Cls", "Outer");
        EXPECT_EQ(1U, outer.GetIndent());
        EXPECT_EQ(1U, CurrentIndent());
        {
            ExposedTraceItem inner("Pkg", "Cls", "Inner");
            EXPECT_EQ(2U, inner.GetIndent());
            EXPECT_EQ(2U, CurrentIndent());
        }
        EXPECT_EQ(1U, CurrentIndent());
    }
    EXPECT_EQ(0U, CurrentIndent());
}

TEST_F(TracingLines, ConstructorLogsNothing)
{
    TraceItem trace("Pkg", "Cls", "Run");
    EXPECT_TRUE(recorder.lines.empty());
}

TEST_F(TracingLines, AccessorsGiveWhatTheConstructorStored)
{
    const int object = 0;
    ExposedTraceItem trace(&object, "Pkg", "Cls", "~Cls");
    EXPECT_EQ(FunctionID::Destructor, trace.GeFunctionID().GetTypeCode());
    EXPECT_STREQ("Pkg::Cls::~Cls", trace.GeFunctionID().GetDescription().c_str());
    EXPECT_EQ(HexAddress(&object), trace.GetObjectID().ToString().c_str());
    EXPECT_EQ(&DiagnosticKit::Instance(), &trace.GetDiagnosticKit());
    EXPECT_TRUE(trace.GetDestructMode());
    EXPECT_TRUE(trace.GetStream().IsClear());
}

TEST_F(TracingLines, DestructorLogsNoReturnWhenTheDestructModeIsOff)
{
    {
        ExposedTraceItem trace("Pkg", "Cls", "Run");
        trace.SetDestructMode(false);
        EXPECT_FALSE(trace.GetDestructMode());
    }
    EXPECT_TRUE(recorder.lines.empty());
    EXPECT_EQ(0U, CurrentIndent());
}

TEST_F(TracingLines, ConstructorMakesTheFilePublisher)
{
    EXPECT_FALSE(std::filesystem::exists(In("DebugOutput.txt")));
    {
        TraceItem trace("Pkg", "Cls", "Run");
        EXPECT_TRUE(std::filesystem::exists(In("DebugOutput.txt")));
        trace.LogCall();
    }
    EXPECT_EQ("CALL - Pkg::Cls::Run - ()\nRETURN - Pkg::Cls::Run\n", Content("DebugOutput.txt"));
}

// --- The missing return -------------------------------------------------------

TEST_F(TracingLines, MissingReturnIsReportedAfterTheReturnLine)
{
    {
        TraceItem trace("Pkg", "Cls", "Count");
        trace.LogCall();
        trace.SetReturnExists(false);
    }
    const std::vector<std::string> expected = {
        "CALL - Pkg::Cls::Count - ()",
        "RETURN - Pkg::Cls::Count",
        std::string("CALL - Pkg::Cls::Count - ( \n") + kMissingReturn + ": )",
    };
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, MissingReturnReportIsIndentedLikeItsFunction)
{
    {
        TraceItem outer("Pkg", "Cls", "Outer");
        {
            TraceItem middle("Pkg", "Cls", "Middle");
            {
                TraceItem inner("Pkg", "Cls", "Inner");
                inner.SetReturnExists(false);
            }
        }
    }
    const std::vector<std::string> expected = {
        "| | RETURN - Pkg::Cls::Inner",
        std::string("| | CALL - Pkg::Cls::Inner - ( \n| | ") + kMissingReturn + ": )",
        "| RETURN - Pkg::Cls::Middle",
        "RETURN - Pkg::Cls::Outer",
    };
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, ReturnMadeAfterAllIsNotReported)
{
    {
        TraceItem trace("Pkg", "Cls", "Count");
        trace.SetReturnExists(false);
        trace.AddReturnValue() << 1;
        trace.SetReturnExists(true);
    }
    EXPECT_EQ(std::vector<std::string>{"RETURN - Pkg::Cls::Count - {1}"}, recorder.lines);
}

TEST_F(TracingLines, IgnoreAllReturnStatementsSuppressesTheReport)
{
    TraceItem::IgnoreAllReturnStatements(true);
    {
        TraceItem trace("Pkg", "Cls", "Count");
        trace.SetReturnExists(false);
    }
    EXPECT_EQ(std::vector<std::string>{"RETURN - Pkg::Cls::Count"}, recorder.lines);

    TraceItem::IgnoreAllReturnStatements(false);
    {
        TraceItem trace("Pkg", "Cls", "Count");
        trace.SetReturnExists(false);
    }
    ASSERT_EQ(3U, recorder.lines.size());
    EXPECT_EQ(std::string("CALL - Pkg::Cls::Count - ( \n") + kMissingReturn + ": )", recorder.lines[2]);
}

TEST_F(TracingLines, MissingReturnReachesTheFileWithItsNewline)
{
    {
        TraceItem trace("Pkg", "", "Sum");
        trace.SetReturnExists(false);
    }
    EXPECT_EQ(std::string("RETURN - Pkg::Sum\nCALL - Pkg::Sum - ( \n") + kMissingReturn + ": )\n",
              Content("DebugOutput.txt"));
}

// --- DebugTraceItem -----------------------------------------------------------

TEST_F(TracingLines, DebugMessageIsLoggedAsItIs)
{
    {
        DebugTraceItem debug("Pkg", "Cls", "Run");
        debug.AddParameter("value is odd");
        debug.LogCall();
    }
    EXPECT_EQ(std::vector<std::string>{"value is odd"}, recorder.lines);
}

TEST_F(TracingLines, DebugMessageHasTwoBlanksPerLevelAboveOne)
{
    {
        TraceItem outer("Pkg", "Cls", "Outer");
        {
            TraceItem inner("Pkg", "Cls", "Inner");
            DebugTraceItem debug("Pkg", "Cls", "Inner");
            debug.AddParameter("deep");
            debug.LogCall();
        }
    }
    const std::vector<std::string> expected = {
        "    deep",
        "| RETURN - Pkg::Cls::Inner",
        "RETURN - Pkg::Cls::Outer",
    };
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, DebugParameterReplacesTheMessage)
{
    {
        DebugTraceItem debug("Pkg", "Cls", "Run");
        debug.AddParameter("first") << " part";
        debug.AddParameter("second");
        debug.LogCall();
        debug.AddParameter("third");
        debug.LogCall();
    }
    const std::vector<std::string> expected = {"second", "third"};
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, DebugItemDoesNotDeepenTheIndent)
{
    {
        TraceItem outer("Pkg", "Cls", "Outer");
        EXPECT_EQ(1U, CurrentIndent());
        DebugTraceItem debug("Pkg", "Cls", "Outer");
        EXPECT_EQ(1U, CurrentIndent());
        {
            TraceItem inner("Pkg", "Cls", "Inner");
            inner.LogCall();
        }
    }
    EXPECT_EQ(0U, CurrentIndent());
    const std::vector<std::string> expected = {
        "| CALL - Pkg::Cls::Inner - ()",
        "| RETURN - Pkg::Cls::Inner",
        "RETURN - Pkg::Cls::Outer",
    };
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, DebugItemLogsNoReturn)
{
    {
        DebugTraceItem debug("Pkg", "Cls", "Run");
        debug.AddParameter("x");
        debug.LogReturn();
    }
    EXPECT_TRUE(recorder.lines.empty()) << recorder.lines.front();
    EXPECT_EQ(0U, CurrentIndent());
}

// --- UserDebugTraceItem -------------------------------------------------------

TEST_F(TracingLines, UserDebugParametersAccumulateIntoAList)
{
    {
        TraceItem outer("Pkg", "Cls", "Outer");
        {
            UserDebugTraceItem user("Pkg", "Cls", "Outer");
            user.AddParameter("a") << 1;
            user.AddParameter("b") << 2;
            user.LogCall();
        }
    }
    const std::vector<std::string> expected = {
        "  ( a:1, b:2 )",
        "RETURN - Pkg::Cls::Outer",
    };
    EXPECT_EQ(expected, recorder.lines);
}

TEST_F(TracingLines, UserDebugWithoutParametersLogsEmptyParentheses)
{
    {
        UserDebugTraceItem user("Pkg", "Cls", "Run");
        user.LogCall();
        user.AddParameter("n") << 5;
        user.LogCall();
    }
    const std::vector<std::string> expected = {"()", "( n:5 )"};
    EXPECT_EQ(expected, recorder.lines);
    EXPECT_EQ(0U, CurrentIndent());
}
