#ifndef QVIMANAGER_DIAGNOSTICS_TRACE_H
#define QVIMANAGER_DIAGNOSTICS_TRACE_H

// Trace points: how a function of the library (or of a plug-in) is traced.
//
//     QVColorVector CMetryService::GetVector(const QVSpectrum& spectrum, ...)
//     {
//         QVI_TRACE_BEGIN(nullptr, "CMetry", "CMetryService", "GetVector");
//         QVI_TRACE_PARAMETER("ColorSpace", space); // values: see TraceText
//         QVI_TRACE_CALL();                         // CALL - CMetry::CMetryService::GetVector - ( ColorSpace:CIELab )
//         ...
//         QVI_TRACE_RETURN(out[0], ", ", out[1], ", ", out[2]);
//                                                   // RETURN - CMetry::CMetryService::GetVector - {50, 0.5, -2}
//         return out;
//     }
//
//     QVI_TRACE(this, "Utilities", "NamingService", "Resolve");  // BEGIN and CALL: "()"
//
//     // A diagnostic text, one line as it stands (a DebugTraceItem):
//     QVI_TRACE_MESSAGE(this, "Utilities", "NamingService", "RegisterComponents",
//                       "NamingService: Component added: ", name);
//
// A parameter, a return value and a message may be given in pieces, which
// are joined; they are only rendered when the trace point is on.
//
// Switching it on. Trace points are compiled in unless the library is built
// with QVIMANAGER_TRACING=0 (the CMake option QVIMANAGER_TRACING=OFF). At
// run time nothing is traced unless the environment variable
// QVIMANAGER_TRACE is set to a value other than "" and "0" when the first
// trace point is reached; then the filter files "PackageDiagnosticsFilter.txt"
// and "ClassDiagnosticsFilter.txt" of the working directory decide
// (TraceItem::IsDiagnosticsToBeCarriedOut), and the lines go to
// "DebugOutput.txt" in the working directory, which the first traced line
// makes anew. Without the variable no filter file is read, no publisher is
// made and no file is written.
//
// Cost. Each trace point has a site of its own, a static made at compile
// time, that remembers its decision: the filter files are read once and
// never change, so the decision of a site never changes either. A trace
// point that is off costs one load and one branch: no trace object is made,
// no parameter is rendered and no text is formed.
//
// The end of the process. Once the diagnostics kit is gone (its remover is
// among the last static objects of the library to go), no trace point logs
// anything any more: a trace then would make a new kit and a new publisher,
// which would start "DebugOutput.txt" anew.
//
// Threads: any trace point may be reached on any thread (trace_item.h).

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/trace_item.h"

#include <atomic>
#include <concepts>
#include <optional>
#include <type_traits>

#ifndef QVIMANAGER_TRACING
#define QVIMANAGER_TRACING 1
#endif

namespace Diagnostics {

// The process-wide switch: QVIMANAGER_TRACE, read once, and closed for good
// when the kit goes.
class TraceSwitch {
public:
    // Whether tracing runs now: the variable said so and the kit is not
    // gone. The variable is read at the first call.
    static bool IsOn();
    // From now on nothing is traced. Called as the kit goes.
    static void Close();
};

// One trace point's package and class and its remembered decision.
class TraceSite {
public:
    constexpr TraceSite(const char* package, const char* className) noexcept
        : package(package), className(className), state(Undecided)
    {
    }
    TraceSite(const TraceSite&) = delete;
    TraceSite& operator=(const TraceSite&) = delete;

    // Whether the trace point logs: the switch is on and the filter files
    // let its package and class through.
    bool IsOn() const
    {
#if QVIMANAGER_TRACING
        return state.load(std::memory_order_relaxed) != Off && Decide();
#else
        return false;
#endif
    }

    const char* Package() const noexcept { return package; }
    const char* ClassName() const noexcept { return className; }

private:
    static constexpr unsigned char Undecided = 0;
    static constexpr unsigned char On = 1;
    static constexpr unsigned char Off = 2;

    // Decides once and remembers; for a site that is on, asks the switch
    // each time (it closes at the end of the process).
    bool Decide() const;

