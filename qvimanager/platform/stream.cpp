#include "qvimanager/platform/stream.h"

#include <cstring>
#include <string>

namespace Utilities {

namespace {

// What AddString adds to the size beyond the text, and what the operators
// + and += add beyond the other stream's level.
constexpr unsigned long AddStringStep = 100000;
constexpr unsigned long OperatorStep = 10000;

} // namespace

Stream::Stream() : size(InlineSize), buffer(), data(buffer), level(0) {}

Stream::Stream(unsigned long requested) : Stream()
{
    if (requested > InlineSize) {
        data = new char[requested]();
        size = requested;
    }
}

// Only the block in use is copied: a stream on the heap leaves `buffer`
// unused.
Stream::Stream(const Stream& other) : size(other.size), data(buffer), level(other.level)
{
    if (size != InlineSize) {
        data = new char[size];
    }
    std::memcpy(data, other.data, size);
}

Stream& Stream::operator=(const Stream& other)
{
    if (this == &other) {
        return *this;
    }
    if (size != other.size) {
        // The new block first: if it cannot be had, nothing has changed.
        char* const block = other.size == InlineSize ? buffer : new char[other.size];
        FreeBlock();
        data = block;
        size = other.size;
    }
    std::memcpy(data, other.data, size);
    level = other.level;
    return *this;
}

Stream::~Stream()
{
    FreeBlock();
}

void Stream::AddString(const String& text, bool newLine)
{
    const unsigned long length = std::strlen(text.GetCharPointer());
    // The 4 bytes cover the line end, the NUL and one to spare.
    if (level + length + 4 > size) {
        Grow(size + length + AddStringStep);
    }
    Append(text.GetCharPointer(), length);
    if (newLine) {
        Append("\r\n", 2);
    }
}

String Stream::GetString() const
{
    if (std::memchr(data, '\0', size) != nullptr) {
        return String(data);
    }
    return String(std::string(data, size));
}

char* Stream::GetCharPointer() const
{
    return data;
}

unsigned long Stream::GetSize() const
{
    return size;
}

unsigned long Stream::GetLevel() const
{
    return level;
}

void Stream::SetLevel(unsigned long newLevel)
{
    level = newLevel < size ? newLevel : size;
}

Stream Stream::operator+(const Stream& other) const
{
    Stream sum(*this);
    if (level + other.level > size) {
        sum.Grow(size + other.level + OperatorStep);
    }
    sum.Append(other.data, other.level);
    return sum;
}

void Stream::operator+=(const Stream& other)
{
    // Read before growing: `other` may be this stream.
    const unsigned long count = other.level;
    if (level + count + 2 > size) {
        Grow(size + count + OperatorStep);
    }
    // `other.data` is read after growing, so that a stream appended to
    // itself copies from its new block; the two ranges do not overlap.
    Append(other.data, count);
}

bool Stream::operator==(const Stream& other) const
{
    if (this == &other) {
        return true;
    }
    if (level != other.level) {
        return false;
    }
    return std::memcmp(data, other.data, level) == 0;
}

bool Stream::operator!=(const Stream& other) const
{
    return !(*this == other);
}

void Stream::Grow(unsigned long newSize)
{
    char* const block = new char[newSize];
    std::memcpy(block, data, size);
    std::memset(block + size, 0, newSize - size);
    FreeBlock();
    data = block;
    size = newSize;
}

void Stream::Append(const char* bytes, unsigned long count)
{
    std::memcpy(data + level, bytes, count);
    level += count;
    // Only operator+ can fill the block exactly; then there is no room for
    // the NUL.
    if (level < size) {
        data[level] = '\0';
    }
}

void Stream::FreeBlock()
{
    if (data != buffer) {
        delete[] data;
    }
}

} // namespace Utilities
