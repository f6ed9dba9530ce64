#ifndef QVIMANAGER_DIAGNOSTICS_EXCEPTION_DIAGNOSTIC_H
#define QVIMANAGER_DIAGNOSTICS_EXCEPTION_DIAGNOSTIC_H

// The failure of the diagnostics layer. It stands outside the Utilities
// exception tree, since diagnostics depends on nothing of Utilities.

#include "qvimanager/diagnostics/diagnostic_string.h"

namespace Diagnostics {

class ExceptionDiagnostic {
public:
    explicit ExceptionDiagnostic(const String& text);

    // A copy of the text.
    String GetExceptionText() const;

private:
    String text;
};

} // namespace Diagnostics

#endif
