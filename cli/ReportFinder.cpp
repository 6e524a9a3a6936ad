#include "cli/ReportFinder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>
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

struct FolderContents {
  std::vector<fs::path> files;
  std::vector<fs::path> folders;
  bool hasMasters = false;
};

void sortEntry(const fs::directory_entry& entry, const fs::path& path, FolderContents& contents) {
  std::error_code unreachable;  // a link to nothing is neither file nor folder
  if (entry.is_directory(unreachable)) {
    const bool isMasters = path.filename() == kMasterFolder;
    contents.hasMasters = contents.hasMasters || isMasters;
    if (!isMasters) {
      contents.folders.push_back(path);
    }
  } else if (entry.is_regular_file(unreachable)) {
    contents.files.push_back(path);
  }
}

FolderContents readFolder(const fs::path& folder) {
  FolderContents contents;
  std::error_code error;
  fs::directory_iterator entry(folder.empty() ? "." : folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const fs::path name = entry->path().filename();
    if (name.native().front() != '.') {
      sortEntry(*entry, folder / name, contents);
    }
  }
  if (error) {
    throw Trouble(folder.string() + ": " + error.message());
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
      addReport(identify(path.parent_path()), path);
    }
  }

  std::vector<std::string> sortedReports() const {
    std::vector<std::string> paths;
    for (const auto& [id, path] : m_reports) {
      paths.push_back(path);
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
      for (const fs::path& file : contents.files) {
        addReport(id, file);
      }
    }
    for (const fs::path& subFolder : contents.folders) {
      search(subFolder);
    }
  }

  void addReport(const FolderId& folder, const fs::path& file) {
    m_reports.emplace(std::make_tuple(folder, file.filename().string()), file.string());
  }

  std::set<FolderId> m_searched;
  std::map<std::tuple<FolderId, std::string>, std::string> m_reports;
};

}  // namespace

std::vector<std::string> findReports(const std::vector<std::string>& locations) {
  Finder finder;
  for (const std::string& location : locations) {
    finder.add(location);
  }
  return finder.sortedReports();
}
