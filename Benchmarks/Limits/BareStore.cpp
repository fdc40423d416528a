// SPDX-License-Identifier: MIT
#include "Limits/BareStore.h"

#include <fstream>

#include "Limits/FileReplacement.h"
#include "Workload/FileContents.h"

void BareStore::prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings) {
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "size") << settings.size();
}

BareStore::BareStore(const std::filesystem::path& folder)
    : folder_(folder), bytes_(Workload::contentsOf(folder / "files" / "XMLReading")) {
    for (Workload::Setting& setting :
         Workload::generatedSettings(std::stoul(Workload::contentsOf(folder / "size"))))
        values_.emplace(setting.keyPath, std::move(setting.value));
    worker_ = std::thread([this] { work(); });
}

BareStore::~BareStore() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_one();
    worker_.join();
}

void BareStore::writeInteger(const Handle& keyPath, std::int64_t number) {
    values_[keyPath] = number;
    {
        const std::lock_guard lock(mutex_);
        ++writes_;
    }
    changed_.notify_one();
}

void BareStore::save() {
    replaceFileBarely(folder_ / "saved", bytes_);
}

void BareStore::work() {
    std::unique_lock lock(mutex_);
    for (std::size_t seen = 0; !isEnding_; seen = writes_)
        changed_.wait(lock, [&] { return isEnding_ || writes_ != seen; });
}
