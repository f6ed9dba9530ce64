#ifndef QVIMANAGER_FOUNDATION_STRING_H
#define QVIMANAGER_FOUNDATION_STRING_H

// Utilities::String: the one text type of the foundation. Keys of every Map,
// component names, messages, file names and measure-condition values are
// Strings.
//
// A String is a NUL-terminated byte string. Texts below 20 characters live in
// an inline buffer; longer ones in a heap block of exactly length + 1 bytes.
// Comparisons use strcmp, so a NUL inside the text (only the std::string
// constructor can bring one in) ends a comparison.
//
// Every operation that makes new text takes a fresh serial stamp from one
// process-wide counter (32 bits, wrapping, unsynchronised); copies and
// assignment take the source's stamp, and so do GetAsUpper and GetAsLower.
// operator!= treats strings of equal length and equal stamp as equal without
// comparing them, and operator== always compares. So for a string s holding a
// lower-case letter, both s == s.GetAsUpper() and s != s.GetAsUpper() are
// false. That asymmetry is part of the contract.
//
// Numeric conversions refuse bad text by throwing ExceptionOutOfBound with the
// string's text followed by the reason; their limits are those of 32-bit
// integers on every platform.

#include "qvimanager/diagnostics/diagnostic_string.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace Utilities {

template <typename T>
class List;

class String {
public:
    // Empty.
    String();
    String(const String& other);
    // The moved-from string is left empty; the target takes the source's
    // stamp, as a copy does.
    String(String&& other) noexcept;
    // Copies up to the NUL; a null pointer gives the empty string.
    String(const char* text);
    // One character; the character 0 gives the empty string.
    explicit String(char character);
    // Decimal digits with a leading '-' when negative, no other sign and no
    // grouping. The full width of long is written.
    explicit String(long value);
    explicit String(unsigned long value);
    // The same text as the wider forms.
    explicit String(short value);
    explicit String(unsigned short value);
    explicit String(int value);
    explicit String(unsigned int value);
    // Fixed-point text with `decimals` digits behind `separator`, rounded half
    // up on the magnitude; magnitudes from 1e16 on are scaled to one integer
    // digit and followed by "E+" and the exponent ("1.50E+20"). The library's
    // own digit algorithm is used, not the C library's formatting. A sign is
    // dropped when the text, read as the C library reads a number (in the
    // "C" locale), is zero; since that reading stops at a separator other
    // than '.', such a separator drops the sign of every value between -1
    // and 0. A negative `decimals` counts as
    // 0. Throws ExceptionOutOfBound with "Can't convert a value that is not
    // finite to text." for an infinite or NaN value, or when the rounding
    // overflows (a huge `decimals`).
    String(double value, short decimals, char separator);
    // Copies exactly the string's size() bytes, NULs included.
    String(const std::string& text);
    ~String();

    // Self-assignment does nothing. Takes the source's stamp.
    const String& operator=(const String& other);
    const String& operator=(String&& other) noexcept;

    // Lengths differ: false; otherwise strcmp is 0.
    bool operator==(const String& other) const;
    // Lengths differ: true; equal stamps: false; otherwise strcmp is not 0.
    bool operator!=(const String& other) const;
    // strcmp below 0: byte order, bytes compared unsigned.
    bool operator<(const String& other) const;

    // An empty right side gives a copy of the left with its stamp, an empty
    // left side a copy of the right with its stamp; otherwise a fresh stamp.
    String operator+(const String& other) const;
    // An empty right side changes nothing, not even the stamp. Appending a
    // string to itself is safe.
    void operator+=(const String& other);

    // The text up to the first NUL.
    operator std::string() const;

    unsigned long Length() const
    {
        return length;
    }
    const char* GetCharPointer() const
    {
        return data;
    }

    // h = (h * 64 + c) modulo `modulus` for each character c in order, with c
    // sign-extended (bytes from 128 on count as negative) and h * 64 + c
    // wrapping in 32 unsigned bits before the modulo. The empty string gives
    // 0. A modulus of 0 on a non-empty string would divide by zero: it throws
    // ExceptionOutOfBound with "String::GetHash(): modulus is 0".
    unsigned long GetHash(unsigned long modulus) const;

    // An empty `sub` gives `start` unchanged. Otherwise the first position at
    // or after `start` where `sub` stands, or -1.
    long FindSubstring(const String& sub, long start) const;
    // Index of the first `c` at or after `start` (cut to the length), or -1.
    long GetPosition(char c, unsigned long start) const;
    // Index of the last `c` at or before `start`; a negative start, or one
    // past the length, counts as length - 1. -1 when there is none.
    long GetReversePosition(char c, long start) const;

