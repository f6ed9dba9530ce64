#ifndef QVIMANAGER_PLATFORM_STRING_CONVERTER_H
#define QVIMANAGER_PLATFORM_STRING_CONVERTER_H

// Utilities::StringConverter: conversion between 16-bit and 8-bit text.
//
// 16-bit text is UTF-16 in the host's byte order, one unsigned short per
// unit; a character outside the Basic Multilingual Plane takes two units (a
// surrogate pair). 8-bit text is in the encoding of the calling thread's
// current locale (its LC_CTYPE codeset, read at each call), so in the "C"
// locale it is ASCII and in a UTF-8 locale UTF-8. Both kinds of text end at
// their terminator, the unit 0 or the byte 0.
//
// The conversions report through their result and never throw:
//   - A null source gives an empty target and true.
//   - A target without room for the whole text and its terminator gives
//     false; the target is left an empty string.
//   - Text that cannot be converted gives an empty target and true: invalid
//     input (a lone surrogate, a byte sequence that is not valid in the
//     codeset, a text that ends inside a character) and characters the
//     codeset cannot represent. Which of these holds depends on the whole
//     text and never on where the target runs out.
//   - A target length of 0, or a null target, leaves no room even for the
//     terminator: the result is false and nothing is written.
// Characters are converted one for one. A text in decomposed form (a letter
// followed by a combining mark) is not composed first, so it converts only
// where the codeset represents the combining mark.
//
// The operations are static; objects exist for callers that hold the
// converter through NewInstance. Each call opens and closes a converter of
// its own, so calls from several threads need no lock. Without a converter
// from the system for the locale's codeset (or without the memory for one)
// the text counts as one that cannot be converted.

#include "qvimanager/foundation/smart_pointer.h"

namespace Utilities {

class StringConverter {
public:
    virtual ~StringConverter();

    // 16-bit `source` into at most `targetLength` bytes of `target`,
    // terminator included. See above for the results.
    static bool UnicodeToChar(const unsigned short* source, char* target, unsigned long targetLength);
    // 8-bit `source` into at most `targetLength` units of `target`,
    // terminator included. See above for the results.
    static bool CharToUnicode(const char* source, unsigned short* target, unsigned long targetLength);
    // The bytes `source` takes in 8-bit form, without the terminator: a
    // target of CharLength + 1 bytes always suffices. 0 for a null source
    // and for a text that cannot be converted.
    static unsigned long CharLength(const unsigned short* source);
    // The units `source` takes in 16-bit form, without the terminator (a
    // surrogate pair counts 2): a target of UnicodeLength + 1 units always
    // suffices. 0 for a null source and for a text that cannot be converted.
    static unsigned long UnicodeLength(const char* source);

    // The platform's converter.
    static SmartPointer<StringConverter> NewInstance();

protected:
    StringConverter();
    StringConverter(const StringConverter& other);
    StringConverter& operator=(const StringConverter& other);
};

} // namespace Utilities

#endif
