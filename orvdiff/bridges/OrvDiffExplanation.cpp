#include "orvdiff/bridges/OrvDiffExplanation.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string_view>
#include <utility>

#include "orvdiff/compare/OrvOriginMap.h"
#include "orvdiff/formats/OrvDiffFormats.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

// Of each file, so that a pair of huge files does not cost the test run its memory.
constexpr std::size_t kMostToRead = std::size_t{64} << 20;
// Bytes of context on either side of the place at which two texts begin to differ: a line of a hunk
// takes less than 80 columns, after which Catch2 breaks lines.
constexpr std::size_t kContext = 30;

/// The character at `next`, negative for invalid UTF-8; moves `next` behind it.
UChar32 takeCharacter(std::string_view text, std::size_t& next) {
  const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  UChar32 character = 0;
  U8_NEXT(bytes, next, text.size(), character);
  return character;
}

/// How a byte or a character that cannot be shown is written.
std::string escaped(const char* format, unsigned number) {
  std::array<char, 16> text = {};
  std::snprintf(text.data(), text.size(), format, number);
  return text.data();
}

/// `text` as one printable line.
std::string printable(std::string_view text) {
  std::string result;
  for (std::size_t next = 0; next < text.size();) {
    const std::size_t begin = next;
    const UChar32 c = takeCharacter(text, next);
    const std::string_view bytes = text.substr(begin, next - begin);
    if (c < 0) {
      for (const char byte : bytes) {
        result += escaped("\\x%02X", static_cast<unsigned char>(byte));
      }
    } else if (c == '\n' || c == '\r' || c == '\t' || c == '\\') {
      result += c == '\n' ? "\\n" : c == '\r' ? "\\r" : c == '\t' ? "\\t" : "\\\\";
    } else if (c == ' ' || u_isgraph(c) != 0) {
      result += bytes;
    } else {
      result += escaped(c < 0x80 ? "\\x%02X" : "\\u{%04X}", static_cast<unsigned>(c));
    }
  }
  return result;
}

/// The beginning of a file; empty if it cannot be read.
std::string beginningOf(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  std::string bytes;
  char block[1 << 16];
  while (bytes.size() < kMostToRead && (file.read(block, sizeof block), file.gcount() > 0)) {
    bytes.append(block, static_cast<std::size_t>(file.gcount()));
  }
  return bytes;
}

/// One side of a difference.
struct Side {
  std::string_view text;  ///< as it was compared
  std::size_t line = 0;   ///< in its file, from 1; 0 if not known
};

/// What of `text` to show before and from `at`: at most the rest of the line, cut between
/// characters.
std::pair<std::string, std::string> around(std::string_view text, std::size_t at) {
  const auto isInside = [text](std::size_t i) { return i < text.size() && U8_IS_TRAIL(text[i]); };
  std::size_t begin = at - std::min(at, kContext);
  while (begin < at && isInside(begin)) {
    ++begin;
  }
  std::size_t end = std::min(text.size(), at + kContext);
  while (isInside(end)) {
    ++end;
  }
  const std::size_t lineBegin = at == 0 ? 0 : text.rfind('\n', at - 1) + 1;  // npos + 1 is 0
  const bool isLineEnd = at < text.size() && text[at] == '\n';
  const std::size_t lineEnd = isLineEnd ? at + 1 : std::min(text.find('\n', at), text.size());
  const char* const cutBefore = begin > lineBegin ? "…" : "";
  const char* const cutAfter = end < lineEnd ? "…" : "";
  begin = std::max(begin, lineBegin);
  end = std::min(end, lineEnd);
  if (at == text.size()) {
    return {cutBefore + printable(text.substr(begin)), "[end of the text]"};
  }
  return {cutBefore + printable(text.substr(begin, at - begin)),
          printable(text.substr(at, end - at)) + cutAfter};
}

/// How many columns a printable text takes on a terminal.
std::size_t columnsOf(std::string_view text) {
  std::size_t columns = 0;
  for (std::size_t next = 0; next < text.size();) {
    const int width = u_getIntPropertyValue(takeCharacter(text, next), UCHAR_EAST_ASIAN_WIDTH);
    columns += width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
  }
  return columns;
}

/// "  60 - …before after…" for both sides, and a caret below `at`, where they begin to differ.
std::string hunk(const Side& master, const Side& actual, std::size_t at) {
  const auto isInside = [&at](const Side& side) {
    return at < side.text.size() && U8_IS_TRAIL(side.text[at]);
  };
  while (at > 0 && (isInside(master) || isInside(actual))) {
    --at;  // to the character's first byte, which is the same in both
  }
  const auto numberOf = [](const Side& side) {
    return side.line == 0 ? std::string() : std::to_string(side.line);
  };
  const std::size_t width = std::max(numberOf(master).size(), numberOf(actual).size());
  std::string lines;
  std::size_t caret = 0;
  for (const auto& [side, mark] : {std::pair(&master, " - "), std::pair(&actual, " + ")}) {
    const auto [before, after] = around(side->text, at);
    const std::string number = numberOf(*side);
    lines += std::string(2 + width - number.size(), ' ') + number + mark;
    lines.append(before).append(after).append("\n");
    caret = 2 + width + 3 + columnsOf(before);
  }
  return lines + std::string(caret, ' ') + '^';
}

std::size_t lineOf(const OrvOriginMap& map, std::size_t at) {
  return map.position(map.originOf(at).begin).line;
}

