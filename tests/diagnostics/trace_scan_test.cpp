// The library's trace points at work: a plug-in scan, resolving, pooling,
// loading, a failed unlock and the end of the process, traced into
// "DebugOutput.txt", with each diagnostic text of the naming service, the
// loaders, the component factory, the exceptions, the mutex and the
// instrument events in its own words.
//
// Each test copies the host program (trace_host.cpp) into a folder of its
// own beside a "plugins" folder it fills, and runs it there (a process of
// its own), so that the trace file is the folder's.

#include "tests/support/no_plugin_files.h"
#include "tests/support/scan_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using TestSupport::ScanFolder;

class TracedHost : public ScanFolder {
public:
    TracedHost() : ScanFolder(QVIMANAGER_TRACE_HOST) {}

    // Runs the host in its folder with `environment` (tracing on by
    // default) and checks that it finished.
    void Run(const std::vector<std::string>& commands, const std::string& environment = "QVIMANAGER_TRACE=1")
    {
        const std::vector<std::string> output = ScanFolder::Run(commands, "cd '" + root.string() + "' && " + environment);
        EXPECT_EQ(std::vector<std::string>{"done"}, output);
    }

    // The path of the plug-in file `name`, as the service names it.
    std::string Plugin(const std::string& name)
    {
        return (Plugins() / name).string();
    }

    bool TraceExists() const
    {
        return std::filesystem::exists(root / "DebugOutput.txt");
    }

    // The lines of the trace, each without the blanks that indent it.
    std::vector<std::string> Trace() const
    {
        std::vector<std::string> lines;
        std::ifstream file(root / "DebugOutput.txt");
        std::string line;
        while (std::getline(file, line)) {
            const std::string::size_type start = line.find_first_not_of(' ');
            lines.push_back(start == std::string::npos ? std::string() : line.substr(start));
        }
        return lines;
    }

    // The trace has `line` as a whole line (indent aside).
    bool Traced(const std::string& line) const
    {
        const std::vector<std::string> lines = Trace();
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    // A whole line of the trace starts with `start`.
    bool TracedStarting(const std::string& start) const
    {
        for (const std::string& line : Trace()) {
            if (line.rfind(start, 0) == 0) {
                return true;
            }
        }
        return false;
    }

    // Writes a file `name` into the folder.
    void Put(const std::string& name, const std::string& content)
    {
        std::ofstream file(root / name);
        file << content;
    }

};

// The scan of a folder with newer, older, tied, differently versioned and
// unversioned components, a descriptor without a name and a file that is
// no plug-in; then a name that is not there, a singleton pooled twice, a
// file that is refused when added directly, and a mutex unlocked by nobody.
TEST(TraceScan, TheScanAndTheServicesTextsGoToTheTrace)
{
    TracedHost host;
    host.Add("same_name_first", "a_first.dll");
    host.Add("same_name_second", "b_second.dll");
    host.Add("same_name_equal", "c_equal.dll");
    host.Add("same_name_one_token", "d_one_token.dll");
    host.Add("same_name_no_version", "e_no_version.dll");
    host.Add("handmade_1", "f_nameless.dll");
    host.Put("plugins/g_notes.dll", "not a plug-in\n");
    const std::string a = host.Plugin("a_first.dll");
    const std::string b = host.Plugin("b_second.dll");
    const std::string c = host.Plugin("c_equal.dll");
    const std::string d = host.Plugin("d_one_token.dll");
    const std::string e = host.Plugin("e_no_version.dll");
    const std::string f = host.Plugin("f_nameless.dll");
    const std::string g = host.Plugin("g_notes.dll");
    host.Run({"resolve:Missing", "pool:QVIInstrumentManager:first", "pool:QVIInstrumentManager:second", "load:" + g,
              "unlock"});

    for (const char* name : {"QVIInstrumentManager", "MutexImplementation", "ThreadImplementation", "SharedName",
                             "HandmadeGood"}) {
        EXPECT_TRUE(host.Traced(std::string("NamingService: Component added: ") + name)) << name;
    }
    EXPECT_TRUE(host.Traced("NamingService: " + a + " a valid plugin DLL, is loaded into memory"));
    EXPECT_TRUE(host.Traced("NamingService: Component: SharedName in DLL: " + b +
                            " is newer (and has been replaced) than the same component in DLL: " + a));
    EXPECT_TRUE(host.Traced("NamingService: Component: SharedName in DLL: " + c +
                            " is older than the same component in DLL: " + b));
    EXPECT_TRUE(host.Traced("NamingService: Component: SharedName (1.7) in DLL: " + d +
                            " has a different revision format than same component ($Revision: 1.6 $) in DLL:" + b));
    EXPECT_TRUE(host.Traced("NamingService: Component: SharedName in DLL: " + e + " contains no revision information"));
    EXPECT_TRUE(host.Traced("NamingService: Component DLL: " + f +
                            " contains a component without a name tag in the descriptor."));
    EXPECT_TRUE(host.TracedStarting("Can't load DLL: " + g + " - reason: "));
    EXPECT_TRUE(host.Traced("Component \"Missing\" could not be found in NamingService!"));
    EXPECT_TRUE(host.Traced("NamingService: Can't add component into the pool with the name \"second\"."));
    EXPECT_TRUE(host.Traced("Component \"QVIInstrumentManager\" is a singleton component"));
    EXPECT_TRUE(host.Traced("and already exists in the pool with the pool name: \"first\"."));
    // The refused file: the exception's life, thrown and caught.
    EXPECT_TRUE(host.Traced("Throw: Utilities::Exception: NamingService: " + g + " is not a valid plugin DLL."));
    EXPECT_TRUE(host.Traced("Catch: Utilities::Exception: NamingService: " + g + " is not a valid plugin DLL."));
    EXPECT_TRUE(host.Traced("Could not unlock CMutex. Error number: " + std::to_string(EPERM)));
    // At the end, the pooled manager (which never searched) refuses to
    // prepare for unload, and that ends the walk.
    EXPECT_TRUE(host.Traced(
        "NamingService: Exception thrown in preparing for unload. Exception Text: Failed to dereference nullpointer."));
}

TEST(TraceScan, CallsAreTracedWithTheirParametersAndIndented)
{
    TracedHost host;
    host.Run({"resolve:Missing"});
    const std::vector<std::string> lines = host.Trace();
    // The message is written inside the call that formed it.
    const auto call = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.rfind("CALL - 0x", 0) == 0 &&
               line.find(" - Utilities::NamingService::Resolve - ( name:Missing )") != std::string::npos;
    });
    ASSERT_NE(lines.end(), call) << "no traced call of Resolve";
    ASSERT_LT(call + 2, lines.end());
    EXPECT_EQ("Component \"Missing\" could not be found in NamingService!", *(call + 1));
    EXPECT_EQ(0u, (call + 2)->rfind("RETURN - 0x", 0));
    EXPECT_NE(std::string::npos, (call + 2)->find(" - Utilities::NamingService::Resolve"));
    // The start-up scan holds the registration of the library's own
    // components, one level deeper.
    std::ifstream file(host.root / "DebugOutput.txt");
    std::string first;
    std::string second;
    std::getline(file, first);
    std::getline(file, second);
    EXPECT_EQ(0u, first.rfind("CALL - 0x", 0)) << first;
    EXPECT_NE(std::string::npos, first.find(" - Utilities::NamingService::RegisterLocalComponentsAndPlugins - ()"));
    EXPECT_EQ(0u, second.rfind("| CALL - 0x", 0)) << second;
    EXPECT_TRUE(host.Traced("CALL - Utilities::NamingService::ReleaseInstance - ()"));
}

