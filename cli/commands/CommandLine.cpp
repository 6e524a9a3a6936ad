#include "cli/commands/CommandLine.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include "cli/commands/Arguments.h"
#include "cli/commands/Completion.h"
#include "cli/commands/Verb.h"
#include "cli/commands/Versions.h"
#include "cli/terminal/Printable.h"

namespace {

/// In the order of the help text.
constexpr void (*kVerbs[])(CLI::App& app, Performer& chosen) = {
    addVerify,    addReview,  addAccept,  addRemove,  addUndo,       addLog,
    addAudit,     addDiff,    addNumdiff, addShow,    addReport,     addMerge,
    addNormalize, addExplain, addProbe,   addFormats, addConfigVerb, addHelp};

/// What comes before the choice of a verb, or with any.
struct Common {
  std::string workingFolder;
  ColorChoice color = ColorChoice::Auto;
  bool quiet = false;
  bool verbose = false;

  Verbosity verbosity() const {
    return quiet ? Verbosity::Quiet : verbose ? Verbosity::Verbose : Verbosity::Normal;
  }
};

void addCommonOptions(CLI::App& app, Common& values) {
  app.add_option("-C,--directory", values.workingFolder,
                 "Run as if started in DIR; outputs are in ../webcontent/bi relative to it")
      ->type_name("DIR");
  addChoice<ColorChoice>(
      app, "--color", values.color, "When to use colours: auto, always or never",
      {{"auto", ColorChoice::Auto}, {"always", ColorChoice::Always}, {"never", ColorChoice::Never}})
      ->option_text("WHEN");
  CLI::Option* const quiet =
      app.add_flag("-q,--quiet", values.quiet, "Print only errors and the last line");
  CLI::Option* const verbose = app.add_flag("-v,--verbose", values.verbose,
                                            "Also print what passed, and every unverified report");
  verbose->excludes(quiet);
  app.set_version_flag(
      "--version",
      [verbose] { return verbose->count() > 0 ? versionsInUse() : "orvdiff " ORVDIFF_VERSION; },
      "Print the version and exit; with -v also those of the libraries in use");
}

/// Leaves out the "{all}" that CLI11 shows after a flag that stands for a value.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
    const std::string name = CLI::Formatter::make_option_name(option, isPositional);
    return name.substr(0, name.find('{'));
  }
};

/// Replaces CLI11's own terms in help texts with the usual ones.
void setHelpWords(CLI::App& app) {
  const auto formatter = app.get_formatter();
  formatter->label("Positionals", "Arguments");
  formatter->label("SUBCOMMAND", "COMMAND");
  formatter->label("REQUIRED", "");
  formatter->label("Needs", "requires");
  formatter->label("Excludes", "not with");
  for (CLI::App* const command : app.get_subcommands({})) {
    command->group("Commands");
    command->footer("All commands also take -C, --color, -q and -v; see orvdiff --help.");
  }
}

}  // namespace

std::optional<ExitStatus> parseCommandLine(int argc, char** argv, CommandLine& result) {
  CLI::App app("Verify report outputs against stored masters.", "orvdiff");
  Common values;
  Performer chosen;
  app.formatter(std::make_shared<HelpFormatter>());
  app.require_subcommand(1);
  app.fallthrough();  // lets the common options follow the command
  addCommonOptions(app, values);
  for (const auto add : kVerbs) {
    add(app, chosen);
  }
  setHelpWords(app);
  if (argc > 1 && std::string_view(argv[1]) == kCompleteWord) {
    printCompletions(app, std::vector<std::string>(argv + 2, argv + argc));
    return kExitPassed;
  }
  try {
    app.parse(argumentsFor(app, argc, argv));
  } catch (const CLI::Success& request) {
    app.exit(request, std::cout, std::cerr);
    return kExitPassed;
  } catch (const CLI::ParseError& mistake) {
    const bool lacksCommand =
        app.get_subcommands().empty() &&
        mistake.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const std::string what = lacksCommand ? "a command is required" : mistake.what();
    std::string command = "orvdiff";
    for (const CLI::App* const given : app.get_subcommands()) {
      command += ' ' + given->get_name();
    }
    std::cerr << "orvdiff: " << printable(what) << "\nTry \"" << command << " --help\".\n";
    return kExitTrouble;
  }
  result.workingFolder = values.workingFolder;
  result.verbosity = values.verbosity();
  CommonOptions common;
  common.words.assign(argv, argv + argc);
  common.verbosity = values.verbosity();
  common.color = values.color;
  std::error_code unknown;
  common.shellFolder = std::filesystem::current_path(unknown).string();
  if (!values.workingFolder.empty()) {
    common.startFolder = common.shellFolder;
  }
  result.perform = [chosen, common] { return chosen(common); };
  return std::nullopt;
}
