#pragma once

#include <chrono>
#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>

/// A line on standard error that says how far the work is, rewritten in place. It takes itself away
/// before anything, also the library, prints on `std::cout`, which is tied to it.
class Progress : private std::streambuf {
 public:
  /// `enabled` false: shows nothing, ever.
  explicit Progress(bool enabled);
  ~Progress() override;

  /// Shows that `number` of `total` is being worked on, unless the line was rewritten only just.
  void show(std::size_t number, std::size_t total, const std::string& what);

 private:
  using Clock = std::chrono::steady_clock;

  int sync() override;
  void clear();

  std::ostream m_stream;
  std::ostream* m_formerTie;
  bool m_enabled;
  bool m_visible = false;
  Clock::time_point m_shownAt;  ///< long ago: the first line is shown at once
};
