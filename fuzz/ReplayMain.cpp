// Feeds the files of the folders named on the command line to one fuzz target, so that builds
// without a fuzzer test every input that fuzzing has found.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// An exception ends the test, as it should. NOLINTNEXTLINE(bugprone-exception-escape)
int main(int argc, char** argv) {
    std::vector<std::filesystem::path> files;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    for (const auto& file : files) {
        std::puts(file.c_str());
        std::fflush(stdout);
        std::ifstream stream(file, std::ios::binary);
        const std::vector<char> text(std::istreambuf_iterator<char>(stream), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(text.data()), text.size());
    }
    return files.empty() ? 1 : 0;
}
