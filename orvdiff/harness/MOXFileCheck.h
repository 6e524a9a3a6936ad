#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace orvdiff::detail {

/// Why two files are not equal.
struct MOXFileMismatch {
  const char* error = nullptr;  ///< a line for the log if there is nothing to dump, else null
  std::int64_t offset = 0;      ///< of the first byte that differs or that only one file has
  std::uint32_t length = 0;     ///< bytes from there on in the expected file, at most 128
  std::array<unsigned char, 128> actual{};  ///< the files from there on, padded with zeros
  std::array<unsigned char, 128> expected{};
};

/// Compares two files byte for byte; returns nothing if they are equal. A null name and a file that
/// cannot be opened, read or positioned are mismatches.
std::optional<MOXFileMismatch> moxCompareFiles(const char* actualFile, const char* expectedFile);

}  // namespace orvdiff::detail
