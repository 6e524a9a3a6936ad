#include "cli/suite/MasterInventory.h"

#include <cerrno>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/suite/SuiteLayout.h"

MasterInventory::MasterInventory(const InventoryRequest& request, const FindingSink& sink,
                                 const std::vector<MasterPlace>& places, ExpectedOutputs& expected)
    : m_request(request), m_sink(sink), m_places(places), m_expected(expected), m_unread(request) {}

void MasterInventory::take() {
  for (const MasterPlace& place : m_places) {
    std::set<FolderId> walked;
    walk(place, "", walked);
  }
  if (m_request.scope.saysUnclaimed) {
    for (const std::string& folder : m_request.found.misnamedMasterFolders) {
      m_sink({FindingKind::Case, folder, suiteLayout().masterFolder});
    }
  }
}

void MasterInventory::walk(const MasterPlace& place, const std::string& folder,
                           std::set<FolderId>& walked) {
  const std::string path = place.pathOf(folder);
  if (!walked.insert(folderId(path)).second) {
    return;  // a loop of links
  }
  std::vector<std::string> inner;
  const int error = readEntries(path, [&](std::string_view name, EntryKind kind) {
    if (kind == EntryKind::Folder) {
      inner.push_back((folder.empty() ? "" : folder + '/') + std::string(name));
    } else {
      take({place, folder, name});
    }
  });
  if (error != 0 && error != ENOENT) {
    m_sink({FindingKind::Unreadable, path, std::generic_category().message(error)});
  }
  for (const std::string& next : inner) {
    walk(place, next, walked);
  }
}

void MasterInventory::take(const MasterFile& file) {
  if (isCompared(file) || !isToBeTold(file)) {
    return;
  }
  if (const std::optional<Finding> finding = m_unread.explain(file)) {
    m_sink(*finding);
  }
}

bool MasterInventory::isCompared(const MasterFile& file) {
  bool isCompared = false;
  std::string claimers;
  for (const MasterRule* const rule : m_request.rules.selectedIn(file.folder)) {
    if (rule->endsName(file.name)) {
      for (const ReportHome& home : file.place.homes) {
        isCompared = isComparedFor(home, *rule, file, claimers) || isCompared;
      }
    }
  }
  if (!claimers.empty()) {
    m_sink({FindingKind::Claim, file.path(), claimers});
  }
  return isCompared;
}

/// Fills in `claimers` if several reports claim the file, one of which is the run's to account for.
bool MasterInventory::isComparedFor(const ReportHome& home, const MasterRule& rule,
                                    const MasterFile& file, std::string& claimers) {
  const StemIndex::Stem* owner = nullptr;
  std::string others;
  home.stems.forEachStart(file.name, [&](const StemIndex::Stem& stem) {
    if (owner != nullptr && rule.isMasterOf(file.name, stem.text)) {
      others += " and " + stem.text;
    } else if (rule.isMasterOf(file.name, stem.text)) {
      owner = &stem;
    }
    return true;
  });
  if (owner == nullptr) {
    return false;
  }
  expect(home, rule, file, owner->report);
  if (!others.empty() && m_request.scope.asksFor(owner->report)) {
    claimers = owner->text + others;
  }
  return true;
}

void MasterInventory::expect(const ReportHome& home, const MasterRule& rule, const MasterFile& file,
                             std::uint32_t report) {
  const SelectedFormat& format = *rule.selected;
  const OutputClaim own = {home.folder, report, false};
  const auto [output, isNew] =
      m_expected[format.outputFolder].try_emplace(std::string(file.name), own);
  OutputClaim& first = output->second;
  if (!isNew && !first.isShared && first.reportFolder != home.folder &&
      folderId(std::string(first.reportFolder)) != folderId(home.folder)) {
    first.isShared = true;
    if (m_request.scope.asksFor(first.report)) {
      m_sink({FindingKind::Shared, format.outputFolder + '/' + std::string(file.name),
              std::string(first.reportFolder) + " and " + home.folder});
    }
  }
  if (!m_request.scope.asksFor(report)) {
    return;
  }
  std::string master = mastersBeside(home.folder) + '/';
  master += rule.folderAsWritten.empty() ? "" : rule.folderAsWritten + '/';
  master += file.name;
  if (m_request.visit) {
    m_request.visit(rule, master, report);
  }
  if (m_request.pictures.isLeftToAnother(format, file.name)) {
    m_sink({FindingKind::Picture, file.path(), std::string(rule.format)});
    return;
  }
  if (m_request.compared != nullptr && !m_request.compared->holds(rule.format, master)) {
    m_sink({FindingKind::Unread, master, std::string(rule.format)});
  }
}

bool MasterInventory::isToBeTold(const MasterFile& file) const {
  const std::optional<std::uint32_t> owner = file.place.ownerOf(file.name);
  return owner ? m_request.scope.asksFor(*owner)
               : m_request.scope.saysUnclaimed && file.place.isSearched;
}
