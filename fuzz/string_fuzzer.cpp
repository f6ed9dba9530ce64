// String: numeric conversions, tokens, Replace, Mid, the search and case
// operations and the double-to-text constructor, on arbitrary text. Each
// result is compared with a plain model of the rule on std::string; the
// model works on text without NUL, as String's comparisons stop at one.
// Text with NULs is run too, for memory safety only.
//
// Input: a selector byte per operation, its parameters, then the texts.

#include "fuzz/fuzz_input.h"
#include "fuzz/string_text.h"

#include "qvimanager/foundation/containers.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/foundation/string.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Fuzz::Check;
using Fuzz::Text;
using Utilities::ExceptionOutOfBound;
using Utilities::String;

std::string WithoutNul(std::string text)
{
    std::string clean;
    for (char c : text) {
        if (c != '\0') {
            clean += c;
        }
    }
    return clean;
}

std::vector<std::string> Pieces(const std::string& text, char separator)
{
    std::vector<std::string> pieces(1);
    for (char c : text) {
        if (c == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += c;
        }
    }
    return pieces;
}

std::string Join(const std::vector<std::string>& pieces, std::size_t first, std::size_t last, char separator)
{
    std::string joined;
    for (std::size_t i = first; i <= last; ++i) {
        if (i > first) {
            joined += separator;
        }
        joined += pieces[i];
    }
    return joined;
}

template <typename Function>
std::string Refusal(Function function)
{
    try {
        function();
    } catch (const ExceptionOutOfBound& refusal) {
        return Text(refusal.GetExceptionText());
    }
    return "";
}

// The core of text to number: skip blanks and tabs, one '+' or a digit,
// then the digits; nullopt-like `ok` false with the reason.
struct Parsed {
    bool ok = true;
    const char* reason = "";
    std::uint64_t value = 0;
};

Parsed Core(const char* text)
{
    Parsed parsed;
    while (*text == ' ' || *text == '\t') {
        ++text;
    }
    if (*text == '+') {
        ++text;
    } else if (*text < '0' || *text > '9') {
        parsed.ok = false;
        parsed.reason = " is not a valid number.";
        return parsed;
    }
    for (; *text >= '0' && *text <= '9'; ++text) {
        parsed.value = parsed.value * 10 + static_cast<std::uint64_t>(*text - '0');
        if (parsed.value > 4294967295ULL) {
            parsed.ok = false;
            parsed.reason = " is to big for an unsigned long.";
            return parsed;
        }
    }
    return parsed;
}

void Numbers(const std::string& clean)
{
    const String text(clean.c_str());
    // Unsigned forms.
    const Parsed core = Core(clean.c_str());
    {
        unsigned long value = 0;
        const std::string refusal = Refusal([&] { value = text.GetUnsignedLong(); });
        if (core.ok) {
            Check(refusal.empty() && value == core.value, "GetUnsignedLong of \"" + clean + "\"");
        } else {
            Check(refusal == clean + core.reason, "GetUnsignedLong refusal of \"" + clean + "\": " + refusal);
        }
        unsigned short shortValue = 0;
        const std::string shortRefusal = Refusal([&] { shortValue = text.GetUnsignedShort(); });
        if (!core.ok) {
            Check(shortRefusal == clean + core.reason, "GetUnsignedShort refusal of \"" + clean + "\"");
        } else if (core.value >= 65536) {
            Check(shortRefusal == clean + " is to big for a short.", "GetUnsignedShort range of \"" + clean + "\"");
        } else {
            Check(shortRefusal.empty() && shortValue == core.value, "GetUnsignedShort of \"" + clean + "\"");
        }
    }
    // Signed forms: blanks only, then one optional '-', then the core.
    std::size_t at = 0;
    while (at < clean.size() && clean[at] == ' ') {
        ++at;
    }
    const bool negative = at < clean.size() && clean[at] == '-';
    const Parsed signedCore = Core(clean.c_str() + at + (negative ? 1 : 0));
    struct Form {
        const char* name;
        std::uint64_t positive;
        const char* reason;
    };
    for (const Form form : {Form{"GetShort", 32767, " is to big for a short."},
                            Form{"GetLong", 2147483647, " is to big for a long."}}) {
        long value = 0;
        const bool isShort = std::strcmp(form.name, "GetShort") == 0;
        const std::string refusal =
            Refusal([&] { value = isShort ? static_cast<long>(text.GetShort()) : text.GetLong(); });
        const std::string what = std::string(form.name) + " of \"" + clean + "\"";
        if (!signedCore.ok) {
            Check(refusal == clean + signedCore.reason, what + ": " + refusal);
        } else if (signedCore.value > form.positive + (negative ? 1 : 0)) {
            Check(refusal == clean + form.reason, what + ": " + refusal);
        } else {
            const long expected =
                negative ? -static_cast<long>(signedCore.value) : static_cast<long>(signedCore.value);
            Check(refusal.empty() && value == expected, what);
        }
    }
    // GetDouble never refuses; it reads as the C library does.
    Check(!std::isnan(text.GetDouble()) || clean.find_first_of("nN") != std::string::npos,
          "GetDouble gave NaN for \"" + clean + "\"");
}

