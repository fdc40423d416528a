// SPDX-License-Identifier: MIT
// Counts memory allocations: `PROGRAM FOLDER SIZE` prints their number while every boolean is read
// once from the cache.

#include <cstdlib>
#include <iostream>
#include <new>

#include "Own/OwnStore.h"

namespace {

std::size_t allocations = 0;

void* allocate(std::size_t size, std::size_t alignment) {
    ++allocations;
    const std::size_t rounded = (size + alignment - 1) / alignment * alignment;
    void* const memory = std::aligned_alloc(alignment, rounded);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t /*alignment*/) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
    std::free(memory);
}

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
    const std::size_t before = allocations;
    const std::size_t again = numberOfTrue();
    const std::size_t after = allocations;
    if (before == 0 || first == 0 || again != first) {
        std::cerr << "nothing was counted\n";
        return EXIT_FAILURE;
    }
    std::cout << after - before << '\n';
    return EXIT_SUCCESS;
}
