// SPDX-License-Identifier: MIT
#pragma once

/// Import and export of settings. An import shows what it changes, and makes pending edits of it in
/// one step: nothing is written. An export writes a file of its own, never the settings file.

#include <QDialog>
#include <string>
#include <vector>

#include "Dialogs/ChangeModel.h"
#include "Dialogs/LiveDialog.h"
#include "Edits/Comparison.h"
#include "Session/Session.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMimeData;
class QPushButton;

namespace QRVWindow {

class ChangeView;

class ImportDialog : public LiveDialog {
    Q_OBJECT

  public:
    enum Column { Setting, Profile, InFile, Result };

    /// `session` must outlive the dialog. What would change is found out now, and no more when the
    /// file or the settings change.
    ImportDialog(Session& session, const QString& path, QWidget* parent = nullptr);

    void accept() override;

  protected:
    void showSession() override;

  private:
    void read(const QString& path);
    void arrange(const QString& path);
    void makeButtons(QLayout& layout);
    void showState();
    [[nodiscard]] std::vector<Tool::PendingEdits::Request> chosenRequests() const;
    [[nodiscard]] QString stateText() const;

    Tool::ImportPreview preview_;
    QString fault_;
    std::size_t settingCount_ = 0;  ///< how many the file holds
    ChangeModel model_;
    ChangeView* view_ = nullptr;
    QCheckBox* resets_ = nullptr;
    QLabel* remarks_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* take_ = nullptr;
};

/// The one local file that is dragged; empty for anything else.
QString draggedFile(const QMimeData& data);

struct ExportOptions {
    enum class Content { All, Selection, Profile };
    enum class Form { PropertyList, JSON, Commands };
    Content content = Content::All;
    std::string profile{};                ///< of `Profile`
    std::vector<std::string> keyPaths{};  ///< of `Selection`, in the scope
    Form form = Form::PropertyList;
    /// Without what belongs to this machine. Commands never hold the store's records.
    bool isPortable = false;
};

/// Throws Tool::Failure when nothing is stored there, or the form cannot hold it.
std::string exportedBytes(const Session& session, const ExportOptions& options);

class ExportDialog : public QDialog {
    Q_OBJECT

  public:
    /// `selection` are key paths of the scope.
    ExportDialog(Session& session, std::vector<std::string> selection, QWidget* parent = nullptr);

    /// Writes the file that is named, after a question where it exists, and closes the dialog.
    void accept() override;

  private:
    void arrange();
    void fillContents();
    void browse();
    void showState();
    [[nodiscard]] ExportOptions options() const;
    [[nodiscard]] bool mayReplace(const QString& path);

    Session& session_;
    std::vector<std::string> selection_;
    QComboBox* content_ = nullptr;
    QComboBox* form_ = nullptr;
    QCheckBox* portable_ = nullptr;
    QLineEdit* path_ = nullptr;
    QLabel* state_ = nullptr;
    QPushButton* save_ = nullptr;
};

}  // namespace QRVWindow
