#include "cli/content/CsvCells.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

std::string_view CsvGrammar::withoutByteOrderMark(std::string_view text) {
  const bool hasMark = text.substr(0, kByteOrderMark.size()) == kByteOrderMark;
  return text.substr(hasMark ? kByteOrderMark.size() : 0);
}

bool CsvGrammar::isLineEnd(std::string_view text, std::size_t position) {
  return text[position] == '\n' ||
         (text[position] == '\r' && position + 1 < text.size() && text[position + 1] == '\n');
}

std::size_t CsvGrammar::endOfCell(std::string_view text, std::size_t begin) const {
  std::size_t at = begin;
  if (quotesCount && at < text.size() && text[at] == '"') {
    for (++at;; at += 2) {
      at = text.find('"', at);
      if (at == std::string_view::npos) {
        return at;
      }
      if (at + 1 == text.size() || text[at + 1] != '"') {
        ++at;
        break;
      }
    }
  }
  while (at < text.size() && text[at] != separator && !isLineEnd(text, at)) {
    ++at;
  }
  return at;
}

std::string_view CsvGrammar::valueOf(std::string_view cell, std::string& buffer) const {
  if (!quotesCount || cell.empty() || cell.front() != '"') {
    return cell;
  }
  buffer.clear();
  bool isQuoted = true;
  for (std::size_t i = 1; i < cell.size(); ++i) {
    if (!isQuoted || cell[i] != '"') {
      buffer += cell[i];
    } else if (i + 1 < cell.size() && cell[i + 1] == '"') {
      buffer += cell[i++];
    } else {
      isQuoted = false;
    }
  }
  return buffer;
}
