#include "cgats/cgats.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <system_error>

namespace Cgats {

namespace {

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

std::string Upper(std::string_view text)
{
    std::string result(text);
    for (char& c : result) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return result;
}

// The keywords a CGATS.17 file may use without declaring them.
const char* const kStandardKeywords[] = {
    "ORIGINATOR", "FILE_DESCRIPTOR", "DESCRIPTOR", "CREATED", "MANUFACTURER", "MANUFACTURE", "PROD_DATE",
    "SERIAL", "MATERIAL", "INSTRUMENTATION", "MEASUREMENT_SOURCE", "PRINT_CONDITIONS", "SAMPLE_BACKING",
    "CHISQ_DOF", "WEIGHTING_FUNCTION", "COMPUTATIONAL_PARAMETER", "TARGET_TYPE", "COLORANT"};

bool IsStandardKeyword(const std::string& key)
{
    return std::any_of(std::begin(kStandardKeywords), std::end(kStandardKeywords),
                       [&](const char* standard) { return key == standard; });
}

// Powers of ten that are exact in a float (5^10 < 2^24) and in a double
// (5^22 < 2^53).
constexpr float kFloatPowers[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f, 1e6f, 1e7f, 1e8f, 1e9f, 1e10f};
constexpr double kDoublePowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The digits of a plain decimal, [+-]digits[(.|,)digits], as an integer and
// the number of digits behind the separator. False for any other form
// (exponents, a lone sign or separator, more than 19 digits) and for a
// leading "+-"; the full parse decides those.
bool PlainDecimal(std::string_view text, std::uint64_t& digits, int& fraction, bool& negative)
{
    std::size_t i = 0;
    const std::size_t n = text.size();
    negative = false;
    if (i < n && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    digits = 0;
    int count = 0;
    const std::size_t integerStart = i;
    while (i < n && text[i] >= '0' && text[i] <= '9') {
        digits = digits * 10 + static_cast<unsigned>(text[i] - '0');
        ++count;
        ++i;
    }
    if (i == integerStart) {
        return false;
    }
    fraction = 0;
    if (i < n && (text[i] == '.' || text[i] == ',')) {
        ++i;
        const std::size_t fractionStart = i;
        while (i < n && text[i] >= '0' && text[i] <= '9') {
            digits = digits * 10 + static_cast<unsigned>(text[i] - '0');
            ++count;
            ++i;
        }
        fraction = static_cast<int>(i - fractionStart);
        if (fraction == 0) {
            return false;
        }
    }
    return i == n && count <= 19;
}

// Where digits and power of ten are exact: up to 2^24 and 10^10 in a float,
// 2^53 and 10^22 in a double.
template <typename T>
struct ExactRange;
template <>
struct ExactRange<float> {
    static constexpr std::uint64_t digits = std::uint64_t{1} << 24;
    static constexpr const float* powers = kFloatPowers;
    static constexpr int fraction = static_cast<int>(std::size(kFloatPowers)) - 1;
};
template <>
struct ExactRange<double> {
    static constexpr std::uint64_t digits = std::uint64_t{1} << 53;
    static constexpr const double* powers = kDoublePowers;
    static constexpr int fraction = static_cast<int>(std::size(kDoublePowers)) - 1;
};

// The correctly rounded value of a plain decimal whose digits and power of
// ten are both exact in the type: one IEEE division rounds once, so the
// result is the nearest value, as from_chars gives it. False where that
// does not hold; the full parse takes over.
template <typename T>
bool Exact(std::uint64_t digits, int fraction, bool negative, T& value)
{
    if (digits > ExactRange<T>::digits || fraction > ExactRange<T>::fraction) {
        return false;
    }
    const T magnitude = static_cast<T>(digits) / ExactRange<T>::powers[fraction];
    value = negative ? -magnitude : magnitude;
    return true;
}

template <typename T>
bool FastPath(std::string_view text, T& value)
{
    std::uint64_t digits;
    int fraction;
    bool negative;
    return PlainDecimal(text, digits, fraction, negative) && Exact(digits, fraction, negative, value);
}

template <typename T>
bool ParseAs(std::string_view text, T& value)
{
    if (FastPath(text, value)) {
        return true;
    }
    if (text.empty() || text.size() > 64) {
        return false;
    }
    char scratch[65];
    std::size_t length = 0;
    std::size_t start = 0;
    if (text[0] == '+') {
        start = 1;
    }
    for (std::size_t i = start; i < text.size(); ++i) {
        scratch[length++] = text[i] == ',' ? '.' : text[i];
    }
    if (length == 0) {
        return false;
    }
    // from_chars reads no leading "+" and no second sign.
    if (scratch[0] == '+' || (scratch[0] == '-' && start == 1)) {
        return false;
    }
    T parsed{};
    const auto [end, error] = std::from_chars(scratch, scratch + length, parsed, std::chars_format::general);
    if (error != std::errc() || end != scratch + length || !std::isfinite(parsed)) {
        return false;
    }
    value = parsed;
    return true;
}

} // namespace

namespace {

// "file:line: message", or "file: message" for line 0. Built by appending:
// g++ 12 at -O3 warns falsely (-Wrestrict) on a chain of operator+ here.
std::string Located(const std::string& file, std::size_t line, const std::string& message)
{
    std::string text = file;
    if (line > 0) {
        text.append(":").append(std::to_string(line));
    }
    text.append(": ").append(message);
    return text;
}

} // namespace

Error::Error(const std::string& fileName, std::size_t lineNumber, const std::string& text)
    : std::runtime_error(Located(fileName, lineNumber, text)),
      file(fileName),
      line(lineNumber),
      message(text)
{
}

void Tokenize(std::string_view line, std::vector<std::string_view>& tokens)
{
    tokens.clear();
    const char* p = line.data();
    const char* const end = p + line.size();
    while (true) {
        while (p != end && IsBlank(*p)) {
            ++p;
        }
        if (p == end || *p == '#') {
            break;
        }
        if (*p == '"') {
            ++p;
            const auto* close = static_cast<const char*>(std::memchr(p, '"', static_cast<std::size_t>(end - p)));
            if (close == nullptr) {
                // An unclosed quote runs to the end of the line.
                tokens.emplace_back(p, static_cast<std::size_t>(end - p));
                break;
            }
            tokens.emplace_back(p, static_cast<std::size_t>(close - p));
            p = close + 1;
            continue;
        }
        const char* const start = p;
        while (p != end && !IsBlank(*p)) {
            ++p;
        }
        tokens.emplace_back(start, static_cast<std::size_t>(p - start));
    }
}

bool ParseNumber(std::string_view text, double& value)
{
    return ParseAs(text, value);
}

bool ParseNumber(std::string_view text, float& value)
{
    return ParseAs(text, value);
}

bool ParseNumber(std::string_view text, double& value, float& singleValue, bool& single)
{
    std::uint64_t digits;
    int fraction;
    bool negative;
    if (PlainDecimal(text, digits, fraction, negative) && Exact(digits, fraction, negative, value)) {
        single = Exact(digits, fraction, negative, singleValue) || ParseAs(text, singleValue);
        return true;
    }
    if (!ParseAs(text, value)) {
        single = false;
        return false;
    }
    single = ParseAs(text, singleValue);
    return true;
}

bool IsWrittenNumber(std::string_view text)
{
    std::size_t i = 0;
    const std::size_t n = text.size();
    const auto digits = [&] {
        const std::size_t start = i;
        while (i < n && text[i] >= '0' && text[i] <= '9') {
            ++i;
        }
        return i - start;
    };
    if (i < n && (text[i] == '+' || text[i] == '-')) {
        ++i;
    }
    std::size_t count = digits();
    if (i < n && (text[i] == '.' || text[i] == ',')) {
        ++i;
        count += digits();
    }
    if (count == 0) {
        return false;
    }
    if (i < n && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < n && (text[i] == '+' || text[i] == '-')) {
            ++i;
        }
        if (digits() == 0) {
            return false;
        }
    }
    return i == n;
}

int SpectralWavelength(std::string_view field)
{
    std::string name = Upper(field);
    std::string_view rest(name);
    if (rest.substr(0, 8) == "SPECTRAL") {
        rest.remove_prefix(8);
        if (!rest.empty() && rest[0] == '_') {
            rest.remove_prefix(1);
        }
    }
    if (rest.substr(0, 2) == "NM") {
        rest.remove_prefix(2);
        if (!rest.empty() && rest[0] == '_') {
            rest.remove_prefix(1);
        }
    } else if (rest.size() == name.size()) {
        // Neither "SPECTRAL" nor "NM": not a spectral field.
        return 0;
    }
    if (rest.empty() || rest.size() > 4) {
        return 0;
    }
    int wavelength = 0;
    for (char c : rest) {
        if (c < '0' || c > '9') {
            return 0;
        }
        wavelength = wavelength * 10 + (c - '0');
    }
    return wavelength;
}

Reader::Reader(std::istream& in, std::string fileName) : input(in), name(std::move(fileName))
{
    std::vector<std::string_view> tokens;
    // The identifier: the first line that is not blank or a comment.
    while (true) {
        if (!ReadLine()) {
            Fail("not a CGATS file: it is empty");
        }
        Tokenize(buffer, tokens);
        if (!tokens.empty()) {
            break;
        }
    }
    const std::string_view first = tokens[0];
    const bool printable = std::all_of(first.begin(), first.end(), [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return u > 32 && u < 127;
    });
    if (!printable || tokens.size() > 2 || first == "BEGIN_DATA" || first == "BEGIN_DATA_FORMAT") {
        Fail("not a CGATS file: the first line does not name the file format");
    }
    identifier = std::string(first);

    bool inFormat = false;
    bool formatSeen = false;
    while (true) {
        if (!ReadLine()) {
            if (!formatSeen) {
                Fail("not a CGATS file: no BEGIN_DATA_FORMAT");
            }
            Fail("no BEGIN_DATA");
        }
        Tokenize(buffer, tokens);
        if (tokens.empty()) {
            continue;
        }
        if (inFormat) {
            for (std::string_view token : tokens) {
                if (token == "END_DATA_FORMAT") {
                    inFormat = false;
                    formatLine = lineNumber;
                    break;
                }
                fields.emplace_back(token);
            }
            continue;
        }
        const std::string_view key = tokens[0];
        if (key == "BEGIN_DATA_FORMAT") {
            if (formatSeen) {
                Fail("a second BEGIN_DATA_FORMAT");
            }
            formatSeen = true;
            inFormat = true;
            for (std::size_t i = 1; i < tokens.size(); ++i) {
                if (tokens[i] == "END_DATA_FORMAT") {
                    inFormat = false;
                    formatLine = lineNumber;
                    break;
                }
                fields.emplace_back(tokens[i]);
            }
            continue;
        }
        if (key == "BEGIN_DATA") {
            if (!formatSeen) {
                Fail("BEGIN_DATA before BEGIN_DATA_FORMAT");
            }
            if (fields.empty()) {
                Fail("the data format names no fields");
            }
            break;
        }
        if (key == "END_DATA_FORMAT" || key == "END_DATA") {
            Fail(std::string(key) + " without its BEGIN");
        }
        std::string value;
        for (std::size_t i = 1; i < tokens.size(); ++i) {
            if (i > 1) {
                value += ' ';
            }
            value += tokens[i];
        }
        keywords.emplace_back(std::string(key), value);
    }
}

std::string Reader::Keyword(std::string_view key) const
{
    for (const auto& [k, v] : keywords) {
        if (k == key) {
            return v;
        }
    }
    return std::string();
}

int Reader::FieldIndex(std::string_view field) const
{
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i] == field) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

