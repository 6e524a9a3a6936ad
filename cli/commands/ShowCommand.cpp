#include <iostream>
#include <map>
#include <string>

#include "cli/commands/CommandLine.h"
#include "cli/commands/RecordSummary.h"
#include "cli/commands/Verb.h"
#include "cli/record/RecordReader.h"
#include "cli/report/ClosingSummary.h"
#include "cli/report/GroupPrinter.h"
#include "cli/terminal/Printable.h"
#include "cli/workers/PairVerifier.h"

namespace {

struct ShowOptions : CommonOptions {
  std::vector<std::string> records;  ///< one, or an earlier and a later one to compare
  bool groupsChanges = true;
};

/// Whether each pair of an earlier run passed, or was known.
std::map<std::string, bool> readPasses(const std::string& folder) {
  RecordReader record(folder);
  std::map<std::string, bool> passes;
  while (const auto pair = record.next()) {
    passes[pairKey(pair->report, pair->format, pair->master)] = !isFailure(pair->verdict);
  }
  return passes;
}

ExitStatus showOne(const ShowOptions& options, const Palette& palette) {
  RecordReader record(options.records.front());
  GroupPrinter printer(options.groupsChanges, options.verbosity, palette);
  Tally tally;
  std::uint64_t pairs = 0;
  while (const auto pair = record.next()) {
    printer.add(*pair);
    tally.add(*pair);
    ++pairs;
  }
  printer.finish();
  printKnown(tally);
  RunRecord run = record.run();
  run.pairs = pairs;  // of a run that was cut off, run.json does not know it
  printRecordSummary(run, palette);
  return kExitPassed;
}

/// The pairs that passed before and do not now come out in full, under a heading each the others.
ExitStatus showChanges(const ShowOptions& options, const Palette& palette) {
  std::map<std::string, bool> before = readPasses(options.records.front());
  RecordReader record(options.records.back());
  GroupPrinter printer(options.groupsChanges, options.verbosity, palette);
  std::size_t newlyFailing = 0;
  std::size_t stillFailing = 0;
  std::size_t newlyPassing = 0;
  while (const auto pair = record.next()) {
    const bool passes = !isFailure(pair->verdict);
    const auto former = before.find(pairKey(pair->report, pair->format, pair->master));
    const bool passedBefore = former == before.end() || former->second;
    newlyFailing += passedBefore && !passes ? 1 : 0;
    stillFailing += !passedBefore && !passes ? 1 : 0;
    newlyPassing += !passedBefore && passes ? 1 : 0;
    if (passedBefore && !passes) {
      printer.add(*pair);
    } else if (options.verbosity == Verbosity::Verbose && passes != passedBefore) {
      std::cout << "passes now  " << printable(pair->master) << '\n';
    }
    if (former != before.end()) {
      before.erase(former);
    }
  }
  printer.finish();
  std::cout << newlyFailing << " newly failing, " << stillFailing << " still failing, "
            << newlyPassing << " newly passing";
  if (!before.empty()) {
    std::cout << ", " << countOf(before.size(), "pair") << " of the earlier run not in the later";
  }
  std::cout << '\n';
  return newlyFailing > 0 ? kExitNotPassed : kExitPassed;
}

ExitStatus run(const ShowOptions& options) {
  const Palette palette(options.color);
  return options.records.size() == 1 ? showOne(options, palette) : showChanges(options, palette);
}

}  // namespace

void addShow(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<ShowOptions>(
      app, chosen, "show", "Print what a record holds, or what changed between two records", run);
  verb.add_option("RECORD", options.records,
                  "A folder that verify --record wrote; the earlier first")
      ->expected(1, 2)
      ->required()
      ->type_name("");
  addNoGroups(verb, options.groupsChanges);
}
