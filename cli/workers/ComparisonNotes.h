#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/record/ContentHash.h"
#include "cli/record/PairRecord.h"
#include "orvdiff/compare/OrvComparisonObserver.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

/// Notes on one comparison, for the pair's record: which bytes were compared, and which rules made
/// them equal. One at a time, in the thread that verifies.
class ComparisonNotes : private OrvComparisonObserver {
 public:
  /// Takes notes of what is compared from now on, which is `pair`.
  explicit ComparisonNotes(const OrvFilePair& pair);
  ~ComparisonNotes() override;
  ComparisonNotes(const ComparisonNotes&) = delete;
  ComparisonNotes& operator=(const ComparisonNotes&) = delete;

  /// Fills in the paths, the rules, and what is known of the files. A file that the comparison did
  /// not read to its end is read now; if it has changed meanwhile, the record says so instead.
  void addTo(PairRecord& record) const;

 private:
  struct FileState {
    explicit FileState(const std::string& path);

    std::string path;
    bool isLink;
    struct stat status;  ///< of what a link leads to; zeros when nothing is there
  };
  struct Contents {
    std::optional<FileContent> master;
    std::optional<FileContent> output;
  };

  void sawEqualBlock(std::string_view block) override;
  void sawEqualFiles() override;
  void sawFiles(std::string_view master, std::string_view actual) override;
  void sawChangeBy(const OrvDiffNormalizationPattern* pattern) override;
  void sawNormalized(std::string_view master, std::string_view actual) override;
  void sawHelpOf(std::string_view name) override;

  static std::string resolve(const FileState& file);
  static FileFacts factsOf(const FileState& before, const std::optional<FileContent>& compared);

  const FileState m_masterBefore;
  const FileState m_outputBefore;
  ContentHasher m_blocks;  ///< of both files
  Contents m_files;
  Contents m_texts;                  ///< normalised
  std::vector<std::string> m_rules;  ///< that changed one of the texts
  std::vector<std::string> m_otherRules;
};
