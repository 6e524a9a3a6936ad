#include "cli/probe/Anchor.h"

#include <algorithm>
#include <vector>

#include "cli/probe/Rule.h"

namespace {

constexpr std::size_t kLongestAnchor = 80;
constexpr std::size_t kShortestLabel = 2;

constexpr std::string_view kTags[] = {
    "table",  "thead", "tbody", "tfoot", "tr",   "td",   "th",     "span",    "div",  "p",    "a",
    "b",      "i",     "u",     "em",    "font", "img",  "strong", "small",   "li",   "ul",   "ol",
    "dl",     "dt",    "dd",    "br",    "hr",   "h1",   "h2",     "h3",      "h4",   "h5",   "h6",
    "center", "nobr",  "pre",   "code",  "body", "html", "head",   "section", "form", "input"};
constexpr std::string_view kStopWords[] = {"of",   "at",   "on",    "in",   "to",   "is",  "am",
                                           "um",   "or",   "an",    "as",   "the",  "for", "and",
                                           "was",  "are",  "from",  "with", "nbsp", "amp", "quot",
                                           "copy", "http", "https", "www"};
constexpr std::string_view kVolatileWords[] = {
    "build",    "version", "release", "revision", "session", "serial",    "job",       "pid",
    "process",  "run",     "request", "ticket",   "seq",     "sequence",  "id",        "uid",
    "guid",     "token",   "nonce",   "seed",     "stamp",   "timestamp", "created",   "generated",
    "modified", "updated", "printed", "elapsed",  "took",    "duration",  "runtime",   "rendered",
    "executed", "host",    "server",  "node",     "machine", "copy",      "copyright", "hash",
    "etag",     "cache",   "user",    "thread",   "instance"};

template <typename Words>
bool isOneOf(std::string_view word, const Words& words) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string lowered(std::string_view word) {
  std::string lower(word);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return static_cast<char>(isLetter(c) ? c | 0x20 : c); });
  return lower;
}

struct Word {
  std::size_t begin, end;
};

/// Runs of letters. Letters of other scripts are not told from other bytes: the library's own
/// search takes ASCII only.
std::vector<Word> wordsOf(std::string_view text) {
  std::vector<Word> words;
  for (std::size_t place = 0; place < text.size(); ++place) {
    if (!isLetter(text[place])) {
      continue;
    }
    if (!words.empty() && words.back().end == place) {
      ++words.back().end;
    } else {
      words.push_back({place, place + 1});
    }
  }
  return words;
}

/// "&copy;" counts as a word: a year follows.
bool isLabel(std::string_view text, const Word& word) {
  const std::string name = lowered(text.substr(word.begin, word.end - word.begin));
  const char before = word.begin > 0 ? text[word.begin - 1] : ' ';
  const char after = word.end < text.size() ? text[word.end] : ' ';
  if (before == '&' && after == ';') {
    return name == "copy";
  }
  const bool isTag =
      before == '<' || (before == '/' && word.begin > 1 && text[word.begin - 2] == '<');
  if (isTag && isOneOf(name, kTags)) {
    return false;
  }
  // The name of an attribute says something about its value, not about the text behind the tag.
  const bool isAttribute = after == '=' && text.find('>', word.end) != std::string_view::npos;
  return name.size() >= kShortestLabel && !isAttribute && !isOneOf(name, kStopWords);
}

/// The end of `text` that a pattern of the linear subset can hold on to.
std::string_view usableEnd(std::string_view text) {
  const auto unusable = std::find_if_not(text.rbegin(), text.rend(), isUsable);
  const auto length = static_cast<std::size_t>(unusable - text.rbegin());
  return text.substr(text.size() - std::min(length, kLongestAnchor));
}

std::string_view usableStart(std::string_view text) {
  const auto unusable = std::find_if_not(text.begin(), text.end(), isUsable);
  const auto length = static_cast<std::size_t>(unusable - text.begin());
  return text.substr(0, std::min(length, kLongestAnchor));
}

