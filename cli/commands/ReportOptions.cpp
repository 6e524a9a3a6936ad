#include "cli/commands/ReportOptions.h"

#include "cli/commands/Verb.h"

void addReportOptions(CLI::App& verb, std::vector<ReportRequest>& requests) {
  for (const ReportKind& kind : reportKinds()) {
    verb.add_option_function<std::string>(
            kind.option,
            [&requests, &kind](const std::string& file) {
              requests.push_back({&kind, file});
            },
            kind.help)
        ->check(notEmpty())
        ->type_name("FILE")
        ->group("Reports");
  }
}
