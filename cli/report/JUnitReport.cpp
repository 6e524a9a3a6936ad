#include "cli/report/JUnitReport.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <string_view>

#include "cli/report/PlainText.h"
#include "cli/terminal/Printable.h"

namespace {

// Build servers hold the whole document in memory.
constexpr std::size_t kMostOfBody = std::size_t{4} << 10;
constexpr std::size_t kMostOfBodies = std::size_t{8} << 20;
constexpr const char* kLeftOut = "[the report has no room for more]\n";

/// `text`, which is printable, as the value of an attribute.
std::string encoded(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

/// `text`, which is printable but for line ends, as character data: pages have too many "<" and ">"
/// to write each as an entity.
std::string characterData(std::string text) {
  constexpr std::string_view kSplit = "]]]]><![CDATA[>";
  for (std::size_t at = 0; (at = text.find("]]>", at)) != std::string::npos; at += kSplit.size()) {
    text.replace(at, 3, kSplit);
  }
  return "<![CDATA[" + text + "]]>";
}

std::string attribute(const char* name, std::string_view value) {
  return std::string(" ") + name + "=\"" + encoded(value) + '"';
}

/// In hundredths, which is "0" for most pairs: a case should not take much room for having passed.
std::string timeAttribute(double seconds) {
  constexpr double kNothing = 0.005;
  std::array<char, 400> text = {};  // the largest number has 309 digits
  std::snprintf(text.data(), text.size(), " time=\"%.*f\"", seconds < kNothing ? 0 : 2,
                seconds < kNothing ? 0 : seconds);
  return text.data();
}

/// A folder as servers want it, as a package: "../suite/sales" is "suite.sales". A dot in a name
/// would start another package.
std::string packageOf(const std::string& folder) {
  std::string package;
  for (const auto& part : std::filesystem::path(folder)) {
    if (part == ".." || part == "." || part == "/") {
      continue;
    }
    package += package.empty() ? "" : ".";
    for (const char c : printable(part.string())) {
      package += c == '.' ? std::string("\\x2E") : std::string(1, c);
    }
  }
  return package.empty() ? "reports" : package;
}

void removeFront(std::string_view& text, std::string_view front) {
  if (text.substr(0, front.size()) == front) {
    text.remove_prefix(front.size());
  }
}

/// What tells a pair from the others of its folder: "Revenue.html", or "XLS/Revenue.html (xls)"
/// where the name does not tell the format.
std::string caseName(const PairRecord& pair) {
  std::string_view name = nameOf(pair);
  removeFront(name, folderOf(pair.report) + '/');
  removeFront(name, "Masters/");
  const bool tellsFormat = '.' + pair.format == std::filesystem::path(name).extension();
  return printable(name) + (tellsFormat ? "" : " (" + printable(pair.format) + ')');
}

/// The output, or its folder if it has the name of the master, as with cp.
std::string targetOf(const PairRecord& pair) {
  const std::filesystem::path output = pair.output;
  const bool isNamesake = output.filename() == std::filesystem::path(pair.master).filename();
  return isNamesake ? (output.parent_path() / "").string() : pair.output;
}

std::string bodyOf(const PairRecord& pair, std::unordered_set<std::string>& shown) {
  LimitedText lines(kMostOfBody);
  lines.add(headline(pair));
  if (!pair.master.empty()) {
    lines.add(printable(pair.master) + " -> " + printable(targetOf(pair)));
  }
  addDifference(pair, shown, lines);
  addLines(pair.printed, lines);
  return lines.text();
}

}  // namespace

void JUnitReport::Suite::count(const Case& added) {
  ++tests;
  failures += added.outcome == Outcome::Failure ? 1 : 0;
  errors += added.outcome == Outcome::Error ? 1 : 0;
  skipped += added.outcome == Outcome::Skipped ? 1 : 0;
  seconds += added.seconds;
}

std::string JUnitReport::Suite::counts() const {
  return " tests=\"" + std::to_string(tests) + "\" failures=\"" + std::to_string(failures) +
         "\" errors=\"" + std::to_string(errors) + '"';
}

JUnitReport::Outcome JUnitReport::outcomeOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::Passed:
      return Outcome::Passed;
    case Verdict::Known:
    case Verdict::NotRun:
      return Outcome::Skipped;
    case Verdict::Differs:
    case Verdict::Missing:
    case Verdict::Failed:
    case Verdict::Stale:
      return Outcome::Failure;
    case Verdict::Error:
    case Verdict::Crashed:
    case Verdict::TimedOut:
    case Verdict::Partly:
      break;
  }
  return Outcome::Error;
}

