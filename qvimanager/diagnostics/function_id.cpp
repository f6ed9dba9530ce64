#include "qvimanager/diagnostics/function_id.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>

namespace Diagnostics {

namespace {

const char* OrEmpty(const char* text)
{
    return text == nullptr ? "" : text;
}

std::int32_t TypeCodeOf(const char* className, const char* function)
{
    if (std::strcmp(function, className) == 0) {
        return FunctionID::Constructor;
    }
    if (className[0] == '\0') {
        return FunctionID::FreeFunction;
    }
    if (function[0] == '~') {
        return FunctionID::Destructor;
    }
    return FunctionID::Method;
}

} // namespace

FunctionID::FunctionID(const char* package, const char* className, const char* function)
    : typeCode(TypeCodeOf(OrEmpty(className), OrEmpty(function))), description(package)
{
    description += "::";
    if (OrEmpty(className)[0] != '\0') {
        description += className;
        description += "::";
    }
    description += function;
}

std::int32_t FunctionID::GetTypeCode() const
{
    return typeCode;
}

const String& FunctionID::GetDescription() const
{
    return description;
}

ObjectID::ObjectID(const void* trackedObject) : object(trackedObject) {}

bool ObjectID::IsEmpty() const
{
    return object == nullptr;
}

bool ObjectID::KnowsObject() const
{
    return object != nullptr;
}

String ObjectID::ToString() const
{
    if (object == nullptr) {
        return String();
    }
    char buffer[2 + 2 * sizeof(std::uintptr_t) + 1];
    std::snprintf(buffer, sizeof buffer, "0x%" PRIxPTR, reinterpret_cast<std::uintptr_t>(object));
    return String(buffer);
}

} // namespace Diagnostics
