#include "cli/probe/SampleText.h"

#include <algorithm>

#include "cli/probe/Variation.h"
#include "cli/probe/VaryingPlaces.h"
#include "orvdiff/compare/OrvOriginMap.h"

namespace {

bool endsSample(char c) {
  return !isUsable(c) || c == ' ' || c == '\n' || c == '<' || c == '>' || c == '"';
}

/// The bytes from `begin` to `end` with a word or two before and what hangs on behind, on one line.
std::string sampleAround(const std::string& text, std::size_t begin, std::size_t end) {
  constexpr std::size_t kMargin = 24;
  std::size_t from = begin;
  std::size_t start = begin;
  while (from > 0 && begin - from < kMargin && isUsable(text[from - 1]) &&
         !(endsSample(text[from - 1]) && text[from - 1] != ' ')) {
    --from;
    start = text[from] == ' ' ? start : from;
  }
  // A word that the margin cuts is left out.
  const bool isCut = start > 0 && start < begin && !endsSample(text[start - 1]);
  if (isCut) {
    const std::size_t blank = text.find(' ', start);
    start = std::min(begin, blank == std::string::npos ? begin : blank + 1);
  }
  while (end < text.size() && !endsSample(text[end])) {
    ++end;
  }
  return text.substr(start, end - start);
}

}  // namespace

std::string textThatStays(const Rule& rule, const std::string& value, const std::string& otherwise,
                          RunTexts& texts) {
  constexpr std::size_t kMostFiles = 20;
  constexpr std::size_t kMostTries = 50;
  const auto bare = compiled({value, ""});
  const OrvPatternList alone = {bare.get()};
  for (std::size_t file = 0; file < std::min(kMostFiles, texts.fileCount()); ++file) {
    const RunTexts::Text text = texts.of(file).front();
    const OrvOriginMap map(*text, alone);
    std::size_t tries = 0;
    for (const OrvOriginMap::Mask& mask : map.masks()) {
      if (++tries > kMostTries) {
        break;
      }
      if (isInsideTag(*text, mask.begin)) {
        continue;
      }
      std::string sample = sampleAround(*text, mask.begin, mask.end);
      if (std::all_of(sample.begin(), sample.end(), isUsable) && applied(rule, sample) == sample) {
        return sample;
      }
    }
  }
  return otherwise;
}
