// SPDX-License-Identifier: MIT
#include "Settings/KnownLists.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Reporting/Failure.h"
#include "Settings/KnownListEntry.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t maximumSize = std::size_t{4} * 1024 * 1024;
constexpr const char* folderOfLists = "qrvsettings/known";

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// The user's own first, then those of the system in the order of the environment. A relative path
/// there does not count.
std::vector<std::string> dataFolders() {
    std::vector<std::string> folders = {environment("XDG_DATA_HOME")};
    if (folders.front().empty()) folders.front() = environment("HOME") + "/.local/share";
    std::string list = environment("XDG_DATA_DIRS");
    if (list.empty()) list = "/usr/local/share:/usr/share";
    for (std::size_t start = 0; start <= list.size();) {
        const std::size_t end = std::min(list.find(':', start), list.size());
        const std::string folder = list.substr(start, end - start);
        if (std::find(folders.begin(), folders.end(), folder) == folders.end())
            folders.push_back(folder);
        start = end + 1;
    }
    std::erase_if(folders, [](const std::string& folder) { return !folder.starts_with('/'); });
    return folders;
}

/// Of `name.json` and `name.plist`, in the order of their bytes.
std::vector<std::string> listsIn(const std::string& folder, std::error_code& error) {
    std::vector<std::string> lists;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const fs::path path = entry->path();
        if (path.extension() == ".json" || path.extension() == ".plist")
            lists.push_back(path.string());
    }
    std::sort(lists.begin(), lists.end());
    return lists;
}

/// Throws Failure.
PropertyListValue valueOfList(const std::string& path, const std::string& bytes) {
    if (path.ends_with(".json")) return valueFromJSON(bytes);
    const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
    if (read.error) throw Failure(Fault::WrongValue, read.error->description());
    return read.value;
}

/// The entry "settings". Throws Failure.
NSDictionary settingsOfList(const std::string& path) {
    const QRVPlatform::FileContents file = QRVPlatform::contentsOfFile(path, maximumSize);
    if (file.error) throw Failure(Fault::UnreadableFile, file.error.message());
    NSDictionary settings =
        valueOfList(path, file.bytes).dictionary().objectForKey("settings").dictionary();
    if (settings.isNull())
        throw Failure(Fault::WrongValue, "there is no dictionary \"settings\" at the root");
    return settings;
}

std::vector<std::string> sortedKeys(const NSDictionary& dictionary) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : dictionary) keys.emplace_back(key);
    std::sort(keys.begin(), keys.end());
    return keys;
}

/// Empty when a list may describe the key path.
std::string refusal(const std::string& keyPath, const PropertyListValue& description) {
    if (keyPath.empty()) return "an empty key path";
    if (QRVScopeOfKeyPath(keyPath) == QRVSettingScope::Record) return "a record of the store";
    if (QRVPlainKeyPath(keyPath) != keyPath) return "a key path of one profile, not the plain one";
    return description.isDictionary() ? "" : "its description is not a dictionary";
}

KnownSetting ofTheLibrary(const QRVKnownSetting& known) {
    KnownSetting setting;
    setting.keyPath = known.keyPath;
    setting.kind = known.kind;
    setting.scope = known.scope;
    setting.sentence = known.sentence;
    return setting;
}

}  // namespace

KnownLists KnownLists::read() {
    KnownLists lists;
    for (const QRVKnownSetting& known : QRVKnownSettings())
        lists.settings_.emplace(known.keyPath, ofTheLibrary(known));
    lists.readFiles();
    return lists;
}

KnownLists KnownLists::readWithoutLibrary() {
    KnownLists lists;
    lists.readFiles();
    return lists;
}

void KnownLists::readFiles() {
    for (const std::string& folder : dataFolders()) readFolder(folder + "/" + folderOfLists);
}

void KnownLists::readFolder(const std::string& folder) {
    std::error_code error;
    for (const std::string& path : listsIn(folder, error)) readFile(path);
    const bool isMissing =
        error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    if (error && !isMissing) remarks_.push_back({folder, error.message()});
}

void KnownLists::readFile(const std::string& path) try {
    const NSDictionary settings = settingsOfList(path);
    for (const std::string& keyPath : sortedKeys(settings)) {
        const PropertyListValue description = settings.objectForKey(keyPath);
        const std::string refused = refusal(keyPath, description);
        const std::string place = keyPathText(keyPath) + ": ";
        if (!refused.empty()) {
            remarks_.push_back({path, place + refused});
            continue;
        }
        ListEntry entry = listEntry(keyPath, description.dictionary(), QRVKnownSettingAt(keyPath));
        for (const std::string& fault : entry.faults) remarks_.push_back({path, place + fault});
        entry.setting.file = path;
        add(std::move(entry.setting));
    }
} catch (const Failure& failure) {
    remarks_.push_back({path, failure.what()});
}

// Of several lists the first describes a setting.
void KnownLists::add(KnownSetting setting) {
    KnownSetting& known = settings_[setting.keyPath];
    if (!known.file.empty()) return;
    known = std::move(setting);
    for (const std::string& earlier : known.renamedFrom)
        newKeyPaths_.emplace(earlier, known.keyPath);
}

const KnownSetting* KnownLists::at(std::string_view keyPath) const {
    const auto found = settings_.find(QRVPlainKeyPath(keyPath));
    return found == settings_.end() ? nullptr : &found->second;
}

const KnownSetting* KnownLists::renamedFrom(std::string_view keyPath) const {
    const auto found = newKeyPaths_.find(QRVPlainKeyPath(keyPath));
    return found == newKeyPaths_.end() ? nullptr : at(found->second);
}

}  // namespace Tool