void Tokens(const std::string& clean, char separator, unsigned long index)
{
    const String text(clean.c_str());
    const std::vector<std::string> pieces = Pieces(clean, separator);
    const unsigned long count = clean.empty() ? 0 : pieces.size();
    Check(text.GetTokenCount(separator) == count, "GetTokenCount of \"" + clean + "\"");

    String token;
    const std::string tokenRefusal = Refusal([&] { token = text.GetToken(index, separator); });
    if (index < pieces.size()) {
        Check(tokenRefusal.empty() && Text(token) == pieces[index], "GetToken of \"" + clean + "\"");
    } else {
        Check(tokenRefusal == "String empty", "GetToken refusal of \"" + clean + "\": " + tokenRefusal);
    }

    String left;
    String right;
    const std::string leftRefusal = Refusal([&] { left = text.GetLeftTokens(index, separator); });
    const std::string rightRefusal = Refusal([&] { right = text.GetRightTokens(index, separator); });
    if (index < count) {
        Check(leftRefusal.empty() && Text(left) == Join(pieces, 0, index, separator),
              "GetLeftTokens of \"" + clean + "\"");
        Check(rightRefusal.empty() && Text(right) == Join(pieces, index, pieces.size() - 1, separator),
              "GetRightTokens of \"" + clean + "\"");
    } else {
        Check(leftRefusal == "Token number too large", "GetLeftTokens refusal of \"" + clean + "\"");
        Check(rightRefusal == "Token number too large", "GetRightTokens refusal of \"" + clean + "\"");
    }

    // The non-empty pieces that a separator follows.
    std::vector<std::string> expected;
    for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
        if (!pieces[i].empty()) {
            expected.push_back(pieces[i]);
        }
    }
    const Utilities::List<String> tokens = text.GetTokens(separator);
    std::vector<std::string> got;
    for (Utilities::ListIterator<String> it = tokens.Begin(); it.IsValid(); it++) {
        got.push_back(Text(it.Current()));
    }
    Check(got == expected, "GetTokens of \"" + clean + "\"");
}

void Searches(const std::string& clean, unsigned long start, unsigned long count, const std::string& from,
            const std::string& to)
{
    const String text(clean.c_str());
    std::string mid;
    if (start < clean.size()) {
        mid = (count == 0 || count > clean.size() - start) ? clean.substr(start) : clean.substr(start, count);
    }
    Check(Text(text.Mid(start, count)) == mid, "Mid of \"" + clean + "\"");

    // Replace: left to right, without overlap, the text put in never
    // searched again.
    std::string replaced = clean;
    if (!from.empty()) {
        replaced.clear();
        std::size_t done = 0;
        for (std::size_t at = clean.find(from); at != std::string::npos; at = clean.find(from, done)) {
            replaced += clean.substr(done, at - done) + to;
            done = at + from.size();
        }
        replaced += clean.substr(done);
    }
    String changed = text;
    changed.Replace(String(from.c_str()), String(to.c_str()));
    Check(Text(changed) == replaced, "Replace in \"" + clean + "\"");

    const long position = static_cast<long>(start % (clean.size() + 1));
    const std::size_t found = from.empty() ? static_cast<std::size_t>(position) : clean.find(from, position);
    Check(text.FindSubstring(String(from.c_str()), position) ==
              (found == std::string::npos ? -1L : static_cast<long>(found)),
          "FindSubstring in \"" + clean + "\"");

    std::string upper = clean;
    std::string lower = clean;
    for (std::size_t i = 0; i < clean.size(); ++i) {
        if (clean[i] >= 'a' && clean[i] <= 'z') {
            upper[i] = static_cast<char>(clean[i] - 'a' + 'A');
        }
        if (clean[i] >= 'A' && clean[i] <= 'Z') {
            lower[i] = static_cast<char>(clean[i] - 'A' + 'a');
        }
    }
    Check(Text(text.GetAsUpper()) == upper && Text(text.GetAsLower()) == lower, "case of \"" + clean + "\"");

    const unsigned long modulus = count == 0 ? 53 : count;
    std::uint32_t hash = 0;
    for (char c : clean) {
        hash = static_cast<std::uint32_t>((hash * 64U + static_cast<std::uint32_t>(static_cast<long>(c))) % modulus);
    }
    Check(text.GetHash(modulus) == hash, "GetHash of \"" + clean + "\"");
}

