#include "cli/commands/CompletionValues.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/commands/ConfigOptions.h"
#include "cli/custom/FormatList.h"
#include "cli/record/RecordReader.h"
#include "cli/report/ChangeGroups.h"
#include "cli/suite/Finding.h"
#include "cli/suite/ReportFinder.h"
#include "cli/suite/SuiteLayout.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kRunFile = "run.json";

/// Which entries of a folder are worth proposing. Folders always are: they lead further.
using IsWanted = bool (*)(const fs::directory_entry& file, bool hasMasters);

Candidates pathsFor(const std::string& typed, IsWanted isWanted) {
  const std::string folder = typed.substr(0, typed.rfind('/') + 1);
  const bool wantsHidden = typed.size() > folder.size() && typed[folder.size()] == '.';
  const fs::path place = folder.empty() ? "." : expandHome(folder);
  Candidates candidates;
  candidates.arePaths = true;
  std::error_code error;
  const bool hasMasters = fs::is_directory(place / suiteLayout().masterFolder, error);
  for (fs::directory_iterator entry(place, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    std::error_code unknown;
    const bool isFolder = entry->is_directory(unknown);
    if ((name.front() != '.' || wantsHidden) && (isFolder || isWanted(*entry, hasMasters))) {
      candidates.all.push_back({folder + name + (isFolder ? "/" : ""), {}});
    }
  }
  std::sort(candidates.all.begin(), candidates.all.end(),
            [](const Candidate& a, const Candidate& b) { return a.value < b.value; });
  return candidates;
}

Candidates files(const std::string& typed) {
  return pathsFor(typed,
                  [](const fs::directory_entry& /*file*/, bool /*hasMasters*/) { return true; });
}

Candidates folders(const std::string& typed) {
  return pathsFor(typed,
                  [](const fs::directory_entry& /*file*/, bool /*hasMasters*/) { return false; });
}

Candidates reports(const std::string& typed) {
  return pathsFor(typed, [](const fs::directory_entry& file, bool hasMasters) {
    std::error_code unknown;
    return hasMasters && file.is_regular_file(unknown);
  });
}

/// Those of the suite that the current folder belongs to are among them.
Candidates formats() {
  try {
    rulesForFiles({}, {"."}, Verbosity::Quiet);
  } catch (const CommandError&) {
    // The command itself will say what is wrong with the suite's file.
  }
  Candidates candidates;
  for (const OrvDiffFormat& format : FormatList::all()) {
    candidates.all.push_back({std::string(format.name), std::string(format.comparison)});
  }
  return candidates;
}

Candidates kindsOfFindings() {
  Candidates candidates;
  for (const FindingKind kind : kindsOfRuns()) {
    candidates.all.push_back({std::string(keyOf(kind)), {}});
  }
  return candidates;
}

/// The record in the working folder that was written last.
std::optional<std::string> newestRecord() {
  std::optional<std::string> newest;
  fs::file_time_type newestTime;
  std::error_code error;
  for (fs::directory_iterator entry(".", error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code isNone;
    const auto time = fs::last_write_time(entry->path() / kRunFile, isNone);
    if (!isNone && (!newest || time > newestTime)) {
      newest = entry->path();
      newestTime = time;
    }
  }
  return newest;
}

/// The groups of changes in a record. What is told of a large record are those of its beginning: a
/// shell waits for this.
Candidates groups(const std::vector<std::string>& records) {
  constexpr std::size_t kMostPairs = 20'000;
  Candidates candidates;
  const auto folder = records.empty() ? newestRecord() : expandHome(records.back());
  if (!folder) {
    return candidates;
  }
  ChangeGroups changes(1);
  try {
    RecordReader record(*folder);
    for (std::size_t i = 0; i < kMostPairs; ++i) {
      const auto pair = record.next();
      if (!pair) {
        break;
      }
      changes.add(*pair);
    }
  } catch (const CommandError&) {  // up to where it is damaged, it is as good as any
  }
  for (const ChangeGroup& group : changes.rarestFirst()) {
    candidates.all.push_back({group.id, countOf(group.pairCount, "pair") + ", " + group.kind});
  }
  return candidates;
}

}  // namespace

std::string expandHome(const std::string& word) {
  const char* const home = std::getenv("HOME");
  return home != nullptr && (word == "~" || word.rfind("~/", 0) == 0) ? home + word.substr(1)
                                                                      : word;
}

Candidates candidatesFor(const ValueContext& context) {
  const auto is = [&context](std::initializer_list<const char*> names) {
    return std::find(names.begin(), names.end(), context.name) != names.end();
  };
  if (is({"FORMAT"})) {
    return formats();
  }
  if (is({"KINDS"})) {
    return kindsOfFindings();
  }
  if (is({"GROUP"})) {
    return groups(context.records);
  }
  if (is({"LOCATION"})) {
    return reports(context.typed);
  }
  if (is({"DIR", "RECORD"})) {
    return folders(context.typed);
  }
  if (is({"FILE", "MASTER", "ACTUAL", "TIME|FILE"})) {
    return files(context.typed);
  }
  return {};
}