/// An anchor that starts at an attribute's value, a tag's name or an entity starts with what opens
/// it, so that it is not the end of a longer one.
std::size_t openedAt(std::string_view text, std::size_t place) {
  const bool isOpened =
      place > 0 && std::string_view("\"<&").find(text[place - 1]) != std::string_view::npos;
  return isOpened ? place - 1 : place;
}

/// The tag at the end of `text`, or the punctuation with the word before it, unless that
/// `mayBeCut`.
std::optional<std::string> frameEnd(std::string_view text, bool mayBeCut) {
  if (text.empty()) {
    return std::nullopt;
  }
  const std::size_t tag = text.back() == '>' ? text.rfind('<') : std::string_view::npos;
  if (tag != std::string_view::npos) {
    return std::string(text.substr(tag));
  }
  std::size_t begin = text.size();
  const auto isWordAt = [&](std::size_t place) {
    return isLetter(text[place]) || (text[place] >= '0' && text[place] <= '9');
  };
  while (begin > 0 && !isWordAt(begin - 1)) {
    --begin;
  }
  std::size_t word = begin;
  while (word > 0 && isWordAt(word - 1)) {
    --word;
  }
  const bool isWhole = word > 0 || !mayBeCut;
  begin = isWhole && word < begin && isLetter(text[word]) ? word : begin;
  return begin < text.size() ? std::optional(std::string(text.substr(begin))) : std::nullopt;
}

}  // namespace

std::optional<std::string> leftAnchor(std::string_view before, std::size_t labels) {
  const std::string_view text = usableEnd(before);
  if (labels == 0) {
    return frameEnd(text, text.size() < before.size());
  }
  const std::vector<Word> words = wordsOf(text);
  // A word that the margin has cut is none: what it starts with is not known.
  const std::size_t whole = text.size() < before.size() ? 1 : 0;
  for (auto word = words.rbegin(); word != words.rend(); ++word) {
    const bool isCut =
        whole > 0 && word->begin == 0 && isUsable(before[before.size() - text.size() - 1]);
    if (!isCut && isLabel(text, *word) && --labels == 0) {
      return std::string(text.substr(openedAt(text, word->begin)));
    }
  }
  return std::nullopt;
}

std::optional<std::string> rightAnchor(std::string_view after, std::size_t labels, bool wantsTag) {
  const std::string_view text = usableStart(after);
  if (labels == 0) {
    const std::size_t tagEnd =
        wantsTag && !text.empty() && text.front() == '<' ? text.find('>') : std::string_view::npos;
    return tagEnd != std::string_view::npos ? std::string(text.substr(0, tagEnd + 1)) : "";
  }
  for (const Word& word : wordsOf(text)) {
    const bool mayBeCut = word.end == text.size() && text.size() == kLongestAnchor;
    if (!mayBeCut && isLabel(text, word) && --labels == 0) {
      return std::string(text.substr(0, word.end));
    }
  }
  return std::nullopt;
}

std::string slugOf(const Anchor& anchor) {
  constexpr std::size_t kMostWords = 3;
  std::vector<std::string> parts;
  for (const std::string& text : {anchor.left, anchor.right}) {
    for (const Word& word : wordsOf(text)) {
      if (isLabel(text, word)) {
        parts.push_back(lowered(std::string_view(text).substr(word.begin, word.end - word.begin)));
      }
    }
    if (!parts.empty()) {
      break;
    }
  }
  std::string slug;
  for (std::size_t i = parts.size() - std::min(parts.size(), kMostWords); i < parts.size(); ++i) {
    slug += parts[i] + '-';
  }
  return slug;
}

bool saysVolatile(const Anchor& anchor) {
  for (const std::string& text : {anchor.left, anchor.right}) {
    for (const Word& word : wordsOf(text)) {
      if (isOneOf(lowered(std::string_view(text).substr(word.begin, word.end - word.begin)),
                  kVolatileWords)) {
        return true;
      }
    }
  }
  return false;
}
