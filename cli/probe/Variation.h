#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/probe/RunTexts.h"
#include "cli/probe/VaryingPlaces.h"

/// One thing that varies: what the first run and another one have between the same stable texts,
/// wherever that is.
struct Variation {
  std::string before;  ///< equal in both runs; a little of it
  std::string after;
  std::string valueA;
  std::string valueB;
  std::size_t run;  ///< that `valueB` is from
  ValueKind kind;
  bool isInsideTag;
  std::size_t places = 0;
  std::vector<std::uint32_t> files;  ///< in which it is, ascending
};

/// What varies, by file: places in the first run's texts, in order, of all other runs.
using PlacesByFile = std::vector<std::vector<VaryingPlace>>;

/// All that varies between the first run and the others.
struct Variations {
  std::vector<Variation> all;  ///< in order of their first places
  PlacesByFile places;
  std::size_t differingFiles = 0;
};

Variations findVariations(RunTexts& texts);

/// Up to as much as an anchor needs, and not more than from `least`.
std::string textBefore(std::string_view text, std::size_t place, std::size_t least);
/// Likewise, to `most` at most.
std::string textAfter(std::string_view text, std::size_t place, std::size_t most);
