// SPDX-License-Identifier: MIT
#pragma once

// Reading and writing a large settings file by what differs from its last known text.

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files/HeldBytes.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/PassedText.h"
#include "Platform/Threads/AtomicProperty.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVInside {

/// The text of the settings that this process last reloaded or saved, and its tree. The text stays
/// in its file, which is kept open. It only makes reading and writing faster: the results are
/// those of `NSPropertyListSerialization`. Any thread.
///
/// A small text is not kept, nor one that was the first to be read or saved.
class KnownText {
  public:
    /// In bytes. A smaller text is read or written faster than compared.
    static constexpr std::size_t smallest = std::size_t{64} * 1024;

    /// A text that is no longer known. When another file has replaced its file, the end of this
    /// frees the space, which takes a while. So it has to outlive locks, and calls that somebody
    /// waits for.
    using Forgotten = std::shared_ptr<const void>;

    struct Read {
        PropertyListReadResult result;
        Forgotten forgotten = nullptr;
    };
    /// Reads the bytes of the file at `path`. `likely` is a tree that may hold most of their
    /// settings, for when no text is known; or null. Bytes that have been read are given back
    /// where that is possible.
    Read read(std::string_view bytes, const std::string& path, const NSDictionary& likely,
              const QRVPlatform::PropertyLists::PassedText::GiveBack& giveBack = nullptr);

    /// A written tree, or why it cannot be written.
    struct Written {
        PropertyListWriteResult whole;  ///< empty when there is a revision
        std::optional<QRVPlatform::HeldBytes::Bytes> revision = {};  ///< the known text, edited
        NSDictionary tree =
            nullptr;  ///< what reading the bytes gives; null when it need not be known

        QRVPlatform::HeldBytes::Mark mark = {};  ///< of the bytes, when there is a tree
        Forgotten forgotten = nullptr;           ///< what is forgotten when they replace the file

        [[nodiscard]] const std::optional<PropertyListError>& error() const { return whole.error; }
        [[nodiscard]] std::string_view bytes() const {
            return revision ? revision->view() : std::string_view(whole.bytes);
        }
    };
    /// Writes a tree. Each mutable container is written as it was at one moment.
    Written write(const NSDictionary& tree);
    /// `written` has replaced the file at `path`.
    void noteReplaced(const Written& written, const std::string& path);
    /// There is no file.
    void forget() { known_.store(nullptr); }

  private:
    struct Known {
        NSDictionary tree;
        QRVPlatform::HeldBytes bytes;
    };

    void remember(const NSDictionary& tree, const QRVPlatform::HeldBytes::Mark& mark,
                  const std::string& path);
    NSDictionary treeByKnown(const Known& known, std::string_view bytes) const;
    NSDictionary treeByLikely(const NSDictionary& likely, std::string_view bytes) const;

    QRVPlatform::AtomicProperty<std::shared_ptr<const Known>> known_;
    /// False after a file was found to have another layout than the writer's.
    std::atomic<bool> isLaidOutAsOurs_ = true;
    std::atomic<bool> isLastSaveLarge_ = false;
};

}  // namespace QRVInside
