#include "cli/report/JsonReport.h"

#include "cli/record/PairJson.h"

void JsonReport::add(const PairRecord& pair, const FileReader& /*read*/) {
  m_pairs += (m_pairs.empty() ? "\n" : ",\n") + toJsonLine(pair);
}

std::string JsonReport::finish(const ReportSummary& summary) {
  return "{\"version\": 1,\n\"run\": " + toJson(summary.run) +
         ",\n\"groups\": " + toJson(summary.groups) + ",\n\"pairs\": [" + m_pairs + "]}\n";
}
