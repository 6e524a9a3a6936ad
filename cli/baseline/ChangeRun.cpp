#include "cli/baseline/ChangeRun.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>
#include <utility>

#include "cli/baseline/Journal.h"
#include "cli/baseline/SafeFiles.h"
#include "cli/record/ContentHash.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

constexpr mode_t kPermissions = 07777;

bool isWithin(const std::string& path, const std::string& folder) {
  return folder.empty() || folder == "/" ||
         (path.compare(0, folder.size(), folder) == 0 && path[folder.size()] == '/');
}

bool isSameMoment(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

}  // namespace

ChangeRun::ChangeRun(const JournalPlace& place, const std::vector<MasterChange>& changes,
                     const ContentSource& source)
    : m_place(place), m_changes(changes), m_source(source), m_targets(changes.size()) {
  for (const MasterChange& change : changes) {
    m_report.outcomes.push_back({Kind::Done, change.master, {}});
  }
}

void ChangeRun::close(std::size_t i, Kind kind, std::string why) {
  m_report.outcomes[i].kind = kind;
  m_report.outcomes[i].why = std::move(why);
}

void ChangeRun::fail(std::size_t i, const char* doing, const std::error_code& error) {
  close(i, Kind::Failed, std::string(doing) + ": " + error.message());
}

bool ChangeRun::hasWork() const {
  return m_report.count(Kind::Done) > 0;
}

void ChangeRun::inspect() {
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    resolve(i);
  }
  closeRivals();
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (isOpen(i)) {
      inspect(i);
    }
    if (isOpen(i)) {
      requireWritable(i);
    }
  }
}

void ChangeRun::tryContents() {
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (isOpen(i) && !m_changes[i].after.empty()) {
      contentOf(i);
    }
  }
}

/// Finds the file that the change is about.
void ChangeRun::resolve(std::size_t i) {
  Target& target = m_targets[i];
  const std::string& master = m_changes[i].master;
  struct stat link = {};
  const bool hasName = lstat(master.c_str(), &link) == 0;
  if (!hasName && errno != ENOENT && errno != ENOTDIR) {
    return fail(i, "it cannot be looked at", {errno, std::generic_category()});
  }
  if (hasName && S_ISLNK(link.st_mode) &&
      (m_changes[i].after.empty() || m_changes[i].before.empty())) {
    return close(i, Kind::Refused, "it is a link; only a person can tell what is to become of it");
  }
  target.isThere = hasName && stat(master.c_str(), &target.status) == 0;
  std::error_code error;
  target.path = hasName && S_ISLNK(link.st_mode) ? fs::canonical(master, error).string()
                                                 : realPath(master, error);
  if (error) {
    return fail(i, "its folder cannot be found", error);
  }
  if (!m_changes[i].mayBeOutside && !isWithin(target.path, m_place.top)) {
    close(i, Kind::Refused, "it lies outside of the suite " + m_place.top + ", at " + target.path);
  }
}

/// The path of what is no link itself, but may lie behind some.
std::string ChangeRun::realPath(const std::string& master, std::error_code& error) {
  const std::string folder = folderAbove(master);
  const auto [place, isNew] = m_realFolders.try_emplace(folder);
  if (isNew) {
    place->second = fs::weakly_canonical(fs::absolute(folder, error), error).string();
  }
  return (place->second == "/" ? "" : place->second) + '/' + master.substr(master.rfind('/') + 1);
}

/// Two changes of one file that come to the same are one; else nobody can tell which is meant.
void ChangeRun::closeRivals() {
  std::map<std::string, std::vector<std::size_t>> changesOf;
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (isOpen(i)) {
      changesOf[m_targets[i].path].push_back(i);
    }
  }
  for (const auto& [path, numbers] : changesOf) {
    const MasterChange& first = m_changes[numbers.front()];
    const auto rival = std::find_if(numbers.begin(), numbers.end(), [&](std::size_t i) {
      return m_changes[i].after != first.after;
    });
    for (const std::size_t i : numbers) {
      if (rival != numbers.end()) {
        close(i, Kind::Refused,
              "two outputs with different contents want to become this master: " + first.source +
                  " and " + m_changes[*rival].source);
      } else if (i != numbers.front()) {
        close(i, Kind::AlreadySo, "it is the same master as another, and becomes the same");
      }
    }
  }
}

/// Compares the master with what it should be before the change.
void ChangeRun::inspect(std::size_t i) {
  const MasterChange& change = m_changes[i];
  const Target& target = m_targets[i];
  std::string now;
  if (target.isThere) {
    std::error_code error;
    now = contentHash(readWhole(target.path, error));
    if (error) {
      return fail(i, "it cannot be read", error);
    }
  }
  if (now == change.after) {
    close(i, Kind::AlreadySo, now.empty() ? "it is not there any more" : "it is so already");
  } else if (now.empty()) {
    if (!change.before.empty()) {
      close(i, Kind::Refused, "it is not there any more");
    }
  } else if (change.before.empty()) {
    close(i, Kind::Refused, "there is one already, with another content");
  } else if (now != change.before) {
    close(i, Kind::Refused, "it has changed since it was compared");
  }
}

