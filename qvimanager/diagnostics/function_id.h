#ifndef QVIMANAGER_DIAGNOSTICS_FUNCTION_ID_H
#define QVIMANAGER_DIAGNOSTICS_FUNCTION_ID_H

// What a trace line names: the function (FunctionID) and, for a member, the
// object it runs on (ObjectID).

#include "qvimanager/diagnostics/diagnostic_string.h"

#include <cstdint>

namespace Diagnostics {

// A traced function: its kind and its description "package::class::function"
// ("package::function" for a free function). A null name counts as empty.
class FunctionID {
public:
    // The type codes.
    static constexpr std::int32_t FreeFunction = 1;
    static constexpr std::int32_t Constructor = 2;
    static constexpr std::int32_t Destructor = 3;
    static constexpr std::int32_t Method = 4;

    // The code is Constructor when the function name equals the class name,
    // which is tested first (so an empty class with an empty function is a
    // constructor); else FreeFunction when the class name is empty; else
    // Destructor when the function name starts with '~'; else Method.
    FunctionID(const char* package, const char* className, const char* function);

    std::int32_t GetTypeCode() const;
    // The package, "::", then the class and "::" if the class is not empty,
    // then the function; cut at 255 characters like every diagnostics text.
    const String& GetDescription() const;

private:
    std::int32_t typeCode;
    String description;
};

// The object a member function runs on, or none (a null pointer).
class ObjectID {
public:
    explicit ObjectID(const void* object = nullptr);

    // No object: the pointer is null.
    bool IsEmpty() const;
    bool KnowsObject() const;
    // "0x" and all 64 bits of the pointer in lower-case hexadecimal without
    // leading zeros ("0x7ffc1a2b3c40"); an empty text for a null pointer.
    String ToString() const;

private:
    const void* object;
};

} // namespace Diagnostics

#endif
