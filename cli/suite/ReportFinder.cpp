#include "cli/suite/ReportFinder.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include "cli/config/FindConfig.h"
#include "cli/suite/FoldedName.h"
#include "cli/suite/FolderReader.h"
#include "cli/suite/MissingReason.h"
#include "cli/suite/PairOwners.h"
#include "cli/suite/SuiteBounds.h"
#include "cli/suite/SuiteLayout.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

[[noreturn]] void raiseSystemError(const fs::path& path, int error) {
  throw CommandError(path.string() + ": " + std::generic_category().message(error));
}

struct stat statusOf(const fs::path& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    throw CommandError((path.empty() ? "\"\"" : path.string()) + ' ' + missingReason(path));
  }
  return status;
}

void requireReadable(const fs::path& path) {
  if (access(path.c_str(), R_OK) != 0) {
    raiseSystemError(path, errno);
  }
}

FolderId identify(const fs::path& folder) {
  const struct stat status = statusOf(folder.empty() ? "." : folder);
  return {status.st_dev, status.st_ino};
}

/// The names of all entries of a folder that are not hidden.
struct FolderContents {
  std::vector<std::string> files;
  std::vector<std::string> folders;
  bool hasMasters = false;
};

enum class Kind { File, Folder, Other };

Kind kindOf(const dirent& entry, const fs::path& folder) {
  if (entry.d_type == DT_REG || entry.d_type == DT_DIR) {
    return entry.d_type == DT_REG ? Kind::File : Kind::Folder;
  }
  const struct stat status = statusOf(folder / entry.d_name);
  return S_ISREG(status.st_mode)   ? Kind::File
         : S_ISDIR(status.st_mode) ? Kind::Folder
                                   : Kind::Other;
}

FolderContents readFolder(const fs::path& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder.empty() ? "." : folder.c_str()),
                                                 closedir);
  if (open == nullptr) {
    raiseSystemError(folder, errno);
  }
  FolderContents contents;
  errno = 0;
  while (const dirent* const entry = readdir(open.get())) {
    const std::string_view name = entry->d_name;
    if (name.front() == '.') {
      continue;
    }
    const Kind kind = kindOf(*entry, folder);
    if (kind == Kind::File && name != kConfigName) {
      contents.files.emplace_back(name);
    } else if (kind == Kind::Folder && name == suiteLayout().masterFolder) {
      contents.hasMasters = true;
    } else if (kind == Kind::Folder) {
      contents.folders.emplace_back(name);
    }
    errno = 0;
  }
  if (errno != 0) {
    raiseSystemError(folder, errno);
  }
  std::sort(contents.folders.begin(), contents.folders.end());
  return contents;
}

class Finder {
 public:
  void add(const std::string& location) {
    const fs::path path = location == "." ? fs::path() : fs::path(location);
    const struct stat status = statusOf(location);
    if (S_ISDIR(status.st_mode)) {
      m_prefixLength = (path / "").native().size();
      if (!search(path)) {
        m_found.emptyLocations.push_back(location);
      }
    } else if (!S_ISREG(status.st_mode)) {
      throw CommandError(location + " is neither a file nor a folder");
    } else {
      requireReadable(location);
      m_reports.push_back({identify(path.parent_path()), path.filename(), path, path.filename()});
      m_named[location.substr(0, location.rfind('/') + 1)].emplace_back(stemOf(location));
    }
  }

  /// Every report once, under the path at which it was first found.
  FoundReports finish() && {
    if (!m_named.empty()) {  // only then can a report be found twice
      removeRepeated();
    }
    std::sort(m_reports.begin(), m_reports.end(),
              [](const Report& a, const Report& b) { return a.path < b.path; });
    for (Report& report : m_reports) {
      m_found.reports.push_back(std::move(report.path));
      m_found.pathsInLocation.push_back(std::move(report.pathInLocation));
    }
    for (const auto& [folder, stems] : m_named) {
      addNeighbours(folder, stems);
    }
    return std::move(m_found);
  }

 private:
  /// Searches a folder and returns whether it contains a report. A folder that was searched before
  /// is skipped, since links may form a cycle, and counts as containing one.
  bool search(const fs::path& folder) {
    const FolderId id = identify(folder);
    if (!m_searched.insert(id).second) {
      return true;  // if it has none, it was recorded as empty the first time
    }
    const FolderContents contents = readFolder(folder);
    if (contents.hasMasters) {
      requireReadable(folder / suiteLayout().masterFolder);
      m_found.masterFolders.push_back(folder / suiteLayout().masterFolder);
      const std::string prefix = folder / "";
      for (const std::string& file : contents.files) {
        const std::string report = prefix + file;
        m_reports.push_back({id, file, report, report.substr(m_prefixLength)});
      }
    }
    bool hasReports = contents.hasMasters && !contents.files.empty();
    for (const std::string& subFolder : contents.folders) {
      if (foldedName(subFolder) == m_foldedMasterFolder) {
        m_found.misnamedMasterFolders.push_back(folder / subFolder);
      }
      hasReports = search(folder / subFolder) || hasReports;
    }
    return hasReports;
  }

  void addNeighbours(const std::string& folder, const std::vector<std::string>& stems) {
    const auto& reports = m_found.reports;
    std::error_code unreadable;  // then there are none to add
    for (const auto& entry : fs::directory_iterator(folder.empty() ? "." : folder, unreadable)) {
      const std::string path = folder + entry.path().filename().string();
      const bool mayShareMasters = std::any_of(
          stems.begin(), stems.end(),
          [&path](const std::string& stem) { return path.compare(0, stem.size(), stem) == 0; });
      if (mayShareMasters && entry.is_regular_file(unreadable) &&
          !std::binary_search(reports.begin(), reports.end(), path)) {
        m_found.neighbours.push_back(path);
      }
    }
  }

  struct Report {
    FolderId folder;
    std::string name;
    std::string path;
    std::string pathInLocation;
  };

  void removeRepeated() {
    const auto place = [](const Report& report) { return std::tie(report.folder, report.name); };
    std::stable_sort(m_reports.begin(), m_reports.end(),
                     [&](const Report& a, const Report& b) { return place(a) < place(b); });
    const auto end =
        std::unique(m_reports.begin(), m_reports.end(),
                    [&](const Report& a, const Report& b) { return place(a) == place(b); });
    m_reports.erase(end, m_reports.end());
  }

  const std::string m_foldedMasterFolder = foldedName(suiteLayout().masterFolder);
  std::size_t m_prefixLength = 0;  ///< of the paths of reports in the current location
  std::set<FolderId> m_searched;
  std::vector<Report> m_reports;
  /// Stems of the reports that were named by their file, by folder (as given, with its slash).
  std::map<std::string, std::vector<std::string>> m_named;
  FoundReports m_found;
};

}  // namespace

FoundReports findReports(const std::vector<std::string>& locations) {
  Finder finder;
  for (const std::string& location : locations) {
    finder.add(location);
  }
  FoundReports found = std::move(finder).finish();
  found.isWholeSuite = areWholeSuite(locations);
  return found;
}
