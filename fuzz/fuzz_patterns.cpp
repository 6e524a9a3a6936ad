// Applies random lists of patterns to random texts: the library must leave the same text as ICU
// does, applied pattern by pattern, and its origin map must lead there. The input's bytes drive a
// grammar of ICU's expressions, so most expressions are valid, and half are in the subset that the
// library runs itself. Each list is tried on many texts made of the literals that occur in its
// expressions.

#include <unicode/uregex.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/WorkingText.h"
#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/VELErrors.h"
#include "tests/support/OriginMapCheck.h"

namespace {

constexpr int kTextsPerList = 32;

/// Choices driven by the input's bytes; once they are used up, by a generator seeded with them.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : m_rest(data), m_size(size) {}

  std::size_t below(std::size_t count) { return next() % count; }
  bool oneIn(std::size_t count) { return below(count) == 0; }
  char byte() { return static_cast<char>(1 + below(255)); }

  template <typename Table>
  std::string_view from(const Table& table) {
    return table[below(std::size(table))];
  }

 private:
  std::size_t next() {
    m_state = m_state * 6364136223846793005U + 1442695040888963407U;
    if (m_size > 0) {
      --m_size;
      m_state ^= *m_rest;
      return *m_rest++;
    }
    return static_cast<std::uint8_t>(m_state >> 56U);
  }

  const std::uint8_t* m_rest;
  std::size_t m_size;
  std::uint64_t m_state = 1;
};

// clang-format off
constexpr std::string_view kLiterals[] = {
    "a", "a", "a", "b", "b", "c", "x", "z", "A", "0", "9", "=", "<", "\"", " ", "\n", "\r", "-",
    ":", "/", "_", "&", "#", "~", "\x7F", "\x01", "\t", "ab", "aa", "abc", "ba", "<a", "no"};
constexpr std::string_view kEscapes[] = {
    "\\n", "\\r", "\\.", "\\-", "\\\\", "\\\"", "\\/", "\\&", "\\#", "\\~", "\\[",
    "\\]", "\\$", "\\^", "\\(", "\\{", "\\_", "\\:", "\\\x7F"};
constexpr std::string_view kBeyondTheSubset[] = {
    "\\d", "\\D", "\\w", "\\W", "\\S", "\\B", "\\h", "\\v", "\\R", "\\X", "\\t", "\\f", "\\e",
    "\\a", "\\0101", "\\x41", "\\x{61}", "\\u0061", "\\U0001F600", "\\cA", "\\p{L}", "\\P{Lu}",
    "\\N{SPACE}", "\\Qa.b\\E", "\\E", "\\A", "\\z", "\\Z", "\\G", "\\1", "\\2", "\\k<n>", "(?:a|b)",
    "(?=a)", "(?!a)", "(?<=a)", "(?<!a)", "(?>a*)", "(?<n>a)", "(?i)", "(?s)", "(?m)", "(?x)",
    "(?w)", "(?-s)", "(?i:a)", "(?#a)", "^", "$", "]", "}", "{", "\\ ", "\xC3\xA9", "\xFF", ".",
    "a{2}", "a{1,2}", "a{0}", "()", "(|a)", "|"};
constexpr std::string_view kSetMembers[] = {
    "a", "b", "c", "x", "A", "0", "9", "=", "<", "\"", " ", "\n", "\r", "_", ":", ".", "/",
    "|", "(", "#", "~", "\x7F", "!", "*", "\\n", "\\r", "\\-", "\\]", "\\[", "\\\\", "\\&", "\\^", "\\\x7F", "a-c", "0-9", "!-/", "\\!-\\/", "a-\x7F", "\n-\r", "}"};
constexpr std::string_view kSetOperators[] = {
    "--", "&&", "[", "]", "[^", "[b]", "[:digit:]", "[:^alpha:]", ":", ":alpha:", "^", "&", "-",
    "\\d", "\\w", "\\s", "\\p{L}", "\\x61", "\\u0061", "\\Qa\\E", "--[a]", "&&[a]", "\xC3\xA9",
    "{a}", "$", "+--", "b-a", "[a-z]", "]]"};
