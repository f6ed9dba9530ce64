#ifndef QVIMANAGER_PLATFORM_POSIX_STRING_CONVERTER_PC_H
#define QVIMANAGER_PLATFORM_POSIX_STRING_CONVERTER_PC_H

// StringConverter_PC: StringConverter on a POSIX system. Only
// StringConverter::NewInstance makes one, and StringConverter's static
// operations are these; see string_converter.h for what they do.
//
// The conversions go through iconv, between "UTF-16LE" or "UTF-16BE" (the
// host's byte order, so that no byte-order mark is read or written) and the
// codeset nl_langinfo(CODESET) names for the calling thread's locale. Each
// call opens a conversion descriptor of its own and closes it before it
// returns.

#include "qvimanager/platform/string_converter.h"

namespace Utilities {

class StringConverter_PC : public StringConverter {
public:
    StringConverter_PC();
    ~StringConverter_PC() override;

    static bool UnicodeToChar(const unsigned short* source, char* target, unsigned long targetLength);
    static bool CharToUnicode(const char* source, unsigned short* target, unsigned long targetLength);
    static unsigned long CharLength(const unsigned short* source);
    static unsigned long UnicodeLength(const char* source);

private:
    StringConverter_PC(const StringConverter_PC&);
    StringConverter_PC& operator=(const StringConverter_PC&);
};

} // namespace Utilities

#endif
