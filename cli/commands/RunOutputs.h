#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/commands/OutputPlaces.h"
#include "cli/commands/SuiteRun.h"
#include "cli/commands/VerifyOptions.h"
#include "cli/record/RunRecord.h"
#include "cli/report/ReportFiles.h"

/// The files that a run writes while it verifies: harness log, summary, record, reports,
/// normalised texts.
class RunOutputs {
 public:
  /// Starts those that `options` asks for. `places` must outlive the object. Raises `CommandError`
  /// if one cannot be written.
  RunOutputs(const VerifyOptions& options, OutputPlaces& places, RunRecord header);

  /// What the run is to tell of its pairs, besides `account`.
  RunLogs logs(Accounting& account);

  /// The normalised texts that could not be saved.
  const std::vector<std::string>& unsavedFiles() const { return m_saver.unsavedFiles(); }

  /// Finishes all of them, so that the closing line knows whether everything is there. Adds what
  /// could not be written to `problems`, which the files themselves hold up to then.
  void finish(SuiteRun& run, std::vector<std::string>& problems);

 private:
  RunRecord m_header;
  const bool m_savesNormalized;
  std::optional<HarnessLog> m_harnessLog;
  std::optional<SummaryFile> m_summary;
  std::optional<RecordWriter> m_record;
  NormalizedSaver m_saver;
  ReportFiles& m_reports;
};
