#pragma once

#include <memory>

#include "cli/report/ReportRenderer.h"

/// A kind of report that users can ask for.
struct ReportKind {
  const char* option;  ///< of the command line, such as "--html"
  const char* what;    ///< names the report in messages: "HTML report"
  const char* help;
  std::unique_ptr<ReportRenderer> (*make)();
  const char* value = nullptr;  ///< of the option, for a kind that is printed; else it is a file
};

/// All kinds, in the order of the help text.
const std::vector<ReportKind>& reportKinds();

/// A report that the user asked for.
struct ReportRequest {
  const ReportKind* kind;
  std::string file;  ///< "-": standard output
};
