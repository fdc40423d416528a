// SPDX-License-Identifier: MIT
#include "Doctor/Owners.h"

#include <cstdlib>
#include <filesystem>

#include "Settings/FileFacts.h"
#include "Text/ShellCommands.h"

namespace Tool {
namespace {

std::string folderOf(const std::string& path) {
    return std::filesystem::path(path).parent_path().string();
}

bool mayReplace(const std::string& folder) {
    const PathFacts facts = factsOfPath(folder);
    return isWritableFolder(folder) &&
           ((facts.mode & PathFacts::sticky) == 0 || facts.isOwnedByUser);
}

std::string asRoot(const std::string& command) {
    return "as root: " + command;
}

std::string takeOver(const std::string& path) {
    const std::string own = shellWord(path + ".own");
    return "take it over: install -m 600 " + shellWord(path) + " " + own + " && mv -f " + own +
           " " + shellWord(path);
}

bool isBelowHome(const std::string& folder) {
    const char* const home = std::getenv("HOME");
    return home != nullptr && *home == '/' && folder.starts_with(std::string(home) + "/");
}

}  // namespace

std::optional<std::string> faultOfOwner(const std::string& path) {
    const PathFacts facts = factsOfPath(path);
    const PathFacts folder = factsOfPath(folderOf(path));
    if (facts.kind == PathFacts::Kind::Missing) return std::nullopt;
    if (!isRoot() && !facts.isOwnedByUser) return "belongs to another user: " + facts.owner;
    if (isRoot() && facts.owner != folder.owner)
        return "belongs to another user: " + facts.owner + ", and its folder to " + folder.owner;
    return std::nullopt;
}

std::string adviceForOwner(const std::string& path, bool isLockFile) {
    const std::string folder = folderOf(path);
    if (isRoot())
        return "give it to the owner of the folder: chown --reference=" + shellWord(folder) + " " +
               shellWord(path);
    if (isLockFile && mayReplace(folder))
        return "remove it; the next save creates another: rm -f " + shellWord(path);
    if (!isLockFile && mayReplace(folder) && isReadableFile(path)) return takeOver(path);
    return asRoot("chown " + nameOfThisUser() + " " + shellWord(path));
}

std::optional<FolderOfAnother> folderOfAnother(const std::string& folder) {
    const std::string owner = factsOfPath(folder).owner;
    std::string path = folder;
    while (path != folderOf(path) && factsOfPath(folderOf(path)).owner == owner)
        path = folderOf(path);
    const std::string above = folderOf(path);
    if (above == path || factsOfPath(above).isOwnedByRoot) return std::nullopt;
    return FolderOfAnother{path, above};
}

std::string adviceToWriteInto(const std::string& folder) {
    if (factsOfPath(folder).isOwnedByUser)
        return "make it writable: chmod u+wx " + shellWord(folder);
    if (isBelowHome(folder))
        return asRoot("chown -R " + nameOfThisUser() + " " + shellWord(folder));
    return "set XDG_CONFIG_HOME to a folder of this user";
}

}  // namespace Tool
