// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Editors/FormDialog.h"
#include "Editors/ValueEditor.h"

namespace QRVWindow {

class Session;

/// A form for one setting, or for several that are to have one value: what is known of them, the
/// editor, and the command that would set the same. It changes nothing; `value` is for whoever
/// opened it.
class EditDialog : public FormDialog {
    Q_OBJECT

  public:
    struct Subject {
        std::vector<EditedSetting> settings;  ///< at least one
        QString profile;                      ///< empty for the application's settings
    };

    explicit EditDialog(const Subject& subject, QWidget* parent = nullptr);
    ~EditDialog() override;

    /// Why settings cannot be edited together; empty when they can.
    static QString objectionToTogether(const std::vector<EditedSetting>& settings);

    [[nodiscard]] ValueEditor* editor() const;
    /// What a person has set; empty when nothing was changed, or not to a value.
    [[nodiscard]] std::optional<PropertyListValue> value() const;
    /// A line above the editor, such as that another process has stored something; empty for none.
    void setNews(const QString& news);

    void accept() override;

  private:
    class Inside;
    std::unique_ptr<Inside> inside_;
};

/// Opens the form for settings of the session, whose edit it becomes when it is accepted. Says why
/// where they cannot be edited together. Returns at once; null when there is no form.
EditDialog* editInDialog(Session& session, const std::vector<std::string>& keyPaths,
                         QWidget* parent);

}  // namespace QRVWindow
