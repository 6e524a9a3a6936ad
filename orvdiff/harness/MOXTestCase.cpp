#include "orvdiff/harness/MOXTestCase.h"

MOXTestCase::MOXTestCase(const std::string& name) : m_name(name) {}

MOXTestCase::~MOXTestCase() = default;

std::uint32_t MOXTestCase::read(const std::uint32_t& counter) const {
  const VELThreadGuard guard(m_lock);
  return counter;
}

void MOXTestCase::write(std::uint32_t& counter, std::uint32_t count) {
  const VELThreadGuard guard(m_lock);
  counter = count;
}

void MOXTestCase::increment(std::uint32_t& counter) {
  const VELThreadGuard guard(m_lock);
  ++counter;
}
