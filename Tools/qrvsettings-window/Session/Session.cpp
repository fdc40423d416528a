// SPDX-License-Identifier: MIT
#include "Session/Session.h"

#include <algorithm>
#include <set>
#include <utility>

#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "QRVSettings/StoreKeyPaths.h"
#include "Session/Applier.h"
#include "Session/LiveChanges.h"
#include "Session/Programs.h"
#include "Session/SettingsFileReader.h"
#include "Settings/Records.h"
#include "Text/Differences.h"
#include "Text/KeyPaths.h"

namespace QRVWindow {
namespace {

using Tool::PendingEdit;
using Tool::PendingEdits;
using Tool::SettingPlace;

PropertyListValue valueAt(const NSDictionary& tree, const SettingPlace& place) {
    return NSDictionaryQRV::objectAtKeyPath(tree, place.storedKeyPath());
}

std::vector<SettingPlace> placesOf(const PendingEdits& edits) {
    std::vector<SettingPlace> places;
    for (const auto& [place, edit] : edits.edits()) places.push_back(place);
    return places;
}

bool isPlaceOf(const std::vector<SettingPlace>& places, const SettingPlace& place) {
    return std::find(places.begin(), places.end(), place) != places.end();
}

/// Whether the edit brings the change; one of a dictionary brings those of all that it holds.
bool brings(const PendingEdit& edit, const SettingPlace& place, const PropertyListValue& after) {
    const std::string edited = edit.place.storedKeyPath();
    const std::string changed = place.storedKeyPath();
    if (changed != edited && !changed.starts_with(edited + ".")) return false;
    const PropertyListValue value =
        changed == edited ? edit.value
                          : Tool::valueAt(edit.value, changed.substr(edited.size() + 1));
    // What a dictionary with entries replaces is gone, and its entries are changes of their own.
    const bool isLevel = value.isDictionary() && value.dictionary().count() != 0;
    return isLevel ? after.isNull() : Tool::areSameInKind(value, after);
}

/// A request that is being applied, or was a moment ago.
struct AppliedRequest {
    std::vector<PendingEdit> edits;
    QString name;
    /// The outcome, which is told once the file was read after it.
    std::optional<Tool::ApplyOutcome> outcome{};
    bool isComplete = false;  ///< the process has told what became of the edits
    quint64 reading = 0;      ///< the first one after the outcome
};

}  // namespace

class Session::Inside {
  public:
    explicit Inside(Session& session);

    void take(const SettingsFileReader::Reading& reading);
    void sayWait(const QString& description);
    void showStored();
    void noteChanges(const std::vector<Tool::Difference>& differences);
    [[nodiscard]] bool isOfThisWindow(const SettingPlace& place,
                                      const PropertyListValue& after) const;

    void sayTableChange(const Tool::SettingsTable::Change& change);
    void sayPending(const std::vector<SettingPlace>& places);
    void followPending();
    [[nodiscard]] QStringList keyPathsOf(const std::vector<SettingPlace>& places) const;
    [[nodiscard]] std::set<std::string> pendingKeyPaths(const std::string& profile) const;
    [[nodiscard]] PropertyListValue defaultOf(const std::string& keyPath) const;

    void takeOutcome(const Tool::ApplyOutcome& outcome, bool isComplete);
    void endApply();
    /// Those that the file now holds are pending no more.
    [[nodiscard]] std::vector<PendingEdit> editsInFile() const;
    [[nodiscard]] std::string named(const std::string& text) const;

