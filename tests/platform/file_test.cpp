// Files: opening with its fallback to reading, lines, writes and reads with
// their failures, names and directories, and the queries that report
// through their result. Each test works in a scratch directory of its own.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/directory.h"
#include "qvimanager/platform/file.h"

#include "tests/platform/scratch_directory.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <linux/capability.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

using Utilities::Directory;
using Utilities::ExceptionResourceNotAvailable;
using Utilities::File;
using Utilities::SmartPointer;
using Utilities::String;

using TestSupport::FailureText;

namespace {

static_assert(std::is_abstract_v<File>);
static_assert(File::TextMode == 0);

// operator>> is private.
template <typename T>
concept Extracts = requires(T& file, String& text) { file >> text; };
static_assert(!Extracts<File>);

using FileTest = TestSupport::ScratchDirectory;

SmartPointer<File> FileAt(const std::string& path)
{
    return File::NewInstance(String(path));
}

std::string OpenFailure(const std::string& path)
{
    return "File open failed:" + path;
}

std::string WriteFailure(const std::string& path)
{
    return "File write failed: " + path + ", probably write protected";
}

// Every line up to the end of the file.
std::vector<std::string> Lines(File& file)
{
    std::vector<std::string> lines;
    while (!file.EndOfFile()) {
        lines.push_back(file.GetLine());
    }
    return lines;
}

// Takes from this process the capabilities by which root passes over file
// permissions, so that permissions count as for any other user. Each test
// runs in a process of its own, so no other test is touched.
bool DropPermissionOverride()
{
    __user_cap_header_struct header {};
    header.version = _LINUX_CAPABILITY_VERSION_3;
    header.pid = 0;
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] {};
    if (syscall(SYS_capget, &header, data) != 0) {
        return false;
    }
    for (int capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH, CAP_FOWNER}) {
        data[CAP_TO_INDEX(capability)].effective &= ~CAP_TO_MASK(capability);
    }
    return syscall(SYS_capset, &header, data) == 0;
}

// Permissions count for this process from now on: a file closed to writing
// cannot be written. Fails the test where that cannot be had.
void HonourPermissions(const std::string& readOnlyFile)
{
    ASSERT_TRUE(DropPermissionOverride()) << "cannot drop the capabilities that pass over file permissions";
    const int descriptor = open(readOnlyFile.c_str(), O_WRONLY);
    if (descriptor >= 0) {
        close(descriptor);
    }
    ASSERT_LT(descriptor, 0) << "a read-only file can still be written";
    ASSERT_EQ(EACCES, errno);
}

void SetLocalTime(const char* zone)
{
    setenv("TZ", zone, 1);
    tzset();
}

void SetModificationTime(const std::string& path, time_t seconds)
{
    const timeval times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(0, utimes(path.c_str(), times));
}

// 2021-03-04 05:06:07 UTC.
constexpr time_t KnownTime = 1614834367;

} // namespace

// ------------------------------------------------------------- opening

TEST_F(FileTest, NewInstanceDoesNotTouchTheFileSystem)
{
    const std::string path = In("new.txt");
    const SmartPointer<File> file = FileAt(path);
    EXPECT_FALSE(Exists(path));
    EXPECT_EQ(path, std::string(file->GetPathWithName()));
    const SmartPointer<File> nowhere = FileAt(In("missing/new.txt"));
    EXPECT_FALSE(Exists(In("missing")));
}

TEST_F(FileTest, OpenCreatesAnAbsentFile)
{
    const std::string path = In("new.txt");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::TextMode);
    EXPECT_TRUE(Exists(path));
    EXPECT_FALSE(file->EndOfFile());
    file->Close();
    EXPECT_EQ("", Content(path));
}

TEST_F(FileTest, OpenWritesAtTheEnd)
{
    const std::string path = Put("log.txt", "abc\n");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::TextMode);
    *file << "def";
    *file << String("ghi");
    file->Close();
    EXPECT_EQ("abc\ndefghi", Content(path));
}

