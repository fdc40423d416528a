// SPDX-License-Identifier: MIT
// A program of the build: writes the source of `TimePatternTable.h` to the path that it is given.

#include <unicode/uloc.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Machine/ICUTimePattern.h"
#include "Platform/Machine/TimePatternTable.h"

namespace {

// The C library has these, and ICU does not list them: it has the language alone, or not even that.
constexpr const char* namesOfTheCLibrary =
    "C POSIX aa_DJ aa_ER aa_ET agr_PE an_ES anp_IN ar_IN ayc_PE az_IR ber_DZ ber_MA bhb_IN bho_NP "
    "bi_VU byn_ER cmn_TW crh_UA csb_PL dv_MV eu_FR fy_DE gez_ER gez_ET gv_GB hak_TW hif_FJ hne_IN "
    "ht_HT ia_FR ik_CA iu_CA li_BE li_NL lij_IT lzh_TW mag_IN mai_NP mhr_RU miq_NI mjw_IN mnw_MM "
    "nan_TW nds_DE nds_NL nhn_MX niu_NU niu_NZ nr_ZA nso_ZA oc_FR pap_AW pap_CW quz_PE rif_MA "
    "sgs_LT shn_MM shs_CA sid_ET sm_WS ss_ZA st_ZA syr szl_PL tcy_IN the_NP tig_ER tn_ZA tpi_PG "
    "ts_ZA unm_US ve_ZA wa_BE wal_ET yi_US yuw_PG ";

void requireSuccess(UErrorCode status) {
    if (U_FAILURE(status) != 0) throw std::runtime_error(u_errorName(status));
}

std::set<std::string> localeNames() {
    std::set<std::string> names;
    std::string name;
    for (const char* letter = namesOfTheCLibrary; *letter != '\0'; ++letter) {
        if (*letter != ' ') name += *letter;
        if (*letter == ' ') names.insert(std::exchange(name, {}));
    }
    UErrorCode status = U_ZERO_ERROR;
    // With the names of earlier times (no_NO), and those that leave out the usual script (zh_CN).
    UEnumeration* const listed =
        uloc_openAvailableByType(ULOC_AVAILABLE_WITH_LEGACY_ALIASES, &status);
    requireSuccess(status);
    while (const char* const next = uenum_next(listed, nullptr, &status)) names.insert(next);
    uenum_close(listed);
    requireSuccess(status);
    return names;
}

std::string patternOf(const std::string& locale) {
    if (locale.size() >= std::tuple_size_v<decltype(QRVPlatform::TimePatternTable::Row::locale)>)
        throw std::runtime_error("no room for the name " + locale);
    const std::optional<std::string> pattern = QRVPlatform::ICUTimePattern::of(locale);
    if (!pattern) throw std::runtime_error("ICU cannot be loaded");
    if (pattern->empty() || pattern->find_first_of("\"\\") != std::string::npos)
        throw std::runtime_error("ICU has the pattern \"" + *pattern + "\" for " + locale);
    return *pattern;
}

void printTable(std::ostream& out) {
    std::map<std::string, std::size_t> numbers;
    std::vector<std::string> patterns;
    out << "// Made by the build, from the installed ICU.\n"
           "#include \"Platform/Machine/TimePatternTable.h\"\n\n"
           "namespace QRVPlatform::TimePatternTable {\n\n"
           "static constexpr auto allRows = std::to_array<Row>({\n";
    for (const std::string& name : localeNames()) {
        const auto [entry, isNew] = numbers.emplace(patternOf(name), patterns.size());
        if (isNew) patterns.push_back(entry->first);
        out << "    {{\"" << name << "\"}, " << entry->second << "},\n";
    }
    out << "});\nstatic constexpr auto allPatterns = std::to_array<std::string_view>({\n";
    for (const std::string& pattern : patterns) out << "    \"" << pattern << "\",\n";
    out << "});\n\nconstinit const std::span<const Row> rows = allRows;\n"
           "constinit const std::span<const std::string_view> patterns = allPatterns;\n\n"
           "}  // namespace QRVPlatform::TimePatternTable\n";
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) throw std::runtime_error("it takes the path of the source to write");
        std::ofstream out(argv[1]);
        printTable(out);
        if (!out.flush()) throw std::runtime_error("cannot write the file");
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "the table of time patterns cannot be made: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
