#include "cli/suite/Shard.h"

#include <xxhash.h>

#include <charconv>

#include "cli/system/CommandError.h"

namespace {

/// The number that is all of `text`, or 0.
std::uint32_t numberOf(std::string_view text) {
  std::uint32_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

}  // namespace

Shard parseShard(const std::string& text) {
  const std::size_t slash = text.find('/');
  Shard shard = {0, 0};
  if (slash != std::string::npos) {
    shard.index = numberOf(std::string_view(text).substr(0, slash));
    shard.count = numberOf(std::string_view(text).substr(slash + 1));
  }
  if (shard.index == 0 || shard.index > shard.count) {
    throw CommandError("--shard " + text +
                       " is not a share: 1/4 is the first of four, 4/4 the last");
  }
  return shard;
}

bool isInShard(const Shard& shard, std::string_view stem) {
  return XXH3_64bits(stem.data(), stem.size()) % shard.count == shard.index - 1;
}
