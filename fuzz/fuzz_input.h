#ifndef QVIMANAGER_FUZZ_FUZZ_INPUT_H
#define QVIMANAGER_FUZZ_FUZZ_INPUT_H

// What every fuzz target shares: the input taken apart byte by byte, and the
// check that stops the run when the library breaks a promise. A target is
// built twice: as a libFuzzer program (fuzz preset) and as a replay program
// of the tests (replay_main.cpp), which runs saved inputs through the same
// LLVMFuzzerTestOneInput.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace Fuzz {

// The input, consumed from the front. Past the end every read gives 0 or
// the empty text, so a short input is still a complete script.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data(data), size(size) {}

    bool Empty() const { return position >= size; }
    std::size_t Left() const { return size - position; }

    std::uint8_t Byte()
    {
        return position < size ? data[position++] : 0;
    }
    // A whole number below `bound` (bound > 0).
    unsigned Choice(unsigned bound)
    {
        return Byte() % bound;
    }
    std::uint16_t Word()
    {
        const std::uint16_t low = Byte();
        return static_cast<std::uint16_t>(low | (Byte() << 8));
    }
    std::uint32_t Long()
    {
        const std::uint32_t low = Word();
        return low | (static_cast<std::uint32_t>(Word()) << 16);
    }
    // A text of at most `most` bytes: its length byte, then the bytes.
    std::string Text(std::size_t most = 255)
    {
        std::size_t length = Byte();
        if (length > most) {
            length = most;
        }
        if (length > Left()) {
            length = Left();
        }
        std::string text(reinterpret_cast<const char*>(data + position), length);
        position += length;
        return text;
    }
    // Everything not read yet.
    std::string Rest()
    {
        std::string text(reinterpret_cast<const char*>(data + position), Left());
        position = size;
        return text;
    }

private:
    const std::uint8_t* data;
    std::size_t size;
    std::size_t position = 0;
};

// A broken promise: says which and ends the process as a crash, so that the
// fuzzer keeps the input.
[[noreturn]] inline void Broken(const std::string& what)
{
    std::fprintf(stderr, "fuzz check failed: %s\n", what.c_str());
    std::fflush(stderr);
    std::abort();
}

inline void Check(bool holds, const std::string& what)
{
    if (!holds) {
        Broken(what);
    }
}

} // namespace Fuzz

#endif
