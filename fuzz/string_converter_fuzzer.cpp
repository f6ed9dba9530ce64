// StringConverter both ways on arbitrary text, in the "C" locale and in a
// UTF-8 one: the lengths it announces are the lengths it writes, a target
// one unit short is refused and left empty, an oversized one is never
// written past the terminator, and valid text converts back to itself.
//
// Input: a byte of choices (locale, room), then the text: as bytes for
// CharToUnicode, and the same bytes read as 16-bit units for UnicodeToChar.

#include "fuzz/fuzz_input.h"

#include "qvimanager/platform/string_converter.h"

#include <clocale>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Fuzz::Check;
using Utilities::StringConverter;

constexpr unsigned short kGuard16 = 0xBEEF;
constexpr char kGuard8 = '\x5A';

std::size_t Length16(const unsigned short* text)
{
    std::size_t length = 0;
    while (text[length] != 0) {
        ++length;
    }
    return length;
}

// 16-bit text to 8-bit: every promise of the header. Gives the text, or
// "" when it cannot be converted.
std::string Narrow(const std::vector<unsigned short>& source, unsigned extra)
{
    const unsigned long length = StringConverter::CharLength(source.data());
    std::vector<char> target(length + 1 + extra + 1, kGuard8);
    const unsigned long room = length + 1 + extra;
    Check(StringConverter::UnicodeToChar(source.data(), target.data(), room), "UnicodeToChar with room refused");
    Check(std::strlen(target.data()) == length, "UnicodeToChar wrote another length than CharLength");
    Check(target[room] == kGuard8, "UnicodeToChar wrote past its target");
    if (length > 0) {
        // One byte short: refused, the target left empty.
        std::vector<char> tight(length + 1, kGuard8);
        Check(!StringConverter::UnicodeToChar(source.data(), tight.data(), length), "a target too short accepted");
        Check(tight[0] == '\0' && tight[length] == kGuard8, "a refused target is not left empty");
    }
    return std::string(target.data());
}

std::vector<unsigned short> Widen(const char* source, unsigned extra)
{
    const unsigned long length = StringConverter::UnicodeLength(source);
    std::vector<unsigned short> target(length + 1 + extra + 1, kGuard16);
    const unsigned long room = length + 1 + extra;
    Check(StringConverter::CharToUnicode(source, target.data(), room), "CharToUnicode with room refused");
    Check(Length16(target.data()) == length, "CharToUnicode wrote another length than UnicodeLength");
    Check(target[room] == kGuard16, "CharToUnicode wrote past its target");
    if (length > 0) {
        std::vector<unsigned short> tight(length + 1, kGuard16);
        Check(!StringConverter::CharToUnicode(source, tight.data(), length), "a target too short accepted");
        Check(tight[0] == 0 && tight[length] == kGuard16, "a refused target is not left empty");
    }
    return std::vector<unsigned short>(target.begin(), target.begin() + static_cast<long>(length) + 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Input input(data, size);
    const std::uint8_t choices = input.Byte();
    const unsigned extra = choices >> 4;
    std::setlocale(LC_CTYPE, (choices & 1) != 0 ? "C.UTF-8" : "C");
    const std::string bytes = input.Rest();

    // 8-bit text up to its first NUL.
    const std::string narrow(bytes.c_str());
    const std::vector<unsigned short> wide = Widen(narrow.c_str(), extra);
    if (wide.size() > 1) {
        // Converted: back to the same bytes.
        Check(Narrow(wide, extra) == narrow, "8-bit text does not come back from 16-bit form");
    }

    // The same bytes as 16-bit units, up to the first 0 unit.
    std::vector<unsigned short> units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto unit = static_cast<unsigned short>(static_cast<unsigned char>(bytes[i]) |
                                                      (static_cast<unsigned char>(bytes[i + 1]) << 8));
        if (unit == 0) {
            break;
        }
        units.push_back(unit);
    }
    units.push_back(0);
    const std::string back = Narrow(units, extra);
    if (!back.empty()) {
        Check(Widen(back.c_str(), extra) == units, "16-bit text does not come back from 8-bit form");
    }

    // Null sources and targets.
    Check(StringConverter::CharLength(nullptr) == 0 && StringConverter::UnicodeLength(nullptr) == 0,
          "lengths of null");
    Check(!StringConverter::UnicodeToChar(units.data(), nullptr, 5) &&
              !StringConverter::CharToUnicode(narrow.c_str(), nullptr, 5),
          "a null target accepted");
    return 0;
}
