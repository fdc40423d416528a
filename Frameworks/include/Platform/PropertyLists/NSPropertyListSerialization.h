// SPDX-License-Identifier: MIT
#pragma once

/// Property lists as files: bytes to values and back.
///
///     const auto read = NSPropertyListSerialization::propertyListWithData(bytes);
///     if (read.error) NSLog(read.error->description());
///
/// All functions depend on their arguments alone: any thread may call them at any time, and the
/// locale plays no part. The depth of a tree costs no stack: 64 KiB are enough for all of them. Bad
/// input never throws (only running out of memory does).

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"

enum class PropertyListFormat { OldStyle, XML, Binary };

/// Why a property list could not be read or written, and where.
struct QRV_EXPORT PropertyListError {
    enum class Place {
        Byte,           ///< reading the binary format: at `offset`
        LineAndColumn,  ///< reading a text format: at `line` and `column`
        KeyPath,        ///< a value, as when it is written: at `keyPath`
    };

    std::string message;
    Place place = Place::Byte;
    /// Bytes from the start of the input; for text in UTF-16 or UTF-32, of the same text in UTF-8.
    std::size_t offset = 0;
    /// Counted from 1, the column in characters; 0 where there are no lines.
    std::size_t line = 0;
    std::size_t column = 0;
    /// Keys joined by ".", array elements as "[index]": `Menu.Items[2].Name`. Empty for the root.
    std::string keyPath;

    /// One line for people: `unknown element <foo>, line 3, column 5`. Control characters in
    /// quoted text are shown as `\x0A`.
    [[nodiscard]] std::string description() const;
};

struct PropertyListReadResult {
    /// Null exactly when there is an error. The root may be of any kind that a property list holds.
    PropertyListValue value;
    /// The format that was detected, also when the bytes could not be read.
    PropertyListFormat format = PropertyListFormat::OldStyle;
    std::optional<PropertyListError> error;
    /// The value was read from old-style lines without outer braces. They are complete after each
    /// `;`, so a file that was cut off there looks whole.
    bool mayBeCutOff = false;
};

struct PropertyListWriteResult {
    /// The whole file; empty when there is an error.
    std::string bytes;
    std::optional<PropertyListError> error;
};

class QRV_EXPORT NSPropertyListSerialization {
  public:
    /// Levels of nested containers; the root is the first.
    static constexpr std::size_t maximumLevels = 512;
    /// Size of a file in bytes. Every tree within the other limits fits, even as XML with all of
    /// its text escaped.
    static constexpr std::size_t maximumSize = std::size_t{512} * 1024 * 1024;
    /// Number of values, with the containers and without the keys.
    static constexpr std::size_t maximumValues = 1'000'000;
    /// Bytes of all strings and keys, in UTF-8, and of all data.
    static constexpr std::size_t maximumContents = std::size_t{64} * 1024 * 1024;
    /// Seconds of a date before or after 2001: 146 billion years.
    static constexpr double maximumDateInterval = 0x1p62;

    /// Reads a property list and detects its format.
    ///
    /// - Binary: version 0 with any second digit. Strings of one byte a character may hold UTF-8.
    ///   Dates keep their fractions; one that is not finite is refused. Null, fill, sets and UIDs
    ///   are refused.
    /// - XML in UTF-8, UTF-16 or UTF-32, with or without `<plist>` around the one value. Unknown
    ///   elements and entities, an internal document type subset and text between elements are
    ///   refused; attributes are ignored. Text is kept as it stands, white space included. Raw
    ///   control characters are accepted, but U+0000 only behind the value, where nothing but
    ///   U+0000 and white space may follow it. White space may follow the sign of an integer. A
    ///   real that is too large or too small for a double is refused. Dates are
    ///   `YYYY-MM-DDThh:mm:ssZ`, with or without a decimal fraction of seconds. A year has four
    ///   digits or more, and may have a minus. The other fields roll over: 2024-01-32 is
    ///   2024-02-01.
    /// - Old-style text in UTF-8, or UTF-16 or UTF-32 with a byte-order mark: `{ key = value; }`
    ///   (the last `;` before `}` may be missing), `{ key; }` (the key is its own value),
    ///   `( a, b )`, `<0fbd 77>`, quoted strings, and strings of ASCII letters, digits and
    ///   `_ $ / : . - +` unquoted; `key = value;` lines without outer braces. In quoted strings,
    ///   `\U` takes one to four hexadecimal digits, octal escapes are in the NeXTSTEP encoding (of
    ///   their low 8 bits), and a backslash before a character without meaning is dropped. A lone
    ///   unquoted word is refused.
    ///
    /// Of two entries with one key the later wins. Everything in the result is immutable; equal
    /// parts may be the same object. A file beyond one of the limits above is refused. A part that
    /// a binary file refers to several times counts each time. A file that was cut off is refused,
    /// too, unless only white space or comments are missing, or `mayBeCutOff` is set.
    ///
    /// Whatever is read can be written.
    [[nodiscard]] static PropertyListReadResult propertyListWithData(std::string_view bytes);

    /// Writes a value as XML in UTF-8, keys sorted by their bytes, so that equal trees give equal
    /// files. `propertyListWithData` reads back an equal tree of the same kinds, but dates lose
    /// their fractions: the format holds whole seconds, and dates are rounded down.
    ///
    /// Control characters are written as numeric references, which other readers may refuse; see
    /// `refusalsOfStrictReaders`. Levels past the 16th are not indented further.
    ///
    /// The error names the value that cannot be stored: null, the null marker, a colour, text or a
    /// key that is not UTF-8, a date that is not finite or too far away; or the one that exceeds a
    /// limit above. A tree that other threads change meanwhile is written container by container,
    /// each as it was at one moment.
    [[nodiscard]] static PropertyListWriteResult dataWithPropertyList(
        const PropertyListValue& value);

    /// The strings and keys that readers of XML refuse which hold to XML 1.0: those with U+FFFE,
    /// U+FFFF, or a control character below U+0020 other than tab, line feed and carriage return.
    /// `propertyListWithData` reads them back. In the order of the file, at most `most` of them, as
    /// errors with message and key path. What cannot be written at all is not among them, and the
    /// search ends at the limits above.
    [[nodiscard]] static std::vector<PropertyListError> refusalsOfStrictReaders(
        const PropertyListValue& value, std::size_t most);
};
