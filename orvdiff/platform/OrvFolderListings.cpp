// When is a listing still right? A file system changes a folder's modification time whenever an
// entry is added, removed or renamed, so equal time stamps mean equal entries, except in two cases,
// and both are ruled out before a listing is reused.
//
// 1. The path means another folder now: the old one was renamed, a link was turned, or the process
//    changed its working folder. So device and inode number must be those of the listing, too. The
//    change time is compared as well, because a program can set the modification time back, but not
//    the change time.
// 2. Time stamps are coarse. If an entry is added after a folder is read, but in the same tick of
//    the file system's clock as its last change, the time stamp stays the same. So a listing is
//    reused only if the folder had "settled" when it was read: its last change was more than
//    kSettleSeconds ago, longer than any tick. Every later change then gets a later time stamp. A
//    folder that changed just now is read each time until it has settled.
//
// The time stamps are taken before the folder is read. A change in between shows up as a difference
// at the next call; taken afterwards, they would vouch for a listing that lacks the change.

#include "orvdiff/platform/OrvFolderListings.h"

#include <dirent.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <memory>
#include <string_view>

#include "orvdiff/platform/OrvSystemError.h"

namespace orvdiff::detail {

namespace {

constexpr std::size_t kMostFolders = 256;  // beyond that, start over: memory stays bounded

/// The coarsest file systems in use have ticks of two seconds.
constexpr std::time_t kSettleSeconds = 3;

bool areEqual(const timespec& one, const timespec& other) {
  return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

bool isUnchanged(const struct stat& before, const struct stat& now) {
  return before.st_dev == now.st_dev && before.st_ino == now.st_ino &&
         areEqual(before.st_mtim, now.st_mtim) && areEqual(before.st_ctim, now.st_ctim);
}

bool hasSettled(const struct stat& folder) {
  const std::time_t changed = std::max(folder.st_mtim.tv_sec, folder.st_ctim.tv_sec);
  return std::time(nullptr) - changed > kSettleSeconds;
}

/// Whether the last call failed because there is no such folder, or cannot be one (the name is too
/// long, or a loop of links). That is not an error.
bool isAbsent() {
  return errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG || errno == ELOOP;
}

[[noreturn]] void raiseUnreadable(const char* folder) {
  const int code = errno;  // before another call changes it
  OrvSystemError::raise("The folder " + std::string(folder) + " cannot be read", code, VEL_HERE);
}

std::vector<std::string> readNames(const char* folder) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder), closedir);
  if (open == nullptr && !isAbsent()) {
    raiseUnreadable(folder);
  }
  errno = 0;
  while (const dirent* const entry = open ? readdir(open.get()) : nullptr) {
    const std::string_view name(entry->d_name);
    if (name != "." && name != "..") {
      names.emplace_back(name);
    }
    errno = 0;
  }
  if (open != nullptr && errno != 0) {
    raiseUnreadable(folder);
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

const std::vector<std::string>& OrvFolderListings::list(const std::string& folder) {
  static const std::vector<std::string> kNoNames;
  const char* const path = folder.empty() ? "." : folder.c_str();
  struct stat now = {};
  if (stat(path, &now) != 0) {
    if (!isAbsent()) {
      raiseUnreadable(path);
    }
    return kNoNames;
  }
  const auto known = m_listings.find(folder);
  if (known != m_listings.end() && known->second.reusable &&
      isUnchanged(known->second.identity, now)) {
    return known->second.names;
  }
  if (m_listings.size() >= kMostFolders) {
    m_listings.clear();
  }
  const bool reusable = hasSettled(now);  // judged before reading
  std::vector<std::string> names = readNames(path);
  Listing& listing = m_listings[folder];
  listing = {now, reusable, std::move(names)};
  return listing.names;
}

}  // namespace orvdiff::detail
