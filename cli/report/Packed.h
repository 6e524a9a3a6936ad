#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Bytes in base64, with padding.
std::string base64(std::string_view bytes);

/// A text compressed as browsers unpack it ("deflate": zlib's format), in base64. Raises
/// `std::bad_alloc`.
std::string packed(std::string_view text);

/// A text that grows and is read back once it is whole. What goes beyond a few megabytes is kept
/// compressed: the pairs of a large run take a tenth of the memory that way.
class PackedText {
 public:
  /// Raises `std::bad_alloc`.
  void add(std::string_view text);

  bool isEmpty() const { return m_blocks.empty() && m_last.empty(); }

  /// Hands the text over, piece by piece. Raises `std::bad_alloc`.
  void write(const std::function<void(std::string_view)>& take) const;

 private:
  void close();

  std::vector<std::string>
      m_blocks;        ///< of equal length; the first ones plain, the rest compressed
  std::string m_last;  ///< plain
};
