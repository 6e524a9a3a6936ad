#include "cli/report/ReportKinds.h"

#include "cli/report/Annotations.h"
#include "cli/report/HtmlReport.h"
#include "cli/report/JUnitReport.h"
#include "cli/report/JsonReport.h"
#include "cli/report/MarkdownReport.h"

namespace {

template <typename Renderer>
std::unique_ptr<ReportRenderer> make() {
  return std::make_unique<Renderer>();
}

constexpr const char* kAnnotationsHelp =
    "Print the ten most telling lines as a build server wants them: github or gitlab";

}  // namespace

const std::vector<ReportKind>& reportKinds() {
  static const std::vector<ReportKind> kinds = {
      {"--html", "HTML report", "Write the run to FILE as a page for browsers", make<HtmlReport>},
      {"--json", "JSON report", "Write the run, its groups and its pairs to FILE as JSON",
       make<JsonReport>},
      {"--junit", "JUnit report", "Write the pairs to FILE as JUnit XML, for build servers",
       make<JUnitReport>},
      {"--markdown", "Markdown report", "Write the run to FILE as Markdown, for a merge request",
       make<MarkdownReport>},
      {"--annotations", "annotations", kAnnotationsHelp, make<GitHubAnnotations>, "github"},
      {"--annotations", "annotations", kAnnotationsHelp, make<GitLabAnnotations>, "gitlab"},
  };
  return kinds;
}
