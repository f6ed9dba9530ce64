#ifndef QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_STRING_H
#define QVIMANAGER_DIAGNOSTICS_DIAGNOSTIC_STRING_H

// Diagnostics::String: the text type of diagnostics, separate from
// Utilities::String so that it works before and beneath the foundation.
//
// The text lives in a block of the diagnostics pool (memory_manager.h), never
// on the heap. Copies share the block and count references; a string that
// is about to change gets its own copy of a shared block first.
//
// A block has 256 bytes, so a text is cut at 255 characters and a
// terminator. A cut string reports the block's size (256) as its length while
// holding 255 characters: operator[](255) reads the terminator.
//
// Numbers are rendered with the C library's formats: "%i" for int, long and
// short, "%u" for the unsigned forms, "%.15g" for float and double, "true" or
// "false" for bool. The integer formats render 32-bit values, as on the
// platform the system was made for: a long or unsigned long outside 32 bits
// is rendered as its low 32 bits (signed for "%i").

#include "qvimanager/diagnostics/memory_manager.h"

#include <cstdint>

namespace Diagnostics {

class String {
public:
    String();
    // A null or empty text gives an empty string, which holds no block.
    String(const char* text);
    String(int value);
    String(long value);
    String(short value);
    String(unsigned int value);
    String(unsigned long value);
    String(unsigned short value);
    String(float value);
    String(double value);
    String(bool value);
    String(const String& other);
    String& operator=(const String& other);
    ~String();

    // The text; an empty string gives "".
    const char* c_str() const;

    // Appends, cutting the result at the block's size. Appending a string to
    // itself is safe.
    String& operator+=(const String& other);
    String& operator+=(const char* text);
    String operator+(const String& other) const;

    // The texts are the same.
    bool operator==(const String& other) const;

    // The character at index. Throws ExceptionDiagnostic with
    // "Diagnostics::String::operator[]: index out of range" for an index at
    // or past the length.
    char operator[](unsigned index) const;

    bool IsEmpty() const;
    bool HasText() const;

    String GetValueString() const;

private:
    // Takes a new block for `count` characters and a terminator and fills it,
    // cutting the text at the block's size.
    void Assign(const char* text, unsigned count);
    // Appends `count` characters of `text` in place, cutting at the block's
    // size. The string holds a block of its own.
    void AppendInPlace(const char* text, unsigned count);
    // Gives the string its own copy of a block that others share.
    void PrepareModification();
    void Release();
    // Characters actually held: a cut string holds one less than its length.
    unsigned Characters() const;

    MemoryBlock<char>* block;
    std::uint32_t length;
};

} // namespace Diagnostics

#endif
