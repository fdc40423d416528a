// SPDX-License-Identifier: MIT
#pragma once

/// Rows that every store has: reads, writes and saves inside one process, at one size.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "Workload/Participant.h"

namespace Measures {

constexpr std::size_t writesInABurst = 24;
/// For rows that wait for a disk or another thread; their median says more than their mean.
constexpr int samplesOfARow = 10;

/// A store of `size` generated settings, and the handles of a host for each of them.
template <Workload::Participant Store>
struct StoreOfSize {
    using Handle = typename Store::Handle;

    StoreOfSize(const std::filesystem::path& folder, std::size_t size)
        : name("/" + std::to_string(size)), settings(Workload::generatedSettings(size)) {
        Store::prepare(folder, settings);
        store = std::make_unique<Store>(folder);
        std::mt19937 random(static_cast<std::mt19937::result_type>(size));
        std::vector<const Workload::Setting*> order;
        for (const Workload::Setting& setting : settings) order.push_back(&setting);
        std::shuffle(order.begin(), order.end(), random);
        for (const Workload::Setting* setting : order) addHandle(*setting);
    }

    void addHandle(const Workload::Setting& setting) {
        const Workload::Kind kind = Workload::kindOf(setting.value);
        all.push_back(store->handle(setting.keyPath, kind));
        if (kind == Workload::Kind::Boolean) booleans.push_back(all.back());
        if (kind == Workload::Kind::Integer) integers.push_back(all.back());
    }

    std::string name;
    std::vector<Workload::Setting> settings;
    std::unique_ptr<Store> store;
    /// In random order.
    std::vector<Handle> all, booleans, integers;
};

/// Times calls of `read`, with all handles in turn, repeatedly.
template <typename Handle, typename Read>
void readRoundAndRound(benchmark::State& state, std::span<const Handle> handles, const Read& read) {
    for (const Handle& handle : handles) read(handle);
    std::size_t index = 0;
    for ([[maybe_unused]] const auto unused : state) {
        read(handles[index]);
        if (++index == handles.size()) index = 0;
    }
}

/// One row over all handles and one over the first alone.
template <typename Handle, typename Read>
void registerReadRows(const std::string& row, const std::string& size,
                      std::span<const Handle> handles, Read read) {
    benchmark::RegisterBenchmark((row + "AllKeys" + size).c_str(), [=](benchmark::State& state) {
        readRoundAndRound<Handle>(state, handles, read);
    });
    benchmark::RegisterBenchmark((row + "HotKey" + size).c_str(), [=](benchmark::State& state) {
        readRoundAndRound<Handle>(state, handles.first(1), read);
    });
}

/// Seconds for each write of a burst, on the caller's thread.
template <typename Store, typename Handle>
double secondsOfAWrite(Store& store, std::span<const Handle> handles, std::int64_t& number) {
    const auto start = std::chrono::steady_clock::now();
    for (const Handle& handle : handles) store.writeInteger(handle, ++number);
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / static_cast<double>(handles.size());
}

template <Workload::Participant Store>
void writeBurst(benchmark::State& state, Store& store,
                std::span<const typename Store::Handle> handles) {
    constexpr std::int64_t before = 10'000;
    static std::int64_t number = before;
    if (number == before) {  // so that no burst is the first after the store was opened
        secondsOfAWrite(store, handles, number);
        store.save();
    }
    for ([[maybe_unused]] const auto unused : state)
        state.SetIterationTime(secondsOfAWrite(store, handles, number));
    store.save();
}

template <Workload::Participant Store>
void saveBurst(benchmark::State& state, Store& store,
               std::span<const typename Store::Handle> handles) {
    static std::int64_t number = 200'000;
    for ([[maybe_unused]] const auto unused : state) {
        secondsOfAWrite(store, handles, number);
        store.save();
    }
}

template <Workload::Participant Store>
void saveOne(benchmark::State& state, Store& store, const typename Store::Handle& handle) {
    static std::int64_t number = 100'000;
    for ([[maybe_unused]] const auto unused : state) {
        store.writeInteger(handle, ++number);
        store.save();
    }
}

template <Workload::Participant Store>
void registerWriteRows(StoreOfSize<Store>& of) {
    using Handle = typename Store::Handle;
    Store& store = *of.store;
    const auto burst =
        std::span<const Handle>(of.integers).first(std::min(writesInABurst, of.integers.size()));
    benchmark::RegisterBenchmark(
        ("WriteBurst" + of.name).c_str(),
        [&store, burst](benchmark::State& state) { writeBurst(state, store, burst); })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(samplesOfARow);
    benchmark::RegisterBenchmark(
        ("SaveBurst" + of.name).c_str(),
        [&store, burst](benchmark::State& state) { saveBurst(state, store, burst); })
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(samplesOfARow);
    benchmark::RegisterBenchmark(
        ("Save" + of.name).c_str(),
        [&store, burst](benchmark::State& state) { saveOne(state, store, burst.front()); })
        ->UseRealTime()
        ->Iterations(1)
        ->Repetitions(samplesOfARow);
}

template <Workload::Participant Store>
void registerStoreRows(StoreOfSize<Store>& of) {
    Store& store = *of.store;
    using Handle = typename Store::Handle;
    registerReadRows<Handle>("Read", of.name, of.all, [&store](const Handle& handle) {
        decltype(auto) value = store.read(handle);
        benchmark::DoNotOptimize(value);
    });
    registerReadRows<Handle>("Boolean", of.name, of.booleans, [&store](const Handle& handle) {
        benchmark::DoNotOptimize(store.readBoolean(handle));
    });
    registerWriteRows(of);
}

/// Rows of integers that `empty`, a store without any setting, answers by a default.
template <Workload::Participant Store>
void registerDefaultRows(StoreOfSize<Store>& of, Store& empty) {
    using Handle = typename Store::Handle;
    auto* const handles = new std::vector<Handle>;
    for (const Workload::Setting& setting : of.settings) {
        if (Workload::kindOf(setting.value) == Workload::Kind::Integer)
            handles->push_back(empty.handle(setting.keyPath, Workload::Kind::Integer));
    }
    benchmark::RegisterBenchmark(
        ("DefaultAgain" + of.name).c_str(), [&empty, handles](benchmark::State& state) {
            readRoundAndRound<Handle>(state, *handles, [&empty](const Handle& handle) {
                benchmark::DoNotOptimize(empty.readInteger(handle));
            });
        });
}

/// The first two arguments of a program: `PROGRAM FOLDER SIZE [options]`. The other arguments are
/// for the benchmark library.
struct RowArguments {
    std::filesystem::path folder;
    std::size_t size = 0;
};

inline RowArguments takeRowArguments(int& argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: " << argv[0] << " FOLDER SIZE [BENCHMARK-OPTION...]\n";
        std::exit(2);
    }
    RowArguments arguments{argv[1], std::stoul(argv[2])};
    setenv("XDG_CONFIG_HOME", arguments.folder.c_str(), 1);
    std::copy(argv + 3, argv + argc + 1, argv + 1);
    argc -= 2;
    return arguments;
}

inline int runRows(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}

}  // namespace Measures
