#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Finds the names that another name begins with, in logarithmic time.
class StemIndex {
 public:
  struct Stem {
    std::string text;
    std::uint32_t report;
  };

  /// Of stems with the same text, only that of the first report counts.
  explicit StemIndex(std::vector<Stem> stems);

  /// Calls `take` with each stem that `name` begins with, longest first, until it returns false.
  template <typename Take>
  void forEachStart(std::string_view name, const Take& take) const {
    for (std::int64_t i = longestStart(name); i >= 0; i = m_shorter[static_cast<std::size_t>(i)]) {
      if (!take(m_stems[static_cast<std::size_t>(i)])) {
        return;
      }
    }
  }

  /// The longest stem that `name` begins with, or null.
  const Stem* longest(std::string_view name) const;

  const std::vector<Stem>& stems() const { return m_stems; }

 private:
  std::int64_t longestStart(std::string_view name) const;

  std::vector<Stem> m_stems;            ///< sorted by text
  std::vector<std::int64_t> m_shorter;  ///< for each, the longest other one it begins with, or -1
};