TEST_F(FileTest, OpenReadsFromTheStart)
{
    const std::string path = Put("lines.txt", "one\ntwo\n");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::TextMode);
    EXPECT_EQ("one", std::string(file->GetLine()));
    // A second Open starts a new stream.
    file->Open(File::TextMode);
    EXPECT_EQ("one", std::string(file->GetLine()));
    EXPECT_EQ("two", std::string(file->GetLine()));
}

TEST_F(FileTest, OpenInAMissingDirectoryFails)
{
    const std::string path = In("missing/x.txt");
    const SmartPointer<File> file = FileAt(path);
    EXPECT_EQ(OpenFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { file->Open(File::TextMode); }));
    EXPECT_EQ(OpenFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { file->Open(File::BinaryMode); }));
    EXPECT_FALSE(Exists(In("missing")));
    // Nothing is open afterwards.
    EXPECT_TRUE(file->EndOfFile());
    EXPECT_EQ("", std::string(file->GetLine()));
}

TEST_F(FileTest, ADirectoryIsAFileThatCannotBeOpened)
{
    const std::string path = MakeDirectory("folder.dll");
    const SmartPointer<File> file = FileAt(path);
    EXPECT_EQ(OpenFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { file->Open(File::TextMode); }));
    EXPECT_EQ(OpenFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { file->Open(File::BinaryMode); }));
    EXPECT_EQ(0L, file->GetFileSize());
    EXPECT_FALSE(file->Accessable(false));
    EXPECT_FALSE(file->Accessable(true));
    EXPECT_EQ("00000000000000", std::string(file->GetModificationDate()));
    EXPECT_FALSE(file->Remove());
    EXPECT_TRUE(Exists(path));
}

TEST_F(FileTest, AReadOnlyFileOpensForReadingAndRefusesWrites)
{
    const std::string path = Put("locked.txt", "kept\n");
    ASSERT_EQ(0, chmod(path.c_str(), 0444));
    ASSERT_NO_FATAL_FAILURE(HonourPermissions(path));
    const SmartPointer<File> file = FileAt(path);
    EXPECT_EQ("no exception", FailureText<ExceptionResourceNotAvailable>([&] { file->Open(File::TextMode); }));
    EXPECT_EQ(WriteFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { *file << "more"; }));
    EXPECT_EQ(WriteFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { file->Write(String("more")); }));
    EXPECT_EQ(WriteFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { file->Write("more", 4); }));
    // The refused writes leave reading possible.
    EXPECT_EQ("kept", std::string(file->GetLine()));
    file->Close();
    EXPECT_EQ("kept\n", Content(path));
    EXPECT_TRUE(file->Accessable(false));
    EXPECT_FALSE(file->Accessable(true));
    EXPECT_EQ(5L, file->GetFileSize());
}

TEST_F(FileTest, ARelativeFileNameIsNamedAsGiven)
{
    const std::string path = Put("locked.txt", "kept\n");
    ASSERT_EQ(0, chmod(path.c_str(), 0444));
    ASSERT_NO_FATAL_FAILURE(HonourPermissions(path));
    ASSERT_EQ(0, chdir(dir.c_str()));
    const SmartPointer<File> file = FileAt("locked.txt");
    file->Open(File::BinaryMode);
    EXPECT_EQ(WriteFailure("locked.txt"), FailureText<ExceptionResourceNotAvailable>([&] { *file << "x"; }));
    EXPECT_EQ(OpenFailure("missing/x"),
              FailureText<ExceptionResourceNotAvailable>([] { FileAt("missing/x")->Open(File::TextMode); }));
}

TEST_F(FileTest, AFileClosedToReadingCannotBeOpenedNorQueried)
{
    const std::string path = Put("closed.txt", "secret");
    ASSERT_EQ(0, chmod(path.c_str(), 0));
    ASSERT_NO_FATAL_FAILURE(HonourPermissions(path));
    const SmartPointer<File> file = FileAt(path);
    EXPECT_EQ(OpenFailure(path), FailureText<ExceptionResourceNotAvailable>([&] { file->Open(File::TextMode); }));
    EXPECT_EQ(0L, file->GetFileSize());
    EXPECT_EQ("00000000000000", std::string(file->GetModificationDate()));
    EXPECT_FALSE(file->Accessable(false));
    EXPECT_FALSE(file->Accessable(true));
    // Removing takes the directory's permission only.
    EXPECT_TRUE(file->Remove());
    EXPECT_FALSE(Exists(path));
}

