#include "cli/commands/Versions.h"

#include <png.h>
#include <toml++/impl/version.h>
#include <unicode/uversion.h>
#include <xxhash.h>
#include <zlib.h>
#include <CLI/Version.hpp>
#include <nlohmann/json.hpp>

namespace {

std::string icuVersion() {
  UVersionInfo version;
  u_getVersion(version);
  char text[U_MAX_VERSION_STRING_LENGTH];
  u_versionToString(version, text);
  return text;
}

/// Of a number such as 10203 for 1.2.3.
std::string numberedVersion(unsigned number) {
  return std::to_string(number / 10000) + '.' + std::to_string(number / 100 % 100) + '.' +
         std::to_string(number % 100);
}

}  // namespace

std::string versionsInUse() {
  constexpr unsigned kJsonVersion = NLOHMANN_JSON_VERSION_MAJOR * 10000 +
                                    NLOHMANN_JSON_VERSION_MINOR * 100 + NLOHMANN_JSON_VERSION_PATCH;
  constexpr unsigned kTomlVersion = TOML_LIB_MAJOR * 10000 + TOML_LIB_MINOR * 100 + TOML_LIB_PATCH;
  return std::string("orvdiff " ORVDIFF_VERSION) + "\nICU " + icuVersion() +
         "\nXerces-C++ " ORVDIFF_XERCES_VERSION "\nlibpng " + png_get_libpng_ver(nullptr) +
         "\nzlib " + zlibVersion() + "\nxxHash " + numberedVersion(XXH_versionNumber()) +
         "\nCLI11 " CLI11_VERSION "\nJSON for Modern C++ " + numberedVersion(kJsonVersion) +
         "\ntoml++ " + numberedVersion(kTomlVersion);
}
