#include "cli/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <iostream>

#include "cli/commands/Arguments.h"
#include "cli/terminal/Printable.h"
#include "orvdiff/formats/OrvDiffFormats.h"

namespace {

/// The targets of all options. Which command they belong to is known once parsing is done.
struct Values {
  std::string workingFolder;
  ColorChoice color = ColorChoice::Auto;
  bool quiet = false;
  bool verbose = false;
  NormalizeOptions normalize;
  CompareOptions compare;
  NumdiffOptions numdiff;
  VerifyOptions verify;
  ShowOptions show;
  MergeOptions merge;

  Verbosity verbosity() const {
    return quiet ? Verbosity::Quiet : verbose ? Verbosity::Verbose : Verbosity::Normal;
  }

  /// `options` with the common options that control printing filled in.
  template <typename Options>
  Options styled(Options options) const {
    options.verbosity = verbosity();
    options.color = color;
    return options;
  }
};

void addLayoutData(CLI::App& command, LayoutDataOptions& layoutData) {
  command
      .add_option("--layout-schema", layoutData.schema,
                  "Layout-data schema (default: as configured)")
      ->type_name("FILE");
  command
      .add_option("--layout-namespace", layoutData.namespaceUri,
                  "Namespace of the layout-data schema (default: as configured)")
      ->type_name("URI");
}

void addPlaces(CLI::App& verify, FormatOptions& formats) {
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    if (!format.needsArguments) {
      continue;
    }
    const std::string name(format.name);
    const auto add = [&](const char* what, std::string FormatPlaces::*member, const char* help) {
      return verify
          .add_option_function<std::string>(
              "--" + name + what,
              [&formats, name, member](const std::string& text) {
                formats.places[name].*member = text;
              },
              help)
          ->group("Location of " + name + " files");
    };
    CLI::Option* const output =
        add("-output-dir", &FormatPlaces::outputDirectory,
            "Output folder below ../webcontent/bi; also selects the format");
    output->type_name("NAME");
    add("-master-sub-folder", &FormatPlaces::masterSubFolder, "Subfolder of the master folder")
        ->needs(output)
        ->type_name("NAME");
    if (format.format == OrvOutputFormat::Cgs) {
      add("-suffix", &FormatPlaces::fileNameSuffix, "Only masters whose names end in _TEXT")
          ->needs(output)
          ->type_name("TEXT");
    }
  }
}

/// Adds an option `name` whose argument is one of a few words, each of which stands for a value.
template <typename Value>
CLI::Option* addChoice(CLI::App& app, const std::string& name, Value& value, const char* help,
                       const std::vector<std::pair<std::string, Value>>& choices) {
  const auto choose = [&value, name, choices](const std::string& word) {
    std::string words;
    for (const auto& [choice, meaning] : choices) {
      if (word == choice) {
        value = meaning;
        return;
      }
      words += (words.empty() ? "" : ", ") + choice;
    }
    throw CLI::ValidationError(name, "\"" + word + "\" is not one of " + words);
  };
  return app.add_option_function<std::string>(name, choose, help);
}

/// For output files: an empty name means "none" in `VerifyOptions`, so it must not be given.
const CLI::Validator& notEmpty() {
  static const CLI::Validator validator(
      [](const std::string& text) { return text.empty() ? "needs a file name" : ""; }, "");
  return validator;
}

void addWorkers(CLI::App& verify, VerifyOptions& options) {
  constexpr std::size_t kMostJobs = 1024;
  verify
      .add_option("-j,--jobs", options.jobs,
                  "Verify in N processes at once (default: one per core)")
      ->check(CLI::Range(std::size_t{1}, kMostJobs))
      ->option_text("N");
  verify
      .add_option("--timeout", options.secondsPerPair,
                  "Give up on a pair after SECONDS; 0 for no limit (default: 300)")
      ->check(CLI::NonNegativeNumber)
      ->option_text("SECONDS");
  verify
      .add_option("--memory", options.memoryMegabytes,
                  "Limit the memory of each process (default: no limit)")
      ->check(CLI::Range(std::uint64_t{64}, std::uint64_t{1} << 32))
      ->option_text("MB");
}

void addRecord(CLI::App& verify, VerifyOptions& options) {
  verify
      .add_option("--record", options.recordFolder,
                  "Keep a record of the run in the new folder DIR")
      ->check(notEmpty())
      ->type_name("DIR");
  verify
      .add_option("--failed", options.failedRecord,
                  "Verify again only the pairs that did not pass in the record DIR")
      ->check(notEmpty())
      ->type_name("DIR");
  verify
      .add_option(
          "--shard", options.shard,
          "Verify only the I-th of N shares of the reports; \"orvdiff merge\" joins the records")
      ->check(notEmpty())
      ->type_name("I/N");
}