// ------------------------------------------------------------- writing

TEST_F(FileTest, TheOperatorWritesUpToTheFirstNul)
{
    const std::string path = In("out.bin");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::BinaryMode);
    *file << String(std::string("ab\0cd", 5)) << "ef";
    file->Close();
    EXPECT_EQ("abef", Content(path));
}

TEST_F(FileTest, WriteWritesEveryByte)
{
    const std::string path = In("out.bin");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::BinaryMode);
    file->Write(String(std::string("ab\0cd", 5)));
    file->Write("\r\n\0xyz", 4);
    file->Write("ignored", 0);
    file->Close();
    EXPECT_EQ(std::string("ab\0cd\r\n\0x", 9), Content(path));
}

TEST_F(FileTest, WritesBeforeTheFirstOpenDoNothing)
{
    const std::string path = In("never.txt");
    const SmartPointer<File> file = FileAt(path);
    *file << "text";
    file->Write(String("text"));
    file->Write("text", 4);
    EXPECT_FALSE(Exists(path));
}

TEST_F(FileTest, WritesAfterCloseFailAndChangeNothing)
{
    const std::string kept = Put("kept.txt", "kept");
    const SmartPointer<File> closed = FileAt(kept);
    closed->Open(File::TextMode);
    closed->Close();
    const std::string expected = "File write failed: " + kept + ", probably write protected";
    EXPECT_EQ(expected, FailureText<ExceptionResourceNotAvailable>([&] { *closed << "text"; }));
    EXPECT_EQ(expected, FailureText<ExceptionResourceNotAvailable>([&] { closed->Write("text", 4); }));
    EXPECT_EQ(expected, FailureText<ExceptionResourceNotAvailable>([&] { closed->Write(String("text")); }));
    EXPECT_EQ("kept", Content(kept));
}

TEST_F(FileTest, CloseFlushesAndMayBeRepeated)
{
    const std::string path = In("out.txt");
    const SmartPointer<File> file = FileAt(path);
    file->Close();
    file->Open(File::TextMode);
    *file << "line\n";
    file->Close();
    EXPECT_EQ("line\n", Content(path));
    file->Close();
    // And the file opens again.
    file->Open(File::TextMode);
    *file << "more\n";
    file->Close();
    EXPECT_EQ("line\nmore\n", Content(path));
}

// ------------------------------------------------------------- reading

TEST_F(FileTest, ReadTakesExactBytes)
{
    const std::string path = Put("in.bin", std::string("a\r\n\0b", 5));
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::BinaryMode);
    char bytes[5] = {};
    file->Read(bytes, 3);
    EXPECT_EQ(std::string("a\r\n"), std::string(bytes, 3));
    file->Read(bytes, 2);
    EXPECT_EQ(std::string("\0b", 2), std::string(bytes, 2));
    file->Read(bytes, 0);
}

TEST_F(FileTest, AShortReadFails)
{
    const std::string path = Put("in.bin", "abc");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::BinaryMode);
    char bytes[8] = {'-', '-', '-', '-', '-', '-', '-', '-'};
    EXPECT_EQ("File read failed: " + path + ", end of file reached",
              FailureText<ExceptionResourceNotAvailable>([&] { file->Read(bytes, 8); }));
    // What was there has been read; the rest is untouched.
    EXPECT_EQ("abc-----", std::string(bytes, 8));
    EXPECT_EQ("File read failed: " + path + ", end of file reached",
              FailureText<ExceptionResourceNotAvailable>([&] { file->Read(bytes, 1); }));
}

TEST_F(FileTest, ReadWithoutAnOpenFileFails)
{
    const std::string path = Put("in.bin", "abc");
    const SmartPointer<File> file = FileAt(path);
    char bytes[3] = {};
    const std::string text = "File read failed: " + path + ", the file is not open";
    EXPECT_EQ(text, FailureText<ExceptionResourceNotAvailable>([&] { file->Read(bytes, 3); }));
    file->Open(File::BinaryMode);
    file->Close();
    EXPECT_EQ(text, FailureText<ExceptionResourceNotAvailable>([&] { file->Read(bytes, 3); }));
}

