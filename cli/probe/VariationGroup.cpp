#include "cli/probe/VariationGroup.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace {

/// Kinds that the same id may have by chance: "12345678", "9fceb02d", "4711-x".
ValueKind groupingKind(ValueKind kind) {
  return kind == ValueKind::HexId || kind == ValueKind::Identifier || kind == ValueKind::Year
             ? ValueKind::Counter
             : kind;
}

/// The tag or punctuation around a value, for a value that needs no label to be recognised.
Anchor frameOf(const Variation& variation) {
  return {leftAnchor(variation.before, 0).value_or(""),
          rightAnchor(variation.after, 0, true).value_or("")};
}

bool isFrame(const Anchor& anchor) {
  return (anchor.left + anchor.right).find_first_not_of(" \n") != std::string::npos;
}

bool isGrouped(ValueKind kind) {
  return kind != ValueKind::AttributeOrder && kind != ValueKind::WhiteSpace;
}

using GroupKey = std::pair<ValueKind, Anchor>;

/// The frames around values of one kind that have too many labels for a pattern each.
std::set<GroupKey> crowdedFrames(const std::vector<Variation>& variations) {
  constexpr std::size_t kManyLabels = 4;
  std::map<GroupKey, std::set<Anchor>> labels;
  for (const Variation& variation : variations) {
    const std::vector<Anchor> anchors = anchorsOf(variation);
    const Anchor frame = frameOf(variation);
    if (isVolatileByForm(variation.kind) && isGrouped(variation.kind) && isFrame(frame) &&
        !anchors.empty()) {
      labels[{groupingKind(variation.kind), frame}].insert(anchors.front());
    }
  }
  std::set<GroupKey> crowded;
  for (const auto& [key, all] : labels) {
    if (all.size() >= kManyLabels) {
      crowded.insert(key);
    }
  }
  return crowded;
}

/// Whether the value is in an attribute that names or links things.
bool isInLink(const Variation& variation) {
  constexpr std::string_view kLinks[] = {"id",  "name", "for",     "href",   "src",
                                         "ref", "key",  "headers", "usemap", "action"};
  const std::string& before = variation.before;
  const std::size_t equals = before.rfind("=\"");
  if (!variation.isInsideTag || equals == std::string::npos ||
      before.find('"', equals + 2) != std::string::npos) {
    return false;
  }
  const std::size_t blank = before.find_last_of(" \n", equals);
  const std::string_view name =
      std::string_view(before).substr(blank == std::string::npos ? 0 : blank + 1);
  return std::any_of(std::begin(kLinks), std::end(kLinks), [&](std::string_view link) {
    return name.substr(0, link.size() + 1) == std::string(link) + '=';
  });
}

/// Whether each run has one value in all these places.
bool isOnePerRun(const VariationGroup& group) {
  std::map<std::size_t, std::string_view> valueOf;
  return std::all_of(group.members.begin(), group.members.end(), [&](const Variation* variation) {
    return valueOf.emplace(0, variation->valueA).first->second == variation->valueA &&
           valueOf.emplace(variation->run, variation->valueB).first->second == variation->valueB;
  });
}

/// The group, split by the `choice`th of each member's anchors, or by its last one. Nothing if that
/// is not the group's own anchor and more.
std::vector<VariationGroup> partsOf(const VariationGroup& group, std::size_t choice) {
  std::map<Anchor, VariationGroup> parts;
  for (const Variation* const variation : group.members) {
    const std::vector<Anchor> anchors = anchorsOf(*variation);
    if (!(anchors.front() == group.anchor)) {
      return {};
    }
    const Anchor& anchor = anchors[std::min(choice, anchors.size() - 1)];
    VariationGroup& part = parts[anchor];
    part.kind = group.kind;
    part.anchor = anchor;
    part.members.push_back(variation);
  }
  std::vector<VariationGroup> result;
  result.reserve(parts.size());
  for (auto& [anchor, part] : parts) {
    result.push_back(std::move(part));
  }
  return result;
}

/// Whether what the anchor `from` matches is also matched by `to`, which holds on to more.
bool matchesStill(const Anchor& from, const Anchor& to, const OtherMatch& other) {
  const std::string before = to.left.substr(0, to.left.size() - from.left.size());
  const std::string after = to.right.substr(from.right.size());
  return other.before.size() >= before.size() &&
         other.before.compare(other.before.size() - before.size(), before.size(), before) == 0 &&
         other.after.compare(0, after.size(), after) == 0;
}

}  // namespace

