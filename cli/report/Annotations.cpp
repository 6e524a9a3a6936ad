#include "cli/report/Annotations.h"

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "cli/report/PlainText.h"
#include "cli/terminal/Printable.h"

namespace {

constexpr std::size_t kMostLines = 10;  // GitHub shows no more errors of a step
constexpr std::size_t kMostOfMessage = 300;

/// The name by which a build server knows a file: relative to the top of its checkout.
std::string fileOf(const Topic& topic) {
  const char* top = nullptr;
  for (const char* const variable : {"GITHUB_WORKSPACE", "CI_PROJECT_DIR"}) {
    top = top == nullptr ? std::getenv(variable) : top;
  }
  const std::string front = std::string(top == nullptr ? "" : top) + '/';
  const bool isInside = front.size() > 1 && topic.path.compare(0, front.size(), front) == 0;
  return printable(isInside ? topic.path.substr(front.size())
                            : std::filesystem::path(topic.name).lexically_normal().string());
}

/// Escaped for a workflow command. Names of files have to do without its separators.
std::string commandText(const std::string& text, bool isProperty) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '%':
        result += "%25";
        break;
      case ':':
        result += isProperty ? "%3A" : ":";
        break;
      case ',':
        result += isProperty ? "%2C" : ",";
        break;
      default:
        result += c;  // printable text has no line ends
    }
  }
  return result;
}

}  // namespace

void Annotations::add(const PairRecord& pair, const FileReader& /*read*/) {
  m_topics.add(pair);
}

ReportDocument Annotations::finish(const ReportSummary& summary) {
  std::vector<Line> lines;
  const std::vector<std::string> shortfalls = shortfallsOf(summary.run);
  if (!shortfalls.empty()) {
    const std::size_t more = shortfalls.size() - 1;
    lines.push_back({"", 0,
                     printableStart(shortfalls.front(), kMostOfMessage) +
                         (more > 0 ? " (and " + std::to_string(more) + " more)" : "")});
  }
  for (const Topic& topic : m_topics.mostTelling(summary.groups, kMostLines - lines.size())) {
    const std::string pairs = topic.pairs > 1 ? " (" + countOf(topic.pairs, "pair") + ')' : "";
    lines.push_back({fileOf(topic), topic.line, topic.headline + pairs});
  }
  return lines.empty() ? std::string() : print(lines);
}

std::string GitHubAnnotations::print(const std::vector<Line>& lines) const {
  std::string text;
  for (const Line& line : lines) {
    text += "::error title=orvdiff";
    text += line.file.empty() ? "" : ",file=" + commandText(line.file, true);
    text += line.line == 0 ? "" : ",line=" + std::to_string(line.line);
    text += "::" + commandText(line.message, false) + '\n';
  }
  return text;
}

std::string GitLabAnnotations::print(const std::vector<Line>& lines) const {
  const std::string name = std::to_string(std::time(nullptr)) + ":orvdiff\r\x1B[0K";
  std::string text = "\x1B[0Ksection_start:" + name + "orvdiff: what did not pass\n";
  for (const Line& line : lines) {
    text += "\x1B[31mERROR\x1B[0m ";
    text += line.file;
    text += line.line == 0 ? "" : ':' + std::to_string(line.line);
    text += (line.file.empty() ? "" : ": ") + line.message + '\n';
  }
  return text + "\x1B[0Ksection_end:" + name + '\n';
}
