#include "cli/report/PagePairs.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "cli/record/ContentHash.h"
#include "cli/record/JsonText.h"
#include "cli/record/PairJson.h"
#include "cli/report/Packed.h"

namespace {

// A browser must be able to show any one pair at once, whatever an output holds.
constexpr std::size_t kMostBytesOfText = std::size_t{64} << 10;
constexpr std::size_t kMostBytesOfHunks = std::size_t{512} << 10;
constexpr std::size_t kBytesOfBlock = std::size_t{256} << 10;  // more compress better, open slower

std::string_view lastPart(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, std::max<std::size_t>(slash, 1));
}

void shorten(std::string& text, std::size_t most) {
  if (text.size() > most) {
    const std::size_t left = text.size() - most;
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U) {
      --most;  // not in the middle of a character
    }
    text.resize(most);
    text += "\n[" + std::to_string(left) + " bytes more are not in this report]";
  }
}

void shorten(Difference& difference) {
  std::size_t left = kMostBytesOfHunks;
  std::size_t kept = 0;
  for (DiffHunk& hunk : difference.hunks) {
    for (DiffLine& line : hunk.lines) {
      for (DiffSpan& span : line.spans) {
        shorten(span.text, std::min(kMostBytesOfText, left));
        left -= std::min(left, span.text.size());
      }
    }
    ++kept;
    if (left == 0) {
      break;
    }
  }
  difference.hunks.resize(kept);  // hunkCount tells how many there are
}

/// What the page shows of a pair.
std::string pairJson(PairRecord pair) {
  for (FileFacts* const facts : {&pair.masterFile, &pair.outputFile}) {
    facts->normalizedHash.clear();  // nobody reads it, and it does not compress
    if (pair.verdict == Verdict::Passed) {
      facts->hash.clear();  // nobody decides on it
    }
  }
  pair.masterPath.clear();
  pair.outputPath.clear();
  shorten(pair.message, kMostBytesOfText);
  shorten(pair.printed, kMostBytesOfText);
  if (pair.difference) {
    shorten(*pair.difference);
    pair.difference->changes.clear();  // the groups hold them
  }
  return toJsonLine(pair);
}

std::string textJson(const std::string& text) {
  return textToJson(text).dump();
}

}  // namespace

void PagePairs::NamedColumn::add(const std::string& name) {
  const auto [found, isNew] = numberOf.try_emplace(name, numberOf.size());
  if (isNew) {
    names.add(textJson(name));
  }
  numbers.add(std::to_string(found->second));
}

void PagePairs::add(const PairRecord& pair, const FileReader& read) {
  constexpr std::size_t kDigitsOfId = 10;
  constexpr double kPerSecond = 1e6;
  // The same in every run, so that a link to a pair of last night's report fits tonight's.
  const std::string key = pair.report + '\n' + pair.format + '\n' + pair.master;
  m_ids.add('"' + contentHash(key).substr(0, kDigitsOfId) + '"');
  m_verdicts.add(std::string(wordFor(pair.verdict)));
  m_formats.add(pair.format);
  m_folders.add(folderOf(pair.report));
  const std::string_view name = lastPart(pair.master.empty() ? pair.report : pair.master);
  m_names.add(textJson(std::string(name)));
  m_microseconds.add(std::to_string(std::llround(pair.seconds * kPerSecond)));
  m_places.add(std::to_string(pair.difference ? pair.difference->hunkCount : 0));
  m_block += (m_block.empty() ? "" : ",\n") + pairJson(pair);
  m_context.add(m_count, pair, read);
  ++m_count;
  if (m_block.size() > kBytesOfBlock) {
    flush();
  }
}

void PagePairs::flush() {
  if (m_block.empty()) {
    return;
  }
  m_context.flush(m_blockCount);
  m_blocks += dataElement("details" + std::to_string(m_blockCount++), packed('[' + m_block + ']'));
  m_firstOfBlocks.add(std::to_string(m_firstOfBlock));
  m_firstOfBlock = m_count;
  m_block.clear();
}

std::string PagePairs::index() {
  flush();
  const std::pair<const char*, const Column&> columns[] = {
      {"ids", m_ids},
      {"verdictNames", m_verdicts.names},
      {"verdicts", m_verdicts.numbers},
      {"formatNames", m_formats.names},
      {"formats", m_formats.numbers},
      {"folderNames", m_folders.names},
      {"folders", m_folders.numbers},
      {"names", m_names},
      {"microseconds", m_microseconds},
      {"places", m_places},
      {"blocks", m_firstOfBlocks},
  };
  std::string json;
  for (const auto& [name, column] : columns) {
    json += std::string(json.empty() ? "{" : ",") + '"' + name + "\":[" + column.values + ']';
  }
  return json + '}';
}

std::string dataElement(const std::string& id, const std::string& base64) {
  return "<script type=\"text/plain\" id=\"" + id + "\">" + base64 + "</script>\n";
}
