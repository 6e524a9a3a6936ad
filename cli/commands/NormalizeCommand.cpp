#include <iostream>

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/Verb.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/MissingReason.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Printable.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/platform/VELErrors.h"

namespace {

struct NormalizeOptions : CommonOptions {
  std::string format;
  std::string file;
  ConfigChoice config;
};

ExitStatus run(const NormalizeOptions& options) {
  const FormatOptions own = rulesForFiles(options.config, {options.file}, Verbosity::Normal);
  const OrvDiffFormat& format = formatNamed(options.format);
  const auto engine = createPairEngine(format, {}, own.patterns);
  const OrvPatternList* const patterns = engine->getCleansingPatterns();
  if (patterns == nullptr) {
    throw CommandError("format " + options.format + " does not normalise; it is compared by " +
                       std::string(format.comparison));
  }
  OrvFileHandle file(options.file.c_str(), "r");
  if (file == nullptr) {
    throw CommandError(options.file + " " + missingReason(options.file));
  }
  InputText input = readText(options.file, file, options.verbosity);
  if (input.containsNul) {
    std::cerr << "orvdiff: " << printable(options.file)
              << " contains a NUL byte; only the text before it was normalised\n";
  }
  try {
    OrvTextBuffer unused = OrvDiffLib::strdupnew("");  // cleanse works on pairs
    OrvDiffLib::cleanse(input.text, unused, *patterns);
  } catch (const VELThrowable& error) {
    throw CommandError(options.file + ": " + causeOf(error, options.verbosity));
  }
  std::cout << input.text.get();
  return kExitPassed;
}

}  // namespace

void addNormalize(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<NormalizeOptions>(
      app, chosen, "normalize", "Print the normalised text of a file, as a format compares it",
      run);
  addFormat(verb, options.format);
  verb.add_option("FILE", options.file, "The file to read")->required()->type_name("");
  addConfig(verb, options.config);
}
