#ifndef QVIMANAGER_TESTS_SUPPORT_NO_PLUGIN_FILES_H
#define QVIMANAGER_TESTS_SUPPORT_NO_PLUGIN_FILES_H

// Files named like plug-ins that are none, made at test time: an empty
// file, a text, a directory, a named pipe, and copies of a real test
// plug-in (two_components) cut short, or patched to another machine, ELF
// class, byte order or type, to program header entries of another size or
// to a segment that reaches past the end of the file. Each case has a
// name, which ends the name of the test, and makes its file at the path it
// is given, so that each test keeps it in a scratch folder of its own
// (ScratchFolder, or a ScanFolder). The programs that use it are given
// QVIMANAGER_TEST_PLUGIN_DIR.

#include "tests/components/load_test_plugin.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <link.h>
#include <ostream>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace TestSupport {

// The real plug-in the damaged copies come from.
inline std::string RealPluginPath()
{
    return TestPlugins::PluginPath("two_components");
}

inline std::string RealPluginBytes()
{
    std::ifstream file(RealPluginPath(), std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (bytes.size() < sizeof(ElfW(Ehdr))) {
        throw std::runtime_error("cannot read " + RealPluginPath());
    }
    return bytes;
}

// The ELF header of a plug-in's bytes, and its program header `index`.
inline ElfW(Ehdr) ElfHeaderOf(const std::string& bytes)
{
    ElfW(Ehdr) header{};
    std::memcpy(&header, bytes.data(), sizeof header);
    return header;
}
inline ElfW(Phdr) ProgramHeaderOf(const std::string& bytes, std::size_t index)
{
    const ElfW(Ehdr) header = ElfHeaderOf(bytes);
    ElfW(Phdr) segment{};
    std::memcpy(&segment, bytes.data() + header.e_phoff + index * sizeof segment, sizeof segment);
    return segment;
}

// The program header of the plug-in's code: the executable PT_LOAD segment.
inline std::size_t CodeSegmentIndex(const std::string& bytes)
{
    const ElfW(Ehdr) header = ElfHeaderOf(bytes);
    for (std::size_t index = 0; index < header.e_phnum; ++index) {
        const ElfW(Phdr) segment = ProgramHeaderOf(bytes, index);
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0) {
            return index;
        }
    }
    throw std::runtime_error("no code segment in " + RealPluginPath());
}

inline void WriteFile(const std::filesystem::path& at, const std::string& bytes)
{
    std::ofstream file(at, std::ios::binary);
    file << bytes;
    if (!file.good()) {
        throw std::runtime_error("cannot write " + at.string());
    }
}

// The sizes the plug-in is cut to: within its ELF header, within its
// program header table, within its section header table (at the end of the
// file, after the segments), halfway into its code segment.
inline std::size_t WithinTheElfHeader()
{
    return sizeof(ElfW(Ehdr)) / 2;
}
inline std::size_t WithinTheProgramHeaders(const std::string& bytes)
{
    const ElfW(Ehdr) header = ElfHeaderOf(bytes);
    return header.e_phoff + header.e_phentsize + header.e_phentsize / 2;
}
inline std::size_t WithinTheSectionHeaders(const std::string& bytes)
{
    const ElfW(Ehdr) header = ElfHeaderOf(bytes);
    return header.e_shoff + header.e_shentsize + header.e_shentsize / 2;
}
inline std::size_t WithinTheCodeSegment(const std::string& bytes)
{
    const ElfW(Phdr) code = ProgramHeaderOf(bytes, CodeSegmentIndex(bytes));
    return code.p_offset + code.p_filesz / 2;
}

// A copy of the plug-in with `change` applied to its bytes.
inline std::function<void(const std::filesystem::path&)> Copy(std::function<void(std::string&)> change)
{
    return [change](const std::filesystem::path& at) {
        std::string bytes = RealPluginBytes();
        change(bytes);
        WriteFile(at, bytes);
    };
}
inline std::function<void(const std::filesystem::path&)> CutTo(std::function<std::size_t(const std::string&)> size)
{
    return Copy([size](std::string& bytes) { bytes.resize(size(bytes)); });
}

// The field at `offset`, of the type of `value`, set to `value`.
template <typename Field>
void Patch(std::string& bytes, std::size_t offset, Field value)
{
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

// A machine other than `own`.
inline ElfW(Half) OtherMachine(ElfW(Half) own)
{
    return own == EM_AARCH64 ? ElfW(Half){EM_X86_64} : ElfW(Half){EM_AARCH64};
}

// A folder of the test's own for such files, removed with what it holds.
class ScratchFolder {
public:
    ScratchFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvimanager-files-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot make a scratch folder");
        }
        root = pattern;
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::filesystem::path root;
};

