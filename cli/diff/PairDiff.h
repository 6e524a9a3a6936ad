#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "cli/custom/FormatList.h"
#include "cli/record/Difference.h"
#include "cli/record/PairRecord.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/formats/OrvDiffFormats.h"

/// How much of a difference to keep. What is not kept is counted.
struct DiffOptions {
  std::size_t maxHunks = 3;                       ///< 0: all
  std::size_t maxBytes = std::size_t{64} * 1024;  ///< of text in all hunks, roughly; 0: no limit
  std::size_t context = 2;                        ///< lines around a change
};

/// A pair to explain. Nothing of it is copied.
struct DiffRequest {
  const OrvDiffFormat& format;
  const OrvDiffFileEngine& engine;
  const PairRecord& record;  ///< verdict, message and what was printed
  std::string_view master;   ///< the bytes of the file; empty for kinds that read no files
  std::string_view output;
  DiffOptions options;

  const OrvPatternList* patterns() const { return engine.getCleansingPatterns(); }

  /// The rules of a format of the suite's own that is compared in this way, else null.
  template <typename Rules>
  const Rules* ownRules() const {
    return FormatList::rulesOf<Rules>(format);
  }
};

/// Whether there is a difference of two files, or of a file from what it should be.
bool isAboutFiles(Verdict verdict);

/// A difference that has nothing to show, only something to say.
Difference onlyNote(std::string note, std::string kind = "none");

/// How the files of a pair differ; nothing if that is no question of its verdict, or if there is
/// nothing to say beyond the record. `engine` is the one that compared them. Reads both files; one
/// that cannot be read any more is a note.
///
/// For the one verifying thread. Time and memory are bounded for any content.
std::optional<Difference> differenceOf(const OrvDiffFormat& format, const OrvDiffFileEngine& engine,
                                       const PairRecord& record, const DiffOptions& options);
