// Directories: the kinds NewInstance makes, the existence test, the
// listings with their rules on dots and their order, names and parents.
// Each test works in a scratch directory of its own.

#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/smart_pointer.h"
#include "qvimanager/foundation/string.h"
#include "qvimanager/platform/directory.h"
#include "qvimanager/platform/file.h"
#include "qvimanager/platform/posix/directory_pc.h"

#include "tests/platform/scratch_directory.h"
#include "tests/support/failure_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string>
#include <sys/stat.h>
#include <type_traits>
#include <unistd.h>
#include <vector>

using Utilities::Directory;
using Utilities::Directory_PC;
using Utilities::ExceptionResourceNotAvailable;
using Utilities::ExceptionWrongType;
using Utilities::File;
using Utilities::SmartPointer;
using Utilities::String;

using TestSupport::FailureText;

namespace {

static_assert(std::is_abstract_v<Directory>);
static_assert(Directory::CurrentDirectory == 0);
static_assert(Directory::ApplicationDirectory == 1);
static_assert(Directory::WindowsDirectory == 2);
static_assert(Directory::SpecifiedDirectory == 3);
static_assert(Directory::ComputerDirectory == 4);

using DirectoryTest = TestSupport::ScratchDirectory;

SmartPointer<Directory> Specified(const std::string& path)
{
    return Directory::NewInstance(Directory::SpecifiedDirectory, String(path));
}

std::string FullPath(const SmartPointer<Directory>& directory)
{
    return directory->GetFullPath();
}

std::vector<std::string> FullPaths(const std::vector<SmartPointer<Directory>>& directories)
{
    std::vector<std::string> paths;
    for (const SmartPointer<Directory>& directory : directories) {
        paths.push_back(FullPath(directory));
    }
    return paths;
}

std::vector<std::string> FilePaths(const std::vector<SmartPointer<File>>& files)
{
    std::vector<std::string> paths;
    for (const SmartPointer<File>& file : files) {
        paths.push_back(file->GetPathWithName());
    }
    return paths;
}

std::string MissingText(const std::string& path)
{
    return "Error: Directory " + path + " does not exist";
}

} // namespace

// ---------------------------------------------------------- separators

TEST(DirectoryPcSeparators, PathsKeepTheSlashBothWays)
{
    for (const std::string path : {"a/b", "/a//b/", "", "a\\b", "\x83\\x"}) {
        SCOPED_TRACE(path);
        EXPECT_EQ(path, std::string(Directory_PC::ConvSeperatorDependend(String(path))));
        EXPECT_EQ(path, std::string(Directory_PC::ConvSeperatorIndependend(String(path))));
    }
}

// ------------------------------------------------------------ the kinds

TEST_F(DirectoryTest, ASpecifiedDirectoryKeepsItsPath)
{
    const SmartPointer<Directory> directory = Specified(dir);
    EXPECT_EQ(dir, FullPath(directory));
    EXPECT_EQ(dir.substr(dir.rfind('/') + 1), std::string(directory->GetName()));
}

TEST_F(DirectoryTest, ASpecifiedDirectoryLosesOneTrailingSeparator)
{
    EXPECT_EQ(dir, FullPath(Specified(dir + "/")));
    EXPECT_EQ(dir + "/", FullPath(Specified(dir + "//")));
    const std::string sub = MakeDirectory("sub");
    const SmartPointer<Directory> directory = Specified(sub + "/");
    EXPECT_EQ(sub, FullPath(directory));
    EXPECT_EQ("sub", std::string(directory->GetName()));
}

TEST_F(DirectoryTest, TheCurrentDirectoryIsTheWorkingDirectory)
{
    ASSERT_EQ(0, chdir(dir.c_str()));
    EXPECT_EQ(dir, FullPath(Directory::NewInstance(Directory::CurrentDirectory, String())));
    // The path is ignored for every kind but SpecifiedDirectory.
    EXPECT_EQ(dir, FullPath(Directory::NewInstance(Directory::CurrentDirectory, String("/nowhere"))));
}

