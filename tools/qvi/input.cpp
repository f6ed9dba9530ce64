#include "tools/qvi/input.h"

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace Qvi {

namespace {

constexpr std::size_t kProgressStep = 10000;

// The scale rule's bounds: a value above kPercentEvidence cannot be a
// reflectance factor 0..1; a file whose values stay at or below
// kFractionCeiling reads as 0..1.
constexpr double kPercentEvidence = 2.0;
constexpr double kFractionCeiling = 1.5;

// The grid points 400 nm and 700 nm, which every spectral file must measure.
constexpr int k400 = 2;
constexpr int k700 = 32;

int Wavelength(int point)
{
    return 380 + 10 * point;
}

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

const char* const kEmptyStandardInput = "standard input is empty (give a file name, or pipe a CGATS file in)";

// Standard input, copied in large blocks; returns the number of bytes.
std::size_t CopyStandardInput(const std::string& target)
{
    std::size_t copied = 0;
    const int out = open(target.c_str(), O_WRONLY | O_TRUNC);
    if (out < 0) {
        throw Cgats::Error(target, 0, "cannot write a temporary file: " + SystemReason());
    }
    std::vector<char> buffer(1 << 20);
    while (true) {
        const ssize_t got = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (got == 0) {
            break;
        }
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            const std::string reason = SystemReason();
            close(out);
            throw Cgats::Error("<stdin>", 0, "cannot read standard input: " + reason);
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = write(out, buffer.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0) {
                if (errno == EINTR) {
                    continue;
                }
                const std::string reason = SystemReason();
                close(out);
                throw Cgats::Error(target, 0, "cannot write a temporary file: " + reason);
            }
            done += put;
        }
        copied += static_cast<std::size_t>(got);
    }
    close(out);
    return copied;
}

std::string Where(const Sample& sample)
{
    return "sample " + sample.id + ", line " + std::to_string(sample.line);
}

} // namespace

MeasurementFile::MeasurementFile(const std::string& filePath) : path(filePath), name(filePath)
{
    if (filePath == "-") {
        name = "<stdin>";
        struct stat info {};
        const off_t offset = lseek(STDIN_FILENO, 0, SEEK_CUR);
        if (fstat(STDIN_FILENO, &info) == 0 && S_ISREG(info.st_mode) && offset >= 0) {
            // A file given as standard input is read where it stands, from
            // the point standard input has reached, as often as needed.
            path = "/dev/fd/0";
            start = offset;
            if (info.st_size <= offset) {
                throw Cgats::Error(name, 0, kEmptyStandardInput);
            }
            return;
        }
        // A pipe or a terminal is read once, into a temporary file.
        copy = std::make_unique<TempFile>();
        path = copy->Path();
        if (CopyStandardInput(path) == 0) {
            throw Cgats::Error(name, 0, kEmptyStandardInput);
        }
        return;
    }
    const int descriptor = open(path.c_str(), O_RDONLY);
    if (descriptor < 0) {
        throw Cgats::Error(name, 0, "cannot open the file: " + SystemReason());
    }
    struct stat info {};
    const bool directory = fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode);
    close(descriptor);
    if (directory) {
        throw Cgats::Error(name, 0, "is a directory, not a measurement file");
    }
}

void MeasurementFile::Open(std::ifstream& stream) const
{
    stream.open(path, std::ios::binary);
    if (!stream) {
        throw Cgats::Error(name, 0, "cannot open the file: " + SystemReason());
    }
    if (start > 0 && !stream.seekg(start)) {
        throw Cgats::Error(name, 0, "cannot read standard input from where it stands");
    }
}

std::string MeasurementFile::ScaleText() const
{
    // Emission keeps its own scale unless one was given.
    if (!decided || content == Content::Lab || (emission && divisor == 1.0)) {
        return std::string();
    }
    return divisor == 1.0 ? "0..1" : divisor == 100.0 ? "0..100" : "0.." + Shortest(divisor);
}

