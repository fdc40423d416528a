// SPDX-License-Identifier: MIT
// Any stored text read as a colour gives what the model makes of it, and a colour that is written
// is read again in the precision of a float. The tool takes the same bytes as its arguments, a line
// each.

#include <array>
#include <cfloat>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "Fuzzing.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Text/ColorText.h"

using Fuzzing::require;

namespace {

constexpr const char* keyPath = "Color";

std::vector<std::string> piecesOf(std::string_view text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char character : text) {
        if (character == separator)
            pieces.emplace_back();
        else
            pieces.back() += character;
    }
    return pieces;
}

std::size_t digitsAt(const std::string& text, std::size_t position) {
    return std::min(text.find_first_not_of("0123456789", position), text.size()) - position;
}

/// The decimal number that a text begins with, by the C library, which gets only its digits.
float numberByModel(const std::string& text) {
    const std::size_t begin = std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    std::size_t end = begin;
    const auto isAt = [&](std::string_view characters) {
        return end < text.size() && characters.find(text[end]) != std::string_view::npos;
    };
    if (isAt("+-")) ++end;
    const std::size_t whole = digitsAt(text, end);
    end += whole;
    std::size_t fraction = 0;
    if (isAt(".")) {
        fraction = digitsAt(text, end + 1);
        if (whole + fraction > 0) end += 1 + fraction;
    }
    if (whole + fraction == 0) return 0;
    const std::size_t mantissa = end;
    if (isAt("eE")) {
        ++end;
        if (isAt("+-")) ++end;
        const std::size_t exponent = digitsAt(text, end);
        end = exponent == 0 ? mantissa : end + exponent;
    }
    return static_cast<float>(std::strtod(text.substr(begin, end - begin).c_str(), nullptr));
}

bool isSameColor(const NSColor& left, const NSColor& right) {
    return Fuzzing::isSameReal(left.redComponent, right.redComponent) &&
           Fuzzing::isSameReal(left.greenComponent, right.greenComponent) &&
           Fuzzing::isSameReal(left.blueComponent, right.blueComponent) &&
           Fuzzing::isSameReal(left.alphaComponent, right.alphaComponent);
}

std::string shown(const NSColor& color) {
    return std::to_string(color.redComponent) + " " + std::to_string(color.greenComponent) + " " +
           std::to_string(color.blueComponent) + " " + std::to_string(color.alphaComponent);
}

/// The engine looks for leaks whenever an input leaves something behind.
void forgetEverything() {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setCache(nullptr);
    store.setStorageCache(nullptr);
    store.batchLogChanges().removeAllObjects();
}

void becomeStoreOf(const NSDictionary& tree) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setCache(NSMutableDictionary());
    store.setStorageCache(tree.mutableCopy());
    QRVSettingsPrepareBatchSave();  // nothing is saved
}

void requireReadAsModel(std::string_view text) {
    becomeStoreOf({{keyPath, text}});
    const PropertyListValue color = QRVSettingsColorForKeyPath(keyPath);
    const std::vector<std::string> pieces = piecesOf(text, ' ');
    require(color.isColor() == (pieces.size() == 4), "four pieces are a colour", text);
    if (!color.isColor()) {
        require(color.isNull(), "no colour is null", text);
        return;
    }
    const NSColor expected =
        NSColor::colorWithSRGBRed(numberByModel(pieces[0]), numberByModel(pieces[1]),
                                  numberByModel(pieces[2]), numberByModel(pieces[3]));
    require(isSameColor(color.color(), expected), "components are the model's", text,
            shown(color.color()), shown(expected));
}

/// Reals that have no digits are written as words, which count as 0.
double afterStorage(double component) {
    return std::isfinite(component) ? static_cast<double>(static_cast<float>(component)) : 0;
}

void requireWrittenIsRead(const NSColor& color) {
    becomeStoreOf(NSDictionary());
    QRVSettingsSetColorForKeyPath(color, keyPath);
    const NSColor expected = NSColor::colorWithSRGBRed(
        afterStorage(color.redComponent), afterStorage(color.greenComponent),
        afterStorage(color.blueComponent), afterStorage(color.alphaComponent));
    const PropertyListValue read = QRVSettingsColorForKeyPath(keyPath);
    require(read.isColor() && isSameColor(read.color(), expected), "what was written is read",
            QRVSettingsStoredObjectForKeyPath(keyPath), shown(expected));
}

/// A NaN is not.
bool isWithinFloats(const NSColor& color) {
    for (const double component :
         {color.redComponent, color.greenComponent, color.blueComponent, color.alphaComponent})
        if (!(std::abs(component) <= FLT_MAX)) return false;
    return true;
}

NSColor asFloats(const NSColor& color) {
    const auto rounded = [](double component) {
        return static_cast<double>(static_cast<float>(component));
    };
    return {rounded(color.redComponent), rounded(color.greenComponent),
            rounded(color.blueComponent), rounded(color.alphaComponent)};
}

void requireTextsOfTheToolAreRead(const NSColor& color) {
    const std::string hexadecimal = Tool::hexadecimalColorText(color);
    require(hexadecimal.size() == 9, "eight digits", hexadecimal);
    require(Tool::hexadecimalColorText(Tool::colorFromTexts({hexadecimal})) == hexadecimal,
            "hexadecimal text is read", hexadecimal);
    require(Tool::swatch(color, true).ends_with("m  \x1b[0m"), "a swatch is two blanks");
    if (!isWithinFloats(color)) return;
    const std::string text = Tool::colorText(color);
    const NSColor read = asFloats(Tool::colorFromTexts(piecesOf(text, ' ')));
    require(isSameColor(read, asFloats(color)), "four numbers are read", text, shown(color));
}

void requireToolReadsOrTellsWhy(std::string_view bytes) {
    try {
        requireTextsOfTheToolAreRead(Tool::colorFromTexts(piecesOf(bytes, '\n')));
    } catch (const Tool::Failure& failure) {
        require(failure.fault() == Tool::Fault::WrongValue && *failure.what() != '\0',
                "a refusal says what", bytes);
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzzing::silenceLogs();
    const std::string_view bytes = Fuzzing::textOf(data, size);
    requireReadAsModel(bytes);
    requireToolReadsOrTellsWhy(bytes);
    Fuzzing::Input input(bytes);
    const auto component = [&input] { return std::bit_cast<double>(input.bits()); };
    const std::array components{component(), component(), component(), component()};
    const NSColor color{components[0], components[1], components[2], components[3]};
    requireWrittenIsRead(color);
    requireTextsOfTheToolAreRead(color);
    forgetEverything();
    return 0;
}
