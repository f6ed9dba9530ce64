#ifndef QVIMANAGER_PLATFORM_POSIX_FILE_PC_H
#define QVIMANAGER_PLATFORM_POSIX_FILE_PC_H

// File_PC: File on a POSIX system, where the separator is '/'. Only
// File::NewInstance makes one; see file.h for what the operations do.
//
// Reading and writing go through a std::basic_fstream<char>. Both modes
// read and write bytes as they are; the text mode differs only in that
// GetLine drops a carriage return in front of a line feed, so that a file
// with CR LF line ends reads as it does where the text mode translates
// them. The queries (size, date, access, removal) use the system's calls
// directly: open, fstat, unlink.

#include "qvimanager/platform/file.h"

#include <fstream>

namespace Utilities {

class File_PC : public File {
public:
    // `fileName` with the platform's separators. Nothing is opened.
    explicit File_PC(const String& fileName);
    ~File_PC() override;

    void Open(FileMode mode) const override;
    void Close() const override;
    File& operator<<(const String& text) override;
    String GetLine() override;
    bool EndOfFile() const override;
    void Write(const String& text) override;
    void Write(const char* bytes, unsigned long count) override;
    void Read(char* bytes, unsigned long count) const override;
    String GetName() override;
    String GetPathWithName() override;
    SmartPointer<Directory> GetParentDirectory() override;
    SmartPointer<Directory> GetDirectory() override;
    bool Remove() const override;
    long GetFileSize() const override;
    String GetModificationDate() override;
    bool Accessable(bool forWriting) const override;

private:
    File_PC(const File_PC&);
    File_PC& operator=(const File_PC&);

    File& operator>>(String& text) override;

    // A stream is there and has a file open.
    bool IsOpen() const;
    // The path less its last `pieces` pieces, as a SpecifiedDirectory.
    SmartPointer<Directory> DirectoryAbove(unsigned long pieces);

    String fileName;
    // Empty until the first Open; Close leaves it in place.
    mutable SmartPointer<std::basic_fstream<char>> stream;
    // The mode of the last Open: GetLine drops carriage returns in the text
    // mode only.
    mutable FileMode mode;
};

} // namespace Utilities

#endif