void JUnitReport::addCase(const std::string& suite, const Case& added) {
  constexpr const char* kElements[] = {"", "failure", "error", "skipped"};
  const auto [found, isNew] = m_indexOf.try_emplace(suite, m_suites.size());
  if (isNew) {
    m_suites.emplace_back().name = suite;
  }
  Suite& target = m_suites[found->second];
  target.count(added);
  m_all.count(added);
  // Servers drop a case that has the names of another.
  const std::size_t use = ++m_uses[added.className + '\n' + added.name];
  target.cases += "<testcase" + attribute("classname", added.className) +
                  attribute("name", added.name + (use > 1 ? " #" + std::to_string(use) : "")) +
                  timeAttribute(added.seconds);
  if (added.outcome == Outcome::Passed) {
    target.cases += "/>\n";
    return;
  }
  const bool hasRoom = m_bytesOfBodies + added.body.size() <= kMostOfBodies;
  const std::string body = characterData(hasRoom ? added.body : added.message + '\n' + kLeftOut);
  m_bytesOfBodies += body.size();
  const std::string element = kElements[static_cast<std::size_t>(added.outcome)];
  target.cases += "><" + element + attribute("message", added.message) +
                  attribute("type", added.type) + '>' + body + "</" + element + "></testcase>\n";
}

void JUnitReport::add(const PairRecord& pair, const FileReader& /*read*/) {
  const std::string folder = folderOf(pair.report);
  Case added = {packageOf(folder),
                caseName(pair),
                pair.seconds,
                outcomeOf(pair.verdict),
                std::string(wordFor(pair.verdict)),
                {},
                {}};
  if (added.outcome != Outcome::Passed) {
    added.message = headline(pair);
    added.body = bodyOf(pair, m_shownChanges);
  }
  addCase(folder, added);
}

/// What no pair tells: without it, half a run would look like a whole one that passed.
void JUnitReport::addRun(const RunRecord& run) {
  for (const std::string& report : run.unverified) {
    const std::string folder = folderOf(report);
    const std::string why = "no master in any selected format";
    addCase(folder,
            {packageOf(folder), printable(std::filesystem::path(report).filename().string()), 0,
             Outcome::Skipped, "not verified", why, why + '\n'});
  }
  LimitedText problems(kMostOfBody);
  for (const std::string& problem : shortfallsOf(run)) {
    problems.add(printable(problem));
  }
  if (!problems.text().empty()) {
    const std::string& text = problems.text();
    addCase("orvdiff", {"orvdiff", "the run as a whole", 0, Outcome::Error, "incomplete",
                        text.substr(0, text.find('\n')), text});
  }
}

std::string JUnitReport::finish(const ReportSummary& summary) {
  const RunRecord& run = summary.run;
  addRun(run);
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"orvdiff\"" +
                     m_all.counts() + timeAttribute(m_all.seconds) + ">\n";
  for (Suite& suite : m_suites) {
    const std::string folder = printable(suite.name);
    text += "<testsuite" + attribute("name", folder) + suite.counts() + " skipped=\"" +
            std::to_string(suite.skipped) + '"' + timeAttribute(suite.seconds) +
            attribute("timestamp", printable(run.start.substr(0, run.start.find('Z')))) +
            attribute("hostname", printable(run.host)) + attribute("file", folder) + ">\n" +
            suite.cases + "</testsuite>\n";
    suite.cases = {};
  }
  return text + "</testsuites>\n";
}