constexpr std::string_view kQuantifiers[] = {"*", "*", "*?", "*?", "+", "?", "?"};
constexpr std::string_view kOtherQuantifiers[] = {
    "??", "+?", "*+", "?+", "++", "{2}", "{0,2}", "{1,}", "{1,2}?", "**", "{", "+*"};
constexpr std::string_view kShortReplacements[] = {"", "=", "a", "\r", "\n", "\x7F"};
constexpr std::string_view kReplacements[] = {
    "ab", "aaaa", "abcdefghijkl", "$0", "$1", "$2", "$9", "$",
    "${n}", "${", "\\$", "\\\\", "\\n", "\\", "\\u0061", "\\x41", "a$1b", "\xC3\xA9", "\xFF", "&"};
constexpr std::string_view kTextPieces[] = {
    "\n", "\r", "\r\n", "\v", "\f", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9", "\x7F", "\xC2\xA0",
    "\xE3\x80\x80", "\t", " ", "\xC3\xA9", "\xCC\x81", "\xE2\x80\x8D", "\xF0\x9F\x98\x80",
    "\xEF\xBB\xBF", "\x85", "\xC2", "\xE2\x80", "\xED\xA0\x80", "\xFF", "\xF0\x9F", "\xA8", "\x01",
    "B", "1", "$", "^", "[", "]", "&", ".", "-", "dig", "pha", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"};
// clang-format on

/// Writes expressions.
class Grammar {
 public:
  explicit Grammar(Choices& choices) : m_choices(choices) {}

  std::string expression() {
    if (m_choices.oneIn(16)) {
      return rawBytes();
    }
    m_onlySubset = m_choices.below(8) < 5;
    return (m_choices.oneIn(4) ? "(?s)" : "") + alternatives(0);
  }

  /// The literals that occur in the expressions.
  const std::vector<std::string>& literals() const { return m_literals; }

 private:
  std::string rawBytes() {
    std::string bytes;
    for (std::size_t i = m_choices.below(8); i > 0; --i) {
      bytes += m_choices.byte();
    }
    return bytes;
  }

  std::string alternatives(int depth) {
    std::string text = sequence(depth);
    while (m_choices.oneIn(depth == 0 ? 8 : 2)) {
      text += "|" + sequence(depth);
    }
    return text;
  }

  std::string sequence(int depth) {
    std::string text;
    for (std::size_t i = m_choices.oneIn(8) ? 0 : 1 + m_choices.below(4); i > 0; --i) {
      text += element(depth);
      if (!m_onlySubset && m_choices.oneIn(4)) {
        text += m_choices.from(kOtherQuantifiers);
      }
    }
    return text;
  }

  std::string element(int depth) {
    switch (m_choices.below(8)) {
      case 0:
        return set() + quantifier();
      case 1:
        return (m_choices.oneIn(2) ? ".*?" : ".*") + std::string(literal());
      case 2:
        return std::string(m_choices.from(kEscapes)) + quantifier();
      case 3:
        return depth < 4 ? "(" + alternatives(depth + 1) + ")" + (m_choices.oneIn(2) ? "?" : "")
                         : "a*";
      case 4:
        return m_onlySubset ? "(" + std::string(literal()) + sequence(4) + ")*"
                            : std::string(m_choices.from(kBeyondTheSubset)) + quantifier();
      case 5:
        return m_choices.oneIn(2) ? "\\b" : "\\s";
      default:
        return std::string(literal()) + quantifier();
    }
  }

  std::string quantifier() {
    return m_choices.oneIn(2) ? std::string(m_choices.from(kQuantifiers)) : "";
  }

  std::string_view literal() {
    m_literals.emplace_back(m_choices.from(kLiterals));
    return m_literals.back();
  }

  std::string set() {
    std::string text = m_choices.oneIn(8) ? "[-" : "[";
    for (std::size_t i = 1 + m_choices.below(4); i > 0; --i) {
      const std::string_view member = m_choices.from(kSetMembers);
      m_literals.emplace_back(1, member.back());
      text += member;
      if (!m_onlySubset && m_choices.oneIn(4)) {
        text += m_choices.from(kSetOperators);
      }
    }
    return text + (m_choices.oneIn(8) ? "-]" : "]");
  }

  Choices& m_choices;
  bool m_onlySubset = false;
  std::vector<std::string> m_literals = {"a", "b"};
};

struct Substitution {
  std::string expression;
  std::optional<std::string> replacement;
  std::unique_ptr<OrvDiffNormalizationPattern> pattern;
  std::unique_ptr<URegularExpression, decltype(&uregex_close)> plain{nullptr, uregex_close};

  const char* replacementText() const { return replacement ? replacement->c_str() : nullptr; }
};

Substitution makeSubstitution(Grammar& grammar, Choices& choices) {
  Substitution made;
  made.expression = grammar.expression().c_str();
  if (choices.oneIn(3)) {
    made.replacement = choices.from(kReplacements);
  } else if (choices.oneIn(2)) {
    made.replacement = choices.from(kShortReplacements);
  }
  UErrorCode status = U_ZERO_ERROR;
  made.plain.reset(uregex_openC(made.expression.c_str(), 0, nullptr, &status));
  if (made.plain != nullptr) {
    uregex_setTimeLimit(made.plain.get(), 5, &status);  // some 50,000 steps back
    made.pattern = std::make_unique<OrvDiffNormalizationPattern>(made.expression.c_str(),
                                                                 made.replacementText());
  }
  return made;
}

enum class Outcome { Replaced, Failed, GaveUp };

/// One substitution by ICU, into a buffer that is 2 code units longer than the text.
Outcome replacePlainly(const Substitution& substitution, std::string& text) {
  if (text.empty()) {
    return Outcome::Replaced;
  }
  const I18NConverter converter("UTF-8");
  const auto toUtf16 = [&](const char* bytes) {
    char16_t* units = nullptr;
    int length = 0;
    converter.toUnicode(&units, &length, bytes, -1,
                        OrvDiffNormalizationPattern::conversionAllocator, nullptr);
    std::u16string copy(units, static_cast<std::size_t>(length));
    delete[] reinterpret_cast<char*>(units);
    return copy;
  };
  const std::u16string input = toUtf16(text.c_str());
  const std::u16string replacement =
      toUtf16(substitution.replacement ? substitution.replacement->c_str() : "");
  std::u16string output(input.size() + 2, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  uregex_setText(substitution.plain.get(), input.data(), static_cast<int>(input.size()), &status);
  const int length = uregex_replaceAll(substitution.plain.get(), replacement.data(),
                                       static_cast<int>(replacement.size()), output.data(),
                                       static_cast<int>(output.size()), &status);
  if (status == U_REGEX_TIME_OUT || status == U_REGEX_STACK_OVERFLOW) {
    return Outcome::GaveUp;
  }
  if (U_FAILURE(status) || static_cast<std::size_t>(length) >= output.size()) {
    return Outcome::Failed;
  }
  char* bytes = nullptr;
  int byteCount = 0;
  converter.fromUnicode(&bytes, &byteCount, output.c_str(),
                        OrvDiffNormalizationPattern::conversionAllocator, nullptr);
  text = bytes;
  delete[] bytes;
  return Outcome::Replaced;
}

Outcome replacePlainly(const std::vector<Substitution>& list, std::string& text) {
  for (const Substitution& substitution : list) {
    const Outcome outcome = replacePlainly(substitution, text);
    if (outcome != Outcome::Replaced) {
      return outcome;
    }
  }
  return Outcome::Replaced;
}

Outcome replace(const std::vector<Substitution>& list, std::string& text) {
  OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
  Outcome outcome = Outcome::Replaced;
  try {
    orvdiff::WorkingText working(buffer);
    for (const Substitution& substitution : list) {
      working.apply(*substitution.pattern);
    }
  } catch (const VELAssertError&) {
    outcome = Outcome::Failed;
  }
  text = buffer.get();
  return outcome;
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, c > ' ' && c < 0x7F ? "%c" : "\\x%02X",
                  static_cast<unsigned>(static_cast<unsigned char>(c)));
    result += escaped;
  }
  return result + "\"";
}

