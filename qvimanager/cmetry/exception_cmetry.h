#ifndef QVIMANAGER_CMETRY_EXCEPTION_CMETRY_H
#define QVIMANAGER_CMETRY_EXCEPTION_CMETRY_H

// The failure of the colorimetry and densitometry engine: bad condition keys
// and values, and failed calculations reported by the service façades.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

namespace CMetry {

class ExceptionCMetry : public Utilities::ExceptionBusiness {
public:
    explicit ExceptionCMetry(Utilities::String text);
};

} // namespace CMetry

#endif