void MeasurementFile::Layout(const Cgats::Reader& reader)
{
    gridField.fill(-1);
    extension.clear();
    fields = reader.Fields();
    bool spectral = false;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const int wavelength = Cgats::SpectralWavelength(fields[i]);
        spectral = spectral || wavelength > 0;
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
    idField = reader.FieldIndex("SAMPLE_ID");
    nameField = reader.FieldIndex("SAMPLE_NAME");
    emission = reader.Keyword("MEAS_TYPE") == "EMISSION";
    labField = {reader.FieldIndex("LAB_L"), reader.FieldIndex("LAB_A"), reader.FieldIndex("LAB_B")};
    const bool lab = std::all_of(labField.begin(), labField.end(), [](int field) { return field >= 0; });
    if (!spectral && lab) {
        content = Content::Lab;
        return;
    }
    content = Content::Spectra;
    const std::string needed =
        " (fields such as SPECTRAL_NM400 ... SPECTRAL_NM700 are needed at least, or LAB_L, LAB_A and LAB_B without "
        "spectral fields)";
    for (int point = k400; point <= k700; ++point) {
        if (gridField[point] < 0) {
            throw Cgats::Error(name, reader.FormatLine(),
                               "no spectral field for " + std::to_string(Wavelength(point)) + " nm" + needed);
        }
    }
    // The measured range runs without a gap from `first` to `last`.
    first = k400;
    while (first > 0 && gridField[first - 1] >= 0) {
        --first;
    }
    last = k700;
    while (last < kGridPoints - 1 && gridField[last + 1] >= 0) {
        ++last;
    }
    for (int point = 0; point < kGridPoints; ++point) {
        if ((point < first || point > last) && gridField[point] >= 0) {
            const int gap = point < first ? first - 1 : last + 1;
            throw Cgats::Error(name, reader.FormatLine(),
                               "no spectral field for " + std::to_string(Wavelength(gap)) + " nm, though " +
                                   std::to_string(Wavelength(point)) + " nm is there" + needed);
        }
    }
    if (first > 0) {
        extension = std::to_string(Wavelength(0)) + ".." + std::to_string(Wavelength(first - 1)) + " nm from " +
                    std::to_string(Wavelength(first)) + " nm";
    }
    if (last < kGridPoints - 1) {
        extension += (extension.empty() ? "" : ", ") + std::to_string(Wavelength(last + 1)) + ".." +
                     std::to_string(Wavelength(kGridPoints - 1)) + " nm from " + std::to_string(Wavelength(last)) +
                     " nm";
    }
    if (!extension.empty() && !extensionNoted) {
        extensionNoted = true;
        Note(name + ": measured " + std::to_string(Wavelength(first)) + ".." + std::to_string(Wavelength(last)) +
             " nm; the rest of 380..730 nm takes the nearest measured value (" + extension + ")");
    }
}

void MeasurementFile::Identify(const Cgats::Row& row, std::size_t index, Sample& sample) const
{
    sample.line = row.line;
    // Assigned in place: the strings of the previous sample are reused.
    if (idField >= 0) {
        sample.id.assign(row.values[idField]);
    } else {
        sample.id = std::to_string(index);
    }
    if (nameField >= 0) {
        sample.name.assign(row.values[nameField]);
    } else {
        sample.name.clear();
    }
}

void MeasurementFile::Refuse(const Cgats::Row& row, int field, const char* what) const
{
    throw Cgats::Error(name, row.line,
                       "the value \"" + std::string(row.values[field]) + "\" of " + fields[field] + " " + what);
}

bool MeasurementFile::FitsAFloat(double magnitude) const
{
    return magnitude == 0.0 || (magnitude >= static_cast<double>(FLT_MIN) && magnitude <= static_cast<double>(FLT_MAX));
}