bool Reader::ReadLine()
{
    if (!std::getline(input, buffer)) {
        return false;
    }
    ++lineNumber;
    if (lineNumber == 1 && buffer.compare(0, 3, "\xEF\xBB\xBF") == 0) {
        // A UTF-8 byte-order mark, as some editors write it.
        buffer.erase(0, 3);
    }
    if (!buffer.empty() && buffer.back() == '\r') {
        buffer.pop_back();
    }
    return true;
}

void Reader::Fail(const std::string& message) const
{
    throw Error(name, lineNumber, message);
}

bool Reader::Next(Row& row)
{
    while (!finished) {
        if (!ReadLine()) {
            finished = true;
            break;
        }
        Tokenize(buffer, row.values);
        if (row.values.empty()) {
            continue;
        }
        if (row.values[0] == "END_DATA") {
            finished = true;
            break;
        }
        if (row.values.size() != fields.size()) {
            Fail("the row has " + std::to_string(row.values.size()) + " values for " +
                 std::to_string(fields.size()) + " fields");
        }
        row.line = lineNumber;
        return true;
    }
    row.values.clear();
    return false;
}

std::string Quote(std::string_view text)
{
    std::string quoted = "\"";
    for (char c : text) {
        quoted += c == '"' ? '\'' : (c == '\n' || c == '\r') ? ' ' : c;
    }
    quoted += '"';
    return quoted;
}

