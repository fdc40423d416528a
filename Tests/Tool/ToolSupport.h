// SPDX-License-Identifier: MIT
#pragma once

// The tool as another process, and the files around it.

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ToolSupport {

struct Outcome {
    int exitCode = -1;   ///< 128 and the signal when one ended it
    std::string output;  ///< standard output
    std::string errors;  ///< standard error
};

struct Surroundings {
    std::string input;  ///< standard input
    /// Runs in the new process, after its standard streams are in place.
    std::function<void()> prepare;
};

/// The tool in a process that goes on meanwhile; it is killed at the end if it still runs, and ends
/// after a minute at the latest.
class RunningTool {
  public:
    explicit RunningTool(const std::vector<std::string>& arguments,
                         const Surroundings& surroundings = {});
    RunningTool(const std::string& program, const std::vector<std::string>& arguments,
                const Surroundings& surroundings);
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;
    ~RunningTool();

    /// What it has printed so far.
    [[nodiscard]] std::string output() const;
    [[nodiscard]] std::string errors() const;
    void send(int signal) const;
    /// `finish` does not wait then.
    [[nodiscard]] bool hasEnded() const;
    /// Waits for its end.
    Outcome finish();

  private:
    struct Streams;
    std::unique_ptr<Streams> streams_;
    int child_ = -1;
};

/// Runs the tool to its end, which comes after a minute at the latest.
Outcome run(const std::vector<std::string>& arguments, const Surroundings& surroundings = {});
Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const Surroundings& surroundings = {});

/// Lines of a shell that name the tool as a person does; they end at the first that fails.
Outcome runShell(const std::string& lines);

/// Where the tool of this test keeps its settings.
std::filesystem::path configurationFolder();
std::filesystem::path settingsFile();

std::string contentsOf(const std::filesystem::path& path);
void writeFile(const std::filesystem::path& path, std::string_view bytes);
void writeSettings(std::string_view bytes);

/// An XML property list with these contents of its root dictionary.
std::string propertyList(std::string_view entries);

/// What the settings file holds as a line of JSON, without the record of the machine and what else
/// a start-up leaves in a file where nothing was set before. Those that differ from that are shown.
std::string storedSettings();

/// All there is below a folder: kind, times, and contents by path.
std::map<std::string, std::string> snapshot(const std::filesystem::path& folder);

}  // namespace ToolSupport