template <MeasurementFile::Reading reading>
void MeasurementFile::Gather(const Cgats::Row& row, Sample& sample, double& maximum, double& largest,
                             double& smallest) const
{
    for (int point = first; point <= last; ++point) {
        const int field = gridField[point];
        const std::string_view text = row.values[field];
        double number;
        float single = 0.0f;
        bool singleGood = false;
        const bool good = reading == Reading::Check ? Cgats::ParseNumber(text, number)
                                                    : Cgats::ParseNumber(text, number, single, singleGood);
        if (!good) {
            Refuse(row, field,
                   Cgats::IsWrittenNumber(text) ? "is out of range: it does not fit a double" : "is not a number");
        }
        maximum = number > maximum ? number : maximum;
        const double magnitude = std::fabs(number);
        largest = magnitude > largest ? magnitude : largest;
        if (magnitude < smallest && magnitude != 0.0) {
            smallest = magnitude;
        }
        if constexpr (reading == Reading::Compute) {
            // Straight into a float on the scale 0..1: one rounding of the
            // written decimal.
            sample.values[point] = divisor != 1.0 ? static_cast<float>(number / divisor)
                                   : singleGood   ? single
                                                  : static_cast<float>(number);
        } else if constexpr (reading == Reading::Keep) {
            sample.written[point] = number;
            sample.writtenSingle[point] = singleGood ? single : static_cast<float>(number);
        }
    }
}

bool MeasurementFile::Read(const Cgats::Row& row, Sample& sample, Reading reading, Evidence* evidence) const
{
    if (content == Content::Lab) {
        for (int axis = 0; axis < 3; ++axis) {
            const std::string_view text = row.values[labField[axis]];
            double number;
            float single;
            bool singleGood;
            const bool good = Cgats::ParseNumber(text, number, single, singleGood);
            if (!good && !Cgats::IsWrittenNumber(text)) {
                Refuse(row, labField[axis], "is not a number");
            }
            if (!good || !singleGood || !FitsAFloat(std::fabs(number))) {
                Refuse(row, labField[axis],
                       "is out of range: a float holds 0 and magnitudes from 1.2e-38 to 3.4e38");
            }
            sample.lab[axis] = single;
        }
        return true;
    }
    if (reading == Reading::Values) {
        // The scale is decided and the file checked: straight to the values.
        for (int point = first; point <= last; ++point) {
            const int field = gridField[point];
            const std::string_view text = row.values[field];
            float& value = sample.values[point];
            double number;
            const bool good = divisor == 1.0 ? Cgats::ParseNumber(text, value) : Cgats::ParseNumber(text, number);
            if (!good) {
                Refuse(row, field, "is not a number");
            }
            if (divisor != 1.0) {
                value = static_cast<float>(number / divisor);
            }
        }
        FillEnds(sample);
        return true;
    }
    // Gathered row by row, handed to the evidence once per sample: the
    // largest value (for the scale), the largest and the smallest non-zero
    // magnitude (for the range). Where they stand is looked up only when the
    // evidence takes them, which is seldom.
    double sampleMaximum = -HUGE_VAL;
    double largest = 0.0;
    double smallest = HUGE_VAL;
    switch (reading) {
    case Reading::Check:
        Gather<Reading::Check>(row, sample, sampleMaximum, largest, smallest);
        break;
    case Reading::Keep:
        Gather<Reading::Keep>(row, sample, sampleMaximum, largest, smallest);
        break;
    default:
        Gather<Reading::Compute>(row, sample, sampleMaximum, largest, smallest);
        break;
    }
    // Every magnitude lies between the smallest and the largest, and so
    // does every quotient by the divisor.
    const bool tiny = smallest != HUGE_VAL;
    const bool fits = FitsAFloat(largest / divisor) && (!tiny || FitsAFloat(smallest / divisor));
    if (reading == Reading::Compute) {
        FillEnds(sample);
    }
    if (evidence == nullptr) {
        return fits;
    }
    // The field of the first value of the row that meets `test`.
    const auto fieldWhere = [&](const auto& test) {
        for (int point = first; point <= last; ++point) {
            double number;
            if (Cgats::ParseNumber(row.values[gridField[point]], number) && test(number)) {
                return gridField[point];
            }
        }
        return gridField[first];
    };
    // Takes the row's magnitude `magnitude` into `extreme`.
    const auto take = [&](Extreme& extreme, double magnitude) {
        const int field = fieldWhere([&](double number) { return std::fabs(number) == magnitude; });
        extreme = {magnitude, std::string(row.values[field]), row.line, fields[field]};
    };
    if (largest > evidence->maximum.magnitude) {
        take(evidence->maximum, largest);
    }
    if (tiny && (evidence->minimum.magnitude == 0.0 || smallest < evidence->minimum.magnitude)) {
        take(evidence->minimum, smallest);
    }
    ++evidence->samples;
    if (sampleMaximum > kPercentEvidence) {
        if (evidence->above++ == 0) {
            const int field = fieldWhere([&](double number) { return number == sampleMaximum; });
            evidence->aboveAt = Where(sample) + ": " + std::string(row.values[field]) + " in " + fields[field];
        }
    } else if (evidence->belowAt.empty()) {
        evidence->belowAt = Where(sample);
    }
    if (evidence->largestAt.empty() || sampleMaximum > evidence->largest) {
        evidence->largest = sampleMaximum;
        evidence->largestAt = Where(sample);
    }
    return fits;
}

