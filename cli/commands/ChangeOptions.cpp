#include "cli/commands/ChangeOptions.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <set>
#include <system_error>

#include "cli/commands/Verb.h"
#include "cli/report/ClosingSummary.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"

namespace {

using Kind = ChangeOutcome::Kind;

bool isTerminal() {
  return isatty(STDIN_FILENO) != 0 && isatty(STDOUT_FILENO) != 0;
}

bool isStopped(const ChangeOutcome& outcome) {
  return outcome.kind == Kind::Refused || outcome.kind == Kind::Failed;
}

/// `told` holds the masters of which the user knows.
void printStopped(const ChangeReport& report, std::set<std::string>& told) {
  bool isFirst = true;
  for (const ChangeOutcome& outcome : report.outcomes) {
    if (isStopped(outcome) && told.insert(outcome.master).second) {
      std::cout << (isFirst ? "Left as they are:\n" : "") << "    " << printable(outcome.master)
                << ": " << printable(outcome.why) << '\n';
      isFirst = false;
    }
  }
}

void printPlan(const ChangeReport& report, const std::string& heading) {
  bool isFirst = true;
  for (const ChangeOutcome& outcome : report.outcomes) {
    if (outcome.kind == Kind::Done) {
      std::cout << (isFirst ? heading + ":\n" : "") << "    " << printable(outcome.master) << '\n';
      isFirst = false;
    }
  }
}

bool isConfirmed(const ChangeWording& wording, std::size_t count, const JournalPlace& place) {
  std::string verb = wording.verb;
  verb.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(verb.front())));
  std::cout << verb << ' ' << countOf(count, wording.noun)
            << (place.folder.empty() ? " for good, without a journal" : "") << "? [y/N] "
            << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  return answer == "y" || answer == "Y" || answer == "yes";
}

/// Counts what came of it: "Accepted 2 outputs, left 1 as it is (entry 7)".
void printClosing(const ChangeReport& report, const ChangeWording& wording, bool isDryRun) {
  const std::size_t already = report.count(Kind::AlreadySo);
  const std::size_t stopped = report.count(Kind::Refused) + report.count(Kind::Failed);
  std::cout << (isDryRun ? std::string("Would ") + wording.verb : std::string(wording.done)) << ' '
            << countOf(report.count(Kind::Done), wording.noun);
  if (already > 0) {
    std::cout << ", " << already << " already done";
  }
  if (stopped > 0) {
    std::cout << ", " << stopped << " left as " << (stopped == 1 ? "it is" : "they are");
  }
  if (report.entry != 0) {
    std::cout << " (entry " << report.entry << ')';
  }
  std::cout << '\n';
}

/// `text` as one word of a shell's command line, without backslashes of our own, which `printable`
/// would double.
std::string shellWord(const std::string& text) {
  const auto isPlain = [](unsigned char byte) {
    return std::isalnum(byte) != 0 || byte >= 0x80 || std::strchr("./_-+,:@%", byte) != nullptr;
  };
  if (std::all_of(text.begin(), text.end(), isPlain)) {
    return text;
  }
  std::string word = "'";
  for (const char letter : text) {
    word += letter == '\'' ? std::string(R"('"'"')") : std::string(1, letter);
  }
  return word + '\'';
}

/// How to take it back: a command for the folder that the user is in, which -C and records leave.
/// It names the journal unless `undo` would find it by itself.
void printHint(const JournalPlace& place, std::uint64_t entry, const std::string& shellFolder) {
  std::error_code unknown;
  std::string found;
  try {
    found = findJournal({}, shellFolder);
  } catch (const CommandError&) {
    found.clear();
  }
  const bool isFound = !found.empty() && std::filesystem::equivalent(found, place.folder, unknown);
  std::cout << "Take it back with: orvdiff undo " << entry
            << (isFound
                    ? ""
                    : " --journal " + printable(shellWord(shortPath(place.folder, shellFolder))))
            << '\n';
}

}  // namespace

void addJournal(CLI::App& verb, std::string& journal, const char* help) {
  verb.add_option("--journal", journal, help)->check(notEmpty())->type_name("DIR");
}

