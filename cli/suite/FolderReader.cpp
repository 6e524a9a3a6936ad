#include "cli/suite/FolderReader.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

namespace {

EntryKind kindOf(const dirent& entry, int folder) {
  if (entry.d_type == DT_REG || entry.d_type == DT_DIR) {
    return entry.d_type == DT_REG ? EntryKind::File : EntryKind::Folder;
  }
  struct stat status = {};
  if (fstatat(folder, entry.d_name, &status, 0) != 0) {
    return EntryKind::Other;
  }
  return S_ISREG(status.st_mode)   ? EntryKind::File
         : S_ISDIR(status.st_mode) ? EntryKind::Folder
                                   : EntryKind::Other;
}

}  // namespace

int readEntries(const std::string& folder,
                const std::function<void(std::string_view name, EntryKind kind)>& take) {
  // Not fs::directory_iterator, which ends the program when it lacks memory.
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder.empty() ? "." : folder.c_str()),
                                                 closedir);
  if (open == nullptr) {
    return errno;
  }
  errno = 0;
  while (const dirent* const entry = readdir(open.get())) {
    if (entry->d_name[0] != '.') {
      take(entry->d_name, kindOf(*entry, dirfd(open.get())));
    }
    errno = 0;
  }
  return errno;
}

FolderId folderId(const std::string& folder) {
  struct stat status = {};
  const bool isFolder =
      stat(folder.empty() ? "." : folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
  return isFolder ? FolderId{status.st_dev, status.st_ino} : FolderId{};
}
