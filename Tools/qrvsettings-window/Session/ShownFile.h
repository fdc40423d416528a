// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <memory>

class QTemporaryDir;

namespace QRVWindow {

/// Another settings file in place of the user's, for this process and those that it starts: sets
/// `XDG_CONFIG_HOME`. The store finds its file by its name in that folder: for a file of another
/// name there is a private folder with a link to it, until this object is destroyed; and there is
/// no history of it.
class ShownFile {
  public:
    /// To be made before anything uses the store. The file need not exist. Throws Tool::Failure
    /// (WrongValue) when there is no private folder to be had.
    explicit ShownFile(const QString& file);
    ShownFile(const ShownFile&) = delete;
    ShownFile& operator=(const ShownFile&) = delete;
    ~ShownFile();

    /// The absolute path of the file, for messages.
    [[nodiscard]] const QString& path() const { return path_; }

  private:
    QString path_;
    std::unique_ptr<QTemporaryDir> privateFolder_;
};

}  // namespace QRVWindow
