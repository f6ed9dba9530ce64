// qvi: evaluates spectral measurement files (CGATS) with the QVIManager
// library. See `qvi --help`.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "qvimanager/qvimanager.h"
#include "cgats/cgats.h"
#include "tools/qvi/input.h"
#include "tools/qvi/output.h"

namespace {

using Qvi::Column;
using Qvi::Format;
using Qvi::FormatNumber;
using Qvi::ResultSet;
using Qvi::Sample;
using Qvi::SpectralFile;
using Utilities::String;

// A wrong command line: usage text on standard error, status 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A failure the library raised, with its own text: status 1.
class LibraryError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

const char* const kConditionKeys[] = {
    "Colorimetric.Illumination",          "Colorimetric.Observer",
    "Colorimetric.WhiteBase",             "Colorimetric.DensityStandard",
    "Colorimetric.DensityFilterMode",     "ColorSpaceDescription.Type",
    "ColorSpaceDescription.DeltaEFormula", "ColorSpaceDescription.AbsoluteOrDeltaVector",
    "Physical.Filter",                    "Physical.NumberOfDataPointsSpectrum",
    "Physical.WavelengthSpectrumMax",     "Physical.WavelengthSpectrumMin"};

const char* const kGeneralHelp =
    "usage: qvi COMMAND [OPTIONS] ...\n"
    "\n"
    "Evaluates spectral measurement files (CGATS.17: SAMPLE_ID, SAMPLE_NAME,\n"
    "SPECTRAL_NM380 ... SPECTRAL_NM730) with the QVIManager library.\n"
    "\n"
    "commands:\n"
    "  color FILE                 colour values of every sample\n"
    "  delta-e REFERENCE SAMPLES  colour differences with a summary\n"
    "  density FILE               densities, dot area and dot gain\n"
    "  cct FILE                   correlated colour temperature of emission samples\n"
    "  spectrum L a b             a reflectance spectrum for a CIELab value\n"
    "  conditions                 every measure-condition key, its values and default\n"
    "\n"
    "`qvi COMMAND --help` describes a command. FILE may be - for standard input.\n"
    "\n"
    "common options:\n"
    "  --format cgats|csv|json|table   output form (default cgats)\n"
    "  --output FILE, -o FILE          write to FILE instead of standard output\n"
    "  --decimals N                    decimals of the numbers (default 4)\n"
    "  --scale auto|1|100              reflectance written as 0..1 or 0..100\n"
    "                                  (auto: percent when a value exceeds 2)\n"
    "  --condition KEY=VALUE           any measure condition, e.g.\n"
    "                                  Colorimetric.Illumination=D50 (repeatable)\n"
    "  --illuminant, --observer, --white-base, --space, --density-standard,\n"
    "  --filter-mode, --formula        short forms of the common keys\n"
    "\n"
    "exit status: 0 success, 1 the library refused the calculation (its text is\n"
    "printed), 2 a wrong command line or an unreadable input file. A failed run\n"
    "writes no output.\n";

const std::map<std::string, std::string> kCommandHelp = {
    {"color",
     "usage: qvi color FILE [OPTIONS]\n"
     "\n"
     "Colour values of every sample: SAMPLE_ID, SAMPLE_NAME and the three values\n"
     "of the colour space.\n"
     "\n"
     "  --space S          CIELab (default), CIELCh, CIELuv, CIELChuv, CIEXYZ, CIExyY,\n"
     "                     CIEuvY1960, CIEuvY1976, HunterLab, RxRyRz, LABvq, LCHvq, RGB\n"
     "  --illuminant I     A, B, C, D50, D55, D65 (default), D75, F2, F7, F11, F1..F12,\n"
     "                     \"Dxx, Temperature:6500\", Emission\n"
     "  --observer O       TwoDegree (default), TenDegree (also 2, 10)\n"
     "  --white-base W     Absolute (default), Paper (default with --paper-white),\n"
     "                     Automatic\n"
     "  --paper-white ID   the sample that is the paper white\n"
     "  --condition K=V    any other measure condition\n"},
    {"delta-e",
     "usage: qvi delta-e REFERENCE SAMPLES [OPTIONS]\n"
     "\n"
     "Colour differences of each sample in SAMPLES against the reference with the\n"
     "same SAMPLE_ID in REFERENCE, or against the one sample of REFERENCE when it\n"
     "holds only one (or the one named by --reference ID). A summary follows: mean,\n"
     "maximum, 95th percentile (nearest rank) and the samples above --tolerance.\n"
     "\n"
     "  --formula F        CIELab (default), CIELuv, LABvq, FMCII, CMC, 94\n"
     "  --cmc L:C          CMC lightness and chroma weights (default 1:1; 2:1 for\n"
     "                     acceptability)\n"
     "  --k94 KL,KC,KH     CIE94 weights (default 1,1,1)\n"
     "  --tolerance T      mark samples whose difference exceeds T (default 2)\n"
     "  --reference ID     compare every sample with this reference sample\n"
     "  --illuminant, --observer, --condition   as for color\n"},
    {"density",
     "usage: qvi density FILE [OPTIONS]\n"
     "\n"
     "Densities of every sample through the black, cyan, magenta and yellow\n"
     "filters of a density standard, and the filter the library selects.\n"
     "\n"
     "  --density-standard S  DIN (default), DINNB, ANSIA, ANSIT, SPI, User\n"
     "  --white-base W        Absolute, Paper, Automatic (default; needs a paper white)\n"
     "  --paper-white ID      the sample that is the paper white\n"
     "  --filter-mode M       Auto (default: the filter the solid selects), Black,\n"
     "                        Cyan, Magenta, Yellow, Max: the filter of the dot\n"
     "                        area and dot gain\n"
     "  --solid ID            add the dot area (Murray-Davies, percent) of every\n"
     "                        sample against this solid\n"
     "  --tint ID=PERCENT     add the dot gain of this tint with its nominal\n"
     "                        percentage (repeatable; needs --solid)\n"},
    {"cct",
     "usage: qvi cct FILE [OPTIONS]\n"
     "\n"
     "Correlated colour temperature in kelvin of every sample, read as an\n"
     "emission spectrum (relative spectral power).\n"
     "\n"
     "  --observer O       TwoDegree (default), TenDegree\n"},
    {"spectrum",
     "usage: qvi spectrum L a b [OPTIONS]\n"
     "\n"
     "A reflectance spectrum (380..730 nm, 10 nm) whose CIELab value lies within\n"
     "0.1 delta E of L a b, or the library's failure text (status 1).\n"
     "\n"
     "  --illuminant, --observer   the conditions of the Lab value (D65, TwoDegree)\n"},
    {"conditions",
     "usage: qvi conditions [OPTIONS]\n"
     "\n"
     "Every measure-condition key with its default and its supported values.\n"},
};

struct Options {
    std::string command;
    std::vector<std::string> arguments;
    Format format = Format::Cgats;
    std::string output;
    int decimals = 4;
    Qvi::Scale scale;
    std::vector<std::pair<std::string, std::string>> conditions;
    bool whiteBaseGiven = false;
    std::string paperWhite;
    std::string solid;
    std::vector<std::pair<std::string, float>> tints;
    std::string reference;
    float p1 = 0.0f;
    float p2 = 0.0f;
    float p3 = 0.0f;
    double tolerance = 2.0;
    bool help = false;
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

Options ParseArguments(int argc, char** argv)
{
    Options options;
    std::vector<std::string> words(argv + 1, argv + argc);
    std::size_t i = 0;
    auto value = [&](const std::string& option, const std::string& inline_value, bool hasInline) {
        if (hasInline) {
            return inline_value;
        }
        if (i + 1 >= words.size()) {
            throw UsageError(option + " needs a value");
        }
        return words[++i];
    };
    for (; i < words.size(); ++i) {
        std::string word = words[i];
        if (word == "--help" || word == "-h") {
            options.help = true;
            continue;
        }
        const bool isOption = word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9') && word[1] != '.';
        if (!isOption) {
            if (options.command.empty()) {
                options.command = word;
            } else {
                options.arguments.push_back(word);
            }
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
        if (word == "--format") {
            const std::string f = value(word, inlineValue, hasInline);
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
        } else if (word == "--output" || word == "-o") {
            options.output = value(word, inlineValue, hasInline);
        } else if (word == "--decimals") {
            const std::string d = value(word, inlineValue, hasInline);
            char* end = nullptr;
            const long n = std::strtol(d.c_str(), &end, 10);
            if (d.empty() || *end != '\0' || n < 0 || n > 12) {
                throw UsageError("--decimals: \"" + d + "\" is not a whole number from 0 to 12");
            }
            options.decimals = static_cast<int>(n);
        } else if (word == "--scale") {
            const std::string s = value(word, inlineValue, hasInline);
            if (s == "auto") {
                options.scale.automatic = true;
            } else if (s == "1" || s == "100") {
                options.scale.automatic = false;
                options.scale.divisor = s == "1" ? 1.0 : 100.0;
            } else {
                throw UsageError("--scale: \"" + s + "\" is not one of auto, 1, 100");
            }
        } else if (word == "--condition") {
            const std::string pair = value(word, inlineValue, hasInline);
            const std::size_t at = pair.find('=');
            if (at == std::string::npos || at == 0) {
                throw UsageError("--condition: \"" + pair + "\" is not KEY=VALUE");
            }
            options.conditions.emplace_back(pair.substr(0, at), pair.substr(at + 1));
            if (pair.substr(0, at) == "Colorimetric.WhiteBase") {
                options.whiteBaseGiven = true;
            }
        } else if (word == "--illuminant") {
            options.conditions.emplace_back("Colorimetric.Illumination", value(word, inlineValue, hasInline));
        } else if (word == "--observer") {
            options.conditions.emplace_back("Colorimetric.Observer", ObserverValue(value(word, inlineValue, hasInline)));
        } else if (word == "--white-base") {
            options.conditions.emplace_back("Colorimetric.WhiteBase", value(word, inlineValue, hasInline));
            options.whiteBaseGiven = true;
        } else if (word == "--space") {
            options.conditions.emplace_back("ColorSpaceDescription.Type", value(word, inlineValue, hasInline));
        } else if (word == "--density-standard") {
            options.conditions.emplace_back("Colorimetric.DensityStandard", value(word, inlineValue, hasInline));
        } else if (word == "--filter-mode") {
            options.conditions.emplace_back("Colorimetric.DensityFilterMode", value(word, inlineValue, hasInline));
        } else if (word == "--formula") {
            options.conditions.emplace_back("ColorSpaceDescription.DeltaEFormula", value(word, inlineValue, hasInline));
        } else if (word == "--paper-white") {
            options.paperWhite = value(word, inlineValue, hasInline);
        } else if (word == "--solid") {
            options.solid = value(word, inlineValue, hasInline);
        } else if (word == "--tint") {
            const std::string pair = value(word, inlineValue, hasInline);
            const std::size_t at = pair.rfind('=');
            if (at == std::string::npos || at == 0) {
                throw UsageError("--tint: \"" + pair + "\" is not ID=PERCENT");
            }
            options.tints.emplace_back(pair.substr(0, at), ParseFloatOption("--tint", pair.substr(at + 1)));
        } else if (word == "--reference") {
            options.reference = value(word, inlineValue, hasInline);
        } else if (word == "--cmc") {
            const std::string lc = value(word, inlineValue, hasInline);
            const auto parts = Split(lc, ':');
            if (parts.size() != 2) {
                throw UsageError("--cmc: \"" + lc + "\" is not L:C");
            }
            options.p1 = ParseFloatOption("--cmc", parts[0]);
            options.p2 = ParseFloatOption("--cmc", parts[1]);
        } else if (word == "--k94") {
            const std::string k = value(word, inlineValue, hasInline);
            const auto parts = Split(k, ',');
            if (parts.size() != 3) {
                throw UsageError("--k94: \"" + k + "\" is not KL,KC,KH");
            }
            options.p1 = ParseFloatOption("--k94", parts[0]);
            options.p2 = ParseFloatOption("--k94", parts[1]);
            options.p3 = ParseFloatOption("--k94", parts[2]);
        } else if (word == "--tolerance") {
            options.tolerance = ParseFloatOption("--tolerance", value(word, inlineValue, hasInline));
        } else {
            throw UsageError("unknown option " + word);
        }
    }
    return options;
}

std::string Text(const String& text)
{
    return std::string(text.GetCharPointer());
}

CMetry::QVMeasureConditions MakeConditions(const Options& options,
                                           std::vector<std::pair<std::string, std::string>> defaults)
{
    CMetry::QVMeasureConditions conditions;
    for (const auto& entry : options.conditions) {
        defaults.push_back(entry);
    }
    for (const auto& [key, value] : defaults) {
        conditions.SetMeasureCondition(String(key.c_str()), String(value.c_str()));
    }
    return conditions;
}

std::string Condition(const CMetry::QVMeasureConditions& conditions, const char* key)
{
    return Text(conditions.GetMeasureCondition(String(key)));
}

// The CGATS field names of a colour space's three values.
std::vector<std::string> SpaceFields(const CMetry::QVMeasureConditions& conditions)
{
    const std::string space = Condition(conditions, "ColorSpaceDescription.Type");
    static const std::map<std::string, std::vector<std::string>> known = {
        {"CIELab", {"LAB_L", "LAB_A", "LAB_B"}},    {"CIELCh", {"LAB_L", "LAB_C", "LAB_H"}},
        {"CIEXYZ", {"XYZ_X", "XYZ_Y", "XYZ_Z"}},    {"CIExyY", {"XYY_X", "XYY_Y", "XYY_CAPY"}},
        {"RGB", {"RGB_R", "RGB_G", "RGB_B"}},
    };
    const auto found = known.find(space);
    if (found != known.end()) {
        return found->second;
    }
    std::string prefix;
    for (char c : space) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            prefix += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    }
    std::vector<std::string> fields;
    for (short i = 0; i < 3; ++i) {
        std::string element;
        for (char c : Text(conditions.GetElementName(i))) {
            if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
                element += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
            }
        }
        fields.push_back(prefix + "_" + element);
    }
    return fields;
}

CMetry::QVSpectrum SpectrumOf(const Sample& sample, const CMetry::QVMeasureConditions& conditions)
{
    float values[Qvi::kGridPoints];
    std::copy(sample.values.begin(), sample.values.end(), values);
    return CMetry::QVSpectrum(values, conditions);
}

bool ProgressWanted(const std::string& path)
{
    if (isatty(STDERR_FILENO) == 0) {
        return false;
    }
    struct stat info {};
    return path == "-" || (stat(path.c_str(), &info) == 0 && info.st_size > 8 * 1024 * 1024);
}

std::vector<std::pair<std::string, std::string>> ConditionKeywords(const CMetry::QVMeasureConditions& conditions,
                                                                   const std::vector<const char*>& keys)
{
    std::vector<std::pair<std::string, std::string>> keywords;
    static const std::map<std::string, std::string> names = {
        {"ColorSpaceDescription.Type", "COLOR_SPACE"},
        {"ColorSpaceDescription.DeltaEFormula", "DELTA_E_FORMULA"},
        {"Colorimetric.Illumination", "ILLUMINATION"},
        {"Colorimetric.Observer", "OBSERVER"},
        {"Colorimetric.WhiteBase", "WHITE_BASE"},
        {"Colorimetric.DensityStandard", "DENSITY_STANDARD"},
        {"Colorimetric.DensityFilterMode", "DENSITY_FILTER_MODE"},
    };
    for (const char* key : keys) {
        keywords.emplace_back(names.at(key), Condition(conditions, key));
    }
    return keywords;
}

std::vector<Column> IdentityColumns(bool names)
{
    std::vector<Column> columns = {{"SAMPLE_ID", true}};
    if (names) {
        columns.push_back({"SAMPLE_NAME", true});
    }
    return columns;
}

void Identity(std::vector<std::string>& row, const Sample& sample, bool names)
{
    row.clear();
    row.push_back(sample.id);
    if (names) {
        row.push_back(sample.name);
    }
}

std::string Scrub(std::string text)
{
    for (char& c : text) {
        if (c == '\t' || c == '\n' || c == '\r') {
            c = ' ';
        }
    }
    return text;
}

// ------------------------------------------------------------------ commands

void NeedArguments(const Options& options, std::size_t count)
{
    if (options.arguments.size() != count) {
        throw UsageError("qvi " + options.command + " takes " + std::to_string(count) + " argument" +
                         (count == 1 ? "" : "s") + "; see qvi " + options.command + " --help");
    }
}

std::unique_ptr<ResultSet> Color(const Options& options)
{
    NeedArguments(options, 1);
    SpectralFile file(options.arguments[0]);
    const bool progress = ProgressWanted(options.arguments[0]);
    CMetry::QVMeasureConditions conditions;
    std::unique_ptr<ResultSet> result;
    const auto prepare = [&] {
        // Absolute unless a paper white is named; --white-base overrides both.
        std::vector<std::pair<std::string, std::string>> defaults = {
            {"Colorimetric.WhiteBase", options.paperWhite.empty() ? "Absolute" : "Paper"}};
        if (file.Emission()) {
            defaults.emplace_back("Colorimetric.Illumination", "Emission");
        }
        conditions = MakeConditions(options, defaults);
        if (!options.paperWhite.empty()) {
            CMetry::DensityService::SetPaperWhite(SpectrumOf(*file.Find(options.paperWhite), conditions));
        }
        std::vector<Column> columns = IdentityColumns(file.HasNames());
        for (const std::string& field : SpaceFields(conditions)) {
            columns.push_back({field, false});
        }
        result = std::make_unique<ResultSet>(columns);
        result->keywords = {{"ORIGINATOR", "qvi"}, {"DESCRIPTOR", "colour values of " + Scrub(file.Name())}};
        for (const auto& entry :
             ConditionKeywords(conditions, {"ColorSpaceDescription.Type", "Colorimetric.Illumination",
                                            "Colorimetric.Observer", "Colorimetric.WhiteBase"})) {
            result->keywords.push_back(entry);
        }
    };
    std::vector<std::string> row;
    const auto compute = [&](const Sample& sample) {
        const CMetry::QVColorVector vector = CMetry::CMetryService::GetVector(SpectrumOf(sample, conditions), conditions);
        Identity(row, sample, file.HasNames());
        for (unsigned short axis = 0; axis < 3; ++axis) {
            row.push_back(FormatNumber(vector[axis], options.decimals));
        }
        result->Add(row);
    };
    if (options.paperWhite.empty()) {
        file.Stream(options.scale, prepare, compute, [&] { result->Clear(); }, progress);
    } else {
        // The paper white may come after the samples it serves.
        file.Survey({options.paperWhite}, options.scale, progress);
        prepare();
        file.ForEach(compute, progress);
    }
    return result;
}

// The exact nearest-rank percentile of the values in a temporary file of
// floats (all >= 0), with two passes of 16-bit histograms, so that memory
// does not grow with the number of values.
float Percentile(const std::string& path, std::size_t count, double fraction)
{
    const std::size_t rank = std::max<std::size_t>(1, static_cast<std::size_t>(std::ceil(fraction * count)));
    std::vector<std::size_t> histogram(65536);
    std::uint32_t prefix = 0;
    std::size_t below = 0;
    for (int pass = 0; pass < 2; ++pass) {
        std::fill(histogram.begin(), histogram.end(), 0);
        std::FILE* file = std::fopen(path.c_str(), "rb");
        if (file == nullptr) {
            throw std::runtime_error("cannot read a temporary file");
        }
        float value;
        while (std::fread(&value, sizeof value, 1, file) == 1) {
            std::uint32_t bits;
            std::memcpy(&bits, &value, sizeof bits);
            if (pass == 0) {
                ++histogram[bits >> 16];
            } else if ((bits >> 16) == prefix) {
                ++histogram[bits & 0xFFFFu];
            }
        }
        std::fclose(file);
        std::size_t bucket = 0;
        while (below + histogram[bucket] < rank) {
            below += histogram[bucket];
            ++bucket;
        }
        prefix = pass == 0 ? static_cast<std::uint32_t>(bucket) : (prefix << 16) | static_cast<std::uint32_t>(bucket);
    }
    float result;
    std::memcpy(&result, &prefix, sizeof result);
    return result;
}

std::unique_ptr<ResultSet> DeltaE(const Options& options)
{
    NeedArguments(options, 2);
    SpectralFile references(options.arguments[0]);
    SpectralFile samples(options.arguments[1]);
    const bool progress = ProgressWanted(options.arguments[1]);
    references.KeepAll();
    references.Survey({}, options.scale, false);
    const Sample* single = nullptr;
    CMetry::QVMeasureConditions conditions;
    std::unique_ptr<ResultSet> result;
    Qvi::TempFile differences;
    std::FILE* spool = nullptr;
    const auto prepare = [&] {
        if (!options.reference.empty()) {
            single = references.Find(options.reference);
            if (single == nullptr) {
                throw Cgats::Error(references.Name(), 0, "no sample with SAMPLE_ID " + options.reference);
            }
        } else if (references.Count() == 1) {
            single = &references.Kept().begin()->second;
        }
        conditions = MakeConditions(options, {{"Colorimetric.WhiteBase", "Absolute"}});
        std::vector<Column> columns = IdentityColumns(samples.HasNames());
        columns.push_back({"REFERENCE_ID", true});
        columns.push_back({"DELTA_E", false});
        columns.push_back({"EXCEEDS", false});
        result = std::make_unique<ResultSet>(columns);
        result->keywords = {{"ORIGINATOR", "qvi"},
                            {"DESCRIPTOR", "colour differences of " + Scrub(samples.Name()) + " against " +
                                               Scrub(references.Name())}};
        for (const auto& entry : ConditionKeywords(conditions, {"ColorSpaceDescription.DeltaEFormula",
                                                                "Colorimetric.Illumination", "Colorimetric.Observer"})) {
            result->keywords.push_back(entry);
        }
        spool = std::fopen(differences.Path().c_str(), "w+b");
        if (spool == nullptr) {
            throw std::runtime_error("cannot open a temporary file");
        }
    };
    double sum = 0.0;
    float maximum = 0.0f;
    std::size_t count = 0;
    std::size_t exceeding = 0;
    const auto restart = [&] {
        result->Clear();
        Qvi::EmptyFile(spool);
        sum = 0.0;
        maximum = 0.0f;
        count = 0;
        exceeding = 0;
    };
    std::vector<std::string> row;
    try {
        samples.Stream(
            options.scale, prepare,
            [&](const Sample& sample) {
                const Sample* reference = single != nullptr ? single : references.Find(sample.id);
                if (reference == nullptr) {
                    throw Cgats::Error(samples.Name(), sample.line,
                                       "no reference with SAMPLE_ID " + sample.id + " in " + references.Name());
                }
                const float difference = CMetry::CMetryService::GetDeltaE(
                    SpectrumOf(*reference, conditions), SpectrumOf(sample, conditions), conditions, options.p1,
                    options.p2, options.p3);
                const bool exceeds = difference > options.tolerance;
                Identity(row, sample, samples.HasNames());
                row.push_back(reference->id);
                row.push_back(FormatNumber(difference, options.decimals));
                row.push_back(exceeds ? "1" : "0");
                result->Add(row);
                std::fwrite(&difference, sizeof difference, 1, spool);
                sum += difference;
                maximum = std::max(maximum, difference);
                ++count;
                exceeding += exceeds ? 1 : 0;
            },
            restart, progress);
    } catch (...) {
        if (spool != nullptr) {
            std::fclose(spool);
        }
        throw;
    }
    std::fclose(spool);
    const std::string mean = FormatNumber(sum / static_cast<double>(count), options.decimals);
    const std::string p95 = FormatNumber(Percentile(differences.Path(), count, 0.95), options.decimals);
    const std::string tolerance = FormatNumber(options.tolerance, options.decimals);
    // The first ids above the tolerance; the EXCEEDS column marks them all,
    // and a bounded list keeps the memory independent of the file.
    constexpr std::size_t kListed = 20;
    std::string list;
    std::size_t listed = 0;
    result->ForEachRow([&](const std::vector<std::string>& values) {
        if (values.back() == "1" && listed < kListed) {
            list += (list.empty() ? "" : " ") + values[0];
            ++listed;
        }
    });
    if (exceeding > listed) {
        list += " ... (" + std::to_string(exceeding - listed) + " more)";
    }
    result->keywords.emplace_back("DELTA_E_MEAN", mean);
    result->keywords.emplace_back("DELTA_E_MAX", FormatNumber(maximum, options.decimals));
    result->keywords.emplace_back("DELTA_E_P95", p95);
    result->keywords.emplace_back("DELTA_E_TOLERANCE", tolerance);
    result->keywords.emplace_back("DELTA_E_EXCEEDING", std::to_string(exceeding));
    result->summary = {{"samples", std::to_string(count)},
                       {"mean", mean},
                       {"maximum", FormatNumber(maximum, options.decimals)},
                       {"p95", p95},
                       {"tolerance", tolerance},
                       {"exceeding", std::to_string(exceeding)},
                       {"exceeding_ids", list, true}};
    return result;
}

std::unique_ptr<ResultSet> Density(const Options& options)
{
    NeedArguments(options, 1);
    if (!options.tints.empty() && options.solid.empty()) {
        throw UsageError("--tint needs --solid");
    }
    SpectralFile file(options.arguments[0]);
    const bool progress = ProgressWanted(options.arguments[0]);
    std::set<std::string> wanted;
    for (const std::string& id : {options.paperWhite, options.solid}) {
        if (!id.empty()) {
            wanted.insert(id);
        }
    }
    std::map<std::string, float> nominal;
    for (const auto& [id, percent] : options.tints) {
        nominal[id] = percent;
        // Survey checks that every named tint is there.
        wanted.insert(id);
    }
    file.Survey(wanted, options.scale, progress);
    const CMetry::QVMeasureConditions conditions = MakeConditions(options, {});
    if (!options.paperWhite.empty()) {
        CMetry::DensityService::SetPaperWhite(SpectrumOf(*file.Find(options.paperWhite), conditions));
    }
    std::vector<Column> columns = IdentityColumns(file.HasNames());
    for (const char* field : {"D_BLACK", "D_CYAN", "D_MAGENTA", "D_YELLOW", "D_AUTO"}) {
        columns.push_back({field, false});
    }
    columns.push_back({"FILTER", true});
    if (!options.solid.empty()) {
        columns.push_back({"DOT_AREA", false});
    }
    if (!options.tints.empty()) {
        columns.push_back({"NOMINAL", false});
        columns.push_back({"DOT_GAIN", false});
    }
    auto result = std::make_unique<ResultSet>(columns);
    result->keywords = {{"ORIGINATOR", "qvi"}, {"DESCRIPTOR", "densities of " + Scrub(file.Name())}};
    for (const auto& entry : ConditionKeywords(conditions, {"Colorimetric.DensityStandard", "Colorimetric.WhiteBase",
                                                            "Colorimetric.DensityFilterMode"})) {
        result->keywords.push_back(entry);
    }
    if (!options.paperWhite.empty()) {
        result->keywords.emplace_back("PAPER_WHITE", options.paperWhite);
    }
    if (!options.solid.empty()) {
        result->keywords.emplace_back("SOLID", options.solid);
    }
    CMetry::QVMeasureConditions byFilter[4];
    const char* const modes[4] = {"Black", "Cyan", "Magenta", "Yellow"};
    for (int f = 0; f < 4; ++f) {
        byFilter[f] = conditions;
        byFilter[f].SetMeasureCondition(String("Colorimetric.DensityFilterMode"), String(modes[f]));
    }
    CMetry::QVMeasureConditions automatic = conditions;
    automatic.SetMeasureCondition(String("Colorimetric.DensityFilterMode"), String("Auto"));
    const CMetry::QVDensityStdTYPE standard = CMetry::MeasureConditionGetStrings().GetDensityStandard(
        String(Condition(conditions, "Colorimetric.DensityStandard").c_str()));
    CMetry::DensityFilterModeTYPE mode = CMetry::MeasureConditionGetStrings().GetDensityFilterMode(
        String(Condition(conditions, "Colorimetric.DensityFilterMode").c_str()));
    const Sample* solid = options.solid.empty() ? nullptr : file.Find(options.solid);
    // Dot area and dot gain compare solid and tint through one filter: with
    // automatic selection, the one the solid selects (left to itself, each
    // reading would select its own, and a light tint reads through black).
    CMetry::QVMeasureConditions gainConditions = conditions;
    if (solid != nullptr && mode == CMetry::DensityFilterModeAuto) {
        CMetry::QVDensity solidDensity;
        if (CMetry::DensityCalculator::GetDensityVector(SpectrumOf(*solid, conditions), standard,
                                                        CMetry::WhiteBasePaper, solidDensity)) {
            mode = static_cast<CMetry::DensityFilterModeTYPE>(CMetry::DensityCalculator::GetDensityFilter(solidDensity));
            gainConditions.SetMeasureCondition(String("Colorimetric.DensityFilterMode"),
                                               CMetry::MeasureConditionGetStrings().ToString(mode));
            result->keywords.emplace_back("DOT_AREA_FILTER", Text(CMetry::MeasureConditionGetStrings().ToString(mode)));
        }
    }
    std::vector<std::string> row;
    const bool names = file.HasNames();
    file.ForEach(
        [&](const Sample& sample) {
            const CMetry::QVSpectrum spectrum = SpectrumOf(sample, conditions);
            Identity(row, sample, names);
            for (int f = 0; f < 4; ++f) {
                row.push_back(FormatNumber(CMetry::DensityService::GetDensity(spectrum, byFilter[f]), options.decimals));
            }
            row.push_back(FormatNumber(CMetry::DensityService::GetDensity(spectrum, automatic), options.decimals));
            row.push_back(Text(CMetry::DensityService::GetDensityFilterName(spectrum, automatic)));
            if (solid != nullptr) {
                float area = 0.0f;
                if (!CMetry::DensityCalculator::GetDotArea(SpectrumOf(*solid, conditions), spectrum, standard, mode,
                                                           area)) {
                    throw LibraryError("the dot area of sample " + sample.id + " cannot be calculated");
                }
                row.push_back(FormatNumber(static_cast<double>(area) * 100.0, options.decimals));
            }
            if (!options.tints.empty()) {
                const auto found = nominal.find(sample.id);
                if (found == nominal.end()) {
                    row.emplace_back();
                    row.emplace_back();
                } else {
                    row.push_back(FormatNumber(found->second, options.decimals));
                    row.push_back(FormatNumber(CMetry::DensityService::GetDotGain(spectrum, SpectrumOf(*solid, conditions),
                                                                                  gainConditions, found->second),
                                               options.decimals));
                }
            }
            result->Add(row);
        },
        progress);
    return result;
}

std::unique_ptr<ResultSet> Cct(const Options& options)
{
    NeedArguments(options, 1);
    SpectralFile file(options.arguments[0]);
    const bool progress = ProgressWanted(options.arguments[0]);
    CMetry::QVMeasureConditions conditions;
    std::unique_ptr<ResultSet> result;
    const auto prepare = [&] {
        conditions = MakeConditions(options, {{"Colorimetric.Illumination", "Emission"}});
        std::vector<Column> columns = IdentityColumns(file.HasNames());
        columns.push_back({"CCT", false});
        result = std::make_unique<ResultSet>(columns);
        result->keywords = {{"ORIGINATOR", "qvi"},
                            {"DESCRIPTOR", "correlated colour temperature of " + Scrub(file.Name())}};
        for (const auto& entry : ConditionKeywords(conditions, {"Colorimetric.Observer"})) {
            result->keywords.push_back(entry);
        }
    };
    std::vector<std::string> row;
    file.Stream(
        options.scale, prepare,
        [&](const Sample& sample) {
            const float kelvin = CMetry::CMetryService::GetColorTemperature(SpectrumOf(sample, conditions));
            Identity(row, sample, file.HasNames());
            row.push_back(FormatNumber(kelvin, std::min(options.decimals, 1)));
            result->Add(row);
        },
        [&] { result->Clear(); }, progress);
    return result;
}

std::unique_ptr<ResultSet> SpectrumCommand(const Options& options)
{
    NeedArguments(options, 3);
    float lab[3];
    for (int i = 0; i < 3; ++i) {
        lab[i] = ParseFloatOption("qvi spectrum", options.arguments[static_cast<std::size_t>(i)]);
    }
    const CMetry::QVMeasureConditions conditions =
        MakeConditions(options, {{"ColorSpaceDescription.Type", "CIELab"}, {"Colorimetric.WhiteBase", "Absolute"}});
    const CMetry::QVColorVector vector(lab[0], lab[1], lab[2], conditions);
    const CMetry::QVSpectrum spectrum = CMetry::CMetryService::GetSpectrum(vector);
    const CMetry::QVColorVector back = CMetry::CMetryService::GetVector(spectrum, conditions);
    std::vector<Column> columns = {{"LAB_L", false}, {"LAB_A", false}, {"LAB_B", false}};
    for (int point = 0; point < Qvi::kGridPoints; ++point) {
        columns.push_back({"SPECTRAL_NM" + std::to_string(380 + 10 * point), false});
    }
    auto result = std::make_unique<ResultSet>(columns);
    std::vector<std::string> row;
    for (unsigned short axis = 0; axis < 3; ++axis) {
        row.push_back(FormatNumber(back[axis], options.decimals));
    }
    for (int point = 0; point < Qvi::kGridPoints; ++point) {
        row.push_back(FormatNumber(spectrum[point], options.decimals + 2));
    }
    result->Add(row);
    const float reached = CMetry::CMetryService::GetDeltaE(
        vector, back, 0.0f, 0.0f, 0.0f);
    result->keywords = {{"ORIGINATOR", "qvi"},
                        {"DESCRIPTOR", "reflectance spectrum of CIELab " + FormatNumber(lab[0], options.decimals) +
                                           " " + FormatNumber(lab[1], options.decimals) + " " +
                                           FormatNumber(lab[2], options.decimals)},
                        {"RESULT", "success"},
                        {"DELTA_E", FormatNumber(reached, options.decimals)}};
    for (const auto& entry : ConditionKeywords(conditions, {"Colorimetric.Illumination", "Colorimetric.Observer"})) {
        result->keywords.push_back(entry);
    }
    result->summary = {{"result", "success", true}, {"delta_e", FormatNumber(reached, options.decimals)}};
    return result;
}

std::unique_ptr<ResultSet> Conditions(const Options& options)
{
    NeedArguments(options, 0);
    const CMetry::QVMeasureConditions defaults;
    auto result = std::make_unique<ResultSet>(
        std::vector<Column>{{"KEY", true}, {"DEFAULT", true}, {"SUPPORTED_VALUES", true}});
    result->keywords = {{"ORIGINATOR", "qvi"}, {"DESCRIPTOR", "measure conditions"}};
    for (const char* key : kConditionKeys) {
        const auto& values = CMetry::QVMeasureConditions::GetSupportedValues(String(key));
        std::string list;
        for (unsigned long i = 0; i < values.GetSize(); ++i) {
            list += (i > 0 ? "; " : "") + Text(values[i]);
        }
        result->Add({key, Condition(defaults, key), list});
    }
    return result;
}

void Emit(ResultSet& result, const Options& options)
{
    if (options.output.empty()) {
        std::cout.sync_with_stdio(false);
        result.Write(options.format, std::cout);
        std::cout.flush();
        if (!std::cout) {
            throw std::runtime_error("cannot write to standard output");
        }
        return;
    }
    const std::string partial = options.output + ".partial";
    {
        std::ofstream out(partial, std::ios::binary);
        if (!out) {
            throw Cgats::Error(options.output, 0, "cannot write the file");
        }
        result.Write(options.format, out);
        out.flush();
        if (!out) {
            std::remove(partial.c_str());
            throw Cgats::Error(options.output, 0, "cannot write the file");
        }
    }
    if (std::rename(partial.c_str(), options.output.c_str()) != 0) {
        std::remove(partial.c_str());
        throw Cgats::Error(options.output, 0, "cannot write the file");
    }
}

int Run(int argc, char** argv)
{
    Options options;
    try {
        options = ParseArguments(argc, argv);
    } catch (const UsageError& error) {
        std::cerr << "qvi: " << error.what() << "\n" << "Try `qvi --help`.\n";
        return 2;
    }
    if (options.command.empty()) {
        // Asked for, the help goes to standard output; as the answer to a
        // wrong command line, to standard error.
        (options.help ? std::cout : std::cerr) << kGeneralHelp;
        return options.help ? 0 : 2;
    }
    const auto help = kCommandHelp.find(options.command);
    if (help == kCommandHelp.end()) {
        std::cerr << "qvi: unknown command \"" << options.command << "\"\nTry `qvi --help`.\n";
        return 2;
    }
    if (options.help) {
        std::cout << help->second;
        return 0;
    }
    try {
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
        } else {
            result = Conditions(options);
        }
        Emit(*result, options);
        return 0;
    } catch (const UsageError& error) {
        std::cerr << "qvi: " << error.what() << "\n";
        return 2;
    } catch (const Cgats::Error& error) {
        std::cerr << "qvi: " << error.what() << "\n";
        return 2;
    } catch (const Utilities::Exception& error) {
        std::cerr << "qvi: " << Text(error.GetExceptionText()) << "\n";
        return 1;
    } catch (const LibraryError& error) {
        std::cerr << "qvi: " << error.what() << "\n";
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
