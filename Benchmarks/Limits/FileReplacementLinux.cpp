// SPDX-License-Identifier: MIT
// Replaces a file and watches its folder, with the bare system calls.
#include "Limits/FileReplacement.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

/// Returns the result of a system call; ends the program when it is an error.
auto checked(auto result, const char* what) {
    if (result >= 0) return result;
    std::cerr << what << " failed\n";
    std::exit(EXIT_FAILURE);
}

void syncAndClose(int descriptor) {
    checked(fsync(descriptor), "fsync");
    close(descriptor);
}

}  // namespace

void replaceFileBarely(const std::filesystem::path& path, std::string_view bytes) {
    const std::string newPath = path.string() + ".new";
    const int file = checked(
        open(newPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR), "open");
    for (std::string_view rest = bytes; !rest.empty();)
        rest.remove_prefix(
            static_cast<std::size_t>(checked(write(file, rest.data(), rest.size()), "write")));
    syncAndClose(file);
    checked(rename(newPath.c_str(), path.c_str()), "rename");
    syncAndClose(
        checked(open(path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), "open"));
}

void watchFolderBarely(const std::filesystem::path& folder, const std::function<void()>& ready,
                       const std::function<void()>& changed) {
    const int notifications = checked(inotify_init1(IN_CLOEXEC), "inotify_init1");
    checked(inotify_add_watch(notifications, folder.c_str(), IN_MOVED_TO), "inotify_add_watch");
    ready();
    std::array<char, 4096> events{};
    while (true) {
        checked(::read(notifications, events.data(), events.size()), "read");
        changed();
    }
}