void show(const std::vector<Substitution>& list, const std::string& text) {
  for (const Substitution& substitution : list) {
    std::cerr << quoted(substitution.expression) << " -> "
              << (substitution.replacement ? quoted(*substitution.replacement) : "nothing")
              << (orvdiff::WorkingText::cannotFail({substitution.pattern.get()}) ? "" : " (ICU's)")
              << '\n';
  }
  std::cerr << "text " << quoted(text) << '\n';
}

/// Aborts if the origin map of `text` does not lead to what the patterns make of it.
void checkOriginMap(const std::vector<Substitution>& list, const std::string& text) {
  OrvPatternList patterns;
  for (const Substitution& substitution : list) {
    patterns.push_back(substitution.pattern.get());
  }
  std::string expected = text;
  expected.erase(std::remove(expected.begin(), expected.end(), '\r'), expected.end());
  if (replacePlainly(list, expected) != Outcome::Replaced) {
    return;
  }
  const std::string fault = findOriginMapFault(OrvOriginMap(text, patterns), expected);
  if (!fault.empty()) {
    show(list, text);
    std::cerr << "origin map: " << fault << '\n';
    std::abort();
  }
}

/// Compares library and ICU; aborts if they differ. If ICU gives up there is nothing to compare
/// with, but a list that the library runs without ICU must still terminate.
bool compareOn(const std::vector<Substitution>& list, bool needsNoIcu, const std::string& text) {
  std::string expected = text;
  const Outcome expectedOutcome = replacePlainly(list, expected);
  if (expectedOutcome == Outcome::GaveUp && !needsNoIcu) {
    return false;
  }
  std::string actual = text;
  const Outcome outcome = replace(list, actual);
  if (expectedOutcome == Outcome::GaveUp) {
    return false;
  }
  if (outcome != expectedOutcome || actual != expected) {
    show(list, text);
    std::cerr << "ICU  " << quoted(expected) << "\nhere " << quoted(actual) << '\n';
    std::abort();
  }
  checkOriginMap(list, text);
  return true;
}

