// Runs a fuzz target on saved inputs, without libFuzzer: every file named
// on the command line, and every file in the folders named there (not
// their subfolders), in name order. A crash, a sanitizer report or a broken
// check ends the program as it would end the fuzzer; otherwise it prints
// how many inputs it ran and exits 0. A folder or file that does not exist
// is an error, unless `--if-present` stands before it (the regressions of a
// target that has none yet), and so is running no input at all: a test
// that runs nothing must not pass.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" __attribute__((weak)) int LLVMFuzzerInitialize(int* argc, char*** argv);

int main(int argc, char** argv)
{
    namespace fs = std::filesystem;
    if (LLVMFuzzerInitialize != nullptr) {
        LLVMFuzzerInitialize(&argc, &argv);
    }
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const bool optional = std::string(argv[i]) == "--if-present" && i + 1 < argc;
        if (optional) {
            ++i;
        }
        const fs::path path(argv[i]);
        std::error_code error;
        if (optional && !fs::exists(path, error)) {
            continue;
        }
        if (fs::is_directory(path, error)) {
            for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
                if (entry.is_regular_file()) {
                    inputs.push_back(entry.path());
                }
            }
        } else if (fs::is_regular_file(path, error)) {
            inputs.push_back(path);
        } else {
            std::fprintf(stderr, "replay: %s is neither a file nor a folder\n", argv[i]);
            return 2;
        }
    }
    std::sort(inputs.begin(), inputs.end());
    if (inputs.empty()) {
        std::fprintf(stderr, "replay: no inputs\n");
        return 2;
    }
    for (const fs::path& path : inputs) {
        std::ifstream file(path, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        if (!file.good() && !file.eof()) {
            std::fprintf(stderr, "replay: cannot read %s\n", path.c_str());
            return 2;
        }
        std::printf("replay: %s\n", path.c_str());
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    }
    std::printf("replay: %zu inputs\n", inputs.size());
    return 0;
}
