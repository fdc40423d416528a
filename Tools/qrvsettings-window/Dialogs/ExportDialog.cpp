// SPDX-License-Identifier: MIT
// The export of settings to a file.

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>

#include "Dialogs/ImportExport.h"
#include "Dialogs/SettingsFile.h"
#include "Edits/EditCommands.h"
#include "Edits/EditTable.h"
#include "Look/Text.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "Reporting/Failure.h"
#include "Settings/MachineSettings.h"
#include "Settings/Records.h"
#include "Text/KeyPaths.h"
#include "Text/SettingsText.h"

namespace QRVWindow {
namespace {

const std::string profilesPrefix = "Profiles.Settings.";

/// What is stored at these key paths, each with all that is below it.
NSDictionary partOfTree(const NSDictionary& tree, const std::vector<std::string>& storedKeyPaths) {
    NSMutableDictionary part;
    for (const std::string& keyPath : storedKeyPaths) {
        const PropertyListValue value = NSDictionaryQRV::objectAtKeyPath(tree, keyPath);
        if (!value.isNull()) NSDictionaryQRV::setObjectAtKeyPath(part, value, keyPath);
    }
    return part;
}

NSDictionary exportedTree(const Session& session, const ExportOptions& options) {
    const NSDictionary& stored = session.stored();
    switch (options.content) {
        case ExportOptions::Content::Profile:
            return partOfTree(stored, {profilesPrefix + options.profile});
        case ExportOptions::Content::Selection: {
            std::vector<std::string> keyPaths;
            for (const std::string& keyPath : options.keyPaths)
                keyPaths.push_back(session.placeOf(keyPath).storedKeyPath());
            return partOfTree(stored, keyPaths);
        }
        default:
            return stored;
    }
}

std::string commandsOfTree(const NSDictionary& tree) {
    std::vector<Tool::PendingEdit> edits;
    for (const auto& [keyPath, value] : Tool::leavesByKeyPath(tree))
        if (!Tool::isRecord(keyPath))
            edits.push_back({.place = Tool::placeOfStored(std::string(keyPath)),
                             .base = nullptr,
                             .value = value});
    return Tool::commandsOfEdits(edits);
}

std::string bytesOfTree(const NSDictionary& tree, ExportOptions::Form form) {
    if (form == ExportOptions::Form::Commands) return commandsOfTree(tree);
    return Tool::fileOfSettings(tree, form == ExportOptions::Form::JSON
                                          ? Tool::SettingsForm::JSON
                                          : Tool::SettingsForm::PropertyList);
}

}  // namespace

std::string exportedBytes(const Session& session, const ExportOptions& options) {
    NSDictionary tree = exportedTree(session, options);
    if (options.isPortable) tree = Tool::withoutMachineSettings(tree);
    std::string bytes =
        NSDictionaryQRV::hasValues(tree) ? bytesOfTree(tree, options.form) : std::string();
    if (bytes.empty())
        throw Tool::Failure(Tool::Fault::NotSet,
                            toText(QRVWindow::ExportDialog::tr("Nothing of this is stored.")));
    return bytes;
}

ExportDialog::ExportDialog(Session& session, std::vector<std::string> selection, QWidget* parent)
    : QDialog(parent), session_(session), selection_(std::move(selection)) {
    setWindowTitle(tr("Export settings"));
    setObjectName(QStringLiteral("exportDialog"));
    arrange();
    fillContents();
    connect(path_, &QLineEdit::textChanged, this, [this] { showState(); });
    showState();
}

void ExportDialog::arrange() {
    auto* const layout = new QVBoxLayout(this);
    auto* const form = new QFormLayout;
    content_ = new QComboBox(this);
    content_->setObjectName(QStringLiteral("exportContent"));
    form_ = new QComboBox(this);
    form_->setObjectName(QStringLiteral("exportForm"));
    form_->addItem(tr("Property list"), static_cast<int>(ExportOptions::Form::PropertyList));
    form_->addItem(tr("JSON"), static_cast<int>(ExportOptions::Form::JSON));
    form_->addItem(tr("Commands for a shell"), static_cast<int>(ExportOptions::Form::Commands));
    portable_ = new QCheckBox(tr("&Leave out what belongs to this machine"), this);
    path_ = new QLineEdit(this);
    path_->setObjectName(QStringLiteral("exportPath"));
    path_->setMinimumWidth(fontMetrics().averageCharWidth() * 40);
    auto* const browse = new QPushButton(tr("&Browse\u2026"), this);
    browse->setAutoDefault(false);
    connect(browse, &QPushButton::clicked, this, [this] { this->browse(); });
    auto* const row = new QHBoxLayout;
    row->addWidget(path_, 1);
    row->addWidget(browse);
    form->addRow(tr("&What:"), content_);
    form->addRow(tr("&As:"), form_);
    form->addRow(QString(), portable_);
    form->addRow(tr("&File:"), row);
    static_cast<QLabel*>(form->labelForField(row))->setBuddy(path_);
    layout->addLayout(form);
    state_ = new QLabel(this);
    state_->setWordWrap(true);
    state_->setTextFormat(Qt::PlainText);
    state_->setObjectName(QStringLiteral("exportState"));
    layout->addWidget(state_);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    save_ = buttons->addButton(tr("&Save"), QDialogButtonBox::AcceptRole);
    save_->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

void ExportDialog::fillContents() {
    using Content = ExportOptions::Content;
    content_->addItem(tr("All settings"), QVariantList{static_cast<int>(Content::All)});
    if (selection_.size() == 1)
        content_->addItem(tr("The selected setting"),
                          QVariantList{static_cast<int>(Content::Selection)});
    else if (!selection_.empty())
        content_->addItem(tr("The %n selected settings", "", static_cast<int>(selection_.size())),
                          QVariantList{static_cast<int>(Content::Selection)});
    for (const QString& profile : session_.profileNames())
        content_->addItem(tr("Profile %1").arg(profile),
                          QVariantList{static_cast<int>(Content::Profile), profile});
}

void ExportDialog::browse() {
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Export to a file"), path_->text(), {}, nullptr,
                                     QFileDialog::DontConfirmOverwrite);
    if (!path.isEmpty()) path_->setText(path);
}

ExportOptions ExportDialog::options() const {
    const QVariantList content = content_->currentData().toList();
    return {.content = static_cast<ExportOptions::Content>(content.value(0).toInt()),
            .profile = toText(content.value(1).toString()),
            .keyPaths = selection_,
            .form = static_cast<ExportOptions::Form>(form_->currentData().toInt()),
            .isPortable = portable_->isChecked()};
}

bool ExportDialog::mayReplace(const QString& path) {
    if (!QFileInfo::exists(path)) return true;
    QMessageBox question(QMessageBox::Question, tr("Replace the file?"),
                         tr("%1 exists. Replace it?").arg(leftToRight(path)), QMessageBox::Cancel,
                         this);
    QPushButton* const replace = question.addButton(tr("&Replace"), QMessageBox::AcceptRole);
    question.setDefaultButton(QMessageBox::Cancel);
    question.exec();
    return question.clickedButton() == replace;
}

void ExportDialog::showState() {
    state_->clear();
    state_->hide();
    save_->setEnabled(!path_->text().trimmed().isEmpty());
}

void ExportDialog::accept() {
    const QString path = path_->text().trimmed();
    QString fault;
    try {
        const std::string bytes = exportedBytes(session_, options());
        if (!mayReplace(path)) return;
        fault = writeFile(path, bytes);
    } catch (const Tool::Failure& failure) {
        fault = fromText(failure.what());
    }
    if (fault.isEmpty()) return QDialog::accept();
    state_->setText(fault);
    state_->show();
}

}  // namespace QRVWindow
