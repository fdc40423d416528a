// SPDX-License-Identifier: MIT
#include "Main/ScopeBar.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QSignalBlocker>

#include "Look/Text.h"

namespace QRVWindow {
namespace {

constexpr int profileRole = Qt::UserRole;
/// Set for an entry that does something instead of being chosen.
constexpr int isCommandRole = Qt::UserRole + 1;

void addCommand(QComboBox& box, const QString& text) {
    box.insertSeparator(box.count());
    box.addItem(text);
    box.setItemData(box.count() - 1, true, isCommandRole);
}

void choose(QComboBox& box, const QString& profile) {
    for (int index = 0; index < box.count(); ++index) {
        const QVariant data = box.itemData(index, profileRole);
        if (data.isValid() && data.toString() == profile) box.setCurrentIndex(index);
    }
}

}  // namespace

ScopeBar::ScopeBar(Session& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* const line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    scope_ = makeBox(*line, tr("S&cope:"), tr("Scope"));
    other_ = makeBox(*line, tr("Com&pare with:"), tr("Compare with"));
    line->addStretch(1);
    makeForm(*line);
    connect(scope_, &QComboBox::activated, this, &ScopeBar::chooseScope);
    connect(other_, &QComboBox::activated, this, &ScopeBar::chooseOther);
    connect(&session_, &Session::profilesChanged, this, &ScopeBar::showProfiles);
    connect(&session_, &Session::tableReset, this, &ScopeBar::showProfiles);
    connect(&session_, &Session::otherTableChanged, this, &ScopeBar::showProfiles);
    showProfiles();
}

QComboBox* ScopeBar::makeBox(QLayout& line, const QString& label, const QString& name) {
    auto* const text = new QLabel(label, this);
    auto* const box = new QComboBox(this);
    box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    box->setAccessibleName(name);
    text->setBuddy(box);
    line.addWidget(text);
    line.addWidget(box);
    return box;
}

void ScopeBar::makeForm(QLayout& line) {
    auto* const text = new QLabel(tr("View:"), this);
    tree_ = new QRadioButton(tr("Tree"), this);
    tree_->setAccessibleDescription(tr("Shows the settings below the levels of their key paths"));
    flat_ = new QRadioButton(tr("Flat"), this);
    flat_->setAccessibleDescription(tr("Shows the settings as a list of key paths"));
    tree_->setChecked(true);
    for (QWidget* const part : std::initializer_list<QWidget*>{text, tree_, flat_})
        line.addWidget(part);
    // A screen reader toggles a button without a click.
    connect(flat_, &QRadioButton::toggled, this, [this](bool isFlat) {
        Q_EMIT formChanged(isFlat ? Tool::RowList::Form::Flat : Tool::RowList::Form::Tree);
    });
}

void ScopeBar::setForm(Tool::RowList::Form form) {
    (form == Tool::RowList::Form::Tree ? tree_ : flat_)->setChecked(true);
}

void ScopeBar::showProfiles() {
    QStringList profiles = session_.profileNames();
    // A new profile has no settings yet.
    for (const QString& name : {session_.profile(), session_.otherProfile()})
        if (!name.isEmpty() && !profiles.contains(name)) profiles << name;

    const QSignalBlocker scopeIsQuiet(scope_);
    const QSignalBlocker otherIsQuiet(other_);
    scope_->clear();
    other_->clear();
    scope_->addItem(tr("Application"), QString());
    other_->addItem(tr("Defaults"), QString());
    for (const QString& name : std::as_const(profiles)) {
        const QString text = tr("Profile %1").arg(leftToRight(name));
        scope_->addItem(text, name);
        if (name != session_.profile()) other_->addItem(text, name);
    }
    addCommand(*scope_, tr("New profile\u2026"));
    addCommand(*other_, tr("Something else\u2026"));
    choose(*scope_, session_.profile());
    choose(*other_, session_.otherProfile());
}

void ScopeBar::chooseScope(int index) {
    const bool isCommand = scope_->itemData(index, isCommandRole).toBool();
    const QString profile = scope_->itemData(index, profileRole).toString();
    if (isCommand) {
        choose(*scope_, session_.profile());
        Q_EMIT newProfileWanted();
    } else {
        session_.setProfile(profile);
    }
}

void ScopeBar::chooseOther(int index) {
    const bool isCommand = other_->itemData(index, isCommandRole).toBool();
    const QString profile = other_->itemData(index, profileRole).toString();
    if (isCommand) {
        choose(*other_, session_.otherProfile());
        Q_EMIT comparisonWanted();
    } else {
        session_.setOtherProfile(profile);
    }
}

}  // namespace QRVWindow
