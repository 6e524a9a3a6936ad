#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The values of a JSON text, with where they stand in it. Values are known by their hashes: equal
/// values have equal ones, however they are spelled, except that numbers count as they are written
/// and the order of an object's members does not count.
///
/// Built without recursion, so that no depth of nesting is too deep.
class JsonTree {
 public:
  static constexpr std::size_t kMostNodes = 8'000'000;
  static constexpr std::size_t kMostBytes = std::size_t{1} << 30;

  enum class Type : std::uint8_t { Scalar, Array, Object };

  /// A value. Its children follow it; `end` is one past its last descendant.
  struct Node {
    std::uint64_t hash = 0;
    std::uint64_t keyHash = 0;    ///< of its name in an object
    std::uint32_t textBegin = 0;  ///< offsets in the text
    std::uint32_t textEnd = 0;
    std::uint32_t keyBegin = 0;  ///< of the quote before its name
    std::uint32_t end : 30;
    std::uint32_t type : 2;
  };

  /// Parses `text`, which must outlive the tree.
  explicit JsonTree(std::string_view text);

  /// Why the text has no tree, to be printed after its name; empty: it has one.
  const std::string& problem() const { return m_problem; }

  const Node& node(std::uint32_t index) const { return m_nodes[index]; }
  Type typeOf(std::uint32_t index) const { return static_cast<Type>(m_nodes[index].type); }
  /// The numbers of the nodes right below a node, in the order of the text.
  std::vector<std::uint32_t> childrenOf(std::uint32_t index) const;
  /// A value as it is written, without the blanks and line breaks between its parts.
  std::string compactTextOf(std::uint32_t index) const;
  /// The name of a member as it is written, with its quotes.
  std::string_view keyOf(std::uint32_t index) const;
  /// The line that a value starts in, counted from 1. Fast for values close to the one before.
  std::uint64_t lineOf(std::uint32_t index) const;

  /// Of all names and values in order; equal for texts that differ only in spacing and spelling.
  std::uint64_t orderedHash() const { return m_orderedHash; }
  /// A node whose object has another member of the same name; 0: there is none.
  std::uint32_t duplicate() const { return m_duplicate; }

 private:
  class Builder;

  std::string_view m_text;
  std::vector<Node> m_nodes;
  std::uint64_t m_orderedHash = 0;
  std::uint32_t m_duplicate = 0;
  std::string m_problem;
  mutable std::size_t m_lineKnownAt = 0;  ///< an offset, and the line that it is in
  mutable std::uint64_t m_line = 1;
};
