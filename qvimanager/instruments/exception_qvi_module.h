#ifndef QVIMANAGER_INSTRUMENTS_EXCEPTION_QVI_MODULE_H
#define QVIMANAGER_INSTRUMENTS_EXCEPTION_QVI_MODULE_H

// ExceptionQVIModule: the exception of the instrument side, for drivers and
// other plug-ins to raise. The library itself raises none.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

namespace QVIManager {

class ExceptionQVIModule : public Utilities::ExceptionResource {
public:
    // The text as given.
    explicit ExceptionQVIModule(const Utilities::String& text);
    // The translation of "Error in ", then `module` (never translated), ": "
    // and `detail`; an empty detail is replaced by the translation of "No
    // response.".
    ExceptionQVIModule(const Utilities::String& module, const Utilities::String& detail);
};

} // namespace QVIManager

#endif