TEST_F(FileTest, LinesComeWithoutTheirLineFeed)
{
    const SmartPointer<File> file = FileAt(Put("lines.txt", "one\n\nthree"));
    file->Open(File::TextMode);
    EXPECT_EQ((std::vector<std::string>{"one", "", "three"}), Lines(*file));
    EXPECT_TRUE(file->EndOfFile());
    EXPECT_EQ("", std::string(file->GetLine()));
    EXPECT_TRUE(file->EndOfFile());
}

TEST_F(FileTest, AFinalLineFeedGivesOneMoreEmptyLine)
{
    const SmartPointer<File> file = FileAt(Put("lines.txt", "one\ntwo\n"));
    file->Open(File::TextMode);
    EXPECT_EQ((std::vector<std::string>{"one", "two", ""}), Lines(*file));
}

TEST_F(FileTest, AnEmptyFileHasOneEmptyLine)
{
    const SmartPointer<File> file = FileAt(Put("empty.txt", ""));
    file->Open(File::TextMode);
    EXPECT_EQ((std::vector<std::string>{""}), Lines(*file));
}

TEST_F(FileTest, TheTextModeDropsTheCarriageReturnOfALineEnd)
{
    const std::string path = Put("crlf.txt", "a\r\nb\rc\r\n\r\nlast\r");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::TextMode);
    // A lone carriage return stays, also at the very end.
    EXPECT_EQ((std::vector<std::string>{"a", "b\rc", "", "last\r"}), Lines(*file));
}

TEST_F(FileTest, TheBinaryModeKeepsTheCarriageReturn)
{
    const std::string path = Put("crlf.txt", "a\r\nb\r\n");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::BinaryMode);
    EXPECT_EQ((std::vector<std::string>{"a\r", "b\r", ""}), Lines(*file));
    // Every mode but 0 is the binary mode.
    file->Open(static_cast<File::FileMode>(7));
    EXPECT_EQ("a\r", std::string(file->GetLine()));
}

TEST_F(FileTest, ALineKeepsEveryByte)
{
    const SmartPointer<File> file = FileAt(Put("nul.txt", std::string("a\0b\xe9\nz", 6)));
    file->Open(File::TextMode);
    const String line = file->GetLine();
    EXPECT_EQ(4UL, line.Length());
    EXPECT_EQ(std::string("a\0b\xe9", 4), std::string(line.GetCharPointer(), line.Length()));
}

namespace {

// Characters that show where in the line they stand.
std::string LongLine(std::size_t length)
{
    std::string line;
    for (std::size_t i = 0; i < length; ++i) {
        line += static_cast<char>('a' + (i * 7 + i / 26) % 26);
    }
    return line;
}

} // namespace

TEST_F(FileTest, ALongLineComesInPiecesOf9999Characters)
{
    const std::string line = LongLine(20000);
    const SmartPointer<File> file = FileAt(Put("long.txt", line + "\nnext\n"));
    file->Open(File::TextMode);
    const std::string first = file->GetLine();
    EXPECT_EQ(9999U, first.size());
    EXPECT_EQ(line.substr(0, 9999), first);
    EXPECT_FALSE(file->EndOfFile());
    const std::string second = file->GetLine();
    EXPECT_EQ(line.substr(9999, 9999), second);
    const std::string third = file->GetLine();
    EXPECT_EQ(line.substr(19998), third);
    EXPECT_EQ("next", std::string(file->GetLine()));
    EXPECT_EQ("", std::string(file->GetLine()));
    EXPECT_TRUE(file->EndOfFile());
}

TEST_F(FileTest, ALongLastLineEndsTheLoop)
{
    const std::string line = LongLine(20000);
    const SmartPointer<File> file = FileAt(Put("long.txt", line));
    file->Open(File::BinaryMode);
    EXPECT_EQ((std::vector<std::string>{line.substr(0, 9999), line.substr(9999, 9999), line.substr(19998)}),
              Lines(*file));
}

