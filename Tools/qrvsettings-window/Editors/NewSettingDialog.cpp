// SPDX-License-Identifier: MIT
#include "Editors/NewSettingDialog.h"

#include <QCompleter>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "Editors/EditorMessage.h"
#include "Look/Text.h"
#include "Session/Session.h"
#include "Settings/SettingObjections.h"
#include "Text/KeyPaths.h"

namespace QRVWindow {

class NewSettingDialog::Inside {
  public:
    Inside(NewSettingDialog& owner, Surroundings surroundings);
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

    void takeKeyPath();
    /// Says what is wrong; whether the key path can be taken.
    bool judgeKeyPath(bool isAsked);

    NewSettingDialog& owner;
    const Surroundings surroundings;
    QLineEdit* keyPath;
    EditorMessage* message;
    ValueEditor* editor = nullptr;

  private:
    void makeEditor(const EditedSetting& setting);
    [[nodiscard]] QString objection() const;
    const Tool::SettingObjections objections_;
    QVBoxLayout* column_;
    QLabel* sentence_;
    QLabel* valueLabel_;
    EditedSetting setting_;
    QString acceptedObjection_;
};

NewSettingDialog::Inside::Inside(NewSettingDialog& theOwner, Surroundings theSurroundings)
    : owner(theOwner),
      surroundings(std::move(theSurroundings)),
      keyPath(new QLineEdit(&owner)),
      message(new EditorMessage(&owner)),
      column_(new QVBoxLayout(&owner)),
      sentence_(makeWrappedLabel({}, &owner)),
      valueLabel_(new QLabel(NewSettingDialog::tr("&Value"), &owner)) {
    auto* const label = new QLabel(NewSettingDialog::tr("&Key path"), &owner);
    label->setBuddy(keyPath);
    keyPath->setLayoutDirection(Qt::LeftToRight);
    keyPath->setAccessibleName(NewSettingDialog::tr("Key path"));
    auto* const completer = new QCompleter(surroundings.keyPaths, keyPath);
    completer->setFilterMode(Qt::MatchContains);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    keyPath->setCompleter(completer);
    sentence_->hide();
    for (QWidget* const widget :
         std::initializer_list<QWidget*>{label, keyPath, message, sentence_, valueLabel_})
        column_->addWidget(widget);
    auto* const box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &owner);
    column_->addStretch(0);
    column_->addWidget(box);
    QObject::connect(box, &QDialogButtonBox::accepted, &owner, &QDialog::accept);
    QObject::connect(box, &QDialogButtonBox::rejected, &owner, &QDialog::reject);
    QObject::connect(keyPath, &QLineEdit::textChanged, &owner, [this] { takeKeyPath(); });
    QObject::connect(message, &EditorMessage::storeAnyway, &owner, [this] {
        acceptedObjection_ = objection();
        message->show({}, false);
        editor->setFocus();
    });
    makeEditor(surroundings.settingAt(""));
}

/// What is typed already stays, unless the key path is one with a value of its own.
void NewSettingDialog::Inside::makeEditor(const EditedSetting& setting) {
    std::optional<PropertyListValue> typed;
    if (editor != nullptr) {
        if (editor->isChanged()) typed = editor->value();
        editor->hide();
        editor->disconnect(&owner);
        editor->deleteLater();
    }
    setting_ = setting;
    editor = new ValueEditor(setting, ValueEditor::Place::Form, &owner);
    if (typed && setting.value.isNull()) editor->setValue(*typed);
    column_->insertWidget(column_->indexOf(valueLabel_) + 1, editor);
    valueLabel_->setBuddy(editor);
    QWidget::setTabOrder(keyPath, editor->focusProxy());
    editor->show();
    QObject::connect(editor, &ValueEditor::committed, &owner, [this] {
        if (!judgeKeyPath(true)) return keyPath->setFocus();
        if (owner.value()) return owner.QDialog::accept();
        message->show(NewSettingDialog::tr("! A value is missing."), false);
    });
    QObject::connect(editor, &ValueEditor::cancelled, &owner, &QDialog::reject);
}

