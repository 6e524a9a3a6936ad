// How normalising time grows on documents that are hard on backtracking: time(2n) / time(n) for
// every catalogue row and every list of a text engine; linear growth is a ratio of 2.
//
// Prints the worst cases, in two groups. Where a pattern finds nothing to try, all that is left is
// a pass over the text, and its ratio says how much slower memory is than the caches: a text that
// fits is passed over up to twice as fast, byte for byte, as its double that does not.
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
  std::string name;
  double smaller;  ///< seconds for n repetitions
  double larger;   ///< and for twice as many
  bool isPass;     ///< nothing but a pass over the text, as fast as memory delivers it

  double ratio() const { return larger / smaller; }
};

Case measure(const std::string& small, const std::string& large, const OrvPatternList& patterns) {
  constexpr double kPassBytesPerSecond = 1e9;
  constexpr double kSurprise = 2.2;
  Case result = {"", seconds(small, patterns), seconds(large, patterns), false};
  result.isPass = result.larger < static_cast<double>(large.size()) / kPassBytesPerSecond;
  // Other programs spoil one of many measurements easily, but hardly four of them.
  for (int again = 0; again < 3 && !result.isPass && result.ratio() > kSurprise; ++again) {
    result.smaller = std::min(result.smaller, seconds(small, patterns));
    result.larger = std::min(result.larger, seconds(large, patterns));
  }
  return result;
}

std::vector<Case> measureAll(std::size_t n) {
  const std::vector<OrvPatternList> lists = patternListsToTry();
  std::vector<Case> cases;
  for (const Document& document : kDocuments) {
    const std::string small = build(document, n);
    const std::string large = build(document, 2 * n);
    for (std::size_t list = 0; list < lists.size(); ++list) {
      cases.push_back(measure(small, large, lists[list]));
      cases.back().name =
          (list < kCatalogueRows ? "row " : "list ") + std::to_string(list) + ", " + document.name;
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
