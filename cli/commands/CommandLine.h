#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/suite/FormatSelection.h"
#include "cli/system/ExitStatus.h"
#include "cli/terminal/Terminal.h"
#include "orvdiff/harness/MOXTestHarness.h"

struct VerifyOptions {
  std::vector<std::string> words;  ///< of the command line, for the record
  std::vector<std::string> locations;
  FormatOptions formats;
  std::string summaryFile;  ///< empty: none
  std::string harnessLog;   ///< empty: none
  int harnessLogLevel = MOXLogLevel::Normal;
  std::size_t jobs = 0;               ///< worker processes; 0: as many as there are cores
  double secondsPerPair = 300;        ///< 0: no limit
  std::uint64_t memoryMegabytes = 0;  ///< of a worker; 0: no limit
  std::string shard;                  ///< "2/5"; empty: everything
  std::string recordFolder;           ///< empty: none
  std::string failedRecord;  ///< folder of the record to verify what failed again of; empty: none
  bool saveNormalized = false;
  bool listOnly = false;
  bool allowNone = false;
  Verbosity verbosity = Verbosity::Normal;
  ColorChoice color = ColorChoice::Auto;
};

struct FormatsOptions {};

struct ShowOptions {
  std::vector<std::string> records;  ///< one, or an earlier and a later one to compare
  Verbosity verbosity = Verbosity::Normal;
  ColorChoice color = ColorChoice::Auto;
};

struct MergeOptions {
  std::vector<std::string> records;
  std::string target;
  bool isPartial = false;  ///< shards may be missing
  Verbosity verbosity = Verbosity::Normal;
  ColorChoice color = ColorChoice::Auto;
};

struct NormalizeOptions {
  std::string format;
  std::string file;
  Verbosity verbosity = Verbosity::Normal;
};

/// Two files to compare.
struct PairOptions {
  std::string master;
  std::string actual;
  Verbosity verbosity = Verbosity::Normal;
  ColorChoice color = ColorChoice::Auto;
};

struct CompareOptions : PairOptions {
  std::string format;
  LayoutDataOptions layoutData;
};

struct NumdiffOptions : PairOptions {};

using Command = std::variant<FormatsOptions, NormalizeOptions, CompareOptions, NumdiffOptions,
                             VerifyOptions, ShowOptions, MergeOptions>;

/// What the user asked for.
struct CommandLine {
  std::string workingFolder;  ///< to change to first; empty: none
  Verbosity verbosity = Verbosity::Normal;
  Command command;
};

/// Parses the command line into `result`. If that leaves nothing to do (help, version, a usage
/// error), prints the text or message and returns the exit status.
std::optional<ExitStatus> parseCommandLine(int argc, char** argv, CommandLine& result);
