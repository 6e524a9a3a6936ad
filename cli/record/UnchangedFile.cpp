#include "cli/record/UnchangedFile.h"

#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <system_error>

#include "cli/record/ContentHash.h"

std::optional<std::string> readUnchanged(const std::string& path, const std::string& hash) try {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) {
    return std::nullopt;
  }
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.is_open() || (!hash.empty() && contentHash(bytes) != hash)) {
    return std::nullopt;
  }
  return bytes;
} catch (const std::ios_base::failure&) {  // a stream's buffer raises it whatever the stream says
  return std::nullopt;
}
