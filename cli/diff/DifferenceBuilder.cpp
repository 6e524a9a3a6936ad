#include "cli/diff/DifferenceBuilder.h"

#include <algorithm>
#include <utility>

#include "cli/record/ContentHash.h"

namespace {

constexpr std::size_t kMostBytesOfChange = 200;  // what a group is named by
constexpr std::size_t kMostBytesOfValue = 400;   // of what changed in one line of a hunk
constexpr std::size_t kBytesAround = 60;         // of what did not change, on either side of it
constexpr std::size_t kDigitsOfGroup = 8;

bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/// `position`, or the start of the character that it is in the middle of.
std::size_t characterStart(std::string_view text, std::size_t position) {
  std::size_t start = position;
  while (start > 0 && start < text.size() && position - start < 3 && isContinuation(text[start])) {
    --start;
  }
  return start < text.size() && isContinuation(text[start]) ? position : start;
}

bool isBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

/// `text` on one line: no blanks at its ends, and a single space for those around a line break.
std::string onOneLine(std::string_view text) {
  std::string line;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t begin = i;
    while (i < text.size() && isBlank(text[i])) {
      ++i;
    }
    const std::string_view blanks = text.substr(begin, i - begin);
    if (begin > 0 && i < text.size()) {
      line += blanks.find('\n') == std::string_view::npos ? blanks : " ";
    }
    const std::size_t word = i;
    while (i < text.size() && !isBlank(text[i])) {
      ++i;
    }
    line += text.substr(word, i - word);
  }
  return line;
}

std::string shortened(std::string_view text) {
  if (text.size() <= kMostBytesOfChange) {
    return std::string(text);
  }
  return std::string(text.substr(0, characterStart(text, kMostBytesOfChange))) + "\u2026";
}

void append(DiffLine& line, DiffSpan::Kind kind, std::string_view text) {
  if (!text.empty()) {
    line.spans.push_back({kind, std::string(text), {}});
  }
}

/// A line that shows `text`, whose bytes from `begin` to `end` have changed, with as much around
/// them as fits.
DiffLine lineOf(DiffLine::Kind kind, std::string_view text, std::size_t begin, std::size_t end) {
  DiffLine line;
  line.kind = kind;
  const std::size_t first =
      begin > kBytesAround ? characterStart(text, begin - kBytesAround) : std::size_t{0};
  const std::size_t stop = std::min(end, characterStart(text, begin + kMostBytesOfValue));
  const std::size_t last = stop < end ? stop : characterStart(text, end + kBytesAround);
  line.isCutBefore = first > 0;
  line.isCutAfter = last < text.size();
  append(line, DiffSpan::Kind::Same, text.substr(first, begin - first));
  append(line, DiffSpan::Kind::Changed, text.substr(begin, stop - begin));
  append(line, DiffSpan::Kind::Same, text.substr(stop, last - stop));
  return line;
}

DiffLine removedLine(const DiffValue& value, std::size_t begin, std::size_t end) {
  DiffLine line = lineOf(DiffLine::Kind::Removed, value.text, begin, end);
  line.masterLine = value.line;
  return line;
}

DiffLine addedLine(const DiffValue& value, std::size_t begin, std::size_t end) {
  DiffLine line = lineOf(DiffLine::Kind::Added, value.text, begin, end);
  line.outputLine = value.line;
  return line;
}

/// Whether a byte is part of a word or a number, which are marked as a whole.
bool isWordByte(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         c == '.' || static_cast<unsigned char>(c) >= 0x80;
}

/// The length of what `a` and `b` start with alike, up to the end of a word.
std::size_t commonPrefix(std::string_view a, std::string_view b) {
  const std::size_t most = std::min(a.size(), b.size());
  const auto* const differs = std::mismatch(a.data(), a.data() + most, b.data()).first;
  auto length = static_cast<std::size_t>(differs - a.data());
  const auto cutsWord = [&length](std::string_view text) {
    return length < text.size() && isWordByte(text[length]);
  };
  if (cutsWord(a) || cutsWord(b)) {
    while (length > 0 && isWordByte(a[length - 1])) {
      --length;
    }
  }
  return length;
}

/// The length of what they end in alike, from the start of a word, after the first `prefix` bytes.
std::size_t commonSuffix(std::string_view a, std::string_view b, std::size_t prefix) {
  const std::size_t most = std::min(a.size(), b.size()) - prefix;
  std::size_t length = 0;
  while (length < most && a[a.size() - length - 1] == b[b.size() - length - 1]) {
    ++length;
  }
  const auto cutsWord = [&](std::string_view text) {
    return text.size() - length > prefix && isWordByte(text[text.size() - length - 1]);
  };
  if (cutsWord(a) || cutsWord(b)) {
    while (length > 0 && isWordByte(a[a.size() - length])) {
      --length;
    }
  }
  return length;
}

