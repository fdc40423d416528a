// SPDX-License-Identifier: MIT
#include "Platform/Presenters/RouteSteps.h"

#include <utility>

#include "Platform/Files/FilePaths.h"
#include "Platform/Files/Files.h"

namespace QRVPlatform {

namespace {

/// Puts the names of `path` on top, the first one topmost.
void pushNames(std::vector<std::string>& stack, const std::string& path) {
    std::size_t end = path.size();
    for (;;) {
        while (end > 0 && path[end - 1] == '/') --end;
        if (end == 0) return;
        const std::size_t slash = path.rfind('/', end - 1);
        const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
        std::string name = path.substr(start, end - start);
        if (name != ".") stack.push_back(std::move(name));
        end = start;
    }
}

std::string joined(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

}  // namespace

std::vector<RouteStep> stepsToFile(const std::string& path) {
    std::vector<RouteStep> steps;
    std::vector<std::string> names;
    pushNames(names, path);
    const std::string root = "/";
    std::string folder = root;
    for (int links = 0; !names.empty() && links <= maximumSymbolicLinks;) {
        const std::string name = std::move(names.back());
        names.pop_back();
        if (name == "..") {
            folder = FilePaths::folderOf(folder);
            continue;
        }
        std::string item = joined(folder, name);
        if (const auto target = FilePaths::linkTarget(item)) {
            steps.push_back({folder, name, false});
            pushNames(names, *target);
            if (target->starts_with('/')) folder = root;
            ++links;
            continue;
        }
        steps.push_back({folder, name, names.empty()});
        if (!FilePaths::isFolder(item)) break;
        folder = std::move(item);
    }
    return steps;
}

}  // namespace QRVPlatform
