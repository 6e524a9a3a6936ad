#include "cli/workers/ComparisonNotes.h"

#include <cstdlib>
#include <memory>
#include <unordered_map>

#include "orvdiff/compare/OrvOriginMap.h"

namespace {

bool isUnchanged(const struct stat& before, const struct stat& after) {
  const auto isSameTime = [](const timespec& one, const timespec& other) {
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
  };
  return before.st_dev == after.st_dev && before.st_ino == after.st_ino &&
         before.st_size == after.st_size && isSameTime(before.st_mtim, after.st_mtim) &&
         isSameTime(before.st_ctim, after.st_ctim);
}

std::string realPath(const std::string& path) {
  struct Free {
    void operator()(char* text) const { std::free(text); }
  };
  const std::unique_ptr<char, Free> resolved(realpath(path.c_str(), nullptr));
  return resolved != nullptr ? resolved.get() : std::string();
}

/// `realPath`, asked once per folder: a folder holds many files, and stays where it is during a
/// run.
const std::string& realFolder(const std::string& folder) {
  static std::unordered_map<std::string, std::string> known;
  const auto [entry, isNew] = known.try_emplace(folder);
  if (isNew) {
    entry->second = realPath(folder.empty() ? "." : folder);
  }
  return entry->second;
}

FileContent contentOf(std::string_view bytes) {
  return {bytes.size(), contentHash(bytes)};
}

}  // namespace

ComparisonNotes::FileState::FileState(const std::string& name) : path(name), status() {
  isLink = lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  if (isLink) {
    status = {};
    stat(path.c_str(), &status);
  }
}

/// The absolute path without links; empty when nothing is there.
std::string ComparisonNotes::resolve(const FileState& file) {
  if (file.status.st_nlink == 0) {
    return {};
  }
  const std::size_t name = file.path.rfind('/') + 1;
  return file.isLink ? realPath(file.path)
                     : realFolder(file.path.substr(0, name)) + '/' + file.path.substr(name);
}

FileFacts ComparisonNotes::factsOf(const FileState& before,
                                   const std::optional<FileContent>& compared) {
  FileFacts facts;
  const std::optional<FileContent> content = compared ? compared : hashFile(before.path);
  if (content && (compared || isUnchanged(before.status, FileState(before.path).status))) {
    facts.size = content->size;
    facts.hash = content->hash;
  } else if (content) {
    facts.evidence = "left out: it was changed during the comparison";
  }
  return facts;
}

ComparisonNotes::ComparisonNotes(const OrvFilePair& pair)
    : m_masterBefore(pair.master), m_outputBefore(pair.actual) {
  OrvComparisonObserver::setCurrent(this);
}

ComparisonNotes::~ComparisonNotes() {
  OrvComparisonObserver::setCurrent(nullptr);
}

void ComparisonNotes::sawEqualBlock(std::string_view block) {
  m_blocks.add(block);
}

void ComparisonNotes::sawEqualFiles() {
  m_files.master = m_files.output = m_blocks.content();
}

void ComparisonNotes::sawFiles(std::string_view master, std::string_view actual) {
  m_files = {contentOf(master), contentOf(actual)};
}

void ComparisonNotes::sawChangeBy(const OrvDiffNormalizationPattern* pattern) {
  m_rules.push_back(OrvOriginMap::nameOf(pattern));
}

void ComparisonNotes::sawNormalized(std::string_view master, std::string_view actual) {
  m_texts.master = contentOf(master);
  m_texts.output = actual == master ? m_texts.master : contentOf(actual);
}

void ComparisonNotes::sawHelpOf(std::string_view name) {
  m_otherRules.emplace_back(name);
}

void ComparisonNotes::addTo(PairRecord& record) const {
  record.masterPath = resolve(m_masterBefore);
  record.outputPath = resolve(m_outputBefore);
  record.masterFile = factsOf(m_masterBefore, m_files.master);
  record.outputFile = factsOf(m_outputBefore, m_files.output);
  record.rules = m_otherRules;
  if (m_texts.master && m_texts.output) {
    record.rules.insert(record.rules.begin(), m_rules.begin(), m_rules.end());
    record.masterFile.normalizedHash = m_texts.master->hash;
    record.outputFile.normalizedHash = m_texts.output->hash;
  }
}
