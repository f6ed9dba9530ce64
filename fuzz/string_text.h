#ifndef QVIMANAGER_FUZZ_STRING_TEXT_H
#define QVIMANAGER_FUZZ_STRING_TEXT_H

// A String's bytes, all of them: operator std::string stops at a NUL, and
// the targets compare whole texts.

#include "qvimanager/foundation/string.h"

#include <string>

namespace Fuzz {

inline std::string Text(const Utilities::String& text)
{
    return std::string(text.GetCharPointer(), text.Length());
}

} // namespace Fuzz

#endif
