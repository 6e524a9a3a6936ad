#include "cli/record/RecordWriter.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/record/ContentHash.h"
#include "cli/record/PairJson.h"
#include "cli/record/RecordFolder.h"
#include "cli/record/UnchangedFile.h"
#include "cli/system/CommandError.h"
#include "orvdiff/platform/OrvWholeFile.h"

namespace fs = std::filesystem;

namespace {

[[noreturn]] void raise(const std::string& folder, const std::string& reason) {
  throw CommandError("the record " + folder + " cannot be written: " + reason);
}

int lockFolder(const std::string& folder, const std::string& path) {
  const int lock = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (lock < 0) {
    raise(folder, std::generic_category().message(errno));
  }
  if (flock(lock, LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    close(lock);
    raise(folder, error == EWOULDBLOCK ? "another run is writing there"
                                       : std::generic_category().message(error));
  }
  return lock;
}

/// Raises `CommandError` unless the folder holds nothing but the lock.
void requireEmpty(const std::string& folder) {
  // Not fs::directory_iterator, which ends the program when it lacks memory.
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(folder.c_str()), closedir);
  errno = entries ? 0 : errno;
  while (const dirent* const entry = entries ? readdir(entries.get()) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != ".." && name != kLockFile) {
      raise(folder, "the folder is not empty; name a new one, or remove it first");
    }
  }
  if (errno != 0) {
    raise(folder, std::generic_category().message(errno));
  }
}

}  // namespace

RecordWriter::RecordWriter(std::string folder, const RunRecord& run, const EvidenceLimits& limits)
    : m_folder(std::move(folder)), m_lockPath(m_folder + '/' + kLockFile), m_limits(limits) {
  std::error_code error;
  fs::create_directories(m_folder, error);
  if (error) {
    raise(m_folder, error.message());
  }
  m_lock = lockFolder(m_folder, m_lockPath);
  try {
    requireEmpty(m_folder);
    writeRun(run);
    fs::create_directory(m_folder + '/' + kEvidenceFolder);
    m_pairs.open(m_folder + '/' + kPairsFile, std::ios::binary);
    if (!m_pairs) {
      raise(m_folder, std::generic_category().message(errno));
    }
  } catch (...) {
    unlock();
    throw;
  }
}

RecordWriter::~RecordWriter() {
  unlock();
}

void RecordWriter::unlock() {
  unlink(m_lockPath.c_str());  // while it is still held
  close(m_lock);
}

void RecordWriter::add(PairRecord pair, const std::string& evidenceFolder) {
  if (pair.verdict != Verdict::Passed) {
    pair.masterFile.evidence = keep(pair.master, pair.masterFile, evidenceFolder);
    pair.outputFile.evidence = keep(pair.output, pair.outputFile, evidenceFolder);
  }
  m_pairs << toJsonLine(pair) << '\n';
  m_pairs.flush();
  ++m_pairCount;
  ++m_totals[std::string(wordFor(pair.verdict))];
}

/// Keeps a file's bytes if they are what was compared; returns what the record says of that.
std::string RecordWriter::keep(const std::string& file, const FileFacts& facts,
                               const std::string& folder) {
  if (facts.hash.empty() || !facts.size) {
    return facts.evidence;  // it may say already why there is nothing to keep
  }
  if (m_kept.count(facts.hash) != 0) {
    return kEvidenceKept;
  }
  if (*facts.size > m_limits.perFile) {
    return "left out: larger than " + std::to_string(m_limits.perFile) + " bytes";
  }
  if (m_evidenceSize + *facts.size > m_limits.total) {
    return "left out: the record holds " + std::to_string(m_limits.total) + " bytes at most";
  }
  const std::optional<std::string> bytes =
      readUnchanged(folder.empty() ? file : folder + '/' + facts.hash, facts.hash);
  if (!bytes) {
    return "left out: changed, or not readable any more, since it was compared";
  }
  const std::string path = m_folder + '/' + kEvidenceFolder + '/' + facts.hash;
  if (const std::error_code error = OrvWholeFile::replace(path, *bytes)) {
    m_pairs.setstate(std::ios::failbit);
    return "left out: " + error.message();
  }
  m_kept.insert(facts.hash);
  m_evidenceSize += *facts.size;
  return kEvidenceKept;
}

RunRecord RecordWriter::finish(RunRecord run) {
  run.pairs = m_pairCount;
  run.totals = m_totals;
  m_pairs.close();
  if (!m_pairs) {
    raise(m_folder, "it could not be written completely; is the disk full?");
  }
  writeRun(run);
  return run;
}

void RecordWriter::writeRun(const RunRecord& run) {
  if (const std::error_code error = OrvWholeFile::replace(m_folder + '/' + kRunFile, toJson(run))) {
    raise(m_folder, error.message());
  }
}
