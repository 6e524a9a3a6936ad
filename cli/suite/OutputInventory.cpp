#include "cli/suite/OutputInventory.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <system_error>
#include <utility>

#include "cli/suite/FoldedName.h"
#include "cli/suite/FolderReader.h"
#include "cli/suite/Leftovers.h"
#include "cli/suite/PairOwners.h"

namespace {

StemIndex allReports(const FoundReports& found) {
  std::vector<StemIndex::Stem> stems;
  std::uint32_t number = 0;
  for (const auto* const paths : {&found.reports, &found.neighbours}) {
    for (const std::string& path : *paths) {
      stems.push_back({std::string(stemOf(path).substr(path.rfind('/') + 1)), number++});
    }
  }
  return StemIndex(std::move(stems));
}

bool isAbsent(int error) {
  return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG;
}

}  // namespace

OutputInventory::OutputInventory(const InventoryRequest& request, const FindingSink& sink,
                                 const ExpectedOutputs& expected)
    : m_request(request), m_sink(sink), m_expected(expected) {}

void OutputInventory::take() {
  static const Names none;
  std::map<std::string, Folder> folders;
  for (const MasterRule& rule : m_request.rules.selected()) {
    const std::string& path = rule.selected->outputFolder;
    const auto expected = m_expected.find(path);
    if (expected != m_expected.end() || m_request.scope.isWholeSuite) {
      const Names& names = expected != m_expected.end() ? expected->second : none;
      const auto folder = folders.emplace(path, Folder{path, {}, names}).first;
      folder->second.tails.insert(foldedName(rule.tail));
    }
  }
  for (auto& [path, folder] : folders) {
    take(folder);
  }
}

void OutputInventory::take(Folder& folder) {
  const int error = readEntries(folder.path, [&](std::string_view name, EntryKind kind) {
    if (kind != EntryKind::Folder) {
      take(folder, name);
    }
  });
  if (error != 0 && !isAbsent(error)) {
    m_sink({FindingKind::Unreadable, folder.path, std::generic_category().message(error)});
  }
}

void OutputInventory::take(Folder& folder, std::string_view name) {
  if (folder.expected.count(std::string(name)) != 0) {
    return;
  }
  const std::string path = folder.path + '/' + std::string(name);
  if (isLeftover(name)) {
    return takeLeftover(folder, path, name);
  }
  const std::string folded = foldedName(name);
  const bool isOutput =
      std::any_of(folder.tails.begin(), folder.tails.end(), [&folded](const std::string& tail) {
        return folded.size() >= tail.size() &&
               folded.compare(folded.size() - tail.size(), tail.size(), tail) == 0;
      });
  if (!isOutput) {
    return;  // of a format that was not read, or of none
  }
  const std::string* const like = expectedLike(folder, folded);
  if (like != nullptr && m_request.scope.asksFor(folder.expected.at(*like).report)) {
    m_sink({FindingKind::Case, path, *like});
  } else if (like == nullptr && isToBeTold(name)) {
    m_sink({FindingKind::Output, path, {}});
  }
}

void OutputInventory::takeLeftover(const Folder& folder, const std::string& path,
                                   std::string_view name) {
  const std::string owner(ownerOfLeftover(name));
  const auto output = folder.expected.find(owner);
  const bool isOfPair = output != folder.expected.end();
  const bool isConcerned =
      isOfPair ? m_request.scope.asksFor(output->second.report) : isToBeTold(owner);
  const std::string outputPath = folder.path + '/' + owner;
  if (!isConcerned ||
      (m_request.compared != nullptr && m_request.compared->isFailing(outputPath))) {
    return;
  }
  const bool isRemoved =
      isOfPair && m_request.removesLeftovers && isSavedByVerify(name) && unlink(path.c_str()) == 0;
  if (!isRemoved) {
    m_sink({FindingKind::Leftover, path, {}});
  }
}

/// Of a mere part of a suite, only what is named after one of its reports can be told apart from
/// the outputs of the other parts: Cash_2.html is of the report Cash, CashFlow.html may not be.
bool OutputInventory::isToBeTold(std::string_view name) {
  if (!m_reports) {
    m_reports = allReports(m_request.found);
  }
  const StemIndex::Stem* const owner = m_reports->longest(name);
  if (owner == nullptr) {
    return m_request.scope.isWholeSuite && m_request.scope.saysUnclaimed;
  }
  const auto next =
      static_cast<unsigned char>(owner->text.size() < name.size() ? name[owner->text.size()] : '.');
  const bool isSetOff = next < 0x80 && std::isalnum(next) == 0;
  return m_request.scope.asksFor(owner->report) && (m_request.scope.isWholeSuite || isSetOff);
}

/// An expected name that is `folded` but for its case; null if there is none.
const std::string* OutputInventory::expectedLike(Folder& folder, std::string_view folded) const {
  if (!folder.folded) {
    folder.folded.emplace();
    for (const auto& [name, claim] : folder.expected) {
      folder.folded->emplace(foldedName(name), &name);
    }
  }
  const auto found = folder.folded->find(std::string(folded));
  return found != folder.folded->end() ? found->second : nullptr;
}
