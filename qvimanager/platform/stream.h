#ifndef QVIMANAGER_PLATFORM_STREAM_H
#define QVIMANAGER_PLATFORM_STREAM_H

// Utilities::Stream: a growing text buffer. Texts are appended at the end;
// the level counts the bytes in use, the size the bytes the block holds.
//
// A stream starts with a 10,000-byte block of its own, so that typical texts
// need no allocation (it is large for a stack object). When a text does not
// fit, the stream moves to a larger heap block; it never shrinks. The steps
// differ on purpose: AddString grows by 100,000 bytes plus the text, the
// operators + and += by 10,000 bytes plus the other stream's level.
//
// Every byte of the block is defined: a new block, and the part a block
// gains when it grows, hold zeros, and growing keeps every byte of the old
// block, those behind the level included. So a caller may write into
// GetCharPointer() and then announce the bytes with SetLevel, and bytes
// that were never written read as 0.
//
// The contents are followed by a NUL, which the level does not count,
// whenever there is room for it inside the block. There is none when the
// level equals the size: SetLevel(GetSize()), or operator+ filling its copy
// exactly. Then no NUL is written, and GetString stops at the end of the
// block; a caller that reads GetCharPointer() as a C string must check
// GetLevel() < GetSize() first. Nothing ever writes or reads outside the
// block.
//
// Allocation failures pass as std::bad_alloc; the stream that was to grow
// is then left as it was. Stream has no exceptions of its own, and no lock.

#include "qvimanager/foundation/string.h"

namespace Utilities {

class Stream {
public:
    // Empty, in the block of its own: size 10,000, level 0.
    Stream();
    // Empty. A `requested` above 10,000 takes a heap block of that size;
    // any other value keeps the block of its own, of 10,000 bytes.
    explicit Stream(unsigned long requested);
    // The copy has the same size, level and bytes, in a block of its own.
    Stream(const Stream& other);
    // Makes this stream what a copy of `other` would be: same size, level
    // and bytes. Self-assignment changes nothing.
    Stream& operator=(const Stream& other);
    ~Stream();

    // Appends `text` up to its first NUL and, if `newLine` is true, a
    // carriage return and a line feed (bytes 13 and 10), then writes a NUL
    // that the level does not count. Grows first when level + length + 4 is
    // above the size: the size becomes size + length + 100,000.
    void AddString(const String& text, bool newLine);
    // The contents up to the first NUL of the block, which may lie behind
    // the level or before it; where the block holds none, all of it.
    String GetString() const;
    // The block: the contents are its first GetLevel() bytes. The pointer
    // stays valid until the stream grows, is assigned or is destroyed.
    char* GetCharPointer() const;
    unsigned long GetSize() const;
    unsigned long GetLevel() const;
    // Sets the level, cut to the size. No byte is written: the level may
    // move over bytes written through GetCharPointer(), over older contents,
    // or over zeros never written.
    void SetLevel(unsigned long newLevel);

    // A copy of this stream with the other's contents appended. The copy
    // grows when level + other level is above the size: its size becomes
    // size + other level + 10,000. A NUL follows the contents unless they
    // fill the copy exactly (see above).
    Stream operator+(const Stream& other) const;
    // Appends the other's contents and a NUL behind them. Grows first when
    // level + other level + 2 is above the size: the size becomes size +
    // other level + 10,000. Appending a stream to itself doubles it.
    void operator+=(const Stream& other);

    // The same object: true. A different level: false. Otherwise the first
    // `level` bytes decide; the size and the bytes behind the level do not
    // count.
    bool operator==(const Stream& other) const;
    bool operator!=(const Stream& other) const;

private:
    static constexpr unsigned long InlineSize = 10000;

    // Moves to a zero-filled heap block of `newSize` bytes (above the
    // present size) that keeps every byte of the old block, and frees the
    // old block unless it is `buffer`. Allocates before anything changes.
    void Grow(unsigned long newSize);
    // Copies `count` bytes to the end of the contents, counts them in the
    // level and writes a NUL behind them where the block has room for it.
    // The room for the bytes themselves must be there.
    void Append(const char* bytes, unsigned long count);
    void FreeBlock();

    unsigned long size;
    char buffer[InlineSize];
    // `buffer` while the size is 10,000, a heap block of `size` bytes
    // otherwise.
    char* data;
    unsigned long level;
};

} // namespace Utilities

#endif
