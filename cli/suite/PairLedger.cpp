#include "cli/suite/PairLedger.h"

#include <xxhash.h>

#include <algorithm>

namespace {

std::uint64_t hashOf(std::string_view format, std::string_view master) {
  return XXH3_64bits_withSeed(master.data(), master.size(),
                              XXH3_64bits(format.data(), format.size()));
}

}  // namespace

void PairLedger::add(std::string_view format, std::string_view master, const std::string& output,
                     bool isPassed) {
  m_pairs.push_back(hashOf(format, master));
  if (!isPassed) {
    m_failing.insert(output);
  }
}

void PairLedger::close() {
  std::sort(m_pairs.begin(), m_pairs.end());
}

bool PairLedger::holds(std::string_view format, std::string_view master) const {
  return std::binary_search(m_pairs.begin(), m_pairs.end(), hashOf(format, master));
}
