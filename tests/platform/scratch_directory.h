#ifndef QVIMANAGER_TESTS_PLATFORM_SCRATCH_DIRECTORY_H
#define QVIMANAGER_TESTS_PLATFORM_SCRATCH_DIRECTORY_H

// A fresh directory of its own for each test, made with mkdtemp under the
// system's temporary directory and removed with all it holds afterwards.
// The working directory is put back as it was.

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace TestSupport {

class ScratchDirectory : public ::testing::Test {
protected:
    void SetUp() override
    {
        char working[PATH_MAX];
        ASSERT_NE(nullptr, getcwd(working, sizeof working));
        previousWorkingDirectory = working;
        std::string pattern = (std::filesystem::temp_directory_path() / "qvimanager-platform-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        // Without links, as the system reports the working directory.
        char resolved[PATH_MAX];
        ASSERT_NE(nullptr, realpath(pattern.c_str(), resolved));
        dir = resolved;
    }

    void TearDown() override
    {
        EXPECT_EQ(0, chdir(previousWorkingDirectory.c_str()));
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
        EXPECT_FALSE(std::filesystem::exists(dir));
    }

    // The path of `name` in the scratch directory.
    std::string In(const std::string& name) const
    {
        return dir + "/" + name;
    }

    // Writes `content` as the file `name` and gives its path.
    std::string Put(const std::string& name, const std::string& content)
    {
        const std::string path = In(name);
        std::ofstream file(path, std::ios::binary);
        file << content;
        EXPECT_TRUE(file.good()) << path;
        return path;
    }

    // Makes the subdirectory `name` and gives its path.
    std::string MakeDirectory(const std::string& name)
    {
        const std::string path = In(name);
        EXPECT_EQ(0, mkdir(path.c_str(), 0777)) << path;
        return path;
    }

    static std::string Content(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    static bool Exists(const std::string& path)
    {
        struct stat status {};
        return lstat(path.c_str(), &status) == 0;
    }

    std::string dir;

private:
    std::string previousWorkingDirectory;
};

} // namespace TestSupport

#endif
