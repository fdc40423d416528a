// SPDX-License-Identifier: MIT
#include "Process/InputFile.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Process/Waiting.h"
#include "Reporting/Failure.h"

namespace Tool {
namespace {

Failure unreadable(const std::string& name) {
    return {Fault::WrongValue,
            "cannot be read: " + std::generic_category().message(errno) + ", " + name};
}

// Not only a regular file: a shell hands over the output of a command as a pipe with a name.
std::string contentsOf(std::FILE* stream, const std::string& name) {
    constexpr std::size_t largest = NSPropertyListSerialization::maximumSize;
    std::string text;
    std::array<char, 65536> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), stream)) {
        text.append(buffer.data(), count);
        if (text.size() > largest) throw Failure(Fault::WrongValue, "more than 512 MiB, " + name);
    }
    if (std::ferror(stream) != 0) throw unreadable(name);
    return text;
}

}  // namespace

std::string standardInput() {
    const Waiting waiting([] { return "standard input"; });
    return contentsOf(stdin, nameOfInput("-"));
}

std::string contentsOfInput(const std::string& file) {
    if (file == "-") return standardInput();
    const Waiting waiting([&file] { return file; });
    const auto close = [](std::FILE* stream) { static_cast<void>(std::fclose(stream)); };
    const std::unique_ptr<std::FILE, decltype(close)> stream(std::fopen(file.c_str(), "rb"), close);
    if (stream == nullptr) throw unreadable(file);
    return contentsOf(stream.get(), file);
}

std::string nameOfInput(const std::string& file) {
    return file == "-" ? "standard input" : file;
}

}  // namespace Tool
