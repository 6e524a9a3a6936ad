#include "cli/diff/XmlFaultDiff.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>

#include "cli/diff/DifferenceBuilder.h"
#include "cli/terminal/Excerpt.h"

namespace {

/// What the block that the library prints for a document says.
struct Fault {
  std::string message;
  std::uint64_t line = 0;  ///< 0: the fault has no place
  std::uint64_t column = 0;
};

/// The rest of the line in `printed` after `label`.
std::string_view valueAfter(std::string_view printed, std::string_view label) {
  const std::size_t at = printed.find(label);
  if (at == std::string_view::npos) {
    return {};
  }
  const std::string_view rest = printed.substr(at + label.size());
  return rest.substr(0, rest.find('\n'));
}

std::uint64_t numberAfter(std::string_view printed, std::string_view label) {
  const std::string_view digits = valueAfter(printed, label);
  std::uint64_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

/// The message of a fault may have several lines; a place can only follow it.
Fault readBlock(std::string_view printed) {
  constexpr std::string_view kMessage = " error message: ";
  constexpr std::string_view kLine = "Schema validation error at line ";
  constexpr std::string_view kColumn = "Schema validation error at column number ";
  Fault fault;
  fault.message = valueAfter(printed, kMessage);
  const std::size_t place = printed.rfind(kLine);
  if (place != std::string_view::npos) {
    fault.line = numberAfter(printed.substr(place), kLine);
    fault.column = numberAfter(printed.substr(place), kColumn);
  }
  return fault;
}

/// Notes what was printed before the block: which schema cannot be used.
void notePreface(DifferenceBuilder& builder, std::string_view printed) {
  while (!printed.empty() && printed.substr(0, 3) != "+++") {
    const std::size_t end = std::min(printed.find('\n'), printed.size());
    builder.note(std::string(printed.substr(0, end)));
    printed.remove_prefix(std::min(end + 1, printed.size()));
  }
}

/// The start of the UTF-8 character after the one at `at`.
std::size_t nextCharacter(std::string_view text, std::size_t at) {
  ++at;
  while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U) {
    ++at;
  }
  return at;
}

/// A stretch of a line: all of it unless it is long.
struct Window {
  std::size_t begin;
  std::size_t end;
};

/// The part of `line` that is shown, around byte `mark`.
Window windowAround(std::string_view line, std::size_t mark) {
  constexpr std::size_t kBefore = 60;
  constexpr std::size_t kAfter = 40;
  Window window = {mark > kBefore ? mark - kBefore : 0, std::min(line.size(), mark + kAfter)};
  while (window.begin > 0 && window.begin < line.size() &&
         (static_cast<unsigned char>(line[window.begin]) & 0xC0U) == 0x80U) {
    ++window.begin;
  }
  while (window.end < line.size() &&
         (static_cast<unsigned char>(line[window.end]) & 0xC0U) == 0x80U) {
    ++window.end;
  }
  return window;
}

DiffLine shown(std::string_view line, const Window& window, std::uint64_t number) {
  DiffLine result;
  result.outputLine = number;
  result.isCutBefore = window.begin > 0;
  result.isCutAfter = window.end < line.size();
  result.spans = {{DiffSpan::Kind::Same,
                   std::string(line.substr(window.begin, window.end - window.begin)),
                   {}}};
  return result;
}

/// The line of the fault with the character at `mark` marked, or its last one if the fault is
/// behind it.
DiffLine marked(std::string_view line, std::size_t mark, std::uint64_t number) {
  if (mark >= line.size() && !line.empty()) {
    mark = startOfCharacter(line.data(), line.size() - 1);
  }
  const Window window = windowAround(line, mark);
  DiffLine result = shown(line, window, number);
  result.kind = DiffLine::Kind::Added;
  const std::size_t end = std::min(nextCharacter(line, mark), line.size());
  const auto piece = [&line](std::size_t from, std::size_t to) {
    return std::string(line.substr(from, to - from));
  };
  result.spans = {{DiffSpan::Kind::Same, piece(window.begin, mark), {}},
                  {DiffSpan::Kind::Changed, piece(mark, end), {}},
                  {DiffSpan::Kind::Same, piece(end, std::max(end, window.end)), {}}};
  return result;
}

std::string_view withoutReturn(std::string_view line) {
  return line.substr(0, line.size() - (!line.empty() && line.back() == '\r' ? 1 : 0));
}

/// The line of the fault, marked, and those before it.
void addLines(DiffHunk& hunk, std::string_view document, const Fault& fault, std::size_t context) {
  const std::uint64_t first = fault.line > context ? fault.line - context : 1;
  std::uint64_t number = 1;
  for (; number < first && !document.empty(); ++number) {
    document.remove_prefix(std::min(document.find('\n'), document.size() - 1) + 1);
  }
  for (; number <= fault.line; ++number) {
    const std::size_t end = std::min(document.find('\n'), document.size());
    const std::string_view line = withoutReturn(document.substr(0, end));
    if (number < fault.line) {
      hunk.lines.push_back(shown(line, windowAround(line, 0), number));
    } else {
      std::size_t mark = 0;
      for (std::uint64_t column = 1; column < fault.column && mark < line.size(); ++column) {
        mark = nextCharacter(line, mark);
      }
      hunk.lines.push_back(marked(line, mark, number));
    }
    document.remove_prefix(std::min(end + 1, document.size()));
  }
}

}  // namespace

Difference xmlFaultDifference(const DiffRequest& request) {
  DifferenceBuilder builder("xml", request);
  notePreface(builder, request.record.printed);
  const Fault fault = readBlock(request.record.printed);
  if (fault.message.empty()) {
    builder.note("the document could not be parsed, and the parser did not say why");
    return builder.take();
  }
  DiffHunk hunk;
  if (fault.line > 0) {
    hunk.place = "line " + std::to_string(fault.line) + ", column " + std::to_string(fault.column);
    addLines(hunk, request.output, fault, request.options.context);
  }
  builder.note(fault.message);
  builder.add(std::move(hunk), {}, fault.message);
  return builder.take();
}
