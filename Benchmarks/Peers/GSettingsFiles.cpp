// SPDX-License-Identifier: MIT
// The files of a GSettings store: the schemas, and the values as a keyfile or a dconf database.

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>

#include "Peers/GSettingsStore.h"
#include "Peers/PeerSettings.h"

namespace {

using Groups = std::map<std::string, std::vector<const Workload::Setting*>, std::less<>>;

Groups groupsOf(const std::vector<Workload::Setting>& settings) {
    Groups groups;
    for (const Workload::Setting& setting : settings)
        groups[std::string(Peers::splitKeyPath(setting.keyPath).group)].push_back(&setting);
    return groups;
}

std::string withSlashes(std::string name) {
    for (char& character : name) character = character == '.' ? '/' : character;
    return name;
}

std::string itemsText(const std::vector<Workload::Item>& items) {
    std::string text;
    for (const Workload::Item& item : items)
        text += (text.empty() ? "" : ", ") + std::string("{'source': <int64 ") +
                std::to_string(item.source) + ">, 'label': <'" + item.label + "'>}";
    return '[' + text + ']';
}

std::string variantText(const Workload::Value& value) {
    if (const auto* const items = std::get_if<std::vector<Workload::Item>>(&value))
        return itemsText(*items);
    if (const auto* const text = std::get_if<std::string>(&value)) return '\'' + *text + '\'';
    if (const auto* const number = std::get_if<std::int64_t>(&value))
        return "int64 " + std::to_string(*number);
    return std::get<bool>(value) ? "true" : "false";
}

struct TypeAndDefault {
    const char* type;
    const char* byDefault;
};

TypeAndDefault typeAndDefault(Workload::Kind kind) {
    switch (kind) {
        case Workload::Kind::Boolean:
            return {"b", "false"};
        case Workload::Kind::Integer:
            return {"x", "0"};
        case Workload::Kind::Text:
            return {"s", "''"};
        case Workload::Kind::Items:
            return {"aa{sv}", "[]"};
    }
    return {};
}

void writeSchemas(const std::filesystem::path& path, const Groups& groups) {
    std::ofstream file(path);
    file << "<schemalist>\n";
    for (const auto& [name, settings] : groups) {
        file << "<schema id='" << name << "' path='/" << withSlashes(name) << "/'>\n";
        for (const Workload::Setting* const setting : settings) {
            const auto [type, byDefault] = typeAndDefault(Workload::kindOf(setting->value));
            file << "<key name='" << Peers::splitKeyPath(setting->keyPath).key << "' type='" << type
                 << "'><default>" << byDefault << "</default></key>\n";
        }
        file << "</schema>\n";
    }
    file << "</schemalist>\n";
}

void writeKeyfile(const std::filesystem::path& path, const Groups& groups) {
    std::ofstream file(path);
    for (const auto& [name, settings] : groups) {
        file << '[' << withSlashes(name) << "]\n";
        for (const Workload::Setting* const setting : settings)
            file << Peers::splitKeyPath(setting->keyPath).key << '=' << variantText(setting->value)
                 << '\n';
    }
}

void run(const std::string& command) {
    if (std::system(command.c_str()) == 0) return;
    std::cerr << "failed: " << command << '\n';
    std::exit(EXIT_FAILURE);
}

}  // namespace

void GSettingsStore::prepare(const std::filesystem::path& folder,
                             const std::vector<Workload::Setting>& settings) {
    const Groups groups = groupsOf(settings);
    const std::filesystem::path schemas = folder / "schemas";
    const std::filesystem::path values = folder / "values";
    for (const auto& path : {schemas, values, folder / "dconf"})
        std::filesystem::create_directories(path);
    writeSchemas(schemas / "settings.gschema.xml", groups);
    run("glib-compile-schemas --allow-any-name '" + schemas.string() + "'");
    writeKeyfile(values / "settings", groups);
    if (isDconf())
        run("dconf compile '" + (folder / "dconf" / "user").string() + "' '" + values.string() +
            "'");
}