std::vector<std::string> VariationGroup::values() const {
  std::set<std::string> all;
  for (const Variation* const variation : members) {
    all.insert(variation->valueA);
    all.insert(variation->valueB);
  }
  return {all.begin(), all.end()};
}

std::size_t VariationGroup::places() const {
  std::map<std::size_t, std::size_t> placesOfRun;  // a place that differs in two runs is one place
  std::size_t most = 0;
  for (const Variation* const variation : members) {
    most = std::max(most, placesOfRun[variation->run] += variation->places);
  }
  return most;
}

std::size_t VariationGroup::files() const {
  std::set<std::uint32_t> all;
  for (const Variation* const variation : members) {
    all.insert(variation->files.begin(), variation->files.end());
  }
  return all.size();
}

std::vector<Anchor> anchorsOf(const Variation& variation) {
  std::vector<Anchor> anchors;
  const auto add = [&](const std::optional<std::string>& left,
                       const std::optional<std::string>& right) {
    if (left && right && (anchors.empty() || !(anchors.back() == Anchor{*left, *right}))) {
      anchors.push_back({*left, *right});
    }
  };
  const auto left = [&](std::size_t labels) { return leftAnchor(variation.before, labels); };
  const auto right = [&](std::size_t labels) {
    return rightAnchor(variation.after, labels, false);
  };
  add(left(1), right(0));
  add(left(1), right(1));
  add(left(2), right(0));
  add(left(2), right(1));
  add(left(3), right(1));
  add(left(3), right(2));
  if (anchors.empty()) {
    const std::string punctuation = leftAnchor(variation.before, 0).value_or("");
    add(punctuation, right(1));
    add(punctuation, right(2));
  }
  if (anchors.empty() && isVolatileByForm(variation.kind) && isFrame(frameOf(variation))) {
    anchors.push_back(frameOf(variation));
  }
  return anchors;
}

std::vector<VariationGroup> groupVariations(const std::vector<Variation>& variations) {
  const std::set<GroupKey> crowded = crowdedFrames(variations);
  std::map<GroupKey, std::size_t> indexOf;
  std::vector<VariationGroup> groups;
  for (const Variation& variation : variations) {
    const std::vector<Anchor> anchors = anchorsOf(variation);
    if (!isGrouped(variation.kind) || anchors.empty()) {
      continue;
    }
    GroupKey key = {groupingKind(variation.kind), frameOf(variation)};
    if (crowded.count(key) == 0) {
      key.second = anchors.front();
    }
    const auto [known, isNew] = indexOf.emplace(key, groups.size());
    if (isNew) {
      groups.push_back({{}, variation.kind, key.second});
    }
    groups[known->second].members.push_back(&variation);
  }
  for (VariationGroup& group : groups) {
    group.kind =
        groupingKind(group.kind) == ValueKind::Counter ? kindOf(group.values()) : group.kind;
  }
  return groups;
}

std::vector<VariationGroup> anchored(const VariationGroup& group,
                                     const std::vector<OtherMatch>& others) {
  constexpr std::size_t kMostParts = 4;
  constexpr std::size_t kMostAnchors = 6;
  std::vector<VariationGroup> best = {group};
  std::size_t least = others.size();
  for (std::size_t choice = 1; choice < kMostAnchors && least > 0; ++choice) {
    const std::vector<VariationGroup> parts = partsOf(group, choice);
    if (parts.empty() || parts.size() > kMostParts) {
      continue;
    }
    const auto matches = static_cast<std::size_t>(
        std::count_if(others.begin(), others.end(), [&](const OtherMatch& other) {
          return std::any_of(parts.begin(), parts.end(), [&](const VariationGroup& part) {
            return matchesStill(group.anchor, part.anchor, other);
          });
        }));
    if (matches < least) {
      least = matches;
      best = parts;
    }
  }
  return best;
}

bool looksVolatile(const VariationGroup& group) {
  const bool isLabelled = saysVolatile(group.anchor);
  if (group.kind == ValueKind::Words) {
    const std::size_t enoughFiles = isLabelled ? 2 : 3;
    return group.files() >= enoughFiles && isOnePerRun(group);
  }
  if (isVolatileByForm(group.kind) || isLabelled) {
    return true;
  }
  const bool areLinks =
      std::all_of(group.members.begin(), group.members.end(),
                  [](const Variation* variation) { return isInLink(*variation); });
  return areLinks || (group.files() >= 2 && isOnePerRun(group));
}
