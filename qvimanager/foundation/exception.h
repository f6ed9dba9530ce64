#ifndef QVIMANAGER_FOUNDATION_EXCEPTION_H
#define QVIMANAGER_FOUNDATION_EXCEPTION_H

// The failure channel of the library: every failure is a class of this tree,
// thrown by value and caught by reference, carrying one String.
//
//   Exception
//   +- ExceptionResource
//   |  +- ExceptionNullpointer, ExceptionOutOfBound, ExceptionOutOfMemory,
//   |  |  ExceptionResourceNotAvailable
//   |  +- ExceptionComponentFactory, ExceptionDllLoader,
//   |     ExceptionMultithreading, ExceptionNamingService
//   |     (and QVIManager::ExceptionQVIModule, with the instrument manager)
//   +- ExceptionBusiness
//   |  +- ExceptionWrongType, ExceptionCalculationProblem
//   |     (and CMetry::ExceptionCMetry, with the calculation engine)
//   +- ExceptionGUI
//      +- ExceptionGUICreation
//
// Exception itself cannot be thrown: its text constructor is protected. No
// subclass adds a field or a virtual operation.

#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/foundation/string.h"

namespace Utilities {

class Exception {
public:
    // Makes its own heap copy of the text: copies never share it.
    Exception(const Exception& other);
    virtual ~Exception();
    // The run-time class name, ": ", then the text.
    virtual Diagnostics::String GetValueString() const;

    const String& GetExceptionText() const;
    void Invariant() const {}

protected:
    explicit Exception(const String& text);

private:
    Exception& operator=(const Exception&);

    // Traces a moment of the exception's life ("Throw: ",
    // "Copy-Constructor: ", "Catch: ", then the run-time class name, ": " and
    // the text) as a line of package "Utilities", class "Exception", when
    // tracing is on (diagnostics/trace.h).
    void TraceLifecycle(const char* moment) const;

    String* text;
};

class ExceptionResource : public Exception {
public:
    explicit ExceptionResource(const String& text);
    explicit ExceptionResource(const char* const text);
};

class ExceptionBusiness : public Exception {
public:
    explicit ExceptionBusiness(const String& text);
    explicit ExceptionBusiness(const char* const text);
};

class ExceptionGUI : public Exception {
public:
    explicit ExceptionGUI(const String& text);
    explicit ExceptionGUI(const char* const text);
};

class ExceptionGUICreation : public ExceptionGUI {
public:
    using ExceptionGUI::ExceptionGUI;
};

class ExceptionNullpointer : public ExceptionResource {
public:
    using ExceptionResource::ExceptionResource;
};

class ExceptionOutOfBound : public ExceptionResource {
public:
    using ExceptionResource::ExceptionResource;
};

class ExceptionOutOfMemory : public ExceptionResource {
public:
    using ExceptionResource::ExceptionResource;
};

class ExceptionResourceNotAvailable : public ExceptionResource {
public:
    using ExceptionResource::ExceptionResource;
};

class ExceptionComponentFactory : public ExceptionResource {
public:
    explicit ExceptionComponentFactory(const String& text);
};

class ExceptionDllLoader : public ExceptionResource {
public:
    explicit ExceptionDllLoader(const String& text);
};

class ExceptionMultithreading : public ExceptionResource {
public:
    explicit ExceptionMultithreading(const String& text);
};

class ExceptionNamingService : public ExceptionResource {
public:
    explicit ExceptionNamingService(const String& text);
};

class ExceptionWrongType : public ExceptionBusiness {
public:
    using ExceptionBusiness::ExceptionBusiness;
};

class ExceptionCalculationProblem : public ExceptionBusiness {
public:
    explicit ExceptionCalculationProblem(const String& text);
};

} // namespace Utilities

#endif