void NewSettingDialog::Inside::takeKeyPath() {
    acceptedObjection_.clear();
    const EditedSetting setting = surroundings.settingAt(owner.keyPath());
    if (setting.known != setting_.known || !setting.value.isNull() || !setting_.value.isNull())
        makeEditor(setting);
    const QString sentence =
        setting.known == nullptr ? QString() : fromText(setting.known->sentence);
    sentence_->setText(sentence);
    sentence_->setHidden(sentence.isEmpty());
    judgeKeyPath(false);
}

QString NewSettingDialog::Inside::objection() const {
    const std::string path = owner.keyPath();
    const auto value = editor->value();
    const std::string typo = objections_.toKeyPath(path, value ? *value : PropertyListValue());
    if (!typo.empty()) return fromText(typo);
    const std::string around = "." + path + ".";
    return around.find("..") == around.npos
               ? QString()
               : NewSettingDialog::tr("a name between two dots is missing");
}

bool NewSettingDialog::Inside::judgeKeyPath(bool isAsked) {
    QString fault;
    if (keyPath->text().isEmpty()) {
        if (isAsked) fault = NewSettingDialog::tr("! A key path is missing.");
    } else {
        const QString obstacle = surroundings.obstacleAt(owner.keyPath());
        if (!obstacle.isEmpty()) fault = NewSettingDialog::tr("! %1").arg(obstacle);
    }
    const QString why = fault.isEmpty() && !keyPath->text().isEmpty() ? objection() : QString();
    const bool isOpen = !why.isEmpty() && why != acceptedObjection_;
    const QString text = isOpen ? NewSettingDialog::tr("! %1").arg(why) : fault;
    message->show(text, isOpen);
    keyPath->setAccessibleDescription(text);
    return text.isEmpty();
}

NewSettingDialog::NewSettingDialog(Surroundings surroundings, QWidget* parent)
    : FormDialog(parent) {
    inside_ = std::make_unique<Inside>(*this, std::move(surroundings));
    setWindowTitle(tr("New setting"));
    takeStartSize();
    inside_->keyPath->setFocus();
}

NewSettingDialog::~NewSettingDialog() = default;

std::string NewSettingDialog::keyPath() const {
    return toText(inside_ ? inside_->keyPath->text() : QString());
}

void NewSettingDialog::setKeyPath(const std::string& keyPath) {
    inside_->keyPath->setText(fromText(keyPath));
}

ValueEditor* NewSettingDialog::editor() const {
    return inside_->editor;
}

std::optional<PropertyListValue> NewSettingDialog::value() const {
    const auto value = inside_->editor->value();
    return value && !value->isNull() ? value : std::nullopt;
}

QString NewSettingDialog::keyPathMessage() const {
    return inside_->message->text();
}

/// The editor's commit leads back to the key path.
void NewSettingDialog::accept() {
    if (!inside_->judgeKeyPath(true)) return inside_->keyPath->setFocus();
    if (!inside_->editor->commit()) inside_->editor->setFocus();
}

NewSettingDialog* newSettingInDialog(Session& session, QWidget* parent) {
    NewSettingDialog::Surroundings surroundings;
    surroundings.settingAt = [&session](const std::string& keyPath) {
        EditedSetting setting;
        setting.keyPath = keyPath;
        setting.known = session.lists().at(keyPath);
        if (const Tool::SettingRow* const row = session.table().at(keyPath)) {
            setting.value = session.valueWithEdits(keyPath);
            setting.byDefault = row->byDefault;
        }
        return setting;
    };
    surroundings.obstacleAt = [&session](const std::string& keyPath) {
        const auto above = Tool::leafAbove(session.pending().appliedTo(session.stored()),
                                           session.placeOf(keyPath).storedKeyPath());
        return above ? NewSettingDialog::tr("%1 has a value, so nothing can be below it.")
                           .arg(keyPathInSentence(*above))
                     : QString();
    };
    for (const auto& [keyPath, known] : session.lists().settings())
        if (known.scope != QRVSettingScope::Record) surroundings.keyPaths.append(fromText(keyPath));
    auto* const dialog = new NewSettingDialog(std::move(surroundings), parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QDialog::accepted, &session, [&session, dialog] {
        if (const auto value = dialog->value()) session.edit(dialog->keyPath(), *value);
    });
    dialog->open();
    return dialog;
}

}  // namespace QRVWindow
