#pragma once

#include <string>
#include <string_view>

#include "orvdiff/compare/OrvOriginMap.h"

/// The normalised text, made from the original by replaying the masks.
inline std::string replayMasks(const OrvOriginMap& map) {
  std::string replayed;
  std::size_t done = 0;
  for (const OrvOriginMap::Mask& mask : map.masks()) {
    replayed += map.original().substr(done, mask.begin - done);
    replayed += map.replacement(mask);
    done = mask.end;
  }
  return replayed += map.original().substr(done);
}

/// What is wrong with the map of a text that is normalised to `expected`; empty if nothing is.
inline std::string findOriginMapFault(const OrvOriginMap& map, std::string_view expected) {
  std::size_t original = 0;
  std::size_t text = 0;
  for (const OrvOriginMap::Mask& mask : map.masks()) {
    if (mask.begin < original || mask.begin - original != mask.textBegin - text ||
        mask.end < mask.begin || mask.textEnd < mask.textBegin) {
      return "masks are out of order";
    }
    if (map.rulesOf(mask).back() != mask.rule) {
      return "the last rule of a mask is not the mask's";
    }
    original = mask.end;
    text = mask.textEnd;
  }
  if (map.text() != expected || replayMasks(map) != expected) {
    return "replaying the masks gives another text";
  }
  for (std::size_t i = 0, mask = 0; i < expected.size(); ++i) {
    const auto [begin, end] = map.originOf(i);
    for (; mask < map.masks().size() && map.masks()[mask].textEnd <= i; ++mask) {
    }
    const bool isWritten = mask < map.masks().size() && map.masks()[mask].textBegin <= i;
    if (isWritten ? begin != map.masks()[mask].begin || end != map.masks()[mask].end
                  : end != begin + 1 || map.original()[begin] != expected[i]) {
      return "byte " + std::to_string(i) + " comes from elsewhere";
    }
  }
  return map.originOf(expected.size()).begin == map.original().size() ? "" : "the end is elsewhere";
}
