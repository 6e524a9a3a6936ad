#include "cli/terminal/Keys.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

using Kind = Key::Kind;

constexpr char kEscape = '\033';
constexpr std::string_view kPasteBegin = "\033[200~";
constexpr std::string_view kPasteEnd = "\033[201~";

/// What follows the escape character, as terminals and their modes differ.
constexpr std::pair<std::string_view, Kind> kSequences[] = {
    {"[A", Kind::Up},      {"OA", Kind::Up},        {"[B", Kind::Down},  {"OB", Kind::Down},
    {"[C", Kind::Right},   {"OC", Kind::Right},     {"[D", Kind::Left},  {"OD", Kind::Left},
    {"[H", Kind::Home},    {"OH", Kind::Home},      {"[1~", Kind::Home}, {"[7~", Kind::Home},
    {"[F", Kind::End},     {"OF", Kind::End},       {"[4~", Kind::End},  {"[8~", Kind::End},
    {"[5~", Kind::PageUp}, {"[6~", Kind::PageDown}, {"OM", Kind::Enter}};

Key take(std::string& bytes, std::size_t length, Kind kind, std::string text = {}) {
  bytes.erase(0, length);
  return {kind, std::move(text)};
}

/// How many bytes a UTF-8 character has that starts with `first`.
std::size_t lengthOf(unsigned char first) {
  return first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
}

/// Length of the sequence at the start of `bytes`; 0 if its end is missing.
std::size_t sequenceLength(std::string_view bytes) {
  if (bytes.size() < 2) {
    return 0;
  }
  if (bytes[1] == 'O') {
    return bytes.size() < 3 ? 0 : 3;
  }
  if (bytes[1] != '[') {
    return 2;  // Alt and a character
  }
  const auto isFinal = [](char c) { return c >= '@' && c <= '~'; };
  const auto* const end = std::find_if(bytes.begin() + 2, bytes.end(), isFinal);
  return end == bytes.end() ? 0 : static_cast<std::size_t>(end - bytes.begin()) + 1;
}

/// However long a paste takes to arrive, none of it is keys.
std::optional<Key> takePaste(std::string& bytes) {
  const std::size_t end = bytes.find(kPasteEnd);
  if (end == std::string::npos) {
    return std::nullopt;
  }
  std::string text = bytes.substr(kPasteBegin.size(), end - kPasteBegin.size());
  return take(bytes, end + kPasteEnd.size(), Kind::Paste, std::move(text));
}

std::optional<Key> takeSequence(std::string& bytes, bool isQuiet) {
  if (bytes.compare(0, kPasteBegin.size(), kPasteBegin) == 0) {
    return takePaste(bytes);
  }
  const std::size_t length = sequenceLength(bytes);
  if (length == 0) {
    return !isQuiet           ? std::nullopt
           : bytes.size() > 1 ? std::optional(take(bytes, bytes.size(), Kind::Other))
                              : std::optional(take(bytes, 1, Kind::Escape));
  }
  const auto* const known = std::find_if(
      std::begin(kSequences), std::end(kSequences),
      [&](const auto& row) { return std::string_view(bytes).substr(1, length - 1) == row.first; });
  return take(bytes, length, known != std::end(kSequences) ? known->second : Kind::Other);
}

}  // namespace

std::optional<Key> takeKey(std::string& bytes, bool isQuiet) {
  if (bytes.empty()) {
    return std::nullopt;
  }
  const char first = bytes.front();
  if (first == kEscape) {
    return takeSequence(bytes, isQuiet);
  }
  if (first == '\n' || first == '\r') {
    return take(bytes, 1, Kind::Enter);
  }
  if (first == '\x7F' || first == '\b') {
    return take(bytes, 1, Kind::Backspace);
  }
  if (first >= 0 && first < ' ') {
    return take(bytes, 1, Kind::Other);
  }
  const std::size_t length = lengthOf(static_cast<unsigned char>(first));
  if (bytes.size() < length && !isQuiet) {
    return std::nullopt;
  }
  std::string text = bytes.substr(0, length);
  const std::size_t taken = text.size();
  return take(bytes, taken, Kind::Text, std::move(text));
}
