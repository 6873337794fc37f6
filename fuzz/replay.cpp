// Feeds the files of a folder to a fuzz harness, one after the other: the seeds as an ordinary test.
// SPDX-License-Identifier: see LICENSE

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count);

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2 || !std::filesystem::is_directory(arguments[1])) {
        std::fprintf(stderr, "usage: %s FOLDER\n", arguments[0]);
        return 2;
    }
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::printf("%s\n",
                    entry.path().string().c_str()); // the last line names the file that broke the harness
        std::fflush(stdout);
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        // A copy of exactly the file's size lets the address sanitizer see a byte read too far.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
        LLVMFuzzerTestOneInput(input.data(), input.size());
        ++files;
    }
    return files == 0 ? 1 : 0; // a harness without seeds would be tested by nothing
}
