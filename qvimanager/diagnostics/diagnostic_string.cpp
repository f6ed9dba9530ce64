#include "qvimanager/diagnostics/diagnostic_string.h"

#include "qvimanager/diagnostics/diagnostic_kit.h"
#include "qvimanager/diagnostics/exception_diagnostic.h"

#include <cstdio>
#include <cstring>
#include <mutex>

namespace Diagnostics {

namespace {

const char kTerminator = '\0';

// Strings on every thread share the pool and share blocks among their
// copies: each change of a block's holders or text happens under the
// pool's lock.
using Hold = std::lock_guard<std::recursive_mutex>;

unsigned TextLength(const char* text)
{
    return text == nullptr ? 0U : static_cast<unsigned>(std::strlen(text));
}

} // namespace

String::String() : block(nullptr), length(0) {}

String::String(const char* text) : block(nullptr), length(0)
{
    Assign(text, TextLength(text));
}

String::String(int value) : block(nullptr), length(0)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%i", value);
    Assign(buffer, TextLength(buffer));
}

String::String(long value) : String(static_cast<int>(static_cast<std::int32_t>(value))) {}

String::String(short value) : String(static_cast<int>(value)) {}

String::String(unsigned int value) : block(nullptr), length(0)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%u", value);
    Assign(buffer, TextLength(buffer));
}

String::String(unsigned long value)
    : String(static_cast<unsigned int>(static_cast<std::uint32_t>(value)))
{
}

String::String(unsigned short value) : String(static_cast<unsigned int>(value)) {}

String::String(float value) : String(static_cast<double>(value)) {}

String::String(double value) : block(nullptr), length(0)
{
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.15g", value);
    Assign(buffer, TextLength(buffer));
}

String::String(bool value) : String(value ? "true" : "false") {}

String::String(const String& other) : block(nullptr), length(0)
{
    const Hold hold(PoolGuard());
    block = other.block;
    length = other.length;
    if (block != nullptr) {
        block->AddReference();
    }
}

String& String::operator=(const String& other)
{
    if (this == &other) {
        return *this;
    }
    const Hold hold(PoolGuard());
    if (other.block != nullptr) {
        other.block->AddReference();
    }
    Release();
    block = other.block;
    length = other.length;
    return *this;
}

String::~String()
{
    Release();
}

const char* String::c_str() const
{
    return block == nullptr ? "" : static_cast<const char*>(*block);
}

String& String::operator+=(const String& other)
{
    const Hold hold(PoolGuard());
    if (other.length == 0) {
        return *this;
    }
    if (block == nullptr) {
        return *this = other;
    }
    // Holding the other block keeps its text while this one changes, also
    // when both are the same string.
    const String source(other);
    PrepareModification();
    AppendInPlace(source.c_str(), source.Characters());
    return *this;
}

String& String::operator+=(const char* text)
{
    const unsigned count = TextLength(text);
    if (count == 0) {
        return *this;
    }
    const Hold hold(PoolGuard());
    if (block == nullptr) {
        Assign(text, count);
        return *this;
    }
    PrepareModification();
    AppendInPlace(text, count);
    return *this;
}

String String::operator+(const String& other) const
{
    String result(*this);
    result += other;
    return result;
}

bool String::operator==(const String& other) const
{
    return std::strcmp(c_str(), other.c_str()) == 0;
}

char String::operator[](unsigned index) const
{
    if (index >= length) {
        throw ExceptionDiagnostic(String("Diagnostics::String::operator[]: index out of range"));
    }
    return c_str()[index];
}

bool String::IsEmpty() const
{
    return length == 0;
}

bool String::HasText() const
{
    return length != 0;
}

String String::GetValueString() const
{
    return *this;
}

void String::Assign(const char* text, unsigned count)
{
    const Hold hold(PoolGuard());
    Release();
    if (count == 0) {
        return;
    }
    MemoryBlock<char>* fresh = DiagnosticKit::Instance().Memory().Allocate(char(), count + 1);
    fresh->AddReference();
    block = fresh;
    length = 0;
    AppendInPlace(text, count);
}

void String::AppendInPlace(const char* text, unsigned count)
{
    const unsigned held = Characters();
    const unsigned size = block->Size();
    block->CopyBlock(text, held, count);
    if (held + count + 1 > size) {
        // Cut: the last byte becomes the terminator, the length the size.
        block->CopyBlock(&kTerminator, size - 1, 1);
        length = size;
    } else {
        block->CopyBlock(&kTerminator, held + count, 1);
        length = held + count;
    }
}

void String::PrepareModification()
{
    if (block != nullptr && block->GetReferenceCount() > 1) {
        MemoryBlock<char>* own = block->Clone();
        own->AddReference();
        block->RemoveReference();
        block = own;
    }
}

void String::Release()
{
    if (block != nullptr) {
        const Hold hold(PoolGuard());
        block->RemoveReference();
        block = nullptr;
    }
    length = 0;
}

unsigned String::Characters() const
{
    if (block == nullptr) {
        return 0;
    }
    return length >= block->Size() ? block->Size() - 1 : length;
}

} // namespace Diagnostics
