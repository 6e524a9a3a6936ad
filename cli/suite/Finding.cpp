#include "cli/suite/Finding.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace {

constexpr std::pair<FindingKind, std::string_view> kKeys[] = {
    {FindingKind::SubFolder, "sub-folders"}, {FindingKind::Format, "formats"},
    {FindingKind::Suffix, "suffixes"},       {FindingKind::Case, "case"},
    {FindingKind::Unknown, "unknown"},       {FindingKind::Orphan, "orphans"},
    {FindingKind::Claim, "claims"},          {FindingKind::Unread, "unread"},
    {FindingKind::Output, "outputs"},        {FindingKind::Shared, "shared"},
    {FindingKind::Leftover, "leftovers"},    {FindingKind::Picture, "pictures"},
    {FindingKind::Vacuous, "vacuous"},       {FindingKind::Mask, "masks"},
    {FindingKind::Stale, "stale"},           {FindingKind::Partly, "partly"},
    {FindingKind::Unverified, "unverified"}, {FindingKind::Unreadable, "unreadable"},
    {FindingKind::Empty, "empty"},           {FindingKind::Large, "large"},
    {FindingKind::Invalid, "invalid"},       {FindingKind::Identical, "identical"},
    {FindingKind::Pattern, "patterns"},
};

bool comesBefore(const Finding& one, const Finding& other) {
  return std::tie(one.path, one.detail) < std::tie(other.path, other.detail);
}

}  // namespace

std::string_view keyOf(FindingKind kind) {
  return kKeys[static_cast<std::size_t>(kind)].second;
}

std::optional<FindingKind> kindFor(std::string_view key) {
  const auto* const found = std::find_if(std::begin(kKeys), std::end(kKeys),
                                         [key](const auto& row) { return row.second == key; });
  return found != std::end(kKeys) ? std::optional(found->first) : std::nullopt;
}

const std::vector<FindingKind>& kindsOfRuns() {
  static const std::vector<FindingKind> kinds = [] {
    std::vector<FindingKind> all;
    for (const auto& [kind, key] : kKeys) {
      if (kind < FindingKind::Unreadable) {
        all.push_back(kind);
      }
    }
    return all;
  }();
  return kinds;
}

void FindingTally::add(const Finding& finding) {
  add({finding.kind, 1, finding, {finding.detail}});
}

void FindingTally::add(const FindingTotal& total) {
  FindingTotal& sum = m_totals[total.kind];
  if (sum.count == 0 || comesBefore(total.example, sum.example)) {
    sum.example = total.example;
  }
  sum.kind = total.kind;
  sum.count += total.count;
  for (const std::string& detail : total.details) {
    sum.details.insert(detail);
    if (sum.details.size() > FindingTotal::kMostDetails) {
      sum.details.erase(std::prev(sum.details.end()));
    }
  }
}

std::vector<FindingTotal> FindingTally::totals() const {
  std::vector<FindingTotal> totals;
  for (const auto& [kind, total] : m_totals) {
    totals.push_back(total);
  }
  return totals;
}
