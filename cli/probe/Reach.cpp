#include "cli/probe/Reach.h"

#include <algorithm>

#include "orvdiff/compare/OrvOriginMap.h"

namespace {

/// Whether a stretch meets one of `places`.
bool varies(const std::vector<VaryingPlace>& places, std::size_t begin, std::size_t end) {
  const auto next = std::partition_point(
      places.begin(), places.end(), [=](const VaryingPlace& place) { return place.endA < begin; });
  return next != places.end() && next->beginA <= end;
}

}  // namespace

Reach reachOf(const OrvDiffNormalizationPattern& pattern, const Anchor& anchor, RunTexts& texts,
              const PlacesByFile& places, std::size_t most) {
  const OrvPatternList alone = {&pattern};
  Reach reach;
  for (std::size_t file = 0; file < texts.fileCount(); ++file) {
    const RunTexts::Text text = texts.of(file).front();
    const OrvOriginMap map(*text, alone);
    bool isFirst = true;
    for (const OrvOriginMap::Mask& mask : map.masks()) {
      if (varies(places[file], mask.begin + anchor.left.size(), mask.end - anchor.right.size())) {
        continue;
      }
      ++reach.others;
      reach.files += isFirst ? 1 : 0;
      isFirst = false;
      if (reach.matches.size() < most) {
        reach.matches.push_back({file, text->substr(mask.begin, mask.end - mask.begin),
                                 textBefore(*text, mask.begin, 0),
                                 textAfter(*text, mask.end, text->size())});
      }
    }
  }
  return reach;
}
