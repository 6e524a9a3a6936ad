#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "cli/diff/MaskAlignment.h"
#include "cli/terminal/Terminal.h"

/// What differs between two files inside masks, so that no comparison shows it.
class HiddenDifferences {
 public:
  /// Both maps are by the same patterns, of NUL-terminated texts, and outlive this object.
  HiddenDifferences(const OrvOriginMap& master, const OrvOriginMap& actual);

  std::size_t count() const { return m_count; }
  std::size_t countOf(std::size_t rule) const;

  /// Whether the files have so many masks that some of the differences may be none.
  bool isCoarse() const { return m_alignment.isCoarse; }

  /// Shows both sides of the first `most` differences of each rule, but for white space.
  void print(std::size_t most, const Palette& palette) const;

 private:
  using Mask = OrvOriginMap::Mask;

  struct Hidden {
    MaskPair masks;
    HiddenDifference at;
  };

  bool isWorthShowing(const Hidden& hidden) const;
  void print(const Hidden& hidden, const Palette& palette) const;
  std::string place(std::size_t side, const Mask* mask, std::size_t offset) const;
  std::string excerpt(std::size_t side, const Mask* mask, std::size_t offset, bool isAlone,
                      const Palette& palette) const;

  const std::array<const OrvOriginMap*, 2> m_maps;  ///< of the master and the actual file
  const MaskAlignment m_alignment;
  std::map<std::size_t, std::vector<Hidden>> m_byRule;
  std::size_t m_count = 0;
};