TEST_F(FileTest, ALineOf9999CharactersComesWhole)
{
    const std::string line = LongLine(9999);
    const SmartPointer<File> file = FileAt(Put("edge.txt", line + "\n" + line));
    file->Open(File::TextMode);
    EXPECT_EQ((std::vector<std::string>{line, line}), Lines(*file));
}

TEST_F(FileTest, TheTextModeTakesACarriageReturnLineFeedBehindTheCut)
{
    const std::string line = LongLine(9999);
    const std::string shorter = LongLine(9998);
    const std::string path = Put("edge.txt", line + "\r\n" + shorter + "\r\n" + line + "\rx\n");
    const SmartPointer<File> text = FileAt(path);
    text->Open(File::TextMode);
    EXPECT_EQ((std::vector<std::string>{line, shorter, line, "\rx", ""}), Lines(*text));
    const SmartPointer<File> binary = FileAt(path);
    binary->Open(File::BinaryMode);
    EXPECT_EQ((std::vector<std::string>{line, "\r", shorter + "\r", line, "\rx", ""}), Lines(*binary));
}

TEST_F(FileTest, WithoutAnOpenFileThereAreNoLines)
{
    const SmartPointer<File> file = FileAt(Put("lines.txt", "one\n"));
    EXPECT_EQ("", std::string(file->GetLine()));
    EXPECT_TRUE(file->EndOfFile());
    file->Open(File::TextMode);
    EXPECT_FALSE(file->EndOfFile());
    file->Close();
    EXPECT_EQ("", std::string(file->GetLine()));
    EXPECT_TRUE(file->EndOfFile());
}

TEST_F(FileTest, WrittenLinesCanBeReadBack)
{
    const std::string path = In("both.txt");
    const SmartPointer<File> file = FileAt(path);
    file->Open(File::TextMode);
    *file << "first\n" << "second\n";
    file->Close();
    file->Open(File::TextMode);
    EXPECT_EQ((std::vector<std::string>{"first", "second", ""}), Lines(*file));
}

// ------------------------------------------------ names and directories

TEST_F(FileTest, TheNameIsTheLastPieceOfThePath)
{
    MakeDirectory("sub");
    const SmartPointer<File> file = FileAt(In("sub/x.tar.gz"));
    EXPECT_EQ("x.tar.gz", std::string(file->GetName()));
    EXPECT_EQ(In("sub/x.tar.gz"), std::string(file->GetPathWithName()));
    EXPECT_EQ("x", std::string(FileAt("x")->GetName()));
    EXPECT_EQ("", std::string(FileAt("")->GetName()));
    EXPECT_EQ("", std::string(FileAt("sub/")->GetName()));
}

TEST_F(FileTest, TheDirectoriesOfAFile)
{
    MakeDirectory("sub");
    const SmartPointer<File> file = FileAt(In("sub/x.txt"));
    EXPECT_EQ(In("sub"), std::string(file->GetDirectory()->GetFullPath()));
    EXPECT_EQ(dir, std::string(file->GetParentDirectory()->GetFullPath()));
    EXPECT_EQ("/etc", std::string(FileAt("/etc/x.txt")->GetDirectory()->GetFullPath()));
    EXPECT_EQ("/", std::string(FileAt("/etc/x.txt")->GetParentDirectory()->GetFullPath()));
}

TEST_F(FileTest, AnAbsolutePathCutToNothingIsTheRoot)
{
    const SmartPointer<File> file = FileAt("/x.txt");
    EXPECT_EQ("/", std::string(file->GetDirectory()->GetFullPath()));
    EXPECT_EQ("/", std::string(file->GetParentDirectory()->GetFullPath()));
}

