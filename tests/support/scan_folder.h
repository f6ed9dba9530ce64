#ifndef QVIMANAGER_TESTS_SUPPORT_SCAN_FOLDER_H
#define QVIMANAGER_TESTS_SUPPORT_SCAN_FOLDER_H

// A scratch folder of a test's own, holding a copy of a host program and,
// beside it, a folder "plugins" with the test plug-ins the test chooses:
// the naming service of the host scans exactly those. The test runs the
// host (a new process each time) and reads what it prints. The folder goes
// with the object.

#include "tests/components/load_test_plugin.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace TestSupport {

namespace fs = std::filesystem;

// Every line a program started with popen prints, without its line end.
inline std::vector<std::string> OutputLines(FILE* pipe)
{
    std::vector<std::string> output;
    std::array<char, 4096> buffer{};
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
        std::string text(buffer.data());
        if (!text.empty() && text.back() == '\n') {
            text.pop_back();
        }
        output.push_back(text);
    }
    return output;
}

class ScanFolder {
public:
    // A new folder with a copy of the program `host`.
    explicit ScanFolder(const std::string& host)
    {
        std::string pattern = (fs::temp_directory_path() / "qvimanager-scan-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot make a scratch folder");
        }
        root = pattern;
        fs::copy_file(host, root / "host");
    }
    ~ScanFolder()
    {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    ScanFolder(const ScanFolder&) = delete;
    ScanFolder& operator=(const ScanFolder&) = delete;

    fs::path Plugins()
    {
        fs::create_directories(root / "plugins");
        return root / "plugins";
    }
    // The test plug-in `plugin` as plugins/`as`.
    void Add(const std::string& plugin, const std::string& as)
    {
        fs::copy_file(TestPlugins::PluginPath(plugin), Plugins() / as);
    }
    void Add(const std::string& plugin)
    {
        Add(plugin, plugin + ".dll");
    }
    // The plug-in file `file`, from anywhere, as plugins/`as`.
    void AddFile(const fs::path& file, const std::string& as)
    {
        fs::copy_file(file, Plugins() / as);
    }

    // Runs the host with the commands and gives back what it printed;
    // `environment` ("NAME=value ...") goes before the command.
    std::vector<std::string> Run(const std::vector<std::string>& commands, const std::string& environment = "")
    {
        std::string line = environment + " '" + (root / "host").string() + "'";
        for (const std::string& command : commands) {
            line += " '" + command + "'";
        }
        line += " 2>&1";
        FILE* const pipe = popen(line.c_str(), "r");
        EXPECT_NE(nullptr, pipe);
        if (pipe == nullptr) {
            return {};
        }
        const std::vector<std::string> output = OutputLines(pipe);
        EXPECT_EQ(0, pclose(pipe)) << "the host did not end cleanly";
        return output;
    }
    std::string RunOne(const std::string& command)
    {
        const std::vector<std::string> output = Run({command});
        return output.size() == 1 ? output[0] : "(" + std::to_string(output.size()) + " lines)";
    }

    fs::path root;
};

} // namespace TestSupport

#endif
