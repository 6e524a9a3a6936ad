#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/record/PairRecord.h"
#include "orvdiff/platform/OrvOutputFormat.h"

class OrvDiffResult;

/// What a worker sends of a pair: its record, and what the library's listeners need besides.
struct PairResult {
  /// The class of the library's result; `None` where there is no result.
  enum class Kind : std::uint8_t {
    None,
    Pass,
    PassUpToNul,
    Fail,
    FailDiff,
    FailDiffNormalized,
    FailFileMissing
  };

  PairRecord record;
  bool countsForReport = true;   ///< false: the pair belongs to a report that is not verified
  bool comparedNothing = false;  ///< passed, but the files held nothing to compare
  Kind kind = Kind::None;
  bool keepsTexts =
      false;  ///< somebody reads the normalised texts, which are as large as the files
  std::string resultMaster;  ///< the names in the result, which for XML may both be the output's
  std::string resultOutput;
  std::string namedFile;  ///< the missing file, or the one that was not compared to its end
  std::optional<std::string> normalizedMaster;  ///< if `keepsTexts`
  std::optional<std::string> normalizedOutput;
};

/// Adds a library's result to what is known of its pair: verdict, message and place for people, and
/// all that `rebuildResult` needs, the normalised texts only if `pair` keeps them. A pass of files
/// with nothing to compare says so.
void describeResult(const OrvDiffResult& result, std::optional<OrvOutputFormat> format,
                    PairResult& pair);

/// The library's result again; null where there was none.
std::unique_ptr<const OrvDiffResult> rebuildResult(const PairResult& pair);

/// As bytes, for another process of the same run.
std::string packPair(const PairResult& pair);
PairResult unpackPair(std::string_view bytes);