    Session& session;
    const Tool::KnownLists lists = Tool::KnownLists::read();
    Tool::SettingsTable table{lists};
    std::unique_ptr<Tool::SettingsTable> otherTable;
    SettingsFileReader reader;
    Applier applier;
    LiveChanges changes{maximumChanges, std::chrono::milliseconds(liveMilliseconds), nullptr};
    Programs programs;
    FileState state;
    QString fileName;
    NSDictionary stored = nullptr;
    NSDictionary storedAtStart = nullptr;
    bool isShown = false;  ///< the table shows `stored`
    bool hasBeenRead = false;
    std::set<std::string> profiles;
    PendingEdits pending;
    std::optional<AppliedRequest> request;
};

Session::Inside::Inside(Session& theSession) : session(theSession) {
    state.path = QString::fromStdString(QRVSettings::sharedSettings().location());
    connect(&reader, &SettingsFileReader::hasRead, &session,
            [this](const SettingsFileReader::Reading& reading) { take(reading); });
    connect(&reader, &SettingsFileReader::waitsFor, &session,
            [this](const QString& description) { sayWait(description); });
    connect(&applier, &Applier::waitsFor, &session, [this](const QString& description) {
        Q_EMIT session.applyWaits(QString::fromStdString(named(description.toStdString())));
    });
    connect(&applier, &Applier::finished, &session,
            [this](const Tool::ApplyOutcome& outcome, bool isComplete) {
                takeOutcome(outcome, isComplete);
            });
    connect(&changes, &LiveChanges::changed, &session, &Session::changesChanged);
    connect(&changes, &LiveChanges::marksChanged, &session,
            [this](const std::vector<SettingPlace>& places) {
                const QStringList keyPaths = keyPathsOf(places);
                if (!keyPaths.isEmpty()) Q_EMIT session.marksChanged(keyPaths);
            });
    connect(&programs, &Programs::found, &session,
            [this](const std::map<quint64, QString>& found) { changes.setPrograms(found); });
}

std::string Session::Inside::named(const std::string& text) const {
    if (fileName.isEmpty()) return text;
    return QString::fromStdString(text)
        .replace(QString::fromStdString(QRVSettings::sharedSettings().location()), fileName)
        .toStdString();
}

void Session::Inside::take(const SettingsFileReader::Reading& reading) {
    const FileState before = std::exchange(state, reading.state);
    if (!fileName.isEmpty()) state.path = fileName;
    state.fault = QString::fromStdString(named(state.fault.toStdString()));
    const bool isReadable = state.fault.isEmpty();
    const bool wasReadable =
        before.kind == FileState::Kind::Present || before.kind == FileState::Kind::Missing;
    stored = reading.stored;
    // What a damaged file held at the start, nobody knows: taken for nothing, it would look as if
    // all settings had been added since.
    if (isReadable && !std::exchange(hasBeenRead, true)) storedAtStart = stored;
    if (!isShown || isReadable != wasReadable || !reading.differences.empty()) showStored();
    if (isReadable) noteChanges(reading.differences);
    Q_EMIT session.fileStateChanged();
    if (request && request->outcome && reading.number >= request->reading) endApply();
}

void Session::Inside::sayWait(const QString& description) {
    state.waitsFor = QString::fromStdString(named(description.toStdString()));
    Q_EMIT session.fileStateChanged();
    // Who waits for the lock is not kept in doubt about what was applied before.
    if (!description.isEmpty() && request && request->outcome) endApply();
}

void Session::Inside::showStored() {
    isShown = true;
    const Tool::SettingsSnapshot snapshot = Tool::snapshotOfSettings(stored);
    const Tool::SettingsTable::Change change = table.update(snapshot);
    if (otherTable) otherTable->update(snapshot);
    sayTableChange(change);
    if (otherTable) Q_EMIT session.otherTableChanged();
    std::set<std::string> names = table.profileNames();
    if (std::exchange(profiles, std::move(names)) != profiles) Q_EMIT session.profilesChanged();
}

bool Session::Inside::isOfThisWindow(const SettingPlace& place,
                                     const PropertyListValue& after) const {
    return request &&
           std::any_of(request->edits.begin(), request->edits.end(),
                       [&](const PendingEdit& edit) { return brings(edit, place, after); });
}

void Session::Inside::noteChanges(const std::vector<Tool::Difference>& differences) {
    std::vector<LiveChange> seen;
    for (const Tool::Difference& difference : differences) {
        if (!difference.isReached) continue;
        LiveChange change;
        change.time = state.readAt;
        change.place = Tool::placeOfStored(difference.keyPath);
        change.before = difference.oldValue;
        change.after = difference.newValue;
        change.isRecord = Tool::isOfStoreAlone(difference.keyPath, change.before, change.after);
        if (isOfThisWindow(change.place, change.after)) change.by = LiveChange::By::ThisWindow;
        seen.push_back(std::move(change));
    }
    // A save brings the records of its process with it.
    const bool isOwnSave = std::any_of(seen.begin(), seen.end(), [](const LiveChange& change) {
        return change.by == LiveChange::By::ThisWindow;
    });
    for (LiveChange& change : seen)
        if (isOwnSave && change.isRecord) change.by = LiveChange::By::ThisWindow;
    const std::size_t count = seen.size();
    changes.add(std::move(seen));
    const std::vector<LiveChange>& all = changes.all();
    programs.lookUp(
        {all.end() - static_cast<std::ptrdiff_t>(std::min(count, all.size())), all.end()});
}

void Session::Inside::sayTableChange(const Tool::SettingsTable::Change& change) {
    if (!change.isEmpty()) Q_EMIT session.tableChanged(change);
}

QStringList Session::Inside::keyPathsOf(const std::vector<SettingPlace>& places) const {
    QStringList keyPaths;
    for (const SettingPlace& place : places)
        if (place.profile == table.profile()) keyPaths << QString::fromStdString(place.keyPath);
    return keyPaths;
}

std::set<std::string> Session::Inside::pendingKeyPaths(const std::string& profile) const {
    std::set<std::string> keyPaths;
    for (const auto& [place, edit] : pending.edits())
        if (place.profile == profile) keyPaths.insert(place.keyPath);
    return keyPaths;
}

void Session::Inside::followPending() {
    sayTableChange(table.setAdditionalKeyPaths(pendingKeyPaths(table.profile())));
    if (otherTable)
        static_cast<void>(
            otherTable->setAdditionalKeyPaths(pendingKeyPaths(otherTable->profile())));
}

void Session::Inside::sayPending(const std::vector<SettingPlace>& places) {
    followPending();
    Q_EMIT session.pendingChanged(keyPathsOf(places));
}

PropertyListValue Session::Inside::defaultOf(const std::string& keyPath) const {
    const Tool::SettingRow* const row = table.at(keyPath);
    return row != nullptr ? row->byDefault : QRVSettingsDefaultForKeyPath(keyPath);
}

std::vector<PendingEdit> Session::Inside::editsInFile() const {
    std::vector<PendingEdit> edits;
    std::copy_if(request->edits.begin(), request->edits.end(), std::back_inserter(edits),
                 [this](const PendingEdit& edit) {
                     return Tool::areSameInKind(valueAt(stored, edit.place), edit.value);
                 });
    return edits;
}

void Session::Inside::takeOutcome(const Tool::ApplyOutcome& outcome, bool isComplete) {
    request->outcome = outcome;
    request->isComplete = isComplete;
    request->reading = reader.read();
}

void Session::Inside::endApply() {
    Tool::ApplyOutcome outcome = *request->outcome;
    outcome.reason = named(outcome.reason);
    for (std::string& notice : outcome.notices) notice = named(notice);
    std::vector<PendingEdit> done;
    if (outcome.state == Tool::ApplyOutcome::State::Applied) {
        std::copy_if(request->edits.begin(), request->edits.end(), std::back_inserter(done),
                     [&outcome](const PendingEdit& edit) {
                         return std::none_of(outcome.conflicts.begin(), outcome.conflicts.end(),
                                             [&edit](const Tool::EditConflict& conflict) {
                                                 return conflict.edit.place == edit.place;
                                             });
                     });
    } else if (!request->isComplete && state.fault.isEmpty()) {
        done = editsInFile();
        // The process was stopped or killed once it had saved.
        if (!done.empty() && done.size() == request->edits.size())
            outcome.state = Tool::ApplyOutcome::State::Applied;
    }
    if (outcome.state == Tool::ApplyOutcome::State::Applied) outcome.reason.clear();
    const QString name = request->name;
    request.reset();
    if (!done.empty()) {
        std::vector<SettingPlace> places;
        places.reserve(done.size());
        for (const PendingEdit& edit : done) places.push_back(edit.place);
        pending.applied(done, name.toStdString());
        sayPending(places);
    }
    Q_EMIT session.applyingChanged();
    Q_EMIT session.applied(outcome);
}

Session::Session(QObject* parent) : QObject(parent), inside_(std::make_unique<Inside>(*this)) {}

Session::~Session() = default;

void Session::setFileName(const QString& name) {
    inside_->fileName = name;
    inside_->state.path = name;
}

const QString& Session::fileName() const {
    return inside_->fileName;
}

void Session::start() {
    inside_->reader.start();
}

void Session::reload() {
    inside_->reader.read();
}

const FileState& Session::fileState() const {
    return inside_->state;
}

const Tool::KnownLists& Session::lists() const {
    return inside_->lists;
}

const Tool::SettingsTable& Session::table() const {
    return inside_->table;
}

const Tool::SettingsSnapshot& Session::snapshot() const {
    return inside_->table.snapshot();
}

const NSDictionary& Session::stored() const {
    return inside_->stored;
}

const NSDictionary& Session::storedAtStart() const {
    return inside_->storedAtStart;
}

QString Session::profile() const {
    return QString::fromStdString(inside_->table.profile());
}

void Session::setProfile(const QString& profile) {
    const std::string name = profile.toStdString();
    if (name == inside_->table.profile()) return;
    static_cast<void>(inside_->table.setAdditionalKeyPaths({}));
    inside_->table.setProfile(name);
    static_cast<void>(inside_->table.setAdditionalKeyPaths(inside_->pendingKeyPaths(name)));
    Q_EMIT tableReset();
}

QStringList Session::profileNames() const {
    QStringList names;
    for (const std::string& name : inside_->table.profileNames())
        names << QString::fromStdString(name);
    return names;
}

QString Session::otherProfile() const {
    return inside_->otherTable ? QString::fromStdString(inside_->otherTable->profile()) : QString();
}

void Session::setOtherProfile(const QString& profile) {
    if (profile == otherProfile()) return;
    inside_->otherTable.reset();
    if (!profile.isEmpty()) {
        inside_->otherTable = std::make_unique<Tool::SettingsTable>(inside_->lists);
        inside_->otherTable->setProfile(profile.toStdString());
        inside_->otherTable->update(inside_->table.snapshot());
        inside_->followPending();
    }
    Q_EMIT otherTableChanged();
}

const Tool::SettingsTable* Session::otherTable() const {
    return inside_->otherTable.get();
}

SettingPlace Session::placeOf(const std::string& keyPath) const {
    return {keyPath, inside_->table.profile()};
}

Tool::RowMarks Session::marksOf(const std::string& keyPath) const {
    const SettingPlace place = placeOf(keyPath);
    return {.isPending = inside_->pending.at(place) != nullptr,
            .isLive = inside_->changes.markedAt(place) != nullptr};
}

const LiveChange* Session::liveChangeOf(const std::string& keyPath) const {
    return inside_->changes.markedAt(placeOf(keyPath));
}

const std::vector<LiveChange>& Session::changes() const {
    return inside_->changes.all();
}

void Session::clearChanges() {
    inside_->changes.clear();
}

const PendingEdits& Session::pending() const {
    return inside_->pending;
}

const PendingEdit* Session::pendingAt(const std::string& keyPath) const {
    return inside_->pending.at(placeOf(keyPath));
}

PropertyListValue Session::valueWithEdits(const std::string& keyPath) const {
    if (const PendingEdit* const edit = pendingAt(keyPath))
        return edit->value.isNull() ? inside_->defaultOf(keyPath) : edit->value;
    const Tool::SettingRow* const row = inside_->table.at(keyPath);
    return row != nullptr ? row->effective : PropertyListValue();
}

std::vector<Tool::EditConflict> Session::conflicts() const {
    if (!inside_->state.fault.isEmpty()) return {};
    return inside_->pending.conflicts(inside_->stored);
}

void Session::edit(const std::string& keyPath, const PropertyListValue& value, bool isContinued) {
    const SettingPlace place = placeOf(keyPath);
    const std::string name = tr("Edit %1").arg(QString::fromStdString(keyPath)).toStdString();
    if (inside_->pending.edit({{place, value, inside_->defaultOf(keyPath)}}, inside_->stored, name,
                              isContinued))
        inside_->sayPending({place});
}

void Session::editSeen(const std::string& keyPath, const PropertyListValue& value,
                       const std::optional<PropertyListValue>& seen) {
    edit({{placeOf(keyPath), value, inside_->defaultOf(keyPath), seen}},
         tr("Edit %1").arg(QString::fromStdString(keyPath)));
}

void Session::edit(const std::vector<PendingEdits::Request>& requests, const QString& name) {
    if (!inside_->pending.edit(requests, inside_->stored, name.toStdString())) return;
    std::vector<SettingPlace> places;
    places.reserve(requests.size());
    for (const PendingEdits::Request& request : requests) places.push_back(request.place);
    inside_->sayPending(places);
}

void Session::reset(const std::vector<std::string>& keyPaths) {
    std::vector<PendingEdits::Request> requests;
    requests.reserve(keyPaths.size());
    for (const std::string& keyPath : keyPaths)
        requests.push_back({placeOf(keyPath), nullptr, inside_->defaultOf(keyPath)});
    edit(requests, tr("Reset %n setting(s)", "", static_cast<int>(keyPaths.size())));
}

void Session::discard(const std::vector<SettingPlace>& places) {
    if (places.empty()) return;
    const QString name = tr("Discard %n edit(s)", "", static_cast<int>(places.size()));
    if (inside_->pending.discard(places, name.toStdString())) inside_->sayPending(places);
}

void Session::discardAll() {
    discard(placesOf(inside_->pending));
}

void Session::undo() {
    if (inside_->pending.canUndo()) inside_->sayPending(inside_->pending.undo());
}

void Session::redo() {
    if (inside_->pending.canRedo()) inside_->sayPending(inside_->pending.redo());
}

void Session::keepMine(const SettingPlace& place) {
    inside_->pending.keepMine(place, inside_->stored, tr("Keep this window's value").toStdString());
    inside_->sayPending({place});
}

void Session::takeTheirs(const SettingPlace& place) {
    inside_->pending.takeTheirs(place, tr("Take the other value").toStdString());
    inside_->sayPending({place});
}

void Session::apply(const ApplyOptions& options) {
    if (isApplying()) return;
    Tool::ApplyRequest request;
    for (const auto& [place, edit] : inside_->pending.edits())
        if (options.places.empty() || isPlaceOf(options.places, place))
            request.edits.push_back(edit);
    if (request.edits.empty() && !options.replacesDamagedFile) return;
    request.origin = options.origin.toStdString();
    request.replacesDamagedFile = options.replacesDamagedFile;
    request.replacesReadOnlyFile = options.replacesReadOnlyFile;
    inside_->request = AppliedRequest{
        request.edits, tr("Apply %n edit(s)", "", static_cast<int>(request.edits.size()))};
    Q_EMIT applyingChanged();
    inside_->applier.start(request);
}

bool Session::isApplying() const {
    return inside_->request.has_value();
}

void Session::stopApplying() {
    inside_->applier.stop();
}

}  // namespace QRVWindow
