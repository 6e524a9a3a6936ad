#include "cli/report/MarkdownReport.h"

#include <algorithm>
#include <string_view>

#include "cli/report/PlainText.h"
#include "cli/terminal/Printable.h"

namespace {

// All that follows stays below 65,536 characters, even if its fences are as long as its texts.
constexpr std::size_t kMostTopics = 20;
constexpr std::size_t kMostBytesOfHunks = 28'000;
constexpr std::size_t kMostPairs = 50;
constexpr std::size_t kMostBytesOfRows = 12'000;
constexpr std::size_t kMostSentences = 10;
constexpr std::size_t kMostOfWords = 120;
constexpr std::size_t kMostOfSentence = 200;

std::string fenceFor(std::string_view text, std::size_t least) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (const char c : text) {
    run = c == '`' ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return std::string(std::max(longest + 1, least), '`');
}

/// A line of foreign text, which may stand in a cell of a table.
std::string code(std::string_view text, std::size_t most) {
  const std::string shown = printableStart(text, most);
  std::string cell;
  for (const char c : shown) {
    cell +=
        c == '|' ? "\\x7C" : std::string(1, c);  // nothing else keeps every reader's cells apart
  }
  const std::string fence = fenceFor(cell, 1);
  const bool needsGap = cell.empty() || cell.front() == '`' || cell.back() == '`';
  const char* const gap = needsGap ? " " : "";
  return fence + gap + cell + gap + fence;
}

/// The same for a text that is escaped already.
std::string block(const std::string& text) {
  const std::string fence = fenceFor(text, 3);
  return text.empty() ? text : fence + "diff\n" + text + fence + '\n';
}

std::string totals(const RunRecord& run) {
  std::string text = "| Verdict | Pairs |\n|---|---:|\n";
  for (const auto& [word, count] : run.totals) {
    text += "| " + word + " | " + std::to_string(count) + " |\n";
  }
  if (!run.unverified.empty()) {
    text += "| reports without a master | " + std::to_string(run.unverified.size()) + " |\n";
  }
  return text;
}

std::string heading(const RunRecord& run, bool isWhole) {
  const auto found = run.totals.find(std::string(wordFor(Verdict::Passed)));
  const std::uint64_t passed = found == run.totals.end() ? 0 : found->second;
  const auto known = run.totals.find(std::string(wordFor(Verdict::Known)));
  const std::uint64_t accepted = known == run.totals.end() ? 0 : known->second;
  const char* const sign = passed + accepted == run.pairs && isWhole ? "\u2705" : "\u274C";
  return std::string("## ") + sign + " orvdiff: " + std::to_string(passed) + " of " +
         countOf(run.pairs, "pair") + " passed" +
         (accepted > 0 ? ", " + std::to_string(accepted) + " known" : "") + "\n\n";
}

std::string sentences(std::vector<std::string> said, const std::vector<std::string>& shortfalls) {
  for (const std::string& sentence : shortfalls) {
    if (std::find(said.begin(), said.end(), sentence) == said.end()) {
      said.push_back(sentence);
    }
  }
  std::string text = said.empty() ? "" : "\n### Also to know\n\n";
  for (std::size_t i = 0; i < std::min(kMostSentences, said.size()); ++i) {
    text += "- " + code(said[i], kMostOfSentence) + '\n';
  }
  if (said.size() > kMostSentences) {
    text += "- and " + std::to_string(said.size() - kMostSentences) + " more\n";
  }
  return text;
}

}  // namespace

void MarkdownReport::add(const PairRecord& pair, const FileReader& /*read*/) {
  m_topics.add(pair);
  if (!isFailure(pair.verdict)) {
    return;
  }
  ++m_failed;
  if (m_shown < kMostPairs && m_rows.size() < kMostBytesOfRows) {
    ++m_shown;
    m_rows += "| " + std::string(wordFor(pair.verdict)) + " | " + code(pair.format, kMostOfWords) +
              " | " + code(nameOf(pair), kMostOfWords) + " | " +
              code(headline(pair), kMostOfWords) + " |\n";
  }
}

std::string MarkdownReport::topicsText(const std::vector<ChangeGroup>& groups) const {
  const std::vector<Topic> topics = m_topics.mostTelling(groups, kMostTopics);
  const std::size_t all = m_topics.count(groups);
  std::string text;
  if (!topics.empty()) {
    text = "\n### " + countOf(all, "change") + ", rarest first\n";
  }
  std::size_t bytesOfHunks = 0;
  for (const Topic& topic : topics) {
    text += "\n**" + countOf(topic.pairs, "pair") + "**: " + code(topic.headline, kMostOfWords);
    text += topic.name.empty() ? "\n\n" : ", first in " + code(topic.name, kMostOfWords) + "\n\n";
    const std::string hunk = block(topic.hunk);
    if (bytesOfHunks + hunk.size() <= kMostBytesOfHunks) {
      text += hunk;
      bytesOfHunks += hunk.size();
    }
  }
  if (topics.size() < all) {
    text += "\n" + std::to_string(all - topics.size()) + " more are left out here.\n";
  }
  return text;
}

std::string MarkdownReport::pairsText() const {
  if (m_failed == 0) {
    return {};
  }
  std::string text = "\n### " + countOf(m_failed, "pair") + " did not pass\n\n" +
                     "| Verdict | Format | Master | Why |\n|---|---|---|---|\n" + m_rows;
  if (m_shown < m_failed) {
    text += "\n" + std::to_string(m_failed - m_shown) + " more are left out here.\n";
  }
  return text;
}

std::string MarkdownReport::finish(const ReportSummary& summary) {
  const RunRecord& run = summary.run;
  const std::vector<std::string> shortfalls = shortfallsOf(run);
  return heading(run, shortfalls.empty()) + totals(run) + sentences(summary.account, shortfalls) +
         topicsText(summary.groups) + pairsText();
}
