#include <algorithm>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include "cli/commands/CommandLine.h"
#include "cli/commands/ConfigOptions.h"
#include "cli/commands/Verb.h"
#include "cli/custom/FormatList.h"

namespace {

using Row = std::vector<std::string>;

Row describe(const OrvDiffFormat& format) {
  const std::string name(format.name);
  const std::string option = "--" + name + "-output-dir";
  OrvFormatArguments arguments;
  arguments.outputDirectoryTypeName = option.c_str();
  const auto engine = FormatList::createEngine(format, arguments);
  const char* const whose = FormatList::ownOf(format) != nullptr ? " (the suite's own)" : "";
  return {name, engine->getOutputDirectoryTypeName(), engine->getMasterPattern("REPORT"),
          std::string(format.comparison) + whose};
}

struct FormatsOptions : CommonOptions {
  ConfigChoice config;
};

ExitStatus run(const FormatsOptions& options) {
  rulesForFiles(options.config, {"."}, options.verbosity);
  std::vector<Row> rows = {{"FORMAT", "OUTPUT FOLDER", "MASTERS", "COMPARED BY"}};
  for (const OrvDiffFormat& format : FormatList::all()) {
    rows.push_back(describe(format));
  }
  std::vector<std::size_t> widths(rows.front().size());
  for (const Row& row : rows) {
    std::transform(row.begin(), row.end(), widths.begin(), widths.begin(),
                   [](const std::string& cell, std::size_t width) {
                     return std::max(cell.size() + 2, width);
                   });
  }
  for (const Row& row : rows) {
    for (std::size_t i = 0; i + 1 < row.size(); ++i) {
      std::cout << std::left << std::setw(static_cast<int>(widths[i])) << row[i];
    }
    std::cout << row.back() << '\n';
  }
  return kExitPassed;
}

}  // namespace

void addFormats(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<FormatsOptions>(
      app, chosen, "formats", "List all formats, where their files are and how they are compared",
      run);
  addConfig(verb, options.config);
}