TEST_F(DirectoryTest, AWorkingDirectoryThatIsGoneCannotBeTheCurrentDirectory)
{
    const std::string gone = MakeDirectory("gone");
    ASSERT_EQ(0, chdir(gone.c_str()));
    ASSERT_EQ(0, rmdir(gone.c_str()));
    EXPECT_EQ("Error: Current directory not available: No such file or directory",
              FailureText<ExceptionResourceNotAvailable>(
                  [] { Directory::NewInstance(Directory::CurrentDirectory, String()); }));
}

TEST_F(DirectoryTest, TheApplicationDirectoryHoldsTheRunningProgram)
{
    char expected[PATH_MAX];
    ASSERT_NE(nullptr, realpath(QVIMANAGER_PLATFORM_TESTS_DIR, expected));
    const SmartPointer<Directory> directory = Directory::NewInstance(Directory::ApplicationDirectory, String());
    EXPECT_EQ(std::string(expected), FullPath(directory));
    // It is the same wherever the process works.
    ASSERT_EQ(0, chdir(dir.c_str()));
    EXPECT_EQ(std::string(expected), FullPath(Directory::NewInstance(Directory::ApplicationDirectory, String())));
}

TEST_F(DirectoryTest, TheWindowsDirectoryIsTheConfigurationDirectory)
{
    const SmartPointer<Directory> directory = Directory::NewInstance(Directory::WindowsDirectory, String());
    EXPECT_EQ("/etc", FullPath(directory));
    EXPECT_EQ("etc", std::string(directory->GetName()));
    EXPECT_EQ("/", FullPath(directory->GetParent()));
}

TEST_F(DirectoryTest, TheComputerDirectoryIsTheRoot)
{
    const SmartPointer<Directory> root = Directory::NewInstance(Directory::ComputerDirectory, String());
    EXPECT_EQ("/", FullPath(root));
    EXPECT_EQ("", std::string(root->GetName()));
    EXPECT_STREQ("", root->GetValueString().c_str());
    // The root is its own parent.
    EXPECT_EQ("/", FullPath(root->GetParent()));
}

TEST_F(DirectoryTest, TheComputerDirectoryListsTheSubdirectoriesOfTheRoot)
{
    const SmartPointer<Directory> root = Directory::NewInstance(Directory::ComputerDirectory, String());
    const std::vector<std::string> paths = FullPaths(root->GetFirstDirectory("*"));
    EXPECT_NE(paths.end(), std::find(paths.begin(), paths.end(), "/etc"));
    EXPECT_NE(paths.end(), std::find(paths.begin(), paths.end(), "/usr"));
    EXPECT_TRUE(std::is_sorted(paths.begin(), paths.end()));
    for (const std::string& path : paths) {
        EXPECT_EQ('/', path[0]) << path;
        EXPECT_EQ(std::string::npos, path.find('.')) << path;
        EXPECT_EQ(std::string::npos, path.find('/', 1)) << path;
    }
    EXPECT_EQ((std::vector<std::string>{"/etc"}), FullPaths(root->GetFirstDirectory("etc")));
    // Each entry lists on its own.
    const std::vector<SmartPointer<Directory>> etc = root->GetFirstDirectory("etc");
    ASSERT_EQ(1U, etc.size());
    EXPECT_EQ("etc", std::string(etc[0]->GetName()));
    EXPECT_EQ("/", FullPath(etc[0]->GetParent()));
}

TEST_F(DirectoryTest, ASlashAloneIsTheRoot)
{
    const SmartPointer<Directory> root = Specified("/");
    EXPECT_EQ("/", FullPath(root));
    EXPECT_EQ("", std::string(root->GetName()));
    EXPECT_EQ((std::vector<std::string>{"/etc"}), FullPaths(root->GetFirstDirectory("etc")));
}

// ------------------------------------------------------ existence test

