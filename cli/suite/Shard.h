#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A share of a suite: the `index`-th of `count`, from 1.
struct Shard {
  std::uint32_t index = 1;
  std::uint32_t count = 1;
};

/// Reads "3/5". Raises `CommandError` for anything that is no share.
Shard parseShard(const std::string& text);

/// Whether a report belongs to the share. `stem` is its path without the extension, relative to its
/// location, so that the answer is the same on every machine and for reports that share their
/// masters; it depends on nothing else, so that a report that is added elsewhere moves none.
bool isInShard(const Shard& shard, std::string_view stem);
