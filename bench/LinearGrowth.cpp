// How normalising time grows on documents that are hard on backtracking: time(2n) / time(n) for
// every catalogue row and every format's list; linear growth is a ratio of 2. The tests count the
// matcher's steps; this measures everything else as well: copies, allocation, memory.
//
// Prints the worst cases, in two groups. Where a pattern finds nothing to try, only a pass over the
// text remains, and its ratio shows how much slower memory is than the caches: a text that fits
// into them is read up to twice as fast, byte for byte, as one of twice the size that does not.
//
// usage: orvdiff_growth [N]   (default 500000; the larger document has 2N repetitions)

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "tests/support/HostileDocuments.h"
#include "tests/support/PlainNormalizer.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

/// Moves a text out of the caches. If a text fits and one of twice the size does not, the larger
/// one takes four or five times as long, whatever the search does.
void evict(const char* text, std::size_t size) {
#if defined(__SSE2__)
  constexpr std::size_t kLine = 64;
  for (std::size_t i = 0; i < size; i += kLine) {
    _mm_clflush(text + i);
  }
#endif
}

double seconds(const std::string& text, const OrvPatternList& patterns) {
  constexpr double kTick = 1.0 / CLOCKS_PER_SEC;
  double best = 1e9;
  for (int run = 0; run < 5; ++run) {
    OrvTextBuffer master = OrvDiffLib::strdupnew(text.c_str());
    OrvTextBuffer actual = OrvDiffLib::strdupnew("");
    evict(master.get(), text.size());
    const std::clock_t start = std::clock();  // processor time: independent of other programs
    OrvDiffLib::cleanse(master, actual, patterns);
    best = std::min(best, static_cast<double>(std::clock() - start) * kTick);
  }
  return std::max(best, kTick);
}

struct Case {
  std::string name;
  double smaller;  ///< seconds for n repetitions
  double larger;   ///< and for twice as many
  bool isPass;     ///< only reads the text, as fast as memory delivers it

  double ratio() const { return larger / smaller; }
};

Case measure(const std::string& small, const std::string& large, const OrvPatternList& patterns) {
  constexpr double kPassBytesPerSecond = 1e9;
  constexpr double kSurprise = 2.2;
  Case result = {"", seconds(small, patterns), seconds(large, patterns), false};
  result.isPass = result.larger < static_cast<double>(large.size()) / kPassBytesPerSecond;
  // Other programs easily spoil one measurement of many, but hardly four of them.
  for (int again = 0; again < 3 && !result.isPass && result.ratio() > kSurprise; ++again) {
    result.smaller = std::min(result.smaller, seconds(small, patterns));
    result.larger = std::min(result.larger, seconds(large, patterns));
  }
  return result;
}

std::vector<Case> measureAll(std::size_t n) {
  const std::vector<NamedPatterns> lists = patternListsToTry();
  std::vector<Case> cases;
  for (const HostileDocument& document : kHostileDocuments) {
    const std::string small = document.build(n);
    const std::string large = document.build(2 * n);
    for (const auto& [name, patterns] : lists) {
      cases.push_back(measure(small, large, patterns.list()));
      cases.back().name = name + ", " + document.name;
    }
  }
  std::sort(cases.begin(), cases.end(),
            [](const Case& one, const Case& other) { return one.ratio() > other.ratio(); });
  return cases;
}

void print(const std::vector<Case>& cases, bool passes) {
  int left = 5;
  for (const Case& each : cases) {
    if (each.isPass == passes && left-- > 0) {
      std::printf("%8.2f %12.2f %12.2f  %s\n", each.ratio(), each.smaller * 1e3, each.larger * 1e3,
                  each.name.c_str());
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::size_t n = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 500000;
  const std::vector<Case> cases = measureAll(n);
  const auto passes =
      std::count_if(cases.begin(), cases.end(), [](const Case& each) { return each.isPass; });
  constexpr const char* kHead = "   ratio   time(n) ms  time(2n) ms  case";
  std::printf("n = %zu; cases in which time goes into matching: %zu\n%s\n", n,
              cases.size() - static_cast<std::size_t>(passes), kHead);
  print(cases, false);
  std::printf("cases of nothing but a pass over the text, faster than 1 GB/s: %zu\n%s\n",
              static_cast<std::size_t>(passes), kHead);
  print(cases, true);
}
