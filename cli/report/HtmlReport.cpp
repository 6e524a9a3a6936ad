#include "cli/report/HtmlReport.h"

#include <charconv>
#include <map>
#include <string_view>

#include "cli/record/JsonText.h"
#include "cli/report/Packed.h"
#include "cli/report/PageSource.h"

namespace {

/// A hash in the form of a content-security policy.
std::string policyHash(std::string_view hex) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    unsigned char byte = 0;
    std::from_chars(hex.data() + i, hex.data() + i + 2, byte, 16);
    bytes += static_cast<char>(byte);
  }
  return "'sha256-" + base64(bytes) + "'";
}

/// Nothing but the page's own script and style may do anything.
std::string policy() {
  return "default-src 'none'; script-src " + policyHash(kPageSource.scriptHash) + "; style-src " +
         policyHash(kPageSource.styleHash) + "; base-uri 'none'; form-action 'none'";
}

std::string title(const RunRecord& run) {
  const auto countOf = [&run](Verdict verdict) {
    const auto found = run.totals.find(std::string(wordFor(verdict)));
    return found == run.totals.end() ? 0 : found->second;
  };
  const std::uint64_t known = countOf(Verdict::Known);
  return std::to_string(countOf(Verdict::Passed)) + " of " + std::to_string(run.pairs) +
         " pairs passed" + (known > 0 ? ", " + std::to_string(known) + " known" : "") +
         " \u2013 orvdiff";
}

std::string headJson(const ReportSummary& summary) {
  std::string account;
  for (const std::string& sentence : summary.account) {
    account += (account.empty() ? "" : ",") + textToJson(sentence).dump();
  }
  std::string records;
  for (const std::string& folder : summary.records) {
    records += (records.empty() ? "" : ",") + textToJson(folder).dump();
  }
  return "{\"account\":[" + account + "],\"run\":" + toJson(summary.run) + ",\"records\":[" +
         records + "]" + ",\"groups\":" + toJson(summary.groups) + '}';
}

/// `page` with each "@name@" replaced, once.
std::string filled(std::string_view page, const std::map<std::string_view, std::string>& values) {
  std::string text;
  while (!page.empty()) {
    const std::size_t begin = page.find('@');
    text += page.substr(0, begin);
    if (begin == std::string_view::npos) {
      break;
    }
    const std::size_t end = page.find('@', begin + 1);
    text += values.at(page.substr(begin + 1, end - begin - 1));
    page.remove_prefix(end + 1);
  }
  return text;
}

}  // namespace

void HtmlReport::add(const PairRecord& pair, const FileReader& read) {
  m_pictures.add(m_pairs.count(), pair, read);
  m_pairs.add(pair, read);
}

ReportDocument HtmlReport::finish(const ReportSummary& summary) {
  const std::string index = m_pairs.index();
  const std::string pictures = m_pictures.load();
  return filled(kPageSource.page,
                {{"policy", policy()},
                 {"title", title(summary.run)},
                 {"style", kPageSource.style},
                 {"summary", dataElement("head", packed(headJson(summary))) +
                                 dataElement("index", packed(index))},
                 {"script", kPageSource.script},
                 {"details", m_pairs.blocks() + dataElement("pictures", packed(pictures)) +
                                 m_pictures.elements()}});
}
