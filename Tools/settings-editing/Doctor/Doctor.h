// SPDX-License-Identifier: MIT
#pragma once

// The examination of a settings file: facts, and findings with advice.

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"

namespace Tool {

struct Finding {
    enum class Level {
        Note,     ///< for information; no action is needed
        Warning,  ///< a person should look at it
        Error     ///< the settings cannot be read, or not be saved
    };
    /// What a program that watches the file sees without an examination.
    enum class About { Other, Missing, Unreadable, Damaged, NotSavable, Preparation };
    Level level;
    std::string message;
    std::string advice;     ///< what to do, with the command for it if there is one
    std::string keyPath{};  ///< as it is stored, of the setting concerned, if one is
    About about = About::Other;
};

/// "note", "warning" or "error".
std::string levelWord(Finding::Level level);
/// The command for a shell that an advice ends with or names first; empty when there is none that
/// can be run as it stands.
std::string commandOfAdvice(const std::string& advice);

/// @name Findings from one process to another, on one line without its end
/// @{
std::string lineOf(const std::vector<Finding>& findings);
/// Throws Failure (WrongValue).
std::vector<Finding> findingsFromLine(std::string_view line);
/// @}

/// `value` is for programs, `text` for people.
struct ExaminedFact {
    std::string name;
    PropertyListValue value;
    std::string text;
};

struct Diagnosis {
    std::vector<ExaminedFact> facts;
    std::vector<Finding> findings;
};

/// Examines everything below. For a process that has not used the store before, and ends
/// afterwards.
Diagnosis diagnosisOfSettings();

/// Examines the settings file and its surroundings. What the file holds becomes the stored tree.
/// Returns that tree; null when it cannot be read.
NSDictionary examineFile(Diagnosis& diagnosis);

/// Examines the machine, as far as the settings depend on it.
void examineMachine(Diagnosis& diagnosis, const NSDictionary& settings);

/// Examines the settings as the application will read them. Prepares the store.
void examineSettings(Diagnosis& diagnosis, const NSDictionary& settings);

/// Examines the lists of settings that applications have installed.
void examineLists(Diagnosis& diagnosis);

}  // namespace Tool
