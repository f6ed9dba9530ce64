#ifndef QVIMANAGER_TOOLS_QVI_INPUT_H
#define QVIMANAGER_TOOLS_QVI_INPUT_H

// Measurement files for qvi, read row by row from CGATS: spectra on the 36
// grid points 380..730 nm, or Lab values.
//
// Spectra. The fields of the 10 nm points are used (5 nm and 1 nm files
// keep their 10 nm points). A file must measure at least 400..700 nm
// without a gap; 380..390 nm and 710..730 nm, where many instruments stop,
// take the nearest measured value, and the file says so (Extension()).
//
// Reflectance scale. Reflectance is written as 0..1 or as 0..100. Unless the
// scale is given, it is decided on the whole file: 0..100 when most samples
// (more than half) have a value above 2, 0..1 when no value exceeds 1.5.
// Anything else (a 0..1 file with an outlier above 2, a file of values up to
// 2 only) is ambiguous and raises an error that asks for --scale: the scale
// is never guessed. Emission files (MEAS_TYPE EMISSION) keep their own
// scale.
//
// Range. Every value, on its scale, must be a float: at most 3.4e38 in
// magnitude, and 0 or at least 1.2e-38. Anything beyond is refused as "out
// of range" with file, line and field.
//
// Lab files hold LAB_L, LAB_A and LAB_B and no spectral fields.

#include <array>
#include <exception>
#include <fstream>
#include <functional>
#include <ios>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cgats/cgats.h"
#include "tools/qvi/output.h"

namespace Qvi {

constexpr int kGridPoints = 36;

struct Sample {
    std::string id;
    std::string name;
    std::size_t line = 0;
    // Spectra: the values on the reflectance scale 0..1 (or as read for
    // emission), the unmeasured ends filled in.
    std::array<float, kGridPoints> values{};
    // Lab files: L*, a*, b*.
    std::array<float, 3> lab{};
    // Spectra read before the scale is known (Survey): each value as
    // written, as a double and as the float nearest to it, so that the
    // values can be scaled without reading the text again.
    std::array<double, kGridPoints> written{};
    std::array<float, kGridPoints> writtenSingle{};
};

// How reflectance is written: decided from the data, or a fixed divisor
// 1 or 100.
struct Scale {
    bool automatic = true;
    double divisor = 1.0;
};

class MeasurementFile {
public:
    enum class Content { Spectra, Lab };

    // Opens the file. "-" is standard input: a file given as standard input
    // is read in place; a pipe is copied to a temporary file, so that it can
    // be read twice. A file that cannot be opened, a directory and an empty
    // standard input raise Cgats::Error.
    explicit MeasurementFile(const std::string& path);

    // The first pass: checks the whole file (structure, fields, numbers;
    // unique sample ids when every sample is kept), decides the scale, and
    // keeps the samples named in `wanted` (by SAMPLE_ID; the first of equal
    // ids). Raises Cgats::Error.
    void Survey(const std::set<std::string>& wanted, Scale scale, bool progress);
    // The second pass: each sample in file order.
    void ForEach(const std::function<void(const Sample&)>& function, bool progress);
    // Survey with nothing wanted, `prepare`, then ForEach, in one reading of
    // the file where that gives the same outcome. `prepare` runs once the
    // header is read. A failure of `prepare` or of `function` is held back
    // until the whole file is checked, so that a broken row anywhere, an
    // ambiguous scale or a value out of range is reported first, as after a
    // survey. An undecided scale is taken from the first sample (0..100 if
    // it has a value above 2); when the whole file decides otherwise,
    // `restart` is called (it must forget every result so far) and every
    // sample is computed again.
    void Stream(Scale scale, const std::function<void()>& prepare, const std::function<void(const Sample&)>& function,
                const std::function<void()>& restart, bool progress);