TEST_F(DirectoryTest, AMissingDirectoryWithAnExistingParentIsRefusedAndNotLeftBehind)
{
    const std::string missing = In("missing");
    EXPECT_EQ(MissingText(missing), FailureText<ExceptionResourceNotAvailable>([&] { Specified(missing); }));
    EXPECT_FALSE(Exists(missing));
    // The text names the path as given.
    EXPECT_EQ(MissingText(missing + "/"), FailureText<ExceptionResourceNotAvailable>([&] { Specified(missing + "/"); }));
    EXPECT_FALSE(Exists(missing));
}

TEST_F(DirectoryTest, ARelativeMissingDirectoryIsRefusedWithItsPathAsGiven)
{
    ASSERT_EQ(0, chdir(dir.c_str()));
    EXPECT_EQ(MissingText("missing"), FailureText<ExceptionResourceNotAvailable>([] { Specified("missing"); }));
    EXPECT_FALSE(Exists(In("missing")));
}

TEST_F(DirectoryTest, AMissingDirectoryWhoseParentIsMissingPassesTheTest)
{
    const std::string path = In("missing/child");
    const SmartPointer<Directory> directory = Specified(path);
    EXPECT_EQ(path, FullPath(directory));
    EXPECT_EQ("child", std::string(directory->GetName()));
    EXPECT_FALSE(Exists(In("missing")));
    // Nothing is there to list.
    EXPECT_TRUE(directory->GetFirstDirectory("*").empty());
    EXPECT_TRUE(directory->GetFirstFile("*", "dll").empty());
}

TEST_F(DirectoryTest, APathThatNamesAFilePassesTheTest)
{
    const std::string path = Put("plain", "text");
    EXPECT_EQ(path, FullPath(Specified(path)));
    EXPECT_EQ("text", Content(path));
}

// ---------------------------------------------------------------- create

TEST_F(DirectoryTest, CreateMakesASubdirectory)
{
    Specified(dir)->Create("made");
    struct stat status {};
    ASSERT_EQ(0, stat(In("made").c_str(), &status));
    EXPECT_TRUE(S_ISDIR(status.st_mode));
    EXPECT_EQ((std::vector<std::string>{In("made")}), FullPaths(Specified(dir)->GetFirstDirectory("*")));
}

TEST_F(DirectoryTest, CreateNeverReportsAFailure)
{
    MakeDirectory("there");
    Put("file", "");
    const SmartPointer<Directory> directory = Specified(dir);
    EXPECT_EQ("no exception", FailureText<ExceptionResourceNotAvailable>([&] { directory->Create("there"); }));
    EXPECT_EQ("no exception", FailureText<ExceptionResourceNotAvailable>([&] { directory->Create("file"); }));
    EXPECT_EQ("no exception", FailureText<ExceptionResourceNotAvailable>([&] { directory->Create("no/such"); }));
    EXPECT_FALSE(Exists(In("no")));
    const SmartPointer<Directory> missingParent = Specified(In("missing/child"));
    EXPECT_EQ("no exception", FailureText<ExceptionResourceNotAvailable>([&] { missingParent->Create("x"); }));
    EXPECT_FALSE(Exists(In("missing")));
}

// ------------------------------------------------------------- listings

TEST_F(DirectoryTest, SubdirectoriesAreNamesWithoutADotSortedByteByByte)
{
    // Made out of order; "\xc3\xa9" sorts behind every ASCII name.
    MakeDirectory("b");
    MakeDirectory("\xc3\xa9");
    MakeDirectory("a");
    MakeDirectory("z");
    MakeDirectory("C");
    MakeDirectory("a.b");
    Put("README", "a file without a dot");
    Put("notes.txt", "a file with a dot");
    EXPECT_EQ((std::vector<std::string>{In("C"), In("README"), In("a"), In("b"), In("z"), In("\xc3\xa9")}),
              FullPaths(Specified(dir)->GetFirstDirectory("*")));
}

TEST_F(DirectoryTest, ADirectoryWithADotIsLeftOutAndAFileWithoutOneTakenIn)
{
    MakeDirectory("a.b");
    Put("README", "");
    const std::vector<SmartPointer<Directory>> found = Specified(dir)->GetFirstDirectory("*");
    ASSERT_EQ(1U, found.size());
    EXPECT_EQ(In("README"), FullPath(found[0]));
    EXPECT_EQ("README", std::string(found[0]->GetName()));
}