void addChangeOptions(CLI::App& verb, ChangeOptions& options) {
  CLI::Option* const dryRun =
      verb.add_flag("-n,--dry-run", options.isDryRun, "Say what would happen, and change nothing");
  verb.add_flag("-y,--yes", options.isAgreed, "Do not ask; needed without a terminal")
      ->excludes(dryRun);
  addJournal(verb, options.journal,
             "Keep what is replaced in the folder DIR (default: .orvdiff in the top of the suite); "
             "none: keep nothing, so that nothing can be taken back");
  verb.add_option("--keep", options.keptEntries,
                  "Keep the newest N entries of the journal (default: 100)")
      ->check(CLI::Range(std::size_t{1}, std::size_t{1} << 30))
      ->option_text("N");
}

void makeAbsolute(std::string& path) {
  std::error_code unknown;
  if (!path.empty()) {
    path = std::filesystem::absolute(path, unknown).lexically_normal().string();
  }
}

void makeAbsolutePlace(ChangeOptions& options) {
  if (options.journal != kNoJournal) {
    makeAbsolute(options.journal);
  }
}

std::string shortPath(const std::string& path, const std::string& from) {
  namespace fs = std::filesystem;
  std::error_code unknown;
  const fs::path start = from.empty() ? fs::current_path(unknown) : fs::path(from);
  const fs::path relative = fs::path(path).lexically_relative(start);
  const bool isShorter = !relative.empty() && relative.native().size() < path.size();
  // Links can prevent that it leads there; the file itself may be gone.
  return isShorter && fs::equivalent((start / relative).parent_path(), fs::path(path).parent_path(),
                                     unknown)
             ? relative.string()
             : path;
}

void requireConsent(const ChangeOptions& options) {
  if (!options.isDryRun && !options.isAgreed && !isTerminal()) {
    throw CommandError(
        "there is no terminal to ask on; see with --dry-run what would happen, and use --yes to "
        "let it happen");
  }
}

ExitStatus carryOut(const ChangeOptions& options, const CommonOptions& common,
                    const ChangeWording& wording, const JournalPlace& place,
                    const std::function<ChangeReport()>& check,
                    const std::function<ChangeReport()>& apply) {
  const bool isLoud = common.verbosity != Verbosity::Quiet;
  std::set<std::string> told;
  ChangeReport report;
  if (!options.isAgreed) {
    report = check();
    printPlan(report, wording.todo);
    printStopped(report, told);
    const std::size_t count = report.count(Kind::Done);
    if (count > 0 && !options.isDryRun && !isConfirmed(wording, count, place)) {
      std::cout << "Nothing was changed.\n";
      return kExitNotPassed;
    }
  }
  if (options.isAgreed || (!options.isDryRun && report.count(Kind::Done) > 0)) {
    report = apply();
    if (options.isAgreed && isLoud && wording.listsDone) {
      printPlan(report, wording.done);
    }
  }
  printStopped(report, told);  // what somebody has changed since the question, for instance
  printClosing(report, wording, options.isDryRun);
  if (report.entry != 0 && isLoud) {
    printHint(place, report.entry, common.shellFolder);
  }
  if (!options.isDryRun && report.count(Kind::Done) > 0 && place.folder.empty()) {
    std::cout.flush();
    std::cerr << "orvdiff: no journal was kept: nothing can take this back\n";
  }
  return finishChanges(report);
}

ChangeReport joined(ChangeReport first, const ChangeReport& second) {
  first.outcomes.insert(first.outcomes.end(), second.outcomes.begin(), second.outcomes.end());
  first.problems.insert(first.problems.end(), second.problems.begin(), second.problems.end());
  first.entry = std::max(first.entry, second.entry);
  return first;
}

ExitStatus finishChanges(const ChangeReport& report) {
  std::cout.flush();
  printProblems(report.problems);
  if (report.count(Kind::Failed) > 0 || !report.problems.empty()) {
    return kExitTrouble;
  }
  return report.count(Kind::Refused) > 0 ? kExitNotPassed : kExitPassed;
}
