// SPDX-License-Identifier: MIT
// The import of settings with its preview.

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>

#include "Dialogs/ChangeView.h"
#include "Dialogs/ImportExport.h"
#include "Dialogs/SettingsFile.h"
#include "Dialogs/ValueCells.h"
#include "Look/Text.h"
#include "Reporting/Failure.h"
#include "Text/KeyPaths.h"

namespace QRVWindow {
namespace {

QStringList headers() {
    return {ImportDialog::tr("Setting"), ImportDialog::tr("Profile"),
            ImportDialog::tr("In the file now"), ImportDialog::tr("Will be")};
}

}  // namespace

QString draggedFile(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    return urls.size() == 1 && urls.front().isLocalFile() ? urls.front().toLocalFile() : QString();
}

ImportDialog::ImportDialog(Session& theSession, const QString& path, QWidget* parent)
    : LiveDialog(theSession, parent), model_(headers(), this) {
    setWindowTitle(tr("Import settings"));
    setObjectName(QStringLiteral("importDialog"));
    read(path);
    arrange(path);
    connect(&model_, &ChangeModel::checkedChanged, this, [this] { showState(); });
    connect(resets_, &QCheckBox::toggled, this, [this] { showSession(); });
}

void ImportDialog::read(const QString& path) {
    const SettingsFile file = readSettingsFile(path);
    fault_ = file.fault;
    if (!fault_.isEmpty()) return;
    settingCount_ = Tool::leavesByKeyPath(file.settings).count();
    try {
        preview_ = Tool::previewOfImport(file.bytes, toText(path), session().snapshot());
    } catch (const Tool::Failure& failure) {
        fault_ = fromText(failure.what());
    }
}

void ImportDialog::arrange(const QString& path) {
    auto* const layout = new QVBoxLayout(this);
    QLabel* const title = makeLabel(QStringLiteral("importTitle"));
    title->setText(tr("What an import of %1 changes:").arg(leftToRight(path)));
    title->setVisible(fault_.isEmpty());
    layout->addWidget(title);
    view_ = new ChangeView(model_, this);
    view_->setAccessibleName(tr("Changes by the import"));
    view_->setVisible(fault_.isEmpty());
    layout->addWidget(view_, 1);
    QCheckBox* const all = makeCheckBoxForAll(model_, this);
    all->setVisible(fault_.isEmpty());
    layout->addWidget(all);
    resets_ = new QCheckBox(tr("&Reset settings that the file does not hold"), this);
    resets_->setChecked(true);
    resets_->setVisible(std::any_of(preview_.requests.begin(), preview_.requests.end(),
                                    [](const auto& request) { return request.value.isNull(); }));
    layout->addWidget(resets_);
    remarks_ = makeLabel(QStringLiteral("importRemarks"));
    QStringList remarks;
    for (const std::string& remark : preview_.remarks) remarks.append(fromText(remark));
    remarks_->setText(remarks.join(QLatin1Char('\n')));
    remarks_->setVisible(!remarks.isEmpty());
    layout->addWidget(remarks_);
    state_ = makeLabel(QStringLiteral("importState"));
    layout->addWidget(state_);
    makeButtons(*layout);
}

void ImportDialog::makeButtons(QLayout& layout) {
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    take_ = buttons->addButton(tr("&Make pending edits"), QDialogButtonBox::AcceptRole);
    take_->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout.addWidget(buttons);
}

void ImportDialog::showSession() {
    std::vector<ChangeLine> lines;
    bool haveProfiles = false;
    for (const auto& [place, value, byDefault, seen] : preview_.requests) {
        if (value.isNull() && !resets_->isChecked()) continue;
        const PropertyListValue inFile = storedAt(session(), place);
        const KindShown kinds = kindShownFor({inFile, value});
        lines.push_back({.place = place,
                         .cells = {keyPathCell(place.keyPath), profileCell(place.profile),
                                   valueCell(session(), place.keyPath, inFile, kinds),
                                   resultCell(session(), place, value, kinds)}});
        haveProfiles = haveProfiles || !place.profile.empty();
    }
    view_->setColumnHidden(Profile, !haveProfiles);
    model_.setLines(std::move(lines));
    showState();
}

std::vector<Tool::PendingEdits::Request> ImportDialog::chosenRequests() const {
    std::vector<Tool::PendingEdits::Request> chosen;
    std::copy_if(preview_.requests.begin(), preview_.requests.end(), std::back_inserter(chosen),
                 [this](const auto& request) {
                     return model_.rowOf(request.place) >= 0 && model_.isChecked(request.place);
                 });
    return chosen;
}

QString ImportDialog::stateText() const {
    if (!fault_.isEmpty()) return fault_;
    const auto written = static_cast<std::size_t>(
        std::count_if(preview_.requests.begin(), preview_.requests.end(),
                      [](const auto& request) { return !request.value.isNull(); }));
    const std::size_t unchanged = settingCount_ > written ? settingCount_ - written : 0;
    if (preview_.requests.empty()) return tr("Nothing would change.");
    if (unchanged == 0) return tr("Nothing is written: the changes become pending edits.");
    return unchanged == 1
               ? tr("1 setting stays as it is. Nothing is written: the changes become pending "
                    "edits.")
               : tr("%n settings stay as they are. Nothing is written: the changes become pending "
                    "edits.",
                    "", static_cast<int>(unchanged));
}

void ImportDialog::showState() {
    state_->setText(stateText());
    take_->setEnabled(!model_.checkedPlaces().empty());
}

void ImportDialog::accept() {
    session().edit(chosenRequests(), tr("Import"));
    QDialog::accept();
}

}  // namespace QRVWindow
