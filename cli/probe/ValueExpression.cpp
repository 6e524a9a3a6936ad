#include "cli/probe/ValueExpression.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::string_view kSyntaxCharacters = "\\[](){}*+?.|^$";

enum class TokenKind { Digits, Letters, Blanks, Other };

struct Token {
  TokenKind kind;
  std::string text;
};

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
bool isUpper(char c) {
  return c >= 'A' && c <= 'Z';
}
bool isLower(char c) {
  return c >= 'a' && c <= 'z';
}

TokenKind tokenKindOf(char c) {
  return isDigit(c)                 ? TokenKind::Digits
         : isUpper(c) || isLower(c) ? TokenKind::Letters
         : c == ' '                 ? TokenKind::Blanks
                                    : TokenKind::Other;
}

/// Runs of digits, of letters and of blanks; every other byte by itself.
std::vector<Token> tokensOf(std::string_view text) {
  std::vector<Token> tokens;
  for (const char c : text) {
    const TokenKind kind = tokenKindOf(c);
    if (!tokens.empty() && kind != TokenKind::Other && tokens.back().kind == kind) {
      tokens.back().text += c;
    } else {
      tokens.push_back({kind, std::string(1, c)});
    }
  }
  return tokens;
}

/// Tokens that stand at the same place in all values.
using Column = std::vector<std::string>;

bool areEqual(const Column& column) {
  return std::all_of(column.begin(), column.end(),
                     [&](const std::string& text) { return text == column.front(); });
}

/// Letters by their case, so that a pattern tells "Nov" from "nov".
std::string lettersExpression(const Column& column) {
  const auto all = [&](auto condition) {
    return std::all_of(column.begin(), column.end(), condition);
  };
  const auto isLowerFrom = [](const std::string& text, std::size_t from) {
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), isLower);
  };
  if (all([&](const std::string& text) { return isLowerFrom(text, 0); })) {
    return "[a-z]+";
  }
  if (all([&](const std::string& text) {
        return text.size() > 1 && isUpper(text[0]) && isLowerFrom(text, 1);
      })) {
    return "[A-Z][a-z]+";
  }
  const bool areUpper =
      all([](const std::string& text) { return std::all_of(text.begin(), text.end(), isUpper); });
  return areUpper ? "[A-Z]+" : "[A-Za-z]+";
}

/// A set of the characters at one place; "-" has to stand first.
std::optional<std::string> setOf(const Column& column) {
  std::string members;
  for (const std::string& text : column) {
    const bool isPlain = text[0] > ' ' && text[0] < 0x7F &&
                         std::string_view("[]&$\\^:").find(text[0]) == std::string_view::npos;
    if (!isPlain) {
      return std::nullopt;
    }
    if (members.find(text[0]) == std::string::npos) {
      members.insert(text[0] == '-' ? 0 : members.size(), 1, text[0]);
    }
  }
  return '[' + members + ']';
}

bool isOfRun(ValueKind kind) {
  return kind != ValueKind::Identifier && kind != ValueKind::Words;
}

std::optional<std::string> columnExpression(ValueKind kind, TokenKind token, const Column& column) {
  const bool isEqual = areEqual(column);
  switch (token) {
    case TokenKind::Digits:
      // What was the same today, such as the year, will not stay so.
      return isEqual && !isOfRun(kind) ? column.front() : "[0-9]+";
    case TokenKind::Letters:
      return isEqual && !isCalendarWord(column.front()) ? column.front()
                                                        : lettersExpression(column);
    case TokenKind::Blanks:
      return isEqual && column.front().size() == 1 ? " " : " +";
    case TokenKind::Other:
      return isEqual ? quotedExpression(column.front()) : setOf(column);
  }
  return std::nullopt;
}

/// An expression for values that are alike token by token.
std::optional<std::string> alignedExpression(ValueKind kind,
                                             const std::vector<std::string>& values) {
  std::vector<std::vector<Token>> tokens;
  for (const std::string& value : values) {
    tokens.push_back(tokensOf(value));
    if (tokens.back().size() != tokens.front().size()) {
      return std::nullopt;
    }
  }
  std::string expression;
  for (std::size_t place = 0; place < tokens.front().size(); ++place) {
    Column column;
    for (const std::vector<Token>& row : tokens) {
      if (row[place].kind != tokens.front()[place].kind) {
        return std::nullopt;
      }
      column.push_back(row[place].text);
    }
    const auto part = columnExpression(kind, tokens.front()[place].kind, column);
    if (!part) {
      return std::nullopt;
    }
    expression += *part;
  }
  return expression;
}

