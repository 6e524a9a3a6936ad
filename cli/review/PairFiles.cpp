#include "cli/review/PairFiles.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "cli/record/RecordFolder.h"
#include "cli/record/UnchangedFile.h"
#include "cli/system/CommandError.h"
#include "orvdiff/platform/OrvWholeFile.h"

namespace fs = std::filesystem;

namespace {

std::string createFolder() {
  const char* const given = std::getenv("TMPDIR");
  std::string folder =
      std::string(given != nullptr && *given != '\0' ? given : "/tmp") + "/orvdiff-review-XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) {
    throw CommandError(folder + " cannot be created: " + std::generic_category().message(errno));
  }
  return folder;
}

}  // namespace

PairFiles::~PairFiles() {
  std::error_code ignored;
  if (!m_folder.empty()) {
    fs::remove_all(m_folder, ignored);
  }
}

PairFiles::Paths PairFiles::of(const PairRecord& pair) {
  ++m_pairs;
  return {find(pair.master, pair.masterPath, pair.masterFile, "master"),
          find(pair.output, pair.outputPath, pair.outputFile, "output")};
}

std::string PairFiles::find(const std::string& name, const std::string& path,
                            const FileFacts& facts, const char* side) {
  if (facts.hash.empty()) {
    throw CommandError(name + " was not there, or not readable, when the run looked");
  }
  if (readUnchanged(path, facts.hash)) {
    return path;
  }
  if (facts.evidence != kEvidenceKept) {
    throw CommandError(name + " is no longer what was compared, and the record does not hold it" +
                       (facts.evidence.empty() ? "" : ": " + facts.evidence));
  }
  m_folder = m_folder.empty() ? createFolder() : m_folder;
  const fs::path copy =
      fs::path(m_folder) / std::to_string(m_pairs) / side / fs::path(name).filename();
  std::error_code error;
  fs::create_directories(copy.parent_path(), error);
  error = error ? error : OrvWholeFile::replace(copy, m_record.evidence(facts.hash));
  if (error) {
    throw CommandError(copy.string() + " cannot be written: " + error.message());
  }
  return copy;
}
