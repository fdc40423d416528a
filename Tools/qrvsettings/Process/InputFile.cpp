// SPDX-License-Identifier: MIT
#include "Process/InputFile.h"

#include <array>
#include <cstdio>

#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Process/Waiting.h"
#include "Reporting/Failure.h"

namespace Tool {

std::string standardInput() {
    constexpr std::size_t largest = NSPropertyListSerialization::maximumSize;
    const Waiting waiting([] { return "standard input"; });
    std::string text;
    std::array<char, 65536> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), stdin)) {
        text.append(buffer.data(), count);
        if (text.size() > largest)
            throw Failure(Fault::WrongValue, "more than 512 MiB, standard input");
    }
    if (std::ferror(stdin) != 0) throw Failure(Fault::WrongValue, "cannot be read, standard input");
    return text;
}

std::string contentsOfInput(const std::string& file) {
    if (file == "-") return standardInput();
    const QRVPlatform::FileContents contents =
        QRVPlatform::contentsOfFile(file, NSPropertyListSerialization::maximumSize);
    if (contents.error)
        throw Failure(Fault::WrongValue,
                      "cannot be read: " + contents.error.message() + ", " + file);
    return contents.bytes;
}

std::string nameOfInput(const std::string& file) {
    return file == "-" ? "standard input" : file;
}

}  // namespace Tool
