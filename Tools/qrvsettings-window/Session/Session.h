// SPDX-License-Identifier: MIT
#pragma once

/// What a window shows and edits, without a widget: the settings as the file holds them, the edits
/// that are pending, and what changes. All widgets of a window have the same session. It shows what
/// the file says, never what this process has written: this process writes nothing, edits are
/// applied by a process of their own (`Edits/ApplyEdits.h`).

#include <QObject>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <vector>

#include "Edits/ApplyEdits.h"
#include "Edits/PendingEdits.h"
#include "Rows/RowFilter.h"
#include "Rows/SettingsTable.h"
#include "Session/FileState.h"
#include "Session/LiveChange.h"
#include "Settings/KnownLists.h"

namespace QRVWindow {

class Session : public QObject {
    Q_OBJECT

  public:
    /// How long a change of another process is marked.
    static constexpr int liveMilliseconds = 5000;

    explicit Session(QObject* parent = nullptr);
    ~Session() override;

    /// What messages call the file, where that is not its location. To be called before `start`.
    void setFileName(const QString& name);
    [[nodiscard]] const QString& fileName() const;

    /// Reads the file and begins to watch it. Nothing is written, created or kept locked.
    /// `fileStateChanged` follows: until then there are no rows.
    void start();
    /// Reads the file again, as after a notification.
    void reload();

    /// @name What there is to see
    /// @{
    [[nodiscard]] const FileState& fileState() const;
    [[nodiscard]] const Tool::KnownLists& lists() const;
    /// The rows of the chosen scope.
    [[nodiscard]] const Tool::SettingsTable& table() const;
    [[nodiscard]] const Tool::SettingsSnapshot& snapshot() const;
    /// What the file holds; null when nothing.
    [[nodiscard]] const NSDictionary& stored() const;
    /// What the file held when the session started; if it could not be read then, what it held when
    /// it first could.
    [[nodiscard]] const NSDictionary& storedAtStart() const;

    /// The chosen scope: empty for the application's settings.
    [[nodiscard]] QString profile() const;
    void setProfile(const QString& profile);
    [[nodiscard]] QStringList profileNames() const;
    /// A profile whose values stand beside those of the scope; empty, as at the start, for none.
    [[nodiscard]] QString otherProfile() const;
    void setOtherProfile(const QString& profile);
    /// The rows of the other profile; null when there is none.
    [[nodiscard]] const Tool::SettingsTable* otherTable() const;

    [[nodiscard]] Tool::SettingPlace placeOf(const std::string& keyPath) const;
    [[nodiscard]] Tool::RowMarks marksOf(const std::string& keyPath) const;
    /// The latest change of a row that is still marked; null when there is none.
    [[nodiscard]] const LiveChange* liveChangeOf(const std::string& keyPath) const;
    /// All changes since the start, the earliest first; at most `maximumChanges`, then the earliest
    /// are forgotten.
    static constexpr std::size_t maximumChanges = 10'000;
    [[nodiscard]] const std::vector<LiveChange>& changes() const;
    void clearChanges();
    /// @}

    /// @name Edits
    /// @{
    [[nodiscard]] const Tool::PendingEdits& pending() const;
    [[nodiscard]] const Tool::PendingEdit* pendingAt(const std::string& keyPath) const;
    /// What a row will have once its edit is applied; the value it has when none is pending.
    [[nodiscard]] PropertyListValue valueWithEdits(const std::string& keyPath) const;
    /// None while the file cannot be read: nobody knows what it holds.
    [[nodiscard]] std::vector<Tool::EditConflict> conflicts() const;

    /// One step of undo. Null stores nothing: the default answers.
    void edit(const std::string& keyPath, const PropertyListValue& value, bool isContinued = false);
    /// The same of somebody who began when the file held `seen`: what another process has stored
    /// since is a conflict.
    void editSeen(const std::string& keyPath, const PropertyListValue& value,
                  const std::optional<PropertyListValue>& seen);
    void edit(const std::vector<Tool::PendingEdits::Request>& requests, const QString& name);
    void reset(const std::vector<std::string>& keyPaths);
    void discard(const std::vector<Tool::SettingPlace>& places);
    void discardAll();
    void undo();
    void redo();
    void keepMine(const Tool::SettingPlace& place);
    void takeTheirs(const Tool::SettingPlace& place);

    struct ApplyOptions {
        std::vector<Tool::SettingPlace> places{};  ///< only these edits; empty for all
        bool replacesDamagedFile = false;
        bool replacesReadOnlyFile = false;
        QString origin = QStringLiteral("edit");
    };
    /// Starts to apply edits; `applied` follows. Does nothing while another apply runs.
    void apply(const ApplyOptions& options);
    [[nodiscard]] bool isApplying() const;
    /// Ends an apply that waits for a lock. Nothing of it is written, unless that has just
    /// happened: what the file then holds is pending no more.
    void stopApplying();
    /// @}

  Q_SIGNALS:
    void fileStateChanged();
    /// Rows have other values, or there are rows more or less.
    void tableChanged(const Tool::SettingsTable::Change& change);
    /// All rows are others: another scope.
    void tableReset();
    /// The columns of the other profile.
    void otherTableChanged();
    /// Edits of these rows of the scope have changed; of other scopes, when there are none.
    void pendingChanged(const QStringList& keyPaths);
    /// Rows are marked, or no longer marked, as changed a moment ago.
    void marksChanged(const QStringList& keyPaths);
    /// Changes were added, filled in or cleared.
    void changesChanged();
    void profilesChanged();
    void applyingChanged();
    /// What an apply waits for; empty when it goes on.
    void applyWaits(const QString& description);
    void applied(const Tool::ApplyOutcome& outcome);

  private:
    class Inside;
    std::unique_ptr<Inside> inside_;
};

}  // namespace QRVWindow
