// SPDX-License-Identifier: MIT
#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>
#include <vector>

#include "Workload/Participant.h"

/// QSettings on an INI file.
class QSettingsStore {
  public:
    using Handle = QString;

    static void prepare(const std::filesystem::path& folder,
                        const std::vector<Workload::Setting>& settings);
    explicit QSettingsStore(const std::filesystem::path& folder);

    [[nodiscard]] static QString pathIn(const std::filesystem::path& folder);
    [[nodiscard]] static Handle handle(std::string_view keyPath, Workload::Kind kind);
    [[nodiscard]] QVariant read(const Handle& key) const { return settings_->value(key); }
    [[nodiscard]] bool readBoolean(const Handle& key) const {
        return settings_->value(key, false).toBool();
    }
    [[nodiscard]] std::int64_t readInteger(const Handle& key) const {
        return settings_->value(key, 0).toLongLong();
    }
    void writeInteger(const Handle& key, std::int64_t number) {
        settings_->setValue(key, static_cast<qlonglong>(number));
    }
    void save() { settings_->sync(); }

  private:
    std::unique_ptr<QSettings> settings_;
};

static_assert(Workload::Participant<QSettingsStore>);
