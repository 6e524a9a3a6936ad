#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "cli/commands/CommandLine.h"
#include "cli/commands/FileCommands.h"
#include "cli/commands/Verb.h"
#include "cli/system/CommandError.h"
#include "orvdiff/compare/OrvDiffFloatComparison.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

using Mismatch = OrvDiffFloatComparison::Mismatch;
using Number = OrvDiffFloatComparison::Number;

constexpr const char* kIndent = "          ";

void printNumber(const char* side, const Number& number) {
  constexpr std::size_t kMostDigits = 60;
  const std::string_view text(number.start, static_cast<std::size_t>(number.end - number.start));
  std::cout << kIndent << side;
  if (!number.found) {
    std::cout << "no more numbers\n";
    return;
  }
  std::cout << text.substr(0, kMostDigits) << (text.size() > kMostDigits ? "..." : "") << " at "
            << number.line << ':' << number.column << '\n';
}

void printMismatch(const Mismatch& mismatch) {
  printNumber("master: ", mismatch.master);
  printNumber("actual: ", mismatch.actual);
  if (mismatch.master.found && mismatch.actual.found) {
    std::cout << kIndent << "difference " << mismatch.difference << ", tolerance "
              << mismatch.tolerance << '\n';
  }
}

bool hasNumber(const char* text) {
  return OrvDiffFloatComparison().findFirstMismatch(text, "").has_value();
}

/// The result for texts whose numbers agree. Raises `CommandError` if neither contains a number.
std::unique_ptr<const OrvDiffResult> passOf(const PairOptions& options, const InputText& master,
                                            const InputText& actual) {
  if (!hasNumber(master.text.get())) {
    throw CommandError("nothing was compared: neither " + options.master + " nor " +
                       options.actual + " contains a number");
  }
  if (master.containsNul || actual.containsNul) {
    return std::make_unique<OrvDiffResultPassUpToNul>(
        options.master, options.actual, master.containsNul ? options.master : options.actual);
  }
  return std::make_unique<OrvDiffResultPass>(options.master, options.actual);
}

ExitStatus run(const PairOptions& options) {
  OrvFileHandle master(options.master.c_str(), "r");
  OrvFileHandle actual(options.actual.c_str(), "r");
  std::unique_ptr<const OrvDiffResult> result(
      OrvDiffLib::checkOpenFiles(options.master, options.actual, master, actual));
  std::optional<Mismatch> mismatch;
  InputText masterText = {};
  InputText actualText = {};
  if (result == nullptr) {
    masterText = readText(options.master, master, options.verbosity);
    actualText = readText(options.actual, actual, options.verbosity);
    mismatch =
        OrvDiffFloatComparison().findFirstMismatch(masterText.text.get(), actualText.text.get());
    result = mismatch ? std::make_unique<OrvDiffResultFailDiff>(options.master, options.actual)
                      : passOf(options, masterText, actualText);
  }
  const ExitStatus status = printPair(recordOf(*result), options);
  if (mismatch && options.verbosity != Verbosity::Quiet) {
    printMismatch(*mismatch);
  }
  return status;
}

}  // namespace

void addNumdiff(CLI::App& app, Performer& chosen) {
  const auto [verb, options] = addVerb<PairOptions>(
      app, chosen, "numdiff", "Compare the numbers in two files, to about 15 digits", run);
  addPair(verb, options);
}
