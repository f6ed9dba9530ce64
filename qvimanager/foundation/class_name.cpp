#include "qvimanager/foundation/class_name.h"

#include <cstdlib>
#include <cxxabi.h>

namespace Utilities {

String GetRuntimeClassName(const std::type_info& type)
{
    int status = 0;
    char* demangled = abi::__cxa_demangle(type.name(), nullptr, nullptr, &status);
    if (status != 0 || demangled == nullptr) {
        std::free(demangled);
        return String(type.name());
    }
    String name(demangled);
    std::free(demangled);
    return name;
}

} // namespace Utilities
