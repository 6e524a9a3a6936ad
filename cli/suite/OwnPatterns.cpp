#include "cli/suite/OwnPatterns.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>

#include "cli/system/CommandError.h"
#include "orvdiff/compare/OrvOriginMap.h"
#include "orvdiff/formats/OrvDiffTextFileTypeEngine.h"

namespace {

[[noreturn]] void raise(const OwnPattern& pattern, const std::string& problem) {
  const FilePlace& place = pattern.definedAt;
  throw CommandError(place.file + ':' + std::to_string(place.line) + ": [[pattern]] \"" +
                     pattern.name + "\": " + problem);
}

/// The index at which a pattern goes. Where the list has a rule twice, the pattern goes before the
/// first, or after the last.
std::optional<std::size_t> positionIn(const OrvPatternList& list, const PatternPlace& place) {
  using Kind = PatternPlace::Kind;
  if (place.kind == Kind::First || place.kind == Kind::Last) {
    return place.kind == Kind::First ? 0 : list.size();
  }
  std::optional<std::size_t> found;
  std::size_t index = 0;
  for (const OrvDiffNormalizationPattern* const rule : list) {
    const bool isIt = OrvOriginMap::nameOf(rule) == place.rule;
    if (isIt && (!found || place.kind == Kind::After)) {
      found = place.kind == Kind::After ? index + 1 : index;
    }
    ++index;
  }
  return found;
}

}  // namespace

void addOwnPatterns(const std::vector<OwnPattern>& patterns, std::string_view format,
                    OrvDiffFileEngine& engine) {
  for (const OwnPattern& pattern : patterns) {
    const auto& formats = pattern.formats;
    if (std::find(formats.begin(), formats.end(), format) == formats.end()) {
      continue;
    }
    auto* const texts = dynamic_cast<OrvDiffTextFileTypeEngine*>(&engine);
    if (texts == nullptr) {
      raise(pattern, "format " + std::string(format) + " does not normalise texts");
    }
    const auto position = positionIn(*texts->getCleansingPatterns(), pattern.place);
    if (!position) {
      raise(pattern, "format " + std::string(format) + " has no rule \"" + pattern.place.rule +
                         "\" to stand before or after");
    }
    texts->insertCleansingPattern(*position, pattern.pattern.get());
  }
}
