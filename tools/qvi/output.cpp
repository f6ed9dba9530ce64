#include "tools/qvi/output.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <unistd.h>

#include "cgats/cgats.h"

namespace Qvi {

namespace {

bool gQuiet = false;

// The paths that a signal removes: fixed storage, so that the handler needs
// nothing but unlink.
constexpr int kGuardedPaths = 16;
constexpr std::size_t kGuardedLength = 4096;
char gGuardedPath[kGuardedPaths][kGuardedLength];
std::atomic<bool> gGuarded[kGuardedPaths];

const int kCleanupSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE};

extern "C" void RemoveAndEnd(int signal)
{
    for (int i = 0; i < kGuardedPaths; ++i) {
        if (gGuarded[i].load()) {
            unlink(gGuardedPath[i]);
        }
    }
    // Ended by the signal itself, as if it had not been caught.
    struct sigaction standard {};
    standard.sa_handler = SIG_DFL;
    sigemptyset(&standard.sa_mask);
    sigaction(signal, &standard, nullptr);
    raise(signal);
}

// Holds the cleanup signals back while a guard changes.
class SignalsHeld {
public:
    SignalsHeld()
    {
        sigset_t set;
        sigemptyset(&set);
        for (int signal : kCleanupSignals) {
            sigaddset(&set, signal);
        }
        sigprocmask(SIG_BLOCK, &set, &previous);
    }
    ~SignalsHeld() { sigprocmask(SIG_SETMASK, &previous, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t previous;
};

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
    if (text.find_first_of(",\"\n\r\t") == std::string::npos &&
        (text.empty() || (text.front() != ' ' && text.back() != ' '))) {
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

bool Special(char c)
{
    return c == '\t' || c == '\n' || c == '\r';
}

// In the spool, tabs separate values and a line end ends a row: a backslash
// escapes these and itself inside a value. Appends the value to `line` and
// returns the length of Visible(value), found on the same walk through it.
std::size_t Spool(const std::string& value, std::string& line, bool& escaped)
{
    std::size_t special = 0;
    bool backslash = false;
    for (char c : value) {
        // Every character that needs a second look is below '!' or is '\\'.
        if (static_cast<unsigned char>(c) <= ' ' || c == '\\') {
            special += Special(c) ? 1 : 0;
            backslash = backslash || c == '\\';
        }
    }
    if (special == 0 && !backslash) {
        line += value;
        return value.size();
    }
    escaped = true;
    for (char c : value) {
        switch (c) {
        case '\t':
            line += "\\t";
            break;
        case '\n':
            line += "\\n";
            break;
        case '\r':
            line += "\\r";
            break;
        case '\\':
            line += "\\\\";
            break;
        default:
            line += c;
        }
    }
    return value.size() + special;
}

void Unspool(std::string_view text, std::string& value)
{
    if (text.find('\\') == std::string_view::npos) {
        value.assign(text);
        return;
    }
    value.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            value += text[i];
            continue;
        }
        const char next = text[++i];
        value += next == 't' ? '\t' : next == 'n' ? '\n' : next == 'r' ? '\r' : next;
    }
}

} // namespace

void SetQuiet(bool quiet)
{
    gQuiet = quiet;
}

void Note(const std::string& text)
{
    if (!gQuiet) {
        std::cerr << "qvi: " << text << '\n';
    }
}

void Warn(const std::string& text)
{
    std::cerr << "qvi: warning: " << text << '\n';
}

void RemoveTemporaryFilesOnSignals()
{
    for (int signal : kCleanupSignals) {
        struct sigaction current {};
        if (sigaction(signal, nullptr, &current) != 0 || current.sa_handler == SIG_IGN) {
            continue;
        }
        struct sigaction handler {};
        handler.sa_handler = RemoveAndEnd;
        sigemptyset(&handler.sa_mask);
        for (int other : kCleanupSignals) {
            sigaddset(&handler.sa_mask, other);
        }
        sigaction(signal, &handler, nullptr);
    }
}

void SignalGuard::Set(const std::string& path)
{
    if (path.size() >= kGuardedLength) {
        return;
    }
    SignalsHeld held;
    for (int i = 0; i < kGuardedPaths; ++i) {
        if (!gGuarded[i].load()) {
            std::memcpy(gGuardedPath[i], path.c_str(), path.size() + 1);
            gGuarded[i].store(true);
            slot = i;
            return;
        }
    }
}

SignalGuard::~SignalGuard()
{
    if (slot >= 0) {
        gGuarded[slot].store(false);
    }
}

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

std::string Visible(const std::string& text)
{
    if (std::none_of(text.begin(), text.end(), Special)) {
        return text;
    }
    std::string shown;
    for (char c : text) {
        shown += c == '\t' ? "\\t" : c == '\n' ? "\\n" : c == '\r' ? "\\r" : std::string(1, c);
    }
    return shown;
}

int CreateGuardedFile(std::string& path, SignalGuard& guard)
{
    std::vector<char> name(path.begin(), path.end());
    name.push_back('\0');
    int descriptor;
    int error;
    {
        SignalsHeld held;
        descriptor = mkstemp(name.data());
        error = errno;
        if (descriptor >= 0) {
            path = name.data();
            guard.Set(path);
        }
    }
    errno = error;
    return descriptor;
}

std::string SystemReason()
{
    return std::strerror(errno);
}

std::string Shortest(double value)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.6g", value);
    return buffer;
}