    const std::string& Name() const { return name; }
    Content Holds() const { return content; }
    std::size_t Count() const { return count; }
    bool Emission() const { return emission; }
    bool HasNames() const { return nameField >= 0; }
    // "0..1" or "0..100" once the scale is known; "" for emission and Lab.
    std::string ScaleText() const;
    // How the unmeasured ends were filled, e.g. "380..390 nm from 400 nm,
    // 710..730 nm from 700 nm"; "" when the file covers 380..730 nm.
    const std::string& Extension() const { return extension; }
    // The name of the field that gives grid point `point` (for a filled-in
    // end, the field of the nearest measured point), and of L*, a*, b*.
    const std::string& SpectralField(int point) const;
    const std::string& LabField(int axis) const { return fields[static_cast<std::size_t>(labField[axis])]; }
    // A sample kept by Survey, or null.
    const Sample* Find(const std::string& id) const;
    // Makes Survey keep every sample (a reference file).
    void KeepAll() { keepAll = true; }
    // How the messages about the scale name the way to give it: the
    // option alone and with each divisor ("--scale", "--scale 1",
    // "--scale 100" unless set).
    void NameScaleOption(std::string option, std::string one, std::string hundred)
    {
        scaleOption = std::move(option);
        scaleOne = std::move(one);
        scaleHundred = std::move(hundred);
    }
    const std::map<std::string, Sample>& Kept() const { return kept; }

private:
    // What the scale rule looks at, gathered row by row.
    // A magnitude of the file with the value as written and where it is
    // (magnitude 0: none yet).
    struct Extreme {
        double magnitude = 0.0;
        std::string text;
        std::size_t line = 0;
        std::string field;
    };
    struct Evidence {
        std::size_t samples = 0;
        // Samples with a value above 2, and the first of them.
        std::size_t above = 0;
        std::string aboveAt;
        // The first sample without one.
        std::string belowAt;
        // The largest value and where it is.
        double largest = 0.0;
        std::string largestAt;
        // The largest and the smallest non-zero magnitude.
        Extreme maximum;
        Extreme minimum;
    };

    void Open(std::ifstream& stream) const;
    // Reads the file once, calling `visit` for each row with its 1-based
    // index; returns the line of the data format's end.
    std::size_t Pass(const char* what, bool progress,
                     const std::function<void(const Cgats::Reader&, const Cgats::Row&, std::size_t)>& visit);
    void Layout(const Cgats::Reader& reader);
    // Line, SAMPLE_ID (or the 1-based index) and SAMPLE_NAME of the row.
    void Identify(const Cgats::Row& row, std::size_t index, Sample& sample) const;
    [[noreturn]] void Refuse(const Cgats::Row& row, int field, const char* what) const;
    // What Read makes of a row's spectral values.
    enum class Reading {
        Check,   // checks them
        Keep,    // checks them and keeps them as written (Sample::written)
        Compute, // checks them and puts them on the scale `divisor`
        Values   // puts them on the decided scale, in a file checked already
    };
    // Reads a row identified already: its Lab values, or its spectral values
    // as `reading` says; every number is checked, and the evidence gathered
    // when `evidence` is given. Returns false when a value does not fit a
    // float on the scale `divisor`.
    bool Read(const Cgats::Row& row, Sample& sample, Reading reading, Evidence* evidence) const;
    // Read's walk through the spectral values of a row, one for each kind
    // of reading but Values: the largest value, the largest and the
    // smallest non-zero magnitude.
    template <Reading reading>
    void Gather(const Cgats::Row& row, Sample& sample, double& maximum, double& largest, double& smallest) const;
    // The scale of the file from the evidence (or as given); raises when it
    // is ambiguous or a value is out of range on it. Tells the decision.
    void Decide(Scale scale, const Evidence& evidence);
    bool FitsAFloat(double magnitude) const;
    // Raises "out of range" for `extreme` when it does not fit a float on
    // the decided scale; `why` says how it fails.
    void RefuseUnlessFitting(const Extreme& extreme, const char* why) const;
    // A surveyed sample's values on the scale now decided.
    void Rescale(Sample& sample) const;
    // The unmeasured ends: the nearest measured value.
    void FillEnds(Sample& sample) const;
    // The largest number among a spectral row's values (those that are
    // numbers).
    double FirstMaximum(const Cgats::Row& row) const;

    std::string path;
    std::string name;
    std::unique_ptr<TempFile> copy;
    // Where reading starts: a file given as standard input may have been
    // read in part before qvi started.
    std::streamoff start = 0;
    Content content = Content::Spectra;
    std::vector<std::string> fields;
    // The field of each grid point (-1: filled from `first` or `last`).
    std::array<int, kGridPoints> gridField{};
    int first = 0;
    int last = kGridPoints - 1;
    std::array<int, 3> labField{};
    std::string extension;
    bool extensionNoted = false;
    int idField = -1;
    int nameField = -1;
    std::size_t count = 0;
    double divisor = 1.0;
    bool decided = false;
    bool emission = false;
    bool keepAll = false;
    std::map<std::string, Sample> kept;
    std::string scaleOption = "--scale";
    std::string scaleOne = "--scale 1";
    std::string scaleHundred = "--scale 100";
};

} // namespace Qvi

#endif
