#include "qvimanager/foundation/exception.h"

#include "qvimanager/diagnostics/trace.h"
#include "qvimanager/foundation/class_name.h"

#include <typeinfo>

namespace Utilities {

Exception::Exception(const String& exceptionText) : text(new String(exceptionText))
{
    TraceLifecycle("Throw: ");
}

Exception::Exception(const Exception& other) : text(new String(*other.text))
{
    TraceLifecycle("Copy-Constructor: ");
}

Exception::~Exception()
{
    TraceLifecycle("Catch: ");
    delete text;
    text = nullptr;
}

Diagnostics::String Exception::GetValueString() const
{
    Diagnostics::String value(GetRuntimeClassName(typeid(*this)).GetCharPointer());
    value += ": ";
    value += text->GetCharPointer();
    return value;
}

const String& Exception::GetExceptionText() const
{
    return *text;
}

void Exception::TraceLifecycle(const char* moment) const
{
    // Within the constructors and the destructor of Exception the run-time
    // class is Exception itself.
    QVI_TRACE_MESSAGE(this, "Utilities", "Exception", "TraceLifecycle", moment, Exception::GetValueString());
}

ExceptionResource::ExceptionResource(const String& exceptionText) : Exception(exceptionText) {}
ExceptionResource::ExceptionResource(const char* const exceptionText) : Exception(String(exceptionText)) {}

ExceptionBusiness::ExceptionBusiness(const String& exceptionText) : Exception(exceptionText) {}
ExceptionBusiness::ExceptionBusiness(const char* const exceptionText) : Exception(String(exceptionText)) {}

ExceptionGUI::ExceptionGUI(const String& exceptionText) : Exception(exceptionText) {}
ExceptionGUI::ExceptionGUI(const char* const exceptionText) : Exception(String(exceptionText)) {}

ExceptionComponentFactory::ExceptionComponentFactory(const String& exceptionText)
    : ExceptionResource(exceptionText)
{
}

ExceptionDllLoader::ExceptionDllLoader(const String& exceptionText) : ExceptionResource(exceptionText) {}

ExceptionMultithreading::ExceptionMultithreading(const String& exceptionText)
    : ExceptionResource(exceptionText)
{
}

ExceptionNamingService::ExceptionNamingService(const String& exceptionText)
    : ExceptionResource(exceptionText)
{
}

ExceptionCalculationProblem::ExceptionCalculationProblem(const String& exceptionText)
    : ExceptionBusiness(exceptionText)
{
}

} // namespace Utilities
