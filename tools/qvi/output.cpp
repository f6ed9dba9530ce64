#include "tools/qvi/output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>
#include <unistd.h>

#include "cgats/cgats.h"

namespace Qvi {

namespace {

std::string JsonString(const std::string& text)
{
    std::string out = "\"";
    for (char c : text) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(static_cast<unsigned char>(c)));
                out += escaped;
            } else {
                out += c;
            }
        }
    }
    out += '"';
    return out;
}

std::string CsvField(const std::string& text)
{
    if (text.find_first_of(",\"\n\r") == std::string::npos && (text.empty() || (text.front() != ' ' && text.back() != ' '))) {
        return text;
    }
    std::string out = "\"";
    for (char c : text) {
        if (c == '"') {
            out += '"';
        }
        out += c;
    }
    out += '"';
    return out;
}

} // namespace

std::string FormatNumber(double number, int decimals)
{
    if (!std::isfinite(number)) {
        // Written as a missing value: "" in CGATS, null in JSON.
        return std::string();
    }
    // to_chars in fixed form with a precision writes what printf's "%.*f"
    // writes (the exact binary value rounded to the decimals), only faster;
    // printf stays for numbers too long for the buffer, as before.
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer - 1, number, std::chars_format::fixed, decimals);
    std::string text;
    if (result.ec == std::errc()) {
        text.assign(buffer, result.ptr);
    } else {
        std::snprintf(buffer, sizeof buffer, "%.*f", decimals, number);
        text = buffer;
    }
    if (text[0] == '-' && text.find_first_not_of("-0.") == std::string::npos) {
        text.erase(0, 1);
    }
    return text;
}

TempFile::TempFile()
{
    const char* directory = std::getenv("TMPDIR");
    std::string pattern = std::string(directory != nullptr && *directory != '\0' ? directory : "/tmp") + "/qvi-XXXXXX";
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) {
        throw std::runtime_error("cannot create a temporary file in " + pattern.substr(0, pattern.size() - 11));
    }
    close(descriptor);
    path = name.data();
}

TempFile::~TempFile()
{
    std::remove(path.c_str());
}

ResultSet::ResultSet(std::vector<Column> cols) : columns(std::move(cols))
{
    for (const Column& column : columns) {
        widths.push_back(column.name.size());
    }
    file = std::fopen(spool.Path().c_str(), "w+b");
    if (file == nullptr) {
        throw std::runtime_error("cannot open a temporary file");
    }
}

ResultSet::~ResultSet()
{
    if (file != nullptr) {
        std::fclose(file);
    }
    std::free(lineData);
}

void ResultSet::Add(const std::vector<std::string>& values)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        // Tabs and line ends separate the spooled values: none may remain
        // inside one.
        for (char c : values[i]) {
            if (c == '\t' || c == '\n' || c == '\r') {
                throw std::logic_error("a result value holds a tab or line end");
            }
        }
        if (i < widths.size() && values[i].size() > widths[i]) {
            widths[i] = values[i].size();
        }
        if (i > 0) {
            std::fputc('\t', file);
        }
        std::fwrite(values[i].data(), 1, values[i].size(), file);
    }
    std::fputc('\n', file);
    ++rows;
}

void EmptyFile(std::FILE* file)
{
    std::fflush(file);
    if (ftruncate(fileno(file), 0) != 0) {
        throw std::runtime_error("cannot empty a temporary file");
    }
    std::rewind(file);
}

void ResultSet::Clear()
{
    EmptyFile(file);
    rows = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        widths[i] = columns[i].name.size();
    }
}

void ResultSet::Rewind()
{
    std::fflush(file);
    std::rewind(file);
}

bool ResultSet::ReadRow(std::vector<std::string>& values)
{
    const ssize_t length = getline(&lineData, &lineCapacity, file);
    if (length < 0) {
        return false;
    }
    std::string_view line(lineData, static_cast<std::size_t>(length));
    if (!line.empty() && line.back() == '\n') {
        line.remove_suffix(1);
    }
    // The strings of the previous row are reused.
    std::size_t count = 0;
    std::size_t start = 0;
    while (true) {
        const std::size_t tab = line.find('\t', start);
        const std::string_view value = line.substr(start, tab == std::string_view::npos ? tab : tab - start);
        if (count < values.size()) {
            values[count].assign(value);
        } else {
            values.emplace_back(value);
        }
        ++count;
        if (tab == std::string_view::npos) {
            break;
        }
        start = tab + 1;
    }
    values.resize(count);
    return true;
}

