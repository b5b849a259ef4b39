// Runs a target's inputs one after the other: files, or folders of them. Without libFuzzer.
#include "check.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// The target works in a folder of its own: all is read before it begins.
std::vector<std::string> inputsIn(const fs::path& path) {
    std::vector<std::string> all;
    if (fs::is_directory(path))
        for (const auto& entry : fs::directory_iterator(path))
            all.push_back(contentOf(entry.path()));
    else if (fs::exists(path))
        all.push_back(contentOf(path));
    return all;
}

} // namespace

int main(int argc, char** argv) {
    irmfuzz::everyInputTwice = true;
    std::vector<std::string> inputs{""};
    for (int i = 1; i < argc; ++i)
        for (std::string& input : inputsIn(argv[i]))
            inputs.push_back(std::move(input));
    if (inputs.size() == 1) {
        std::fputs("no inputs\n", stderr);
        return 2;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    for (const std::string& input : inputs)
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
    std::fprintf(stderr, "%zu inputs\n", inputs.size());
    return 0;
}