void MeasurementFile::Decide(Scale scale, const Evidence& evidence)
{
    decided = true;
    if (content == Content::Lab) {
        return;
    }
    if (!scale.automatic) {
        divisor = scale.divisor;
    } else if (emission) {
        // Relative spectral power keeps its own scale.
        divisor = 1.0;
    } else if (2 * evidence.above > evidence.samples) {
        divisor = 100.0;
        Note(name + ": reflectance read as 0..100: " + std::to_string(evidence.above) + " of " +
             std::to_string(evidence.samples) + " samples have values above 2 (" + scaleOption + " sets the scale)");
    } else if (evidence.above == 0 && evidence.largest <= kFractionCeiling) {
        divisor = 1.0;
        Note(name + ": reflectance read as 0..1: no value above 1.5 (" + scaleOption + " sets the scale)");
    } else if (evidence.above > 0) {
        throw Cgats::Error(name, 0,
                           "the reflectance scale is ambiguous: " + std::to_string(evidence.above) + " of " +
                               std::to_string(evidence.samples) +
                               (evidence.above == 1 ? " samples has" : " samples have") + " values above 2 (the first: " +
                               evidence.aboveAt + "), the others none (the first: " + evidence.belowAt +
                               "); give " + scaleOne + " if the file is 0..1 (then those values are errors or "
                               "fluorescence) or " + scaleHundred + " if it is 0..100");
    } else {
        throw Cgats::Error(name, 0,
                           "the reflectance scale is ambiguous: the largest value, " + Shortest(evidence.largest) +
                               " (" + evidence.largestAt +
                               "), is high for 0..1 and low for 0..100; give " + scaleOne + " or " + scaleHundred);
    }
    RefuseUnlessFitting(evidence.maximum, "it is beyond a float (3.4e38)");
    RefuseUnlessFitting(evidence.minimum, "it is too close to 0 for a float (1.2e-38); write 0");
}

void MeasurementFile::RefuseUnlessFitting(const Extreme& extreme, const char* why) const
{
    if (!FitsAFloat(extreme.magnitude / divisor)) {
        const std::string scale = ScaleText();
        throw Cgats::Error(name, extreme.line,
                           "the value \"" + extreme.text + "\" of " + extreme.field + " is out of range: " +
                               (scale.empty() ? std::string() : "on the scale " + scale + " ") + why);
    }
}