std::string makeText(Choices& choices, const std::vector<std::string>& literals) {
  std::string text;
  for (std::size_t i = choices.below(24); i > 0; --i) {
    if (choices.oneIn(6)) {
      text += choices.from(kTextPieces);
    } else {
      text += literals[choices.below(literals.size())];
    }
  }
  return text.c_str();
}

/// Counts the comparisons of this process; printed when it ends.
struct Tally {
  unsigned long long comparisons = 0;
  unsigned long long withoutIcu = 0;
  ~Tally() {
    std::cerr << comparisons << " comparisons, " << withoutIcu
              << " of them with lists that need no ICU\n";
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Tally tally;
  Choices choices(data, size);
  Grammar grammar(choices);
  std::vector<Substitution> list;
  OrvPatternList patterns;
  for (std::size_t count = choices.oneIn(3) ? 3 : 1; count > 0; --count) {
    Substitution made = makeSubstitution(grammar, choices);
    if (made.pattern != nullptr) {
      patterns.push_back(made.pattern.get());
      list.push_back(std::move(made));
    }
  }
  if (list.empty()) {
    return 0;
  }
  const bool needsNoIcu = orvdiff::WorkingText::cannotFail(patterns);
  for (int i = 0; i < kTextsPerList; ++i) {
    if (compareOn(list, needsNoIcu, makeText(choices, grammar.literals()))) {
      ++tally.comparisons;
      tally.withoutIcu += needsNoIcu ? 1U : 0U;
    }
  }
  return 0;
}