void ResultSet::Write(Format format, std::ostream& output)
{
    std::vector<std::string> names;
    std::vector<bool> text;
    for (const Column& column : columns) {
        names.push_back(column.name);
        text.push_back(column.text);
    }
    switch (format) {
    case Format::Cgats: {
        Cgats::Writer writer(output);
        writer.Begin("CGATS.17", keywords, comments, names, rows);
        ForEachRow([&](std::vector<std::string>& values) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                // A missing number is written as an empty text.
                if (values[i].empty()) {
                    values[i] = "\"\"";
                }
            }
            std::vector<bool> quoted = text;
            for (std::size_t i = 0; i < values.size() && i < quoted.size(); ++i) {
                double number;
                // Sample ids stay unquoted where they are numbers.
                const bool identifier = names[i] == "SAMPLE_ID" || names[i] == "REFERENCE_ID";
                if (values[i] == "\"\"" || (identifier && Cgats::ParseNumber(values[i], number))) {
                    quoted[i] = false;
                }
            }
            writer.WriteRow(values, quoted);
        });
        writer.End();
        break;
    }
    case Format::Csv: {
        for (std::size_t i = 0; i < names.size(); ++i) {
            output << (i > 0 ? "," : "") << CsvField(names[i]);
        }
        output << '\n';
        ForEachRow([&](const std::vector<std::string>& values) {
            for (std::size_t i = 0; i < values.size(); ++i) {
                output << (i > 0 ? "," : "") << CsvField(values[i]);
            }
            output << '\n';
        });
        for (const SummaryEntry& entry : summary) {
            output << "# " << entry.key << ": " << entry.value << '\n';
        }
        break;
    }
    case Format::Json: {
        output << "{\n";
        if (!keywords.empty()) {
            output << "  \"header\": {";
            for (std::size_t i = 0; i < keywords.size(); ++i) {
                output << (i > 0 ? ", " : "") << JsonString(keywords[i].first) << ": "
                       << JsonString(keywords[i].second);
            }
            output << "},\n";
        }
        output << "  \"rows\": [";
        bool first = true;
        ForEachRow([&](const std::vector<std::string>& values) {
            output << (first ? "\n" : ",\n") << "    {";
            first = false;
            for (std::size_t i = 0; i < values.size() && i < names.size(); ++i) {
                output << (i > 0 ? ", " : "") << JsonString(names[i]) << ": ";
                if (text[i]) {
                    output << JsonString(values[i]);
                } else if (values[i].empty()) {
                    output << "null";
                } else {
                    output << values[i];
                }
            }
            output << "}";
        });
        output << (first ? "]" : "\n  ]");
        if (!summary.empty()) {
            output << ",\n  \"summary\": {";
            for (std::size_t i = 0; i < summary.size(); ++i) {
                const SummaryEntry& entry = summary[i];
                const bool number = !entry.text && !entry.value.empty();
                output << (i > 0 ? ", " : "") << JsonString(entry.key) << ": "
                       << (number ? entry.value : entry.text ? JsonString(entry.value) : std::string("null"));
            }
            output << "}";
        }
        output << "\n}\n";
        break;
    }
    case Format::Table: {
        auto cell = [&](std::size_t i, const std::string& value) {
            const std::string shown = value.empty() && !text[i] ? std::string("-") : value;
            const std::string padding(widths[i] > shown.size() ? widths[i] - shown.size() : 0, ' ');
            // Text to the left, numbers to the right.
            return text[i] ? shown + padding : padding + shown;
        };
        auto line = [&](const std::vector<std::string>& values) {
            std::string out;
            for (std::size_t i = 0; i < values.size() && i < widths.size(); ++i) {
                if (i > 0) {
                    out += "  ";
                }
                out += cell(i, values[i]);
            }
            while (!out.empty() && out.back() == ' ') {
                out.pop_back();
            }
            output << out << '\n';
        };
        line(names);
        ForEachRow([&](const std::vector<std::string>& values) { line(values); });
        if (!summary.empty()) {
            output << '\n';
            std::size_t keyWidth = 0;
            for (const SummaryEntry& entry : summary) {
                keyWidth = std::max(keyWidth, entry.key.size());
            }
            for (const SummaryEntry& entry : summary) {
                output << entry.key << ':' << std::string(keyWidth - entry.key.size() + 1, ' ') << entry.value << '\n';
            }
        }
        break;
    }
    }
}

} // namespace Qvi
