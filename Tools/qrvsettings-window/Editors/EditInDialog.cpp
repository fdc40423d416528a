// SPDX-License-Identifier: MIT
// The form for settings of a session.

#include <QMessageBox>
#include <algorithm>

#include "Editors/EditDialog.h"
#include "Look/Text.h"
#include "Session/Session.h"

namespace QRVWindow {
namespace {

EditedSetting editedAt(const Session& session, const std::string& keyPath) {
    EditedSetting setting;
    setting.keyPath = keyPath;
    setting.value = session.valueWithEdits(keyPath);
    if (const Tool::SettingRow* const row = session.table().at(keyPath)) {
        setting.known = row->known;
        setting.byDefault = row->byDefault;
    }
    return setting;
}

void storeEdits(Session& session, const EditDialog::Subject& subject,
                const PropertyListValue& value) {
    std::vector<Tool::PendingEdits::Request> requests;
    for (const EditedSetting& setting : subject.settings)
        requests.push_back({.place = {setting.keyPath, toText(subject.profile)},
                            .value = value,
                            .byDefault = setting.byDefault});
    const int count = static_cast<int>(requests.size());
    session.edit(
        requests,
        count == 1
            ? EditDialog::tr("Edit of %1").arg(keyPathInSentence(subject.settings.front().keyPath))
            : EditDialog::tr("Edit of %n settings", "", count));
}

void followChanges(const Session& session, EditDialog& dialog, const EditDialog::Subject& subject) {
    QObject::connect(
        &session, &Session::tableChanged, &dialog,
        [&session, &dialog, keyPath = subject.settings.front().keyPath,
         profile = subject.profile](const Tool::SettingsTable::Change& change) {
            const bool isOfIt = std::find(change.changed.begin(), change.changed.end(), keyPath) !=
                                change.changed.end();
            const Tool::SettingRow* const row = session.table().at(keyPath);
            if (!isOfIt || row == nullptr || session.profile() != profile) return;
            constexpr qsizetype longest = 100;
            dialog.setNews(EditDialog::tr("The value has changed in the file meanwhile: %1")
                               .arg(leftToRight(valueAsText(row->effective, longest))));
        });
}

}  // namespace

EditDialog* editInDialog(Session& session, const std::vector<std::string>& keyPaths,
                         QWidget* parent) {
    EditDialog::Subject subject;
    subject.profile = session.profile();
    for (const std::string& keyPath : keyPaths)
        subject.settings.push_back(editedAt(session, keyPath));
    if (subject.settings.empty()) return nullptr;
    const QString objection = EditDialog::objectionToTogether(subject.settings);
    if (!objection.isEmpty()) {
        auto* const box = new QMessageBox(QMessageBox::Information, EditDialog::tr("Edit"),
                                          objection, QMessageBox::Ok, parent);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->open();
        return nullptr;
    }
    auto* const dialog = new EditDialog(subject, parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    const Tool::SettingRow* const row = session.table().at(keyPaths.front());
    if (row != nullptr && row->isLocked)
        dialog->setNews(
            EditDialog::tr("The site has locked this setting: its value answers, "
                           "whatever is stored."));
    if (subject.settings.size() == 1) followChanges(session, *dialog, subject);
    QObject::connect(dialog, &QDialog::accepted, &session, [&session, dialog, subject] {
        if (const auto value = dialog->value()) storeEdits(session, subject, *value);
    });
    dialog->open();
    return dialog;
}

}  // namespace QRVWindow
