#include "cli/suite/NearestNames.h"

#include <dirent.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

namespace {

constexpr std::size_t kMostNames = 3;
constexpr std::uint64_t kMostSteps = 300'000'000;  // about half a second
constexpr std::uint64_t kStepsOfName = 100;        // to read it from the folder

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};

bool isEqualIgnoringCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [lower](char x, char y) { return lower(x) == lower(y); });
}

/// How many bytes must be inserted, removed or replaced to turn `a` into `b`; more than `limit` if
/// more than `limit`. Its time is that of `limit` times the length. `row` is working memory.
std::size_t editDistance(std::string_view a, std::string_view b, std::size_t limit,
                         std::vector<std::size_t>& row) {
  const std::size_t tooFar = limit + 1;
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > limit) {
    return tooFar;
  }
  row.assign(b.size() + 1, tooFar);
  for (std::size_t j = 0; j <= std::min(limit, b.size()); ++j) {
    row[j] = j;
  }
  for (std::size_t i = 1; i <= a.size(); ++i) {
    const std::size_t first = i > limit ? i - limit : 1;
    const std::size_t last = std::min(b.size(), i + limit);
    std::size_t diagonal = row[first - 1];
    row[first - 1] = first == 1 && i <= limit ? i : tooFar;
    std::size_t least = row[first - 1];
    for (std::size_t j = first; j <= last; ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1, tooFar});
      least = std::min(least, row[j]);
    }
    if (least >= tooFar) {
      return tooFar;
    }
  }
  return row[b.size()];
}

}  // namespace

NearestNames findNearestNames(const std::string& folder, const std::string& name) {
  NearestNames result;
  const std::unique_ptr<DIR, CloseFolder> listing(opendir(folder.empty() ? "." : folder.c_str()));
  if (listing == nullptr) {
    return result;
  }
  std::vector<std::pair<std::size_t, std::string>> best;  // by distance, then by name
  std::vector<std::size_t> row;
  std::size_t limit = std::clamp<std::size_t>(name.size() / 3, 1, 8);
  std::uint64_t steps = 0;
  while (const dirent* const entry = readdir(listing.get())) {
    const std::string_view other(entry->d_name);
    steps += kStepsOfName + (2 * limit + 1) * std::min(name.size(), other.size());
    if (steps > kMostSteps) {
      result.areAllSeen = false;
      break;
    }
    const std::size_t distance =
        isEqualIgnoringCase(name, other) ? 0 : editDistance(name, other, limit, row);
    if (other == "." || other == ".." || other == name || distance > limit) {
      continue;
    }
    best.emplace_back(distance, other);
    std::sort(best.begin(), best.end());
    if (best.size() > kMostNames) {
      best.pop_back();
      limit = best.back().first;
    }
  }
  for (auto& [distance, nearName] : best) {
    result.names.push_back(std::move(nearName));
  }
  result.differsOnlyInCase = !best.empty() && best.front().first == 0;
  return result;
}