void addVerify(CLI::App& app, Values& values) {
  VerifyOptions& verify = values.verify;
  CLI::App* const command =
      app.add_subcommand("verify", "Compare report outputs with their stored masters");
  command
      ->add_option("LOCATION", verify.locations,
                   "A report file, or a folder to search for reports (files next to a folder "
                   "named \"Masters\"); required unless --failed names a record")
      ->option_text("...");
  command
      ->add_option("-f,--format", verify.formats.names,
                   "Verify only this format; repeat it or separate names with commas "
                   "(default: all that need no further options)")
      ->allow_extra_args(false)  // the word after the name is a location
      ->delimiter(',')
      ->option_text("NAME");
  command
      ->add_option("--sub-folder", verify.formats.subFolder,
                   "Subfolder of the master and output folders")
      ->type_name("NAME");
  command
      ->add_option("--folder-suffix", verify.formats.folderSuffix,
                   "Text appended to the names of output folders")
      ->type_name("TEXT");
  command
      ->add_option("--summary", verify.summaryFile,
                   "Write a test summary to FILE (-: standard output)")
      ->check(notEmpty())
      ->type_name("FILE");
  command
      ->add_option("--harness-log", verify.harnessLog,
                   "Write a test-harness log to FILE, with one test case per report")
      ->check(notEmpty())
      ->type_name("FILE");
  addChoice<int>(*command, "--log-level", verify.harnessLogLevel,
                 "How much detail the harness log contains",
                 {{"minimal", MOXLogLevel::Minimal},
                  {"concise", MOXLogLevel::Concise},
                  {"normal", MOXLogLevel::Normal},
                  {"detailed", MOXLogLevel::Detailed}})
      ->option_text("minimal|concise|normal|detailed (default: normal)");
  command->add_flag("--save-normalized", verify.saveNormalized,
                    "Save the normalised texts of each difference next to the output");
  command->add_flag("--list", verify.listOnly, "List what would be compared, without comparing it");
  command->add_flag("--allow-none", verify.allowNone, "Succeed even if there is nothing to verify");
  addWorkers(*command, verify);
  addRecord(*command, verify);
  addPlaces(*command, verify.formats);
  addLayoutData(*command, verify.formats.layoutData);
}

void addPair(CLI::App& command, PairOptions& pair) {
  command.add_option("MASTER", pair.master, "The expected output")->required()->type_name("");
  command.add_option("ACTUAL", pair.actual, "The output to check")->required()->type_name("");
}

void addCompare(CLI::App& app, CompareOptions& compare) {
  CLI::App* const command =
      app.add_subcommand("compare", "Compare two files by the rules of a format");
  command->add_option("FORMAT", compare.format, "A format listed by \"orvdiff formats\"")
      ->required()
      ->type_name("");
  addPair(*command, compare);
  addLayoutData(*command, compare.layoutData);
}

void addNumdiff(CLI::App& app, NumdiffOptions& numdiff) {
  addPair(*app.add_subcommand("numdiff", "Compare the numbers in two files, to about 15 digits"),
          numdiff);
}

void addNormalize(CLI::App& app, NormalizeOptions& normalize) {
  CLI::App* const command = app.add_subcommand(
      "normalize", "Print the normalised text of a file, as a format compares it");
  command->add_option("FORMAT", normalize.format, "A format listed by \"orvdiff formats\"")
      ->required()
      ->type_name("");
  command->add_option("FILE", normalize.file, "The file to read")->required()->type_name("");
}

void addShow(CLI::App& app, ShowOptions& show) {
  app.add_subcommand("show", "Print what a record holds, or what changed between two records")
      ->add_option("RECORD", show.records, "A folder that verify --record wrote; the earlier first")
      ->expected(1, 2)
      ->required()
      ->type_name("");
}

void addMerge(CLI::App& app, MergeOptions& merge) {
  CLI::App* const command =
      app.add_subcommand("merge", "Join the records of shards into the record of the whole run");
  command->add_option("RECORD", merge.records, "Folders that verify --shard --record wrote")
      ->required()
      ->type_name("");
  command->add_option("-o,--output", merge.target, "The new folder for the joined record")
      ->required()
      ->check(notEmpty())
      ->type_name("DIR");
  command->add_flag("--partial", merge.isPartial, "Accept that shards are missing");
}

void addCommonOptions(CLI::App& app, Values& values) {
  app.set_version_flag("--version", "orvdiff " ORVDIFF_VERSION);
  app.add_option("-C,--directory", values.workingFolder,
                 "Run as if started in DIR; outputs are in ../webcontent/bi relative to it")
      ->type_name("DIR");
  addChoice<ColorChoice>(
      app, "--color", values.color, "When to use colours: auto, always or never",
      {{"auto", ColorChoice::Auto}, {"always", ColorChoice::Always}, {"never", ColorChoice::Never}})
      ->option_text("WHEN");
  CLI::Option* const quiet =
      app.add_flag("-q,--quiet", values.quiet, "Print only errors and the last line");
  app.add_flag("-v,--verbose", values.verbose,
               "Also print what passed, and every unverified report")
      ->excludes(quiet);
}

Command chosenCommand(const CLI::App& app, Values& values) {
  if (app.got_subcommand("formats")) {
    return FormatsOptions{};
  }
  if (app.got_subcommand("normalize")) {
    values.normalize.verbosity = values.verbosity();
    return values.normalize;
  }
  if (app.got_subcommand("compare")) {
    return values.styled(values.compare);
  }
  if (app.got_subcommand("numdiff")) {
    return values.styled(values.numdiff);
  }
  if (app.got_subcommand("show")) {
    return values.styled(values.show);
  }
  if (app.got_subcommand("merge")) {
    return values.styled(values.merge);
  }
  return values.styled(values.verify);
}

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
  Values values;
  app.require_subcommand(1);
  app.fallthrough();  // lets the common options follow the command
  addCommonOptions(app, values);
  addVerify(app, values);
  addCompare(app, values.compare);
  addNumdiff(app, values.numdiff);
  addShow(app, values.show);
  addMerge(app, values.merge);
  addNormalize(app, values.normalize);
  app.add_subcommand("formats",
                     "List all formats, where their files are and how they are compared");
  setHelpWords(app);
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
    std::cerr << "orvdiff: " << printable(what) << "\nTry \"orvdiff --help\".\n";
    return kExitTrouble;
  }
  values.verify.words.assign(argv, argv + argc);
  result.workingFolder = values.workingFolder;
  result.verbosity = values.verbosity();
  result.command = chosenCommand(app, values);
  return std::nullopt;
}
