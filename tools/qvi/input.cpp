#include "tools/qvi/input.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace Qvi {

namespace {

constexpr std::size_t kProgressStep = 10000;

void Progress(bool enabled, const std::string& what, const std::string& file, std::size_t rows)
{
    if (enabled && rows % kProgressStep == 0) {
        std::cerr << "\rqvi: " << what << ' ' << file << ": " << rows << " samples" << std::flush;
    }
}

void EndProgress(bool enabled)
{
    if (enabled) {
        std::cerr << "\r\033[K" << std::flush;
    }
}

} // namespace

SpectralFile::SpectralFile(const std::string& filePath) : path(filePath), name(filePath)
{
    if (filePath == "-") {
        name = "<stdin>";
        copy = std::make_unique<TempFile>();
        std::ofstream out(copy->Path(), std::ios::binary);
        out << std::cin.rdbuf();
        path = copy->Path();
    }
    std::ifstream probe(path, std::ios::binary);
    if (!probe) {
        throw Cgats::Error(name, 0, "cannot open the file");
    }
}

void SpectralFile::Open(std::ifstream& stream) const
{
    stream.open(path, std::ios::binary);
    if (!stream) {
        throw Cgats::Error(name, 0, "cannot open the file");
    }
}

void SpectralFile::Layout(const Cgats::Reader& reader)
{
    gridField.fill(-1);
    const auto& fields = reader.Fields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const int wavelength = Cgats::SpectralWavelength(fields[i]);
        if (wavelength >= 380 && wavelength <= 730 && wavelength % 10 == 0) {
            int& slot = gridField[static_cast<std::size_t>((wavelength - 380) / 10)];
            if (slot >= 0) {
                throw Cgats::Error(name, reader.FormatLine(),
                                   "two fields for " + std::to_string(wavelength) + " nm: " + fields[slot] + " and " +
                                       fields[i]);
            }
            slot = static_cast<int>(i);
        }
    }
    for (int point = 0; point < kGridPoints; ++point) {
        if (gridField[point] < 0) {
            throw Cgats::Error(name, reader.FormatLine(),
                               "no spectral field for " + std::to_string(380 + 10 * point) +
                                   " nm (fields such as SPECTRAL_NM380 ... SPECTRAL_NM730 are needed)");
        }
    }
    idField = reader.FieldIndex("SAMPLE_ID");
    nameField = reader.FieldIndex("SAMPLE_NAME");
    const std::string measurement = reader.Keyword("MEAS_TYPE");
    emission = measurement == "EMISSION";
}

void SpectralFile::Read(const Cgats::Reader& reader, const Cgats::Row& row, std::size_t index, Sample& sample,
                        bool scaled) const
{
    Identify(row, index, sample);
    for (int point = 0; point < kGridPoints; ++point) {
        const std::string_view text = row.values[gridField[point]];
        double value;
        bool good;
        if (scaled) {
            good = Scaled(text, sample.values[point]);
            value = sample.values[point];
        } else {
            good = Cgats::ParseNumber(text, value);
        }
        if (!good) {
            throw NotANumber(reader, row, point);
        }
        sample.raw[point] = value;
    }
}

void SpectralFile::Identify(const Cgats::Row& row, std::size_t index, Sample& sample) const
{
    sample.line = row.line;
    sample.id = idField >= 0 ? std::string(row.values[idField]) : std::to_string(index);
    sample.name = nameField >= 0 ? std::string(row.values[nameField]) : std::string();
}

Cgats::Error SpectralFile::NotANumber(const Cgats::Reader& reader, const Cgats::Row& row, int point) const
{
    return Cgats::Error(name, row.line,
                        "the value \"" + std::string(row.values[gridField[point]]) + "\" of " +
                            reader.Fields()[gridField[point]] + " is not a number");
}

std::exception_ptr SpectralFile::ReadOnce(const Cgats::Reader& reader, const Cgats::Row& row, std::size_t index,
                                          Sample& sample) const
{
    Identify(row, index, sample);
    std::exception_ptr deferred;
    for (int point = 0; point < kGridPoints; ++point) {
        const std::string_view text = row.values[gridField[point]];
        double number;
        float single;
        bool singleGood;
        if (!Cgats::ParseNumber(text, number, single, singleGood)) {
            throw NotANumber(reader, row, point);
        }
        sample.raw[point] = number;
        if (divisor != 1.0) {
            sample.values[point] = static_cast<float>(number / divisor);
        } else if (singleGood) {
            sample.values[point] = single;
        } else if (deferred == nullptr) {
            deferred = std::make_exception_ptr(NotANumber(reader, row, point));
        }
    }
    return deferred;
}

std::size_t SpectralFile::Pass(const char* what, bool progress,
                              const std::function<void(const Cgats::Reader&, const Cgats::Row&, std::size_t)>& visit)
{
    std::ifstream stream;
    Open(stream);
    Cgats::Reader reader(stream, name);
    Layout(reader);
    Cgats::Row row;
    std::size_t index = 0;
    while (reader.Next(row)) {
        ++index;
        visit(reader, row, index);
        Progress(progress, what, name, index);
    }
    EndProgress(progress);
    return reader.FormatLine();
}

