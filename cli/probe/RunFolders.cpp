#include "cli/probe/RunFolders.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <system_error>

#include "cli/suite/FolderReader.h"
#include "cli/suite/MissingReason.h"
#include "cli/system/CommandError.h"

namespace {

constexpr std::size_t kMostRuns = 64;

/// Lists one run. A folder that links lead back to is not entered again.
class RunListing {
 public:
  RunListing(const std::string& root, const std::string& tail) : m_root(root), m_tail(tail) {
    list("");
  }

  const std::vector<std::string>& names() const { return m_names; }
  std::size_t others() const { return m_others; }

 private:
  void list(const std::string& folder) {
    const std::string path = m_root + (folder.empty() ? "" : "/" + folder);
    const FolderId id = folderId(path);
    if (std::find(m_entered.begin(), m_entered.end(), id) != m_entered.end()) {
      return;
    }
    m_entered.push_back(id);
    std::vector<std::string> below;
    const int error = readEntries(path, [&](std::string_view entry, EntryKind kind) {
      const std::string name = (folder.empty() ? "" : folder + '/') + std::string(entry);
      if (kind == EntryKind::Folder) {
        below.push_back(name);
      } else if (kind == EntryKind::File) {
        addFile(name);
      }
    });
    if (error != 0) {
      throw CommandError(path + " cannot be read: " + std::generic_category().message(error));
    }
    for (const std::string& next : below) {
      list(next);
    }
    m_entered.pop_back();
  }

  void addFile(const std::string& name) {
    const bool isWanted = name.size() > m_tail.size() &&
                          name.compare(name.size() - m_tail.size(), m_tail.size(), m_tail) == 0;
    if (isWanted) {
      m_names.push_back(name);
    } else {
      ++m_others;
    }
  }

  const std::string& m_root;
  const std::string& m_tail;
  std::vector<FolderId> m_entered;  ///< from the root to where it is
  std::vector<std::string> m_names;
  std::size_t m_others = 0;
};

void requireDistinctFolders(const std::vector<std::string>& folders) {
  std::map<FolderId, std::string> seen;
  for (const std::string& folder : folders) {
    const FolderId id = folderId(folder);
    if (id == FolderId{}) {
      const std::string reason = missingReason(folder);
      const bool isGone = reason.rfind("does not exist", 0) == 0;
      throw CommandError(folder + ' ' + (isGone ? reason : "is not a folder"));
    }
    const auto [former, isNew] = seen.emplace(id, folder);
    if (!isNew) {
      throw CommandError(former->second + " and " + folder +
                         " are the same folder; probe compares different runs");
    }
  }
}

}  // namespace

std::string RunFolders::pathOf(std::size_t run, std::size_t file) const {
  return folders[run] + '/' + files[file];
}

RunFolders findRunFiles(std::vector<std::string> folders, const std::string& tail) {
  if (folders.size() < 2 || folders.size() > kMostRuns) {
    throw CommandError("probe compares 2 to " + std::to_string(kMostRuns) + " runs");
  }
  requireDistinctFolders(folders);
  RunFolders found;
  std::map<std::string, std::vector<std::size_t>> runsOf;
  for (std::size_t run = 0; run < folders.size(); ++run) {
    const RunListing listing(folders[run], tail);
    for (const std::string& name : listing.names()) {
      runsOf[name].push_back(run);
    }
    found.others = run == 0 ? listing.others() : found.others;
  }
  if (runsOf.empty()) {
    throw CommandError("no file in " + folders.front() + " or the other runs ends with " + tail);
  }
  for (auto& [name, runs] : runsOf) {
    if (runs.size() == folders.size()) {
      found.files.push_back(name);
    } else {
      found.strays.emplace_back(name, std::move(runs));
    }
  }
  found.folders = std::move(folders);
  return found;
}
