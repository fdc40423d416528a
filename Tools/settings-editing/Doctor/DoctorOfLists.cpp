// SPDX-License-Identifier: MIT
// Whether the lists of known settings that applications have installed can be understood.

#include <string>

#include "Doctor/Doctor.h"
#include "Settings/KnownLists.h"

namespace Tool {

void examineLists(Diagnosis& diagnosis) {
    const KnownLists lists = KnownLists::read();
    // Notes, because the settings work without any list.
    for (const auto& [file, reason] : lists.remarks()) {
        std::string message = "a list of settings has a fault: ";
        message.append(reason).append(", ").append(file);
        diagnosis.findings.push_back(
            {Finding::Level::Note, message,
             "tell whoever made the list; qrvsettings(5) has the form of one"});
    }
}

}  // namespace Tool
