// Prints the number comparison's verdict on every pair of a file, one word a line. The file
// holds master, NUL, actual, NUL, and so on.

#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include "orvdiff/compare/OrvDiffFloatComparison.h"

namespace {

const char* verdictOf(const OrvDiffResult& result) {
  if (result.isPassed()) return "pass";
  return dynamic_cast<const OrvDiffResultFailDiff*>(&result) ? "count" : "value";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: float_driver FILE\n";
    return 2;
  }
  std::ifstream file(argv[1], std::ios::binary);
  std::string pairs((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  OrvDiffFloatComparison comparison;
  char* const end = pairs.data() + pairs.size();
  for (char* master = pairs.data(); master < end;) {
    char* const actual = master + std::strlen(master) + 1;
    if (actual >= end) break;
    const std::unique_ptr<OrvDiffResult> result(
        comparison.performStringDiff("master", "actual", master, actual));
    std::cout << verdictOf(*result) << '\n';
    master = actual + std::strlen(actual) + 1;
  }
  return 0;
}
