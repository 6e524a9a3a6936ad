#include "cli/report/PagePairs.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>

#include "cli/record/ContentHash.h"
#include "cli/record/JsonText.h"
#include "cli/record/PairJson.h"
#include "cli/report/Packed.h"

using nlohmann::ordered_json;

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
    facts->hash.clear();  // nobody reads them, and they do not compress
    facts->normalizedHash.clear();
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

ordered_json textsJson(const std::vector<std::string>& texts) {
  ordered_json json = ordered_json::array();
  for (const std::string& text : texts) {
    json.push_back(textToJson(text));
  }
  return json;
}

}  // namespace

void PagePairs::NamedColumn::add(const std::string& name) {
  const auto [found, isNew] = numberOf.try_emplace(name, names.size());
  if (isNew) {
    names.push_back(name);
  }
  numbers.push_back(found->second);
}

void PagePairs::add(const PairRecord& pair) {
  constexpr std::size_t kDigitsOfId = 10;
  constexpr double kPerSecond = 1e6;
  // The same in every run, so that a link to a pair of last night's report fits tonight's.
  const std::string key = pair.report + '\n' + pair.format + '\n' + pair.master;
  m_ids.push_back(contentHash(key).substr(0, kDigitsOfId));
  m_verdicts.add(std::string(wordFor(pair.verdict)));
  m_formats.add(pair.format);
  m_folders.add(folderOf(pair.report));
  const std::string_view name = lastPart(pair.master.empty() ? pair.report : pair.master);
  m_names.push_back(textToJson(std::string(name)));
  m_microseconds.push_back(static_cast<std::int64_t>(std::round(pair.seconds * kPerSecond)));
  m_places.push_back(pair.difference ? pair.difference->hunkCount : 0);
  m_block += (m_block.empty() ? "" : ",\n") + pairJson(pair);
  ++m_count;
  if (m_block.size() > kBytesOfBlock) {
    flush();
  }
}

void PagePairs::flush() {
  if (m_block.empty()) {
    return;
  }
  const std::string id = "details" + std::to_string(m_firstOfBlocks.size());
  m_blocks += dataElement(id, packed('[' + m_block + ']'));
  m_firstOfBlocks.push_back(m_firstOfBlock);
  m_firstOfBlock = m_count;
  m_block.clear();
}

std::string PagePairs::index() {
  flush();
  ordered_json json;
  json["ids"] = std::exchange(m_ids, {});
  json["verdictNames"] = textsJson(m_verdicts.names);
  json["verdicts"] = m_verdicts.numbers;
  json["formatNames"] = textsJson(m_formats.names);
  json["formats"] = m_formats.numbers;
  json["folderNames"] = textsJson(m_folders.names);
  json["folders"] = m_folders.numbers;
  json["names"] = std::exchange(m_names, {});
  json["seconds"] = std::exchange(m_microseconds, {});
  json["places"] = std::exchange(m_places, {});
  json["blocks"] = m_firstOfBlocks;
  for (auto& [name, column] : json.items()) {
    column = column.is_null() ? ordered_json::array() : column;
  }
  return json.dump();
}

std::string dataElement(const std::string& id, const std::string& base64) {
  return "<script type=\"text/plain\" id=\"" + id + "\">" + base64 + "</script>\n";
}
