#ifndef QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_STREAM_H
#define QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_STREAM_H

// Diagnostics::Stream: the text a trace object gathers (its parameter list
// or its return value), written with operator<<.
//
//     stream << "name" << Diagnostics::String(2.5) << 42;
//
// Only texts and int have an operator<<: any other number converts to int
// (a double is cut), so render it as a Diagnostics::String first.

#include "qvimanager/diagnostics/diagnostic_string.h"

namespace Diagnostics {

class Stream : public String {
public:
    Stream() = default;

    // Empties the text.
    void Clear();
    // The text is empty.
    bool IsClear() const;

    // Append, cutting at 255 characters like every diagnostics text.
    Stream& operator<<(const char* text);
    Stream& operator<<(const String& text);
    Stream& operator<<(int value);
};

} // namespace Diagnostics

#endif
