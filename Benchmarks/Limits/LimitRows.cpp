// SPDX-License-Identifier: MIT
// The lower bounds inside one process.
#include <benchmark/benchmark.h>

#include "Limits/BareStore.h"
#include "Limits/LocalePattern.h"
#include "Measures/StoreRows.h"

int main(int argc, char** argv) {
    const Measures::RowArguments arguments = Measures::takeRowArguments(argc, argv);
    Measures::StoreOfSize<BareStore> of(arguments.folder, arguments.size);
    Measures::registerStoreRows(of);
    const auto half = std::span<const std::string>(of.all).first(of.all.size() / 2);
    benchmark::RegisterBenchmark(("DefaultAgain" + of.name).c_str(), [&of, half](
                                                                         benchmark::State& state) {
        Measures::readRoundAndRound<std::string>(state, half, [&of](const std::string& keyPath) {
            benchmark::DoNotOptimize(of.store->read(keyPath));
        });
    });
    benchmark::RegisterBenchmark(("CopyOfAMap" + of.name).c_str(), [&of](benchmark::State& state) {
        for ([[maybe_unused]] const auto unused : state) {
            auto copy = of.store->values();
            benchmark::DoNotOptimize(copy);
        }
    });
    benchmark::RegisterBenchmark(("LoadDefaults" + of.name).c_str(), [](benchmark::State& state) {
        for ([[maybe_unused]] const auto unused : state)
            benchmark::DoNotOptimize(lengthOfTimePattern());
    });
    return Measures::runRows(argc, argv);
}