TEST(TraceScan, APluginThatCannotPrepareForUnloadAndStillHasInstances)
{
    TracedHost host;
    host.Add("stays_loaded", "a.dll");
    host.Run({});
    EXPECT_TRUE(host.Traced("Component Pinned didn't prepare for unload."));
    EXPECT_TRUE(host.Traced("Component Pinned has still 1 instance(s)"));
}

TEST(TraceScan, AnUnexpectedFailureOfTheScan)
{
    // The second descriptor's name is no text: the scan ends there.
    TracedHost host;
    host.Add("handmade_2", "a.dll");
    host.Run({});
    EXPECT_TRUE(host.Traced("NamingService: Component added: HandmadeBeforeBadName"));
    EXPECT_TRUE(host.TracedStarting("NamingService initialization: Unexpected exception occured: "));
}

// Files the loader refuses before the dynamic loader sees them, each
// traced with why. The numbers are read from the plug-in they were made of.
TEST(TraceScan, FilesRefusedBeforeLoadingAreTracedWithTheReason)
{
    using std::to_string;
    const std::string real = TestSupport::RealPluginBytes();
    const ElfW(Ehdr) header = TestSupport::ElfHeaderOf(real);
    const std::size_t codeIndex = TestSupport::CodeSegmentIndex(real);
    const ElfW(Phdr) code = TestSupport::ProgramHeaderOf(real, codeIndex);
    const std::string codeName = "PT_LOAD segment (program header " + to_string(codeIndex) + ")";
    const auto truncated = [](std::uint64_t has, const std::string& part, std::uint64_t needs, std::uint64_t from) {
        return "the file is truncated: it has " + to_string(has) + " bytes, its " + part + " needs " +
               to_string(needs) + " bytes from byte " + to_string(from);
    };
    const std::string otherMachine = "not a shared object of this machine: its machine (e_machine) is " +
                                     to_string(TestSupport::OtherMachine(header.e_machine)) + ", this library's is " +
                                     to_string(header.e_machine);
    const unsigned char elfClass = header.e_ident[EI_CLASS];
    const std::string otherClass = "not a shared object of this machine: its ELF class is " +
                                   to_string(elfClass == ELFCLASS64 ? ELFCLASS32 : ELFCLASS64) +
                                   ", this library's is " + to_string(elfClass);
    const unsigned char byteOrder = header.e_ident[EI_DATA];
    const std::string otherByteOrder = "not a shared object of this machine: its byte order (EI_DATA) is " +
                                       to_string(byteOrder == ELFDATA2LSB ? ELFDATA2MSB : ELFDATA2LSB) +
                                       ", this library's is " + to_string(byteOrder);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"EmptyFile", "not an ELF file"},
        {"TextFile", "not an ELF file"},
        {"Directory", "not a regular file"},
        {"NamedPipe", "not a regular file"},
        {"TruncatedWithinTheElfHeader", truncated(TestSupport::WithinTheElfHeader(), "ELF header", sizeof header, 0)},
        {"TruncatedWithinTheProgramHeaders", truncated(TestSupport::WithinTheProgramHeaders(real),
                                                       "program header table",
                                                       header.e_phnum * sizeof(ElfW(Phdr)), header.e_phoff)},
        {"TruncatedWithinALoadedSegment",
         truncated(TestSupport::WithinTheCodeSegment(real), codeName, code.p_filesz, code.p_offset)},
        {"TruncatedWithinTheSectionHeaders", truncated(TestSupport::WithinTheSectionHeaders(real),
                                                       "section header table",
                                                       header.e_shnum * sizeof(ElfW(Shdr)), header.e_shoff)},
        {"LoadedSegmentReachingPastTheEnd",
         truncated(real.size(), codeName, std::numeric_limits<decltype(code.p_filesz)>::max(), code.p_offset)},
        {"BuiltForAnotherMachine", otherMachine},
        {"OtherElfClass", otherClass},
        {"OtherByteOrder", otherByteOrder},
        {"ProgramHeaderEntriesOfAnotherSize", "malformed program header table: entries of " +
                                                  to_string(sizeof(ElfW(Phdr)) / 2) + " bytes, not " +
                                                  to_string(sizeof(ElfW(Phdr)))},
        {"ExecutableInsteadOfASharedObject", "not a shared object: its ELF type (e_type) is " + to_string(ET_EXEC)},
    };
    TracedHost host;
    for (const auto& [name, reason] : cases) {
        TestSupport::MakeNoPluginFile(name, host.Plugins() / (name + ".dll"));
    }
    host.Run({});
    for (const auto& [name, reason] : cases) {
        EXPECT_TRUE(host.Traced("Can't load DLL: " + host.Plugin(name + ".dll") + " - reason: " + reason)) << name;
    }
}

