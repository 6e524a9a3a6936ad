#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "cli/probe/ValueKind.h"

/// A stretch of one text in place of which another has something else, grown to whole values: a
/// date of which only the day differs is all of the date.
struct VaryingPlace {
  std::size_t beginA, endA;
  std::size_t beginB, endB;
  ValueKind kind;
};

/// Where two texts differ, in order. What lies between two places is equal.
std::vector<VaryingPlace> findVaryingPlaces(std::string_view a, std::string_view b);

/// Whether `place` of a text is inside a tag, as the nearest angle bracket says.
bool isInsideTag(std::string_view text, std::size_t place);
