// SPDX-License-Identifier: MIT
// libplist reads and writes the same files as the store.

#include <benchmark/benchmark.h>
#include <plist/plist.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "Measures/StoreRows.h"
#include "Workload/FileContents.h"

namespace {

plist_t parse(const std::string& bytes) {
    const auto length = static_cast<std::uint32_t>(bytes.size());
    plist_t root = nullptr;
    if (bytes.starts_with("bplist"))
        plist_from_bin(bytes.data(), length, &root);
    else
        plist_from_xml(bytes.data(), length, &root);
    return root;
}

void readPropertyList(benchmark::State& state, const std::string& bytes) {
    for ([[maybe_unused]] const auto unused : state) {
        const plist_t root = parse(bytes);
        if (root == nullptr) state.SkipWithError("not read");
        plist_free(root);
    }
}

void writePropertyList(benchmark::State& state, plist_t root) {
    for ([[maybe_unused]] const auto unused : state) {
        char* text = nullptr;
        std::uint32_t length = 0;
        plist_to_xml(root, &text, &length);
        benchmark::DoNotOptimize(length);
        std::free(text);
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Measures::RowArguments arguments = Measures::takeRowArguments(argc, argv);
    const std::string xml = Workload::contentsOf(arguments.folder / "files" / "XMLReading");
    const std::string binary = Workload::contentsOf(arguments.folder / "files" / "BinaryReading");
    const std::string size = "/" + std::to_string(arguments.size);
    const plist_t tree = parse(xml);
    benchmark::RegisterBenchmark(("XMLWriting" + size).c_str(), writePropertyList, tree);
    benchmark::RegisterBenchmark(("XMLReading" + size).c_str(), readPropertyList, std::cref(xml));
    benchmark::RegisterBenchmark(("BinaryReading" + size).c_str(), readPropertyList,
                                 std::cref(binary));
    return Measures::runRows(argc, argv);
}
