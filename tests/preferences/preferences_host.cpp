// A program for the tests of the shipped "Preferences" store: it is copied
// into a folder of its own, beside a "plugins" folder with the store, and
// resolves "Preferences" as the library does. It runs the commands of its
// arguments in order and prints one line for each. The fields of a command
// are separated by ':' and percent-encoded ("%0A" is LF, "%3A" ':'); texts
// it prints are percent-encoded alike (every byte but letters, digits and
// "-_." as %HH).
//   get:S:K:D        "value: V", what GetValue(S, K, D) gives
//   set:S:K:V        SetValue(S, K, V): "set"
//   fill:S:P:N       sets the keys P0 ... P(N-1) of S to "value of P<i>":
//                    "filled: N"
//   count:S:P:N      "count: M", how many of the keys P0 ... P(N-1) of S
//                    hold the value that fill gives them
//   big-loop:S:K:N:G sets K of S to the big value of generation G, G+1 and
//                    so on, of N bytes (and a few more), for ever; prints
//                    "writing" once the first of them is stored. Ends when
//                    the process that started it is gone.
//   big-check:S:K:N  "big: absent", "big: G" for the complete big value of
//                    generation G, or "big: torn" for anything else
// A failure prints "failure: " and the exception's text, and the host goes
// on with the next command.

#include "qvimanager/components/resolve.h"
#include "qvimanager/foundation/exception.h"
#include "qvimanager/instruments/interfaces/preferences.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <unistd.h>

#include "tests/preferences/percent_encoding.h"

namespace {

using PercentEncoding::Decoded;
using PercentEncoding::Encoded;
using Utilities::SmartPointer;
using Utilities::String;

// The fields of a command after its name, decoded.
std::vector<std::string> Fields(const std::string& command)
{
    std::vector<std::string> fields;
    std::size_t start = command.find(':');
    while (start != std::string::npos) {
        const std::size_t end = command.find(':', start + 1);
        fields.push_back(Decoded(command.substr(start + 1, end == std::string::npos ? end : end - start - 1)));
        start = end;
    }
    return fields;
}

String Text(const std::string& bytes)
{
    return String(bytes);
}

std::string Bytes(const String& text)
{
    return std::string(text.GetCharPointer(), text.Length());
}

// The big value of generation `generation`: its number at both ends, and
// between them `size` bytes that the file has to escape.
std::string BigValue(unsigned long generation, std::size_t size)
{
    static const char pattern[] = "ab\\=\n ]#[;\t\xC3\xA4z";
    const std::string number = std::to_string(generation);
    std::string value = "g=" + number + ";";
    value.reserve(size + 2 * number.size() + 8);
    for (std::size_t index = 0; index < size; ++index) {
        value += pattern[(index + generation) % (sizeof pattern - 1)];
    }
    value += ";g=" + number;
    return value;
}

void Run(QVIManager::Preferences& store, const std::string& command)
{
    const std::string name = command.substr(0, command.find(':'));
    const std::vector<std::string> fields = Fields(command);
    if (name == "get" && fields.size() == 3) {
        const String value = store.GetValue(Text(fields[0]), Text(fields[1]), Text(fields[2]));
        std::printf("value: %s\n", Encoded(Bytes(value)).c_str());
    } else if (name == "set" && fields.size() == 3) {
        store.SetValue(Text(fields[0]), Text(fields[1]), Text(fields[2]));
        std::printf("set\n");
    } else if (name == "fill" && fields.size() == 3) {
        const int count = std::atoi(fields[2].c_str());
        for (int index = 0; index < count; ++index) {
            const std::string key = fields[1] + std::to_string(index);
            store.SetValue(Text(fields[0]), Text(key), Text("value of " + key));
        }
        std::printf("filled: %d\n", count);
    } else if (name == "count" && fields.size() == 3) {
        const int count = std::atoi(fields[2].c_str());
        int right = 0;
        for (int index = 0; index < count; ++index) {
            const std::string key = fields[1] + std::to_string(index);
            if (Bytes(store.GetValue(Text(fields[0]), Text(key), Text(""))) == "value of " + key) {
                ++right;
            }
        }
        std::printf("count: %d\n", right);
    } else if (name == "big-loop" && fields.size() == 4) {
        const std::size_t size = std::strtoul(fields[2].c_str(), nullptr, 10);
        const pid_t parent = getppid();
        bool told = false;
        for (unsigned long generation = std::strtoul(fields[3].c_str(), nullptr, 10); getppid() == parent;
             ++generation) {
            store.SetValue(Text(fields[0]), Text(fields[1]), Text(BigValue(generation, size)));
            if (!told) {
                std::printf("writing\n");
                told = true;
            }
        }
    } else if (name == "big-check" && fields.size() == 3) {
        const std::size_t size = std::strtoul(fields[2].c_str(), nullptr, 10);
        const std::string value = Bytes(store.GetValue(Text(fields[0]), Text(fields[1]), Text("")));
        if (value.empty()) {
            std::printf("big: absent\n");
        } else {
            const unsigned long generation = std::strtoul(value.c_str() + (value.size() > 2 ? 2 : 0), nullptr, 10);
            if (value == BigValue(generation, size)) {
                std::printf("big: %lu\n", generation);
            } else {
                std::printf("big: torn\n");
            }
        }
    } else {
        std::printf("unknown command: %s\n", command.c_str());
    }
}

} // namespace

int main(int argc, char** argv)
{
    // Line by line, also into a pipe: a test waits for "writing".
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    SmartPointer<QVIManager::Preferences> store = Utilities::Resolve<QVIManager::Preferences>(String("Preferences"));
    if (!store.IsValid()) {
        std::printf("no store\n");
        return 1;
    }
    for (int index = 1; index < argc; ++index) {
        try {
            Run(*store, argv[index]);
        } catch (const Utilities::Exception& failure) {
            std::printf("failure: %s\n", failure.GetExceptionText().GetCharPointer());
        }
    }
    return 0;
}