void SpectralFile::Survey(const std::set<std::string>& wanted, Scale scale, bool progress)
{
    Sample sample;
    double maximum = 0.0;
    count = 0;
    kept.clear();
    const std::size_t formatLine =
        Pass("checking", progress, [&](const Cgats::Reader& reader, const Cgats::Row& row, std::size_t index) {
            count = index;
            Read(reader, row, index, sample, false);
            for (double value : sample.raw) {
                maximum = std::max(maximum, value);
            }
            if (!keepAll && wanted.count(sample.id) == 0) {
                return;
            }
            if (kept.count(sample.id) > 0) {
                // Ids must be unique where every sample is looked up by id;
                // elsewhere the first one counts. (Checking every file would
                // cost memory that grows with the file.)
                if (keepAll && idField >= 0) {
                    throw Cgats::Error(name, row.line, "SAMPLE_ID " + sample.id + " appears twice");
                }
                return;
            }
            kept[sample.id] = sample;
            std::vector<std::string>& texts = keptTexts[sample.id];
            for (int point = 0; point < kGridPoints; ++point) {
                texts.emplace_back(row.values[gridField[point]]);
            }
        });
    if (count == 0) {
        throw Cgats::Error(name, formatLine, "the file holds no samples");
    }
    for (const std::string& id : wanted) {
        if (kept.count(id) == 0) {
            throw Cgats::Error(name, 0, "no sample with SAMPLE_ID " + id);
        }
    }
    if (scale.automatic) {
        // Emission data keeps its own scale; reflectance above 2 is percent.
        divisor = !emission && maximum > 2.0 ? 100.0 : 1.0;
    } else {
        divisor = scale.divisor;
    }
    // The kept samples' values on the scale now known, from their texts.
    for (auto& [id, entry] : kept) {
        const std::vector<std::string>& texts = keptTexts[id];
        for (int point = 0; point < kGridPoints; ++point) {
            Scaled(texts[point], entry.values[point]);
        }
    }
    keptTexts.clear();
}

bool SpectralFile::Scaled(std::string_view text, float& value) const
{
    if (divisor == 1.0) {
        // Straight into a float: one rounding of the written decimal.
        return Cgats::ParseNumber(text, value);
    }
    double number;
    if (!Cgats::ParseNumber(text, number)) {
        return false;
    }
    value = static_cast<float>(number / divisor);
    return true;
}

void SpectralFile::Stream(Scale scale, const std::function<void()>& prepare,
                          const std::function<void(const Sample&)>& function, const std::function<void()>& restart,
                          bool progress)
{
    // Thrown out of a pass when the scale turns out to be percent.
    struct Settled {};
    bool prepared = false;
    std::exception_ptr preparation;
    bool scaleKnown = !scale.automatic;
    divisor = scale.automatic ? 1.0 : scale.divisor;
    kept.clear();
    while (true) {
        std::exception_ptr failure = preparation;
        Sample sample;
        count = 0;
        std::size_t formatLine = 0;
        try {
            formatLine = Pass("computing", progress, [&](const Cgats::Reader& reader, const Cgats::Row& row,
                                                         std::size_t index) {
                count = index;
                if (!prepared) {
                    // After the header: Layout has run.
                    prepared = true;
                    if (emission) {
                        // Emission data keeps its own scale.
                        scaleKnown = true;
                    }
                    try {
                        prepare();
                    } catch (...) {
                        preparation = std::current_exception();
                        failure = preparation;
                    }
                }
                // Checked as the survey checks it; what only the computing
                // pass would refuse waits like a failure of the computing.
                const std::exception_ptr refused = ReadOnce(reader, row, index, sample);
                if (!scaleKnown && *std::max_element(sample.raw.begin(), sample.raw.end()) > 2.0) {
                    scaleKnown = true;
                    divisor = 100.0;
                    throw Settled{};
                }
                if (failure == nullptr) {
                    if (refused != nullptr) {
                        failure = refused;
                        return;
                    }
                    try {
                        function(sample);
                    } catch (...) {
                        failure = std::current_exception();
                    }
                }
            });
        } catch (const Settled&) {
            EndProgress(progress);
            // Nothing was computed when the preparation failed.
            if (preparation == nullptr) {
                restart();
            }
            continue;
        }
        if (count == 0) {
            throw Cgats::Error(name, formatLine, "the file holds no samples");
        }
        if (failure != nullptr) {
            std::rethrow_exception(failure);
        }
        return;
    }
}

const Sample* SpectralFile::Find(const std::string& id) const
{
    const auto found = kept.find(id);
    return found == kept.end() ? nullptr : &found->second;
}

void SpectralFile::ForEach(const std::function<void(const Sample&)>& function, bool progress)
{
    Sample sample;
    Pass("computing", progress, [&](const Cgats::Reader& reader, const Cgats::Row& row, std::size_t index) {
        Read(reader, row, index, sample, true);
        function(sample);
    });
}

} // namespace Qvi
