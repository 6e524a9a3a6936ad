#include "cli/report/PageContext.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <vector>

#include "cli/record/JsonText.h"
#include "cli/report/Packed.h"
#include "cli/report/PagePairs.h"

namespace {

constexpr std::size_t kMostBytes = std::size_t{512} << 10;  // of all blocks
constexpr std::size_t kMostBytesOfFile = std::size_t{4} << 20;
constexpr std::size_t kMostBytesOfLine = 300;
constexpr std::size_t kLines = 20;  // at each end of a longer fold

/// Lines of a master between two hunks, from 1.
struct Gap {
  std::size_t begin;
  std::size_t end;  ///< behind the last one
};

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    lines.push_back(!line.empty() && line.back() == '\r' ? line.substr(0, end - 1) : line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

/// What stands before each hunk, and behind the last one. Empty if the hunks do not name lines.
std::vector<Gap> gapsOf(const std::vector<DiffHunk>& hunks, std::size_t lines) {
  std::vector<Gap> gaps;
  std::size_t next = 1;
  for (const DiffHunk& hunk : hunks) {
    std::size_t first = 0;
    std::size_t behind = 0;
    for (const DiffLine& line : hunk.lines) {
      if (line.masterLine != 0) {
        first = first == 0 ? line.masterLine : first;
        behind = line.masterLine + line.omitted + 1;
      }
    }
    if (first == 0 || !hunk.place.empty()) {
      return {};
    }
    gaps.push_back({next, std::max(first, next)});
    next = behind;
  }
  gaps.push_back({next, std::max(lines + 1, next)});
  return gaps;
}

std::string lineJson(std::string_view line) {
  if (line.size() <= kMostBytesOfLine) {
    return textToJson(std::string(line)).dump();
  }
  std::size_t end = kMostBytesOfLine;
  while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0U) == 0x80U) {
    --end;  // not in the middle of a character
  }
  return textToJson(std::string(line.substr(0, end)) + "\u2026").dump();
}

std::string linesJson(const std::vector<std::string_view>& lines, std::size_t begin,
                      std::size_t end) {
  std::string json;
  for (std::size_t line = begin; line < std::min(end, lines.size() + 1); ++line) {
    json += (json.empty() ? "" : ",") + lineJson(lines[line - 1]);
  }
  return '[' + json + ']';
}

/// {"at": first line, "first": [line, ...], "left": lines that are not here, "last": [line, ...]}
std::string gapJson(const std::vector<std::string_view>& lines, const Gap& gap) {
  const std::size_t count = gap.end - gap.begin;
  const bool isWhole = count <= 2 * kLines;
  const std::size_t firstEnd = isWhole ? gap.end : gap.begin + kLines;
  const std::size_t lastBegin = isWhole ? gap.end : gap.end - kLines;
  return "{\"at\":" + std::to_string(gap.begin) +
         ",\"first\":" + linesJson(lines, gap.begin, firstEnd) +
         ",\"left\":" + std::to_string(lastBegin - firstEnd) +
         ",\"last\":" + linesJson(lines, lastBegin, gap.end) + '}';
}

/// Between hunks there is nothing but equal lines only if all hunks are there.
bool isWorthwhile(const PairRecord& pair) {
  return pair.verdict == Verdict::Differs && pair.difference && pair.difference->kind == "text" &&
         !pair.difference->hunks.empty() &&
         pair.difference->hunkCount == pair.difference->hunks.size() &&
         !pair.masterFile.hash.empty() && pair.masterFile.size.value_or(0) <= kMostBytesOfFile;
}

}  // namespace

void PageContext::add(std::size_t number, const PairRecord& pair, const FileReader& read) {
  if (m_elements.size() > kMostBytes || !isWorthwhile(pair)) {
    return;
  }
  std::string master;
  try {
    master = read(pair.master, pair.masterFile);
  } catch (const std::exception&) {
    return;  // the folds of this pair stay closed, as those of a run without record
  }
  const std::vector<std::string_view> lines = linesOf(master);
  std::string folds;
  for (const Gap& gap : gapsOf(pair.difference->hunks, lines.size())) {
    folds += (folds.empty() ? "" : ",") + gapJson(lines, gap);
  }
  m_block += (m_block.empty() ? "" : ",\n") + ('"' + std::to_string(number)) + "\":[" + folds + ']';
}

void PageContext::flush(std::size_t block) {
  if (!m_block.empty()) {
    m_elements += dataElement("context" + std::to_string(block), packed('{' + m_block + '}'));
    m_block.clear();
  }
}
