#include "cli/report/JsonReport.h"

#include "cli/record/PairJson.h"

void JsonReport::add(const PairRecord& pair, const FileReader& /*read*/) {
  m_pairs->add(m_pairs->isEmpty() ? "\n" : ",\n");
  m_pairs->add(toJsonLine(pair));
}

ReportDocument JsonReport::finish(const ReportSummary& summary) {
  return {"{\"version\": 1,\n\"run\": " + toJson(summary.run) +
              ",\n\"groups\": " + toJson(summary.groups) + ",\n\"pairs\": [",
          m_pairs, "]}\n"};
}
