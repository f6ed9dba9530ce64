// The CGATS reader on an arbitrary file: the header, every row, and the
// number parser on every value. A file the reader takes is written again
// with the writer and read back: the same identifier, fields and values.
// Refusals are Cgats::Error with a file name and a line.

#include "fuzz/fuzz_input.h"

#include "cgats/cgats.h"

#include <cmath>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Fuzz::Check;

void Numbers(std::string_view text)
{
    double value = 0.0;
    float single = 0.0f;
    double both = 0.0;
    float bothSingle = 0.0f;
    bool fits = false;
    const bool isDouble = Cgats::ParseNumber(text, value);
    const bool isSingle = Cgats::ParseNumber(text, single);
    const bool isBoth = Cgats::ParseNumber(text, both, bothSingle, fits);
    const std::string what = "\"" + std::string(text) + "\"";
    Check(isBoth == isDouble, "the two parsers disagree on " + what);
    if (isDouble) {
        Check(std::isfinite(value) && both == value, "double of " + what);
        Check(Cgats::IsWrittenNumber(text), "a number not written as one: " + what);
    }
    Check(!isSingle || isDouble, "a float but no double: " + what);
    if (isBoth && fits) {
        Check(isSingle && bothSingle == single && std::isfinite(single), "float of " + what);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::istringstream stream(text);
    std::vector<std::vector<std::string>> rows;
    std::string identifier;
    std::vector<std::string> fields;
    std::vector<std::pair<std::string, std::string>> keywords;
    try {
        Cgats::Reader reader(stream, "fuzz.cgats");
        identifier = reader.Identifier();
        fields = reader.Fields();
        keywords = reader.Keywords();
        for (const std::string& field : fields) {
            (void)Cgats::SpectralWavelength(field);
            Check(reader.FieldIndex(field) >= 0, "a field without an index");
        }
        Cgats::Row row;
        while (reader.Next(row)) {
            Check(row.values.size() == fields.size(), "a row of another width than the format");
            std::vector<std::string> values;
            for (std::string_view value : row.values) {
                Numbers(value);
                values.emplace_back(value);
            }
            rows.push_back(std::move(values));
            if (rows.size() > 2000) {
                break;
            }
        }
    } catch (const Cgats::Error& error) {
        Check(error.File() == "fuzz.cgats" && !error.Message().empty(), "a refusal without file or text");
        return 0;
    }

    // Written again and read back. The writer quotes text as Quote says,
    // so values are compared after Quote's changes (and without the quotes
    // a field name or a number never needs).
    if (identifier.empty() || fields.empty() || identifier.find_first_of(" \t\"#") != std::string::npos) {
        return 0;
    }
    for (const std::string& field : fields) {
        if (field.empty() || field.find_first_of(" \t\"#") != std::string::npos) {
            return 0;
        }
    }
    std::ostringstream written;
    Cgats::Writer writer(written);
    writer.Begin(identifier, {}, {}, fields, rows.size());
    for (const std::vector<std::string>& values : rows) {
        writer.WriteRow(values, std::vector<bool>(values.size(), true));
    }
    writer.End();
    std::istringstream again(written.str());
    try {
        Cgats::Reader reader(again, "again.cgats");
        Check(reader.Identifier() == identifier && reader.Fields() == fields, "header read back");
        Cgats::Row row;
        std::size_t index = 0;
        while (reader.Next(row)) {
            Check(index < rows.size(), "more rows read back");
            for (std::size_t i = 0; i < row.values.size(); ++i) {
                std::string expected = Cgats::Quote(rows[index][i]);
                expected = expected.substr(1, expected.size() - 2);
                Check(std::string(row.values[i]) == expected,
                      "value read back: \"" + std::string(row.values[i]) + "\" for \"" + expected + "\"");
            }
            ++index;
        }
        Check(index == rows.size(), "fewer rows read back");
    } catch (const Cgats::Error& error) {
        Fuzz::Broken("the writer's own file is refused: " + std::string(error.what()));
    }
    return 0;
}
