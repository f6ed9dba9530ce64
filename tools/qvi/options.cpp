#include "tools/qvi/options.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <map>

#include "cgats/cgats.h"

namespace Qvi {

const char* const kIlluminationValues =
    "A, B, C, D50, D55, D65, D75, F1 ... F12 (e.g. F7), \"Dxx, Temperature:K\" (daylight of K kelvin, defined "
    "from 4000 to 25000, e.g. \"Dxx, Temperature:5000\"), Emission";

namespace {

const std::string kGeneralHelp =
    "usage: qvi COMMAND [OPTIONS] ...\n"
    "\n"
    "Evaluates measurement files (CGATS.17) with the QVIManager library:\n"
    "spectra (SAMPLE_ID, SAMPLE_NAME, SPECTRAL_NM380 ... SPECTRAL_NM730) or Lab\n"
    "values (LAB_L, LAB_A, LAB_B).\n"
    "\n"
    "commands:\n"
    "  color FILE                 colour values of every sample\n"
    "  delta-e REFERENCE SAMPLES  colour differences with a summary\n"
    "  density FILE               densities, dot area and dot gain\n"
    "  cct FILE                   correlated colour temperature of emission samples\n"
    "  spectrum L a b             a reflectance spectrum for a CIELab value\n"
    "  conditions                 every measure-condition key, its values and default\n"
    "  instruments                instrument drivers, their devices, the recent one\n"
    "  measure                    colour values of readings of an instrument\n"
    "\n"
    "`qvi help COMMAND` or `qvi COMMAND --help` describes a command. FILE may be -\n"
    "for standard input; -- ends the options (for a file name that starts with -).\n"
    "\n"
    "input files:\n"
    "  Spectra at the 10 nm points 380 ... 730 nm; 5 nm and 1 nm files give their\n"
    "  10 nm points. A file that measures only 400..700 nm, as many instruments\n"
    "  write it, is accepted: 380..390 nm and 710..730 nm take the nearest measured\n"
    "  value, and qvi says so (standard error, SPECTRAL_EXTENSION in the output).\n"
    "  Fewer points are refused.\n"
    "  Reflectance is written as 0..1 or 0..100. Unless --scale says which, it is\n"
    "  read as 0..100 when most samples have a value above 2 and as 0..1 when no\n"
    "  value exceeds 1.5; any other file is ambiguous and refused, asking for\n"
    "  --scale. The scale used is stated on standard error and in the output\n"
    "  (REFLECTANCE_SCALE). Emission files (MEAS_TYPE EMISSION) keep their scale.\n"
    "  A value beyond a float (3.4e38), or a result that is not finite, is\n"
    "  refused as out of range.\n"
    "  Lab files (LAB_L, LAB_A, LAB_B and no spectral fields) serve delta-e and\n"
    "  color.\n"
    "\n"
    "common options:\n"
    "  --format cgats|csv|json|table   output form (default cgats)\n"
    "  --output FILE, -o FILE          write to FILE instead of standard output (-);\n"
    "                                  a file is replaced only by a run that\n"
    "                                  succeeds, keeping its mode; a link, device\n"
    "                                  or FIFO is written through; an input file is\n"
    "                                  refused\n"
    "  --decimals N                    decimals of the numbers (default 4)\n"
    "  --scale auto|1|100              how reflectance in the input is read: 0..1\n"
    "                                  (1), 0..100 (100), or decided from the data\n"
    "                                  (auto, the default; see above)\n"
    "  --condition KEY=VALUE           any measure condition, e.g.\n"
    "                                  Colorimetric.Illumination=D50 (repeatable;\n"
    "                                  `qvi conditions` lists them)\n"
    "  --quiet, -q                     no notes on standard error (warnings stay)\n"
    "  --version                       the version of qvi\n"
    "\n"
    "exit status: 0 success, 1 the library refused the calculation (its text is\n"
    "printed after the option or sample that led there), 2 a wrong command line,\n"
    "an input file that cannot be read or whose scale is ambiguous, a value out\n"
    "of range, or an output that cannot be written. A failed run writes no\n"
    "output.\n";

const std::map<std::string, std::string> kCommandHelp = {
    {"color",
     "usage: qvi color FILE [OPTIONS]\n"
     "\n"
     "Colour values of every sample: SAMPLE_ID, SAMPLE_NAME and the three values\n"
     "of the colour space. A Lab file is converted from its Lab values, which are\n"
     "taken as measured under the run's illuminant and observer.\n"
     "\n"
     "  --space S          CIELab (default), CIELCh, CIELuv, CIELChuv, CIEXYZ,\n"
     "                     CIExyY, CIEuvY1960, CIEuvY1976, HunterLab, RxRyRz, LABvq,\n"
     "                     LCHvq, RGB; from a Lab file: CIELab, CIELCh, CIEXYZ,\n"
     "                     CIExyY, CIEuvY1960, CIEuvY1976, RGB\n"
     "  --illuminant I     A, B, C, D50, D55, D65 (default), D75, F1 ... F12\n"
     "                     (e.g. F7), \"Dxx, Temperature:K\" (daylight of K kelvin,\n"
     "                     defined from 4000 to 25000, e.g.\n"
     "                     \"Dxx, Temperature:5000\"), Emission\n"
     "  --observer O       TwoDegree (default), TenDegree (also 2, 10)\n"
     "  --white-base W     Absolute (default), Paper (default with --paper-white),\n"
     "                     Automatic (the same as Absolute here)\n"
     "  --paper-white ID   the sample that is the paper white\n"
     "  --scale, --condition, --format, --output, --decimals, --quiet   see qvi --help\n"},
    {"delta-e",
     "usage: qvi delta-e REFERENCE SAMPLES [OPTIONS]\n"
     "\n"
     "Colour differences of each sample in SAMPLES against the reference with the\n"
     "same SAMPLE_ID in REFERENCE, or against the one sample of REFERENCE when it\n"
     "holds only one (or the one named by --reference ID). A summary follows: mean,\n"
     "maximum, 95th percentile (nearest rank) and the samples above --tolerance.\n"
     "Either file may hold Lab values instead of spectra: the spectra of the other\n"
     "then go to CIELab under the run's illuminant and observer, and the Lab values\n"
     "are taken as measured under them too.\n"
     "\n"
     "  --formula F        CIELab (default), CIELuv, LABvq, FMCII, CMC, 94, 2000\n"
     "                     (CIEDE2000); with Lab values: CIELab, 94, 2000\n"
     "  --cmc L:C          CMC lightness and chroma weights (default 1:1; 2:1 for\n"
     "                     acceptability)\n"
     "  --k94 KL,KC,KH     CIE94 weights (default 1,1,1)\n"
     "  --k00 KL:KC:KH     CIEDE2000 weights (default 1:1:1)\n"
     "  --tolerance T      mark samples whose difference exceeds T (default 2)\n"
     "  --reference ID     compare every sample with this reference sample\n"
     "  --summary FILE     write the summary to FILE as well (with --format csv\n"
     "                     it goes to standard error unless given)\n"
     "  --illuminant, --observer   as for color\n"
     "  --scale, --condition, --format, --output, --decimals, --quiet   see qvi --help\n"},
    {"density",
     "usage: qvi density FILE [OPTIONS]\n"
     "\n"
     "Densities of every sample through the black, cyan, magenta and yellow\n"
     "filters of a density standard, and the filter the library selects. Needs\n"
     "spectra.\n"
     "\n"
     "  --density-standard S  DIN (default), DINNB, ANSIA, ANSIT, SPI, User\n"
     "  --white-base W        Automatic (default; needs --paper-white), Paper (needs\n"
     "                        --paper-white), Absolute\n"
     "  --paper-white ID      the sample that is the paper white\n"
     "  --filter-mode M       Auto (default: the filter the solid selects), Black,\n"
     "                        Cyan, Magenta, Yellow, Max: the filter of the dot\n"
     "                        area and dot gain\n"
     "  --solid ID            add the dot area (Murray-Davies, percent) of every\n"
     "                        sample against this solid\n"
     "  --tint ID=PERCENT     add the dot gain of this tint with its nominal\n"
     "                        percentage (repeatable; needs --solid)\n"
     "  --scale, --condition, --format, --output, --decimals, --quiet   see qvi --help\n"},
    {"cct",
     "usage: qvi cct FILE [OPTIONS]\n"
     "\n"
     "Correlated colour temperature in kelvin of every sample, read as an\n"
     "emission spectrum (relative spectral power). Needs spectra.\n"
     "\n"
     "  --observer O       TwoDegree (default), TenDegree\n"
     "  --scale, --condition, --format, --output, --decimals, --quiet   see qvi --help\n"},
    {"spectrum",
     "usage: qvi spectrum L a b [OPTIONS]\n"
     "\n"
     "A reflectance spectrum (380..730 nm, 10 nm) whose CIELab value lies within\n"
     "0.1 delta E of L a b, or the library's failure text (status 1). Negative\n"
     "values are written as they are (qvi spectrum 50 -20 -30).\n"
     "\n"
     "  --illuminant, --observer   the conditions of the Lab value (D65, TwoDegree)\n"
     "  --condition, --format, --output, --decimals, --quiet   see qvi --help\n"},
    {"conditions",
     "usage: qvi conditions [OPTIONS]\n"
     "\n"
     "Every measure-condition key with qvi's default and the values qvi accepts,\n"
     "parametrised ones as they are written.\n"
     "\n"
     "  --format, --output, --quiet   see qvi --help\n"},
    {"instruments",
     "usage: qvi instruments [OPTIONS]\n"
     "\n"
     "The instrument drivers among the plug-ins (the folder plugins beside qvi),\n"
     "the devices each one finds (DEVICE_KEY, the name for --device of qvi measure;\n"
     "NAME, SERIAL, TRANSPORT, PORT, and whether it is AVAILABLE now), and the\n"
     "instrument used last. A driver that finds no device has a row of its own.\n"
     "Printed as a table unless --format says otherwise.\n"
     "\n"
     "  --format, --output, --quiet   see qvi --help\n"},
    {"measure",
     "usage: qvi measure [--device KEY] [--count N] [--wait-button] [OPTIONS]\n"
     "\n"
     "Connects an instrument, takes N readings (one at once, or one per press of\n"
     "its button with --wait-button) and prints their colour values as qvi color\n"
     "prints those of a file: SAMPLE_ID (1 ... N) and the three values of the\n"
     "colour space. Without --device it measures with the instrument used last;\n"
     "with --device the device is remembered as the one used last once every\n"
     "reading has succeeded.\n"
     "\n"
     "  --device KEY       the device (qvi instruments lists the keys)\n"
     "  --count N          the number of readings (default 1)\n"
     "  --wait-button      take each reading when the instrument's button is\n"
     "                     pressed (a disconnect ends the run with status 1)\n"
     "  --space, --illuminant, --observer   as for color\n"
     "  --condition, --format, --output, --decimals, --quiet   see qvi --help\n"},
};


const std::vector<std::string> kCommands = {"color",      "delta-e",     "density", "cct",
                                            "spectrum",   "conditions",  "instruments", "measure"};

// What an option is for, and which commands it serves.
struct OptionUse {
    std::vector<std::string> commands;
    const char* purpose;
};

const std::map<std::string, OptionUse> kUses = {
    {"--format", {kCommands, "the output form"}},
    {"--output", {kCommands, "the output file"}},
    {"--quiet", {kCommands, "notes on standard error"}},
    {"--decimals", {{"color", "delta-e", "density", "cct", "spectrum", "measure"}, "the decimals of the numbers"}},
    {"--scale", {{"color", "delta-e", "density", "cct"}, "how reflectance in the input files is read"}},
    {"--condition", {{"color", "delta-e", "density", "cct", "spectrum", "measure"}, "a measure condition"}},
    {"--illuminant", {{"color", "delta-e", "spectrum", "measure"}, "the illuminant of colour values"}},
    {"--observer", {{"color", "delta-e", "cct", "spectrum", "measure"}, "the observer of colour values"}},
    {"--white-base", {{"color", "density"}, "what values are relative to"}},
    {"--paper-white", {{"color", "density"}, "the paper white"}},
    {"--space", {{"color", "measure"}, "the colour space"}},
    {"--device", {{"measure"}, "the device to measure with"}},
    {"--count", {{"measure"}, "the number of readings"}},
    {"--wait-button", {{"measure"}, "a reading per button press"}},
    {"--density-standard", {{"density"}, "the density standard"}},
    {"--filter-mode", {{"density"}, "the filter of the dot area and dot gain"}},
    {"--solid", {{"density"}, "the solid of the dot area"}},
    {"--tint", {{"density"}, "a tint of the dot gain"}},
    {"--formula", {{"delta-e"}, "the colour-difference formula"}},
    {"--cmc", {{"delta-e"}, "the CMC weights"}},
    {"--k94", {{"delta-e"}, "the CIE94 weights"}},
    {"--k00", {{"delta-e"}, "the CIEDE2000 weights"}},
    {"--tolerance", {{"delta-e"}, "the tolerance"}},
    {"--reference", {{"delta-e"}, "the one reference sample"}},
    {"--summary", {{"delta-e"}, "where the summary goes"}},
};

float ParseFloatOption(const std::string& option, const std::string& text)
{
    float value;
    if (!Cgats::ParseNumber(text, value) || !std::isfinite(value)) {
        throw UsageError(option + ": \"" + text + "\" is not a number");
    }
    return value;
}

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (true) {
        const std::size_t at = text.find(separator, start);
        parts.push_back(text.substr(start, at == std::string::npos ? std::string::npos : at - start));
        if (at == std::string::npos) {
            return parts;
        }
        start = at + 1;
    }
}

// The numbers of a list such as "2:1" written as `form`, as many as the
// form has parts.
std::vector<float> Weights(const std::string& option, const std::string& text, char separator, const std::string& form)
{
    const std::vector<std::string> parts = Split(text, separator);
    if (parts.size() != Split(form, separator).size()) {
        throw UsageError(option + ": \"" + text + "\" is not " + form);
    }
    std::vector<float> weights;
    for (const std::string& part : parts) {
        weights.push_back(ParseFloatOption(option, part));
    }
    return weights;
}

std::string ObserverValue(const std::string& text)
{
    if (text == "2") {
        return "TwoDegree";
    }
    if (text == "10") {
        return "TenDegree";
    }
    return text;
}

// A value as it was written on the command line, quoted where it holds a
// blank.
std::string AsWritten(const std::string& value)
{
    return value.empty() || value.find(' ') != std::string::npos ? "\"" + value + "\"" : value;
}

// A word that is an option, not a value: "--anything", "-o", "-h", "-q".
bool IsOptionWord(const std::string& word)
{
    return (word.size() > 2 && word.compare(0, 2, "--") == 0) || word == "-o" || word == "-h" || word == "-q";
}

// A word that starts an option: "-" followed by anything but a digit or a
// point (so that negative numbers stay arguments).
bool StartsOption(const std::string& word)
{
    return word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9') && word[1] != '.';
}

} // namespace

