#ifndef QVIMANAGER_TESTS_TOOLS_QVI_HARNESS_H
#define QVIMANAGER_TESTS_TOOLS_QVI_HARNESS_H

// Running qvi as a separate process and reading what it writes: the
// helpers of the qvi test programs. Each test works in a scratch directory
// of its own (QviTest).

#include "cgats/cgats.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <pty.h>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>


namespace qvi_test {

namespace fs = std::filesystem;

using Strings = std::vector<std::string>;

inline const std::string kQvi = QVI_EXECUTABLE;
inline const std::string kSamples = QVIMANAGER_SAMPLE_DIR;
inline const std::string kExpected = QVI_EXPECTED_DIR;

inline const std::string kChart = "chart24_babelcolor_avg.cgats";
inline const std::string kOtherChart = "chart24_ohta.cgats";
inline const std::string kIlluminants = "illuminants_cie_spd.cgats";
inline const std::string kChips = "munsell_matt_1269.cgats";

// ------------------------------------------------------------ small helpers

inline std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

inline void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream file(path, std::ios::binary);
    file << text;
    ASSERT_TRUE(file.good()) << path;
}

inline bool StartsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

inline bool Contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

inline Strings Lines(const std::string& text)
{
    Strings lines;
    std::istringstream input(text);
    for (std::string line; std::getline(input, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The 1-based number of the first line that is `line`, or 0.
inline std::size_t LineNumber(const std::string& text, const std::string& line)
{
    const Strings lines = Lines(text);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        std::string candidate = lines[i];
        if (!candidate.empty() && candidate.back() == '\r') {
            candidate.pop_back();
        }
        if (candidate == line) {
            return i + 1;
        }
    }
    return 0;
}

inline double Number(const std::string& text)
{
    std::size_t used = 0;
    const double value = std::stod(text, &used);
    if (used != text.size()) {
        throw std::invalid_argument("not a number: " + text);
    }
    return value;
}

// CIE lightness of a luminance factor (Y / Yn).
inline double Lightness(double y)
{
    const double epsilon = 216.0 / 24389.0;
    const double f = y > epsilon ? std::cbrt(y) : (24389.0 / 27.0 * y + 16.0) / 116.0;
    return 116.0 * f - 16.0;
}

// ---------------------------------------------------------- running qvi

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome)
{
    return stream << "status " << outcome.status << "\n--- stdout ---\n"
                  << outcome.out.substr(0, 2000) << "\n--- stderr ---\n"
                  << outcome.err;
}

inline int TemporaryFile(std::string& path)
{
    std::string pattern = (fs::temp_directory_path() / "qvi-test-XXXXXX").string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int descriptor = mkstemp(name.data());
    path = name.data();
    return descriptor;
}

// The argument vector of execv for qvi and `arguments`; it points into
// `words`, which must live until execv.
inline std::vector<char*> QviArgv(Strings& words, const Strings& arguments)
{
    words = {kQvi};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    return argv;
}

// Sets ("NAME=value") or removes ("NAME") variables of this process: for a
// child, before it runs qvi.
inline void SetEnvironment(const Strings& environment)
{
    for (const std::string& variable : environment) {
        const std::size_t equals = variable.find('=');
        if (equals == std::string::npos) {
            unsetenv(variable.c_str());
        } else {
            setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
        }
    }
}

// Runs qvi with `arguments` in `directory`, standard input read from the
// file `input`; standard output and error are caught in files. `environment`
// sets ("NAME=value") or removes ("NAME") variables for the run.
inline Outcome Qvi(const Strings& arguments, const std::string& directory = kSamples,
                   const std::string& input = "/dev/null", const Strings& environment = {})
{
    Outcome outcome;
    std::string outPath;
    std::string errPath;
    const int out = TemporaryFile(outPath);
    const int err = TemporaryFile(errPath);
    const int in = open(input.c_str(), O_RDONLY);
    if (out < 0 || err < 0 || in < 0) {
        ADD_FAILURE() << "cannot prepare the files of a qvi run";
        return outcome;
    }
    Strings words;
    std::vector<char*> argv = QviArgv(words, arguments);
    const pid_t child = fork();
    if (child == 0) {
        SetEnvironment(environment);
        if (chdir(directory.c_str()) != 0 || dup2(in, STDIN_FILENO) < 0 || dup2(out, STDOUT_FILENO) < 0 ||
            dup2(err, STDERR_FILENO) < 0) {
            _exit(126);
        }
        execv(kQvi.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    if (child < 0) {
        ADD_FAILURE() << "fork failed";
    } else {
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    close(in);
    close(out);
    close(err);
    outcome.out = ReadFile(outPath);
    outcome.err = ReadFile(errPath);
    std::remove(outPath.c_str());
    std::remove(errPath.c_str());
    return outcome;
}

// The lines of a text that `drop` does not take, each with its line end.
template <typename Drop>
std::string LinesBut(const std::string& text, Drop drop)
{
    std::string rest;
    for (const std::string& line : Lines(text)) {
        if (!drop(line)) {
            rest += line + '\n';
        }
    }
    return rest;
}

// The lines of standard error that are not notes: what qvi says of how it
// read an input (its scale, its filled-in ends, the conditions of Lab
// values) is a note.
inline std::string BeyondNotes(const std::string& err)
{
    return LinesBut(err, [](const std::string& line) {
        return StartsWith(line, "qvi: ") &&
               (Contains(line, ": reflectance read as 0..") || Contains(line, ": measured ") ||
                Contains(line, ": Lab values taken as measured under "));
    });
}

// Standard error without the lines of a summary ("mean: 1.2"), which CSV
// runs write there.
inline std::string BeyondSummary(const std::string& err)
{
    return LinesBut(err, [](const std::string& line) {
        for (const char* key :
             {"samples", "mean", "maximum", "p95", "tolerance", "exceeding", "exceeding_ids", "result", "delta_e"}) {
            if (StartsWith(line, std::string(key) + ": ")) {
                return true;
            }
        }
        return false;
    });
}

// An output without its REFLECTANCE_SCALE keyword (and the keyword's
// declaration): the same results read from files of another scale.
inline std::string Unscaled(const std::string& text)
{
    return LinesBut(text, [](const std::string& line) { return Contains(line, "REFLECTANCE_SCALE"); });
}

// The summary lines of standard error (or of a summary file) by key.
inline std::map<std::string, std::string> SummaryLines(const std::string& text)
{
    std::map<std::string, std::string> summary;
    for (const std::string& line : Lines(text)) {
        const std::size_t colon = line.find(": ");
        if (colon != std::string::npos && !StartsWith(line, "qvi: ")) {
            summary[line.substr(0, colon)] = line.substr(colon + 2);
        }
    }
    return summary;
}

// A run that must succeed: status 0, nothing on standard error but notes.
#define EXPECT_SUCCESS(outcome)                                                                                        \
    do {                                                                                                               \
        const Outcome& run_ = (outcome);                                                                               \
        EXPECT_EQ(0, run_.status) << run_;                                                                             \
        EXPECT_EQ("", BeyondNotes(run_.err)) << run_;                                                                  \
    } while (false)

// A run that must succeed without a word: status 0, standard error empty.
#define EXPECT_SILENT_SUCCESS(outcome)                                                                                 \
    do {                                                                                                               \
        const Outcome& run_ = (outcome);                                                                               \
        EXPECT_EQ(0, run_.status) << run_;                                                                             \
        EXPECT_EQ("", run_.err) << run_;                                                                               \
    } while (false)

// A run that must fail with `status`: nothing on standard output, the reason
// on standard error.
#define EXPECT_FAILURE(outcome, expectedStatus)                                                                        \
    do {                                                                                                               \
        const Outcome& run_ = (outcome);                                                                               \
        EXPECT_EQ((expectedStatus), run_.status) << run_;                                                              \
        EXPECT_EQ("", run_.out) << run_;                                                                               \
        EXPECT_TRUE(StartsWith(run_.err, "qvi: ")) << run_;                                                            \
    } while (false)

// ----------------------------------------------------- reading the outputs

struct Table {
    std::string identifier;
    std::vector<std::pair<std::string, std::string>> keywords;
    Strings fields;
    std::vector<Strings> rows;

    std::string Keyword(const std::string& key) const
    {
        for (const auto& [k, v] : keywords) {
            if (k == key) {
                return v;
            }
        }
        ADD_FAILURE() << "no keyword " << key;
        return std::string();
    }
    bool HasKeyword(const std::string& key) const
    {
        return std::any_of(keywords.begin(), keywords.end(), [&](const auto& entry) { return entry.first == key; });
    }
    std::size_t Field(const std::string& field) const
    {
        const auto found = std::find(fields.begin(), fields.end(), field);
        if (found == fields.end()) {
            throw std::out_of_range("no field " + field);
        }
        return static_cast<std::size_t>(found - fields.begin());
    }
    const std::string& Value(std::size_t row, const std::string& field) const { return rows.at(row).at(Field(field)); }
    double At(std::size_t row, const std::string& field) const { return Number(Value(row, field)); }
    std::vector<double> Column(const std::string& field) const
    {
        std::vector<double> values;
        for (std::size_t r = 0; r < rows.size(); ++r) {
            values.push_back(At(r, field));
        }
        return values;
    }
    // The row of a SAMPLE_ID.
    std::size_t Row(const std::string& id) const
    {
        for (std::size_t r = 0; r < rows.size(); ++r) {
            if (Value(r, "SAMPLE_ID") == id) {
                return r;
            }
        }
        throw std::out_of_range("no SAMPLE_ID " + id);
    }
};

inline Table ReadCgats(std::istream& input, const std::string& name)
{
    Cgats::Reader reader(input, name);
    Table table;
    table.identifier = reader.Identifier();
    table.keywords = reader.Keywords();
    table.fields = reader.Fields();
    Cgats::Row row;
    while (reader.Next(row)) {
        table.rows.emplace_back(row.values.begin(), row.values.end());
    }
    return table;
}

// qvi's CGATS output, checked for its own consistency.
inline Table ParseCgats(const std::string& text)
{
    std::istringstream input(text);
    Table table = ReadCgats(input, "output");
    EXPECT_EQ("CGATS.17", table.identifier);
    EXPECT_EQ(std::to_string(table.rows.size()), table.Keyword("NUMBER_OF_SETS"));
    EXPECT_EQ(std::to_string(table.fields.size()), table.Keyword("NUMBER_OF_FIELDS"));
    EXPECT_EQ("qvi", table.Keyword("ORIGINATOR"));
    EXPECT_NE(std::string::npos, text.find("\nEND_DATA\n"));
    return table;
}

inline Table Sample(const std::string& file)
{
    std::ifstream input(kSamples + "/" + file, std::ios::binary);
    return ReadCgats(input, file);
}

// Comma-separated values: the lines of fields, and the "# key: value" lines.
struct Csv {
    std::vector<Strings> lines;
    std::vector<std::pair<std::string, std::string>> summary;
};

inline Csv ParseCsv(const std::string& text)
{
    Csv csv;
    for (const std::string& line : Lines(text)) {
        if (StartsWith(line, "# ")) {
            const std::size_t colon = line.find(": ");
            EXPECT_NE(std::string::npos, colon) << line;
            csv.summary.emplace_back(line.substr(2, colon - 2), line.substr(colon + 2));
            continue;
        }
        Strings fields(1);
        bool quoted = false;
        for (std::size_t i = 0; i < line.size(); ++i) {
            const char c = line[i];
            if (quoted) {
                if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
                    fields.back() += '"';
                    ++i;
                } else if (c == '"') {
                    quoted = false;
                } else {
                    fields.back() += c;
                }
            } else if (c == '"' && fields.back().empty()) {
                quoted = true;
            } else if (c == ',') {
                fields.emplace_back();
            } else {
                fields.back() += c;
            }
        }
        EXPECT_FALSE(quoted) << line;
        csv.lines.push_back(fields);
    }
    return csv;
}

// A strict JSON reader, enough to check the structure of qvi's output.
struct Json {
    enum class Kind { Null, Boolean, Number, String, Array, Object };
    Kind kind = Kind::Null;
    std::string text; // a string, or a number as written
    std::vector<Json> items;
    std::vector<std::pair<std::string, Json>> members;

    const Json& operator[](const std::string& key) const
    {
        for (const auto& [k, v] : members) {
            if (k == key) {
                return v;
            }
        }
        throw std::out_of_range("no member " + key);
    }
    bool Has(const std::string& key) const
    {
        return std::any_of(members.begin(), members.end(), [&](const auto& m) { return m.first == key; });
    }
};

class JsonParser {
public:
    explicit JsonParser(std::string_view input) : text(input) {}

    Json Document()
    {
        Json value = Value();
        Blanks();
        if (at != text.size()) {
            Fail("text after the value");
        }
        return value;
    }

private:
    [[noreturn]] void Fail(const std::string& what) const
    {
        throw std::runtime_error("JSON: " + what + " at offset " + std::to_string(at));
    }
    void Blanks()
    {
        while (at < text.size() && (text[at] == ' ' || text[at] == '\n' || text[at] == '\t' || text[at] == '\r')) {
            ++at;
        }
    }
    void Expect(char c)
    {
        Blanks();
        if (at >= text.size() || text[at] != c) {
            Fail(std::string("expected '") + c + "'");
        }
        ++at;
    }
    bool Word(std::string_view word)
    {
        if (text.substr(at, word.size()) == word) {
            at += word.size();
            return true;
        }
        return false;
    }
    bool Digit() const { return at < text.size() && text[at] >= '0' && text[at] <= '9'; }
    std::string String()
    {
        Expect('"');
        std::string result;
        while (true) {
            if (at >= text.size()) {
                Fail("unterminated string");
            }
            const char c = text[at++];
            if (c == '"') {
                return result;
            }
            if (static_cast<unsigned char>(c) < 0x20) {
                Fail("control character in a string");
            }
            if (c != '\\') {
                result += c;
                continue;
            }
            if (at >= text.size()) {
                Fail("unterminated escape");
            }
            const char e = text[at++];
            switch (e) {
            case '"': result += '"'; break;
            case '\\': result += '\\'; break;
            case '/': result += '/'; break;
            case 'b': result += '\b'; break;
            case 'f': result += '\f'; break;
            case 'n': result += '\n'; break;
            case 'r': result += '\r'; break;
            case 't': result += '\t'; break;
            case 'u': {
                if (at + 4 > text.size()) {
                    Fail("short \\u escape");
                }
                const unsigned long code = std::strtoul(std::string(text.substr(at, 4)).c_str(), nullptr, 16);
                at += 4;
                result += code < 0x80 ? static_cast<char>(code) : '?';
                break;
            }
            default: Fail("unknown escape");
            }
        }
    }
    Json NumberValue()
    {
        const std::size_t start = at;
        if (text[at] == '-') {
            ++at;
        }
        if (!Digit()) {
            Fail("bad number");
        }
        if (text[at] == '0') {
            ++at;
            if (Digit()) {
                Fail("leading zero");
            }
        } else {
            while (Digit()) {
                ++at;
            }
        }
        if (at < text.size() && text[at] == '.') {
            ++at;
            if (!Digit()) {
                Fail("no digit after the point");
            }
            while (Digit()) {
                ++at;
            }
        }
        if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
            ++at;
            if (at < text.size() && (text[at] == '+' || text[at] == '-')) {
                ++at;
            }
            if (!Digit()) {
                Fail("bad exponent");
            }
            while (Digit()) {
                ++at;
            }
        }
        Json value;
        value.kind = Json::Kind::Number;
        value.text = std::string(text.substr(start, at - start));
        return value;
    }
    Json Value()
    {
        Blanks();
        if (at >= text.size()) {
            Fail("no value");
        }
        Json value;
        const char c = text[at];
        if (c == '{') {
            ++at;
            value.kind = Json::Kind::Object;
            Blanks();
            if (at < text.size() && text[at] == '}') {
                ++at;
                return value;
            }
            while (true) {
                std::string key = String();
                Expect(':');
                value.members.emplace_back(std::move(key), Value());
                Blanks();
                if (at < text.size() && text[at] == ',') {
                    ++at;
                    continue;
                }
                Expect('}');
                return value;
            }
        }
        if (c == '[') {
            ++at;
            value.kind = Json::Kind::Array;
            Blanks();
            if (at < text.size() && text[at] == ']') {
                ++at;
                return value;
            }
            while (true) {
                value.items.push_back(Value());
                Blanks();
                if (at < text.size() && text[at] == ',') {
                    ++at;
                    continue;
                }
                Expect(']');
                return value;
            }
        }
        if (c == '"') {
            value.kind = Json::Kind::String;
            value.text = String();
            return value;
        }
        if (c == '-' || (c >= '0' && c <= '9')) {
            return NumberValue();
        }
        if (Word("true") || Word("false")) {
            value.kind = Json::Kind::Boolean;
            return value;
        }
        if (Word("null")) {
            return value;
        }
        Fail("unexpected character");
    }

    std::string_view text;
    std::size_t at = 0;
};

inline Json ParseJson(const std::string& text)
{
    return JsonParser(text).Document();
}

// A table line split into its cells (two or more blanks apart).
inline Strings Cells(const std::string& line)
{
    Strings cells;
    std::size_t i = line.find_first_not_of(' ');
    while (i != std::string::npos && i < line.size()) {
        std::size_t end = line.find("  ", i);
        if (end == std::string::npos) {
            end = line.size();
        }
        cells.push_back(line.substr(i, end - i));
        i = line.find_first_not_of(' ', end);
    }
    return cells;
}

// ------------------------------------------------ writing input files

// How a sample file is written anew.
struct Layout {
    std::string lineEnd = "\n";
    std::string separator = "\t";
    bool decimalComma = false;
    // The spelling of the spectral fields, e.g. "SPECTRAL_NM_" for SPECTRAL_NM_380.
    std::string spectralPrefix = "SPECTRAL_NM";
    // Extra bands outside the grid (360, 370, 740 ... 780) and between grid
    // points (385), with a value far off the scale.
    bool extraBands = false;
    // The fields in another order: SAMPLE_NAME first, the bands backwards,
    // then SAMPLE_ID.
    bool otherOrder = false;
    // Every spectral value times 100, the decimal point moved.
    bool percent = false;
};

// A decimal string times 100, exactly: the point moves two places.
inline std::string TimesHundred(const std::string& text)
{
    const std::size_t point = text.find('.');
    std::string whole = point == std::string::npos ? text : text.substr(0, point);
    std::string fraction = point == std::string::npos ? std::string() : text.substr(point + 1);
    while (fraction.size() < 2) {
        fraction += '0';
    }
    whole += fraction.substr(0, 2);
    fraction = fraction.substr(2);
    const std::size_t first = whole.find_first_not_of('0');
    whole = first == std::string::npos ? "0" : whole.substr(first);
    return fraction.empty() ? whole : whole + "." + fraction;
}

inline std::string Rewrite(const Table& table, const Layout& layout)
{
    struct Out {
        std::string name;
        std::function<std::string(const Strings&)> value;
    };
    std::vector<Out> columns;
    std::vector<Out> spectral;
    for (std::size_t i = 0; i < table.fields.size(); ++i) {
        const std::string& field = table.fields[i];
        const int wavelength = Cgats::SpectralWavelength(field);
        if (wavelength == 0) {
            if (field == "SAMPLE_NAME") {
                columns.push_back({field, [i](const Strings& row) { return Cgats::Quote(row[i]); }});
            } else {
                columns.push_back({field, [i](const Strings& row) { return row[i]; }});
            }
            continue;
        }
        spectral.push_back({layout.spectralPrefix + std::to_string(wavelength), [i, layout](const Strings& row) {
                                std::string value = layout.percent ? TimesHundred(row[i]) : row[i];
                                if (layout.decimalComma) {
                                    std::replace(value.begin(), value.end(), '.', ',');
                                }
                                return value;
                            }});
    }
    if (layout.extraBands) {
        const std::string far = layout.decimalComma ? "9,5" : "9.5";
        for (int wavelength : {360, 370}) {
            spectral.insert(spectral.begin(), {layout.spectralPrefix + std::to_string(wavelength),
                                               [far](const Strings&) { return far; }});
        }
        for (int wavelength : {740, 750, 760, 770, 780, 385}) {
            spectral.push_back(
                {layout.spectralPrefix + std::to_string(wavelength), [far](const Strings&) { return far; }});
        }
    }
    if (layout.otherOrder) {
        std::reverse(spectral.begin(), spectral.end());
        // SAMPLE_NAME, then the bands, then SAMPLE_ID and the rest.
        std::vector<Out> reordered;
        for (const Out& column : columns) {
            if (column.name == "SAMPLE_NAME") {
                reordered.push_back(column);
            }
        }
        reordered.insert(reordered.end(), spectral.begin(), spectral.end());
        for (const Out& column : columns) {
            if (column.name != "SAMPLE_NAME") {
                reordered.push_back(column);
            }
        }
        columns = reordered;
    } else {
        columns.insert(columns.end(), spectral.begin(), spectral.end());
    }
    const std::string& end = layout.lineEnd;
    const std::string& sep = layout.separator;
    std::string text = table.identifier + end;
    text += "# written anew by a test" + end;
    for (const auto& [key, value] : table.keywords) {
        if (key == "NUMBER_OF_FIELDS" || key == "NUMBER_OF_SETS") {
            continue;
        }
        text += key + sep + Cgats::Quote(value) + end;
    }
    text += "NUMBER_OF_FIELDS" + sep + std::to_string(columns.size()) + end;
    text += "BEGIN_DATA_FORMAT" + end;
    for (std::size_t c = 0; c < columns.size(); ++c) {
        text += (c > 0 ? sep : std::string()) + columns[c].name;
    }
    text += end + "END_DATA_FORMAT" + end;
    text += "NUMBER_OF_SETS" + sep + std::to_string(table.rows.size()) + end;
    text += "BEGIN_DATA" + end;
    for (const Strings& row : table.rows) {
        for (std::size_t c = 0; c < columns.size(); ++c) {
            text += (c > 0 ? sep : std::string()) + columns[c].value(row);
        }
        text += end;
    }
    text += "END_DATA" + end;
    return text;
}

// A file of spectra, each given as one value for all 36 bands.
inline std::string FlatFile(const std::vector<std::pair<std::string, std::string>>& samples)
{
    std::string text = "CGATS.17\nORIGINATOR \"test\"\nBEGIN_DATA_FORMAT\nSAMPLE_ID";
    for (int wavelength = 380; wavelength <= 730; wavelength += 10) {
        text += " SPECTRAL_NM" + std::to_string(wavelength);
    }
    text += "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    for (const auto& [id, value] : samples) {
        text += id;
        for (int band = 0; band < 36; ++band) {
            text += ' ' + value;
        }
        text += '\n';
    }
    return text + "END_DATA\n";
}

// The file with line `number` (1-based) replaced.
inline std::string ReplaceLine(const std::string& text, std::size_t number, const std::string& line)
{
    Strings lines = Lines(text);
    lines.at(number - 1) = line;
    std::string result;
    for (const std::string& l : lines) {
        result += l + '\n';
    }
    return result;
}

// --------------------------------------------------------------- fixture

class QviTest : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "qvi-test-dir-XXXXXX").string();
        std::vector<char> name(pattern.begin(), pattern.end());
        name.push_back('\0');
        ASSERT_NE(nullptr, mkdtemp(name.data()));
        dir = name.data();
    }
    void TearDown() override
    {
        std::error_code ignored;
        fs::remove_all(dir, ignored);
    }
    // Writes a file into the scratch directory and returns its full path.
    std::string Put(const std::string& name, const std::string& text) const
    {
        const std::string path = dir + "/" + name;
        WriteFile(path, text);
        return path;
    }
    std::string Path(const std::string& name) const { return dir + "/" + name; }

    std::string dir;
};

