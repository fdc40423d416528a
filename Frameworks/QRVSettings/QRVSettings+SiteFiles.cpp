// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+SiteFiles.h"

#include <algorithm>
#include <utility>

#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Platform/PropertyLists/Unicode.h"
#include "QRVSettings/StoreKeyPaths.h"

namespace QRVInside {

namespace {

std::error_code wrongContents() {
    return make_error_code(std::errc::invalid_argument);
}

/// The faults of one file, of which there may be as many as it has lines.
class FaultsOfFile {
  public:
    FaultsOfFile(std::string file, std::vector<SiteFault>& faults)
        : file_(std::move(file)), faults_(faults) {}
    FaultsOfFile(const FaultsOfFile&) = delete;
    FaultsOfFile& operator=(const FaultsOfFile&) = delete;
    ~FaultsOfFile() {
        if (count_ > most)
            faults_.push_back(
                {file_, "", wrongContents(), std::to_string(count_ - most) + " more are left out"});
    }
    void add(std::string_view keyPath, std::string reason) {
        if (++count_ <= most)
            faults_.push_back({file_, std::string(keyPath), wrongContents(), std::move(reason)});
    }

  private:
    static constexpr std::size_t most = 20;
    std::string file_;
    std::vector<SiteFault>& faults_;
    std::size_t count_ = 0;
};

/// Records of the store, and what the user keeps in profiles.
bool isOfTheUser(std::string_view keyPath) {
    const std::string_view key = keyPath.substr(0, keyPath.find('.'));
    const auto isBelow = [key](std::string_view record) {
        return key == record.substr(0, record.find('.'));
    };
    return isBelow(QRVStoreKeyPaths::device) || isBelow(QRVStoreKeyPaths::profilesMigrated) ||
           isBelow(QRVStoreKeyPaths::profiles) || isBelow(QRVStoreKeyPaths::currentAppearance);
}
constexpr const char* ofTheUser = "is a record or a profile of one user";

std::string_view withoutSpace(std::string_view text) {
    constexpr std::string_view space = " \t\r\v\f";
    const std::size_t start = text.find_first_not_of(space);
    if (start == std::string_view::npos) return "";
    return text.substr(start, text.find_last_not_of(space) + 1 - start);
}

/// What is wrong with the text of a line, without the ".*" at its end; empty when nothing is.
std::string faultOfLock(std::string_view keyPath) {
    constexpr std::size_t mostKeys = NSPropertyListSerialization::maximumLevels;
    const auto isControl = [](char character) {
        return static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
    };
    if (keyPath.empty()) return "names no key path";
    if (QRVPlatform::PropertyLists::positionOfBrokenUTF8(keyPath)) return "is not UTF-8";
    if (std::any_of(keyPath.begin(), keyPath.end(), isControl)) return "holds control characters";
    if (keyPath.find('*') != std::string_view::npos) return "holds a * that is not its last key";
    if (static_cast<std::size_t>(std::count(keyPath.begin(), keyPath.end(), '.')) >= mostKeys)
        return "has too many keys";
    return isOfTheUser(keyPath) ? ofTheUser : "";
}

std::string_view withoutWildcard(std::string_view line) {
    constexpr std::string_view wildcard = ".*";
    if (line == "*") return "";
    return line.ends_with(wildcard) ? line.substr(0, line.size() - wildcard.size()) : line;
}

bool isSameFile(const QRVPlatform::FileIdentity& one, const QRVPlatform::FileIdentity& other) {
    return !one.isMissing() && one.device == other.device && one.inode == other.inode;
}

/// Empty when there is no such file, and when it is left out as a whole.
std::optional<std::string> contentsOfSiteFile(const std::string& path, std::size_t maximumSize,
                                              std::vector<SiteFault>& faults) {
    QRVPlatform::FileContents contents = QRVPlatform::contentsOfFile(path, maximumSize);
    if (!contents.error) return std::move(contents.bytes);
    if (!contents.isMissing())
        faults.push_back({path, "", contents.error, contents.error.message()});
    return std::nullopt;
}

void readList(const std::string& path, SiteFiles& site) {
    const auto bytes =
        contentsOfSiteFile(path, NSPropertyListSerialization::maximumSize, site.faults);
    if (!bytes) return;
    NSDictionary root = nullptr;
    if (!bytes->empty()) {
        const auto read = NSPropertyListSerialization::propertyListWithData(*bytes);
        root = read.value.dictionary();
        if (root.isNull()) {
            site.faults.push_back(
                {path, "", wrongContents(),
                 read.error ? read.error->description() : "its root is not a dictionary"});
            return;
        }
    }
    site.files.push_back({path, siteValues(root, path, site.faults), {}});
}

void readLocks(const std::string& path, SiteFiles& site) {
    const auto bytes = contentsOfSiteFile(path, maximumSizeOfLocks, site.faults);
    if (bytes) site.files.push_back({path, {}, siteLocks(*bytes, path, site.faults)});
}

}  // namespace

std::vector<SiteValue> siteValues(const NSDictionary& root, const std::string& file,
                                  std::vector<SiteFault>& faults) {
    FaultsOfFile wrong(file, faults);
    std::vector<SiteValue> values;
    std::vector<std::pair<std::string, NSDictionary>> levels{{"", root}};
    while (!levels.empty()) {
        const auto [start, level] = std::move(levels.back());
        levels.pop_back();
        for (const auto& [key, value] : level) {
            const std::string keyPath = start + std::string(key);
            if (key.find('.') != std::string_view::npos)
                wrong.add(keyPath, "a key holds a dot, so that no key path reaches it");
            else if (start.empty() && isOfTheUser(keyPath))
                wrong.add(keyPath, ofTheUser);
            else if (value.isDictionary())
                levels.emplace_back(keyPath + ".", value.dictionary());
            else
                values.push_back({keyPath, value});
        }
    }
    return values;
}

std::vector<std::string> siteLocks(std::string_view bytes, const std::string& file,
                                   std::vector<SiteFault>& faults) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(byteOrderMark)) bytes.remove_prefix(byteOrderMark.size());
    FaultsOfFile wrong(file, faults);
    std::vector<std::string> locks;
    while (!bytes.empty()) {
        const std::string_view line = bytes.substr(0, bytes.find('\n'));
        bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
        const std::string_view text = withoutSpace(line);
        if (text.empty() || text.starts_with('#')) continue;
        const std::string_view keyPath = withoutWildcard(text);
        std::string fault = faultOfLock(keyPath);
        if (fault.empty())
            locks.emplace_back(keyPath);
        else
            wrong.add(text, std::move(fault));
    }
    return locks;
}

SiteFiles readSiteFiles(const std::vector<std::string>& folders, const std::string& name,
                        const std::string& settings) {
    const QRVPlatform::FileIdentity own = QRVPlatform::identityOfFileAtPath(settings);
    SiteFiles site;
    for (const std::string& folder : folders) {
        std::string list = folder;
        list.append("/Preferences/").append(name);
        if (list == settings || isSameFile(QRVPlatform::identityOfFileAtPath(list), own)) continue;
        readList(list, site);
        readLocks(list + std::string(endingOfLocks), site);
    }
    return site;
}

}  // namespace QRVInside
