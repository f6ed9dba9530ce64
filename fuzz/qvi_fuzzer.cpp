// qvi color, delta-e and density, in process, on an arbitrary measurement
// file with an arbitrary command line: the options are parsed, the file is
// read and evaluated, and the result is written in the chosen format, as
// qvi's main does, into memory instead of a file. Every refusal is one of
// qvi's (UsageError, Cgats::Error, LibraryError) or of the library's
// exception tree; any other exception, a crash or a sanitizer report is a
// finding.
//
// Input: the first line is the command line after the command's files
// (words parted by blanks; --output and --summary are dropped, since the
// target writes nowhere); the first byte of it picks the command. The rest
// is the file; for delta-e a line "=====" parts the reference file from the
// samples, and without it the file is both.

#include "fuzz/fuzz_input.h"

#include "cgats/cgats.h"
#include "qvimanager/foundation/exception.h"
#include "tools/qvi/commands.h"
#include "tools/qvi/options.h"
#include "tools/qvi/output.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// The scratch folder of the run (run.sh sets it), else the temporary one.
std::string Scratch(const char* name)
{
    const char* folder = std::getenv("QVIMANAGER_FUZZ_SCRATCH");
    std::string path = folder != nullptr && *folder != '\0' ? folder : "/tmp";
    return path + "/qvi-fuzz-" + std::to_string(getpid()) + "-" + name;
}

void Write(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
}

std::vector<std::string> Words(const std::string& line)
{
    std::vector<std::string> words;
    std::istringstream stream(line);
    std::string word;
    bool skipNext = false;
    while (stream >> word) {
        if (skipNext) {
            skipNext = false;
            continue;
        }
        if (word == "--output" || word == "-o" || word == "--summary") {
            skipNext = true;
            continue;
        }
        if (word.rfind("--output=", 0) == 0 || word.rfind("--summary=", 0) == 0 || word.rfind("-o", 0) == 0) {
            continue;
        }
        // No word may name a file beyond the target's own: standard input
        // ("-") or a path could make it read without end (/dev/zero).
        if (word == "-" || word.find('/') != std::string::npos) {
            continue;
        }
        words.push_back(word);
    }
    return words;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    Qvi::SetQuiet(true);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string input(reinterpret_cast<const char*>(data), size);
    const std::size_t lineEnd = input.find('\n');
    if (lineEnd == std::string::npos || lineEnd == 0) {
        return 0;
    }
    static const char* const kCommands[] = {"color", "delta-e", "density"};
    const std::string command = kCommands[static_cast<unsigned char>(input[0]) % 3];
    const std::vector<std::string> options = Words(input.substr(1, lineEnd - 1));
    std::string file = input.substr(lineEnd + 1);

    const std::string samples = Scratch("samples.cgats");
    std::vector<std::string> arguments{"qvi", command};
    if (command == "delta-e") {
        const std::string reference = Scratch("reference.cgats");
        const std::size_t parting = file.find("\n=====\n");
        if (parting == std::string::npos) {
            Write(reference, file);
        } else {
            Write(reference, file.substr(0, parting + 1));
            file = file.substr(parting + 7);
        }
        arguments.push_back(reference);
    }
    Write(samples, file);
    arguments.push_back(samples);
    arguments.insert(arguments.end(), options.begin(), options.end());

    // The files go when the input is done, whatever happens to it.
    struct Remover {
        std::vector<std::string> paths;
        ~Remover()
        {
            for (const std::string& path : paths) {
                std::remove(path.c_str());
            }
        }
    } remover{{samples, Scratch("reference.cgats")}};

    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    try {
        const Qvi::Options parsed = Qvi::ParseArguments(static_cast<int>(arguments.size()), argv.data());
        if (parsed.help || parsed.version || parsed.command != command || !parsed.output.empty() ||
            !parsed.summary.empty()) {
            return 0;
        }
        std::unique_ptr<Qvi::ResultSet> result;
        if (command == "color") {
            result = Qvi::Color(parsed);
        } else if (command == "delta-e") {
            result = Qvi::DeltaE(parsed);
        } else {
            result = Qvi::Density(parsed);
        }
        std::ostringstream output;
        result->Write(parsed.format, output);
        result->WriteSummary(output);
        Fuzz::Check(!output.str().empty(), "a result without text");
    } catch (const Qvi::UsageError&) {
    } catch (const Cgats::Error&) {
    } catch (const Qvi::LibraryError&) {
    } catch (const Utilities::Exception&) {
    } catch (const std::exception& error) {
        Fuzz::Broken(std::string("an exception outside qvi's refusals: ") + error.what());
    }
    return 0;
}