Writer::Writer(std::ostream& out) : output(out) {}

void Writer::Begin(const std::string& identifier, const std::vector<std::pair<std::string, std::string>>& keywords,
                   const std::vector<std::string>& comments, const std::vector<std::string>& fields,
                   std::size_t rows)
{
    output << identifier << '\n';
    for (const auto& [key, value] : keywords) {
        if (!IsStandardKeyword(key)) {
            output << "KEYWORD\t" << Quote(key) << '\n';
        }
        double number;
        output << key << '\t' << (ParseNumber(value, number) ? value : Quote(value)) << '\n';
    }
    for (const std::string& comment : comments) {
        output << "# " << comment << '\n';
    }
    output << "NUMBER_OF_FIELDS\t" << fields.size() << '\n';
    output << "BEGIN_DATA_FORMAT\n";
    for (std::size_t i = 0; i < fields.size(); ++i) {
        output << (i > 0 ? "\t" : "") << fields[i];
    }
    output << "\nEND_DATA_FORMAT\n";
    output << "NUMBER_OF_SETS\t" << rows << '\n';
    output << "BEGIN_DATA\n";
}

void Writer::WriteRow(const std::vector<std::string>& values, const std::vector<bool>& text)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) {
            output << '\t';
        }
        if (i < text.size() && text[i]) {
            output << Quote(values[i]);
        } else {
            output << values[i];
        }
    }
    output << '\n';
}

void Writer::End()
{
    output << "END_DATA\n";
}

} // namespace Cgats
