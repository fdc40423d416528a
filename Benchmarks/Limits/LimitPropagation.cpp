// SPDX-License-Identifier: MIT
// The lower bound of "set to onChange": a bare file replacement and a bare watch.
#include "Limits/FileReplacement.h"
#include "Measures/Propagation.h"
#include "Workload/FileContents.h"

namespace {

void listenForChanges(const std::filesystem::path& folder) {
    watchFolderBarely(folder, Measures::printReady, Measures::printTimeOfChange);
}

void writeChanges(const std::filesystem::path& folder) {
    const std::string bytes = Workload::contentsOf(folder / "files" / "XMLReading");
    Measures::changeOnRequest(
        [&](std::int64_t /*number*/) { replaceFileBarely(folder / "saved", bytes); }, [] {});
}

}  // namespace

int main(int argc, char** argv) {
    return Measures::propagation(argc, argv, {listenForChanges, writeChanges});
}