std::size_t MeasurementFile::Pass(const char* what, bool progress,
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

void MeasurementFile::Survey(const std::set<std::string>& wanted, Scale scale, bool progress)
{
    Sample sample;
    Evidence evidence;
    count = 0;
    kept.clear();
    const std::size_t formatLine =
        Pass("checking", progress, [&](const Cgats::Reader&, const Cgats::Row& row, std::size_t index) {
            count = index;
            Identify(row, index, sample);
            const bool keep = keepAll || wanted.count(sample.id) > 0;
            Read(row, sample, keep ? Reading::Keep : Reading::Check, &evidence);
            if (!keep) {
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
        });
    if (count == 0) {
        throw Cgats::Error(name, formatLine, "the file holds no samples");
    }
    for (const std::string& id : wanted) {
        if (kept.count(id) == 0) {
            throw Cgats::Error(name, 0, "no sample with SAMPLE_ID " + id);
        }
    }
    Decide(scale, evidence);
    if (content == Content::Spectra) {
        for (auto& [id, entry] : kept) {
            Rescale(entry);
        }
    }
}

void MeasurementFile::Rescale(Sample& sample) const
{
    // As Read computes them on this scale (Decide has checked the range).
    for (int point = first; point <= last; ++point) {
        sample.values[point] = divisor != 1.0 ? static_cast<float>(sample.written[point] / divisor)
                                              : sample.writtenSingle[point];
    }
    FillEnds(sample);
}

void MeasurementFile::FillEnds(Sample& sample) const
{
    for (int point = 0; point < first; ++point) {
        sample.values[point] = sample.values[first];
    }
    for (int point = last + 1; point < kGridPoints; ++point) {
        sample.values[point] = sample.values[last];
    }
}

void MeasurementFile::Stream(Scale scale, const std::function<void()>& prepare,
                             const std::function<void(const Sample&)>& function, const std::function<void()>& restart,
                             bool progress)
{
    // The scale the samples are computed on while the file is read: fixed,
    // or assumed from the first sample until the whole file has spoken.
    bool fixed = !scale.automatic;
    divisor = fixed ? scale.divisor : 1.0;
    decided = false;
    kept.clear();
    count = 0;
    bool prepared = false;
    std::exception_ptr preparation;
    std::exception_ptr failure;
    bool computing = true;
    // Computing stopped before the end without a failure of its own.
    bool incomplete = false;
    Evidence evidence;
    Sample sample;
    const std::size_t formatLine =
        Pass("computing", progress, [&](const Cgats::Reader&, const Cgats::Row& row, std::size_t index) {
            count = index;
            if (!prepared) {
                // After the header: Layout has run.
                prepared = true;
                if (emission || content == Content::Lab) {
                    fixed = true;
                    divisor = scale.automatic ? 1.0 : scale.divisor;
                } else if (!fixed) {
                    divisor = FirstMaximum(row) > kPercentEvidence ? 100.0 : 1.0;
                }
                try {
                    prepare();
                } catch (...) {
                    preparation = std::current_exception();
                    computing = false;
                }
            }
            Identify(row, index, sample);
            const bool fits = Read(row, sample, computing ? Reading::Compute : Reading::Check, &evidence);
            if (!computing) {
                return;
            }
            if (!fits || (!fixed && divisor == 1.0 && evidence.largest > kFractionCeiling)) {
                // The run fails on this scale, or the file is not 0..1: the
                // rest is only checked.
                computing = false;
                incomplete = true;
                return;
            }
            try {
                function(sample);
            } catch (...) {
                failure = std::current_exception();
                computing = false;
            }
        });
    if (count == 0) {
        throw Cgats::Error(name, formatLine, "the file holds no samples");
    }
    const double assumed = divisor;
    Decide(scale, evidence);
    if (preparation != nullptr) {
        std::rethrow_exception(preparation);
    }
    if (divisor == assumed && !incomplete) {
        // Every sample was computed on the right scale (or a failure of the
        // computing stopped it there).
        if (failure != nullptr) {
            std::rethrow_exception(failure);
        }
        return;
    }
    restart();
    ForEach(function, progress);
}

double MeasurementFile::FirstMaximum(const Cgats::Row& row) const
{
    double maximum = -HUGE_VAL;
    for (int point = first; point <= last; ++point) {
        double number;
        if (Cgats::ParseNumber(row.values[gridField[point]], number)) {
            maximum = std::max(maximum, number);
        }
    }
    return maximum;
}

const std::string& MeasurementFile::SpectralField(int point) const
{
    return fields[static_cast<std::size_t>(gridField[std::clamp(point, first, last)])];
}

const Sample* MeasurementFile::Find(const std::string& id) const
{
    const auto found = kept.find(id);
    return found == kept.end() ? nullptr : &found->second;
}

void MeasurementFile::ForEach(const std::function<void(const Sample&)>& function, bool progress)
{
    Sample sample;
    Pass("computing", progress, [&](const Cgats::Reader&, const Cgats::Row& row, std::size_t index) {
        Identify(row, index, sample);
        Read(row, sample, Reading::Values, nullptr);
        function(sample);
    });
}

} // namespace Qvi
