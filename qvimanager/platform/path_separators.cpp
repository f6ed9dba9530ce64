#include "qvimanager/platform/path_separators.h"

namespace Utilities {

namespace {

// The first and last lead byte of the double-byte character sets.
constexpr unsigned char FirstLeadByte = 128;
constexpr unsigned char LastLeadByte = 159;

bool IsLeadByte(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    return value >= FirstLeadByte && value <= LastLeadByte;
}

} // namespace

String ConvertToPlatformSeparators(const String& path, char platformSeparator)
{
    const unsigned long count = path.GetTokenCount('/');
    String converted;
    for (unsigned long index = 0; index < count; ++index) {
        if (index > 0) {
            converted += String(platformSeparator);
        }
        converted += path.GetToken(index, '/');
    }
    return converted;
}

String ConvertToIndependentSeparators(const String& path, char platformSeparator)
{
    const unsigned long count = path.GetTokenCount(platformSeparator);
    String converted;
    for (unsigned long index = 0; index < count; ++index) {
        if (index > 0) {
            // The byte in front of this separator is the last byte written:
            // the end of the previous piece, or the previous separator
            // ('/' or '\\', never a lead byte) when that piece is empty.
            const unsigned long written = converted.Length();
            const bool keep = platformSeparator == '\\' && written > 0 &&
                              IsLeadByte(converted.GetCharPointer()[written - 1]);
            converted += String(keep ? '\\' : '/');
        }
        converted += path.GetToken(index, platformSeparator);
    }
    return converted;
}

} // namespace Utilities
