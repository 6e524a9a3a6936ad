// usage: float_driver FILE
// Prints the number comparison's verdict on every pair of a file, one word a line. The file
// holds master, NUL, actual, NUL, and so on.

#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include "orvdiff/compare/OrvDiffFloatComparison.h"

int main(int /*argc*/, char** argv) {
  std::ifstream file(argv[1], std::ios::binary);
  std::string pairs((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  OrvDiffFloatComparison comparison;
  for (char* master = pairs.data(); master < pairs.data() + pairs.size();) {
    char* const actual = master + std::strlen(master) + 1;
    const std::unique_ptr<OrvDiffResult> result(
        comparison.performStringDiff("master", "actual", master, actual));
    const bool isCount = dynamic_cast<const OrvDiffResultFailDiff*>(result.get()) != nullptr;
    std::cout << (result->isPassed() ? "pass\n" : isCount ? "count\n" : "value\n");
    master = actual + std::strlen(actual) + 1;
  }
}
