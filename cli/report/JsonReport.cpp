#include "cli/report/JsonReport.h"

#include "cli/record/JsonText.h"
#include "cli/record/PairJson.h"

namespace {

std::string groupsJson(const std::vector<ChangeGroup>& groups) {
  std::string text;
  for (const ChangeGroup& group : groups) {
    const nlohmann::ordered_json json = {{"id", group.id},
                                         {"removed", textToJson(group.removed)},
                                         {"added", textToJson(group.added)},
                                         {"places", group.places},
                                         {"pairs", group.pairs}};
    text += (text.empty() ? "\n" : ",\n") + json.dump();
  }
  return text;
}

}  // namespace

void JsonReport::add(const PairRecord& pair, const FileReader& /*read*/) {
  m_pairs += (m_pairs.empty() ? "\n" : ",\n") + toJsonLine(pair);
}

std::string JsonReport::finish(const ReportSummary& summary) {
  return "{\"version\": 1,\n\"run\": " + toJson(summary.run) + ",\n\"groups\": [" +
         groupsJson(summary.groups) + "],\n\"pairs\": [" + m_pairs + "]}\n";
}
