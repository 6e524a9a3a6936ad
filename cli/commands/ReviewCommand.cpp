#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "cli/commands/ChangeOptions.h"
#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/Explanation.h"
#include "cli/commands/Verb.h"
#include "cli/commands/WorkFolder.h"
#include "cli/report/PlainText.h"
#include "cli/review/ReviewSession.h"
#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"
#include "cli/terminal/Printable.h"

namespace {

using Fix = Decision::Fix;
using End = ReviewSession::End;

struct ReviewOptions : CommonOptions {
  std::string record;
  ChangeOptions change;
  ConfigChoice config;
  bool isEager = false;
};

/// What is printed goes into a text as long as one lives: the screen belongs to the session.
class PrintedText {
 public:
  PrintedText() : m_out(std::cout.rdbuf(m_text.rdbuf())), m_err(std::cerr.rdbuf(m_text.rdbuf())) {}
  ~PrintedText() {
    std::cout.rdbuf(m_out);
    std::cerr.rdbuf(m_err);
  }
  PrintedText(const PrintedText&) = delete;
  PrintedText& operator=(const PrintedText&) = delete;
  std::string text() const { return m_text.str(); }

 private:
  std::ostringstream m_text;
  std::streambuf* const m_out;
  std::streambuf* const m_err;
};

ReviewSession::Explainer explainerFor(const ReviewOptions& options) {
  return [options](const PairRecord& pair, const PairFiles::Paths& files) {
    const PrintedText printed;
    printExplanation(options, pair.format, files.master, files.output, options.config);
    return printed.text();
  };
}

/// Enters the working folder of the recorded run, from which its paths lead to the files.
void enterFolderOf(const RecordReader& record) {
  const std::string& folder = record.run().workingFolder;
  std::error_code error;
  std::filesystem::current_path(folder, error);
  if (error) {
    throw CommandError("the run of " + record.folder() + " worked in the folder " + folder + ": " +
                       error.message());
  }
}

JournalPlace placeFor(const ReviewMaterial& material, const std::string& journal) {
  std::set<std::string> folders;
  for (const ReviewPair& pair : material.pairs()) {
    const std::size_t slash = pair.record.report.rfind('/');
    folders.insert(slash == std::string::npos ? "." : pair.record.report.substr(0, slash + 1));
  }
  return placeOfJournal({folders.begin(), folders.end()}, journal);
}

void printFaults(const ReviewMaterial& material, const ReviewDecisions& decisions) {
  const std::vector<std::size_t> faults = decisions.pairsWith(Fix::Fault);
  if (faults.empty()) {
    return;
  }
  std::cout << countOf(faults.size(), "fault") << ":\n";
  for (const std::size_t number : faults) {
    const PairRecord& pair = material.pairs()[number].record;
    const std::string& note = decisions.noteOf(number);
    std::cout << "    " << printable(nameOf(pair)) << (note.empty() ? "" : ": " + printable(note))
              << '\n';
  }
}

/// What a review of pairs alone leaves to do.
void printRest(const RunRecord& run, const ReviewMaterial& material) {
  if (!run.complete) {
    std::cout << "The run did not come to its end; what it did not compare was not reviewed.\n";
  }
  if (material.notRun() > 0) {
    std::cout << countOf(material.notRun(), "pair") << " not compared by the run\n";
  }
  for (const FindingTotal& total : run.findings) {
    if (total.kind == FindingKind::Output) {
      std::cout << countOf(total.count, "output")
                << " without a master: orvdiff accept --new stores masters\n";
    } else if (total.kind == FindingKind::Orphan) {
      std::cout << countOf(total.count, "master")
                << " of no report: orvdiff remove --orphans removes them\n";
    }
  }
}

/// Says how far the review has come. Returns how many pairs would still not pass.
std::size_t printState(const std::string& folder, const ReviewMaterial& material,
                       const ReviewDecisions& decisions, const ChangeReport& check) {
  const std::size_t waiting = check.count(ChangeOutcome::Kind::Done);
  const std::size_t open = decisions.pairsWith(std::nullopt).size();
  const std::size_t skipped = decisions.pairsWith(Fix::Skip).size();
  printFaults(material, decisions);
  if (skipped > 0) {
    std::cout << countOf(skipped, "pair") << " skipped\n";
  }
  if (waiting > 0) {
    std::cout << countOf(waiting, "master")
              << " to accept; nothing is written before you confirm\n";
  }
  if (open > 0) {
    std::cout << countOf(open, "pair") << " not decided\n";
  }
  if (waiting + open > 0) {
    std::cout << "Go on with: orvdiff review " << printable(folder) << '\n';
  }
  return material.pairs().size() - check.count(ChangeOutcome::Kind::AlreadySo);
}

ExitStatus review(const ReviewOptions& options, const ReviewMaterial& material,
                  const RunRecord& run) {
  ReviewDecisions decisions(material);
  const JournalPlace place = placeFor(material, options.change.journal);
  Baselines baselines(place, options.change.keptEntries);
  ReviewMasters masters(material, baselines);
  const Palette palette(options.color);
  End end = End::Left;
  {
    ReviewSession session(material, decisions, masters, palette, explainerFor(options),
                          options.isEager);
    end = session.run();
  }
  if (end == End::Disconnected) {
    return kExitTerminated;
  }
  ExitStatus status = kExitPassed;
  if (end == End::Confirmed) {
    const std::vector<std::size_t> pairs = decisions.pairsWith(Fix::Accept);
    ChangeOptions agreed = options.change;
    agreed.isAgreed = true;
    std::cout << "Accepting " << countOf(pairs.size(), "output") << " ..." << std::endl;
    status = carryOut(
        agreed, options, {"To accept", "accept", "Accepted", "output", false}, place,
        [&] { return masters.check(pairs); }, [&] { return masters.accept(pairs); });
  }
  const std::size_t left = printState(options.record, material, decisions,
                                      masters.check(decisions.pairsWith(Fix::Accept)));
  printRest(run, material);
  return end == End::Interrupted  ? kExitInterrupted
         : end == End::Terminated ? kExitTerminated
         : status != kExitPassed  ? status
         : left > 0               ? kExitNotPassed
                                  : kExitPassed;
}

ExitStatus run(const ReviewOptions& given) {
  if (!canShowScreen()) {
    throw CommandError(
        "review needs a terminal for its standard input and output; without one, accept what you "
        "have seen with \"orvdiff accept --from RECORD\", all of it or by --group or --list");
  }
  ReviewOptions options = given;
  makeAbsolutePlace(options.change);
  makeAbsolute(options.config.file);
  std::string folder = options.record;
  makeAbsolute(folder);
  RecordReader record(folder);
  const ReviewMaterial material(record);
  if (material.items().empty()) {
    std::cout << "Nothing to review: no pair of the record differs.\n";
    printRest(record.run(), material);
    return record.run().complete && material.notRun() == 0 ? kExitPassed : kExitNotPassed;
  }
  enterFolderOf(record);
  options.config = configOfRun(options.config, record.run().config);
  if (const auto config = suiteConfigFor(options.config, {}, Verbosity::Normal)) {
    FormatOptions ignored;  // the pairs have been compared; what counts is the suite's own formats
    takeRules(*config, ignored);
  }
  return review(options, material, record.run());
}

}  // namespace

void addReview(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<ReviewOptions>(
      app, chosen, "review",
      "Walk through what did not pass in a recorded run, and decide what becomes the master", run);
  verb.add_option("RECORD", options.record, "A folder that verify --record or merge wrote")
      ->required()
      ->check(notEmpty())
      ->type_name("");
  verb.add_flag("--eager", options.isEager,
                "Write masters with each decision, instead of once you confirm at the end");
  addJournal(verb, options.change.journal,
             "Keep what is replaced in the folder DIR (default: .orvdiff in the top of the suite); "
             "none: keep nothing, so that nothing can be taken back");
  addConfig(verb, options.config);
}
