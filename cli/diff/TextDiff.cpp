#include "cli/diff/TextDiff.h"

Difference textDifference(const DiffRequest& /*request*/) {
  Difference difference;
  difference.kind = "text";
  return difference;
}
