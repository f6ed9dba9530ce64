#include "qvimanager/diagnostics/exception_diagnostic.h"

namespace Diagnostics {

ExceptionDiagnostic::ExceptionDiagnostic(const String& exceptionText) : text(exceptionText) {}

String ExceptionDiagnostic::GetExceptionText() const
{
    return text;
}

} // namespace Diagnostics
