#ifndef QVIMANAGER_PLATFORM_FILE_H
#define QVIMANAGER_PLATFORM_FILE_H

// Utilities::File: a file of the file system, as the library reads and
// writes it (filter files, plug-in files, trace output). File is abstract;
// NewInstance makes the platform's implementation, and the rest of the
// library holds a SmartPointer<File>.
//
// Paths handed in and out use '/'; inside, the platform's separator is
// kept. Failures raise ExceptionResourceNotAvailable with texts that are not
// translated:
//   "File open failed:%FILENAME%"                           (no blank after
//                                                            the colon)
//   "File write failed: %FILENAME%, probably write protected"
//   "File read failed: %FILENAME%, end of file reached"
//   "File read failed: %FILENAME%, the file is not open"
// with %FILENAME% replaced by the file's path in the form kept inside. The
// queries GetFileSize, GetModificationDate, Accessable and Remove report
// through their result and never throw.
//
// A directory is a file that cannot be opened: Open throws, GetFileSize
// gives 0, Accessable false, GetModificationDate "00000000000000" and Remove
// false.
//
// The virtual operations stand in their slot order, the order that
// implementations and plug-ins rely on; do not reorder them. Objects have no
// locks.

#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/directory.h"

#include <cstdint>

namespace Utilities {

class File {
public:
    // 0 is the text mode; every other value is the binary mode.
    enum FileMode : std::int32_t {
        TextMode = 0,
        BinaryMode = 1
    };

    // A File for `path` ('/' between the pieces). The file system is not
    // touched: the file need not exist.
    static SmartPointer<File> NewInstance(const String& path);

    virtual ~File();

    // Opens for writing at the end of the file, creating it if absent, and,
    // where that fails (a read-only file), for reading only. The binary
    // mode reads and writes bytes as they are. A new stream replaces any
    // earlier one. Throws "File open failed:%FILENAME%" when neither works.
    virtual void Open(FileMode mode) const = 0;
    // Flushes and closes the file, if one is open, and clears the stream's
    // state. The file may be opened again.
    virtual void Close() const = 0;
    // Writes `text` up to its first NUL. Throws the write failure when the
    // stream refuses it: a file opened for reading only, or one closed
    // since. Does nothing before the first Open.
    virtual File& operator<<(const String& text) = 0;
    // The next line, without its line feed. A line keeps at most 9,999
    // characters: the rest of a longer line comes with the next calls, so
    // nothing is lost. In the text mode a carriage return in front of the
    // line feed is dropped, so a file with CR LF line ends reads as one with
    // LF. The empty string while no file is open.
    virtual String GetLine() = 0;
    // The end of the file has been reached; true while no file is open, so
    // a loop `while (!EndOfFile())` around GetLine always ends.
    virtual bool EndOfFile() const = 0;
    // Writes all Length() bytes of `text`, NULs included.
    virtual void Write(const String& text) = 0;
    // Writes exactly `count` bytes. Throws the write failure when the stream
    // refuses them (read only, or closed); does nothing before the first
    // Open.
    virtual void Write(const char* bytes, unsigned long count) = 0;
    // Reads exactly `count` bytes into `bytes`. Where fewer are left, throws
    // "File read failed: %FILENAME%, end of file reached" (the bytes that
    // were there are in `bytes`, the rest untouched); while no file is open,
    // throws "File read failed: %FILENAME%, the file is not open".
    virtual void Read(char* bytes, unsigned long count) const = 0;
    // The last piece of GetPathWithName(): the name with its extension.
    virtual String GetName() = 0;
    // The path, with '/' between its pieces.
    virtual String GetPathWithName() = 0;
    // The directory of the file's directory: the path without its last two
    // pieces, as a SpecifiedDirectory (Directory::NewInstance, which throws
    // when it is missing).
    virtual SmartPointer<Directory> GetParentDirectory() = 0;
    // The file's directory: the path without its last piece, as a
    // SpecifiedDirectory (Directory::NewInstance, which throws when it is
    // missing).
    //
    // For both: a relative path cut to nothing ("x.txt") gives the current
    // directory "."; an absolute one ("/x.txt") the root.
    virtual SmartPointer<Directory> GetDirectory() = 0;
    // Deletes the file; true if that worked.
    virtual bool Remove() const = 0;
    // The size in bytes; 0 if the file cannot be opened for reading.
    virtual long GetFileSize() const = 0;
    // The time of the last change, in local time, as 14 digits: year (4),
    // month, day, hour, minute, second (2 each). "00000000000000" if the
    // file cannot be opened for reading or the time cannot be had.
    virtual String GetModificationDate() = 0;
    // Whether the existing file can be opened: for reading and writing, or
    // for reading only. Nothing is created or changed.
    virtual bool Accessable(bool forWriting) const = 0;

protected:
    File();
    File(const File& other);
    File& operator=(const File& other);

private:
    // Reads nothing and changes nothing.
    virtual File& operator>>(String& text) = 0;
};

} // namespace Utilities

#endif
