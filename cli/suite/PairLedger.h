#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

/// Which pairs a run has come to a verdict on. Keeps a few bytes of a pair that passed.
class PairLedger {
 public:
  void add(std::string_view format, std::string_view master, const std::string& output,
           bool isPassed);

  /// Call it once, after the last pair.
  void close();

  bool holds(std::string_view format, std::string_view master) const;

  /// Whether a pair with this output did not pass.
  bool isFailing(const std::string& output) const { return m_failing.count(output) != 0; }

 private:
  std::vector<std::uint64_t> m_pairs;  ///< hashes; sorted once closed
  std::unordered_set<std::string> m_failing;
};
