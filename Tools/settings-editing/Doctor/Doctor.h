// SPDX-License-Identifier: MIT
#pragma once

// What `doctor` looks at, and what it finds.

#include <string>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct Finding {
    enum class Level {
        Note,     ///< good to know; nobody needs to do anything
        Warning,  ///< a person should look at it
        Error     ///< the settings cannot be read, or not be saved
    };
    Level level;
    std::string message;
    std::string advice;     ///< what to do about it, a command where one does it
    std::string keyPath{};  ///< of the setting concerned, if one is
};

/// `value` is for programs, and null where there is nothing to tell; `text` for people.
struct ExaminedFact {
    std::string name;
    PropertyListValue value;
    std::string text;
};

struct Diagnosis {
    std::vector<ExaminedFact> facts;
    std::vector<Finding> findings;
};

/// The settings file and what lies around it. What it holds becomes the stored tree. Returns that
/// tree; null when it cannot be read.
NSDictionary examineFile(Diagnosis& diagnosis);

/// What the file holds, as the application is going to take it. Starts up.
void examineSettings(Diagnosis& diagnosis, const NSDictionary& settings);

}  // namespace Tool
