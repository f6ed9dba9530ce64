#ifndef QVIMANAGER_FOUNDATION_CLASS_NAME_H
#define QVIMANAGER_FOUNDATION_CLASS_NAME_H

// The run-time class name of an object as the C++ run-time knows it,
// demangled: "Utilities::ExceptionOutOfBound". Used by the GetValueString of
// classes that report their own class.

#include "qvimanager/foundation/string.h"

#include <typeinfo>

namespace Utilities {

String GetRuntimeClassName(const std::type_info& type);

} // namespace Utilities

#endif
