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
    using Interest = FolderWatch::Interest;
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

void releaseRoute(const Route& route, FolderWatch& folders) {
    for (const auto& step : route) folders.release(step.watch);
}

}  // namespace

RouteWatch::RouteWatch(std::string absolutePath) : path_(std::move(absolutePath)) {}

// A folder may be replaced between finding and watching it. But when the same route is found a
// second time, it was watched during all of that time, so that every change has made an event.
std::error_code RouteWatch::arm(FolderWatch& folders) {
    constexpr int mostAttempts = 100;
    for (int attempts = 0; attempts < mostAttempts; ++attempts) {
        Attempt attempt = watchedRoute(path_, folders);
        const bool isStable = !attempt.isStale && attempt.route == route_;
        releaseRoute(std::exchange(route_, std::move(attempt.route)), folders);
        filePath_ = std::move(attempt.filePath);
        if (isStable) return attempt.error;
    }
    return make_error_code(std::errc::resource_unavailable_try_again);
}

void RouteWatch::release(FolderWatch& folders) {
    releaseRoute(std::exchange(route_, {}), folders);
}

RouteWatch::Meaning RouteWatch::meaningTo(const Step& step, const FolderWatch::Event& event) const {
    if (step.watch != event.watch) return Meaning::Nothing;
    if (event.kind == FolderWatch::Kind::FolderLost) return Meaning::Route;
    if (step.name == event.name) return step.isFile ? Meaning::File : Meaning::Route;
    const bool isNeighbour = step.isFile && !isOfSaving(event.name, step.name);
    return isNeighbour ? Meaning::Neighbour : Meaning::Nothing;
}

RouteWatch::Meaning RouteWatch::meaningOf(const FolderWatch::Event& event) const {
    Meaning meaning = Meaning::Nothing;
    for (const Step& step : route_) meaning = std::max(meaning, meaningTo(step, event));
    return meaning;
}

bool RouteWatch::fileHasBecomeALink() const {
    return !filePath_.empty() && FilePaths::linkTarget(filePath_).has_value();
}

}  // namespace QRVPlatform
