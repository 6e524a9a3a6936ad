#include "cli/report/PlainText.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "cli/terminal/Printable.h"

namespace {

constexpr std::size_t kMostOfLine = 1000;  // bytes; a page may be a single line
constexpr std::size_t kMostOfWords = 60;
constexpr const char* kCut = "\u2026";

char signOf(DiffLine::Kind kind) {
  return kind == DiffLine::Kind::Removed ? '-' : kind == DiffLine::Kind::Added ? '+' : ' ';
}

/// Brackets that look like those of a mask are told apart from them.
std::string withoutMaskBrackets(std::string text) {
  for (const auto& [bracket, escape] :
       {std::pair{"\u27E8", "\\u{27E8}"}, std::pair{"\u27E9", "\\u{27E9}"}}) {
    const std::string_view wanted = bracket;
    for (std::size_t at = 0; (at = text.find(wanted, at)) != std::string::npos;) {
      text.replace(at, wanted.size(), escape);
    }
  }
  return text;
}

std::string lineText(const DiffLine& line) {
  std::string text(1, signOf(line.kind));
  text += line.isCutBefore ? kCut : "";
  for (const DiffSpan& span : line.spans) {
    if (span.kind == DiffSpan::Kind::Masked) {
      text += "\u27E8" + printableStart(span.rule, kMostOfWords) + "\u27E9";
      continue;
    }
    const std::size_t room = kMostOfLine - std::min(kMostOfLine, text.size());
    text += withoutMaskBrackets(printableStart(span.text, room));
    if (span.text.size() > room) {
      return text;
    }
  }
  return text + (line.isCutAfter ? kCut : "");
}

/// Where a hunk is: what it names, or the number of its first changed line.
std::string placeOf(const DiffHunk& hunk) {
  if (!hunk.place.empty()) {
    return printableStart(hunk.place, kMostOfLine);
  }
  const auto changed = std::find_if(hunk.lines.begin(), hunk.lines.end(), [](const DiffLine& line) {
    return line.kind != DiffLine::Kind::Context;
  });
  if (changed == hunk.lines.end()) {
    return "unchanged";
  }
  return changed->masterLine != 0
             ? "line " + std::to_string(changed->masterLine)
             : "line " + std::to_string(changed->outputLine) + " of the output";
}

}  // namespace

bool LimitedText::add(std::string_view line) {
  if (m_isFull) {
    return false;
  }
  if (m_text.size() + line.size() + 1 > m_most) {
    m_isFull = true;
    m_text += "[more is left out here]\n";
    return false;
  }
  m_text.append(line).append("\n");
  return true;
}

std::string printableStart(std::string_view text, std::size_t most) {
  std::string result;
  while (!text.empty()) {
    const PrintableCharacter character = firstPrintable(text);
    if (result.size() + character.shown.size() > most) {
      return result + kCut;
    }
    result += character.shown;
    text.remove_prefix(character.length);
  }
  return result;
}

void addLines(std::string_view text, LimitedText& lines) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (!lines.add(printableStart(text.substr(0, end), kMostOfLine))) {
      return;
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void addHunk(const DiffHunk& hunk, bool withContext, LimitedText& lines) {
  lines.add("@@ " + placeOf(hunk) + " @@");
  for (const DiffLine& line : hunk.lines) {
    if (line.kind != DiffLine::Kind::Context || withContext) {
      if (!lines.add(lineText(line))) {
        return;
      }
      if (line.omitted > 0) {
        lines.add("[" + std::to_string(line.omitted) + " more such lines]");
      }
    }
  }
}

void addDifference(const PairRecord& pair, std::unordered_set<std::string>& shown,
                   LimitedText& lines) {
  if (pair.difference) {
    const Difference& difference = *pair.difference;
    for (const std::string& note : difference.notes) {
      addLines(note, lines);
    }
    for (const DiffHunk& hunk : difference.hunks) {
      bool isNew = false;
      for (const std::string& group : hunk.groups) {
        isNew = shown.insert(group).second || isNew;
      }
      addHunk(hunk, isNew, lines);
    }
    if (difference.hunkCount > difference.hunks.size()) {
      lines.add(std::to_string(difference.hunkCount - difference.hunks.size()) +
                " more places differ");
    }
  }
}

std::string changeWords(std::string_view removed, std::string_view added) {
  if (removed.empty() || added.empty()) {
    return printableStart(removed.empty() ? added : removed, kMostOfWords);
  }
  return printableStart(removed, kMostOfWords) + " \u2192 " + printableStart(added, kMostOfWords);
}

std::string headline(const PairRecord& pair) {
  std::string verdict(wordFor(pair.verdict));
  if (pair.known) {
    const KnownReason& reason = pair.known->reasons.front();
    return verdict + ": " + printableStart(reason.why, kMostOfLine) + " (until " +
           printable(reason.until) + ", " + printable(reason.place) + ')';
  }
  if (!pair.message.empty()) {
    return verdict + ": " + printableStart(pair.message, kMostOfLine);
  }
  if (pair.difference && !pair.difference->changes.empty()) {
    const Difference& difference = *pair.difference;
    const DiffChange& change = difference.changes.front();
    const std::string words = changeWords(change.removed, change.added);
    return (words.empty() ? verdict : words) +
           (difference.hunkCount > 1
                ? " (first of " + std::to_string(difference.hunkCount) + " places)"
                : "");
  }
  if (!pair.printed.empty()) {
    return verdict + ": " +
           printableStart(pair.printed.substr(0, pair.printed.find('\n')), kMostOfLine);
  }
  if (pair.at) {
    return verdict + " at " + std::to_string(pair.at->line) + ':' +
           std::to_string(pair.at->column) + " in the normalised text";
  }
  return verdict;
}

std::string folderOf(const std::string& report) {
  const std::string folder = std::filesystem::path(report).parent_path().string();
  return folder.empty() ? "." : folder;
}

const std::string& nameOf(const PairRecord& pair) {
  return pair.master.empty() ? pair.report : pair.master;
}

std::vector<std::string> shortfallsOf(const RunRecord& run) {
  std::vector<std::string> sentences = run.notes;
  if (!run.complete) {
    sentences.emplace_back("the run was interrupted; it did not come to all of its reports");
  }
  // A share on its own is a report of that share; several that are joined are to be a whole.
  const std::size_t shards = run.shards.indices.size();
  if (shards > 1 && shards < run.shards.count) {
    sentences.push_back("only " + std::to_string(shards) + " of " +
                        std::to_string(run.shards.count) + " shards are in this report");
  }
  return sentences;
}
