#include "cli/diff/TextEdits.h"

#include <algorithm>
#include <utility>

#include "cli/diff/Interner.h"
#include "cli/diff/SequenceDiff.h"
#include "cli/diff/TextTokens.h"

namespace {

constexpr std::size_t kMostTokens = 2'000'000;    // of a text
constexpr std::size_t kMostRegion = 1 << 20;      // bytes of both texts compared by words at once
constexpr std::size_t kMostWordBytes = 16 << 20;  // bytes compared by words in all

/// A text in tokens.
struct Tokens {
  std::string_view text;
  TokenStarts starts;

  std::size_t startOf(std::size_t token) const {
    return token < starts.size() ? starts[token] : text.size();
  }
};

bool isBlankText(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// How well an insertion or deletion of lines or blocks that starts here reads: at a table row, or
/// where an outer level of the text starts, rather than at what ends one.
int blockScore(std::string_view text, std::size_t begin) {
  constexpr int kMostIndent = 50;
  constexpr int kPerRank = 100;
  constexpr int kEndsSomething = -60;
  constexpr int kAfterEmptyLine = 10;
  std::size_t start = begin;
  while (start < text.size() && (text[start] == ' ' || text[start] == '\t')) {
    ++start;
  }
  const std::string_view rest = text.substr(start, 2);
  const bool endsSomething = rest == "</" || (!rest.empty() && (rest[0] == '}' || rest[0] == ']'));
  const bool isAfterEmptyLine = begin >= 2 && text[begin - 1] == '\n' && text[begin - 2] == '\n';
  return kPerRank * blockRank(text, start) -
         std::min(static_cast<int>(start - begin), kMostIndent) +
         (endsSomething ? kEndsSomething : 0) + (isAfterEmptyLine ? kAfterEmptyLine : 0);
}

/// The same for words.
int wordScore(std::string_view text, std::size_t begin) {
  constexpr int kPerRank = 10;
  const char before = begin == 0 ? '\n' : text[begin - 1];
  const bool endsTag = begin < text.size() && (text[begin] == '>' || text.substr(begin, 2) == "</");
  return kPerRank * blockRank(text, begin) +
         (before == '\n'  ? 8
          : before == '>' ? 4
                          : 0) +
         (before == ' ' ? 2 : 0) - (endsTag ? 5 : 0);
}

using TokenScore = int (*)(std::string_view text, std::size_t begin);

std::vector<TextEdit> compareTokens(const Tokens& a, const Tokens& b, TokenScore score,
                                    WorkBudget& budget, bool& isCoarse) {
  const TokenIds ids = numberTokens(a.text, a.starts, b.text, b.starts);
  SequenceDiff diff = diffSequences(ids.a, ids.b, budget);
  isCoarse = isCoarse || diff.isCoarse;
  slideEdits(diff.edits, ids.a, ids.b, [&](bool isInA, std::uint32_t begin, std::uint32_t) {
    const Tokens& side = isInA ? a : b;
    return score(side.text, side.startOf(begin));
  });
  std::vector<TextEdit> edits;
  edits.reserve(diff.edits.size());
  for (const SequenceEdit& edit : diff.edits) {
    edits.push_back({a.startOf(edit.beginA), a.startOf(edit.endA), b.startOf(edit.beginB),
                     b.startOf(edit.endB)});
  }
  return edits;
}

/// Compares the words of stretches that differ.
class WordComparison {
 public:
  WordComparison(std::string_view a, std::string_view b, WorkBudget& budget)
      : m_a(a), m_b(b), m_budget(budget) {}

  /// Appends the edits of the words in `region` to `edits`. Returns false if it leaves them coarse.
  bool refine(const TextEdit& region, std::vector<TextEdit>& edits) {
    const std::size_t length = region.endA - region.beginA + region.endB - region.beginB;
    const bool isReplacement = region.beginA < region.endA && region.beginB < region.endB;
    if (!isReplacement || length > kMostRegion || m_bytes + length > kMostWordBytes) {
      edits.push_back(region);
      return !isReplacement;
    }
    m_bytes += length;
    m_tokensA.text = m_a.substr(region.beginA, region.endA - region.beginA);
    m_tokensB.text = m_b.substr(region.beginB, region.endB - region.beginB);
    splitIntoWords(m_tokensA.text, m_tokensA.starts);
    splitIntoWords(m_tokensB.text, m_tokensB.starts);
    bool isCoarse = false;
    const std::size_t first = edits.size();
    for (TextEdit edit : compareTokens(m_tokensA, m_tokensB, wordScore, m_budget, isCoarse)) {
      edit = {edit.beginA + region.beginA, edit.endA + region.beginA, edit.beginB + region.beginB,
              edit.endB + region.beginB};
      edits.push_back(edit);
      joinTail(edits, first);
    }
    for (std::size_t i = first; i < edits.size(); ++i) {
      trimBlanks(edits[i]);
    }
    return !isCoarse;
  }

 private:
  std::string_view textA(const TextEdit& edit) const {
    return m_a.substr(edit.beginA, edit.endA - edit.beginA);
  }
  std::string_view textB(const TextEdit& edit) const {
    return m_b.substr(edit.beginB, edit.endB - edit.beginB);
  }

  /// Joins the last edits while what is equal between them is less than what they change: an
  /// "and" that two unrelated sentences share says nothing.
  void joinTail(std::vector<TextEdit>& edits, std::size_t first) const {
    const auto size = [](const TextEdit& edit) {
      return std::max(edit.endA - edit.beginA, edit.endB - edit.beginB);
    };
    while (edits.size() >= first + 2) {
      const TextEdit last = edits.back();
      TextEdit& former = edits[edits.size() - 2];
      const std::string_view between = m_a.substr(former.endA, last.beginA - former.endA);
      if (between.size() > std::min(size(former), size(last)) ||
          between.find('\n') != std::string_view::npos) {
        return;
      }
      former.endA = last.endA;
      former.endB = last.endB;
      edits.pop_back();
    }
  }

  /// Leaves out blanks that both sides have at the end of a word; where only blanks differ, all
  /// that is equal.
  void trimBlanks(TextEdit& edit) const {
    TextEdit trimmed = edit;
    while (!textA(trimmed).empty() && !textB(trimmed).empty() &&
           textA(trimmed).back() == textB(trimmed).back()) {
      --trimmed.endA;
      --trimmed.endB;
    }
    while (!textA(trimmed).empty() && !textB(trimmed).empty() &&
           textA(trimmed).front() == textB(trimmed).front()) {
      ++trimmed.beginA;
      ++trimmed.beginB;
    }
    if ((isBlankText(textA(trimmed)) && isBlankText(textB(trimmed))) || isAddedAtBlank(trimmed)) {
      edit = trimmed;
      return;
    }
    while (edit.endA > trimmed.endA && (m_a[edit.endA - 1] == ' ' || m_a[edit.endA - 1] == '\t')) {
      --edit.endA;
      --edit.endB;
    }
  }

  /// Whether a side only has more than the other, apart from it by a blank.
  bool isAddedAtBlank(const TextEdit& edit) const {
    const std::string_view more = textA(edit).empty() ? textB(edit) : textA(edit);
    return (textA(edit).empty() || textB(edit).empty()) && !more.empty() &&
           (more.front() == ' ' || more.back() == ' ');
  }

  std::string_view m_a, m_b;
  WorkBudget& m_budget;
  Tokens m_tokensA, m_tokensB;
  std::size_t m_bytes = 0;
};

/// How much of both texts is equal at the front, so that a token starts there; some of it is left,
/// because an edit may have to start earlier than the first byte that differs.
std::size_t commonFront(std::string_view a, std::string_view b) {
  constexpr std::size_t kMargin = 4096;
  const std::size_t shorter = std::min(a.size(), b.size());
  const auto front = static_cast<std::size_t>(
      std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(shorter), b.begin()).first -
      a.begin());
  const std::size_t start = front - std::min(front, kMargin);
  const std::size_t lineEnd = start == 0 ? std::string_view::npos : a.rfind('\n', start - 1);
  if (lineEnd != std::string_view::npos && start - lineEnd <= kMargin) {
    return lineEnd + 1;
  }
  return start == 0 ? 0 : wholeCharacterStart(a, start);
}

std::size_t commonBack(std::string_view a, std::string_view b) {
  constexpr std::size_t kMargin = 4096;
  const auto same = std::mismatch(
      a.rbegin(), a.rbegin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())),
      b.rbegin());
  const auto back = static_cast<std::size_t>(same.first - a.rbegin());
  if (back <= kMargin) {
    return 0;
  }
  const std::size_t end = wholeCharacterStart(a, a.size() - back + kMargin);
  const std::size_t lineEnd = a.substr(end, kMargin).find('\n');
  const std::size_t common =
      a.size() - (lineEnd == std::string_view::npos ? end : end + lineEnd + 1);
  return std::min(common, back);
}

}  // namespace

