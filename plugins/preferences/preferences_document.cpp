#include "plugins/preferences/preferences_document.h"

namespace PreferencesStore {

namespace {

const char kHexDigits[] = "0123456789ABCDEF";

bool IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

char FoldCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameName(const std::string& left, const std::string& right)
{
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t index = 0; index < left.size(); ++index) {
        if (FoldCase(left[index]) != FoldCase(right[index])) {
            return false;
        }
    }
    return true;
}

// `text` without the blanks at its start and at its end.
std::string Trimmed(const std::string& text)
{
    std::size_t first = 0;
    std::size_t end = text.size();
    while (first < end && IsBlank(text[first])) {
        ++first;
    }
    while (end > first && IsBlank(text[end - 1])) {
        --end;
    }
    return text.substr(first, end - first);
}

int HexValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// A text of the file as the bytes it stands for; throws FormatError (line 0:
// the caller knows the line) for a bad escape.
std::string Unescape(const std::string& text)
{
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != '\\') {
            bytes += text[index];
            continue;
        }
        if (++index == text.size()) {
            throw FormatError{0, "a backslash at the end of the line"};
        }
        switch (text[index]) {
        case '\\':
        case '=':
        case '[':
        case ']':
        case '#':
        case ';':
            bytes += text[index];
            break;
        case 'n':
            bytes += '\n';
            break;
        case 'r':
            bytes += '\r';
            break;
        case 't':
            bytes += '\t';
            break;
        case 's':
            bytes += ' ';
            break;
        case 'x': {
            const int high = index + 1 < text.size() ? HexValue(text[index + 1]) : -1;
            const int low = index + 2 < text.size() ? HexValue(text[index + 2]) : -1;
            if (high < 0 || low < 0) {
                throw FormatError{0, "\\x without two hex digits"};
            }
            bytes += static_cast<char>(high * 16 + low);
            index += 2;
            break;
        }
        default:
            throw FormatError{0, "the unknown escape \\" + Escape(std::string(1, text[index]), Field::Value)};
        }
    }
    return bytes;
}

// The position of the first `wanted` in `text` from `start` on that no
// backslash escapes, or npos.
std::size_t FindUnescaped(const std::string& text, char wanted, std::size_t start)
{
    for (std::size_t index = start; index < text.size(); ++index) {
        if (text[index] == '\\') {
            ++index;
        } else if (text[index] == wanted) {
            return index;
        }
    }
    return std::string::npos;
}

// A line as a message shows it: escaped, and cut after 60 bytes.
std::string Shown(const std::string& line)
{
    std::string shown = Escape(line.substr(0, 60), Field::Value);
    if (line.size() > 60) {
        shown += "...";
    }
    return "\"" + shown + "\"";
}

} // namespace

