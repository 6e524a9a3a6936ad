#include "cli/commands/CommandLine.h"
#include "cli/commands/ReportOptions.h"
#include "cli/commands/Verb.h"
#include "cli/record/JoinedRecords.h"
#include "cli/record/RecordFolder.h"
#include "cli/report/ClosingSummary.h"
#include "cli/report/ReportFiles.h"
#include "cli/system/CommandError.h"

namespace {

struct ReportOptions : CommonOptions {
  std::vector<std::string> records;
  std::vector<ReportRequest> reports;
};

FileReader evidenceOf(const RecordReader& record) {
  return [&record](const std::string& /*name*/, const FileFacts& facts) {
    return facts.evidence == kEvidenceKept
               ? record.evidence(facts.hash)
               : throw CommandError(facts.evidence.empty() ? "the record does not hold it"
                                                           : facts.evidence);
  };
}

ExitStatus run(const ReportOptions& options) {
  if (options.reports.empty()) {
    throw CommandError("report needs at least one report to write, such as --html FILE");
  }
  JoinedRecords records(options.records, false);
  ReportFiles reports(options.reports, options.records);
  while (const auto pair = records.next()) {
    reports.add(pair->record, evidenceOf(pair->source));
  }
  const std::vector<std::string> problems = reports.finish(records.run());
  printProblems(problems);
  return problems.empty() ? kExitPassed : kExitTrouble;
}

}  // namespace

void addReport(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<ReportOptions>(
      app, chosen, "report", "Write reports of a recorded run, or of its shards", run);
  verb.add_option("RECORD", options.records, "Folders that verify --record or merge wrote")
      ->required()
      ->type_name("");
  addReportOptions(verb, options.reports);
}