TempFile::TempFile()
{
    const char* variable = std::getenv("TMPDIR");
    const bool fromVariable = variable != nullptr && *variable != '\0';
    const std::string directory = fromVariable ? variable : "/tmp";
    path = directory + "/qvi-XXXXXX";
    const int descriptor = CreateGuardedFile(path, guard);
    if (descriptor < 0) {
        const std::string reason = SystemReason();
        path.clear();
        throw Cgats::Error(directory, 0,
                           std::string("cannot create a temporary file here") + (fromVariable ? " (TMPDIR)" : "") +
                               ": " + reason);
    }
    close(descriptor);
}

TempFile::~TempFile()
{
    if (!path.empty()) {
        std::remove(path.c_str());
    }
}

ResultSet::ResultSet(std::vector<Column> cols) : columns(std::move(cols))
{
    for (const Column& column : columns) {
        widths.push_back(column.name.size());
    }
    file = std::fopen(spool.Path().c_str(), "w+b");
    if (file == nullptr) {
        throw Cgats::Error(spool.Path(), 0, "cannot open a temporary file: " + SystemReason());
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
    // One write a row.
    line.clear();
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i > 0) {
            line += '\t';
        }
        const std::size_t shown = Spool(values[i], line, escaped);
        if (i < widths.size()) {
            widths[i] = std::max(widths[i], shown);
        }
    }
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), file);
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
    escaped = false;
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
        if (count == values.size()) {
            values.emplace_back();
        }
        if (escaped) {
            Unspool(value, values[count]);
        } else {
            values[count].assign(value);
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

std::string ResultSet::SummaryText(const SummaryEntry& entry, std::size_t limit)
{
    if (entry.kind != SummaryEntry::Kind::RowList) {
        return entry.value;
    }
    std::string list;
    std::size_t listed = 0;
    std::size_t more = 0;
    ForEachRow([&](const std::vector<std::string>& values) {
        if (entry.flag < values.size() && values[entry.flag] == "1") {
            if (listed < limit) {
                list += (list.empty() ? "" : " ") + values[entry.column];
                ++listed;
            } else {
                ++more;
            }
        }
    });
    if (more > 0) {
        list += " ... (" + std::to_string(more) + " more)";
    }
    return list;
}

void ResultSet::WriteSummary(std::ostream& output)
{
    for (const SummaryEntry& entry : summary) {
        output << entry.key << ": " << SummaryText(entry, static_cast<std::size_t>(-1)) << '\n';
    }
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
        std::vector<std::pair<std::string, std::string>> pairs;
        for (const Keyword& keyword : keywords) {
            pairs.emplace_back(keyword.key, keyword.value);
        }
        writer.Begin("CGATS.17", pairs, comments, names, rows);
        std::vector<bool> quoted;
        ForEachRow([&](std::vector<std::string>& values) {
            quoted = text;
            for (std::size_t i = 0; i < values.size() && i < quoted.size(); ++i) {
                double number;
                // Sample ids stay unquoted where they are numbers; a missing
                // number is written as an empty text.
                const bool identifier = names[i] == "SAMPLE_ID" || names[i] == "REFERENCE_ID";
                if (values[i].empty()) {
                    values[i] = "\"\"";
                    quoted[i] = false;
                } else if (identifier && Cgats::ParseNumber(values[i], number)) {
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
        break;
    }
    case Format::Json: {
        output << "{\n";
        if (!keywords.empty()) {
            output << "  \"header\": {";
            for (std::size_t i = 0; i < keywords.size(); ++i) {
                const Keyword& keyword = keywords[i];
                output << (i > 0 ? ", " : "") << JsonString(keyword.key) << ": ";
                if (!keyword.number) {
                    output << JsonString(keyword.value);
                } else {
                    output << (keyword.value.empty() ? std::string("null") : keyword.value);
                }
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
                output << (i > 0 ? ", " : "") << JsonString(entry.key) << ": ";
                switch (entry.kind) {
                case SummaryEntry::Kind::Number:
                    output << (entry.value.empty() ? std::string("null") : entry.value);
                    break;
                case SummaryEntry::Kind::Text:
                    output << JsonString(entry.value);
                    break;
                case SummaryEntry::Kind::RowList: {
                    output << '[';
                    bool firstItem = true;
                    ForEachRow([&](const std::vector<std::string>& values) {
                        if (entry.flag < values.size() && values[entry.flag] == "1") {
                            output << (firstItem ? "" : ", ") << JsonString(values[entry.column]);
                            firstItem = false;
                        }
                    });
                    output << ']';
                    break;
                }
                }
            }
            output << "}";
        }
        output << "\n}\n";
        break;
    }
    case Format::Table: {
        auto cell = [&](std::size_t i, const std::string& value) {
            const std::string shown = value.empty() && !text[i] ? std::string("-") : Visible(value);
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
            // A person reads the first ids; the machine forms list them all.
            constexpr std::size_t kListed = 20;
            for (const SummaryEntry& entry : summary) {
                output << entry.key << ':' << std::string(keyWidth - entry.key.size() + 1, ' ')
                       << Visible(SummaryText(entry, kListed)) << '\n';
            }
        }
        break;
    }
    }
}

} // namespace Qvi
