#include "cli/commands/Verb.h"

const CLI::Validator& notEmpty() {
  static const CLI::Validator validator(
      [](const std::string& text) { return text.empty() ? "needs a file name" : ""; }, "");
  return validator;
}

void addFormat(CLI::App& verb, std::string& format) {
  verb.add_option("FORMAT", format, "A format listed by \"orvdiff formats\"")
      ->required()
      ->type_name("");
}

void addPair(CLI::App& verb, PairOptions& pair) {
  verb.add_option("MASTER", pair.master, "The expected output")->required()->type_name("");
  verb.add_option("ACTUAL", pair.actual, "The output to check")->required()->type_name("");
}

void addTimeout(CLI::App& verb, double& seconds) {
  verb.add_option("--timeout", seconds,
                  "Give up on a pair after SECONDS; 0 for no limit (default: 300)")
      ->check(CLI::NonNegativeNumber)
      ->option_text("SECONDS");
}

void addLayoutData(CLI::App& verb, LayoutDataOptions& layoutData) {
  verb.add_option("--layout-schema", layoutData.schema,
                  "Layout-data schema (default: as configured)")
      ->type_name("FILE");
  verb.add_option("--layout-namespace", layoutData.namespaceUri,
                  "Namespace of the layout-data schema (default: as configured)")
      ->type_name("URI");
}
