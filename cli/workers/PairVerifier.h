#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/diff/OutsizedMasks.h"
#include "cli/diff/PairDiff.h"
#include "cli/record/PairResult.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/NewerThan.h"
#include "cli/suite/PairOwners.h"
#include "cli/suite/SharedPictures.h"
#include "cli/system/OutputCapture.h"
#include "cli/terminal/Terminal.h"
#include "cli/workers/WantedPairs.h"
#include "cli/workers/WorkerPool.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

/// What tells a pair apart from all others of a run.
std::string pairKey(const std::string& report, const std::string& format,
                    const std::string& master);

/// The work of a worker process: verifies a report, pair by pair, and sends a packed `PairResult`
/// of each. What goes wrong with one pair does not keep the others from being compared.
///
/// The steps of a report are numbered by format and pair, so that another worker can go on where
/// one has died.
class PairVerifier {
 public:
  struct Settings {
    Verbosity verbosity = Verbosity::Normal;
    MaskLimits maskLimits;
    bool keepFacts =
        false;  ///< sizes, hashes, processor time and rules too, as a record wants them
    bool namesRules = false;  ///< the rules that changed a text, even if no facts are kept
    std::optional<DiffOptions> differences;    ///< how pairs differ, too; none: only whether
    const WantedPairs* onlyPairs = nullptr;    ///< null: all
    const SharedPictures* pictures = nullptr;  ///< null: none is left to another format
    std::optional<NewerThan> newerThan;        ///< what outputs must not be older than
  };

  /// All arguments but `settings` must outlive the verifier.
  PairVerifier(const std::vector<std::string>& reports, const std::vector<SelectedFormat>& formats,
               const PairOwners& owners, Settings settings);

  /// Verifies the report `task`, from `firstStep` on. Catches all output of the process, so it is
  /// for worker processes only.
  void verify(std::uint32_t task, std::uint64_t firstStep, WorkerLink& link);

  /// What is known of a pair whose worker died, from the description of the step. Nothing
  /// if it died before its first step. The record's facts are of the files as they are now, unless
  /// the pair was already compared.
  PairResult describeLost(std::string_view description) const;

  /// The step after `step`, whose worker died. A format whose masters could not even be listed is
  /// left.
  static std::uint64_t stepAfter(std::uint64_t step);

  /// Whether `step` lists masters rather than compares a pair.
  static bool isListing(std::uint64_t step);

 private:
  struct Format {
    const SelectedFormat* selected;
    std::string problem;  ///< that keeps its script from running
    std::string listing;  ///< the description of a step that lists masters, for any report
  };

  void verifyFormat(std::uint32_t task, std::uint64_t format, std::uint64_t firstStep,
                    WorkerLink& link);
  bool isLeftToAnother(const SelectedFormat& format, const std::string& master) const;
  PairResult start(std::uint32_t task, std::uint64_t format, const OrvFilePair& pair) const;
  void compare(const Format& format, const OrvFilePair& pair, PairResult& result);
  void addDifference(const SelectedFormat& format, PairResult& result, WorkerLink& link) const;
  PairResult outcomeOf(const Format& format, const OrvFilePair& pair,
                       const PairResult& known) const;
  bool isStale(const OrvFilePair& pair, PairResult& result) const;

  const std::vector<std::string>& m_reports;
  std::vector<Format> m_formats;
  const PairOwners& m_owners;
  const Settings m_settings;
  OutputCapture m_capture;
  std::unique_ptr<OutputCapture::Session> m_catching;  ///< from the first pair on
};
