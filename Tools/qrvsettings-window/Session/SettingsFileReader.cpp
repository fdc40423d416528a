// SPDX-License-Identifier: MIT
#include "Session/SettingsFileReader.h"

#include <filesystem>
#include <mutex>
#include <utility>

#include "Platform/Dispatch/Dispatch.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFileCoordinator.h"
#include "Platform/Files/NSFilePresenter.h"
#include "QRVSettings/QRVSettings.h"
#include "Settings/FileFacts.h"
#include "Settings/SavePlaces.h"
#include "Settings/SettingsLock.h"

namespace QRVWindow {
namespace {

using Tool::PathFacts;

constexpr int millisecondsUntilSlow = 300;

/// One for all readers, and never destroyed: a process may end while a reading waits for a lock.
DispatchQueue& readingQueue() {
    static auto& queue = *new DispatchQueue("qrvsettings-window.read");
    return queue;
}

/// The folder where saves make new files, or the one in which it is to be made.
std::string existingFolderOf(const std::string& target) {
    std::filesystem::path folder = std::filesystem::path(target).parent_path();
    while (folder.has_relative_path() && Tool::factsOfPath(folder).kind == PathFacts::Kind::Missing)
        folder = folder.parent_path();
    return folder;
}

QString whyReadOnly(const std::string& location) {
    const QRVPlatform::ResolvedPath target = QRVPlatform::resolvedPath(location);
    if (target.error)
        return SettingsFileReader::tr("The links to the settings file lead nowhere: %1")
            .arg(QString::fromStdString(target.error.message()));
    const PathFacts facts = Tool::factsOfPath(target.path);
    if (facts.kind == PathFacts::Kind::File && (facts.mode & PathFacts::ownerMayWrite) == 0)
        return SettingsFileReader::tr("The settings file is read-only: its mode is %1.")
            .arg(QString::fromStdString(Tool::modeText(facts.mode)));
    const std::string folder = existingFolderOf(target.path);
    if (!Tool::isWritableFolder(folder))
        return SettingsFileReader::tr(
                   "The settings file cannot be replaced: no right to write in its folder, %1.")
            .arg(QString::fromStdString(folder));
    const PathFacts ofFolder = Tool::factsOfPath(folder);
    if ((ofFolder.mode & PathFacts::sticky) != 0 && facts.kind == PathFacts::Kind::File &&
        !ofFolder.isOwnedByUser && !facts.isOwnedByUser && !Tool::isRoot())
        return SettingsFileReader::tr(
                   "The settings file cannot be replaced: it belongs to %1, and in its folder only "
                   "owners may replace files.")
            .arg(QString::fromStdString(facts.owner));
    const std::string obstacle = Tool::obstacleToSaves(target.path);
    if (!obstacle.empty())
        return SettingsFileReader::tr("The settings file cannot be replaced: %1.")
            .arg(QString::fromStdString(obstacle));
    return {};
}

FileState::Kind kindOf(const Tool::SettingsFileCondition& condition, bool exists) {
    if (condition.error) return FileState::Kind::Unreadable;
    if (!condition.damage.empty()) return FileState::Kind::Damaged;
    return exists ? FileState::Kind::Present : FileState::Kind::Missing;
}

}  // namespace

/// Shared with the other threads, which may outlive the reader.
class SettingsFileReader::Inside : public NSFilePresenter,
                                   public std::enable_shared_from_this<Inside> {
  public:
    explicit Inside(SettingsFileReader* reader) : reader_(reader) {}

    [[nodiscard]] std::string presentedItemURL() const override { return location_; }
    [[nodiscard]] std::shared_ptr<NSOperationQueue> presentedItemOperationQueue() const override {
        return queue_;
    }
    void presentedItemDidChange() override { request(); }

    void watch() {
        if (!location_.empty()) NSFileCoordinator::addFilePresenter(*this);
    }
    void leave() {
        NSFileCoordinator::removeFilePresenter(*this);
        const std::lock_guard guard(mutex_);
        reader_ = nullptr;
    }

    quint64 request() {
        const std::lock_guard guard(mutex_);
        isAsked_ = true;
        if (!isReading_) {
            isReading_ = true;
            if (reader_ != nullptr)
                QMetaObject::invokeMethod(
                    reader_, [reader = reader_] { reader->slow_.start(); }, Qt::QueuedConnection);
            readingQueue().async([self = shared_from_this()] { self->readAll(); });
        }
        return begun_ + 1;
    }
    [[nodiscard]] bool isReading() {
        const std::lock_guard guard(mutex_);
        return isReading_;
    }

  private:
    void readAll() {
        while (const quint64 number = numberOfNext()) post(reading(), number);
    }
    /// 0 when nobody asks for another reading.
    quint64 numberOfNext() {
        const std::lock_guard guard(mutex_);
        isReading_ = std::exchange(isAsked_, false) && reader_ != nullptr;
        return isReading_ ? ++begun_ : 0;
    }
    Reading reading();
    void post(Reading reading, quint64 number) {
        const std::lock_guard guard(mutex_);
        reading.number = number;
        if (reader_ == nullptr) return;
        QMetaObject::invokeMethod(
            reader_, [reader = reader_, reading = std::move(reading)] { reader->take(reading); },
            Qt::QueuedConnection);
    }

    const std::string location_ = QRVSettings::sharedSettings().location();
    const std::shared_ptr<NSOperationQueue> queue_ = std::make_shared<NSOperationQueue>();
    // Of the reading thread.
    NSDictionary last_ = nullptr;
    bool hasLast_ = false;

    std::mutex mutex_;  // guards what follows
    SettingsFileReader* reader_;
    bool isReading_ = false;
    bool isAsked_ = false;  ///< for a reading that has not begun
    quint64 begun_ = 0;     ///< readings
};

SettingsFileReader::Reading SettingsFileReader::Inside::reading() {
    Reading result;
    FileState& state = result.state;
    state.path = QString::fromStdString(location_);
    state.readAt = QDateTime::currentDateTime();
    if (location_.empty()) {
        state.kind = FileState::Kind::NoPlace;
        return result;
    }
    const Tool::SettingsFileCondition condition = Tool::conditionOfSettingsFile();
    const auto attributes = QRVPlatform::attributesOfItemAtPath(location_);
    state.kind = kindOf(condition, attributes.has_value());
    state.fault = QString::fromStdString(condition.fault());
    state.size = attributes ? attributes->size : 0;
    state.readOnly = whyReadOnly(location_);
    if (!condition.fault().empty()) return result;
    result.stored = condition.settings;
    if (hasLast_) result.differences = Tool::differencesBetween(last_, result.stored);
    last_ = result.stored;
    hasLast_ = true;
    return result;
}

SettingsFileReader::SettingsFileReader(QObject* parent)
    : QObject(parent), inside_(std::make_shared<Inside>(this)) {
    slow_.setSingleShot(true);
    slow_.setInterval(millisecondsUntilSlow);
    connect(&slow_, &QTimer::timeout, this, &SettingsFileReader::sayWhatItWaitsFor);
}

SettingsFileReader::~SettingsFileReader() {
    inside_->leave();
}

void SettingsFileReader::start() {
    inside_->watch();
    read();
}

quint64 SettingsFileReader::read() {
    return inside_->request();
}

void SettingsFileReader::take(const Reading& reading) {
    slow_.stop();
    if (std::exchange(isSaidToWait_, false)) Q_EMIT waitsFor({});
    if (inside_->isReading()) slow_.start();
    Q_EMIT hasRead(reading);
}

void SettingsFileReader::sayWhatItWaitsFor() {
    if (!inside_->isReading()) return;
    isSaidToWait_ = true;
    Q_EMIT waitsFor(QString::fromStdString(Tool::lockOfSettingsFile()));
}

}  // namespace QRVWindow
