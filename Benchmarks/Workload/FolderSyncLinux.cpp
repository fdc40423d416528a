// SPDX-License-Identifier: MIT
#include "Workload/FolderSync.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace Workload {

void syncFolder(const std::filesystem::path& folder) {
    const int descriptor = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0 || fsync(descriptor) != 0) {
        std::cerr << "cannot sync " << folder << '\n';
        std::exit(EXIT_FAILURE);
    }
    close(descriptor);
}

}  // namespace Workload