std::string Escape(const std::string& text, Field field)
{
    std::size_t first = 0;
    while (first < text.size() && text[first] == ' ') {
        ++first;
    }
    std::size_t end = text.size();
    while (end > first && text[end - 1] == ' ') {
        --end;
    }
    std::string escaped;
    escaped.reserve(text.size() + text.size() / 8 + 2);
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char c = text[index];
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            escaped += "\\\\";
        } else if (c == '\n') {
            escaped += "\\n";
        } else if (c == '\r') {
            escaped += "\\r";
        } else if (c == '\t') {
            escaped += "\\t";
        } else if (byte < 32 || byte == 127) {
            escaped += "\\x";
            escaped += kHexDigits[byte / 16];
            escaped += kHexDigits[byte % 16];
        } else if (c == ' ' && (index < first || index >= end)) {
            escaped += "\\s";
        } else if (field == Field::Key && (c == '=' || (index == 0 && (c == '[' || c == '#' || c == ';')))) {
            escaped += '\\';
            escaped += c;
        } else if (field == Field::Section && c == ']') {
            escaped += "\\]";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

Document Document::Parse(const std::string& text)
{
    Document document;
    bool inSection = false;
    std::size_t start = 0;
    std::size_t number = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) {
            end = text.size();
        }
        ++number;
        Line line{text.substr(start, end - start), Kind::Other, std::string(), std::string()};
        start = end + 1;

        std::string content = line.text;
        if (!content.empty() && content.back() == '\r') {
            content.pop_back();
        }
        // A byte order mark before the first line.
        if (number == 1 && content.compare(0, 3, "\xEF\xBB\xBF") == 0) {
            content.erase(0, 3);
        }
        if (content.find('\0') != std::string::npos) {
            throw FormatError{number, "a NUL byte"};
        }
        content = Trimmed(content);
        try {
            if (content.empty() || content[0] == '#' || content[0] == ';') {
                // A blank line or a comment.
            } else if (content[0] == '[') {
                const std::size_t close = FindUnescaped(content, ']', 1);
                if (close == std::string::npos) {
                    throw FormatError{number, Shown(content) + " is a section without its closing ']'"};
                }
                if (close + 1 != content.size()) {
                    throw FormatError{number, Shown(content) + " has text behind the ']' of its section"};
                }
                line.kind = Kind::Section;
                line.name = Unescape(Trimmed(content.substr(1, close - 1)));
                inSection = true;
            } else {
                const std::size_t equals = FindUnescaped(content, '=', 0);
                if (equals == std::string::npos) {
                    throw FormatError{number, Shown(content) +
                                                  " is neither a section, a key=value line, a comment nor blank"};
                }
                if (!inSection) {
                    throw FormatError{number, Shown(content) + " is a key before the first section"};
                }
                line.kind = Kind::Key;
                line.name = Unescape(Trimmed(content.substr(0, equals)));
                line.value = Unescape(Trimmed(content.substr(equals + 1)));
            }
        } catch (FormatError& error) {
            if (error.line == 0) {
                error.line = number;
                error.what = Shown(content) + " has " + error.what;
            }
            throw;
        }
        document.lines.push_back(std::move(line));
    }
    return document;
}

std::size_t Document::FindLine(const std::string& section, const std::string& key) const
{
    bool inSection = false;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        const Line& line = lines[index];
        if (line.kind == Kind::Section) {
            inSection = SameName(line.name, section);
        } else if (line.kind == Kind::Key && inSection && SameName(line.name, key)) {
            return index;
        }
    }
    return lines.size();
}

const std::string* Document::Find(const std::string& section, const std::string& key) const
{
    const std::size_t index = FindLine(section, key);
    return index < lines.size() ? &lines[index].value : nullptr;
}

void Document::Set(const std::string& section, const std::string& key, const std::string& value)
{
    std::size_t index = FindLine(section, key);
    if (index < lines.size()) {
        Line& line = lines[index];
        line.value = value;
        line.text = Escape(line.name, Field::Key) + "=" + Escape(value, Field::Value);
        return;
    }
    Line added{Escape(key, Field::Key) + "=" + Escape(value, Field::Value), Kind::Key, key, value};
    // Behind the last key of the first section of that name, or behind its
    // header when it has none.
    std::size_t header = lines.size();
    for (index = 0; index < lines.size(); ++index) {
        if (lines[index].kind == Kind::Section && SameName(lines[index].name, section)) {
            header = index;
            break;
        }
    }
    if (header < lines.size()) {
        std::size_t behind = header + 1;
        for (index = header + 1; index < lines.size() && lines[index].kind != Kind::Section; ++index) {
            if (lines[index].kind == Kind::Key) {
                behind = index + 1;
            }
        }
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(behind), std::move(added));
        return;
    }
    if (!lines.empty() && !Trimmed(lines.back().text).empty()) {
        lines.push_back(Line{std::string(), Kind::Other, std::string(), std::string()});
    }
    // Built by appending: "[" + a temporary string trips a false -Wrestrict
    // of g++ 12 at -O3.
    std::string sectionLine("[");
    sectionLine += Escape(section, Field::Section);
    sectionLine += ']';
    lines.push_back(Line{std::move(sectionLine), Kind::Section, section, std::string()});
    lines.push_back(std::move(added));
}

std::string Document::Text() const
{
    std::string text;
    std::size_t size = 0;
    for (const Line& line : lines) {
        size += line.text.size() + 1;
    }
    text.reserve(size);
    for (const Line& line : lines) {
        text += line.text;
        text += '\n';
    }
    return text;
}

} // namespace PreferencesStore
