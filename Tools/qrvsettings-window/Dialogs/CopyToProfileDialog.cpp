// SPDX-License-Identifier: MIT
#include "Dialogs/CopyToProfileDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "Dialogs/ValueCells.h"
#include "Look/Text.h"
#include "Settings/Records.h"

namespace QRVWindow {

CopyToProfileDialog::CopyToProfileDialog(Session& session, std::vector<std::string> keyPaths,
                                         QWidget* parent)
    : QDialog(parent), session_(session), keyPaths_(std::move(keyPaths)) {
    setWindowTitle(tr("Copy to a profile"));
    setObjectName(QStringLiteral("copyToProfileDialog"));
    std::erase_if(keyPaths_, [](const auto& keyPath) { return Tool::isRecord(keyPath); });
    auto* const layout = new QVBoxLayout(this);
    auto* const form = new QFormLayout;
    name_ = new QComboBox(this);
    name_->setEditable(true);
    name_->lineEdit()->setPlaceholderText(tr("Name of a profile, also a new one"));
    for (const QString& profile : session_.profileNames())
        if (profile != session_.profile()) name_->addItem(profile);
    name_->setMinimumContentsLength(24);
    form->addRow(tr("To the &profile:"), name_);
    layout->addLayout(form);
    state_ = new QLabel(this);
    state_->setWordWrap(true);
    state_->setTextFormat(Qt::PlainText);
    state_->setObjectName(QStringLiteral("copyState"));
    layout->addWidget(state_);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    copy_ = buttons->addButton(tr("&Copy"), QDialogButtonBox::AcceptRole);
    copy_->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(name_, &QComboBox::editTextChanged, this, [this] { showState(); });
    layout->addWidget(buttons);
    showState();
    name_->setFocus();
}

QString CopyToProfileDialog::objection() const {
    const QString name = name_->currentText();
    if (keyPaths_.empty()) return tr("No settings are selected.");
    if (name.isEmpty()) return tr("Name a profile.");
    if (name == session_.profile()) return tr("This is the profile that they are copied from.");
    if (name.contains(QLatin1Char('.'))) return tr("The name of a profile holds no dots.");
    return {};
}

QString CopyToProfileDialog::profile() const {
    return objection().isEmpty() ? name_->currentText() : QString();
}

void CopyToProfileDialog::showState() {
    const QString fault = objection();
    copy_->setEnabled(fault.isEmpty());
    if (!fault.isEmpty())
        state_->setText(fault);
    else if (keyPaths_.size() == 1)
        state_->setText(tr("1 setting becomes a pending edit of the profile."));
    else
        state_->setText(tr("%n settings become pending edits of the profile.", "",
                           static_cast<int>(keyPaths_.size())));
}

void CopyToProfileDialog::accept() {
    const std::string profile = toText(this->profile());
    if (profile.empty()) return;
    std::vector<Tool::PendingEdits::Request> requests;
    for (const std::string& keyPath : keyPaths_) {
        const Tool::SettingPlace place{keyPath, profile};
        requests.push_back({.place = place,
                            .value = session_.valueWithEdits(keyPath),
                            .byDefault = defaultAt(session_, place)});
    }
    session_.edit(requests, tr("Copy to the profile %1").arg(fromText(profile)));
    QDialog::accept();
}

}  // namespace QRVWindow
