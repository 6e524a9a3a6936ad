// How normalising time grows on documents that are hard on backtracking: time(2n) / time(n) for
// every catalogue row and every list of a text engine. Prints the slowest-growing cases; linear
// growth is a ratio of 2.
//
// usage: orvdiff_growth [N]   (default 500000; the larger document has 2N repetitions)

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "tests/support/PlainNormalizer.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

struct Document {
  const char* name;
  const char* start;
  const char* repeated;
  const char* end;
};

constexpr Document kDocuments[] = {
    {"<script, unclosed", "", "<script", ""},
    {"<img src= on one line, no v1/", "", "<img src=", ""},
    {"aria-labelledby with n headers", " aria-labelledby=\"_THIS_hdr1", " _THIS_hdr22", "!"},
    {"n aria-labelledby, unclosed", "", " aria-labelledby=\"_THIS_hdr1 _THIS_hdr2", ""},
    {"blanks", "", " ", "x"},
    {"blanks before each id", "", "    id=\"a b", ""},
    {"digits", "", "7", ""},
    {"digits, no exponent", "", "1234567.", "e"},
    {"quotes", "", "\"", ""},
    {"quotes after a chart name", "chart_tmp_", "\"x", ""},
    {"one long line", "", "abc def ", "getAxisValueAsString"},
    {"many lines", "", "getAxisValueAsStrin\n", ""},
    {"<area, unclosed", "", "<area", ""},
    {"<area>, no end tag", "", "<area>", ""},
    {"<meta name=\"Copyright\", unclosed", "", "<meta name=\"Copyright\"", ""},
    {"name=\"next, no id", "", " name=\"next\"", ""},
    {"name=\"next id=\"next, unclosed", "", " name=\"next\" id=\"next", ""},
    {"onclick=, unclosed", "", "onclick=", ""},
    {"<coord>, unclosed", "", "<coord><filename><x:Data>", ""},
    {"c and digits", "", "c123", ".removeReference"},
    {"carriage returns", "", "\r", ""},
    {"line ends of two bytes", "", "\xC2\x85x", ""},
};

std::string build(const Document& document, std::size_t n) {
  std::string text = document.start;
  for (std::size_t i = 0; i < n; ++i) {
    text += document.repeated;
  }
  return text + document.end;
}

/// Moves a text out of the caches. Where one text fits and its double does not, the double would
/// take four or five times as long, whatever the search does.
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
    const std::clock_t start = std::clock();  // processor time: other programs do not count
    OrvDiffLib::cleanse(master, actual, patterns);
    best = std::min(best, static_cast<double>(std::clock() - start) * kTick);
  }
  return std::max(best, kTick);
}

struct Case {
  double ratio;
  double larger;
  std::string name;
};

}  // namespace

int main(int argc, char** argv) {
  const std::size_t n = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 500000;
  const std::vector<OrvPatternList> lists = patternListsToTry();
  std::vector<Case> cases;
  for (const Document& document : kDocuments) {
    const std::string small = build(document, n);
    const std::string large = build(document, 2 * n);
    for (std::size_t list = 0; list < lists.size(); ++list) {
      const double larger = seconds(large, lists[list]);
      const std::string name = list < kCatalogueRows ? "row " : "list ";
      cases.push_back({larger / seconds(small, lists[list]), larger,
                       name + std::to_string(list) + ", " + document.name});
    }
  }
  std::sort(cases.begin(), cases.end(),
            [](const Case& one, const Case& other) { return one.ratio > other.ratio; });
  std::printf("%zu cases, n = %zu\n%8s %12s  case\n", cases.size(), n, "ratio", "time(2n) ms");
  for (std::size_t i = 0; i < std::min<std::size_t>(cases.size(), 10); ++i) {
    std::printf("%8.2f %12.2f  %s\n", cases[i].ratio, cases[i].larger * 1e3, cases[i].name.c_str());
  }
  const Case& slowest = *std::max_element(
      cases.begin(), cases.end(),
      [](const Case& one, const Case& other) { return one.larger < other.larger; });
  std::printf("slowest: %.2f ms, ratio %.2f, %s\n", slowest.larger * 1e3, slowest.ratio,
              slowest.name.c_str());
}
