#include "cli/baseline/Journal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <exception>
#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "cli/baseline/SafeFiles.h"
#include "cli/record/ContentHash.h"
#include "cli/suite/FolderReader.h"
#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kEntries = "/entries";
constexpr const char* kContent = "/content";
constexpr const char* kLock = "/.lock";
constexpr const char* kIgnore = "/.gitignore";
constexpr std::string_view kEnding = ".json";
constexpr const char* kUnflushed = ".new";

[[noreturn]] void raise(const std::string& folder, const std::string& reason) {
  throw CommandError("the journal " + folder + " cannot be written: " + reason +
                     "; --journal DIR keeps it elsewhere");
}

std::uint64_t idOf(std::string_view name) {
  std::uint64_t id = 0;
  const char* const end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, id);
  const bool isEntry = error == std::errc() &&
                       std::string_view(stop, static_cast<std::size_t>(end - stop)) == kEnding;
  return isEntry ? id : 0;
}

std::string realFolderAbove(const std::string& folder) {
  std::error_code error;
  fs::path path = fs::absolute(folder, error);
  if (!error) {
    path = fs::weakly_canonical(path, error);
  }
  if (error) {  // guessing would write wrong paths into the entries
    throw CommandError("the journal " + folder + " cannot be found: " + error.message());
  }
  return path.parent_path().string();
}

}  // namespace

Journal::Journal(std::string folder)
    : m_folder(std::move(folder)), m_top(realFolderAbove(m_folder)) {}

Journal::~Journal() {
  if (m_lock >= 0) {
    close(m_lock);
  }
}

bool Journal::isThere(const std::string& folder) {
  return folderId(folder + kEntries) != FolderId{};
}

void Journal::lock() {
  std::error_code error;
  for (const char* const inner : {kEntries, kContent}) {
    if (!error) {
      fs::create_directories(m_folder + inner, error);
    }
  }
  if (error) {
    raise(m_folder, error.message());
  }
  m_lock = open((m_folder + kLock).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (m_lock < 0) {
    raise(m_folder, std::generic_category().message(errno));
  }
  if (flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
    throw CommandError(errno == EWOULDBLOCK
                           ? "another orvdiff is changing masters with the journal " + m_folder +
                                 "; wait until it has ended"
                           : "the journal " + m_folder +
                                 " cannot be locked: " + std::generic_category().message(errno));
  }
  if (access((m_folder + kIgnore).c_str(), F_OK) != 0) {  // it is new
    error = writeTemporary(m_folder + kIgnore, "*\n", std::nullopt, nullptr);
    error = error ? error : flushToDisk(m_folder);
    error = error ? error : flushToDisk(folderAbove(m_folder));
  }
  if (error) {
    raise(m_folder, error.message());
  }
}

bool Journal::isLockedByAnother() const {
  const int lock = open((m_folder + kLock).c_str(), O_RDONLY | O_CLOEXEC);
  if (lock < 0) {
    return false;
  }
  const bool isBusy = flock(lock, LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  close(lock);
  return isBusy;
}

Journal::Entries Journal::entries() const {
  std::vector<std::uint64_t> ids;
  const std::string folder = m_folder + kEntries;
  const int failed = readEntries(folder, [&ids](std::string_view name, EntryKind /*kind*/) {
    if (const std::uint64_t id = idOf(name); id != 0) {
      ids.push_back(id);
    }
  });
  if (failed != 0) {
    throw CommandError(folder + ": " + std::generic_category().message(failed));
  }
  std::sort(ids.begin(), ids.end());
  Entries found;
  for (const std::uint64_t id : ids) {
    found.last = id;
    try {
      std::error_code error;
      const std::string text = readWhole(entryPath(id), error);
      JournalEntry entry =
          error ? throw std::runtime_error(error.message()) : entryFromText(text, m_top);
      if (entry.id != id) {
        throw std::runtime_error("it is of command " + std::to_string(entry.id));
      }
      found.whole.push_back(std::move(entry));
    } catch (const std::exception& error) {
      found.damaged[id] = entryPath(id) + " is damaged: " + error.what();
    }
  }
  return found;
}

void Journal::write(const JournalEntry& entry) {
  const std::string path = entryPath(entry.id);
  const std::string temporary = path + kUnflushed;
  std::error_code error = writeTemporary(temporary, toText(entry, m_top), std::nullopt, nullptr);
  error = error ? error : flushToDisk(temporary);
  error = error ? error : moveFile(temporary, path);
  error = error ? error : flushToDisk(m_folder + kEntries);
  if (error) {
    raise(m_folder, error.message());
  }
}

void Journal::remove(std::uint64_t id) {
  if (const std::error_code error = removeFile(entryPath(id))) {
    raise(m_folder, error.message());
  }
}

void Journal::keep(const std::string& hash, std::string_view bytes) {
  const std::string path = contentPath(hash);
  std::error_code unreadable;
  if (m_unflushed.count(hash) != 0) {
    return;
  }
  if (contentHash(readWhole(path, unreadable)) == hash && !unreadable) {
    return;
  }
  if (const std::error_code error =
          writeTemporary(path + kUnflushed, bytes, std::nullopt, nullptr)) {
    raise(m_folder, error.message());
  }
  m_unflushed.insert(hash);
}

void Journal::flushContents() {
  std::error_code error;
  for (const std::string& hash : m_unflushed) {
    error = error ? error : flushToDisk(contentPath(hash) + kUnflushed);
  }
  for (const std::string& hash : m_unflushed) {
    error = error ? error : moveFile(contentPath(hash) + kUnflushed, contentPath(hash));
  }
  error = error || m_unflushed.empty() ? error : flushToDisk(m_folder + kContent);
  m_unflushed.clear();
  if (error) {
    raise(m_folder, error.message());
  }
}

std::string Journal::content(const std::string& hash) const {
  std::error_code error;
  std::string bytes = readWhole(contentPath(hash), error);
  if (error) {
    throw CommandError("its former bytes, " + contentPath(hash) +
                       ", cannot be read: " + error.message());
  }
  if (contentHash(bytes) != hash) {
    throw CommandError("its former bytes, " + contentPath(hash) + ", are damaged");
  }
  return bytes;
}

void Journal::trim(std::size_t count) {
  const Entries all = entries();
  if (!all.damaged.empty() || all.whole.size() <= count) {
    return;
  }
  std::vector<JournalEntry> kept(all.whole.end() - static_cast<std::ptrdiff_t>(count),
                                 all.whole.end());
  for (std::size_t i = 0; i < all.whole.size() - count; ++i) {
    remove(all.whole[i].id);
  }
  removeUnneeded(kept);
}

void Journal::removeUnneeded(const std::vector<JournalEntry>& kept) {
  std::set<std::string, std::less<>> needed;
  for (const JournalEntry& entry : kept) {
    for (const JournalFile& file : entry.files) {
      needed.insert(file.before);
    }
  }
  std::vector<std::string> unneeded;
  readEntries(m_folder + kContent, [&](std::string_view name, EntryKind /*kind*/) {
    if (needed.count(name) == 0) {
      unneeded.emplace_back(name);
    }
  });
  for (const std::string& name : unneeded) {
    removeFile(contentPath(name));  // if it stays, it does no harm
  }
}

std::string Journal::entryPath(std::uint64_t id) const {
  return m_folder + kEntries + '/' + std::to_string(id) + std::string(kEnding);
}

std::string Journal::contentPath(const std::string& hash) const {
  return m_folder + kContent + '/' + hash;
}
