// SPDX-License-Identifier: MIT
#include "Peers/LibplistStore.h"

#include <algorithm>
#include <string>

#include "Workload/FileContents.h"

void LibplistStore::prepare(const std::filesystem::path& folder,
                            const std::vector<Workload::Setting>& /*settings*/) {
    std::filesystem::create_directories(folder);
}

LibplistStore::LibplistStore(const std::filesystem::path& folder) {
    const std::string bytes = Workload::contentsOf(folder / "files" / "XMLReading");
    plist_from_xml(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root_);
}

LibplistStore::Handle LibplistStore::handle(std::string_view keyPath,
                                            Workload::Kind /*kind*/) const {
    plist_t node = root_;
    for (std::size_t begin = 0; begin <= keyPath.size();) {
        const std::size_t end = std::min(keyPath.find('.', begin), keyPath.size());
        node = plist_dict_get_item(node, std::string(keyPath.substr(begin, end - begin)).c_str());
        begin = end + 1;
    }
    return node;
}

bool LibplistStore::readBoolean(Handle node) {
    std::uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

std::int64_t LibplistStore::readInteger(Handle node) {
    std::uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return static_cast<std::int64_t>(value);
}

void LibplistStore::writeInteger(Handle node, std::int64_t number) {
    plist_set_uint_val(node, static_cast<std::uint64_t>(number));
}
