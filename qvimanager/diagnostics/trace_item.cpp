#include "qvimanager/diagnostics/trace_item.h"

#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/log_item.h"
#include "qvimanager/diagnostics/memory_manager.h"
#include "qvimanager/diagnostics/publisher.h"
#include "qvimanager/diagnostics/win_debug_publisher.h"

#include <mutex>

namespace Diagnostics {

namespace {

using Hold = std::lock_guard<std::recursive_mutex>;

const char* const kMissingReturn = "********** Developer Exception : Missing return statement! **********";

// Closes a parameter list: "()" when there is none, " )" after the last.
void CloseList(Stream& stream)
{
    stream << (stream.IsClear() ? "()" : " )");
}

} // namespace

bool TraceItem::smIgnoreAllReturnStatements = false;

TraceItem::TraceItem(const char* package, const char* className, const char* function)
    : TraceItem(nullptr, package, className, function)
{
}

TraceItem::TraceItem(const void* object, const char* package, const char* className, const char* function)
    : kit(&DiagnosticKit::Instance()),
      functionID(package, className, function),
      objectID(object),
      stream(),
      indent(kit->GetIndent()),
      destructMode(true),
      returnExists(true)
{
    WinDebugPublisher::Instance();
}

TraceItem::~TraceItem()
{
    // One hold for the three steps, so that the return and a missing-return
    // report of this object are published together.
    const Hold hold(PoolGuard());
    if (destructMode) {
        TraceItem::LogReturn();
    }
    kit->ReturnIndent();
    if (!smIgnoreAllReturnStatements && !returnExists) {
        String report("\n");
        // At most a block's size in levels: more would not fit in the text.
        for (unsigned level = 1; level < indent && level <= FixBlockSizeMemoryManager::BlockSize; ++level) {
            report += "| ";
        }
        report += kMissingReturn;
        TraceItem::AddParameter(report.c_str());
        TraceItem::LogCall();
    }
}

Stream& TraceItem::AddParameter(const char* name)
{
    stream << (stream.IsClear() ? "( " : ", ");
    stream << name << ":";
    return stream;
}

void TraceItem::LogCall()
{
    CloseList(stream);
    CallLogItem item(indent, objectID, functionID, stream);
    kit->Publish(item);
    stream.Clear();
}

Stream& TraceItem::AddReturnValue()
{
    return stream;
}

void TraceItem::LogReturn()
{
    ReturnLogItem item(indent, objectID, functionID, stream);
    kit->Publish(item);
}

bool TraceItem::IsDiagnosticsToBeCarriedOut(const char* package, const char* className)
{
    return !Publisher::MatchWithDiagnosticsFilter(String(package), String(className));
}

void TraceItem::SetReturnExists(bool exists)
{
    returnExists = exists;
}

void TraceItem::IgnoreAllReturnStatements(bool ignore)
{
    const Hold hold(PoolGuard());
    smIgnoreAllReturnStatements = ignore;
}

const FunctionID& TraceItem::GeFunctionID() const
{
    return functionID;
}

const ObjectID& TraceItem::GetObjectID() const
{
    return objectID;
}

Stream& TraceItem::GetStream()
{
    return stream;
}

unsigned TraceItem::GetIndent() const
{
    return indent;
}

DiagnosticKit& TraceItem::GetDiagnosticKit() const
{
    return *kit;
}

bool TraceItem::GetDestructMode() const
{
    return destructMode;
}

void TraceItem::SetDestructMode(bool destruct)
{
    destructMode = destruct;
}

DebugTraceItem::DebugTraceItem(const char* package, const char* className, const char* function)
    : DebugTraceItem(nullptr, package, className, function)
{
}

DebugTraceItem::DebugTraceItem(const void* object, const char* package, const char* className,
                               const char* function)
    : TraceItem(object, package, className, function)
{
    GetDiagnosticKit().ReturnIndent();
}

DebugTraceItem::~DebugTraceItem()
{
    SetDestructMode(false);
    DebugTraceItem::LogReturn();
    GetDiagnosticKit().GetIndent();
}

Stream& DebugTraceItem::AddParameter(const char* text)
{
    Stream& stream = GetStream();
    stream.Clear();
    stream << text;
    return stream;
}

void DebugTraceItem::LogCall()
{
    Stream& stream = GetStream();
    DebugBreakLogItem item(GetIndent(), GetObjectID(), GeFunctionID(), stream);
    GetDiagnosticKit().Publish(item);
    stream.Clear();
}

void DebugTraceItem::LogReturn() {}

UserDebugTraceItem::UserDebugTraceItem(const char* package, const char* className, const char* function)
    : DebugTraceItem(package, className, function)
{
}

UserDebugTraceItem::UserDebugTraceItem(const void* object, const char* package, const char* className,
                                       const char* function)
    : DebugTraceItem(object, package, className, function)
{
}

UserDebugTraceItem::~UserDebugTraceItem() = default;

Stream& UserDebugTraceItem::AddParameter(const char* name)
{
    return TraceItem::AddParameter(name);
}

void UserDebugTraceItem::LogCall()
{
    Stream& stream = GetStream();
    CloseList(stream);
    UserDebugLogItem item(GetIndent(), GetObjectID(), GeFunctionID(), stream);
    GetDiagnosticKit().Publish(item);
    stream.Clear();
}

void UserDebugTraceItem::LogReturn()
{
    DebugTraceItem::LogReturn();
}

} // namespace Diagnostics
