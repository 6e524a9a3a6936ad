#include "cli/baseline/NewMasters.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "cli/suite/MasterPlace.h"
#include "cli/suite/PairOwners.h"

namespace {

std::string_view nameOf(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

StemIndex stemsOf(const FoundReports& found) {
  std::vector<StemIndex::Stem> stems;
  std::uint32_t number = 0;
  for (const std::string& report : found.reports) {
    stems.push_back({std::string(nameOf(stemOf(report))), number++});
  }
  return StemIndex(std::move(stems));
}

/// Whether `name` goes on after the report's name in a way that no longer name would: Cash_2.html
/// is of the report Cash, but CashFlow.html of one that is not there.
bool isSetOff(std::string_view name, std::string_view stem) {
  const auto next = static_cast<unsigned char>(stem.size() < name.size() ? name[stem.size()] : '.');
  return next < 0x80 && std::isalnum(next) == 0;
}

}  // namespace

NewMasters::NewMasters(const FoundReports& found, const MasterRules& rules)
    : m_found(found), m_rules(rules), m_stems(stemsOf(found)) {}

NewMaster NewMasters::masterFor(const std::string& output) const {
  const std::size_t slash = output.rfind('/');
  const std::string folder = output.substr(0, slash);
  const std::string_view name = nameOf(output);
  NewMaster result;
  std::string why = "no selected format writes files of this name there";
  for (const MasterRule& rule : m_rules.selected()) {
    if (rule.selected->outputFolder != folder || !rule.endsName(name)) {
      continue;
    }
    const std::string master = masterBy(rule, name, why);
    if (!result.master.empty() && !master.empty() && master != result.master) {
      return {{},
              {},
              "it could be of " + result.format + " or of " + std::string(rule.format) +
                  "; choose with --format"};
    }
    if (!master.empty()) {
      result = {master, std::string(rule.format), {}};
    }
  }
  return result.master.empty() ? NewMaster{{}, {}, why} : result;
}

/// The path of the master by one rule; empty, and `why`, if its report is not clear.
std::string NewMasters::masterBy(const MasterRule& rule, std::string_view name,
                                 std::string& why) const {
  const StemIndex::Stem* owner = nullptr;
  m_stems.forEachStart(name, [&](const StemIndex::Stem& stem) {
    owner = rule.isMasterOf(name, stem.text) ? &stem : nullptr;
    return owner == nullptr;
  });
  if (owner == nullptr) {
    why = "no report has this name";
    return {};
  }
  if (!isSetOff(name, owner->text)) {
    why = "no report has this name; the nearest is " + m_found.reports[owner->report];
    return {};
  }
  const auto isNamesake = [owner](const std::string& report) {
    return nameOf(stemOf(report)) == owner->text;
  };
  const std::string& report = m_found.reports[owner->report];
  const std::string folder = report.substr(0, report.size() - nameOf(report).size());
  for (const std::string& other : m_found.reports) {
    if (isNamesake(other) && other.substr(0, other.size() - nameOf(other).size()) != folder) {
      why = "it could be of ";
      why.append(report).append(" or of ").append(other);
      return {};
    }
  }
  std::string master = mastersBeside(folder) + '/';
  master += rule.folderAsWritten.empty() ? "" : rule.folderAsWritten + '/';
  return master.append(name);
}
