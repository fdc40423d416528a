// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "Workload/Participant.h"

/// The bare work that every store has to do: reading a map, changing a map and waking a thread,
/// replacing a file. A save writes the bytes of `FOLDER/files/XMLReading`.
class BareStore {
  public:
    using Handle = std::string;

    static void prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings);
    explicit BareStore(const std::filesystem::path& folder);
    BareStore(const BareStore&) = delete;
    BareStore& operator=(const BareStore&) = delete;
    ~BareStore();

    [[nodiscard]] static Handle handle(std::string_view keyPath, Workload::Kind /*kind*/) {
        return Handle(keyPath);
    }
    [[nodiscard]] const Workload::Value& read(const Handle& keyPath) const {
        return values_.find(keyPath)->second;
    }
    [[nodiscard]] bool readBoolean(const Handle& keyPath) const {
        return *std::get_if<bool>(&read(keyPath));
    }
    [[nodiscard]] std::int64_t readInteger(const Handle& keyPath) const {
        return *std::get_if<std::int64_t>(&read(keyPath));
    }
    void writeInteger(const Handle& keyPath, std::int64_t number);
    void save();

    [[nodiscard]] const auto& values() const { return values_; }

  private:
    void work();

    std::filesystem::path folder_;
    std::string bytes_;
    std::unordered_map<std::string, Workload::Value> values_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t writes_ = 0;
    bool isEnding_ = false;
    std::thread worker_;
};

static_assert(Workload::Participant<BareStore>);
