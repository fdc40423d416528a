// SPDX-License-Identifier: MIT
#pragma once

/// What is known of settings: by the library, and by the lists that applications install. The
/// manual page qrvsettings(5) has the form of a list, and where it lies.

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/QRVKnownSettings.h"

namespace Tool {

struct KnownChoice {
    PropertyListValue value;
    std::string sentence;  ///< what it means; may be empty
};

struct KnownSetting {
    std::string keyPath;  ///< plain, also for a setting of a profile
    /// `Color` for text that is a colour; `Null` where it is not known.
    PropertyListValue::Kind kind = PropertyListValue::Kind::Null;
    QRVSettingScope scope = QRVSettingScope::Application;
    std::string sentence;  ///< empty where a list has none
    /// As a list documents it; null where none does. The library's own is
    /// `QRVSettingsDefaultForKeyPath`.
    PropertyListValue byDefault;
    std::vector<KnownChoice> choices;  ///< empty: any value
    PropertyListValue minimum;         ///< a number; null: no limit
    PropertyListValue maximum;
    std::string unit;
    std::vector<std::string> renamedFrom;  ///< earlier key paths
    std::string file;                      ///< the list that describes it; empty for none
};

/// Something wrong with a list, which is left out.
struct ListRemark {
    std::string file;
    std::string reason;  ///< one line, with the line of the file or the key path where it is known
};

class KnownLists {
  public:
    using Settings = std::map<std::string, KnownSetting, std::less<>>;

    /// What the library knows, with what the lists of this user and system add. Reads the files
    /// now, and never fails: what cannot be read or understood is a remark.
    static KnownLists read();
    /// The same without what the library knows, unless a list describes it too.
    static KnownLists readWithoutLibrary();

    /// By key path.
    [[nodiscard]] const Settings& settings() const { return settings_; }
    [[nodiscard]] const std::vector<ListRemark>& remarks() const { return remarks_; }

    /// The one of a key path, plain or of a profile; null when it is not known.
    [[nodiscard]] const KnownSetting* at(std::string_view keyPath) const;
    /// The one that had this key path earlier, plain or of a profile; null when none had.
    [[nodiscard]] const KnownSetting* renamedFrom(std::string_view keyPath) const;

  private:
    void readFiles();
    void readFolder(const std::string& folder);
    void readFile(const std::string& path);
    void add(KnownSetting setting);

    Settings settings_;
    std::map<std::string, std::string, std::less<>> newKeyPaths_;  // by the earlier one
    std::vector<ListRemark> remarks_;
};

/// Whether a value is of a kind as `KnownSetting` has it: a colour is a string, an integer also a
/// real, and anything of no known kind.
bool isOfKind(const PropertyListValue& value, PropertyListValue::Kind kind);

/// "integer", "color"; "any" for `Null`.
std::string kindWord(PropertyListValue::Kind kind);

}  // namespace Tool
