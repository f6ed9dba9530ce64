#include "qvimanager/platform/string_converter.h"

#include "qvimanager/platform/posix/string_converter_pc.h"

namespace Utilities {

// The conversions depend on the platform's converters, so the static
// operations are the platform class's.

bool StringConverter::UnicodeToChar(const unsigned short* source, char* target, unsigned long targetLength)
{
    return StringConverter_PC::UnicodeToChar(source, target, targetLength);
}

bool StringConverter::CharToUnicode(const char* source, unsigned short* target, unsigned long targetLength)
{
    return StringConverter_PC::CharToUnicode(source, target, targetLength);
}

unsigned long StringConverter::CharLength(const unsigned short* source)
{
    return StringConverter_PC::CharLength(source);
}

unsigned long StringConverter::UnicodeLength(const char* source)
{
    return StringConverter_PC::UnicodeLength(source);
}

SmartPointer<StringConverter> StringConverter::NewInstance()
{
    return SmartPointer<StringConverter>(new StringConverter_PC());
}

StringConverter::StringConverter() = default;
StringConverter::StringConverter(const StringConverter&) = default;
StringConverter& StringConverter::operator=(const StringConverter&) = default;
StringConverter::~StringConverter() = default;

} // namespace Utilities
