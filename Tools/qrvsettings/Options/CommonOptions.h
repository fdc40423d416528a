// SPDX-License-Identifier: MIT
#pragma once

// Arguments and options that several commands take.

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "Options/Option.h"
#include "Settings/SettingsFileCondition.h"

namespace Tool {

/// Required.
Option keyPathArgument(std::string& keyPath);
/// Stays empty where none is given.
Option prefixArgument(std::optional<std::string>& prefix);

/// The names of the layers, strongest first; "effective" unless another one is named.
const std::vector<std::string>& layerNames();
Option layerOption(std::string& layer);
/// Stays empty where no profile is named.
Option profileOption(std::string& profile);

/// `--records`: what the store keeps for itself too.
Option recordsFlag(bool& records);

Option jsonFlag(bool& json, const std::string& description);

/// How a command prints changes: as lines for people, `--json` or `--as-commands`.
enum class Form { Lines, JSON, Commands };
Option jsonForm(Form& form, const std::string& description);
Option commandsForm(Form& form, const std::string& description);

/// `--timeout SECONDS`, which stays empty without it.
Option timeoutOption(std::optional<std::chrono::milliseconds>& timeout,
                     const std::string& description);

/// An option with a whole number above 0, which stays empty without it.
Option countOption(const std::string& name, std::optional<std::size_t>& count,
                   const std::string& description);

/// `--since TIME`, a text that `pastTimeFromText` takes; stays empty without it.
Option sinceOption(std::optional<std::string>& since, const std::string& description);

/// The options of a command, and those that every command takes that writes.
OptionList withWritingOptions(OptionList options, WritingOptions& writing);
/// Opens the settings file for such a command, which takes part in the history; see
/// `openToWrite`.
void openToWrite(const WritingOptions& writing);

}  // namespace Tool
