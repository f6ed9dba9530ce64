#include "qvimanager/diagnostics/diagnostic_stream.h"

namespace Diagnostics {

void Stream::Clear()
{
    String::operator=(String());
}

bool Stream::IsClear() const
{
    return IsEmpty();
}

Stream& Stream::operator<<(const char* text)
{
    String::operator+=(text);
    return *this;
}

Stream& Stream::operator<<(const String& text)
{
    String::operator+=(text);
    return *this;
}

Stream& Stream::operator<<(int value)
{
    String::operator+=(String(value));
    return *this;
}

} // namespace Diagnostics
