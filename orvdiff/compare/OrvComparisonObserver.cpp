#include "orvdiff/compare/OrvComparisonObserver.h"

namespace {

OrvComparisonObserver* g_current = nullptr;  // one thread verifies, so no lock

}  // namespace

OrvComparisonObserver::~OrvComparisonObserver() = default;

OrvComparisonObserver* OrvComparisonObserver::current() {
  return g_current;
}

void OrvComparisonObserver::setCurrent(OrvComparisonObserver* observer) {
  g_current = observer;
}
