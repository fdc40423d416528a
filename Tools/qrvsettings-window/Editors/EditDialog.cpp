// SPDX-License-Identifier: MIT
#include "Editors/EditDialog.h"

#include <QClipboard>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "Editors/Kinds.h"
#include "Edits/EditCommands.h"
#include "Look/Text.h"
#include "Settings/SettingObjections.h"
#include "Text/Differences.h"

namespace QRVWindow {
namespace {

using Kind = PropertyListValue::Kind;

bool hasSameRules(const Tool::KnownSetting& one, const Tool::KnownSetting& other) {
    const auto isSame = [](const Tool::KnownChoice& left, const Tool::KnownChoice& right) {
        return Tool::areSameInKind(left.value, right.value) && left.sentence == right.sentence;
    };
    return one.kind == other.kind && Tool::areSameInKind(one.minimum, other.minimum) &&
           Tool::areSameInKind(one.maximum, other.maximum) && one.unit == other.unit &&
           std::equal(one.choices.begin(), one.choices.end(), other.choices.begin(),
                      other.choices.end(), isSame);
}

QPlainTextEdit* makeReadOnlyLines(const QString& name, int lineCount, QWidget* parent) {
    auto* const lines = new QPlainTextEdit(parent);
    lines->setReadOnly(true);
    lines->setTabChangesFocus(true);
    lines->setLayoutDirection(Qt::LeftToRight);
    lines->setFont(codeFont());
    lines->setAccessibleName(name);
    const int line = lines->fontMetrics().lineSpacing();
    const int margins = 2 * (lines->frameWidth() + qRound(lines->document()->documentMargin()));
    lines->setFixedHeight(line * lineCount + margins + line / 3);
    return lines;
}

/// All of them as one: what they do not share is left out.
EditedSetting common(const std::vector<EditedSetting>& settings, Tool::KnownSetting& rules) {
    EditedSetting result = settings.front();
    for (const EditedSetting& setting : settings) {
        if (!Tool::areSameInKind(setting.value, result.value)) result.value = nullptr;
        if (!Tool::areSameInKind(setting.byDefault, result.byDefault)) result.byDefault = nullptr;
        const bool isKnown = setting.known != nullptr && result.known != nullptr;
        if (!isKnown || !hasSameRules(*setting.known, *result.known)) result.known = nullptr;
    }
    if (result.known == nullptr && settings.size() > 1) {
        rules.kind = kindOfEditor(settings.front());
        result.known = &rules;
    }
    return result;
}

}  // namespace

class EditDialog::Inside {
  public:
    Inside(EditDialog& owner, const Subject& subject);
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

    ValueEditor* editor;
    QLabel* news;

  private:
    void addHead(QBoxLayout& column);
    void addFacts(QFormLayout& form);
    void addDefault(QFormLayout& form);
    void addCommand(QBoxLayout& column);
    void addButtons(QBoxLayout& column);
    void showCommand();
    [[nodiscard]] QString objectionTo(const PropertyListValue& value) const;
    [[nodiscard]] bool isOne() const { return subject_.settings.size() == 1; }