/// Finds out in which lines of the files the difference at `at` of the normalised texts is. A
/// result does not tell by which rules it was compared: the output's folder tells the format, and
/// that its rules make these texts of these files proves it.
void findLines(const OrvDiffResult& result, Side& master, Side& actual, std::size_t at) {
  const std::string masterFile = beginningOf(result.getMasterName());
  const std::string actualFile = beginningOf(result.getActualName());
  OrvFormatArguments arguments;
  arguments.outputDirectoryTypeName = "";  // any: for the formats whose folder the host names
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    const auto engine = format.createEngine(arguments);
    const OrvPatternList* const patterns = engine->getCleansingPatterns();
    const std::string folder = '/' + engine->getOutputDirectoryTypeName();
    if (patterns == nullptr || result.getActualName().find(folder) == std::string::npos) {
      continue;
    }
    const OrvOriginMap masterMap(masterFile, *patterns);
    const OrvOriginMap actualMap(actualFile, *patterns);
    if (masterMap.text() == master.text && actualMap.text() == actual.text) {
      master.line = lineOf(masterMap, at);
      actual.line = lineOf(actualMap, at);
      return;
    }
  }
}

/// Whether the format is compared by what its files mean, so that their first different byte may
/// well be none of the reasons.
bool isComparedByMeaning(const std::string& name) {
  const std::string extension = name.substr(std::min(name.rfind('.'), name.size()));
  return extension == ".pdf" || extension == ".xlsx" || extension == ".vmd";
}

std::size_t firstDifference(std::string_view left, std::string_view right) {
  const auto end = left.begin() + static_cast<std::ptrdiff_t>(std::min(left.size(), right.size()));
  return static_cast<std::size_t>(std::mismatch(left.begin(), end, right.begin()).first -
                                  left.begin());
}

/// The first place at which two files differ that were compared as they are, or by all but their
/// carriage returns; an empty text if there is none to be seen.
std::string rawDifference(const OrvDiffResult& result, std::size_t& line) {
  if (isComparedByMeaning(result.getActualName())) {
    return {};
  }
  const std::string masterFile = beginningOf(result.getMasterName());
  const std::string actualFile = beginningOf(result.getActualName());
  if (masterFile == actualFile) {
    return {};
  }
  const std::size_t byte = firstDifference(masterFile, actualFile);
  constexpr auto kNone = std::string::npos;
  if (masterFile.find('\0') != kNone || actualFile.find('\0') != kNone) {
    return "  at byte " + std::to_string(byte) + ", counted from 0";
  }
  const OrvPatternList none;
  const OrvOriginMap masterMap(masterFile, none);
  const OrvOriginMap actualMap(actualFile, none);
  Side master{masterMap.text(), 0};
  Side actual{actualMap.text(), 0};
  std::size_t at = firstDifference(master.text, actual.text);
  if (master.text == actual.text) {  // then the carriage returns count
    master = {masterFile, masterMap.position(byte).line};
    actual = {actualFile, actualMap.position(byte).line};
    at = byte;
  } else {
    master.line = lineOf(masterMap, at);
    actual.line = lineOf(actualMap, at);
  }
  line = actual.line;
  return hunk(master, actual, at);
}

std::string normalizedDifference(const OrvDiffResultFailDiffNormalized& result, std::size_t& line) {
  if (result.getNormalizedMaster() == nullptr || result.getNormalizedActual() == nullptr) {
    return {};
  }
  Side master{result.getNormalizedMaster(), 0};
  Side actual{result.getNormalizedActual(), 0};
  const std::size_t at = firstDifference(master.text, actual.text);
  findLines(result, master, actual, at);
  line = actual.line;
  return hunk(master, actual, at);
}

OrvDiffExplanation explainMissing(const OrvDiffResultFailFileMissing& result) {
  const std::string missing = printable(result.getMissingFile());
  const bool isMaster = result.getMissingFile() == result.getMasterName();
  const std::string other = isMaster ? result.getActualName() : result.getMasterName();
  return {false, missing, 0,
          missing + " does not exist or cannot be opened; it is the " +
              (isMaster ? "master of " : "output to compare with ") + printable(other)};
}

}  // namespace

OrvDiffExplanation OrvDiffExplanation::of(const OrvDiffResult& result) {
  if (const auto* missing = dynamic_cast<const OrvDiffResultFailFileMissing*>(&result)) {
    return explainMissing(*missing);
  }
  const std::string master = printable(result.getMasterName());
  const std::string actual = printable(result.getActualName());
  OrvDiffExplanation explained{false, actual, 0, actual};
  std::string& text = explained.text;
  if (const auto* partly = dynamic_cast<const OrvDiffResultPassUpToNul*>(&result)) {
    text += " matches its master " + master + " only up to a NUL byte in " +
            printable(partly->getCutFile()) + "; what follows it was not compared";
  } else if (result.isPassed()) {
    explained.isPassed = true;
    text += " matches its master " + master;
  } else if (dynamic_cast<const OrvDiffResultFailDiff*>(&result) != nullptr) {
    const auto* normalized = dynamic_cast<const OrvDiffResultFailDiffNormalized*>(&result);
    const std::string difference = normalized != nullptr
                                       ? normalizedDifference(*normalized, explained.line)
                                       : rawDifference(result, explained.line);
    text += " differs from its master " + master + (difference.empty() ? "" : "\n") + difference;
  } else if (master == actual) {  // as engines report a document that they do not compare
    text += " is not a valid document of its format; standard output has the parser's message";
  } else {
    text += " failed the comparison with its master " + master;
  }
  return explained;
}
