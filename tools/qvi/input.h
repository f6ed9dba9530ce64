#ifndef QVIMANAGER_TOOLS_QVI_INPUT_H
#define QVIMANAGER_TOOLS_QVI_INPUT_H

// Spectral input files for qvi: the 36 grid points 380..730 nm of every
// sample, read row by row from a CGATS file.

#include <array>
#include <exception>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cgats/cgats.h"
#include "tools/qvi/output.h"

namespace Qvi {

constexpr int kGridPoints = 36;

struct Sample {
    std::string id;
    std::string name;
    std::size_t line = 0;
    // Values as read, before scaling.
    std::array<double, kGridPoints> raw{};
    // The values on the reflectance scale 0..1 (or as read for emission).
    std::array<float, kGridPoints> values{};
};

// How reflectance is written: "auto" decides from the data (0..1 unless a
// value exceeds 2), or a fixed divisor 1 or 100.
struct Scale {
    bool automatic = true;
    double divisor = 1.0;
};

class SpectralFile {
public:
    // Opens the file ("-" is standard input, copied to a temporary file so
    // that it can be read twice).
    explicit SpectralFile(const std::string& path);

    // The first pass: checks the whole file (structure, grid fields,
    // numbers; unique sample ids when every sample is kept), finds the
    // scale, and keeps the samples named in `wanted` (by SAMPLE_ID; the
    // first of equal ids). Raises Cgats::Error.
    void Survey(const std::set<std::string>& wanted, Scale scale, bool progress);
    // The second pass: each sample in file order.
    void ForEach(const std::function<void(const Sample&)>& function, bool progress);
    // Survey with nothing wanted, `prepare`, then ForEach, in one reading of
    // the file where that gives the same outcome. `prepare` runs once the
    // header is read. A failure of `prepare` or of `function` is held back
    // until the whole file is checked, so that a broken row anywhere is
    // reported first, as after a survey. With the scale automatic the samples
    // are computed on 0..1 until a value above 2 settles it to percent; then
    // `restart` is called (it must forget every result so far) and the
    // computing begins again from the first sample. Files that start with
    // percent values settle at once.
    void Stream(Scale scale, const std::function<void()>& prepare, const std::function<void(const Sample&)>& function,
                const std::function<void()>& restart, bool progress);

    const std::string& Name() const { return name; }
    std::size_t Count() const { return count; }
    double Divisor() const { return divisor; }
    bool Emission() const { return emission; }
    bool HasNames() const { return nameField >= 0; }
    // A sample kept by Survey, or null.
    const Sample* Find(const std::string& id) const;
    // Makes Survey keep every sample (a reference file).
    void KeepAll() { keepAll = true; }
    const std::map<std::string, Sample>& Kept() const { return kept; }

private:
    void Open(std::ifstream& stream) const;
    // Reads the file once, calling `visit` for each row with its 1-based
    // index; returns the line of the data format's end.
    std::size_t Pass(const char* what, bool progress,
                     const std::function<void(const Cgats::Reader&, const Cgats::Row&, std::size_t)>& visit);
    // A written value on the file's scale; false for anything but a finite
    // number.
    bool Scaled(std::string_view text, float& value) const;
    void Layout(const Cgats::Reader& reader);
    // Reads the sample as Survey does (a value that is no number raises)
    // and on the current scale as ForEach does, where a value can still fail
    // (one that fits a double but not a float): that error is returned, not
    // raised.
    std::exception_ptr ReadOnce(const Cgats::Reader& reader, const Cgats::Row& row, std::size_t index,
                                Sample& sample) const;
    // Line, SAMPLE_ID (or the 1-based index) and SAMPLE_NAME of the row.
    void Identify(const Cgats::Row& row, std::size_t index, Sample& sample) const;
    Cgats::Error NotANumber(const Cgats::Reader& reader, const Cgats::Row& row, int point) const;
    // Reads the sample; with `scaled` also its values on the chosen scale.
    void Read(const Cgats::Reader& reader, const Cgats::Row& row, std::size_t index, Sample& sample,
              bool scaled) const;

    std::string path;
    std::string name;
    std::unique_ptr<TempFile> copy;
    std::array<int, kGridPoints> gridField{};
    int idField = -1;
    int nameField = -1;
    std::size_t count = 0;
    double divisor = 1.0;
    bool emission = false;
    bool keepAll = false;
    std::map<std::string, Sample> kept;
    std::map<std::string, std::vector<std::string>> keptTexts;
};

} // namespace Qvi

#endif