TEST_F(DirectoryTest, ThePatternSelectsTheNames)
{
    MakeDirectory("alpha");
    MakeDirectory("beta");
    MakeDirectory("ab");
    MakeDirectory("x");
    const SmartPointer<Directory> directory = Specified(dir);
    EXPECT_EQ((std::vector<std::string>{In("ab"), In("alpha")}), FullPaths(directory->GetFirstDirectory("a*")));
    EXPECT_EQ((std::vector<std::string>{In("x")}), FullPaths(directory->GetFirstDirectory("?")));
    EXPECT_EQ((std::vector<std::string>{In("beta")}), FullPaths(directory->GetFirstDirectory("beta")));
    EXPECT_TRUE(directory->GetFirstDirectory("gamma*").empty());
    EXPECT_TRUE(directory->GetFirstDirectory("").empty());
    // Names never hold a separator.
    EXPECT_TRUE(directory->GetFirstDirectory("alpha/*").empty());
}

TEST_F(DirectoryTest, AnEmptyDirectoryHasNoSubdirectoriesAndNoFiles)
{
    const SmartPointer<Directory> directory = Specified(dir);
    EXPECT_TRUE(directory->GetFirstDirectory("*").empty());
    EXPECT_TRUE(directory->GetFirstFile("*", "dll").empty());
}

TEST_F(DirectoryTest, FilesMatchNameDotExtensionSortedByteByByte)
{
    Put("b.dll", "");
    Put("a.dll", "");
    Put("Z.dll", "");
    Put("c.txt", "");
    Put("dll", "");
    Put("a.dll.bak", "");
    MakeDirectory("d.dll");
    const SmartPointer<Directory> directory = Specified(dir);
    const std::vector<SmartPointer<File>> files = directory->GetFirstFile("*", "dll");
    // A directory is listed by its name like any file.
    EXPECT_EQ((std::vector<std::string>{In("Z.dll"), In("a.dll"), In("b.dll"), In("d.dll")}), FilePaths(files));
    ASSERT_EQ(4U, files.size());
    EXPECT_EQ("Z.dll", std::string(files[0]->GetName()));
    EXPECT_EQ((std::vector<std::string>{In("a.dll")}), FilePaths(directory->GetFirstFile("a", "dll")));
    EXPECT_EQ((std::vector<std::string>{In("c.txt")}), FilePaths(directory->GetFirstFile("*", "txt")));
}

TEST_F(DirectoryTest, AFileNeedsADotAndMoreThanTwoCharacters)
{
    Put("a.", "");
    Put("ab.", "");
    Put("abc", "");
    MakeDirectory("x.y");
    Put("README", "");
    const SmartPointer<Directory> directory = Specified(dir);
    EXPECT_EQ((std::vector<std::string>{In("ab.")}), FilePaths(directory->GetFirstFile("*", "")));
    // "*.*" matches ".", ".." and "a." too; the rule leaves them out.
    EXPECT_EQ((std::vector<std::string>{In("ab."), In("x.y")}), FilePaths(directory->GetFirstFile("*", "*")));
}

TEST_F(DirectoryTest, ARelativeDirectoryListsRelativePaths)
{
    MakeDirectory("plugins");
    Put("plugins/one.dll", "");
    MakeDirectory("plugins/sub");
    ASSERT_EQ(0, chdir(dir.c_str()));
    const SmartPointer<Directory> plugins = Specified("plugins");
    EXPECT_EQ((std::vector<std::string>{"plugins/one.dll"}), FilePaths(plugins->GetFirstFile("*", "dll")));
    EXPECT_EQ((std::vector<std::string>{"plugins/sub"}), FullPaths(plugins->GetFirstDirectory("*")));
}

// ------------------------------------------------------ names, parents