TextEdits compareTexts(std::string_view a, std::string_view b) {
  const std::size_t front = commonFront(a, b);
  a.remove_prefix(front);
  b.remove_prefix(front);
  const std::size_t back = commonBack(a, b);
  a.remove_suffix(back);
  b.remove_suffix(back);

  TextEdits result;
  Tokens tokensA = {a, {}};
  Tokens tokensB = {b, {}};
  if (!splitIntoBlocks(a, 0, kMostTokens, tokensA.starts) ||
      !splitIntoBlocks(b, 0, kMostTokens, tokensB.starts)) {
    result.isCoarse = true;
    const std::size_t least = 2 * std::max(a.size(), b.size()) / kMostTokens + 1;
    splitIntoBlocks(a, least, a.size(), tokensA.starts);
    splitIntoBlocks(b, least, b.size(), tokensB.starts);
  }
  WorkBudget budget;
  const std::vector<TextEdit> blocks =
      compareTokens(tokensA, tokensB, blockScore, budget, result.isCoarse);
  WordComparison words(a, b, budget);
  for (const TextEdit& block : blocks) {
    result.isCoarse = !words.refine(block, result.edits) || result.isCoarse;
  }
  for (TextEdit& edit : result.edits) {
    edit = {edit.beginA + front, edit.endA + front, edit.beginB + front, edit.endB + front};
  }
  return result;
}
