#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace orvdiff {

/// Lines and columns of a text, in time that depends neither on its length nor on its lines'.
///
/// It remembers where lines start and, every few kilobytes, how many characters come before.
class LineIndex {
 public:
  /// Reads all of `text`, which must outlive this object.
  explicit LineIndex(std::string_view text);

  /// The line of the byte at `offset`, counted from 0; a line feed belongs to the line it ends.
  std::size_t lineOf(std::size_t offset) const;

  /// Characters between the start of the line and the one that the byte at `offset` is part of. A
  /// byte that is not part of valid UTF-8 is a character.
  std::size_t columnOf(std::size_t offset) const;

 private:
  struct Mark {
    std::size_t offset;      ///< where a character starts
    std::size_t characters;  ///< how many come before
  };

  std::size_t charactersBefore(std::size_t offset) const;

  std::string_view m_text;
  std::vector<std::size_t> m_lineStarts;
  std::vector<Mark> m_marks;  ///< the n-th is the first character at or after n * kMarkDistance
};

}  // namespace orvdiff