    EditDialog& owner_;
    const Subject subject_;
    const Tool::SettingObjections objections_;
    Tool::KnownSetting rules_;  // of several settings that have no rules in common
    const EditedSetting setting_;
    QPlainTextEdit* command_ = nullptr;
    QTimer commandTimer_;
};

EditDialog::Inside::Inside(EditDialog& owner, const Subject& subject)
    : news(makeWrappedLabel({}, &owner)),
      owner_(owner),
      subject_(subject),
      setting_(common(subject_.settings, rules_)) {
    auto* const column = new QVBoxLayout(&owner_);
    addHead(*column);
    auto* const form = new QFormLayout;
    column->addLayout(form);
    addFacts(*form);
    editor = new ValueEditor(setting_, ValueEditor::Place::Form, &owner_);
    editor->setJudge([this](const PropertyListValue& value) { return objectionTo(value); });
    addDefault(*form);
    news->hide();
    column->addWidget(news);
    auto* const label = new QLabel(EditDialog::tr("&Value"), &owner_);
    label->setBuddy(editor);
    column->addWidget(label);
    column->addWidget(editor, 1);
    addCommand(*column);
    addButtons(*column);
    QObject::connect(editor, &ValueEditor::committed, &owner_,
                     [this] { owner_.QDialog::accept(); });
    QObject::connect(editor, &ValueEditor::cancelled, &owner_, &QDialog::reject);
    editor->setFocus();
}

void EditDialog::Inside::addHead(QBoxLayout& column) {
    const int count = static_cast<int>(subject_.settings.size());
    if (isOne()) {
        const QString keyPath = keyPathInSentence(setting_.keyPath);
        owner_.setWindowTitle(EditDialog::tr("Edit %1").arg(keyPath));
        auto* const head = makeWrappedLabel(keyPath, &owner_);
        QFont font = head->font();
        font.setBold(true);
        head->setFont(font);
        column.addWidget(head);
        if (setting_.known != nullptr && !setting_.known->sentence.empty())
            column.addWidget(makeWrappedLabel(fromText(setting_.known->sentence), &owner_));
        return;
    }
    owner_.setWindowTitle(EditDialog::tr("Set %n settings to one value", "", count));
    column.addWidget(
        makeWrappedLabel(EditDialog::tr("%n settings get this value:", "", count), &owner_));
    constexpr int mostLines = 6;
    auto* const names =
        makeReadOnlyLines(EditDialog::tr("Settings"), std::min(count, mostLines), &owner_);
    QStringList lines;
    for (const EditedSetting& setting : subject_.settings)
        lines.append(keyPathInSentence(setting.keyPath));
    names->setPlainText(lines.join(QLatin1Char('\n')));
    column.addWidget(names);
}

void EditDialog::Inside::addFacts(QFormLayout& form) {
    const Kind kind = setting_.known != nullptr ? setting_.known->kind : Kind::Null;
    if (kind != Kind::Null)
        form.addRow(EditDialog::tr("Kind:"), makeWrappedLabel(kindText(kind), &owner_));
    if (!subject_.profile.isEmpty())
        form.addRow(EditDialog::tr("Profile:"),
                    makeWrappedLabel(leftToRight(subject_.profile), &owner_));
    if (!isOne() && setting_.value.isNull())
        form.addRow(EditDialog::tr("Now:"),
                    makeWrappedLabel(EditDialog::tr("different values"), &owner_));
}

void EditDialog::Inside::addDefault(QFormLayout& form) {
    if (setting_.byDefault.isNull()) return;
    constexpr qsizetype longest = 200;
    auto* const row = new QHBoxLayout;
    row->addWidget(makeWrappedLabel(leftToRight(valueAsText(setting_.byDefault, longest)), &owner_),
                   1);
    auto* const button = new QPushButton(EditDialog::tr("Use the &default"), &owner_);
    button->setAutoDefault(false);
    row->addWidget(button, 0, Qt::AlignTop);
    form.addRow(EditDialog::tr("Default:"), row);
    QObject::connect(button, &QPushButton::clicked, &owner_,
                     [this] { editor->setValue(setting_.byDefault); });
}

void EditDialog::Inside::addCommand(QBoxLayout& column) {
    constexpr int lineCount = 2;
    auto* const label = new QLabel(EditDialog::tr("C&ommand that sets the same"), &owner_);
    command_ = makeReadOnlyLines(EditDialog::tr("Command that sets the same"), lineCount, &owner_);
    label->setBuddy(command_);
    auto* const copy = new QPushButton(EditDialog::tr("&Copy"), &owner_);
    copy->setAccessibleName(EditDialog::tr("Copy the command"));
    copy->setAutoDefault(false);
    auto* const row = new QHBoxLayout;
    row->addWidget(command_, 1);
    row->addWidget(copy, 0, Qt::AlignTop);
    column.addWidget(label);
    column.addLayout(row);
    QObject::connect(copy, &QPushButton::clicked, &owner_, [this] {
        showCommand();
        QGuiApplication::clipboard()->setText(command_->toPlainText());
    });
    // To find the command reads the known lists: not for every key of somebody who types.
    constexpr int delayInMilliseconds = 100;
    commandTimer_.setSingleShot(true);
    commandTimer_.setInterval(delayInMilliseconds);
    QObject::connect(&commandTimer_, &QTimer::timeout, &owner_, [this] { showCommand(); });
    QObject::connect(editor, &ValueEditor::edited, &owner_, [this] { commandTimer_.start(); });
    showCommand();
}

void EditDialog::Inside::showCommand() {
    const std::optional<PropertyListValue> value = editor->value();
    std::vector<Tool::PendingEdit> edits;
    if (value && !value->isNull())
        for (const EditedSetting& setting : subject_.settings)
            edits.push_back({.place = {setting.keyPath, toText(subject_.profile)},
                             .base = nullptr,
                             .value = *value});
    const std::string commands = edits.empty() ? "" : Tool::commandsOfEdits(edits);
    command_->setPlainText(fromText(commands).trimmed());
}

void EditDialog::Inside::addButtons(QBoxLayout& column) {
    auto* const box =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &owner_);
    column.addWidget(box);
    QObject::connect(box, &QDialogButtonBox::accepted, &owner_, &QDialog::accept);
    QObject::connect(box, &QDialogButtonBox::rejected, &owner_, &QDialog::reject);
}

/// The first setting that the value does not suit.
QString EditDialog::Inside::objectionTo(const PropertyListValue& value) const {
    for (const EditedSetting& setting : subject_.settings) {
        const std::string objection = objections_.toValue(setting.keyPath, value);
        if (!objection.empty()) return fromText(objection);
    }
    return {};
}

EditDialog::EditDialog(const Subject& subject, QWidget* parent)
    : FormDialog(parent), inside_(std::make_unique<Inside>(*this, subject)) {
    takeStartSize();
}

EditDialog::~EditDialog() = default;

QString EditDialog::objectionToTogether(const std::vector<EditedSetting>& settings) {
    for (const EditedSetting& setting : settings)
        if (kindOfEditor(setting) != kindOfEditor(settings.front()))
            return tr("The settings are of different kinds: %1 is %2, %3 is %4.")
                .arg(keyPathInSentence(settings.front().keyPath),
                     kindText(kindOfEditor(settings.front())), keyPathInSentence(setting.keyPath),
                     kindText(kindOfEditor(setting)));
    return {};
}

ValueEditor* EditDialog::editor() const {
    return inside_->editor;
}

std::optional<PropertyListValue> EditDialog::value() const {
    if (!inside_->editor->isChanged()) return std::nullopt;
    return inside_->editor->value();
}

void EditDialog::setNews(const QString& news) {
    inside_->news->setText(news);
    inside_->news->setHidden(news.isEmpty());
}

void EditDialog::accept() {
    if (!inside_->editor->commit()) inside_->editor->setFocus();
}

}  // namespace QRVWindow
