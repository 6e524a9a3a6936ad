#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "cli/probe/RunFolders.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"

/// The texts of several runs, normalised by the patterns of a format. They are kept for later
/// passes as long as there is room; those of a larger corpus are read again.
///
/// For the one verifying thread. Keeps references to both arguments of the constructor.
class RunTexts {
 public:
  using Text = std::shared_ptr<const std::string>;

  RunTexts(const RunFolders& folders, const OrvPatternList& patterns)
      : m_folders(folders), m_patterns(patterns), m_kept(folders.files.size()) {}

  const RunFolders& folders() const { return m_folders; }
  const OrvPatternList& patterns() const { return m_patterns; }
  std::size_t fileCount() const { return m_folders.files.size(); }

  /// The texts of one file, one for each run; equal texts are one and the same. Raises
  /// `CommandError` that names a file that cannot be read, and what normalising raises.
  std::vector<Text> of(std::size_t file);

  /// What the file holds, up to its first NUL.
  std::string original(std::size_t run, std::size_t file);

  /// The files that contain a NUL byte, as far as they have been read.
  const std::vector<std::string>& cutFiles() const { return m_cutFiles; }

 private:
  std::vector<Text> read(std::size_t file);

  const RunFolders& m_folders;
  const OrvPatternList& m_patterns;
  std::vector<std::vector<Text>> m_kept;  ///< by file; empty: not read, or no room
  std::size_t m_keptBytes = 0;
  std::vector<std::string> m_cutFiles;
};

/// What `patterns` make of a text.
std::string normalized(const std::string& text, const OrvPatternList& patterns);