// The double-to-text constructor: its form, and its value as far as the
// decimals carry.
void DoubleText(double value, short decimals, char separator)
{
    String text;
    const std::string refusal = Refusal([&] { text = String(value, decimals, separator); });
    if (!std::isfinite(value)) {
        Check(refusal == "Can't convert a value that is not finite to text.", "non-finite value: " + refusal);
        return;
    }
    if (!refusal.empty()) {
        // Only a rounding that overflows is refused: the value times
        // 10^decimals beyond the largest double.
        Check(refusal == "Can't convert a value that is not finite to text." &&
                  std::log10(std::fabs(value)) + decimals > 300.0,
              "finite value refused: " + refusal);
        return;
    }
    const std::string written = Text(text);
    const int places = decimals < 0 ? 0 : decimals;
    const std::size_t signs = (!written.empty() && written[0] == '-') ? 1 : 0;
    const std::size_t exponent = written.find("E+");
    const std::string number = written.substr(signs, exponent == std::string::npos ? std::string::npos : exponent - signs);
    const std::size_t point = places > 0 ? number.rfind(separator) : std::string::npos;
    const std::string integer = places > 0 ? number.substr(0, point) : number;
    Check(!integer.empty() && integer.find_first_not_of("0123456789") == std::string::npos,
          "integer digits of " + written);
    if (places > 0) {
        Check(point != std::string::npos, "no separator in " + written);
        const std::string fraction = number.substr(point + 1);
        Check(fraction.size() == static_cast<std::size_t>(places) &&
                  fraction.find_first_not_of("0123456789") == std::string::npos,
              "fraction digits of " + written);
    }
    if (std::fabs(value) >= 1e16) {
        // Scaled to one integer digit before the rounding, which may carry
        // it to "10".
        Check(exponent != std::string::npos && integer.size() <= 2, "scaled form of " + written);
        return;
    }
    Check(exponent == std::string::npos, "unscaled form of " + written);
    if (separator == '.' && places <= 15) {
        // Rounded half up on the magnitude to `places` decimals; the digits
        // come from repeated steps of double arithmetic, which may lose a
        // few units in the last place of the value.
        const double read = std::strtod(written.c_str(), nullptr);
        const double step = std::pow(10.0, -places);
        Check(std::fabs(read - value) <= step * 0.5000001 + std::fabs(value) * 1e-13 + 1e-300,
              "value of " + written);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Input input(data, size);
    const std::uint8_t selector = input.Byte();
    const char separator = static_cast<char>(input.Byte());
    const unsigned long index = input.Byte();
    const unsigned long start = input.Word() % 300;
    const unsigned long count = input.Word() % 300;
    double value = 0.0;
    const std::uint64_t bits = static_cast<std::uint64_t>(input.Long()) | (static_cast<std::uint64_t>(input.Long()) << 32);
    std::memcpy(&value, &bits, sizeof value);
    const short decimals = static_cast<short>(static_cast<std::int8_t>(input.Byte()));
    const std::string from = input.Text(16);
    const std::string to = input.Text(16);
    const std::string raw = input.Rest();
    const std::string clean = WithoutNul(raw);

    // Text with NULs inside: the std::string constructor keeps them. Every
    // operation must stay inside the bytes.
    {
        String withNul(raw);
        String copy = withNul;
        copy.Replace(String(from.c_str()), String(to.c_str()));
        (void)withNul.Mid(start, count);
        (void)withNul.GetTokenCount(separator);
        (void)withNul.FindSubstring(String(from.c_str()), static_cast<long>(start));
        (void)withNul.GetAsUpper();
        (void)withNul.GetHash(53);
        (void)Refusal([&] { (void)withNul.GetToken(index, separator); });
        (void)Refusal([&] { (void)withNul.GetLeftTokens(index, separator); });
        (void)Refusal([&] { (void)withNul.GetRightTokens(index, separator); });
        (void)Refusal([&] { (void)withNul.GetLong(); });
        (void)withNul.GetDouble();
    }

    if (separator != '\0') {
        Tokens(clean, separator, index);
    }
    Searches(clean, start, count, WithoutNul(from), WithoutNul(to));
    Numbers(clean);
    if ((selector & 1) != 0) {
        // A value near the rounding steps, as text files give them.
        value = std::strtod(clean.c_str(), nullptr);
    }
    // A separator that could be part of a number is replaced by '.', so
    // that the form stays readable.
    const bool numberCharacter = (separator >= '0' && separator <= '9') || separator == '-' || separator == '+' ||
                                 separator == 'E' || separator == '\0';
    DoubleText(value, decimals, numberCharacter ? '.' : separator);
    // The integer constructors read back.
    const long whole = static_cast<long>(static_cast<std::int32_t>(bits));
    Check(String(whole).GetLong() == whole, "String(long) read back");
    const unsigned long unsignedWhole = static_cast<std::uint32_t>(bits >> 32);
    Check(String(unsignedWhole).GetUnsignedLong() == unsignedWhole, "String(unsigned long) read back");
    return 0;
}