std::size_t bytesIn(const DiffHunk& hunk) {
  constexpr std::size_t kPerLine = 64;  // about what a record needs besides the text
  std::size_t bytes = hunk.place.size();
  for (const DiffLine& line : hunk.lines) {
    bytes += kPerLine;
    for (const DiffSpan& span : line.spans) {
      bytes += kPerLine + span.text.size() + span.rule.size();
    }
  }
  return bytes;
}

}  // namespace

DifferenceBuilder::DifferenceBuilder(std::string kind, const DiffRequest& request)
    : m_format(request.format.name), m_options(request.options) {
  m_difference.kind = std::move(kind);
}

bool DifferenceBuilder::hasRoomFor(std::size_t hunks) const {
  return (m_options.maxHunks == 0 || m_difference.hunks.size() < hunks) &&
         (m_options.maxBytes == 0 || m_keptBytes < m_options.maxBytes);
}

bool DifferenceBuilder::keepsNext() const {
  return hasRoomFor(m_options.maxHunks);
}

/// What a pair alone shows may stand behind many places of what all pairs show.
bool DifferenceBuilder::keeps(const DiffHunk& hunk) const {
  constexpr std::size_t kForNewChanges = 3;
  const auto isNew = [&](const std::string& group) {
    const auto change = m_changes.find(group);
    const auto here = std::count(hunk.groups.begin(), hunk.groups.end(), group);
    return change != m_changes.end() &&
           m_difference.changes[change->second].count == static_cast<std::uint64_t>(here);
  };
  const bool hasNew = std::any_of(hunk.groups.begin(), hunk.groups.end(), isNew);
  return hasRoomFor(hasNew ? kForNewChanges * m_options.maxHunks : m_options.maxHunks);
}

std::string DifferenceBuilder::count(std::string_view removed, std::string_view added) {
  std::string key(removed);
  key += '\0';
  key += added;
  return count(removed, added, key);
}

std::string DifferenceBuilder::count(std::string_view removed, std::string_view added,
                                     std::string_view key) {
  std::string hashed(m_format);
  hashed += '\0';
  hashed += key;
  std::string group = contentHash(hashed).substr(0, kDigitsOfGroup);
  auto& changes = m_difference.changes;
  if (const auto known = m_changes.find(group); known != m_changes.end()) {
    ++changes[known->second].count;
  } else if (changes.size() < Difference::kMostChanges) {
    m_changes.emplace(group, changes.size());
    const std::string lines[] = {onOneLine(removed), onOneLine(added)};
    const bool areOnlyBlanks = lines[0] == lines[1];
    changes.push_back({group, shortened(areOnlyBlanks ? removed : lines[0]),
                       shortened(areOnlyBlanks ? added : lines[1]), 1});
  }
  return group;
}

void DifferenceBuilder::add(DiffHunk hunk, bool isKept) {
  ++m_difference.hunkCount;
  if (isKept) {
    m_keptBytes += bytesIn(hunk);
    m_difference.hunks.push_back(std::move(hunk));
  }
}

void DifferenceBuilder::add(DiffHunk hunk, std::string_view removed, std::string_view added) {
  hunk.groups = {count(removed, added)};
  add(std::move(hunk), keepsNext());
}

void DifferenceBuilder::add(DiffHunk hunk, std::string_view removed, std::string_view added,
                            std::string_view key) {
  hunk.groups = {count(removed, added, key)};
  add(std::move(hunk), keepsNext());
}

void DifferenceBuilder::noteChange(const std::string& sentence) {
  note(sentence);
  count({}, sentence);
}

void DifferenceBuilder::addChange(const std::string& place, const DiffValue& master,
                                  const DiffValue& output) {
  DiffHunk hunk;
  if (keepsNext()) {
    const std::size_t prefix = commonPrefix(master.text, output.text);
    const std::size_t suffix = commonSuffix(master.text, output.text, prefix);
    hunk.place = place;
    hunk.lines = {removedLine(master, prefix, master.text.size() - suffix),
                  addedLine(output, prefix, output.text.size() - suffix)};
  }
  add(std::move(hunk), master.text, output.text);
}

void DifferenceBuilder::addRemoval(const std::string& place, const DiffValue& master) {
  DiffHunk hunk;
  hunk.place = place;
  hunk.lines = {removedLine(master, 0, master.text.size())};
  add(std::move(hunk), master.text, {});
}

void DifferenceBuilder::addAddition(const std::string& place, const DiffValue& output) {
  DiffHunk hunk;
  hunk.place = place;
  hunk.lines = {addedLine(output, 0, output.text.size())};
  add(std::move(hunk), {}, output.text);
}