// Runs qvi with standard error on a pseudo terminal (standard output to a
// file, standard input empty); `err` is what the terminal received.
inline Outcome QviOnTerminal(const Strings& arguments, const std::string& directory)
{
    Outcome outcome;
    int master = -1;
    int slave = -1;
    std::string outPath;
    const int out = TemporaryFile(outPath);
    const int in = open("/dev/null", O_RDONLY);
    if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0 || out < 0 || in < 0) {
        ADD_FAILURE() << "cannot prepare the terminal of a qvi run";
        return outcome;
    }
    Strings words;
    std::vector<char*> argv = QviArgv(words, arguments);
    const pid_t child = fork();
    if (child == 0) {
        close(master);
        if (chdir(directory.c_str()) != 0 || dup2(in, STDIN_FILENO) < 0 || dup2(out, STDOUT_FILENO) < 0 ||
            dup2(slave, STDERR_FILENO) < 0) {
            _exit(126);
        }
        execv(kQvi.c_str(), argv.data());
        _exit(127);
    }
    close(slave);
    // Read while the child runs, so that it never waits on a full terminal;
    // the read fails (EIO) once the child has closed its side.
    char buffer[4096];
    while (true) {
        const ssize_t got = read(master, buffer, sizeof buffer);
        if (got > 0) {
            outcome.err.append(buffer, static_cast<std::size_t>(got));
        } else if (got < 0 && errno == EINTR) {
            continue;
        } else {
            break;
        }
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    close(master);
    close(in);
    close(out);
    outcome.out = ReadFile(outPath);
    std::remove(outPath.c_str());
    return outcome;
}

// A sample's full path.
inline std::string SamplePath(const std::string& file)
{
    return kSamples + "/" + file;
}

} // namespace qvi_test

#endif
