#pragma once

#include <chrono>
#include <cstddef>
#include <ostream>
#include <streambuf>
#include <string>

/// A progress line on standard error, rewritten in place. `std::cout` is tied to it, so it is
/// cleared before anything is printed, including by the library.
class Progress : private std::streambuf {
 public:
  /// Shows nothing unless `enabled`.
  explicit Progress(bool enabled);
  ~Progress() override;

  /// Shows that item `number` of `total` is in progress, and how many pairs have not passed. Does
  /// nothing if the line was updated less than 100 ms ago.
  void show(std::size_t number, std::size_t total, std::size_t notPassed, const std::string& what);

 private:
  using Clock = std::chrono::steady_clock;

  int sync() override;
  void clear();

  std::ostream m_stream;
  std::ostream* m_formerTie;
  bool m_enabled;
  bool m_visible = false;
  Clock::time_point m_shownAt;  ///< initially the epoch, so the first line shows at once
};