TEST_F(FileTest, ARelativePathCutToNothingIsTheCurrentDirectory)
{
    MakeDirectory("d");
    ASSERT_EQ(0, chdir(dir.c_str()));
    EXPECT_EQ(".", std::string(FileAt("x.txt")->GetDirectory()->GetFullPath()));
    EXPECT_EQ(".", std::string(FileAt("x.txt")->GetParentDirectory()->GetFullPath()));
    EXPECT_EQ("d", std::string(FileAt("d/x.txt")->GetDirectory()->GetFullPath()));
    EXPECT_EQ(".", std::string(FileAt("d/x.txt")->GetParentDirectory()->GetFullPath()));
    EXPECT_EQ(".", std::string(FileAt("")->GetDirectory()->GetFullPath()));
}

TEST_F(FileTest, TheDirectoryOfAFilePassesTheExistenceTest)
{
    const SmartPointer<File> file = FileAt(In("missing/x.txt"));
    EXPECT_EQ("Error: Directory " + In("missing") + " does not exist",
              FailureText<ExceptionResourceNotAvailable>([&] { file->GetDirectory(); }));
    EXPECT_FALSE(Exists(In("missing")));
    const SmartPointer<File> deeper = FileAt(In("missing/deeper/x.txt"));
    EXPECT_EQ(In("missing/deeper"), std::string(deeper->GetDirectory()->GetFullPath()));
    EXPECT_EQ("Error: Directory " + In("missing") + " does not exist",
              FailureText<ExceptionResourceNotAvailable>([&] { deeper->GetParentDirectory(); }));
    EXPECT_FALSE(Exists(In("missing")));
}

// ------------------------------------------------------------- queries

TEST_F(FileTest, RemoveDeletesTheFile)
{
    const std::string path = Put("gone.txt", "x");
    const SmartPointer<File> file = FileAt(path);
    EXPECT_TRUE(file->Remove());
    EXPECT_FALSE(Exists(path));
    EXPECT_FALSE(file->Remove());
}

TEST_F(FileTest, TheSizeIsTheNumberOfBytes)
{
    EXPECT_EQ(11L, FileAt(Put("eleven.bin", std::string("hello\0world", 11)))->GetFileSize());
    EXPECT_EQ(0L, FileAt(Put("empty.bin", ""))->GetFileSize());
    EXPECT_EQ(20001L, FileAt(Put("long.bin", LongLine(20000) + "\n"))->GetFileSize());
}

TEST_F(FileTest, AMissingFileHasTheSize0)
{
    const std::string path = In("missing.txt");
    EXPECT_EQ(0L, FileAt(path)->GetFileSize());
    EXPECT_FALSE(Exists(path));
}

TEST_F(FileTest, AnExistingFileIsAccessableBothWays)
{
    const SmartPointer<File> file = FileAt(Put("open.txt", "x"));
    EXPECT_TRUE(file->Accessable(false));
    EXPECT_TRUE(file->Accessable(true));
    EXPECT_EQ("x", Content(In("open.txt")));
}

TEST_F(FileTest, AMissingFileIsNotAccessableAndNotMade)
{
    const std::string path = In("missing.txt");
    EXPECT_FALSE(FileAt(path)->Accessable(false));
    EXPECT_FALSE(FileAt(path)->Accessable(true));
    EXPECT_FALSE(Exists(path));
}

TEST_F(FileTest, TheModificationDateIsLocalTimeIn14Digits)
{
    const std::string path = Put("dated.txt", "x");
    SetModificationTime(path, KnownTime);
    const SmartPointer<File> file = FileAt(path);
    SetLocalTime("UTC");
    EXPECT_EQ("20210304050607", std::string(file->GetModificationDate()));
    // Five hours behind: midnight of the same day.
    SetLocalTime("EST5");
    EXPECT_EQ("20210304000607", std::string(file->GetModificationDate()));
    SetLocalTime("XYZ-10");
    EXPECT_EQ("20210304150607", std::string(file->GetModificationDate()));
    // A minute before midnight of a new year, one hour east.
    SetModificationTime(path, 1609455540);
    SetLocalTime("XYZ-1");
    EXPECT_EQ("20201231235900", std::string(file->GetModificationDate()));
}

TEST_F(FileTest, AMissingFileHasNoModificationDate)
{
    EXPECT_EQ("00000000000000", std::string(FileAt(In("missing.txt"))->GetModificationDate()));
}
