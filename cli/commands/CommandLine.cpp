#include "cli/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>

#include "cli/terminal/Printable.h"
#include "orvdiff/formats/OrvDiffFormats.h"

namespace {

/// Everything the options write to; the command is chosen once parsing is over.
struct Values {
  std::string workingFolder;
  ColorChoice color = ColorChoice::Auto;
  bool quiet = false;
  bool verbose = false;
  NormalizeOptions normalize;
  CompareOptions compare;
  NumdiffOptions numdiff;
  VerifyOptions verify;

  Verbosity verbosity() const {
    return quiet ? Verbosity::Quiet : verbose ? Verbosity::Verbose : Verbosity::Normal;
  }

  /// `options` with what the common options say of how to print.
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
                  "Schema of layout data, instead of the usual")
      ->type_name("FILE");
  command
      .add_option("--layout-namespace", layoutData.namespaceUri,
                  "Namespace of layout data, instead of the usual")
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
          ->group("Places of " + name + " files");
    };
    CLI::Option* const output = add("-output-dir", &FormatPlaces::outputDirectory,
                                    "Output folder below ../webcontent/bi; selects the format");
    output->type_name("NAME");
    add("-master-sub-folder", &FormatPlaces::masterSubFolder, "Folder below the master folder")
        ->needs(output)
        ->type_name("NAME");
    if (format.format == OrvOutputFormat::Cgs) {
      add("-suffix", &FormatPlaces::fileNameSuffix, "Take only masters that end in _TEXT")
          ->needs(output)
          ->type_name("TEXT");
    }
  }
}

/// Adds an option `name` that takes one of a few words and sets `value` to what the word stands
/// for.
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
    throw CLI::ValidationError(name, "\"" + word + "\" is none of " + words);
  };
  return app.add_option_function<std::string>(name, choose, help);
}

/// For files that are written: an empty name would pass for "none".
const CLI::Validator& notEmpty() {
  static const CLI::Validator validator(
      [](const std::string& text) { return text.empty() ? "needs the name of a file" : ""; }, "");
  return validator;
}

void addVerify(CLI::App& app, Values& values) {
  VerifyOptions& verify = values.verify;
  CLI::App* const command = app.add_subcommand(
      "verify", "Compare the outputs of reports with their masters, and say which are not right");
  command
      ->add_option("LOCATION", verify.locations,
                   "A report's own file, or a folder to search for reports (files that stand "
                   "beside a folder \"Masters\")")
      ->required()
      ->type_name("");
  command
      ->add_option("-f,--format", verify.formats.names,
                   "Verify this format only; may be given again, or as a list with commas "
                   "(default: all that need no other option)")
      ->allow_extra_args(false)  // what follows the name is a location
      ->delimiter(',')
      ->type_name("NAME");
  command
      ->add_option("--sub-folder", verify.formats.subFolder,
                   "A further level below master and output folders")
      ->type_name("NAME");
  command
      ->add_option("--folder-suffix", verify.formats.folderSuffix,
                   "Text after the names of output folders")
      ->type_name("TEXT");
  command
      ->add_option("--summary", verify.summaryFile,
                   "Write the test summary to FILE; - is standard output")
      ->check(notEmpty())
      ->type_name("FILE");
  command
      ->add_option("--harness-log", verify.harnessLog,
                   "Run as a test script, one test case per report, and write its log to FILE")
      ->check(notEmpty())
      ->type_name("FILE");
  addChoice<int>(*command, "--log-level", verify.harnessLogLevel, "How much the harness log says",
                 {{"minimal", MOXLogLevel::Minimal},
                  {"concise", MOXLogLevel::Concise},
                  {"normal", MOXLogLevel::Normal},
                  {"detailed", MOXLogLevel::Detailed}})
      ->option_text("minimal|concise|normal|detailed (default: normal)");
  command->add_flag("--save-normalized", verify.saveNormalized,
                    "Keep the normalised texts of a difference beside the output");
  command->add_flag("--list", verify.listOnly, "Say what would be verified, and run nothing");
  command->add_flag("--allow-none", verify.allowNone, "Succeed even if there is nothing to verify");
  addPlaces(*command, verify.formats);
  addLayoutData(*command, verify.formats.layoutData);
}

void addPair(CLI::App& command, PairOptions& pair) {
  command.add_option("MASTER", pair.master, "What the output should be")->required()->type_name("");
  command.add_option("ACTUAL", pair.actual, "What the output is")->required()->type_name("");
}

void addCompare(CLI::App& app, CompareOptions& compare) {
  CLI::App* const command =
      app.add_subcommand("compare", "Compare two files by the rule of a format");
  command->add_option("FORMAT", compare.format, "A name that \"orvdiff formats\" lists")
      ->required()
      ->type_name("");
  addPair(*command, compare);
  addLayoutData(*command, compare.layoutData);
}

