// SPDX-License-Identifier: MIT
#include "Tool/ToolSupport.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace ToolSupport {
/// Files instead of pipes: nobody waits for anybody.
struct RunningTool::Streams {
    std::filesystem::path folder = std::filesystem::temp_directory_path() / "tool-streams-XXXXXX";
    Streams() {
        std::string name = folder.string();
        if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for streams");
        folder = name;
    }
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;
    ~Streams() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    [[nodiscard]] std::filesystem::path input() const { return folder / "input"; }
    [[nodiscard]] std::filesystem::path output() const { return folder / "output"; }
    [[nodiscard]] std::filesystem::path errors() const { return folder / "errors"; }
};

namespace {

constexpr int noProgram = 127;

/// What the start-up leaves where nothing was set before, but for the record of the machine.
constexpr const char* recordsOfAnEmptyFile = R"({
    "Combined": {"Menubar": {"Items": []}},
    "Migration": {"CombinedPowerItems": true, "Profiles": true},
    "Profiles": {
        "Available": {"identifier": "default"},
        "Settings": {"default": {
            "Battery": {"Menubar": {}}, "CPU": {"Menubar": {}},
            "Combined": {"Menubar": {"Items": []}}, "Disks": {"Menubar": {}},
            "Memory": {"Menubar": {}}, "Network": {"Menubar": {}}, "Sensors": {"Menubar": {}},
            "Time": {"Menubar": {}}, "Weather": {"Menubar": {}}}}}})";

void redirect(int number, const std::filesystem::path& path, int flags) {
    const int file = open(path.c_str(), flags, S_IRUSR | S_IWUSR);
    if (file < 0 || dup2(file, number) < 0) _exit(noProgram);
    close(file);
}

[[noreturn]] void become(const std::string& program, const std::vector<std::string>& arguments) {
    constexpr unsigned mostSeconds = 60;
    alarm(mostSeconds);
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    execv(program.c_str(), pointers.data());
    _exit(noProgram);
}

int exitCodeOf(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child) throw std::runtime_error("no child to wait for");
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string stateOf(const std::filesystem::path& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return "gone";
    std::ostringstream text;
    text << status.st_mode << ' ' << status.st_ino << ' ' << status.st_size << ' '
         << status.st_mtim.tv_sec << '.' << status.st_mtim.tv_nsec << ' ' << status.st_ctim.tv_sec
         << '.' << status.st_ctim.tv_nsec << ' ';
    if (S_ISREG(status.st_mode)) text << contentsOf(path);
    return text.str();
}

}  // namespace

RunningTool::RunningTool(const std::string& program, const std::vector<std::string>& arguments,
                         const Surroundings& surroundings)
    : streams_(std::make_unique<Streams>()) {
    writeFile(streams_->input(), surroundings.input);
    child_ = fork();
    if (child_ < 0) throw std::runtime_error("no child");
    if (child_ > 0) return;
    redirect(STDIN_FILENO, streams_->input(), O_RDONLY);
    redirect(STDOUT_FILENO, streams_->output(), O_WRONLY | O_CREAT | O_TRUNC);
    redirect(STDERR_FILENO, streams_->errors(), O_WRONLY | O_CREAT | O_TRUNC);
    if (surroundings.prepare) surroundings.prepare();
    become(program, arguments);
}

RunningTool::RunningTool(const std::vector<std::string>& arguments,
                         const Surroundings& surroundings)
    : RunningTool(QRV_TOOL, arguments, surroundings) {}

RunningTool::~RunningTool() {
    if (child_ < 0) return;
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
}

std::string RunningTool::output() const {
    return contentsOf(streams_->output());
}

std::string RunningTool::errors() const {
    return contentsOf(streams_->errors());
}

void RunningTool::send(int signal) const {
    kill(child_, signal);
}

bool RunningTool::hasEnded() const {
    siginfo_t ended{};
    return waitid(P_PID, static_cast<id_t>(child_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == child_;
}

Outcome RunningTool::finish() {
    Outcome outcome;
    outcome.exitCode = exitCodeOf(std::exchange(child_, -1));
    outcome.output = output();
    outcome.errors = errors();
    return outcome;
}

Outcome runProgram(const std::string& program, const std::vector<std::string>& arguments,
                   const Surroundings& surroundings) {
    return RunningTool(program, arguments, surroundings).finish();
}

Outcome run(const std::vector<std::string>& arguments, const Surroundings& surroundings) {
    return runProgram(QRV_TOOL, arguments, surroundings);
}

Outcome runShell(const std::string& lines) {
    const std::string folder = std::filesystem::path(QRV_TOOL).parent_path().string();
    return runProgram("/bin/sh", {"-e", "-c", "PATH=" + folder + ":$PATH\n" + lines});
}

std::filesystem::path configurationFolder() {
    return std::getenv("XDG_CONFIG_HOME");
}

std::filesystem::path settingsFile() {
    std::string path = run({"path"}).output;
    if (!path.ends_with('\n')) throw std::runtime_error("the tool tells no path");
    path.pop_back();
    return path;
}

std::string contentsOf(const std::filesystem::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

void writeFile(const std::filesystem::path& path, std::string_view bytes) {
    std::filesystem::create_directories(std::filesystem::absolute(path).parent_path());
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void writeSettings(std::string_view bytes) {
    writeFile(settingsFile(), bytes);
}

std::string propertyList(std::string_view entries) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>" +
           std::string(entries) + "</dict>\n</plist>\n";
}

std::string storedSettings() {
    static const nlohmann::json ofAnEmptyFile = nlohmann::json::parse(recordsOfAnEmptyFile);
    nlohmann::json settings = nlohmann::json::parse(run({"export", "--json"}).output);
    settings.erase("Device");
    for (const auto& [key, value] : ofAnEmptyFile.items())
        if (settings.contains(key) && settings[key] == value) settings.erase(key);
    return settings.dump();
}

std::map<std::string, std::string> snapshot(const std::filesystem::path& folder) {
    std::map<std::string, std::string> states = {{folder.string(), stateOf(folder)}};
    if (!std::filesystem::exists(folder)) return states;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        states[entry.path().string()] = stateOf(entry.path());
    return states;
}

}  // namespace ToolSupport
