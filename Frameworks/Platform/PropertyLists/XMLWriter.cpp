// SPDX-License-Identifier: MIT
#include "Platform/PropertyLists/XMLWriter.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/PropertyLists/Limits.h"
#include "Platform/PropertyLists/Scalars.h"
#include "Platform/PropertyLists/TextBuilder.h"
#include "Platform/PropertyLists/TreeWalk.h"
#include "Platform/PropertyLists/XMLText.h"

namespace QRVPlatform::PropertyLists {
namespace {

constexpr std::string_view header =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr std::string_view footer = "</plist>\n";

// Every tree that can be read fits into a file that can be read. A byte of text takes at most
// "&#127;", and a value at most what data of one byte under a key takes.
constexpr std::size_t longestByte = 6;
constexpr std::size_t longestValue = 128;
static_assert(header.size() + footer.size() + maximumValues * longestValue +
                  maximumContents * longestByte <=
              maximumSize);

class XMLWriter {
  public:
    /// `outerLevels` is the number of containers around the root.
    explicit XMLWriter(const PropertyListValue& root, std::size_t outerLevels = 0)
        : walk_(root), outerLevels_(outerLevels) {}

    std::string write();
    /// The root must be a dictionary.
    std::string writeEntries();

  private:
    using Kind = PropertyListValue::Kind;

    [[noreturn]] void fail(std::string_view message) const {
        throw WriteFailure{std::string(message), walk_.keyPath()};
    }
    [[nodiscard]] std::size_t level() const { return outerLevels_ + walk_.level(); }
    void indent() { text_.appendTabs(std::min(level(), deepestIndentation)); }
    void countContents(std::size_t bytes) {
        contents_ += bytes;
        if (contents_ > maximumContents) fail(tooMuchContents());
    }
    void characters(std::string_view characters, std::string_view what);

    void lines(bool areEntries);
    void key(std::string_view key);
    void value(const PropertyListValue& value);
    void container(Kind kind);
    void data(std::string_view bytes);
    void date(NSDate date);

    TextBuilder text_;
    TreeWalk walk_;
    const std::size_t outerLevels_;
    std::size_t values_ = 0;
    std::size_t contents_ = 0;
};

std::string XMLWriter::write() {
    text_.append(header);
    lines(false);
    text_.append(footer);
    return text_.take();
}

std::string XMLWriter::writeEntries() {
    walk_.next();
    if (walk_.enter()) lines(true);
    return text_.take();
}

/// Up to the end of the tree, or to that of the entries of the root.
void XMLWriter::lines(bool areEntries) {
    for (;;) {
        const TreeWalk::Step step = walk_.next();
        if (step == TreeWalk::Step::EndOfTree || (areEntries && walk_.level() == 0)) return;
        if (step == TreeWalk::Step::Value && walk_.hasKey()) key(walk_.key());
        indent();
        if (step == TreeWalk::Step::Value)
            value(walk_.value());
        else if (step == TreeWalk::Step::EndOfDictionary)
            text_.append("</dict>\n");
        else
            text_.append("</array>\n");
    }
}

void XMLWriter::characters(std::string_view characters, std::string_view what) {
    countContents(characters.size());
    if (!appendXMLText(text_, characters)) fail(std::string(what) + " is not valid UTF-8");
}

void XMLWriter::key(std::string_view key) {
    indent();
    text_.append("<key>");
    characters(key, "a key");
    text_.append("</key>\n");
}

void XMLWriter::value(const PropertyListValue& value) {
    if (++values_ > maximumValues) fail(tooManyValues());
    switch (value.kind()) {
        case Kind::Boolean:
            if (value.boolValue())
                text_.append("<true/>\n");
            else
                text_.append("<false/>\n");
            break;
        case Kind::Integer:
            text_.append("<integer>");
            appendInteger(text_, value);
            text_.append("</integer>\n");
            break;
        case Kind::Real:
            text_.append("<real>");
            appendReal(text_, value.doubleValue());
            text_.append("</real>\n");
            break;
        case Kind::String:
            text_.append("<string>");
            characters(value.stringView(), "a string");
            text_.append("</string>\n");
            break;
        case Kind::Date:
            date(value.date());
            break;
        case Kind::Data: {
            const NSData bytes = value.data();
            data(bytes.view());
            break;
        }
        case Kind::Array:
        case Kind::Dictionary:
            container(value.kind());
            break;
        case Kind::Null:
            fail("there is no value to store");
        case Kind::NullMarker:
            fail("the null marker cannot be stored");
        case Kind::Color:
            fail("a colour cannot be stored");
    }
}

void XMLWriter::date(NSDate date) {
    if (const std::string fault = faultOf(date); !fault.empty()) fail(fault);
    text_.append("<date>");
    appendDate(text_, date);
    text_.append("</date>\n");
}

void XMLWriter::container(Kind kind) {
    if (level() >= maximumLevels) fail(tooManyLevels());
    const bool hasContents = walk_.enter();
    if (kind == Kind::Dictionary)
        text_.append(hasContents ? std::string_view("<dict>\n") : "<dict/>\n");
    else
        text_.append(hasContents ? std::string_view("<array>\n") : "<array/>\n");
}

void XMLWriter::data(std::string_view bytes) {
    constexpr std::size_t lineWidth = 76;
    constexpr std::size_t tabWidth = 8;
    constexpr std::size_t narrowest = 16;
    const std::size_t indentation = std::min(level() * tabWidth, lineWidth - narrowest);
    const std::size_t bytesPerLine = (lineWidth - indentation) / 4 * 3;
    countContents(bytes.size());
    text_.append("<data>\n");
    for (std::size_t position = 0; position < bytes.size(); position += bytesPerLine) {
        indent();
        appendBase64(text_, bytes.substr(position, bytesPerLine));
        text_.append("\n");
    }
    indent();
    text_.append("</data>\n");
}

}  // namespace

std::string writeXML(const PropertyListValue& value) {
    return XMLWriter(value).write();
}

std::string writeXMLEntries(const NSDictionary& entries, std::size_t level) {
    const PropertyListValue root = entries;
    return XMLWriter(root, level - 1).writeEntries();
}

}  // namespace QRVPlatform::PropertyLists
