// qvi: evaluates measurement files (CGATS) with the QVIManager library.
// See `qvi --help`.

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "qvimanager/qvimanager.h"
#include "cgats/cgats.h"
#include "tools/qvi/commands.h"
#include "tools/qvi/destination.h"
#include "tools/qvi/options.h"
#include "tools/qvi/output.h"

#ifndef QVI_VERSION
#define QVI_VERSION "unknown"
#endif

namespace {

using namespace Qvi;

// The files a command reads.
std::vector<std::string> Inputs(const Options& options)
{
    if (options.command == "color" || options.command == "density" || options.command == "cct" ||
        options.command == "delta-e") {
        return options.arguments;
    }
    return {};
}

int Run(int argc, char** argv)
{
    RemoveTemporaryFilesOnSignals();
    Options options;
    try {
        options = ParseArguments(argc, argv);
    } catch (const UsageError& error) {
        std::cerr << "qvi: " << error.what() << "\n"
                  << "Try `qvi --help`.\n";
        return 2;
    }
    SetQuiet(options.quiet);
    if (options.version) {
        std::cout << "qvi " << QVI_VERSION << " (QVIManager library)\n";
        return 0;
    }
    if (options.command.empty()) {
        // Asked for, the help goes to standard output; as the answer to a
        // wrong command line, to standard error.
        (options.help ? std::cout : std::cerr) << GeneralHelp();
        return options.help ? 0 : 2;
    }
    const std::string* help = CommandHelp(options.command);
    if (help == nullptr) {
        std::cerr << "qvi: unknown command \"" << options.command << "\"\nTry `qvi --help`.\n";
        return 2;
    }
    if (options.help) {
        std::cout << *help;
        return 0;
    }
    try {
        const Destination output(options.output, "--output");
        output.Check(Inputs(options));
        std::unique_ptr<Destination> summary;
        if (!options.summary.empty()) {
            summary = std::make_unique<Destination>(options.summary, "--summary");
            summary->Check(Inputs(options));
            if (!output.IsStandardOutput() && summary->Path() == output.Path()) {
                throw UsageError("--summary and --output name the same file");
            }
        }
        std::unique_ptr<ResultSet> result;
        if (options.command == "color") {
            result = Color(options);
        } else if (options.command == "delta-e") {
            result = DeltaE(options);
        } else if (options.command == "density") {
            result = Density(options);
        } else if (options.command == "cct") {
            result = Cct(options);
        } else if (options.command == "spectrum") {
            result = SpectrumCommand(options);
        } else if (options.command == "instruments") {
            result = Instruments(options);
        } else if (options.command == "measure") {
            result = Measure(options);
        } else {
            result = Conditions(options);
        }
        // The instruments are a list for people: a table unless asked otherwise.
        const Format format =
            options.command == "instruments" && !options.formatGiven ? Format::Table : options.format;
        output.Write([&](std::ostream& stream) { result->Write(format, stream); });
        if (!result->summary.empty()) {
            if (summary != nullptr) {
                summary->Write([&](std::ostream& stream) { result->WriteSummary(stream); });
            } else if (options.format == Format::Csv) {
                // CSV holds the table only; its summary goes where a CSV
                // reader does not meet it.
                result->WriteSummary(std::cerr);
            }
        }
        return 0;
    } catch (const UsageError& error) {
        std::cerr << "qvi: " << error.what() << "\n";
        return 2;
    } catch (const Cgats::Error& error) {
        std::cerr << "qvi: " << error.what() << "\n";
        return 2;
    } catch (const LibraryError& error) {
        std::cerr << "qvi: " << error.what() << "\n";
        return 1;
    } catch (const Utilities::Exception& error) {
        std::cerr << "qvi: " << error.GetExceptionText().GetCharPointer() << "\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << "qvi: " << error.what() << "\n";
        return 1;
    }
}

} // namespace

int main(int argc, char** argv)
{
    return Run(argc, argv);
}
