#pragma once

#include <cstddef>
#include <string>

#include "cli/report/ReportRenderer.h"

/// The lines of masters around and between the hunks that the HTML report shows, so that its folds
/// open. Only of recorded runs: their hashes tell whether a file is still what was compared.
class PageContext {
 public:
  /// Takes in a pair, if its lines can be had.
  void add(std::size_t number, const PairRecord& pair, const FileReader& read);

  /// Ends the block of the pairs taken in since the last call; the page finds it by its number.
  void flush(std::size_t block);

  /// The blocks as elements of the page.
  const std::string& elements() const { return m_elements; }

 private:
  std::string m_block;  ///< that is being filled: {"number": [fold, ...]}
  std::string m_elements;
};
