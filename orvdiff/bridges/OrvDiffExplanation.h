#pragma once

#include <cstddef>
#include <string>

#include "orvdiff/orvdiff_export.h"

class OrvDiffResult;

/// A result in words, for the failure message of a test framework.
///
/// The listeners for GoogleTest and Catch2 beside this header use it, and so can one for any other
/// framework:
///
///     void comparisonNotification(const OrvDiffResult& result) override {
///       const auto explained = OrvDiffExplanation::of(result);
///       myFramework.check(explained.isPassed, explained.text);
///     }
///
/// All texts are UTF-8 that is safe to print, whatever the files and their names contain:
/// backslashes, control characters, blanks other than the plain one, characters that change the
/// direction of text and invalid UTF-8 are escaped, as `orvdiff` does.
struct ORVDIFF_API OrvDiffExplanation {
  /// Whether all of the output was compared and is right. False for `OrvDiffResultPassUpToNul`,
  /// whose `isPassed()` is true although a part of the files was not compared.
  bool isPassed = false;
  /// The file to look at: the output, or the master if that is what is missing.
  std::string file;
  /// Where in `file` the difference begins, counted from 1; 0 if that is not known.
  std::size_t line = 0;
  /// What is wrong, in one or more lines without a line end behind the last. For a difference of
  /// texts, what stands at its beginning in both files, as the rules of the format leave it, with
  /// the lines of the files. These are known for the formats of `OrvDiffFormats`.
  std::string text;

  /// Explains `result`. Reads the two files if their contents differ, so call it while they are as
  /// they were compared: from a listener. Uses the pattern catalogue, so only the verifying thread
  /// may call it. Files that have changed or gone meanwhile are no error; there is then less to
  /// tell.
  static OrvDiffExplanation of(const OrvDiffResult& result);
};
