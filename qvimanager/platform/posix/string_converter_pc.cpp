#include "qvimanager/platform/posix/string_converter_pc.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iconv.h>
#include <langinfo.h>

namespace Utilities {

namespace {

// UTF-16 with the byte order named: plain "UTF-16" would write a byte-order
// mark and read text without one as big-endian.
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
constexpr char Utf16[] = "UTF-16LE";
#else
constexpr char Utf16[] = "UTF-16BE";
#endif

enum class Outcome {
    Converted,
    TooSmall,
    Failed
};

// The codeset of the calling thread's locale, copied at once: a setlocale
// in another thread may replace the text nl_langinfo points to. A name too
// long for the copy is cut, which iconv then refuses.
class LocaleCodeset {
public:
    LocaleCodeset() : name()
    {
        const char* const current = nl_langinfo(CODESET);
        std::snprintf(name, sizeof name, "%s", current == nullptr ? "" : current);
    }

    const char* Name() const
    {
        return name;
    }

private:
    char name[64];
};

// One conversion descriptor, opened for one call and closed with it.
class Converter {
public:
    Converter(const char* toCode, const char* fromCode) : descriptor(iconv_open(toCode, fromCode)) {}
    ~Converter()
    {
        if (IsOpen()) {
            iconv_close(descriptor);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool IsOpen() const
    {
        return descriptor != reinterpret_cast<iconv_t>(-1);
    }

    // Converts all `inBytes` bytes of `in` into at most `outBytes` bytes of
    // `out`, ending in the initial shift state, and sets `written`.
    Outcome Convert(const char* in, std::size_t inBytes, char* out, std::size_t outBytes, std::size_t& written)
    {
        Reset();
        char* inPointer = const_cast<char*>(in);
        std::size_t inLeft = inBytes;
        char* outPointer = out;
        std::size_t outLeft = outBytes;
        if (iconv(descriptor, &inPointer, &inLeft, &outPointer, &outLeft) == Refused ||
            iconv(descriptor, nullptr, nullptr, &outPointer, &outLeft) == Refused) {
            return errno == E2BIG ? Outcome::TooSmall : Outcome::Failed;
        }
        written = outBytes - outLeft;
        return Outcome::Converted;
    }

    // Sets `needed` to the bytes the conversion of all `inBytes` bytes of
    // `in` writes, shift sequences included; Failed where it cannot be
    // done. The output goes piece by piece through a scratch block.
    Outcome Measure(const char* in, std::size_t inBytes, std::size_t& needed)
    {
        Reset();
        char* inPointer = const_cast<char*>(in);
        std::size_t inLeft = inBytes;
        std::size_t total = 0;
        bool ending = false;
        for (;;) {
            char scratch[256];
            char* outPointer = scratch;
            std::size_t outLeft = sizeof scratch;
            const std::size_t result = ending ? iconv(descriptor, nullptr, nullptr, &outPointer, &outLeft)
                                              : iconv(descriptor, &inPointer, &inLeft, &outPointer, &outLeft);
            const int error = errno;
            total += sizeof scratch - outLeft;
            if (result != Refused) {
                if (ending) {
                    needed = total;
                    return Outcome::Converted;
                }
                ending = true;
            } else if (error != E2BIG || outLeft == sizeof scratch) {
                // Invalid or unrepresentable input, or a character that
                // would not fit even an empty scratch block.
                return Outcome::Failed;
            }
        }
    }

private:
    static constexpr std::size_t Refused = static_cast<std::size_t>(-1);

    void Reset()
    {
        iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
    }

    iconv_t descriptor;
};

std::size_t UnitCount(const unsigned short* text)
{
    std::size_t count = 0;
    while (text[count] != 0) {
        ++count;
    }
    return count;
}

// The conversion behind UnicodeToChar and CharToUnicode: `sourceBytes`
// bytes of `source` (its terminator left out) into `target`, a block of
// `targetLength` units of type Unit.
template <typename Unit>
bool ConvertText(const char* toCode, const char* fromCode, const char* source, std::size_t sourceBytes, Unit* target,
                 unsigned long targetLength)
{
    Converter converter(toCode, fromCode);
    if (!converter.IsOpen()) {
        return true;
    }
    // The last unit is kept for the terminator. A length beyond what the
    // address space can hold is cut to it.
    constexpr std::size_t MostUnits = SIZE_MAX / sizeof(Unit);
    const std::size_t room = targetLength - 1 < MostUnits ? targetLength - 1 : MostUnits;
    std::size_t written = 0;
    switch (converter.Convert(source, sourceBytes, reinterpret_cast<char*>(target), room * sizeof(Unit), written)) {
    case Outcome::Converted:
        target[written / sizeof(Unit)] = 0;
        return true;
    case Outcome::Failed:
        target[0] = 0;
        return true;
    case Outcome::TooSmall:
        break;
    }
    target[0] = 0;
    // The text decides between the two results, not the place where the
    // target ran out: a text that cannot be converted is not too large.
    std::size_t needed = 0;
    return converter.Measure(source, sourceBytes, needed) == Outcome::Failed;
}

// The units of type Unit the conversion of `sourceBytes` bytes of `source`
// writes, or 0 where it cannot be done.
template <typename Unit>
unsigned long MeasureText(const char* toCode, const char* fromCode, const char* source, std::size_t sourceBytes)
{
    Converter converter(toCode, fromCode);
    std::size_t needed = 0;
    if (!converter.IsOpen() || converter.Measure(source, sourceBytes, needed) != Outcome::Converted) {
        return 0;
    }
    return needed / sizeof(Unit);
}

} // namespace

StringConverter_PC::StringConverter_PC() = default;
StringConverter_PC::~StringConverter_PC() = default;

bool StringConverter_PC::UnicodeToChar(const unsigned short* source, char* target, unsigned long targetLength)
{
    if (target == nullptr || targetLength == 0) {
        return false;
    }
    target[0] = '\0';
    if (source == nullptr) {
        return true;
    }
    const LocaleCodeset codeset;
    return ConvertText(codeset.Name(), Utf16, reinterpret_cast<const char*>(source),
                       UnitCount(source) * sizeof(unsigned short), target, targetLength);
}

bool StringConverter_PC::CharToUnicode(const char* source, unsigned short* target, unsigned long targetLength)
{
    if (target == nullptr || targetLength == 0) {
        return false;
    }
    target[0] = 0;
    if (source == nullptr) {
        return true;
    }
    const LocaleCodeset codeset;
    return ConvertText(Utf16, codeset.Name(), source, std::strlen(source), target, targetLength);
}

unsigned long StringConverter_PC::CharLength(const unsigned short* source)
{
    if (source == nullptr) {
        return 0;
    }
    const LocaleCodeset codeset;
    return MeasureText<char>(codeset.Name(), Utf16, reinterpret_cast<const char*>(source),
                             UnitCount(source) * sizeof(unsigned short));
}

unsigned long StringConverter_PC::UnicodeLength(const char* source)
{
    if (source == nullptr) {
        return 0;
    }
    const LocaleCodeset codeset;
    return MeasureText<unsigned short>(Utf16, codeset.Name(), source, std::strlen(source));
}

StringConverter_PC::StringConverter_PC(const StringConverter_PC& other) : StringConverter(other) {}

StringConverter_PC& StringConverter_PC::operator=(const StringConverter_PC& other)
{
    StringConverter::operator=(other);
    return *this;
}

} // namespace Utilities
