#ifndef QVIMANAGER_TESTS_PREFERENCES_PERCENT_ENCODING_H
#define QVIMANAGER_TESTS_PREFERENCES_PERCENT_ENCODING_H

// How the preferences tests pass texts to their host and back: every byte
// but letters, digits and "-_." as %HH.

#include <cstddef>
#include <string>

namespace PercentEncoding {

inline int HexValue(char c)
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
    return 0;
}

inline std::string Decoded(const std::string& text)
{
    std::string bytes;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] == '%' && index + 2 < text.size()) {
            bytes += static_cast<char>(HexValue(text[index + 1]) * 16 + HexValue(text[index + 2]));
            index += 2;
        } else {
            bytes += text[index];
        }
    }
    return bytes;
}

inline std::string Encoded(const std::string& bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
            c == '.') {
            text += c;
        } else {
            text += '%';
            text += digits[byte / 16];
            text += digits[byte % 16];
        }
    }
    return text;
}

} // namespace PercentEncoding

#endif