/// So that a dry run and the question to the user tell of it; the file's own permissions do not
/// matter, as another file takes its place.
void ChangeRun::requireWritable(std::size_t i) {
  std::string folder = folderAbove(m_targets[i].path);
  while (access(folder.c_str(), F_OK) != 0 && errno == ENOENT) {
    folder = folderAbove(folder);
  }
  if (access(folder.c_str(), W_OK | X_OK) != 0) {
    fail(i, ("the folder " + folder + " cannot be written").c_str(),
         {errno, std::generic_category()});
  }
}

/// The bytes that a master is to become; if they cannot be had, the change is out.
std::string ChangeRun::contentOf(std::size_t i) {
  try {
    std::string bytes = m_source(m_changes[i]);
    if (contentHash(bytes) == m_changes[i].after) {
      return bytes;
    }
    close(i, Kind::Refused, "its output has changed since it was compared");
  } catch (const CommandError& error) {
    close(i, Kind::Refused, error.what());
  }
  return {};
}

void ChangeRun::keepFormer(Journal& journal) {
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (!isOpen(i) || m_changes[i].before.empty()) {
      continue;
    }
    std::error_code error;
    const std::string bytes = readWhole(m_targets[i].path, error);
    if (error) {
      fail(i, "it cannot be read", error);
    } else if (contentHash(bytes) != m_changes[i].before) {
      close(i, Kind::Refused, "it has changed just now");
    } else {
      journal.keep(m_changes[i].before, bytes);
    }
  }
  journal.flushContents();
}

std::vector<JournalFile> ChangeRun::files() const {
  std::vector<JournalFile> files;
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (isOpen(i)) {
      const Target& target = m_targets[i];
      files.push_back({target.path, m_changes[i].before, m_changes[i].after,
                       target.isThere ? target.status.st_mode & kPermissions : 0});
    }
  }
  return files;
}

std::vector<std::string> ChangeRun::missingFolders() const {
  std::set<std::string> missing;  // a folder sorts before what is in it
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    std::string folder = folderAbove(m_targets[i].path);
    while (isOpen(i) && access(folder.c_str(), F_OK) != 0 && missing.insert(folder).second) {
      folder = folderAbove(folder);
    }
  }
  return {missing.begin(), missing.end()};
}

std::string ChangeRun::temporaryFor(const std::string& path, std::uint64_t id, std::size_t number) {
  return folderAbove(path) + "/.orvdiff-" + std::to_string(id) + '-' + std::to_string(number);
}

void ChangeRun::prepare(std::uint64_t id) {
  for (const std::string& folder : missingFolders()) {
    std::error_code inTheWay;
    if (fs::create_directory(folder, inTheWay)) {  // without it, the files in it fail
      flushToDisk(folderAbove(folder));
    }
  }
  std::size_t number = 0;
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (!isOpen(i)) {
      continue;
    }
    Target& target = m_targets[i];
    const std::string temporary = temporaryFor(target.path, id, number++);
    if (m_changes[i].after.empty()) {
      continue;
    }
    const std::string bytes = contentOf(i);
    if (!isOpen(i)) {
      continue;
    }
    const auto mode =
        target.isThere ? std::optional(target.status.st_mode & kPermissions) : m_changes[i].mode;
    if (const std::error_code error =
            writeTemporary(temporary, bytes, mode, target.isThere ? &target.status : nullptr)) {
      fail(i, "its new content cannot be written", error);
    } else {
      target.temporary = temporary;
    }
  }
}

void ChangeRun::finish() {
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (isOpen(i) && !m_changes[i].after.empty()) {
      if (const std::error_code error = flushToDisk(m_targets[i].temporary)) {
        fail(i, "its new content cannot be flushed to the disk", error);
      }
    }
  }
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (isOpen(i)) {
      replace(i);
    }
    if (!isOpen(i) && !m_targets[i].temporary.empty()) {
      removeFile(m_targets[i].temporary);
    }
  }
  flushFolders();
}

/// Whether the file is the one that was inspected: somebody may have written it meanwhile.
bool ChangeRun::isUnchanged(const Target& target) const {
  struct stat now = {};
  if (lstat(target.path.c_str(), &now) != 0) {
    return !target.isThere && errno == ENOENT;
  }
  return target.isThere && now.st_dev == target.status.st_dev &&
         now.st_ino == target.status.st_ino && now.st_size == target.status.st_size &&
         isSameMoment(now.st_mtim, target.status.st_mtim);
}

void ChangeRun::replace(std::size_t i) {
  const Target& target = m_targets[i];
  if (!isUnchanged(target)) {
    return close(i, Kind::Refused, "it has changed just now");
  }
  const bool isRemoved = m_changes[i].after.empty();
  if (const std::error_code error =
          isRemoved ? removeFile(target.path) : moveFile(target.temporary, target.path)) {
    fail(i, isRemoved ? "it cannot be removed" : "it cannot be replaced", error);
  }
}

void ChangeRun::flushFolders() {
  std::set<std::string> folders;
  for (std::size_t i = 0; i < m_changes.size(); ++i) {
    if (isOpen(i)) {
      folders.insert(folderAbove(m_targets[i].path));
    }
  }
  for (const std::string& folder : folders) {
    if (const std::error_code error = flushToDisk(folder)) {
      m_report.problems.push_back("the folder " + folder +
                                  " cannot be flushed to the disk: " + error.message() +
                                  "; its masters are changed, but may not survive a power failure");
    }
  }
}