TEST_F(DirectoryTest, TheParentIsThePathWithoutItsLastPiece)
{
    const std::string sub = MakeDirectory("sub");
    MakeDirectory("sub/deeper");
    const SmartPointer<Directory> deeper = Specified(sub + "/deeper");
    EXPECT_EQ("deeper", std::string(deeper->GetName()));
    EXPECT_EQ(sub, FullPath(deeper->GetParent()));
    EXPECT_EQ(dir, FullPath(deeper->GetParent()->GetParent()));
}

TEST_F(DirectoryTest, TheParentOfARelativeNameIsTheCurrentDirectory)
{
    MakeDirectory("plugins");
    MakeDirectory("plugins/sub");
    ASSERT_EQ(0, chdir(dir.c_str()));
    const SmartPointer<Directory> plugins = Specified("plugins");
    EXPECT_EQ("plugins", FullPath(plugins));
    EXPECT_EQ("plugins", std::string(plugins->GetName()));
    EXPECT_EQ(".", FullPath(plugins->GetParent()));
    EXPECT_EQ("plugins", FullPath(Specified("plugins/sub")->GetParent()));
    // "." is a name like another; its parent is "." again.
    EXPECT_EQ(".", FullPath(plugins->GetParent()->GetParent()));
}

TEST_F(DirectoryTest, TheParentPassesTheExistenceTest)
{
    const std::string path = In("missing/child");
    const SmartPointer<Directory> child = Specified(path);
    EXPECT_EQ(MissingText(In("missing")), FailureText<ExceptionResourceNotAvailable>([&] { child->GetParent(); }));
    EXPECT_FALSE(Exists(In("missing")));
}

TEST_F(DirectoryTest, TheValueStringShowsThePath)
{
    EXPECT_STREQ(dir.c_str(), Specified(dir)->GetValueString().c_str());
    EXPECT_STREQ("/etc", Directory::NewInstance(Directory::WindowsDirectory)->GetValueString().c_str());
}

TEST_F(DirectoryTest, AssignmentTakesThePathOfTheOther)
{
    MakeDirectory("first");
    MakeDirectory("second");
    MakeDirectory("second/inner");
    const SmartPointer<Directory> first = Specified(In("first"));
    const SmartPointer<Directory> second = Specified(In("second"));
    Directory& target = *first;
    target = *second;
    EXPECT_EQ(In("second"), FullPath(first));
    EXPECT_EQ((std::vector<std::string>{In("second/inner")}), FullPaths(first->GetFirstDirectory("*")));
    // The other keeps its own.
    EXPECT_EQ(In("second"), FullPath(second));
    target = *first;
    EXPECT_EQ(In("second"), FullPath(first));
    const SmartPointer<Directory> root = Directory::NewInstance(Directory::ComputerDirectory);
    target = *root;
    EXPECT_EQ("/", FullPath(first));
}

namespace {

// A Directory of some other implementation.
class ForeignDirectory : public Directory {
public:
    void Create(const String&) override {}
    std::vector<SmartPointer<Directory>> GetFirstDirectory(const String&) override
    {
        return {};
    }
    std::vector<SmartPointer<File>> GetFirstFile(const String&, const String&) override
    {
        return {};
    }
    SmartPointer<Directory> GetParent() override
    {
        return {};
    }
    String GetName() override
    {
        return "foreign";
    }
    String GetFullPath() override
    {
        return "foreign";
    }
    void Invariant() const override {}
    Diagnostics::String GetValueString() override
    {
        return Diagnostics::String("foreign");
    }
    Directory& operator=(const Directory&) override
    {
        return *this;
    }
};

} // namespace

TEST_F(DirectoryTest, AssignmentFromAnotherImplementationIsRefused)
{
    const SmartPointer<Directory> directory = Specified(dir);
    ForeignDirectory foreign;
    EXPECT_EQ("Directory_PC::operator=: the other directory is no Directory_PC",
              FailureText<ExceptionWrongType>([&] { *directory = foreign; }));
    EXPECT_EQ(dir, FullPath(directory));
}
