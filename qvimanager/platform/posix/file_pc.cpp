#include "qvimanager/platform/posix/file_pc.h"

#include "qvimanager/foundation/exception.h"
#include "qvimanager/platform/posix/directory_pc.h"

#include <ctime>
#include <exception>
#include <fcntl.h>
#include <iomanip>
#include <ios>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace Utilities {

namespace {

// Room for a line and its terminating NUL: a line keeps at most 9,999
// characters.
constexpr std::streamsize LineBufferSize = 10000;

constexpr char NoDate[] = "00000000000000";

[[noreturn]] void Throw(const char* templateText, const String& fileName)
{
    String text(templateText);
    text.Replace("%FILENAME%", fileName);
    throw ExceptionResourceNotAvailable(text);
}

bool IsDirectory(const String& path)
{
    struct stat status {};
    return stat(path.GetCharPointer(), &status) == 0 && S_ISDIR(status.st_mode);
}

// A descriptor of the existing file `path` opened with `access`, or -1.
// A directory counts as a file that cannot be opened. O_NONBLOCK keeps a
// FIFO from holding the caller up; it changes nothing for regular files.
int OpenExisting(const String& path, int access, struct stat& status)
{
    const int descriptor = open(path.GetCharPointer(), access | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return -1;
    }
    if (fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode)) {
        close(descriptor);
        return -1;
    }
    return descriptor;
}

} // namespace

File_PC::File_PC(const String& name) : fileName(name), stream(), mode(TextMode) {}

File_PC::~File_PC() = default;

bool File_PC::IsOpen() const
{
    return stream.IsValid() && stream->is_open();
}

void File_PC::Open(FileMode openMode) const
{
    stream = SmartPointer<std::basic_fstream<char>>(new std::basic_fstream<char>());
    stream->clear();
    mode = openMode;
    const std::string name(fileName);
    const std::ios_base::openmode binary = openMode == TextMode ? std::ios_base::openmode() : std::ios_base::binary;
    // Writing at the end if at all possible, creating the file; reading
    // only otherwise.
    stream->open(name, std::ios_base::in | std::ios_base::out | std::ios_base::app | binary);
    if (!stream->is_open()) {
        stream->clear();
        stream->open(name, std::ios_base::in | binary);
        // Only reading can open a directory here; it counts as a file that
        // cannot be opened.
        if (stream->is_open() && IsDirectory(fileName)) {
            stream->close();
        }
    }
    if (!stream->is_open()) {
        stream->clear();
        Throw("File open failed:%FILENAME%", fileName);
    }
}

void File_PC::Close() const
{
    if (!stream.IsValid()) {
        return;
    }
    if (stream->is_open()) {
        stream->flush();
        stream->close();
    }
    stream->clear();
}

File& File_PC::operator<<(const String& text)
{
    // Before the first Open there is nothing to write to. A closed stream
    // refuses the text, and that is a failure: it would be lost.
    if (!stream.IsValid()) {
        return *this;
    }
    stream->clear();
    *stream << text.GetCharPointer();
    if (stream->fail()) {
        Throw("File write failed: %FILENAME%, probably write protected", fileName);
    }
    return *this;
}

String File_PC::GetLine()
{
    if (!IsOpen()) {
        return String();
    }
    // A state left by an earlier failure (a refused write) would stop the
    // read before it starts.
    stream->clear();
    std::vector<char> buffer(static_cast<std::size_t>(LineBufferSize));
    stream->getline(buffer.data(), LineBufferSize);
    const auto extracted = static_cast<std::size_t>(stream->gcount());
    std::size_t stored = extracted;
    bool lineFeedTaken = false;
    if (stream->good()) {
        // The line feed was taken from the stream but not stored.
        stored = extracted - 1;
        lineFeedTaken = true;
    } else if (stream->fail() && !stream->eof() && !stream->bad() &&
               extracted == static_cast<std::size_t>(LineBufferSize - 1)) {
        // The line is longer than the buffer: the next call goes on with
        // its next character.
        stream->clear();
        if (mode == TextMode && stream->peek() == '\r') {
            // The cut fell just in front of a CR LF: the line is complete.
            stream->get();
            if (stream->peek() == '\n') {
                stream->get();
            } else {
                stream->unget();
            }
        }
    } else if (!stream->eof()) {
        // A read error: the file ends here, so that a loop on EndOfFile
        // ends too.
        stream->setstate(std::ios_base::eofbit);
    }
    if (mode == TextMode && lineFeedTaken && stored > 0 && buffer[stored - 1] == '\r') {
        --stored;
    }
    return String(std::string(buffer.data(), stored));
}

