#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

#include "cli/commands/Options.h"
#include "cli/config/FindConfig.h"
#include "cli/diff/OutsizedMasks.h"
#include "cli/record/RecordWriter.h"
#include "cli/report/ReportKinds.h"
#include "cli/suite/FormatSelection.h"
#include "orvdiff/harness/MOXTestHarness.h"

struct VerifyOptions : CommonOptions {
  std::vector<std::string> locations;
  FormatOptions formats;
  DifferenceOptions differences;
  std::string summaryFile;  ///< empty: none
  std::string harnessLog;   ///< empty: none
  int harnessLogLevel = MOXLogLevel::Normal;
  std::size_t jobs = 0;                     ///< worker processes; 0: as many as there are cores
  double secondsPerPair = kSecondsPerPair;  ///< 0: no limit
  std::uint64_t memoryMegabytes = 0;        ///< of a worker; 0: no limit
  std::string shard;                        ///< "2/5"; empty: everything
  std::string recordFolder;                 ///< empty: none
  std::vector<ReportRequest> reports;
  std::string failedRecord;  ///< folder of the record to verify what failed again of; empty: none
  std::string newerThan;     ///< what outputs must not be older than; empty: they may be
  std::string strict;        ///< kinds of findings that are trouble; empty: none
  std::string workFolder;    ///< to change to, all paths on the command line aside; empty: none
  MaskLimits maskLimits;
  EvidenceLimits evidence;  ///< that a record may keep
  ConfigChoice config;
  std::shared_ptr<const SuiteConfig> suite;  ///< the file that counts; null: none
  bool groupsChanges = true;                 ///< equal changes of several pairs are told once
  bool saveNormalized = false;
  bool listOnly = false;
  bool allowNone = false;
};

/// Adds all options of verify, for those who ask what a run would do, too.
void addVerifyOptions(CLI::App& verb, VerifyOptions& options);

ExitStatus run(const VerifyOptions& options);
