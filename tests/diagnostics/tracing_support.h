#ifndef QVIMANAGER_TESTS_DIAGNOSTICS_TRACING_SUPPORT_H
#define QVIMANAGER_TESTS_DIAGNOSTICS_TRACING_SUPPORT_H

// Helpers of the tracing tests.
//
// Tracing reads its filter files from, and writes "DebugOutput.txt" into,
// the working directory. So every tracing test runs in a fresh directory of
// its own, made with mkdtemp under the system's temporary directory before
// anything is traced, and removed with all it holds afterwards; the working
// directory is put back as it was. Each test runs in its own process, so
// the kit, the filter lists and the WinDebugPublisher start anew.

#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/diagnostic_string.h"
#include "qvimanager/diagnostics/memory_manager.h"
#include "qvimanager/diagnostics/publisher.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

namespace TracingSupport {

class ScratchWorkingDirectory : public ::testing::Test {
protected:
    void SetUp() override
    {
        previousWorkingDirectory = std::filesystem::current_path();
        std::string pattern = (std::filesystem::temp_directory_path() / "qvimanager-tracing-XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        dir = std::filesystem::canonical(pattern);
        std::filesystem::current_path(dir);
    }

    void TearDown() override
    {
        std::filesystem::current_path(previousWorkingDirectory);
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
        EXPECT_FALSE(std::filesystem::exists(dir));
    }

    // The path of `name` in the scratch directory.
    std::string In(const std::string& name) const
    {
        return (dir / name).string();
    }

    // Writes `content` as the file `name` of the scratch directory.
    void Put(const std::string& name, const std::string& content) const
    {
        std::ofstream file(In(name), std::ios::binary | std::ios::trunc);
        file << content;
        ASSERT_TRUE(file.good()) << name;
    }

    // The content of the file `name`, or "(missing)".
    std::string Content(const std::string& name) const
    {
        std::ifstream file(In(name), std::ios::binary);
        if (!file.is_open()) {
            return "(missing)";
        }
        return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }

    std::filesystem::path dir;
    std::filesystem::path previousWorkingDirectory;
};

// A publisher that keeps every line it is given. It leaves the kit first
// thing in its destructor, so that other threads cannot reach it half gone.
class Recorder : public Diagnostics::StringPublisher {
public:
    Recorder() : StringPublisher(false) {}

    ~Recorder() override
    {
        Diagnostics::DiagnosticKit::Instance().UnregisterPublisher(this);
    }

    using StringPublisher::Publish;
    void Publish(const Diagnostics::String& text) override
    {
        lines.emplace_back(text.c_str());
    }

    std::vector<std::string> lines;
};

// The filter lists and the show-only flag, read under the diagnostics lock.
class FilterState : public Diagnostics::Publisher {
public:
    static bool ListsExist()
    {
        const std::lock_guard<std::recursive_mutex> hold(Diagnostics::PoolGuard());
        return psmPackageFilterNames != nullptr && psmClassFilterNames != nullptr;
    }

    static std::vector<std::string> PackageNames()
    {
        const std::lock_guard<std::recursive_mutex> hold(Diagnostics::PoolGuard());
        return Entries(psmPackageFilterNames);
    }

    static std::vector<std::string> ClassNames()
    {
        const std::lock_guard<std::recursive_mutex> hold(Diagnostics::PoolGuard());
        return Entries(psmClassFilterNames);
    }

    static bool ShowOnly()
    {
        const std::lock_guard<std::recursive_mutex> hold(Diagnostics::PoolGuard());
        return amShowOnly;
    }

private:
    static std::vector<std::string> Entries(const Diagnostics::Vector<Diagnostics::String>* list)
    {
        std::vector<std::string> entries;
        if (list != nullptr) {
            for (unsigned i = 0; i < list->GetSize(); ++i) {
                entries.emplace_back((*list)[i].c_str());
            }
        }
        return entries;
    }
};

// `count` times `piece`.
inline std::string Repeat(const std::string& piece, unsigned count)
{
    std::string text;
    for (unsigned i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

} // namespace TracingSupport

#endif
