#include "cli/commands/ReportOptions.h"

#include <string_view>

#include "cli/commands/Verb.h"
#include "cli/report/ReportFiles.h"

namespace {

CLI::Option* addOption(CLI::App& verb, const ReportKind& kind,
                       const std::function<void(const std::string&)>& take) {
  return verb.add_option_function<std::string>(kind.option, take, kind.help)->group("Reports");
}

/// An option whose values choose among the kinds that share it.
void addChoice(CLI::App& verb, const ReportKind& first, std::vector<ReportRequest>& requests) {
  std::vector<std::string> values;
  for (const ReportKind& kind : reportKinds()) {
    if (std::string_view(kind.option) == first.option) {
      values.emplace_back(kind.value);
    }
  }
  const auto take = [&requests, &first](const std::string& value) {
    for (const ReportKind& kind : reportKinds()) {
      if (std::string_view(kind.option) == first.option && kind.value == value) {
        requests.push_back({&kind, ReportFiles::kStandardOutput});
      }
    }
  };
  addOption(verb, first, take)->check(CLI::IsMember(values))->option_text("SERVER");
}

}  // namespace

void addReportOptions(CLI::App& verb, std::vector<ReportRequest>& requests) {
  for (const ReportKind& kind : reportKinds()) {
    if (kind.value == nullptr) {
      const auto take = [&requests, &kind](const std::string& file) {
        requests.push_back({&kind, file});
      };
      addOption(verb, kind, take)->check(notEmpty())->type_name("FILE");
    } else if (verb.get_option_no_throw(kind.option) == nullptr) {
      addChoice(verb, kind, requests);
    }
  }
}
