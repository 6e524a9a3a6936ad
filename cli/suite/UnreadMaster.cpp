#include "cli/suite/UnreadMaster.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "cli/suite/FoldedName.h"
#include "cli/suite/Leftovers.h"

namespace {

bool endsLike(std::string_view name, const std::string& tail) {
  return name.size() >= tail.size() &&
         foldedName(name.substr(name.size() - tail.size())) == foldedName(tail);
}

std::string_view topOf(std::string_view folder) {
  return folder.substr(0, folder.find('/'));
}

/// Calls `take` with every way to read `folder` as a sub-folder and a format's folder in it, the
/// shortest sub-folder first, until it returns something.
template <typename Take>
std::optional<Finding> firstSplit(const std::string& folder, const Take& take) {
  std::size_t end = folder.empty() ? std::string::npos : 0;
  while (end != std::string::npos) {
    end = folder.find('/', end + 1);
    const bool isWhole = end == std::string::npos;
    if (auto finding = take(folder.substr(0, end), isWhole ? "" : folder.substr(end + 1))) {
      return finding;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<Finding> UnreadMaster::explain(const MasterFile& file) {
  if (isLeftover(file.name)) {
    return Finding{FindingKind::Leftover, file.path(), {}};
  }
  std::optional<Finding> finding = byReport(file);
  for (const auto explanation : {&UnreadMaster::byFormat, &UnreadMaster::bySuffix,
                                 &UnreadMaster::bySubFolder, &UnreadMaster::byCase}) {
    finding = finding ? finding : (this->*explanation)(file);
  }
  if (!finding && !m_request.scope.isOfSomeFormats) {
    finding = Finding{FindingKind::Unknown, file.path(), {}};
  }
  return finding;
}

/// A selected format would compare the file, if there were a report for it.
std::optional<Finding> UnreadMaster::byReport(const MasterFile& file) {
  const auto& rules = m_request.rules.selectedIn(file.folder);
  const bool isMaster = std::any_of(rules.begin(), rules.end(), [&file](const MasterRule* rule) {
    return rule->endsName(file.name);
  });
  if (!isMaster) {
    return std::nullopt;
  }
  const std::string* const report = reportNamedLike(file);
  return report != nullptr ? Finding{FindingKind::Case, file.path(), *report}
                           : Finding{FindingKind::Orphan, file.path(), {}};
}

std::optional<Finding> UnreadMaster::byFormat(const MasterFile& file) const {
  for (const MasterRule* const rule : m_request.rules.knownIn(file.folder)) {
    if (!rule->endsName(file.name) || !isConcerned(*rule)) {
      continue;
    }
    const std::string format(rule->format);
    if (isSelected(format, "")) {  // its own options choose others of its masters
      return Finding{FindingKind::Suffix, file.path(), format};
    }
    const bool isElsewhere = std::any_of(
        m_request.formats.begin(), m_request.formats.end(),
        [&format](const SelectedFormat& selected) { return selected.format->name == format; });
    return isElsewhere ? Finding{FindingKind::SubFolder, file.path(), {}}
                       : Finding{FindingKind::Format, file.path(), format};
  }
  return std::nullopt;
}

std::optional<Finding> UnreadMaster::bySuffix(const MasterFile& file) const {
  for (const MasterRule& rule : m_request.rules.known()) {
    const std::size_t bare = rule.bareFolder.size();
    if (rule.hasSuffix && rule.endsName(file.name) && isConcerned(rule) &&
        file.folder.compare(0, bare, rule.bareFolder) == 0 &&
        file.folder.find('/', bare) == std::string::npos) {
      return Finding{FindingKind::Suffix, file.path(), file.folder.substr(bare)};
    }
  }
  return std::nullopt;
}

std::optional<Finding> UnreadMaster::bySubFolder(const MasterFile& file) const {
  return firstSplit(
      file.folder,
      [&](const std::string& subFolder, const std::string& rest) -> std::optional<Finding> {
        if (m_request.rules.isOfFormats(topOf(subFolder))) {
          return std::nullopt;
        }
        for (const MasterRule* const rule : m_request.rules.knownIn(rest)) {
          if (rule->endsName(file.name) && isConcerned(*rule)) {
            const bool isRead = std::any_of(
                m_request.formats.begin(), m_request.formats.end(),
                [&](const SelectedFormat& selected) { return selected.subFolder == subFolder; });
            return isRead ? Finding{FindingKind::Format, file.path(), std::string(rule->format)}
                          : Finding{FindingKind::SubFolder, file.path(), subFolder};
          }
        }
        return std::nullopt;
      });
}

std::optional<Finding> UnreadMaster::byCase(const MasterFile& file) const {
  const auto inFolder = [&](const std::string& subFolder,
                            const std::string& rest) -> std::optional<Finding> {
    for (const MasterRule* const rule : m_request.rules.knownInFolded(foldedName(rest))) {
      if (endsLike(file.name, rule->tail) && isConcerned(*rule)) {
        const std::string base(file.name.substr(0, file.name.size() - rule->tail.size()));
        std::string wanted = subFolder;
        for (const std::string& level : {rule->folder, base + rule->tail}) {
          wanted += (wanted.empty() || level.empty() ? "" : "/") + level;
        }
        return Finding{FindingKind::Case, file.path(), wanted};
      }
    }
    return std::nullopt;
  };
  const std::optional<Finding> finding = inFolder("", file.folder);
  return finding || m_request.rules.isOfFormats(topOf(file.folder))
             ? finding
             : firstSplit(file.folder, inFolder);
}

bool UnreadMaster::isConcerned(const MasterRule& rule) const {
  return !m_request.scope.isOfSomeFormats ||
         std::any_of(m_request.formats.begin(), m_request.formats.end(),
                     [&rule](const SelectedFormat& selected) {
                       return selected.format->name == rule.format;
                     });
}

bool UnreadMaster::isSelected(std::string_view format, const std::string& subFolder) const {
  return std::any_of(m_request.formats.begin(), m_request.formats.end(),
                     [&](const SelectedFormat& selected) {
                       return selected.format->name == format && selected.subFolder == subFolder;
                     });
}

/// The name of a report that the file's name begins with but for its case; null if there is none.
const std::string* UnreadMaster::reportNamedLike(const MasterFile& file) {
  for (const ReportHome& home : file.place.homes) {
    auto folded = m_foldedStems.find(&home);
    if (folded == m_foldedStems.end()) {
      std::vector<StemIndex::Stem> stems;
      for (std::uint32_t i = 0; i < home.stems.stems().size(); ++i) {
        stems.push_back({foldedName(home.stems.stems()[i].text), i});
      }
      folded = m_foldedStems.emplace(&home, StemIndex(std::move(stems))).first;
    }
    if (const StemIndex::Stem* const like = folded->second.longest(foldedName(file.name))) {
      return &home.stems.stems()[like->report].text;
    }
  }
  return nullptr;
}
