// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Editors/FormDialog.h"
#include "Editors/ValueEditor.h"

namespace QRVWindow {

class Session;

/// A form for the key path and value of a setting that has no row. It changes nothing; the results
/// are for whoever opened it.
class NewSettingDialog : public FormDialog {
    Q_OBJECT

  public:
    struct Surroundings {
        /// What is known at a key path, with the value that is there now.
        std::function<EditedSetting(const std::string& keyPath)> settingAt;
        /// Why nothing can be stored at a key path; empty when something can.
        std::function<QString(const std::string& keyPath)> obstacleAt;
        QStringList keyPaths;  ///< for completion
    };

    explicit NewSettingDialog(Surroundings surroundings, QWidget* parent = nullptr);
    ~NewSettingDialog() override;

    [[nodiscard]] std::string keyPath() const;
    void setKeyPath(const std::string& keyPath);
    [[nodiscard]] ValueEditor* editor() const;
    /// Empty until there is a value.
    [[nodiscard]] std::optional<PropertyListValue> value() const;
    /// What is said about the key path; empty when nothing is.
    [[nodiscard]] QString keyPathMessage() const;

    void accept() override;

  private:
    class Inside;
    std::unique_ptr<Inside> inside_;
};

/// Opens the form for the scope of the session, whose edit it becomes when it is accepted. Returns
/// at once.
NewSettingDialog* newSettingInDialog(Session& session, QWidget* parent);

}  // namespace QRVWindow
