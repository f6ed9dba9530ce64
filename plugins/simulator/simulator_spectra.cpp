#include "plugins/simulator/simulator_spectra.h"

#include "cgats/cgats.h"
#include "plugins/simulator/simulator_configuration.h"

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace Simulator {

namespace {

// The scale rule's bounds: a value above kPercentEvidence cannot be a
// reflectance factor 0..1; a file whose values stay at or below
// kFractionCeiling reads as 0..1.
constexpr double kPercentEvidence = 2.0;
constexpr double kFractionCeiling = 1.5;

// The grid points 400 nm and 700 nm, which every file must measure.
constexpr int k400 = 2;
constexpr int k700 = 32;

const char* const kGiveTheScale = "give the device \"scale = 1\" or \"scale = 100\"";

int Wavelength(int point)
{
    return 380 + 10 * point;
}

bool FitsAFloat(double magnitude)
{
    return magnitude == 0.0 || (magnitude >= static_cast<double>(FLT_MIN) && magnitude <= static_cast<double>(FLT_MAX));
}

// A sample as written: the number of each measured point, and the float
// nearest to it where there is one.
struct Written {
    std::array<double, kGridPoints> number{};
    std::array<float, kGridPoints> single{};
    std::array<bool, kGridPoints> singleGood{};
};

} // namespace

std::vector<Spectrum> ReadSpectra(const std::string& path, double scale)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw Error(path, 0, "is a folder, not a CGATS file of spectra");
    }
    // A FIFO or a device could block the driver or never end.
    if (std::filesystem::exists(path, ignored) && !std::filesystem::is_regular_file(path, ignored)) {
        throw Error(path, 0, "is not a regular file");
    }
    std::ifstream input(path, std::ios::binary);
    if (!input) {
        throw Error(path, 0, "cannot read the spectra: " + std::string(std::strerror(errno)));
    }
    std::vector<Written> samples;
    int first = k400;
    int last = k700;
    std::array<int, kGridPoints> gridField{};
    std::vector<std::string> fields;
    // The samples with a value above kPercentEvidence, the largest value.
    std::size_t above = 0;
    double largest = 0.0;
    try {
        Cgats::Reader reader(input, path);
        if (reader.Keyword("MEAS_TYPE") == "EMISSION") {
            throw Error(path, 0, "holds emission data (MEAS_TYPE EMISSION), not reflectance");
        }
        fields = reader.Fields();
        gridField.fill(-1);
        for (std::size_t field = 0; field < fields.size(); ++field) {
            const int wavelength = Cgats::SpectralWavelength(fields[field]);
            if (wavelength >= 380 && wavelength <= 730 && wavelength % 10 == 0) {
                int& slot = gridField[static_cast<std::size_t>((wavelength - 380) / 10)];
                if (slot >= 0) {
                    throw Error(path, reader.FormatLine(),
                                "two fields for " + std::to_string(wavelength) + " nm: " + fields[slot] + " and " +
                                    fields[field]);
                }
                slot = static_cast<int>(field);
            }
        }
        for (int point = k400; point <= k700; ++point) {
            if (gridField[point] < 0) {
                throw Error(path, reader.FormatLine(),
                            "no spectral field for " + std::to_string(Wavelength(point)) +
                                " nm (fields such as SPECTRAL_NM400 ... SPECTRAL_NM700 are needed at least)");
            }
        }
        // The measured range runs without a gap from `first` to `last`.
        while (first > 0 && gridField[first - 1] >= 0) {
            --first;
        }
        while (last < kGridPoints - 1 && gridField[last + 1] >= 0) {
            ++last;
        }
        for (int point = 0; point < kGridPoints; ++point) {
            if ((point < first || point > last) && gridField[point] >= 0) {
                const int gap = point < first ? first - 1 : last + 1;
                throw Error(path, reader.FormatLine(),
                            "no spectral field for " + std::to_string(Wavelength(gap)) + " nm, though " +
                                std::to_string(Wavelength(point)) + " nm is there");
            }
        }
        Cgats::Row row;
        while (reader.Next(row)) {
            Written sample;
            double maximum = -HUGE_VAL;
            for (int point = first; point <= last; ++point) {
                const int field = gridField[point];
                const std::string_view text = row.values[field];
                bool singleGood = false;
                if (!Cgats::ParseNumber(text, sample.number[point], sample.single[point], singleGood)) {
                    throw Error(path, row.line,
                                "the value \"" + std::string(text) + "\" of " + fields[field] +
                                    (Cgats::IsWrittenNumber(text) ? " is out of range" : " is not a number"));
                }
                sample.singleGood[point] = singleGood;
                maximum = std::max(maximum, sample.number[point]);
                largest = std::max(largest, sample.number[point]);
            }
            if (maximum > kPercentEvidence) {
                ++above;
            }
            samples.push_back(sample);
        }
        if (samples.empty()) {
            throw Error(path, reader.FormatLine(), "the file holds no samples");
        }
    } catch (const Cgats::Error& failure) {
        throw Error(failure.File(), failure.Line(), failure.Message());
    }
    double divisor = scale;
    if (divisor == 0.0) {
        if (2 * above > samples.size()) {
            divisor = 100.0;
        } else if (above == 0 && largest <= kFractionCeiling) {
            divisor = 1.0;
        } else if (above > 0) {
            throw Error(path, 0,
                        "the reflectance scale is ambiguous: " + std::to_string(above) + " of " +
                            std::to_string(samples.size()) + " samples have values above 2, the others none; " +
                            kGiveTheScale);
        } else {
            char value[32];
            std::snprintf(value, sizeof value, "%g", largest);
            throw Error(path, 0,
                        "the reflectance scale is ambiguous: the largest value, " + std::string(value) +
                            ", is high for 0..1 and low for 0..100; " + kGiveTheScale);
        }
    }
    std::vector<Spectrum> spectra;
    spectra.reserve(samples.size());
    for (std::size_t index = 0; index < samples.size(); ++index) {
        const Written& sample = samples[index];
        Spectrum spectrum{};
        for (int point = first; point <= last; ++point) {
            const double number = sample.number[point];
            if (!FitsAFloat(std::fabs(number) / divisor)) {
                throw Error(path, 0,
                            "sample " + std::to_string(index + 1) + ": the value " + std::to_string(number) + " of " +
                                fields[gridField[point]] + " does not fit a float on the scale 0.." +
                                (divisor == 1.0 ? "1" : "100"));
            }
            // One rounding of the written decimal.
            spectrum[point] = divisor != 1.0         ? static_cast<float>(number / divisor)
                              : sample.singleGood[point] ? sample.single[point]
                                                         : static_cast<float>(number);
        }
        for (int point = 0; point < first; ++point) {
            spectrum[point] = spectrum[first];
        }
        for (int point = last + 1; point < kGridPoints; ++point) {
            spectrum[point] = spectrum[last];
        }
        spectra.push_back(spectrum);
    }
    return spectra;
}

} // namespace Simulator
