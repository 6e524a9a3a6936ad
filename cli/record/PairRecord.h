#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/record/Difference.h"
#include "cli/record/Verdict.h"

/// What a record says of one of the two files of a pair.
struct FileFacts {
  std::optional<std::uint64_t> size;  ///< in bytes; none when the file could not be read
  std::string hash;                   ///< of its bytes; empty when not taken
  std::string normalizedHash;         ///< of the text that was compared; empty when there was none
  std::string evidence;  ///< "kept", or why its bytes are not; empty for a pair that passed
};

/// Where in the normalised texts a difference starts.
struct DifferencePlace {
  std::uint64_t byte = 0;    ///< from 0
  std::uint64_t line = 0;    ///< from 1
  std::uint64_t column = 0;  ///< from 1, in characters
};

/// A part of a file that rules keep out of the comparison, large enough to be told: what the pass
/// of the pair says nothing about. It differs between the two files.
struct OutsizedMask {
  bool isInOutput = false;  ///< else in the master
  std::string rule;         ///< of the one match; empty: all masks that differ together
  std::uint64_t bytes = 0;
  double percent = 0;           ///< of the file, to one digit behind the point
  std::uint64_t firstLine = 0;  ///< from 1; where it begins, or the first mask
  std::uint64_t lastLine = 0;
};

/// Why a difference is accepted, as the suite's file says.
struct KnownReason {
  std::string why;
  std::string until;  ///< the last day, "2027-01-31"
  std::string link;   ///< may be empty
  std::string place;  ///< in the file: "orvdiff.toml:31:1"
};

/// What makes a pair `Known`.
struct KnownCause {
  Verdict verdict = Verdict::Differs;  ///< that it would have otherwise
  std::vector<KnownReason> reasons;    ///< at least one
};

/// What a run found out about one pair: the unit that workers send, records keep and reports show.
/// Paths are bytes as the file system knows them, not necessarily UTF-8.
struct PairRecord {
  std::string report;  ///< the report that the pair belongs to, as the run was given it
  std::string format;
  std::string subFolder;
  std::string master;  ///< as the engine found it, relative to the run's working folder
  std::string output;
  std::string masterPath;  ///< absolute, without links; empty when the file is not there
  std::string outputPath;
  Verdict verdict = Verdict::NotRun;
  std::string message;  ///< what a person should know: why the pair did not pass, as a rule
  std::optional<DifferencePlace> at;
  double seconds = 0;
  double cpuSeconds = 0;  ///< of the comparison and everything it started
  FileFacts masterFile;
  FileFacts outputFile;
  std::optional<KnownCause> known;       ///< of a pair that is `Known`
  std::optional<OutsizedMask> mask;      ///< that a pass rests on
  std::vector<std::string> rules;        ///< normalisations that changed a text of this pair
  std::string printed;                   ///< by engines and scripts, as they printed it
  std::optional<Difference> difference;  ///< how the files differ; none when nobody asked
};