struct NoPluginFile {
    // "TruncatedWithinALoadedSegment": what the file is.
    std::string name;
    // Makes the file at the path.
    std::function<void(const std::filesystem::path&)> make;
};

inline void PrintTo(const NoPluginFile& file, std::ostream* out)
{
    *out << file.name;
}

// For INSTANTIATE_TEST_SUITE_P: the case's name ends the test's name.
inline std::string NoPluginFileName(const ::testing::TestParamInfo<NoPluginFile>& info)
{
    return info.param.name;
}

inline std::vector<NoPluginFile> NoPluginFiles()
{
    using Path = std::filesystem::path;
    return {
        {"EmptyFile", [](const Path& at) { WriteFile(at, ""); }},
        {"TextFile", [](const Path& at) { WriteFile(at, "This is a text file, not a shared object.\n"); }},
        {"Directory", [](const Path& at) { std::filesystem::create_directory(at); }},
        {"NamedPipe",
         [](const Path& at) {
             if (mkfifo(at.c_str(), 0600) != 0) {
                 throw std::runtime_error("cannot make the pipe " + at.string());
             }
         }},
        {"TruncatedWithinTheElfHeader", CutTo([](const std::string&) { return WithinTheElfHeader(); })},
        {"TruncatedWithinTheProgramHeaders", CutTo(WithinTheProgramHeaders)},
        {"TruncatedWithinTheSectionHeaders", CutTo(WithinTheSectionHeaders)},
        {"TruncatedTo4096Bytes", CutTo([](const std::string&) { return std::size_t{4096}; })},
        {"TruncatedTo8000Bytes", CutTo([](const std::string&) { return std::size_t{8000}; })},
        {"TruncatedTo20000Bytes", CutTo([](const std::string&) { return std::size_t{20000}; })},
        {"TruncatedWithinALoadedSegment", CutTo(WithinTheCodeSegment)},
        {"TruncatedToHalfItsSize", CutTo([](const std::string& bytes) { return bytes.size() / 2; })},
        {"LoadedSegmentReachingPastTheEnd",
         Copy([](std::string& bytes) {
             // A file size that wraps around when added to the offset.
             const std::size_t index = CodeSegmentIndex(bytes);
             const std::size_t at = ElfHeaderOf(bytes).e_phoff + index * sizeof(ElfW(Phdr));
             using Size = decltype(ElfW(Phdr)::p_filesz);
             Patch(bytes, at + offsetof(ElfW(Phdr), p_filesz), std::numeric_limits<Size>::max());
         })},
        {"BuiltForAnotherMachine",
         Copy([](std::string& bytes) {
             Patch(bytes, offsetof(ElfW(Ehdr), e_machine), OtherMachine(ElfHeaderOf(bytes).e_machine));
         })},
        {"OtherElfClass",
         Copy([](std::string& bytes) {
             // 32-bit on a 64-bit machine.
             bytes[EI_CLASS] = static_cast<char>(bytes[EI_CLASS] == ELFCLASS64 ? ELFCLASS32 : ELFCLASS64);
         })},
        {"OtherByteOrder",
         Copy([](std::string& bytes) {
             bytes[EI_DATA] = static_cast<char>(bytes[EI_DATA] == ELFDATA2LSB ? ELFDATA2MSB : ELFDATA2LSB);
         })},
        {"ProgramHeaderEntriesOfAnotherSize",
         Copy([](std::string& bytes) {
             Patch(bytes, offsetof(ElfW(Ehdr), e_phentsize), ElfW(Half){sizeof(ElfW(Phdr)) / 2});
         })},
        {"ExecutableInsteadOfASharedObject",
         Copy([](std::string& bytes) { Patch(bytes, offsetof(ElfW(Ehdr), e_type), ElfW(Half){ET_EXEC}); })},
    };
}

// Makes the file of the case `name` at `at`.
inline void MakeNoPluginFile(const std::string& name, const std::filesystem::path& at)
{
    for (const NoPluginFile& file : NoPluginFiles()) {
        if (file.name == name) {
            file.make(at);
            return;
        }
    }
    throw std::runtime_error("no such case: " + name);
}

} // namespace TestSupport

#endif