bool File_PC::EndOfFile() const
{
    return IsOpen() ? stream->eof() : true;
}

void File_PC::Write(const String& text)
{
    Write(text.GetCharPointer(), text.Length());
}

void File_PC::Write(const char* bytes, unsigned long count)
{
    if (!stream.IsValid()) {
        return;
    }
    stream->clear();
    stream->write(bytes, static_cast<std::streamsize>(count));
    if (stream->fail()) {
        Throw("File write failed: %FILENAME%, probably write protected", fileName);
    }
}

void File_PC::Read(char* bytes, unsigned long count) const
{
    if (!IsOpen()) {
        Throw("File read failed: %FILENAME%, the file is not open", fileName);
    }
    stream->clear();
    stream->read(bytes, static_cast<std::streamsize>(count));
    if (static_cast<unsigned long>(stream->gcount()) != count) {
        Throw("File read failed: %FILENAME%, end of file reached", fileName);
    }
}

String File_PC::GetName()
{
    const String path = GetPathWithName();
    const unsigned long count = path.GetTokenCount('/');
    if (count == 0) {
        return String();
    }
    return path.GetToken(count - 1, '/');
}

String File_PC::GetPathWithName()
{
    return Directory_PC::ConvSeperatorIndependend(fileName);
}

SmartPointer<Directory> File_PC::DirectoryAbove(unsigned long pieces)
{
    const String path = GetPathWithName();
    const unsigned long count = path.GetTokenCount('/');
    String cut;
    if (count > pieces) {
        cut = path.GetLeftTokens(count - pieces - 1, '/');
    } else if (path.Length() == 0 || path.GetCharPointer()[0] != '/') {
        // A relative path cut to nothing: the current directory. An
        // absolute one is left as "", the root.
        cut = ".";
    }
    return Directory::NewInstance(Directory::SpecifiedDirectory, cut);
}

SmartPointer<Directory> File_PC::GetParentDirectory()
{
    return DirectoryAbove(2);
}

SmartPointer<Directory> File_PC::GetDirectory()
{
    return DirectoryAbove(1);
}

bool File_PC::Remove() const
{
    return unlink(fileName.GetCharPointer()) == 0;
}

long File_PC::GetFileSize() const
{
    struct stat status {};
    const int descriptor = OpenExisting(fileName, O_RDONLY, status);
    if (descriptor < 0) {
        return 0;
    }
    close(descriptor);
    return static_cast<long>(status.st_size);
}

String File_PC::GetModificationDate()
{
    struct stat status {};
    const int descriptor = OpenExisting(fileName, O_RDONLY, status);
    if (descriptor < 0) {
        return NoDate;
    }
    close(descriptor);
    try {
        // The time zone as the environment gives it now.
        tzset();
        std::tm local {};
        if (localtime_r(&status.st_mtime, &local) == nullptr) {
            return NoDate;
        }
        std::stringstream date;
        date << std::setfill('0') << std::setw(4) << local.tm_year + 1900 << std::setw(2) << local.tm_mon + 1
             << std::setw(2) << local.tm_mday << std::setw(2) << local.tm_hour << std::setw(2) << local.tm_min
             << std::setw(2) << local.tm_sec;
        return String(date.str());
    } catch (const std::exception&) {
        return NoDate;
    }
}

bool File_PC::Accessable(bool forWriting) const
{
    struct stat status {};
    const int descriptor = OpenExisting(fileName, forWriting ? O_RDWR : O_RDONLY, status);
    if (descriptor < 0) {
        return false;
    }
    close(descriptor);
    return true;
}

File& File_PC::operator>>(String&)
{
    return *this;
}

} // namespace Utilities
