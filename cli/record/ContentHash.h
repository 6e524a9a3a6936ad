#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// 32 hexadecimal digits (XXH3, 128 bits) that tell contents apart. It finds accidents, not
/// forgeries.
std::string contentHash(std::string_view bytes);

/// Length in bytes and hash of a file's content.
struct FileContent {
  std::uint64_t size;
  std::string hash;
};

/// The content of the regular file `path`, or nothing when it cannot be read to its end.
std::optional<FileContent> hashFile(const std::string& path);
