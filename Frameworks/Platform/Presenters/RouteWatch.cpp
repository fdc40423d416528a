// SPDX-License-Identifier: MIT
#include "Platform/Presenters/RouteWatch.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "Platform/Files/FilePaths.h"
#include "Platform/Files/Files.h"
#include "Platform/Presenters/RouteSteps.h"

namespace QRVPlatform {

namespace {

using Interest = FolderWatch::Interest;
using Route = std::vector<RouteWatch::Step>;

struct Attempt {
    Route route;
    std::string filePath;
    std::error_code error;  ///< of a folder that counts and is not watched
    bool isStale = false;   ///< a folder was gone before it could be watched
};

bool isGone(std::error_code error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

/// A folder that may be searched but not read may not be watched. That is usual for folders far up,
/// and no reason to poll; for the last one it is.
bool isTolerable(std::error_code error, bool isLast) {
    return !isLast && error == std::errc::permission_denied;
}

Attempt watchedRoute(const std::string& path, FolderWatch& folders) {
    Attempt attempt;
    const std::vector<RouteStep> steps = stepsToFile(path);
    for (const RouteStep& step : steps) {
        const auto [number, error] =
            folders.add(step.folder, step.isFile ? Interest::NamesAndContents : Interest::Names);
        if (isGone(error)) attempt.isStale = true;
        if (error && !isTolerable(error, &step == &steps.back())) attempt.error = error;
        attempt.route.push_back({number, step.name, step.isFile});
        if (step.isFile) attempt.filePath = step.folder + "/" + step.name;
    }
    return attempt;
}

/// The names beside the file that come and go with every save.
bool isOfSaving(std::string_view name, std::string_view fileName) {
    const FilesBeside beside = filesBeside(std::string(fileName));
    return name == beside.temporary || name == beside.lock;
}

}  // namespace

RouteWatch::RouteWatch(std::string absolutePath) : path_(std::move(absolutePath)) {}

// A folder may be replaced between finding and watching it. But when the same route is found a
// second time, it was watched during all of that time, so that every change has made an event.
std::error_code RouteWatch::arm(FolderWatch& folders) {
    constexpr int mostAttempts = 100;
    for (int attempts = 0; attempts < mostAttempts; ++attempts) {
        Attempt attempt = watchedRoute(path_, folders);
        // While its folder is watched for less, a link may be made in the file's place unnoticed.
        const bool isStable = !attempt.isStale && !isNarrow_ && attempt.route == route_;
        releaseFolders(folders, std::move(attempt.route));
        filePath_ = std::move(attempt.filePath);
        if (!isStable) continue;
        watchFile(folders);
        return attempt.error;
    }
    watchFile(folders);
    return make_error_code(std::errc::resource_unavailable_try_again);
}

void RouteWatch::releaseFolders(FolderWatch& folders, Route next) {
    const Interest ofFile = isNarrow_ ? Interest::NamesInUse : Interest::NamesAndContents;
    for (const Step& step : route_)
        folders.release(step.watch, step.isFile ? ofFile : Interest::Names);
    route_ = std::move(next);
    isNarrow_ = false;
}

// The folder reports everything until the file is watched, so that no change is lost between.
void RouteWatch::watchFile(FolderWatch& folders) {
    const int former = std::exchange(fileWatch_, -1);
    if (!filePath_.empty() && route_.back().watch >= 0)
        fileWatch_ = folders.add(filePath_, Interest::Contents).number;
    folders.release(former, Interest::Contents);
    if (fileWatch_ < 0) return;
    // What has taken the file's place by now makes an event in its folder.
    const auto access = accessOfFileAtPath(filePath_);
    if (!access) folders.release(std::exchange(fileWatch_, -1), Interest::Contents);
    access_ = access.value_or(FileAccess{});
    if (!access || isNarrow_) return;
    folders.narrow(route_.back().watch, FilePaths::folderOf(filePath_), Interest::NamesAndContents,
                   Interest::NamesInUse);
    isNarrow_ = true;
}

bool RouteWatch::followFile(FolderWatch& folders) {
    watchFile(folders);
    return fileWatch_ >= 0 || !isNarrow_;
}

bool RouteWatch::hasAccessChanged() {
    const FileAccess before =
        std::exchange(access_, accessOfFileAtPath(filePath_).value_or(FileAccess{}));
    return access_ != before;
}

void RouteWatch::release(FolderWatch& folders) {
    releaseFolders(folders, {});
    folders.release(std::exchange(fileWatch_, -1), Interest::Contents);
}

RouteWatch::Meaning RouteWatch::meaningTo(const Step& step, const FolderWatch::Event& event) {
    if (step.watch != event.watch) return Meaning::Nothing;
    if (event.kind == FolderWatch::Kind::FolderLost) return Meaning::Route;
    if (step.name == event.name) return step.isFile ? Meaning::File : Meaning::Route;
    const bool isNeighbour = step.isFile && !isOfSaving(event.name, step.name);
    return isNeighbour ? Meaning::Neighbour : Meaning::Nothing;
}

RouteWatch::Meaning RouteWatch::meaningOf(const FolderWatch::Event& event) const {
    if (event.watch == fileWatch_ && fileWatch_ >= 0)
        return event.kind == FolderWatch::Kind::FolderLost ? Meaning::File : Meaning::Contents;
    Meaning meaning = Meaning::Nothing;
    for (const Step& step : route_) meaning = std::max(meaning, meaningTo(step, event));
    return meaning;
}

bool RouteWatch::fileHasBecomeALink() const {
    return fileWatch_ < 0 && !filePath_.empty() && FilePaths::linkTarget(filePath_).has_value();
}

}  // namespace QRVPlatform