/// "[0-9a-f]": the classes of characters that occur in the values, without a repetition.
std::optional<std::string> classOf(const std::vector<std::string>& values, char lastLetter) {
  bool hasDigit = false;
  bool hasUpper = false;
  bool hasLower = false;
  std::string others;
  std::string all;
  for (const std::string& value : values) {
    all += value;
  }
  for (const char c : all) {
    hasDigit = hasDigit || isDigit(c);
    hasUpper = hasUpper || isUpper(c);
    hasLower = hasLower || isLower(c);
    if (tokenKindOf(c) == TokenKind::Blanks) {
      return std::nullopt;
    }
    if (tokenKindOf(c) == TokenKind::Other && others.find(c) == std::string::npos) {
      others += c;
    }
  }
  if (others.find_first_not_of("-_.=+/") != std::string::npos) {
    return std::nullopt;
  }
  const bool hasDash = others.find('-') != std::string::npos;
  others.erase(std::remove(others.begin(), others.end(), '-'), others.end());
  const auto upperLast = static_cast<char>(lastLetter - 'a' + 'A');
  return '[' + std::string(hasDash ? "-" : "") + (hasDigit ? "0-9" : "") +
         (hasUpper ? std::string("A-") + upperLast : "") +
         (hasLower ? std::string("a-") + lastLetter : "") + others + ']';
}

/// What all values start with, up to a character that joins parts.
std::string commonStart(const std::vector<std::string>& values) {
  std::size_t length = values.front().size();
  for (const std::string& value : values) {
    const auto end =
        std::mismatch(values.front().begin(), values.front().end(), value.begin(), value.end());
    length = std::min(length, static_cast<std::size_t>(end.first - values.front().begin()));
  }
  const std::size_t join = values.front().substr(0, length).find_last_of("_-./=");
  return values.front().substr(0, join == std::string::npos ? 0 : join + 1);
}

std::optional<std::string> runExpression(ValueKind kind, const std::vector<std::string>& values) {
  std::string start =
      kind == ValueKind::HexId && values.front().rfind("0x", 0) == 0 ? "0x" : commonStart(values);
  std::vector<std::string> rests;
  for (const std::string& value : values) {
    rests.push_back(value.substr(std::min(start.size(), value.size())));
    if (rests.back().empty()) {
      return std::nullopt;
    }
  }
  const auto set = classOf(rests, kind == ValueKind::HexId ? 'f' : 'z');
  return set ? std::optional(quotedExpression(start) + *set + '+') : std::nullopt;
}

std::string uuidExpression(const std::vector<std::string>& values) {
  const bool hasUpper = std::any_of(values.begin(), values.end(), [](const std::string& value) {
    return std::any_of(value.begin(), value.end(), isUpper);
  });
  const bool hasLower = std::any_of(values.begin(), values.end(), [](const std::string& value) {
    return std::any_of(value.begin(), value.end(), isLower);
  });
  const std::string run = hasUpper && hasLower ? "[0-9A-Fa-f]+"
                          : hasUpper           ? "[0-9A-F]+"
                                               : "[0-9a-f]+";
  return run + '-' + run + '-' + run + '-' + run + '-' + run;
}

/// "17&b=9f" field by field, if all values have the same ones; a single field as a run.
std::optional<std::string> fieldsExpression(const std::vector<std::string>& values) {
  constexpr const char* kSeparators = "&=;/:?";
  const std::string& first = values.front();
  const std::size_t separator = first.find_first_of(kSeparators);
  if (separator == std::string::npos) {
    return runExpression(ValueKind::Identifier, values);
  }
  std::vector<std::string> fields;
  std::vector<std::string> rests;
  for (const std::string& value : values) {
    const std::size_t end = value.find_first_of(kSeparators);
    if (end == std::string::npos || value[end] != first[separator]) {
      return std::nullopt;
    }
    fields.push_back(value.substr(0, end));
    rests.push_back(value.substr(end + 1));
  }
  const auto field = expressionFor(kindOf(fields), fields);
  const auto rest = expressionFor(kindOf(rests), rests);
  return field && rest
             ? std::optional(*field + quotedExpression(first.substr(separator, 1)) + *rest)
             : std::nullopt;
}

/// For values of a form whose parts may be missing.
std::optional<std::string> generalExpression(ValueKind kind,
                                             const std::vector<std::string>& values) {
  switch (kind) {
    case ValueKind::HostName:
      return values.front().rfind("//", 0) == 0 ? "//[0-9A-Za-z.:-]+" : "[0-9A-Za-z.-]+";
    case ValueKind::Version:
      return "v?[0-9]+(\\.[0-9A-Za-z]+|-[0-9A-Za-z]+|\\+[0-9A-Za-z]+|~[0-9A-Za-z]+)*";
    case ValueKind::Duration:
      return "[0-9.]+ ?[a-z]+";
    case ValueKind::Number:
      return "[0-9.,]+";
    case ValueKind::Identifier:
      return fieldsExpression(values);
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<std::string> expressionFor(ValueKind kind, const std::vector<std::string>& values) {
  const bool areAscii = std::all_of(values.begin(), values.end(), [](const std::string& value) {
    return !value.empty() &&
           std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c < 0x7F; });
  });
  if (!areAscii) {
    return std::nullopt;
  }
  if (kind == ValueKind::Uuid) {
    return uuidExpression(values);
  }
  if (kind == ValueKind::HexId) {
    return runExpression(kind, values);
  }
  const auto aligned = alignedExpression(kind, values);
  return aligned ? aligned : generalExpression(kind, values);
}

std::string quotedExpression(std::string_view text) {
  std::string quoted;
  for (const char c : text) {
    if (c == '\n') {
      quoted += "\\n";
      continue;
    }
    if (kSyntaxCharacters.find(c) != std::string_view::npos) {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted;
}