const std::string& GeneralHelp()
{
    return kGeneralHelp;
}

const std::string* CommandHelp(const std::string& command)
{
    const auto found = kCommandHelp.find(command);
    return found == kCommandHelp.end() ? nullptr : &found->second;
}

Options ParseArguments(int argc, char** argv)
{
    Options options;
    const std::vector<std::string> words(argv + 1, argv + argc);
    std::vector<std::string> positional;
    // The options given, in their long spelling, for the check against the
    // command.
    std::vector<std::string> given;
    std::size_t i = 0;
    bool optionsEnded = false;
    for (; i < words.size(); ++i) {
        std::string word = words[i];
        if (optionsEnded || !StartsOption(word)) {
            positional.push_back(word);
            continue;
        }
        if (word == "--") {
            optionsEnded = true;
            continue;
        }
        if (word == "--help" || word == "-h") {
            options.help = true;
            continue;
        }
        if (word == "--version") {
            options.version = true;
            continue;
        }
        if (word == "--quiet" || word == "-q") {
            options.quiet = true;
            given.push_back("--quiet");
            continue;
        }
        if (word == "--wait-button") {
            options.waitButton = true;
            given.push_back(word);
            continue;
        }
        std::string inlineValue;
        bool hasInline = false;
        const std::size_t equals = word.find('=');
        if (word.rfind("--", 0) == 0 && equals != std::string::npos) {
            inlineValue = word.substr(equals + 1);
            word = word.substr(0, equals);
            hasInline = true;
        }
        if (word == "-o") {
            word = "--output";
        }
        if (kUses.count(word) == 0) {
            throw UsageError("unknown option " + word);
        }
        given.push_back(word);
        const auto value = [&]() -> std::string {
            if (hasInline) {
                return inlineValue;
            }
            if (i + 1 >= words.size()) {
                throw UsageError(word + " needs a value");
            }
            if (IsOptionWord(words[i + 1])) {
                throw UsageError(word + " needs a value (" + words[i + 1] + " is an option)");
            }
            return words[++i];
        };
        const auto condition = [&](const char* key, const std::string& text) {
            options.conditions.push_back({key, text, word + " " + AsWritten(text)});
        };
        if (word == "--format") {
            options.formatGiven = true;
            const std::string f = value();
            if (f == "cgats") {
                options.format = Format::Cgats;
            } else if (f == "csv") {
                options.format = Format::Csv;
            } else if (f == "json") {
                options.format = Format::Json;
            } else if (f == "table") {
                options.format = Format::Table;
            } else {
                throw UsageError("--format: \"" + f + "\" is not one of cgats, csv, json, table");
            }
        } else if (word == "--output") {
            options.output = value();
            if (options.output.empty()) {
                throw UsageError("--output needs a file name (- for standard output)");
            }
            if (options.output == "-") {
                options.output.clear();
            }
        } else if (word == "--summary") {
            options.summary = value();
            if (options.summary.empty()) {
                throw UsageError("--summary needs a file name (- for standard output)");
            }
        } else if (word == "--decimals") {
            const std::string d = value();
            char* end = nullptr;
            const long n = std::strtol(d.c_str(), &end, 10);
            if (d.empty() || *end != '\0' || n < 0 || n > 12) {
                throw UsageError("--decimals: \"" + d + "\" is not a whole number from 0 to 12");
            }
            options.decimals = static_cast<int>(n);
        } else if (word == "--scale") {
            const std::string s = value();
            if (s == "auto") {
                options.scale.automatic = true;
            } else if (s == "1" || s == "100") {
                options.scale.automatic = false;
                options.scale.divisor = s == "1" ? 1.0 : 100.0;
            } else {
                throw UsageError("--scale: \"" + s + "\" is not one of auto, 1, 100");
            }
        } else if (word == "--condition") {
            const std::string pair = value();
            const std::size_t at = pair.find('=');
            if (at == std::string::npos || at == 0) {
                throw UsageError("--condition: \"" + pair + "\" is not KEY=VALUE");
            }
            if (pair.substr(0, at) == "ColorSpaceDescription.DeltaEFormula") {
                // CIEDE2000 is qvi's, not a formula key of the library.
                options.de2000 = pair.substr(at + 1) == "2000";
                if (options.de2000) {
                    continue;
                }
            }
            options.conditions.push_back({pair.substr(0, at), pair.substr(at + 1), "--condition " + AsWritten(pair)});
        } else if (word == "--illuminant") {
            condition("Colorimetric.Illumination", value());
        } else if (word == "--observer") {
            const std::string text = value();
            options.conditions.push_back({"Colorimetric.Observer", ObserverValue(text), word + " " + AsWritten(text)});
        } else if (word == "--white-base") {
            condition("Colorimetric.WhiteBase", value());
        } else if (word == "--space") {
            condition("ColorSpaceDescription.Type", value());
        } else if (word == "--density-standard") {
            condition("Colorimetric.DensityStandard", value());
        } else if (word == "--filter-mode") {
            condition("Colorimetric.DensityFilterMode", value());
        } else if (word == "--formula") {
            const std::string formula = value();
            options.de2000 = formula == "2000";
            if (!options.de2000) {
                condition("ColorSpaceDescription.DeltaEFormula", formula);
            }
        } else if (word == "--paper-white") {
            options.paperWhite = value();
        } else if (word == "--solid") {
            options.solid = value();
        } else if (word == "--tint") {
            const std::string pair = value();
            const std::size_t at = pair.rfind('=');
            if (at == std::string::npos || at == 0) {
                throw UsageError("--tint: \"" + pair + "\" is not ID=PERCENT");
            }
            options.tints.emplace_back(pair.substr(0, at), ParseFloatOption("--tint", pair.substr(at + 1)));
        } else if (word == "--reference") {
            options.reference = value();
        } else if (word == "--cmc") {
            const std::vector<float> weights = Weights(word, value(), ':', "L:C");
            options.p1 = weights[0];
            options.p2 = weights[1];
        } else if (word == "--k94") {
            const std::vector<float> weights = Weights(word, value(), ',', "KL,KC,KH");
            options.p1 = weights[0];
            options.p2 = weights[1];
            options.p3 = weights[2];
        } else if (word == "--k00") {
            const std::string text = value();
            const std::vector<float> weights = Weights(word, text, ':', "KL:KC:KH");
            for (std::size_t axis = 0; axis < 3; ++axis) {
                if (!(weights[axis] > 0.0f)) {
                    throw UsageError("--k00: \"" + text + "\": each weight must be above 0");
                }
                options.k00[axis] = weights[axis];
            }
        } else if (word == "--tolerance") {
            options.tolerance = ParseFloatOption("--tolerance", value());
        } else if (word == "--device") {
            options.device = value();
            if (options.device.empty()) {
                throw UsageError("--device needs a device key (qvi instruments lists them)");
            }
        } else if (word == "--count") {
            const std::string c = value();
            char* end = nullptr;
            errno = 0;
            const long n = std::strtol(c.c_str(), &end, 10);
            if (c.empty() || *end != '\0' || errno != 0 || n < 1 || n > 1000000) {
                throw UsageError("--count: \"" + c + "\" is not a whole number from 1 to 1000000");
            }
            options.count = n;
        }
    }
    if (!positional.empty()) {
        options.command = positional.front();
        options.arguments.assign(positional.begin() + 1, positional.end());
    }
    if (options.command == "help") {
        // `qvi help [COMMAND]`.
        options.help = true;
        options.command = options.arguments.empty() ? std::string() : options.arguments.front();
        if (options.arguments.size() > 1) {
            throw UsageError("qvi help takes at most one command; see qvi --help");
        }
        options.arguments.clear();
        if (!options.command.empty() && CommandHelp(options.command) == nullptr) {
            throw UsageError("unknown command \"" + options.command + "\"");
        }
    }
    if (options.help || options.version || options.command.empty() || CommandHelp(options.command) == nullptr) {
        return options;
    }
    for (const std::string& option : given) {
        const OptionUse& use = kUses.at(option);
        if (std::find(use.commands.begin(), use.commands.end(), options.command) == use.commands.end()) {
            std::string serves;
            for (std::size_t c = 0; c < use.commands.size(); ++c) {
                serves += (c == 0 ? "" : c + 1 == use.commands.size() ? " and " : ", ") + use.commands[c];
            }
            throw UsageError(option + " does not apply to qvi " + options.command + ": it sets " + use.purpose +
                             ", for " + serves);
        }
    }
    return options;
}

} // namespace Qvi
