// SPDX-License-Identifier: MIT
#include "Text/ColorText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "Reporting/Failure.h"
#include "Text/ScalarText.h"

namespace Tool {
namespace {

constexpr int largestByte = 255;

int scaled(double component, int largest) {
    const double inRange = std::isnan(component) ? 0 : std::clamp(component, 0.0, 1.0);
    return static_cast<int>(std::lround(inRange * largest));
}

[[noreturn]] void refuse(const std::string& text) {
    throw Failure(Fault::WrongValue, "neither R G B [A] nor #rrggbb[aa]: " + shortened(text));
}

double numberFromText(const std::string& text) {
    std::string_view digits = text;
    if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
    const std::optional<double> number =
        isDecimalNumber(digits) ? realFromText(digits) : std::nullopt;
    if (!number) throw Failure(Fault::WrongValue, "not a number: " + shortened(text));
    return *number;
}

double byteFromText(std::string_view digits) {
    int value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    return static_cast<double>(value) / largestByte;
}

NSColor colorFromHexadecimal(const std::string& text) {
    const std::string_view digits = std::string_view(text).substr(1);
    const bool isWellFormed =
        (digits.size() == 6 || digits.size() == 8) &&
        digits.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
    if (!isWellFormed) refuse(text);
    return NSColor::colorWithSRGBRed(
        byteFromText(digits.substr(0, 2)), byteFromText(digits.substr(2, 2)),
        byteFromText(digits.substr(4, 2)), digits.size() == 8 ? byteFromText(digits.substr(6)) : 1);
}

std::string floatText(double number) {
    std::array<char, 32> text{};
    const auto result =
        std::to_chars(text.data(), text.data() + text.size(), static_cast<float>(number));
    return {text.data(), result.ptr};
}

std::string hexadecimalByte(double component) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto byte = static_cast<unsigned>(scaled(component, largestByte));
    return {digits[byte >> 4U], digits[byte & 0xFU]};
}

std::string number(double component, int largest) {
    return std::to_string(scaled(component, largest));
}

}  // namespace

NSColor colorFromTexts(const std::vector<std::string>& texts) {
    if (texts.size() == 1 && texts[0].starts_with('#')) return colorFromHexadecimal(texts[0]);
    if (texts.size() < 3 || texts.size() > 4) {
        std::string all;
        for (const std::string& text : texts) all += (all.empty() ? "" : " ") + text;
        refuse(all);
    }
    return NSColor::colorWithSRGBRed(numberFromText(texts[0]), numberFromText(texts[1]),
                                     numberFromText(texts[2]),
                                     texts.size() == 4 ? numberFromText(texts[3]) : 1);
}

std::string colorText(const NSColor& color) {
    return floatText(color.redComponent) + " " + floatText(color.greenComponent) + " " +
           floatText(color.blueComponent) + " " + floatText(color.alphaComponent);
}

std::string hexadecimalColorText(const NSColor& color) {
    return "#" + hexadecimalByte(color.redComponent) + hexadecimalByte(color.greenComponent) +
           hexadecimalByte(color.blueComponent) + hexadecimalByte(color.alphaComponent);
}

std::string swatch(const NSColor& color, bool has24Bits) {
    constexpr int largestOfCube = 5;
    constexpr int startOfCube = 16;
    const int place = startOfCube + 36 * scaled(color.redComponent, largestOfCube) +
                      6 * scaled(color.greenComponent, largestOfCube) +
                      scaled(color.blueComponent, largestOfCube);
    const std::string ground = has24Bits ? "2;" + number(color.redComponent, largestByte) + ";" +
                                               number(color.greenComponent, largestByte) + ";" +
                                               number(color.blueComponent, largestByte)
                                         : "5;" + std::to_string(place);
    return "\x1b[48;" + ground + "m  \x1b[0m";
}

}  // namespace Tool
