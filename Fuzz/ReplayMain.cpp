// SPDX-License-Identifier: MIT
// Replaces the fuzzing engine: runs the inputs in its arguments, which are folders or files. The
// first argument must exist, and no folder may be empty.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "Fuzzing.h"

namespace {

std::vector<std::filesystem::path> inputsOf(const std::filesystem::path& place) {
    if (!std::filesystem::is_directory(place)) return {place};
    std::vector<std::filesystem::path> inputs;
    for (const auto& entry : std::filesystem::directory_iterator(place))
        if (entry.is_regular_file()) inputs.push_back(entry.path());
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

/// The name is printed first, so that the last name printed is that of a crashing input.
bool replay(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    if (!file) return false;
    std::cout << path.filename().string() << std::endl;
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return true;
}

int fail(const std::string& why, const std::filesystem::path& path) {
    std::cerr << why << ": " << path.string() << '\n';
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::filesystem::path> places(argv + 1, argv + argc);
    if (places.empty()) return fail("usage", "PROGRAM CORPUS [FINDINGS]");
    for (const std::filesystem::path& place : places) {
        if (place != places.front() && !std::filesystem::exists(place)) continue;
        const std::vector<std::filesystem::path> inputs = inputsOf(place);
        if (inputs.empty()) return fail("no inputs", place);
        for (const std::filesystem::path& input : inputs)
            if (!replay(input)) return fail("cannot be read", input);
    }
    return EXIT_SUCCESS;
}
