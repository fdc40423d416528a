// SPDX-License-Identifier: MIT
// Counts memory allocations: `PROGRAM FOLDER SIZE` prints their number while every boolean is read
// once from the cache.

#include <cstdlib>
#include <iostream>

#include "Own/AllocationCount.h"
#include "Own/OwnStore.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " FOLDER SIZE\n";
        return 2;
    }
    setenv("XDG_CONFIG_HOME", argv[1], 1);
    const auto settings = Workload::generatedSettings(std::stoul(argv[2]));
    OwnStore::prepare(argv[1], settings);
    const OwnStore store{argv[1]};
    std::vector<std::string> keyPaths;
    for (const Workload::Setting& setting : settings) {
        if (Workload::kindOf(setting.value) == Workload::Kind::Boolean)
            keyPaths.push_back(setting.keyPath);
    }
    const auto numberOfTrue = [&keyPaths] {
        std::size_t count = 0;
        for (const std::string& keyPath : keyPaths) count += OwnStore::readBoolean(keyPath) ? 1 : 0;
        return count;
    };
    const std::size_t first = numberOfTrue();
    const std::size_t before = allocationsOfThread();
    const std::size_t again = numberOfTrue();
    const std::size_t after = allocationsOfThread();
    if (before == 0 || first == 0 || again != first) {
        std::cerr << "nothing was counted\n";
        return EXIT_FAILURE;
    }
    std::cout << after - before << '\n';
    return EXIT_SUCCESS;
}
