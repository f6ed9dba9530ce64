#include "tools/qvi/commands.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "qvimanager/cmetry/ciede2000.h"
#include "qvimanager/qvimanager.h"
#include "cgats/cgats.h"
#include "tools/qvi/input.h"

namespace Qvi {

namespace {

using Utilities::String;
using Defaults = std::vector<std::pair<std::string, std::string>>;

const char* const kIllumination = "Colorimetric.Illumination";
const char* const kObserver = "Colorimetric.Observer";
const char* const kWhiteBase = "Colorimetric.WhiteBase";
const char* const kDensityStandard = "Colorimetric.DensityStandard";
const char* const kFilterMode = "Colorimetric.DensityFilterMode";
const char* const kSpace = "ColorSpaceDescription.Type";
const char* const kFormula = "ColorSpaceDescription.DeltaEFormula";

const char* const kConditionKeys[] = {
    kIllumination, kObserver, kWhiteBase, kDensityStandard, kFilterMode, kSpace, kFormula,
    "ColorSpaceDescription.AbsoluteOrDeltaVector", "Physical.Filter", "Physical.NumberOfDataPointsSpectrum",
    "Physical.WavelengthSpectrumMax", "Physical.WavelengthSpectrumMin"};

// The colour spaces that a Lab value converts to.
const char* const kSpacesFromLab[] = {"CIELab", "CIELCh", "CIEXYZ", "CIExyY", "CIEuvY1960", "CIEuvY1976", "RGB"};

// The daylight formula's domain.
constexpr double kDaylightLowest = 4000.0;
constexpr double kDaylightHighest = 25000.0;

std::string Text(const String& text)
{
    return std::string(text.GetCharPointer());
}

std::string LibraryText(const Utilities::Exception& failure)
{
    return Text(failure.GetExceptionText());
}

std::string Condition(const CMetry::QVMeasureConditions& conditions, const char* key)
{
    return Text(conditions.GetMeasureCondition(String(key)));
}

// A key as a person says it.
std::string Spoken(const std::string& key)
{
    static const std::map<std::string, std::string> names = {
        {kIllumination, "illuminant"},     {kObserver, "observer"},      {kWhiteBase, "white base"},
        {kDensityStandard, "density standard"}, {kFilterMode, "filter mode"}, {kSpace, "colour space"},
        {kFormula, "formula"}};
    const auto found = names.find(key);
    return found == names.end() ? key : found->second;
}

// The values of a key that the library lists, minus those qvi cannot give
// it (values that need a table or a parameter qvi has no option for).
std::vector<std::string> AcceptedValues(const std::string& key)
{
    std::vector<std::string> values;
    const auto& supported = CMetry::QVMeasureConditions::GetSupportedValues(String(key.c_str()));
    for (unsigned long i = 0; i < supported.GetSize(); ++i) {
        const std::string value = Text(supported[i]);
        if ((key == kIllumination && (value == "Dxx" || value == "F" || value == "Userdefined")) ||
            (key == kSpace && value == "CMYK")) {
            continue;
        }
        values.push_back(value);
    }
    return values;
}

std::string Join(const std::vector<std::string>& values, const std::string& separator)
{
    std::string text;
    for (const std::string& value : values) {
        text += (text.empty() ? "" : separator) + value;
    }
    return text;
}

// What to give instead of `value` for `key`.
std::string Hint(const std::string& key, const std::string& value, bool labValues)
{
    if (key == kIllumination) {
        return std::string(value == "Userdefined" ? "qvi has no user-defined illuminant table; " : "") + "give " +
               kIlluminationValues;
    }
    if (key == kObserver) {
        return "give TwoDegree or TenDegree (2, 10)";
    }
    if (key == kWhiteBase && (value == "Paper" || value == "Automatic")) {
        return "the white base " + value + " needs a paper white: give --paper-white ID, or --white-base Absolute";
    }
    if (key == kSpace && labValues) {
        return "from Lab values give " + Join({std::begin(kSpacesFromLab), std::end(kSpacesFromLab)}, ", ") +
               ", or give spectra";
    }
    if (key == kFormula) {
        return labValues ? "with Lab values give --formula CIELab, 94 or 2000, or give spectra in both files"
                         : "give " + Join(AcceptedValues(key), ", ") + " or 2000";
    }
    const std::vector<std::string> values = AcceptedValues(key);
    if (values.empty()) {
        return "`qvi conditions` lists the keys";
    }
    return "give " + Join(values, ", ");
}

struct Setting {
    std::string key;
    std::string value;
    std::string origin;
};

// The words of the last setting of `key`, or `otherwise`.
std::string OriginOf(const std::vector<Setting>& settings, const std::string& key, std::string otherwise)
{
    for (auto setting = settings.rbegin(); setting != settings.rend(); ++setting) {
        if (setting->key == key) {
            return setting->origin;
        }
    }
    return otherwise;
}

void WarnOfDaylight(const std::vector<Setting>& settings, const CMetry::QVMeasureConditions& conditions)
{
    const std::string illumination = Condition(conditions, kIllumination);
    if (illumination.rfind("Dxx", 0) != 0) {
        return;
    }
    const std::size_t colon = illumination.find("Temperature:");
    if (colon == std::string::npos) {
        return;
    }
    const std::string number = illumination.substr(colon + 12);
    char* end = nullptr;
    const double kelvin = std::strtod(number.c_str(), &end);
    if (end != number.c_str() && kelvin >= kDaylightLowest && kelvin <= kDaylightHighest) {
        return;
    }
    Warn(OriginOf(settings, kIllumination, "the illuminant \"" + illumination + "\"") + ": " + number + " K is outside 4000..25000 K, where the daylight formula is defined; the results "
         "follow the formula beyond it");
}

// The conditions of a run: the command's defaults, then the options in
// their order. `probe` tries them on a typical calculation of the command;
// a refusal of the library is raised with the setting that caused it (the
// one whose neutral value makes the probe pass) and what to give instead.
CMetry::QVMeasureConditions BuildConditions(const std::string& command, const Options& options,
                                            const Defaults& defaults,
                                            const std::function<void(const CMetry::QVMeasureConditions&)>& probe,
                                            bool labValues = false)
{
    std::vector<Setting> settings;
    for (const auto& [key, value] : defaults) {
        settings.push_back({key, value, command + "'s default " + Spoken(key) + " " + value});
    }
    for (const ConditionOption& option : options.conditions) {
        settings.push_back({option.key, option.value, option.origin});
    }
    CMetry::QVMeasureConditions conditions;
    for (const Setting& setting : settings) {
        try {
            conditions.SetMeasureCondition(String(setting.key.c_str()), String(setting.value.c_str()));
        } catch (const Utilities::Exception& failure) {
            throw LibraryError(setting.origin + ": " + LibraryText(failure) + "; " +
                               Hint(setting.key, setting.value, labValues));
        }
    }
    WarnOfDaylight(settings, conditions);
    try {
        probe(conditions);
        return conditions;
    } catch (const Utilities::Exception& failure) {
        const std::string text = LibraryText(failure);
        // The keys in the order of blame: the options from the last, the
        // defaults, then every other key.
        std::vector<std::string> keys;
        for (auto setting = settings.rbegin(); setting != settings.rend(); ++setting) {
            keys.push_back(setting->key);
        }
        keys.insert(keys.end(), std::begin(kConditionKeys), std::end(kConditionKeys));
        const CMetry::QVMeasureConditions fresh;
        std::set<std::string> tried;
        for (const std::string& key : keys) {
            if (!tried.insert(key).second) {
                continue;
            }
            const std::string neutral = key == kWhiteBase ? std::string("Absolute") : Condition(fresh, key.c_str());
            const std::string value = Condition(conditions, key.c_str());
            if (value == neutral) {
                continue;
            }
            CMetry::QVMeasureConditions trial = conditions;
            try {
                trial.SetMeasureCondition(String(key.c_str()), String(neutral.c_str()));
                probe(trial);
            } catch (const Utilities::Exception&) {
                continue;
            }
            throw LibraryError(OriginOf(settings, key, command + "'s default " + Spoken(key) + " " + value) + ": " +
                               text + "; " + Hint(key, value, labValues));
        }
        std::string described;
        for (const Setting& setting : settings) {
            described += (described.empty() ? "" : ", ") + setting.origin;
        }
        throw LibraryError("qvi " + command + (described.empty() ? "" : " with " + described) + ": " + text);
    }
}

// A spectrum of one value at every point, for probes.
CMetry::QVSpectrum Flat(float value, const CMetry::QVMeasureConditions& conditions)
{
    float values[kGridPoints];
    std::fill(std::begin(values), std::end(values), value);
    return CMetry::QVSpectrum(values, conditions);
}

CMetry::QVSpectrum SpectrumOf(const Sample& sample, const CMetry::QVMeasureConditions& conditions)
{
    float values[kGridPoints];
    std::copy(sample.values.begin(), sample.values.end(), values);
    return CMetry::QVSpectrum(values, conditions);
}

// The conditions of Lab values: the run's, typed CIELab.
CMetry::QVMeasureConditions LabConditions(const CMetry::QVMeasureConditions& conditions)
{
    CMetry::QVMeasureConditions lab = conditions;
    lab.SetMeasureCondition(String(kSpace), String("CIELab"));
    return lab;
}

// The library's conversion of a Lab value to `space`, by way of CIEXYZ
// where the library converts only from there.
CMetry::QVColorVector FromLab(const CMetry::QVColorVector& lab, const std::string& space)
{
    if (space == "CIExyY" || space == "CIEuvY1960" || space == "CIEuvY1976") {
        return CMetry::CMetryService::GetVector(CMetry::CMetryService::GetVector(lab, String("CIEXYZ")),
                                                String(space.c_str()));
    }
    return CMetry::CMetryService::GetVector(lab, String(space.c_str()));
}

bool ProgressWanted(const std::string& path)
{
    if (isatty(STDERR_FILENO) == 0) {
        return false;
    }
    struct stat info {};
    return path == "-" || (stat(path.c_str(), &info) == 0 && info.st_size > 8 * 1024 * 1024);
}

std::vector<Keyword> ConditionKeywords(const CMetry::QVMeasureConditions& conditions,
                                       const std::vector<const char*>& keys)
{
    std::vector<Keyword> keywords;
    static const std::map<std::string, std::string> names = {
        {kSpace, "COLOR_SPACE"},           {kFormula, "DELTA_E_FORMULA"},      {kIllumination, "ILLUMINATION"},
        {kObserver, "OBSERVER"},           {kWhiteBase, "WHITE_BASE"},         {kDensityStandard, "DENSITY_STANDARD"},
        {kFilterMode, "DENSITY_FILTER_MODE"},
    };
    for (const char* key : keys) {
        keywords.push_back({names.at(key), Condition(conditions, key)});
    }
    return keywords;
}

// How an input was read: its scale and filled-in ends, under `prefix`.
void InputKeywords(ResultSet& result, const MeasurementFile& file, const std::string& prefix)
{
    if (!file.ScaleText().empty()) {
        result.keywords.push_back({prefix + "REFLECTANCE_SCALE", file.ScaleText()});
    }
    if (!file.Extension().empty()) {
        result.keywords.push_back({prefix + "SPECTRAL_EXTENSION", file.Extension()});
    }
    if (file.Holds() == MeasurementFile::Content::Lab) {
        result.keywords.push_back({prefix + "INPUT_VALUES", "CIELab"});
    }
}

// The CGATS field names of a colour space's three values.
std::vector<std::string> SpaceFields(const CMetry::QVMeasureConditions& conditions)
{
    const std::string space = Condition(conditions, kSpace);
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

void NeedArguments(const Options& options, std::size_t count)
{
    if (options.arguments.size() != count) {
        throw UsageError("qvi " + options.command + " takes " + std::to_string(count) + " argument" +
                         (count == 1 ? "" : "s") + "; see qvi " + options.command + " --help");
    }
}

void NeedSpectra(const MeasurementFile& file, const std::string& command)
{
    if (file.Holds() == MeasurementFile::Content::Lab) {
        throw Cgats::Error(file.Name(), 0, "holds Lab values (LAB_L, LAB_A, LAB_B); qvi " + command + " needs spectra");
    }
}

// Where a sample is, for messages.
std::string Where(const MeasurementFile& file, const Sample& sample)
{
    return "sample " + sample.id + " (" + file.Name() + " line " + std::to_string(sample.line) + ")";
}

// Runs a calculation of the library for a sample; a refusal names the
// sample.
template <typename Calculation>
auto ForSample(const MeasurementFile& file, const Sample& sample, Calculation calculation)
{
    try {
        return calculation();
    } catch (const Utilities::Exception& failure) {
        throw LibraryError(Where(file, sample) + ": " + LibraryText(failure));
    }
}

// A sample's value of the largest magnitude (on the scale 0..1) and the
// field it comes from.
struct LargestValue {
    double magnitude = -1.0;
    std::string field;
};

LargestValue LargestOf(const MeasurementFile& file, const Sample& sample)
{
    LargestValue largest;
    const bool lab = file.Holds() == MeasurementFile::Content::Lab;
    for (int index = 0; index < (lab ? 3 : kGridPoints); ++index) {
        const double magnitude = std::fabs(lab ? sample.lab[index] : sample.values[index]);
        if (magnitude > largest.magnitude) {
            largest = {magnitude, lab ? file.LabField(index) : file.SpectralField(index)};
        }
    }
    return largest;
}

// A result that is not finite: the sample's values are beyond the float
// arithmetic. Raised with the sample's largest value and its field.
[[noreturn]] [[gnu::cold]] void RefuseResult(const std::string& result, const MeasurementFile& file,
                                             const Sample& sample)
{
    const LargestValue largest = LargestOf(file, sample);
    throw Cgats::Error(file.Name(), sample.line,
                       "sample " + sample.id + " is out of range: its " + result + " is not finite; its largest value, " +
                           Shortest(largest.magnitude) + " of " + largest.field +
                           ", is too large for the float arithmetic");
}

inline void RequireFinite(double value, const std::string& result, const MeasurementFile& file, const Sample& sample)
{
    if (!std::isfinite(value)) {
        RefuseResult(result, file, sample);
    }
}

inline void AddNumber(std::vector<std::string>& row, double value, int decimals, const std::string& result,
                      const MeasurementFile& file, const Sample& sample)
{
    RequireFinite(value, result, file, sample);
    row.push_back(FormatNumber(value, decimals));
}

void NoteLabConditions(const MeasurementFile& file, const CMetry::QVMeasureConditions& conditions)
{
    if (file.Holds() == MeasurementFile::Content::Lab) {
        Note(file.Name() + ": Lab values taken as measured under " + Condition(conditions, kIllumination) + ", " +
             Condition(conditions, kObserver) + " (--illuminant and --observer set them)");
    }
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
            throw Cgats::Error(path, 0, "cannot read a temporary file");
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

} // namespace

std::unique_ptr<ResultSet> Color(const Options& options)
{
    NeedArguments(options, 1);
    MeasurementFile file(options.arguments[0]);
    const bool progress = ProgressWanted(options.arguments[0]);
    CMetry::QVMeasureConditions conditions;
    CMetry::QVMeasureConditions labConditions;
    std::string space;
    std::vector<std::string> fields;
    std::unique_ptr<ResultSet> result;
    bool lab = false;
    const Sample* paperWhite = nullptr;
    const auto prepare = [&] {
        lab = file.Holds() == MeasurementFile::Content::Lab;
        if (lab && !options.paperWhite.empty()) {
            throw UsageError("--paper-white needs spectra; " + file.Name() + " holds Lab values");
        }
        // Absolute unless a paper white is named; --white-base overrides both.
        Defaults defaults = {{kWhiteBase, options.paperWhite.empty() ? "Absolute" : "Paper"}};
        if (file.Emission()) {
            defaults.emplace_back(kIllumination, "Emission");
        }
        if (!options.paperWhite.empty()) {
            paperWhite = file.Find(options.paperWhite);
        }
        conditions = BuildConditions(
            "color", options, defaults,
            [&](const CMetry::QVMeasureConditions& trial) {
                if (lab) {
                    FromLab(CMetry::QVColorVector(50.0f, 10.0f, 10.0f, LabConditions(trial)),
                            Condition(trial, kSpace));
                    return;
                }
                if (paperWhite != nullptr) {
                    CMetry::DensityService::SetPaperWhite(SpectrumOf(*paperWhite, trial));
                }
                CMetry::CMetryService::GetVector(Flat(0.5f, trial), trial);
            },
            lab);
        labConditions = LabConditions(conditions);
        space = Condition(conditions, kSpace);
        NoteLabConditions(file, conditions);
        std::vector<Column> columns = IdentityColumns(file.HasNames());
        fields = SpaceFields(conditions);
        for (const std::string& field : fields) {
            columns.push_back({field, false});
        }
        result = std::make_unique<ResultSet>(columns);
        result->keywords = {{"ORIGINATOR", "qvi"}, {"DESCRIPTOR", "colour values of " + Scrub(file.Name())}};
        for (const Keyword& entry :
             ConditionKeywords(conditions, {kSpace, kIllumination, kObserver, kWhiteBase})) {
            result->keywords.push_back(entry);
        }
    };
    std::vector<std::string> row;
    const auto compute = [&](const Sample& sample) {
        const CMetry::QVColorVector vector = ForSample(file, sample, [&] {
            return lab ? FromLab(CMetry::QVColorVector(sample.lab[0], sample.lab[1], sample.lab[2], labConditions), space)
                       : CMetry::CMetryService::GetVector(SpectrumOf(sample, conditions), conditions);
        });
        Identity(row, sample, file.HasNames());
        for (unsigned short axis = 0; axis < 3; ++axis) {
            AddNumber(row, vector[axis], options.decimals, fields[axis], file, sample);
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
    InputKeywords(*result, file, "");
    return result;
}

std::unique_ptr<ResultSet> DeltaE(const Options& options)
{
    NeedArguments(options, 2);
    MeasurementFile references(options.arguments[0]);
    MeasurementFile samples(options.arguments[1]);
    const bool progress = ProgressWanted(options.arguments[1]);
    references.KeepAll();
    references.Survey({}, options.scale, false);
    const Sample* single = nullptr;
    CMetry::QVMeasureConditions conditions;
    CMetry::QVMeasureConditions labConditions;
    // Differences of Lab vectors (a Lab file, or CIEDE2000), or of spectra.
    bool viaLab = false;
    std::unique_ptr<ResultSet> result;
    TempFile differences;
    std::FILE* spool = nullptr;
    const auto labOf = [&](const MeasurementFile& file, const Sample& sample) {
        if (file.Holds() == MeasurementFile::Content::Lab) {
            return CMetry::QVColorVector(sample.lab[0], sample.lab[1], sample.lab[2], labConditions);
        }
        return CMetry::CMetryService::GetVector(SpectrumOf(sample, labConditions), labConditions);
    };
    // The Lab value of each reference, computed once: a reference serves
    // every sample with its id, or all of them.
    std::map<const Sample*, CMetry::QVColorVector> referenceLab;
    const auto referenceLabOf = [&](const Sample& reference) -> const CMetry::QVColorVector& {
        const auto found = referenceLab.find(&reference);
        if (found != referenceLab.end()) {
            return found->second;
        }
        const CMetry::QVColorVector lab = labOf(references, reference);
        RequireFinite(lab[0] + lab[1] + lab[2], "CIELab value", references, reference);
        return referenceLab.emplace(&reference, lab).first->second;
    };
    const auto prepare = [&] {
        if (!options.reference.empty()) {
            single = references.Find(options.reference);
            if (single == nullptr) {
                throw Cgats::Error(references.Name(), 0, "no sample with SAMPLE_ID " + options.reference);
            }
        } else if (references.Count() == 1) {
            single = &references.Kept().begin()->second;
        }
        const bool labFile = references.Holds() == MeasurementFile::Content::Lab ||
                             samples.Holds() == MeasurementFile::Content::Lab;
        viaLab = labFile || options.de2000;
        conditions = BuildConditions(
            "delta-e", options, {{kWhiteBase, "Absolute"}},
            [&](const CMetry::QVMeasureConditions& trial) {
                const CMetry::QVMeasureConditions trialLab = LabConditions(trial);
                if (!viaLab) {
                    CMetry::CMetryService::GetDeltaE(Flat(0.5f, trial), Flat(0.4f, trial), trial, options.p1,
                                                     options.p2, options.p3);
                    return;
                }
                CMetry::CMetryService::GetVector(Flat(0.5f, trialLab), trialLab);
                if (!options.de2000) {
                    CMetry::QVColorVector first(50.0f, 10.0f, 10.0f, trialLab);
                    CMetry::QVColorVector second(52.0f, 11.0f, 9.0f, trialLab);
                    CMetry::CMetryService::GetDeltaE(first, second, options.p1, options.p2, options.p3);
                }
            },
            labFile);
        labConditions = LabConditions(conditions);
        NoteLabConditions(references, conditions);
        NoteLabConditions(samples, conditions);
        std::vector<Column> columns = IdentityColumns(samples.HasNames());
        columns.push_back({"REFERENCE_ID", true});
        columns.push_back({"DELTA_E", false});
        columns.push_back({"EXCEEDS", false});
        result = std::make_unique<ResultSet>(columns);
        result->keywords = {{"ORIGINATOR", "qvi"},
                            {"DESCRIPTOR", "colour differences of " + Scrub(samples.Name()) + " against " +
                                               Scrub(references.Name())}};
        if (options.de2000) {
            result->keywords.push_back({"DELTA_E_FORMULA", "CIEDE2000"});
            result->keywords.push_back({"DELTA_E_K00", Shortest(options.k00[0]) + ":" + Shortest(options.k00[1]) + ":" +
                                                           Shortest(options.k00[2])});
        }
        for (const Keyword& entry :
             ConditionKeywords(conditions, options.de2000 ? std::vector<const char*>{kIllumination, kObserver}
                                                          : std::vector<const char*>{kFormula, kIllumination,
                                                                                     kObserver})) {
            result->keywords.push_back(entry);
        }
        spool = std::fopen(differences.Path().c_str(), "w+b");
        if (spool == nullptr) {
            throw Cgats::Error(differences.Path(), 0, "cannot open a temporary file");
        }
    };
    double sum = 0.0;
    float maximum = 0.0f;
    std::size_t count = 0;
    std::size_t exceeding = 0;
    const auto restart = [&] {
        result->Clear();
        EmptyFile(spool);
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
                const float difference = ForSample(samples, sample, [&] {
                    if (!viaLab) {
                        return CMetry::CMetryService::GetDeltaE(SpectrumOf(*reference, conditions),
                                                                SpectrumOf(sample, conditions), conditions,
                                                                options.p1, options.p2, options.p3);
                    }
                    const CMetry::QVColorVector& first = referenceLabOf(*reference);
                    const CMetry::QVColorVector second = labOf(samples, sample);
                    RequireFinite(second[0] + second[1] + second[2], "CIELab value", samples, sample);
                    if (options.de2000) {
                        return CMetry::DeltaE2000(first, second, options.k00[0], options.k00[1], options.k00[2]);
                    }
                    return CMetry::CMetryService::GetDeltaE(first, second, options.p1, options.p2, options.p3);
                });
                if (!std::isfinite(difference)) {
                    // The sample with the larger values is the one to blame.
                    if (LargestOf(references, *reference).magnitude > LargestOf(samples, sample).magnitude) {
                        RefuseResult("DELTA_E", references, *reference);
                    }
                    RefuseResult("DELTA_E", samples, sample);
                }
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
    const std::string largest = FormatNumber(maximum, options.decimals);
    result->keywords.push_back({"DELTA_E_MEAN", mean, true});
    result->keywords.push_back({"DELTA_E_MAX", largest, true});
    result->keywords.push_back({"DELTA_E_P95", p95, true});
    result->keywords.push_back({"DELTA_E_TOLERANCE", tolerance, true});
    result->keywords.push_back({"DELTA_E_EXCEEDING", std::to_string(exceeding), true});
    const std::size_t exceedsColumn = result->Columns().size() - 1;
    result->summary = {{"samples", std::to_string(count)},
                       {"mean", mean},
                       {"maximum", largest},
                       {"p95", p95},
                       {"tolerance", tolerance},
                       {"exceeding", std::to_string(exceeding)},
                       {"exceeding_ids", "", SummaryEntry::Kind::RowList, 0, exceedsColumn}};
    InputKeywords(*result, references, "REFERENCE_");
    InputKeywords(*result, samples, "SAMPLES_");
    return result;
}

std::unique_ptr<ResultSet> Density(const Options& options)
{
    NeedArguments(options, 1);
    if (!options.tints.empty() && options.solid.empty()) {
        throw UsageError("--tint needs --solid");
    }
    MeasurementFile file(options.arguments[0]);
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
    NeedSpectra(file, "density");
    const Sample* paperWhite = options.paperWhite.empty() ? nullptr : file.Find(options.paperWhite);
    const char* const modes[4] = {"Black", "Cyan", "Magenta", "Yellow"};
    const CMetry::QVMeasureConditions conditions =
        BuildConditions("density", options, {}, [&](const CMetry::QVMeasureConditions& trial) {
            if (paperWhite != nullptr) {
                CMetry::DensityService::SetPaperWhite(SpectrumOf(*paperWhite, trial));
            }
            const CMetry::QVSpectrum flat = Flat(0.5f, trial);
            for (const char* mode : modes) {
                CMetry::QVMeasureConditions filter = trial;
                filter.SetMeasureCondition(String(kFilterMode), String(mode));
                CMetry::DensityService::GetDensity(flat, filter);
            }
            CMetry::QVMeasureConditions automatic = trial;
            automatic.SetMeasureCondition(String(kFilterMode), String("Auto"));
            CMetry::DensityService::GetDensity(flat, automatic);
        });
    const char* const densityFields[5] = {"D_BLACK", "D_CYAN", "D_MAGENTA", "D_YELLOW", "D_AUTO"};
    std::vector<Column> columns = IdentityColumns(file.HasNames());
    for (const char* field : densityFields) {
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
    for (const Keyword& entry : ConditionKeywords(conditions, {kDensityStandard, kWhiteBase, kFilterMode})) {
        result->keywords.push_back(entry);
    }
    if (!options.paperWhite.empty()) {
        result->keywords.push_back({"PAPER_WHITE", options.paperWhite});
    }
    if (!options.solid.empty()) {
        result->keywords.push_back({"SOLID", options.solid});
    }
    CMetry::QVMeasureConditions byFilter[4];
    for (int f = 0; f < 4; ++f) {
        byFilter[f] = conditions;
        byFilter[f].SetMeasureCondition(String(kFilterMode), String(modes[f]));
    }
    CMetry::QVMeasureConditions automatic = conditions;
    automatic.SetMeasureCondition(String(kFilterMode), String("Auto"));
    const CMetry::QVDensityStdTYPE standard = CMetry::MeasureConditionGetStrings().GetDensityStandard(
        String(Condition(conditions, kDensityStandard).c_str()));
    CMetry::DensityFilterModeTYPE mode = CMetry::MeasureConditionGetStrings().GetDensityFilterMode(
        String(Condition(conditions, kFilterMode).c_str()));
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
            gainConditions.SetMeasureCondition(String(kFilterMode), CMetry::MeasureConditionGetStrings().ToString(mode));
            result->keywords.push_back({"DOT_AREA_FILTER", Text(CMetry::MeasureConditionGetStrings().ToString(mode))});
        }
    }
    std::vector<std::string> row;
    const bool names = file.HasNames();
    const CMetry::QVSpectrum solidSpectrum = solid != nullptr ? SpectrumOf(*solid, conditions) : CMetry::QVSpectrum();
    file.ForEach(
        [&](const Sample& sample) {
            const CMetry::QVSpectrum spectrum = SpectrumOf(sample, conditions);
            Identity(row, sample, names);
            for (int f = 0; f < 4; ++f) {
                const float density =
                    ForSample(file, sample, [&] { return CMetry::DensityService::GetDensity(spectrum, byFilter[f]); });
                AddNumber(row, density, options.decimals, densityFields[f], file, sample);
            }
            const float density =
                ForSample(file, sample, [&] { return CMetry::DensityService::GetDensity(spectrum, automatic); });
            AddNumber(row, density, options.decimals, densityFields[4], file, sample);
            row.push_back(ForSample(file, sample, [&] {
                return Text(CMetry::DensityService::GetDensityFilterName(spectrum, automatic));
            }));
            if (solid != nullptr) {
                float area = 0.0f;
                if (!CMetry::DensityCalculator::GetDotArea(solidSpectrum, spectrum, standard, mode, area)) {
                    // Dot area compares densities relative to the paper.
                    throw LibraryError(Where(file, sample) + ": the dot area against the solid " + solid->id +
                                       " cannot be calculated; it needs a paper white: give --paper-white ID");
                }
                AddNumber(row, static_cast<double>(area) * 100.0, options.decimals, "DOT_AREA", file, sample);
            }
            if (!options.tints.empty()) {
                const auto found = nominal.find(sample.id);
                if (found == nominal.end()) {
                    row.emplace_back();
                    row.emplace_back();
                } else {
                    row.push_back(FormatNumber(found->second, options.decimals));
                    const float gain = ForSample(file, sample, [&] {
                        return CMetry::DensityService::GetDotGain(spectrum, solidSpectrum, gainConditions,
                                                                  found->second);
                    });
                    AddNumber(row, gain, options.decimals, "DOT_GAIN", file, sample);
                }
            }
            result->Add(row);
        },
        progress);
    InputKeywords(*result, file, "");
    return result;
}

std::unique_ptr<ResultSet> Cct(const Options& options)
{
    NeedArguments(options, 1);
    MeasurementFile file(options.arguments[0]);
    const bool progress = ProgressWanted(options.arguments[0]);
    CMetry::QVMeasureConditions conditions;
    CMetry::QVMeasureConditions xyzConditions;
    std::unique_ptr<ResultSet> result;
    const auto prepare = [&] {
        NeedSpectra(file, "cct");
        conditions = BuildConditions("cct", options, {{kIllumination, "Emission"}},
                                     [&](const CMetry::QVMeasureConditions& trial) {
                                         CMetry::CMetryService::GetColorTemperature(Flat(1.0f, trial));
                                     });
        std::vector<Column> columns = IdentityColumns(file.HasNames());
        columns.push_back({"CCT", false});
        result = std::make_unique<ResultSet>(columns);
        result->keywords = {{"ORIGINATOR", "qvi"},
                            {"DESCRIPTOR", "correlated colour temperature of " + Scrub(file.Name())}};
        for (const Keyword& entry : ConditionKeywords(conditions, {kObserver})) {
            result->keywords.push_back(entry);
        }
        xyzConditions = conditions;
        xyzConditions.SetMeasureCondition(String(kSpace), String("CIEXYZ"));
    };
    std::vector<std::string> row;
    file.Stream(
        options.scale, prepare,
        [&](const Sample& sample) {
            const CMetry::QVSpectrum spectrum = SpectrumOf(sample, conditions);
            // The search follows the chromaticity of the sample's XYZ: values
            // whose XYZ the float arithmetic cannot hold have none.
            const CMetry::QVColorVector xyz =
                ForSample(file, sample, [&] { return CMetry::CMetryService::GetVector(spectrum, xyzConditions); });
            for (unsigned short axis = 0; axis < 3; ++axis) {
                RequireFinite(xyz[axis], "XYZ", file, sample);
            }
            const float kelvin =
                ForSample(file, sample, [&] { return CMetry::CMetryService::GetColorTemperature(spectrum); });
            Identity(row, sample, file.HasNames());
            AddNumber(row, kelvin, std::min(options.decimals, 1), "CCT", file, sample);
            result->Add(row);
        },
        [&] { result->Clear(); }, progress);
    InputKeywords(*result, file, "");
    return result;
}

std::unique_ptr<ResultSet> SpectrumCommand(const Options& options)
{
    NeedArguments(options, 3);
    float lab[3];
    for (int i = 0; i < 3; ++i) {
        const std::string& text = options.arguments[static_cast<std::size_t>(i)];
        if (!Cgats::ParseNumber(text, lab[i])) {
            throw UsageError("qvi spectrum: \"" + text + "\" " +
                             (Cgats::IsWrittenNumber(text) ? "is out of range: a float holds magnitudes up to 3.4e38"
                                                           : "is not a number"));
        }
    }
    const CMetry::QVMeasureConditions conditions = BuildConditions(
        "spectrum", options, {{kSpace, "CIELab"}, {kWhiteBase, "Absolute"}},
        [&](const CMetry::QVMeasureConditions& trial) { CMetry::CMetryService::GetVector(Flat(0.5f, trial), trial); });
    const std::string asked = FormatNumber(lab[0], options.decimals) + " " + FormatNumber(lab[1], options.decimals) +
                              " " + FormatNumber(lab[2], options.decimals);
    const CMetry::QVColorVector vector(lab[0], lab[1], lab[2], conditions);
    CMetry::QVSpectrum spectrum;
    try {
        spectrum = CMetry::CMetryService::GetSpectrum(vector);
    } catch (const Utilities::Exception& failure) {
        throw LibraryError("CIELab " + asked + ": " + LibraryText(failure) +
                           "; no reflectance spectrum between 0 and 1 reaches this value (try a value closer to "
                           "the neutral axis or lighter than black)");
    }
    const CMetry::QVColorVector back = CMetry::CMetryService::GetVector(spectrum, conditions);
    std::vector<Column> columns = {{"LAB_L", false}, {"LAB_A", false}, {"LAB_B", false}};
    for (int point = 0; point < kGridPoints; ++point) {
        columns.push_back({"SPECTRAL_NM" + std::to_string(380 + 10 * point), false});
    }
    auto result = std::make_unique<ResultSet>(columns);
    std::vector<std::string> row;
    for (unsigned short axis = 0; axis < 3; ++axis) {
        row.push_back(FormatNumber(back[axis], options.decimals));
    }
    for (int point = 0; point < kGridPoints; ++point) {
        row.push_back(FormatNumber(spectrum[point], options.decimals + 2));
    }
    result->Add(row);
    const float reached = CMetry::CMetryService::GetDeltaE(vector, back, 0.0f, 0.0f, 0.0f);
    result->keywords = {{"ORIGINATOR", "qvi"},
                        {"DESCRIPTOR", "reflectance spectrum of CIELab " + asked},
                        {"RESULT", "success"},
                        {"DELTA_E", FormatNumber(reached, options.decimals), true}};
    for (const Keyword& entry : ConditionKeywords(conditions, {kIllumination, kObserver})) {
        result->keywords.push_back(entry);
    }
    result->summary = {{"result", "success", SummaryEntry::Kind::Text},
                       {"delta_e", FormatNumber(reached, options.decimals)}};
    return result;
}

std::unique_ptr<ResultSet> Conditions(const Options& options)
{
    NeedArguments(options, 0);
    const CMetry::QVMeasureConditions defaults;
    auto result = std::make_unique<ResultSet>(
        std::vector<Column>{{"KEY", true}, {"DEFAULT", true}, {"SUPPORTED_VALUES", true}});
    result->keywords = {{"ORIGINATOR", "qvi"}, {"DESCRIPTOR", "measure conditions as qvi uses them"}};
    for (const char* key : kConditionKeys) {
        std::string value = Condition(defaults, key);
        std::vector<std::string> values = AcceptedValues(key);
        if (key == std::string(kIllumination)) {
            value = "D65 (cct: Emission)";
            values = {"A", "B", "C", "D50", "D55", "D65", "D75", "F1 ... F12 (e.g. F7)",
                      "Dxx, Temperature:K (K from 4000 to 25000, e.g. Dxx, Temperature:5000)", "Emission"};
        } else if (key == std::string(kWhiteBase)) {
            value = "Absolute (color with --paper-white: Paper; density: Automatic)";
        } else if (key == std::string(kFormula)) {
            values.push_back("2000 (CIEDE2000)");
        }
        result->Add({key, value, Join(values, "; ")});
    }
    return result;
}

namespace {

const char* const kManagerSection = "QVIInstrumentManager";

using InstrumentPointer = Utilities::SmartPointer<QVIManager::QVIInstrument>;

// The instrument manager, the library's own component.
Utilities::SmartPointer<QVIManager::QVIInstrumentManager> Manager()
{
    Utilities::SmartPointer<QVIManager::QVIInstrumentManager> manager =
        Utilities::Resolve<QVIManager::QVIInstrumentManager>(String("QVIInstrumentManager"));
    if (!manager.IsValid()) {
        throw LibraryError("the library's instrument manager is not there");
    }
    return manager;
}

// The manager's search, its refusals in qvi's words.
void FindAll(QVIManager::QVIInstrumentManager& manager)
{
    try {
        manager.FindAllInstruments();
    } catch (const char* text) {
        // A driver handed over a device without "SerialNumber".
        throw LibraryError(std::string("searching the instruments: ") + text);
    } catch (const Utilities::Exception& failure) {
        throw LibraryError("searching the instruments: " + LibraryText(failure));
    }
}

// "NAME_SERIAL of DRIVER" from the preferences store, "" when none is kept
// (or there is no store).
std::string RecentInstrument(std::string* driver = nullptr)
{
    Utilities::SmartPointer<QVIManager::Preferences> preferences =
        Utilities::Resolve<QVIManager::Preferences>(String("Preferences"));
    if (!preferences.IsValid()) {
        return "";
    }
    const String section(kManagerSection);
    const std::string recent = Text(preferences->GetValue(section, String("RecentUsed"), String("")));
    if (driver != nullptr) {
        *driver = Text(preferences->GetValue(section, String("RUDriver"), String("")));
    }
    return recent;
}

std::string Field(const QVIManager::QVIInstrumentManager::DeviceMap& device, const char* key)
{
    Utilities::MapIterator<String, String> found = device.Find(String(key));
    return found.IsValid() ? Text(found.GetValue()) : std::string();
}

// Waits for the instrument's button: an InstrumentEvents_V1 polls it, and
// the callback registered for "Button" wakes the waiting thread. A
// "Connection" event (the device went away) ends the wait with a refusal.
class ButtonWait {
public:
    explicit ButtonWait(const InstrumentPointer& instrument)
        : state(std::make_shared<State>()),
          events(Utilities::DynamicCast<Utilities::Component>(instrument))
    {
        events.RegisterCallback(String("Button"), Utilities::Callback(Utilities::SmartPointer<Utilities::CallbackImplementation>(
                                                      new Listener(state, false))));
        events.RegisterCallback(String("Connection"), Utilities::Callback(Utilities::SmartPointer<Utilities::CallbackImplementation>(
                                                          new Listener(state, true))));
    }
    ~ButtonWait()
    {
        try {
            events.UnregisterCallback(String("Button"));
            events.UnregisterCallback(String("Connection"));
        } catch (...) {
        }
    }
    ButtonWait(const ButtonWait&) = delete;
    ButtonWait& operator=(const ButtonWait&) = delete;

    // Blocks until the next press; false when the device was disconnected.
    bool Next()
    {
        std::unique_lock<std::mutex> hold(state->guard);
        state->changed.wait(hold, [&] { return state->presses > 0 || state->disconnected; });
        if (state->presses > 0) {
            --state->presses;
            return true;
        }
        return false;
    }

private:
    struct State {
        std::mutex guard;
        std::condition_variable changed;
        long presses = 0;
        bool disconnected = false;
    };
    class Listener : public Utilities::CallbackImplementation {
    public:
        Listener(std::shared_ptr<State> state, bool connection) : state(std::move(state)), connection(connection) {}
        long Execute(const Utilities::Anything&) override
        {
            {
                const std::lock_guard<std::mutex> hold(state->guard);
                if (connection) {
                    state->disconnected = true;
                } else {
                    ++state->presses;
                }
            }
            state->changed.notify_all();
            return 0;
        }
        bool IsValid() const override { return true; }

    private:
        std::shared_ptr<State> state;
        bool connection;
    };

    std::shared_ptr<State> state;
    QVIManager::InstrumentEvents_V1 events;
};

} // namespace

std::unique_ptr<ResultSet> Instruments(const Options& options)
{
    NeedArguments(options, 0);
    Utilities::SmartPointer<QVIManager::QVIInstrumentManager> manager = Manager();
    auto result = std::make_unique<ResultSet>(std::vector<Column>{{"DRIVER", true},
                                                                  {"DEVICE_KEY", true},
                                                                  {"NAME", true},
                                                                  {"SERIAL", true},
                                                                  {"TRANSPORT", true},
                                                                  {"PORT", true},
                                                                  {"AVAILABLE", true}});
    result->keywords = {{"ORIGINATOR", "qvi"}, {"DESCRIPTOR", "instrument drivers and their devices"}};
    Utilities::SmartPointer<Utilities::List<String>> drivers = manager->GetListOfInstrumentDrivers();
    std::size_t devices = 0;
    for (Utilities::ListIterator<String> driver = drivers->Begin(); driver.IsValid(); driver++) {
        const std::string name = Text(driver.Current());
        Utilities::SmartPointer<QVIManager::FindDevices_V1> finder;
        try {
            InstrumentPointer probe = Utilities::Resolve<QVIManager::QVIInstrument>(driver.Current());
            if (probe.IsValid()) {
                finder = Utilities::DynamicCast<QVIManager::FindDevices_V1>(
                    probe->GetInterface(String("FindDevices_V1")));
            }
        } catch (const Utilities::Exception& failure) {
            throw LibraryError("driver " + name + ": " + LibraryText(failure));
        }
        Utilities::List<QVIManager::QVIInstrumentManager::DeviceMap> found;
        try {
            if (finder.IsValid()) {
                found = finder->FindDevices();
            }
        } catch (const Utilities::Exception& failure) {
            throw LibraryError("driver " + name + ": " + LibraryText(failure));
        }
        if (found.GetItemCount() == 0) {
            // A driver without devices (or that finds none itself): a row
            // of its own.
            result->Add({name, "", "", "", "", "", ""});
        }
        for (Utilities::ListIterator<QVIManager::QVIInstrumentManager::DeviceMap> device = found.Begin(); device.IsValid();
             device++) {
            const QVIManager::QVIInstrumentManager::DeviceMap& map = device.Current();
            const std::string serial = Field(map, "SerialNumber");
            bool available = false;
            try {
                available = finder->IsDeviceAvailable(map);
            } catch (const Utilities::Exception&) {
                // A device that cannot be checked is not available.
            }
            result->Add({name, serial.empty() ? "" : name + "_" + serial, Field(map, "Name"), serial,
                         Field(map, "Transport"), Field(map, "Port"), available ? "yes" : "no"});
            ++devices;
        }
    }
    std::string recentDriver;
    const std::string recent = RecentInstrument(&recentDriver);
    result->summary = {{"drivers", std::to_string(drivers->GetItemCount())},
                       {"devices", std::to_string(devices)},
                       {"recent", recent.empty() ? "none" : recent + " (" + recentDriver + ")",
                        SummaryEntry::Kind::Text}};
    return result;
}

std::unique_ptr<ResultSet> Measure(const Options& options)
{
    NeedArguments(options, 0);
    const CMetry::QVMeasureConditions conditions =
        BuildConditions("measure", options, {{kWhiteBase, "Absolute"}},
                        [](const CMetry::QVMeasureConditions& trial) {
                            CMetry::CMetryService::GetVector(Flat(0.5f, trial), trial);
                        });
    const std::vector<std::string> fields = SpaceFields(conditions);

    Utilities::SmartPointer<QVIManager::QVIInstrumentManager> manager = Manager();
    InstrumentPointer instrument;
    std::string key = options.device;
    try {
        if (!key.empty()) {
            FindAll(*manager);
            Utilities::SmartPointer<QVIManager::QVIInstrumentManager::InstrumentMap> connected =
                manager->GetListOfConnectedInstruments();
            Utilities::MapIterator<String, InstrumentPointer> found = connected->Find(String(key.c_str()));
            if (!found.IsValid() || !found.GetValue().IsValid()) {
                throw LibraryError("--device " + key + ": no such device (qvi instruments lists them)");
            }
            instrument = found.GetValue();
        } else {
            QVIManager::QVIInstrumentManager::DeviceMap unused;
            instrument = manager->GetRecentUsedInstrument(unused);
            std::string driver;
            key = RecentInstrument(&driver);
            if (!instrument.IsValid()) {
                throw LibraryError(key.empty() ? std::string("no instrument was used yet: name one with --device KEY (qvi "
                                                             "instruments lists them)")
                                               : "the instrument used last, " + key + " (" + driver +
                                                     "), is not available: name one with --device KEY (qvi "
                                                     "instruments lists them)");
            }
            key += " (" + driver + ")";
        }
    } catch (const Utilities::Exception& failure) {
        throw LibraryError("connecting the instrument: " + LibraryText(failure));
    }
    Utilities::SmartPointer<QVIManager::Measurement_V1> measurement;
    try {
        measurement =
            Utilities::DynamicCast<QVIManager::Measurement_V1>(instrument->GetInterface(String("Measurement_V1")));
    } catch (const Utilities::Exception& failure) {
        throw LibraryError(key + ": " + LibraryText(failure));
    }
    if (!measurement.IsValid()) {
        throw LibraryError(key + " takes no readings: its driver offers no Measurement_V1");
    }

    std::vector<Column> columns = {{"SAMPLE_ID", true}};
    for (const std::string& field : fields) {
        columns.push_back({field, false});
    }
    auto result = std::make_unique<ResultSet>(columns);
    result->keywords = {{"ORIGINATOR", "qvi"},
                        {"DESCRIPTOR", "colour values measured with " + Scrub(key)},
                        {"INSTRUMENT", Scrub(key)}};
    for (const Keyword& entry : ConditionKeywords(conditions, {kSpace, kIllumination, kObserver, kWhiteBase})) {
        result->keywords.push_back(entry);
    }
    std::unique_ptr<ButtonWait> button;
    if (options.waitButton) {
        try {
            button = std::make_unique<ButtonWait>(instrument);
        } catch (const Utilities::Exception& failure) {
            throw LibraryError(key + ": waiting for its button: " + LibraryText(failure));
        }
    }
    std::vector<std::string> row;
    for (long reading = 1; reading <= options.count; ++reading) {
        const std::string where = key + ", reading " + std::to_string(reading);
        if (button != nullptr) {
            Note("press the button of " + key + " (reading " + std::to_string(reading) + " of " +
                 std::to_string(options.count) + ")");
            if (!button->Next()) {
                throw LibraryError(where + ": the instrument was disconnected");
            }
        }
        CMetry::QVColorVector vector;
        try {
            const CMetry::QVSpectrum spectrum = measurement->Measure();
            vector = CMetry::CMetryService::GetVector(CMetry::QVSpectrum(spectrum.GetValues(), conditions), conditions);
        } catch (const Utilities::Exception& failure) {
            throw LibraryError(where + ": " + LibraryText(failure));
        }
        row = {std::to_string(reading)};
        for (unsigned short axis = 0; axis < 3; ++axis) {
            if (!std::isfinite(vector[axis])) {
                throw LibraryError(where + ": " + fields[axis] + " is not a finite number");
            }
            row.push_back(FormatNumber(vector[axis], options.decimals));
        }
        result->Add(row);
    }
    button.reset();
    if (!options.device.empty()) {
        // Remembered only once every reading has succeeded.
        try {
            manager->SetUsedInstrument(instrument);
        } catch (const Utilities::Exception& failure) {
            throw LibraryError(key + ": remembering it as the recent instrument: " + LibraryText(failure));
        }
    }
    return result;
}

} // namespace Qvi
