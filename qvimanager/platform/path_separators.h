#ifndef QVIMANAGER_PLATFORM_PATH_SEPARATORS_H
#define QVIMANAGER_PLATFORM_PATH_SEPARATORS_H

// The two conversions between the form of a path that the library hands
// out, with '/' between its pieces, and the form kept inside the platform
// classes, with the platform's own separator. They are written once, with
// the platform's separator as a parameter, so that every platform's rules
// hold and can be tested side by side: with '/' both are the identity, with
// '\\' they swap the two separators.
//
// Both work on String tokens (GetTokenCount, GetToken): empty pieces are
// kept, so doubled, leading and trailing separators survive a conversion.

#include "qvimanager/foundation/string.h"

namespace Utilities {

// Splits `path` on '/' and joins the pieces with `platformSeparator`.
// "a/b" with '\\' gives "a\\b"; the empty path stays empty.
String ConvertToPlatformSeparators(const String& path, char platformSeparator);

// Splits `path` on `platformSeparator` and joins the pieces with '/'.
// Where the platform separator is '\\', a separator whose preceding byte
// lies in 128 to 159 stays '\\': those bytes lead the two-byte characters
// of the double-byte character sets, whose second byte may be a '\\' that
// belongs to the character. With any other separator no byte is kept.
String ConvertToIndependentSeparators(const String& path, char platformSeparator);

} // namespace Utilities

#endif
