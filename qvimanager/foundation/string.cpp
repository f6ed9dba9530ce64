#include "qvimanager/foundation/string.h"

#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <locale.h>

namespace Utilities {

std::atomic<std::uint32_t> String::nextStamp(0);

namespace {

const char kDigits[] = "0123456789";

// The C library's atof as in the "C" locale, so that a process locale with a
// decimal comma does not change how text reads.
double ReadDouble(const char* text)
{
    static const locale_t cLocale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return strtod_l(text, nullptr, cLocale);
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

// ---------------------------------------------------------------- storage

void String::TakeFreshStamp()
{
    stamp = nextStamp.fetch_add(1, std::memory_order_relaxed);
}

void String::FreeBlock()
{
    if (data != buffer) {
        delete[] data;
        data = buffer;
    }
}

void String::Allocate(unsigned long count)
{
    FreeBlock();
    data = count < InlineCapacity ? buffer : new char[count + 1];
    length = count;
}

void String::AssignBytes(const char* text, unsigned long count)
{
    Allocate(count);
    if (count > 0) {
        std::memcpy(data, text, count);
    }
    data[count] = '\0';
}

String String::Bytes(unsigned long start, unsigned long count) const
{
    String result;
    result.AssignBytes(data + start, count);
    return result;
}

// ---------------------------------------------------------------- construction

String::String() : data(buffer), buffer(), length(0), stamp(0)
{
    TakeFreshStamp();
}

String::String(const String& other) : data(buffer), buffer(), length(0), stamp(other.stamp)
{
    AssignBytes(other.data, other.length);
}

String::String(String&& other) noexcept : data(buffer), buffer(), length(0), stamp(0)
{
    TakeOver(other);
}

void String::TakeOver(String& other) noexcept
{
    FreeBlock();
    length = other.length;
    stamp = other.stamp;
    if (other.data == other.buffer) {
        std::memcpy(buffer, other.buffer, other.length + 1);
    } else {
        data = other.data;
        other.data = other.buffer;
    }
    other.length = 0;
    other.buffer[0] = '\0';
}

String::String(const char* text) : data(buffer), buffer(), length(0), stamp(0)
{
    if (text != nullptr) {
        AssignBytes(text, std::strlen(text));
    }
    TakeFreshStamp();
}

String::String(char character) : data(buffer), buffer(), length(0), stamp(0)
{
    if (character != '\0') {
        AssignBytes(&character, 1);
    }
    TakeFreshStamp();
}

String::String(const std::string& text) : data(buffer), buffer(), length(0), stamp(0)
{
    AssignBytes(text.data(), text.size());
    TakeFreshStamp();
}

char* String::UnsignedLongToCharPointer(unsigned long value, char* scratch)
{
    char* position = scratch + std::strlen(scratch);
    do {
        --position;
        *position = kDigits[value % 10];
        value /= 10;
    } while (value != 0);
    return position;
}

char* String::LongToCharPointer(long value, char* scratch)
{
    const bool negative = value < 0;
    // Negated in unsigned arithmetic, so that the most negative value has a
    // magnitude too.
    const unsigned long magnitude =
        negative ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
    char* position = UnsignedLongToCharPointer(magnitude, scratch);
    if (negative) {
        --position;
        *position = '-';
    }
    return position;
}

namespace {

// 24 characters "0" and a terminator: room for every 64-bit value and a sign.
struct Scratch {
    char text[25];
    Scratch()
    {
        std::memset(text, '0', 24);
        text[24] = '\0';
    }
};

} // namespace

String::String(long value) : data(buffer), buffer(), length(0), stamp(0)
{
    Scratch scratch;
    const char* digits = LongToCharPointer(value, scratch.text);
    AssignBytes(digits, std::strlen(digits));
    TakeFreshStamp();
}

String::String(unsigned long value) : data(buffer), buffer(), length(0), stamp(0)
{
    Scratch scratch;
    const char* digits = UnsignedLongToCharPointer(value, scratch.text);
    AssignBytes(digits, std::strlen(digits));
    TakeFreshStamp();
}

// The short forms build the wider form, then take a stamp of their own.
String::String(short value) : String(static_cast<long>(value))
{
    TakeFreshStamp();
}

String::String(unsigned short value) : String(static_cast<unsigned long>(value))
{
    TakeFreshStamp();
}

String::String(int value) : String(static_cast<long>(value)) {}

String::String(unsigned int value) : String(static_cast<unsigned long>(value)) {}

String::String(double value, short decimals, char separator) : data(buffer), buffer(), length(0), stamp(0)
{
    if (!std::isfinite(value)) {
        throw ExceptionOutOfBound("Can't convert a value that is not finite to text.");
    }
    std::string text;
    bool negative = false;
    if (value < 0.0) {
        negative = true;
        value = -value;
        text += '-';
    }
    // log10(0) is minus infinity: a zero never takes the exponent form.
    const double magnitude = std::floor(std::log10(value));
    long exponent = 0;
    const bool exponentForm = magnitude > 15.0;
    if (exponentForm) {
        exponent = static_cast<long>(magnitude);
        value *= std::pow(10.0, static_cast<double>(-exponent));
    }
    // Rounding, half up on the magnitude.
    for (short i = 0; i < decimals; ++i) {
        value *= 10.0;
    }
    value += 0.5;
    for (short i = 0; i < decimals; ++i) {
        value /= 10.0;
    }
    if (!std::isfinite(value)) {
        throw ExceptionOutOfBound("Can't convert a value that is not finite to text.");
    }
    if (value < 1.0) {
        text += '0';
    }
    long integerDigits = 0;
    while (!(value < 1.0)) {
        value /= 10.0;
        ++integerDigits;
    }
    // Each step leaves value in [0, 10): the digit index stays in the table.
    const auto writeDigit = [&value, &text]() {
        const long whole = static_cast<long>(value);
        value = (value - static_cast<double>(whole)) * 10.0;
        text += kDigits[static_cast<long>(value)];
    };
    for (long i = 0; i < integerDigits; ++i) {
        writeDigit();
    }
    if (decimals > 0) {
        text += separator;
        for (short i = 0; i < decimals; ++i) {
            writeDigit();
        }
    }
    std::size_t first = 0;
    if (negative && ReadDouble(text.c_str()) == 0.0) {
        first = 1;
    }
    AssignBytes(text.data() + first, text.size() - first);
    TakeFreshStamp();
    if (exponentForm) {
        operator+=(String("E"));
        operator+=(String("+"));
        operator+=(String(exponent));
    }
}

String::~String()
{
    FreeBlock();
}

const String& String::operator=(const String& other)
{
    if (this != &other) {
        AssignBytes(other.data, other.length);
        stamp = other.stamp;
    }
    return *this;
}

const String& String::operator=(String&& other) noexcept
{
    if (this != &other) {
        TakeOver(other);
    }
    return *this;
}

// ---------------------------------------------------------------- comparison

bool String::operator==(const String& other) const
{
    if (length != other.length) {
        return false;
    }
    return std::strcmp(data, other.data) == 0;
}

bool String::operator!=(const String& other) const
{
    if (length != other.length) {
        return true;
    }
    if (stamp == other.stamp) {
        return false;
    }
    return std::strcmp(data, other.data) != 0;
}

bool String::operator<(const String& other) const
{
    return std::strcmp(data, other.data) < 0;
}

// ---------------------------------------------------------------- concatenation

String String::operator+(const String& other) const
{
    if (other.length == 0) {
        return *this;
    }
    if (length == 0) {
        return other;
    }
    String result;
    result.Allocate(length + other.length);
    std::memcpy(result.data, data, length);
    std::memcpy(result.data + length, other.data, other.length);
    result.data[result.length] = '\0';
    return result;
}

void String::operator+=(const String& other)
{
    if (other.length == 0) {
        return;
    }
    const unsigned long oldLength = length;
    const unsigned long otherLength = other.length;
    const unsigned long newLength = oldLength + otherLength;
    if (newLength < InlineCapacity) {
        // Both texts are short: the result stays in the buffer. For a string
        // appended to itself the source bytes stand before the target bytes.
        std::memmove(buffer + oldLength, other.data, otherLength);
        buffer[newLength] = '\0';
    } else {
        // Always a new block of exactly the new size, even from the heap.
        char* block = new char[newLength + 1];
        std::memcpy(block, data, oldLength);
        std::memcpy(block + oldLength, other.data, otherLength);
        block[newLength] = '\0';
        FreeBlock();
        data = block;
    }
    length = newLength;
    TakeFreshStamp();
}

String::operator std::string() const
{
    return std::string(data);
}

// ---------------------------------------------------------------- hash and search

namespace {

// The hash loop for one width of the modulus.
template <typename Modulus>
std::uint32_t HashBytes(const char* bytes, unsigned long length, Modulus modulus)
{
    std::uint32_t hash = 0;
    for (unsigned long i = 0; i < length; ++i) {
        // Sign-extended character; the sum wraps in 32 unsigned bits.
        const auto character = static_cast<std::uint32_t>(static_cast<std::int32_t>(static_cast<signed char>(bytes[i])));
        const std::uint32_t sum = hash * 64U + character;
        hash = static_cast<std::uint32_t>(sum % modulus);
    }
    return hash;
}

} // namespace

unsigned long String::GetHash(unsigned long modulus) const
{
    if (length > 0 && modulus == 0) {
        throw ExceptionOutOfBound("String::GetHash(): modulus is 0");
    }
    // A modulus of 32 bits divides the 32-bit sum exactly as a wider one
    // does, and faster; one beyond 32 bits leaves the sum as it is.
    if (modulus <= 0xFFFFFFFFUL) {
        return HashBytes(data, length, static_cast<std::uint32_t>(modulus));
    }
    return HashBytes(data, length, static_cast<std::uint64_t>(modulus));
}

long String::GetPosition(char c, unsigned long start) const
{
    if (start > length) {
        start = length;
    }
    const void* found = std::memchr(data + start, c, length - start);
    return found == nullptr ? -1 : static_cast<const char*>(found) - data;
}

long String::GetReversePosition(char c, long start) const
{
    if (length == 0) {
        return -1;
    }
    if (start < 0 || static_cast<unsigned long>(start) > length) {
        start = static_cast<long>(length - 1);
    }
    // The last hit at or before start: the same as a forward scan that keeps
    // its last hit.
    for (long i = start; i >= 0; --i) {
        if (data[i] == c) {
            return i;
        }
    }
    return -1;
}

long String::FindSubstring(const String& sub, long start) const
{
    if (sub.length == 0) {
        return start;
    }
    // A negative start reads as a huge unsigned one: nothing is found.
    auto from = static_cast<unsigned long>(start);
    for (;;) {
        const long position = GetPosition(sub.data[0], from);
        if (position == -1 || static_cast<unsigned long>(position) + sub.length > length) {
            return -1;
        }
        // Compared as C strings, like the piece Mid would cut out.
        if (std::strncmp(data + position, sub.data, sub.length) == 0) {
            return position;
        }
        from = static_cast<unsigned long>(position) + 1;
    }
}

// ---------------------------------------------------------------- text to number

unsigned long String::CharPointerToUnsignedLong(const char* text) const
{
    while (*text == ' ' || *text == '\t') {
        ++text;
    }
    if (*text == '+') {
        ++text;
    } else if (!IsDigit(*text)) {
        throw ExceptionOutOfBound(*this + String(" is not a valid number."));
    }
    std::uint32_t value = 0;
    for (; IsDigit(*text); ++text) {
        const auto digit = static_cast<std::uint32_t>(*text - '0');
        if (value > 429496729U || (value == 429496729U && digit > 5)) {
            throw ExceptionOutOfBound(*this + String(" is to big for an unsigned long."));
        }
        value = value * 10U + digit;
    }
    return value;
}

const char* String::SkipBlanksAndMinus(bool& negative) const
{
    const char* text = data;
    while (*text == ' ') {
        ++text;
    }
    negative = *text == '-';
    if (negative) {
        ++text;
    }
    return text;
}

unsigned long String::GetUnsignedLong() const
{
    return CharPointerToUnsignedLong(data);
}

unsigned short String::GetUnsignedShort() const
{
    const unsigned long value = CharPointerToUnsignedLong(data);
    if (value >= 65536UL) {
        throw ExceptionOutOfBound(*this + String(" is to big for a short."));
    }
    return static_cast<unsigned short>(value);
}

short String::GetShort() const
{
    bool negative = false;
    const unsigned long value = CharPointerToUnsignedLong(SkipBlanksAndMinus(negative));
    if (value > (negative ? 32768UL : 32767UL)) {
        throw ExceptionOutOfBound(*this + String(" is to big for a short."));
    }
    const long signedValue = negative ? -static_cast<long>(value) : static_cast<long>(value);
    return static_cast<short>(signedValue);
}

long String::GetLong() const
{
    bool negative = false;
    const unsigned long value = CharPointerToUnsignedLong(SkipBlanksAndMinus(negative));
    if (value > (negative ? 2147483648UL : 2147483647UL)) {
        throw ExceptionOutOfBound(*this + String(" is to big for a long."));
    }
    return negative ? -static_cast<long>(value) : static_cast<long>(value);
}

double String::GetDouble() const
{
    return ReadDouble(data);
}

// ---------------------------------------------------------------- tokens

unsigned long String::GetTokenCount(char separator) const
{
    if (length == 0) {
        return 0;
    }
    unsigned long count = 1;
    for (unsigned long i = 0; i < length; ++i) {
        if (data[i] == separator) {
            ++count;
        }
    }
    return count;
}

long String::SeparatorPosition(unsigned long n, char separator) const
{
    unsigned long from = 0;
    long position = -1;
    for (unsigned long i = 0; i <= n; ++i) {
        position = GetPosition(separator, from);
        if (position == -1) {
            return -1;
        }
        from = static_cast<unsigned long>(position) + 1;
    }
    return position;
}

String String::GetToken(unsigned long index, char separator) const
{
    unsigned long current = 0;
    for (unsigned long i = 0; i < index; ++i) {
        const long found = GetPosition(separator, current);
        if (found == -1) {
            throw ExceptionOutOfBound("String empty");
        }
        // A found separator always stands inside the text, so the token
        // walk never passes the end.
        current = static_cast<unsigned long>(found) + 1;
    }
    const long next = GetPosition(separator, current);
    if (next == -1) {
        return Mid(current, 0);
    }
    return Bytes(current, static_cast<unsigned long>(next) - current);
}

List<String> String::GetTokens(char separator) const
{
    List<String> tokens;
    unsigned long start = 0;
    for (long found = GetPosition(separator, start); found != -1; found = GetPosition(separator, start)) {
        const auto end = static_cast<unsigned long>(found);
        if (end > start) {
            tokens.Append(Bytes(start, end - start));
        }
        start = end + 1;
    }
    return tokens;
}

String String::GetLeftTokens(unsigned long n, char separator) const
{
    if (n >= GetTokenCount(separator)) {
        throw ExceptionOutOfBound("Token number too large");
    }
    // Tokens 0 to n joined again are the text before separator n.
    const long end = SeparatorPosition(n, separator);
    return Bytes(0, end == -1 ? length : static_cast<unsigned long>(end));
}

String String::GetRightTokens(unsigned long n, char separator) const
{
    if (n >= GetTokenCount(separator)) {
        throw ExceptionOutOfBound("Token number too large");
    }
    // Tokens n to the last joined again are the text behind separator n - 1.
    const unsigned long begin = n == 0 ? 0 : static_cast<unsigned long>(SeparatorPosition(n - 1, separator)) + 1;
    return Bytes(begin, length - begin);
}

// ---------------------------------------------------------------- pieces

String String::Mid(unsigned long start, unsigned long count) const
{
    if (start >= length) {
        return String();
    }
    if (count == 0 || count > length - start) {
        count = length - start;
    }
    return Bytes(start, count);
}

void String::Replace(const String& from, const String& to)
{
    long position = (from.length > 0 && length > 0) ? FindSubstring(from, 0) : -1;
    if (position != -1) {
        // Each occurrence found from the end of the previous one: the text
        // put in is never searched again.
        std::string result;
        unsigned long done = 0;
        while (position != -1) {
            const auto at = static_cast<unsigned long>(position);
            result.append(data + done, at - done);
            result.append(to.data, to.length);
            done = at + from.length;
            position = done < length ? FindSubstring(from, static_cast<long>(done)) : -1;
        }
        result.append(data + done, length - done);
        AssignBytes(result.data(), result.size());
    }
    TakeFreshStamp();
}

String String::WithLettersMoved(char first, char last, char target) const
{
    String result(*this);
    for (unsigned long i = 0; i < result.length; ++i) {
        const char c = result.data[i];
        if (c >= first && c <= last) {
            result.data[i] = static_cast<char>(c - first + target);
        }
    }
    return result;
}

String String::GetAsUpper() const
{
    return WithLettersMoved('a', 'z', 'A');
}

String String::GetAsLower() const
{
    return WithLettersMoved('A', 'Z', 'a');
}

Diagnostics::String String::GetValueString() const
{
    return Diagnostics::String(data);
}

} // namespace Utilities
