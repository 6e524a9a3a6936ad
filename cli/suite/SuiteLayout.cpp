#include "cli/suite/SuiteLayout.h"

#include <utility>

namespace {

SuiteLayout& layout() {
  static SuiteLayout current;
  return current;
}

}  // namespace

const SuiteLayout& suiteLayout() {
  return layout();
}

void setSuiteLayout(SuiteLayout newLayout) {
  layout() = std::move(newLayout);
}
