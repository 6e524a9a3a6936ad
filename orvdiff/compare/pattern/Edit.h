#pragma once

#include <cstddef>
#include <vector>

namespace orvdiff::pattern {

/// One change that a pass over a text made: the bytes from `begin` to `end` of the text before the
/// pass became `length` other bytes. `begin` equals `end` where something was only inserted.
struct Edit {
  std::size_t begin;
  std::size_t end;
  std::size_t length;
};

/// The edits of one pass, from front to back; no two overlap. What lies between them was copied.
using Edits = std::vector<Edit>;

}  // namespace orvdiff::pattern