    const char* package;
    const char* className;
    mutable std::atomic<unsigned char> state;
};

// The text of a traced value. A value with a GetValueString() member gives
// its value string, one with a free GetValueString (the enumerations of the
// engine) that one; numbers are rendered as Diagnostics::String renders
// them, a text as it stands (a null one as empty), a pointer as an ObjectID.
inline const String& TraceText(const String& text) noexcept
{
    return text;
}
inline String TraceText(const char* text)
{
    return String(text);
}
inline String TraceText(bool value)
{
    return String(value);
}
template <class T>
    requires std::is_integral_v<T> && std::is_signed_v<T>
String TraceText(T value)
{
    return String(static_cast<long>(value));
}
template <class T>
    requires std::is_integral_v<T> && std::is_unsigned_v<T> && (!std::same_as<T, bool>)
String TraceText(T value)
{
    return String(static_cast<unsigned long>(value));
}
inline String TraceText(float value)
{
    return String(value);
}
inline String TraceText(double value)
{
    return String(value);
}
inline String TraceText(const void* pointer)
{
    return ObjectID(pointer).ToString();
}
template <class T>
    requires requires(const T& value) { value.GetValueString(); }
String TraceText(const T& value)
{
    return String(value.GetValueString());
}
template <class T>
    requires(!requires(const T& value) { value.GetValueString(); }) &&
            requires(const T& value) { GetValueString(value); }
String TraceText(const T& value)
{
    return String(GetValueString(value));
}

// The pieces' texts, one after the other.
template <class... Pieces>
String TraceJoin(const Pieces&... pieces)
{
    String text;
    ((text += TraceText(pieces)), ...);
    return text;
}

// The trace object of a trace point, made only when the point is on.
class TraceScope {
public:
    TraceScope(const TraceSite& site, const void* object, const char* function)
    {
        if (site.IsOn()) {
            item.emplace(object, site.Package(), site.ClassName(), function);
        }
    }
    TraceScope(const TraceScope&) = delete;
    TraceScope& operator=(const TraceScope&) = delete;

    bool IsOn() const noexcept { return item.has_value(); }
    TraceItem& Item() { return *item; }

private:
    std::optional<TraceItem> item;
};

// Logs `text` as one developer's line (DebugTraceItem) of the site's
// package and class.
void TraceMessage(const TraceSite& site, const void* object, const char* function, const String& text);

} // namespace Diagnostics

// `package` and `className` must be constant expressions (string literals,
// or `constexpr const char*` names): they initialise the point's site at
// compile time. A `const char* const` is not one for every compiler.
#define QVI_TRACE_BEGIN(object, package, className, function)                                                   \
    static constinit ::Diagnostics::TraceSite qviTraceSite{package, className};                                 \
    ::Diagnostics::TraceScope qviTraceScope(qviTraceSite, object, function)

#define QVI_TRACE_PARAMETER(name, ...)                                                                           \
    do {                                                                                                         \
        if (qviTraceScope.IsOn()) {                                                                              \
            qviTraceScope.Item().AddParameter(name) << ::Diagnostics::TraceJoin(__VA_ARGS__);                    \
        }                                                                                                        \
    } while (false)

#define QVI_TRACE_CALL()                                                                                         \
    do {                                                                                                         \
        if (qviTraceScope.IsOn()) {                                                                              \
            qviTraceScope.Item().LogCall();                                                                      \
        }                                                                                                        \
    } while (false)

#define QVI_TRACE(object, package, className, function)                                                         \
    QVI_TRACE_BEGIN(object, package, className, function);                                                      \
    QVI_TRACE_CALL()

#define QVI_TRACE_RETURN(...)                                                                                    \
    do {                                                                                                         \
        if (qviTraceScope.IsOn()) {                                                                              \
            qviTraceScope.Item().AddReturnValue() << ::Diagnostics::TraceJoin(__VA_ARGS__);                      \
        }                                                                                                        \
    } while (false)

#define QVI_TRACE_MESSAGE(object, package, className, function, ...)                                            \
    do {                                                                                                         \
        static constinit ::Diagnostics::TraceSite qviMessageSite{package, className};                           \
        if (qviMessageSite.IsOn()) {                                                                             \
            ::Diagnostics::TraceMessage(qviMessageSite, object, function, ::Diagnostics::TraceJoin(__VA_ARGS__)); \
        }                                                                                                        \
    } while (false)

#endif