    // Text to number. Blanks and tabs are skipped, then one '+'; the digits
    // that follow make the number, and the first other character ends it
    // ("12abc" is 12, "+" alone is 0). Neither a '+' nor a digit there:
    // "<text> is not a valid number.".
    // Beyond 4294967295: "<text> is to big for an unsigned long.".
    unsigned long GetUnsignedLong() const;
    // As GetUnsignedLong; 65536 or more: "<text> is to big for a short.".
    unsigned short GetUnsignedShort() const;
    // Blanks are skipped, then one optional '-', then as GetUnsignedLong.
    // Outside -32768 ... 32767: "<text> is to big for a short.".
    short GetShort() const;
    // Blanks are skipped, then one optional '-', then as GetUnsignedLong.
    // Outside -2147483648 ... 2147483647: "<text> is to big for a long.".
    long GetLong() const;
    // The text read as a C floating-point number (in the "C" locale, whatever
    // the process's locale): no check, no exception, 0 for text that is no
    // number.
    double GetDouble() const;

    // Tokens are the pieces between single-character separators; the
    // operations deliberately disagree about empty pieces.
    //
    // Walks `index` separators from the start and returns the piece behind
    // the last one, up to the next separator or the end. Fewer separators
    // than `index`: throws ExceptionOutOfBound with "String empty".
    String GetToken(unsigned long index, char separator) const;
    // 0 for the empty string, otherwise the number of separators plus 1.
    unsigned long GetTokenCount(char separator) const;
    // The non-empty pieces that a separator follows: the piece behind the
    // last separator is never returned, so "a,b,c" gives "a" and "b", "a,,b"
    // gives "a", and a text without a separator gives an empty list. (Use
    // containers.h to call it.)
    List<String> GetTokens(char separator) const;
    // Tokens 0 to n, both included, joined with the separator. n at or above
    // GetTokenCount: throws ExceptionOutOfBound with "Token number too large".
    String GetLeftTokens(unsigned long n, char separator) const;
    // Tokens n to the last, joined with the separator. Same check and text.
    String GetRightTokens(unsigned long n, char separator) const;

    // `start` at or past the length: empty. A `count` of 0, or one reaching
    // past the length, takes everything from `start` on.
    String Mid(unsigned long start, unsigned long count) const;

    // Replaces every occurrence of `from`, left to right and without overlap;
    // `to` is never searched again. Takes a fresh stamp even when nothing was
    // replaced.
    void Replace(const String& from, const String& to);

    // ASCII letters changed, every other byte kept (the C locale's toupper and
    // tolower); the copy keeps the stamp of this string.
    String GetAsUpper() const;
    String GetAsLower() const;

    // The same text as a Diagnostics::String (cut at 255 characters).
    Diagnostics::String GetValueString() const;
    void Invariant() const {}

private:
    static constexpr unsigned long InlineCapacity = 20;

    // Storage for `count` characters plus the terminator, by the rule:
    // below 20 inline, otherwise a heap block of exactly count + 1 bytes.
    // The old heap block, if any, is freed. The text is not written.
    void Allocate(unsigned long count);
    // Copies `count` bytes of `text` (NULs included) as the new text.
    void AssignBytes(const char* text, unsigned long count);
    void FreeBlock();
    void TakeFreshStamp();
    // Takes the other's text and stamp, leaving it empty.
    void TakeOver(String& other) noexcept;

    // Write the digits backwards into the end of a scratch text of 24
    // characters and return where the text starts.
    static char* UnsignedLongToCharPointer(unsigned long value, char* scratch);
    static char* LongToCharPointer(long value, char* scratch);
    unsigned long CharPointerToUnsignedLong(const char* text) const;
    // The skipped blanks and the optional '-' of GetShort and GetLong.
    const char* SkipBlanksAndMinus(bool& negative) const;
    // Position of separator number `n` (counted from 0), or -1.
    long SeparatorPosition(unsigned long n, char separator) const;
    // A copy, with this string's stamp, in which the bytes from `first` to
    // `last` are moved to the range starting at `target`.
    String WithLettersMoved(char first, char last, char target) const;
    // The bytes from `start` on, `count` of them (no rule for 0).
    String Bytes(unsigned long start, unsigned long count) const;

    char* data;
    char buffer[InlineCapacity];
    unsigned long length;
    unsigned long stamp;

    // Taken by strings made on any thread, so atomic.
    static std::atomic<std::uint32_t> nextStamp;
};

} // namespace Utilities

#endif
