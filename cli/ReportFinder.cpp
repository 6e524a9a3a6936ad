#include "cli/ReportFinder.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <set>
#include <string_view>
#include <system_error>
#include <tuple>
#include <utility>

#include "cli/Trouble.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kMasterFolder = "Masters";

[[noreturn]] void raiseSystemError(const fs::path& path, int error) {
  throw Trouble(path.string() + ": " + std::generic_category().message(error));
}

struct stat statusOf(const fs::path& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) {
    raiseSystemError(path, errno);
  }
  return status;
}

/// What identifies a folder, by whichever path it is reached.
using FolderId = std::pair<dev_t, ino_t>;

FolderId identify(const fs::path& folder) {
  const struct stat status = statusOf(folder.empty() ? "." : folder);
  return {status.st_dev, status.st_ino};
}

/// What a folder holds, by name; hidden entries are left out.
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
  std::error_code unreachable;  // a link to nothing is neither file nor folder
  switch (fs::status(folder / entry.d_name, unreachable).type()) {
    case fs::file_type::regular:
      return Kind::File;
    case fs::file_type::directory:
      return Kind::Folder;
    default:
      return Kind::Other;
  }
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
    if (kind == Kind::File) {
      contents.files.emplace_back(name);
    } else if (kind == Kind::Folder && name == kMasterFolder) {
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
      search(path);
    } else if (!S_ISREG(status.st_mode)) {
      throw Trouble(location + ": neither a file nor a folder");
    } else if (access(location.c_str(), R_OK) != 0) {
      raiseSystemError(path, errno);
    } else {
      m_reports.push_back({identify(path.parent_path()), path.filename(), path});
      m_mayRepeat = true;
    }
  }

  /// Every report once, by the path at which it was found first.
  std::vector<std::string> sortedReports() && {
    if (m_mayRepeat) {
      removeRepeated();
    }
    std::vector<std::string> paths;
    for (Report& report : m_reports) {
      paths.push_back(std::move(report.path));
    }
    std::sort(paths.begin(), paths.end());
    return paths;
  }

 private:
  /// Searches a folder that was not searched before. Links may lead round in a circle.
  void search(const fs::path& folder) {
    const FolderId id = identify(folder);
    if (!m_searched.insert(id).second) {
      return;
    }
    const FolderContents contents = readFolder(folder);
    if (contents.hasMasters) {
      const std::string prefix = folder / "";
      for (const std::string& file : contents.files) {
        m_reports.push_back({id, file, prefix + file});
      }
    }
    for (const std::string& subFolder : contents.folders) {
      search(folder / subFolder);
    }
  }

  struct Report {
    FolderId folder;
    std::string name;
    std::string path;
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

  std::set<FolderId> m_searched;
  std::vector<Report> m_reports;
  bool m_mayRepeat = false;  ///< a search alone finds nothing twice
};

}  // namespace

std::vector<std::string> findReports(const std::vector<std::string>& locations) {
  Finder finder;
  for (const std::string& location : locations) {
    finder.add(location);
  }
  return std::move(finder).sortedReports();
}