TEST(TraceScan, NoPluginFolder)
{
    TracedHost host;
    host.Run({});
    EXPECT_TRUE(host.Traced("NamingService: No plugin subdirectory exist in applications directory."));
}

TEST(TraceScan, AWaitMutexThatCannotBeTaken)
{
    TracedHost host;
    host.Add("refusing_mutex", "a.dll");
    host.Run({"events"});
    EXPECT_TRUE(host.Traced("Could lock Wait mutex."));
    EXPECT_TRUE(host.TracedStarting("CALL - 0x"));
}

TEST(TraceScan, WithoutTheSwitchNothingIsWritten)
{
    TracedHost host;
    host.Add("same_name_first", "a.dll");
    host.Put("plugins/b.dll", "not a plug-in\n");
    host.Run({"resolve:Missing", "unlock"}, "QVIMANAGER_TRACE=");
    EXPECT_FALSE(host.TraceExists());
    host.Run({"resolve:Missing", "unlock"}, "QVIMANAGER_TRACE=0");
    EXPECT_FALSE(host.TraceExists());
}

TEST(TraceScan, FilteredOutPackagesWriteNothing)
{
    TracedHost host;
    host.Add("same_name_first", "a.dll");
    host.Put("PackageDiagnosticsFilter.txt", "Utilities\nQVIManager\n");
    host.Run({"resolve:Missing", "unlock", "pool:QVIInstrumentManager:first"});
    EXPECT_FALSE(host.TraceExists());
}

TEST(TraceScan, ShowOnlyOneClass)
{
    TracedHost host;
    host.Add("same_name_first", "a.dll");
    host.Put("ClassDiagnosticsFilter.txt", "{ShowOnly}\nMutexImplementation_PC\n");
    host.Run({"resolve:Missing", "unlock"});
    const std::vector<std::string> expected = {"Could not unlock CMutex. Error number: " + std::to_string(EPERM)};
    EXPECT_EQ(expected, host.Trace());
}

TEST(TraceScan, ATraceFromAnEarlierRunIsStartedAnew)
{
    TracedHost host;
    host.Put("DebugOutput.txt", "an earlier run\n");
    host.Run({});
    EXPECT_FALSE(host.Traced("an earlier run"));
    EXPECT_TRUE(host.Traced("NamingService: Component added: QVIInstrumentManager"));
}

} // namespace
