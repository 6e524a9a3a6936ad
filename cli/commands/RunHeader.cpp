#include "cli/commands/RunHeader.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/record/ContentHash.h"
#include "cli/suite/Shard.h"
#include "cli/system/ExitStatus.h"

namespace {

/// The words of a command line without those that shards of one suite, or two runs that find the
/// same, do not share: where the program and the record lie, which shard it was, on how many cores.
std::vector<std::string> commonWords(const std::vector<std::string>& words) {
  std::vector<std::string_view> own = {"--record", "--shard", "-j", "--jobs"};
  for (const ReportKind& kind : reportKinds()) {
    own.emplace_back(kind.option);
  }
  std::vector<std::string> common = {"orvdiff"};
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string_view word = words[i];
    const std::string_view name = word.substr(0, word.find('='));
    if (std::find(own.begin(), own.end(), name) != own.end()) {
      i += name == word ? 1 : 0;  // its value is the next word
    } else if (word.substr(0, 2) != "-j") {
      common.emplace_back(word);
    }
  }
  return common;
}

RunConfig configOf(const SuiteConfig& config) {
  RunConfig result = {config.path, contentHash(config.content), {}};
  for (const OwnPattern& pattern : config.patterns) {
    result.patterns.push_back({pattern.name, pattern.why, toText(pattern.definedAt)});
  }
  return result;
}

}  // namespace

std::string timeStamp() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  gmtime_r(&now, &parts);
  std::array<char, 32> text = {};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}

RunRecord startedRun(const VerifyOptions& options, const RunPlan& plan) {
  RunRecord run;
  run.program = ORVDIFF_VERSION;
  run.commandLine = commonWords(options.words);
  run.formats = options.formats;
  std::error_code unknown;
  run.workingFolder = std::filesystem::current_path(unknown).string();
  std::array<char, 256> host = {};
  if (gethostname(host.data(), host.size() - 1) == 0) {
    run.host = host.data();
  }
  run.start = timeStamp();
  if (!options.shard.empty()) {
    const Shard shard = parseShard(options.shard);
    run.shards = {{shard.index}, shard.count};
  }
  if (options.suite != nullptr) {
    run.config = configOf(*options.suite);
  }
  run.suite = suiteHash(plan.found, options.formats, run.config.hash);
  run.reports = plan.reports.size();
  run.mayBeEmpty = options.allowNone;
  run.status = kExitTrouble;  // until it has ended
  return run;
}