void addNumdiff(CLI::App& app, NumdiffOptions& numdiff) {
  addPair(
      *app.add_subcommand("numdiff", "Compare the numbers in two files, to about fifteen digits"),
      numdiff);
}

void addNormalize(CLI::App& app, NormalizeOptions& normalize) {
  CLI::App* const command = app.add_subcommand(
      "normalize", "Print a file as a format compares it: without what changes from run to run");
  command->add_option("FORMAT", normalize.format, "A name that \"orvdiff formats\" lists")
      ->required()
      ->type_name("");
  command->add_option("FILE", normalize.file, "The file to read")->required()->type_name("");
}

void addCommonOptions(CLI::App& app, Values& values) {
  app.set_version_flag("--version", "orvdiff " ORVDIFF_VERSION);
  app.add_option("-C,--directory", values.workingFolder,
                 "Run as if started in this folder; outputs lie under ../webcontent/bi from it")
      ->type_name("DIR");
  addChoice<ColorChoice>(
      app, "--color", values.color, "Use colours: auto, always or never",
      {{"auto", ColorChoice::Auto}, {"always", ColorChoice::Always}, {"never", ColorChoice::Never}})
      ->option_text("WHEN");
  CLI::Option* const quiet =
      app.add_flag("-q,--quiet", values.quiet, "Only errors and the closing line");
  app.add_flag("-v,--verbose", values.verbose, "Also what passed, and every unverified report")
      ->excludes(quiet);
}

/// Whether `word` is an option, of any command, that takes the word behind it as its value.
bool takesValue(const CLI::App& app, const std::string& word) {
  const auto matches = [&word](const CLI::Option* option) {
    return !option->get_positional() && option->get_items_expected_max() > 0 &&
           option->check_name(word);
  };
  const auto options = app.get_options();
  const auto commands = app.get_subcommands({});
  return std::any_of(options.begin(), options.end(), matches) ||
         std::any_of(commands.begin(), commands.end(),
                     [&word](const CLI::App* command) { return takesValue(*command, word); });
}

bool isCommand(const CLI::App& app, const std::string& word) {
  const auto commands = app.get_subcommands({});
  return std::any_of(commands.begin(), commands.end(),
                     [&word](const CLI::App* command) { return command->check_name(word); });
}

/// The words of the command line, last first, as CLI11 wants them. It would take a location
/// "[2023]" for a list that holds 2023; "./[2023]" names the same file and is no list. And for the
/// value of "--summary=" it would take the next word, so that is refused here, as is a first word
/// that is no command.
std::vector<std::string> reversedWords(const CLI::App& app, int argc, char** argv) {
  std::vector<std::string> words;
  bool hasCommand = false;
  for (int i = 1; i < argc; ++i) {
    std::string word = argv[i];
    const bool isOption = word.size() > 1 && word.front() == '-';
    if (isOption && word.back() == '=' && takesValue(app, word.substr(0, word.size() - 1))) {
      throw CLI::ArgumentMismatch(word + " needs a value behind it");
    }
    if (!hasCommand && !isOption && !takesValue(app, argv[i - 1])) {
      if (!isCommand(app, word)) {
        throw CLI::ExtrasError("orvdiff", {word});
      }
      hasCommand = true;
    }
    const bool looksLikeList = !word.empty() && word.front() == '[' && word.back() == ']';
    words.push_back(looksLikeList && !takesValue(app, argv[i - 1]) ? "./" + word : word);
  }
  std::reverse(words.begin(), words.end());
  return words;
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
  return values.styled(values.verify);
}

}  // namespace

std::optional<ExitStatus> parseCommandLine(int argc, char** argv, CommandLine& result) {
  CLI::App app("Verifies the outputs of report runs against stored master files.", "orvdiff");
  Values values;
  app.require_subcommand(1);
  app.fallthrough();  // so that the common options may also stand behind the command
  addCommonOptions(app, values);
  addVerify(app, values);
  addCompare(app, values.compare);
  addNumdiff(app, values.numdiff);
  addNormalize(app, values.normalize);
  app.add_subcommand("formats", "List the formats, where their files lie and how they compare");
  for (CLI::App* const command : app.get_subcommands({})) {
    command->footer("Every command also takes -C, --color, -q and -v: see orvdiff --help.");
  }
  try {
    app.parse(reversedWords(app, argc, argv));
  } catch (const CLI::Success& request) {
    app.exit(request, std::cout, std::cerr);
    return kExitPassed;
  } catch (const CLI::ParseError& mistake) {
    std::cerr << "orvdiff: " << printable(mistake.what()) << "\nTry \"orvdiff --help\".\n";
    return kExitTrouble;
  }
  result.workingFolder = values.workingFolder;
  result.verbosity = values.verbosity();
  result.command = chosenCommand(app, values);
  return std::nullopt;
}
