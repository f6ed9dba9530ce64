#ifndef QVIMANAGER_DIAGNOSTICS_TRACE_ITEM_H
#define QVIMANAGER_DIAGNOSTICS_TRACE_ITEM_H

// TraceItem: a trace object on the stack of a traced function. It logs the
// call with its parameters, deepens the indent of everything logged while it
// lives, and logs the return when it goes out of scope:
//
//     TraceItem trace(this, "Cmetry", "QVSpectrum", "SetValue");
//     trace.AddParameter("index") << index;
//     trace.LogCall();                  // CALL - 0x... - Cmetry::QVSpectrum::SetValue - ( index:3 )
//     ...
//     trace.AddReturnValue() << result; // logged by the destructor:
//                                       // RETURN - 0x... - Cmetry::QVSpectrum::SetValue - {1}
//
// Whether a function is traced at all is for the caller to ask first
// (IsDiagnosticsToBeCarriedOut); the trace object itself always logs. The
// trace points of the library (trace.h) ask once per site, and only when
// tracing is switched on.
//
// The lines go through the DiagnosticKit to its publishers; the first trace
// object makes the WinDebugPublisher, which writes them to
// "DebugOutput.txt" in the working directory (win_debug_publisher.h).
//
// A function that is to return a value calls SetReturnExists(false) at its
// start and SetReturnExists(true) where it returns one. If the trace object
// ends with it still false, the destructor reports the missing return as a
// further CALL line, unless IgnoreAllReturnStatements(true) was called.
//
// DebugTraceItem logs a single message without deepening the indent;
// UserDebugTraceItem logs a parameter list the same way.
//
// Threads: trace objects may live on any number of threads at once. The
// kit, its indent, the filter lists and the publishers are used under
// PoolGuard() (memory_manager.h), so nothing races, and each line is
// published whole. But the indent is one count for the process: the lines
// of two threads interleave, and their indent then means nothing. A trace
// object itself belongs to the thread that made it.

#include "qvimanager/diagnostics/diagnostic_stream.h"
#include "qvimanager/diagnostics/function_id.h"

#include <cstdint>

namespace Diagnostics {

class DiagnosticKit;

class TraceItem {
public:
    // Takes the kit, names the function (FunctionID), takes the next indent
    // from the kit (DiagnosticKit::GetIndent) and makes sure the
    // WinDebugPublisher exists. Nothing is logged yet.
    TraceItem(const char* package, const char* className, const char* function);
    // The same for a member function running on `object`, which the lines
    // show as "0x" and its address.
    TraceItem(const void* object, const char* package, const char* className, const char* function);

    TraceItem(const TraceItem&) = delete;
    TraceItem& operator=(const TraceItem&) = delete;

    // Virtual operations in slot order.

    // 1. Logs the return (TraceItem::LogReturn) unless the destruct mode is
    //    off; 2. gives the indent back (DiagnosticKit::ReturnIndent); 3. if
    //    return statements are not ignored and no return was made
    //    (SetReturnExists(false) still in force), logs a CALL line whose
    //    parameter is a newline, "| " for each level of indent above 1 and
    //    "********** Developer Exception : Missing return statement! **********".
    virtual ~TraceItem();
    // Appends "( " to the stream if it is clear and ", " otherwise, then the
    // name and ":". The caller writes the value into the returned stream.
    virtual Stream& AddParameter(const char* name);
    // Closes the list ("()" for a clear stream, " )" otherwise), publishes a
    // CallLogItem of the stream's text and clears the stream.
    virtual void LogCall();
    // The stream, for the caller to write the return value into.
    virtual Stream& AddReturnValue();
    // Publishes a ReturnLogItem of the stream's text.
    virtual void LogReturn();

    // Whether functions of `package` and `className` are to be traced: the
    // negation of Publisher::MatchWithDiagnosticsFilter (publisher.h), so the
    // filter files list what is not traced, or with "{ShowOnly}" the only
    // things that are. The files are read at the first call.
    static bool IsDiagnosticsToBeCarriedOut(const char* package, const char* className);

    // False: the function has yet to return a value (see above).
    void SetReturnExists(bool exists);
    // True: no trace object reports a missing return any more.
    static void IgnoreAllReturnStatements(bool ignore);

protected:
    const FunctionID& GeFunctionID() const;
    const ObjectID& GetObjectID() const;
    Stream& GetStream();
    // The indent this object took from the kit.
    unsigned GetIndent() const;
    DiagnosticKit& GetDiagnosticKit() const;
    // Whether the destructor logs the return; true until a subclass turns it
    // off.
    bool GetDestructMode() const;
    void SetDestructMode(bool destruct);

private:
    DiagnosticKit* kit;
    FunctionID functionID;
    ObjectID objectID;
    Stream stream;
    std::uint32_t indent;
    bool destructMode;
    bool returnExists;

    static bool smIgnoreAllReturnStatements;
};

// A developer's message: the parameter is the whole message, logged as a
// DebugBreakLogItem (two blanks per level of indent above 1, then the
// message). It does not deepen the indent and logs no return.
class DebugTraceItem : public TraceItem {
public:
    // Gives back the indent the base took, so that it does not deepen it.
    DebugTraceItem(const char* package, const char* className, const char* function);
    DebugTraceItem(const void* object, const char* package, const char* className, const char* function);

    // Virtual operations in slot order.

    // Turns the destruct mode off, logs nothing, and takes an indent to
    // balance the one the base destructor gives back.
    ~DebugTraceItem() override;
    // Replaces the stream's text with `text`.
    Stream& AddParameter(const char* text) override;
    // Publishes a DebugBreakLogItem of the stream's text, as it is, and
    // clears the stream.
    void LogCall() override;
    // Does nothing.
    void LogReturn() override;
};

// A user's message: parameters accumulate as in TraceItem, and LogCall
// closes the list and publishes it as a UserDebugLogItem (printed like a
// developer's message). It does not deepen the indent and logs no return.
class UserDebugTraceItem : public DebugTraceItem {
public:
    UserDebugTraceItem(const char* package, const char* className, const char* function);
    UserDebugTraceItem(const void* object, const char* package, const char* className, const char* function);

    // Virtual operations in slot order.
    ~UserDebugTraceItem() override;
    // TraceItem::AddParameter.
    Stream& AddParameter(const char* name) override;
    // Closes the list ("()" or " )"), publishes a UserDebugLogItem of the
    // stream's text and clears the stream.
    void LogCall() override;
    // DebugTraceItem::LogReturn: nothing.
    void LogReturn() override;
};

} // namespace Diagnostics

#endif
