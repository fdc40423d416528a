// SPDX-License-Identifier: MIT
#include "Parser/Help.h"

#include <algorithm>
#include <string_view>

#include "Process/ExitCode.h"
#include "Text/WrappedText.h"

namespace Tool {
namespace {

constexpr std::size_t lineWidth = 80;
constexpr std::size_t farthestColumn = 24;

struct Row {
    std::string name;
    std::string description;
};

std::string section(const std::string& title, const std::vector<Row>& rows) {
    if (rows.empty()) return {};
    std::size_t column = 0;
    for (const Row& row : rows) column = std::max(column, row.name.size() + 4);
    column = std::min(column, farthestColumn);
    std::string text = "\n" + title + ":\n";
    for (const Row& row : rows) {
        const std::string start = "  " + row.name;
        const bool fits = start.size() + 2 <= column;
        const std::string description = wrapped(row.description, column, lineWidth);
        text += start;
        if (!fits) text += '\n';
        text.append(description, fits ? start.size() : 0);
    }
    return text;
}

std::string placeOf(const Option& argument) {
    const std::string name = argument.name + (argument.isRepeated ? "..." : "");
    return argument.isRequired ? name : "[" + name + "]";
}

std::string descriptionOf(const Option& option) {
    std::string text = option.description;
    if (!option.byDefault.empty()) text += "; " + option.byDefault + " without this option";
    if (!option.withoutValue.empty())
        text += "; " + option.withoutValue + " without " + option.valueName;
    return text;
}

std::string nameWithValue(const Option& option) {
    if (option.takes == Takes::Nothing) return option.name;
    const std::string& value = option.valueName;
    return option.name + " " + (option.withoutValue.empty() ? value : "[" + value + "]");
}

std::vector<Row> rowsOfArguments(const OptionList& options) {
    std::vector<Row> rows;
    for (const Option& option : options)
        if (option.isArgument()) rows.push_back({placeOf(option), option.description});
    return rows;
}

std::vector<Row> rowsOfOptions(const OptionList& options, bool isProgram) {
    std::vector<Row> rows = {{"-h, --help", "Print this"}};
    if (isProgram) rows.push_back({"--version", "Print the version"});
    for (const Option& option : options)
        if (!option.isArgument()) rows.push_back({nameWithValue(option), descriptionOf(option)});
    return rows;
}

std::vector<Row> rowsOfParts(const Command& command) {
    std::vector<Row> rows;
    rows.reserve(command.parts.size());
    for (const Command& part : command.parts)
        rows.push_back({std::string(part.name), std::string(part.summary)});
    return rows;
}

std::vector<Row> rowsOfExitCodes() {
    std::vector<Row> rows;
    rows.reserve(exitCodes.size());
    for (const auto& [code, meaning] : exitCodes)
        rows.push_back({std::to_string(static_cast<int>(code)), std::string(meaning)});
    return rows;
}

/// Paragraphs of a footer, with lines of their own where they are lists or examples.
std::string paragraphs(std::string_view footer) {
    constexpr std::string_view border = "\n\n";
    std::string text;
    while (!footer.empty()) {
        std::string paragraph(footer.substr(0, footer.find(border)));
        footer.remove_prefix(std::min(paragraph.size() + border.size(), footer.size()));
        const bool hasOwnLines = paragraph.starts_with("  ") || paragraph.starts_with("Example: ");
        if (!hasOwnLines) std::replace(paragraph.begin(), paragraph.end(), '\n', ' ');
        text += "\n" + (hasOwnLines ? paragraph + "\n" : wrapped(paragraph, 0, lineWidth));
    }
    return text;
}

}  // namespace

std::string nameOf(const std::vector<const Command*>& path) {
    std::string name;
    for (const Command* const command : path)
        name.append(name.empty() ? "" : " ").append(command->name);
    return name;
}

std::string usageOf(const std::vector<const Command*>& path, const OptionList& options) {
    std::string usage = nameOf(path) + " [OPTION...]";
    if (path.back()->configure == nullptr) return usage + " COMMAND [ARGUMENT...]";
    for (const Option& option : options)
        if (option.isArgument()) usage += " " + placeOf(option);
    return usage;
}

std::string helpOf(const std::vector<const Command*>& path, const OptionList& options) {
    const Command& command = *path.back();
    const bool isProgram = path.size() == 1;
    std::string help = std::string(command.summary) + "\n\nUsage: " + usageOf(path, options) + "\n";
    help += section("Arguments", rowsOfArguments(options));
    help += section("Commands", rowsOfParts(command));
    help += section("Options", rowsOfOptions(options, isProgram));
    if (isProgram) help += section("Exit codes", rowsOfExitCodes());
    return help + paragraphs(command.footer);
}

}  // namespace Tool
