#include "cli/record/PairJson.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "cli/record/DifferenceJson.h"
#include "cli/record/JsonText.h"

using nlohmann::ordered_json;

namespace {

ordered_json factsJson(const FileFacts& facts) {
  ordered_json json = ordered_json::object();
  if (facts.size) {
    json["size"] = *facts.size;
  }
  if (!facts.hash.empty()) {
    json["hash"] = facts.hash;
  }
  if (!facts.normalizedHash.empty()) {
    json["normalizedHash"] = facts.normalizedHash;
  }
  if (!facts.evidence.empty()) {
    json["evidence"] = facts.evidence;
  }
  return json;
}

FileFacts factsFrom(const ordered_json& json) {
  FileFacts facts;
  if (json.contains("size")) {
    facts.size = json.at("size").get<std::uint64_t>();
  }
  facts.hash = json.value("hash", "");
  facts.normalizedHash = json.value("normalizedHash", "");
  facts.evidence = json.value("evidence", "");
  return facts;
}

/// Seconds without the digits that no clock stands for.
double inMicroseconds(double seconds) {
  constexpr double kPerSecond = 1e6;
  return std::round(seconds * kPerSecond) / kPerSecond;
}

ordered_json maskJson(const OutsizedMask& mask) {
  ordered_json json;
  json["file"] = mask.isInOutput ? "output" : "master";
  if (!mask.rule.empty()) {
    json["rule"] = mask.rule;
  }
  json["bytes"] = mask.bytes;
  json["percent"] = mask.percent;
  json["firstLine"] = mask.firstLine;
  json["lastLine"] = mask.lastLine;
  return json;
}

OutsizedMask maskFrom(const ordered_json& json) {
  return {json.at("file").get<std::string>() == "output", json.value("rule", ""),
          json.at("bytes").get<std::uint64_t>(),          json.at("percent").get<double>(),
          json.at("firstLine").get<std::uint64_t>(),      json.at("lastLine").get<std::uint64_t>()};
}

ordered_json knownJson(const KnownCause& known) {
  ordered_json json;
  json["verdict"] = wordFor(known.verdict);
  json["reasons"] = ordered_json::array();
  for (const KnownReason& reason : known.reasons) {
    json["reasons"].push_back({{"why", textToJson(reason.why)},
                               {"until", reason.until},
                               {"link", textToJson(reason.link)},
                               {"place", textToJson(reason.place)}});
  }
  return json;
}

std::string textFrom(const ordered_json& json, const char* member) {
  return json.contains(member) ? textFromJson(json.at(member)) : std::string();
}

Verdict verdictFrom(const ordered_json& json) {
  const std::string word = json.at("verdict").get<std::string>();
  const auto verdict = verdictFor(word);
  if (!verdict) {
    throw std::runtime_error("\"" + word + "\" is not a verdict");
  }
  return *verdict;
}

KnownCause knownFrom(const ordered_json& json) {
  KnownCause known = {verdictFrom(json), {}};
  for (const ordered_json& reason : json.at("reasons")) {
    known.reasons.push_back({textFrom(reason, "why"), reason.value("until", ""),
                             textFrom(reason, "link"), textFrom(reason, "place")});
  }
  return known;
}

}  // namespace

std::string toJsonLine(const PairRecord& record) {
  ordered_json json;
  json["report"] = textToJson(record.report);
  json["format"] = record.format;
  json["subFolder"] = textToJson(record.subFolder);
  json["master"] = textToJson(record.master);
  json["output"] = textToJson(record.output);
  json["masterPath"] = textToJson(record.masterPath);
  json["outputPath"] = textToJson(record.outputPath);
  json["verdict"] = wordFor(record.verdict);
  if (!record.message.empty()) {
    json["message"] = textToJson(record.message);
  }
  if (record.at) {
    json["at"] = {
        {"byte", record.at->byte}, {"line", record.at->line}, {"column", record.at->column}};
  }
  json["seconds"] = inMicroseconds(record.seconds);
  json["cpuSeconds"] = inMicroseconds(record.cpuSeconds);
  json["masterFile"] = factsJson(record.masterFile);
  json["outputFile"] = factsJson(record.outputFile);
  if (record.known) {
    json["known"] = knownJson(*record.known);
  }
  if (record.mask) {
    json["mask"] = maskJson(*record.mask);
  }
  if (!record.rules.empty()) {
    json["rules"] = record.rules;
  }
  if (!record.printed.empty()) {
    json["printed"] = textToJson(record.printed);
  }
  if (record.difference) {
    json["difference"] = differenceToJson(*record.difference);
  }
  return json.dump();
}

PairRecord pairFromJsonLine(std::string_view line) {
  const ordered_json json = ordered_json::parse(line);
  PairRecord record;
  record.report = textFromJson(json.at("report"));
  record.format = json.at("format").get<std::string>();
  record.subFolder = textFrom(json, "subFolder");
  record.master = textFromJson(json.at("master"));
  record.output = textFromJson(json.at("output"));
  record.masterPath = textFrom(json, "masterPath");
  record.outputPath = textFrom(json, "outputPath");
  record.verdict = verdictFrom(json);
  record.message = textFrom(json, "message");
  if (json.contains("at")) {
    const ordered_json& at = json.at("at");
    record.at =
        DifferencePlace{at.at("byte").get<std::uint64_t>(), at.at("line").get<std::uint64_t>(),
                        at.at("column").get<std::uint64_t>()};
  }
  record.seconds = json.value("seconds", 0.0);
  record.cpuSeconds = json.value("cpuSeconds", 0.0);
  record.masterFile = factsFrom(json.at("masterFile"));
  record.outputFile = factsFrom(json.at("outputFile"));
  if (json.contains("known")) {
    record.known = knownFrom(json.at("known"));
  }
  if (json.contains("mask")) {
    record.mask = maskFrom(json.at("mask"));
  }
  if (json.contains("rules")) {
    record.rules = json.at("rules").get<std::vector<std::string>>();
  }
  record.printed = textFrom(json, "printed");
  if (json.contains("difference")) {
    record.difference = differenceFromJson(json.at("difference"));
  }
  return record;
}
