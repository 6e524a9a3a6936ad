#include "cli/record/RunRecord.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "cli/record/JsonText.h"

using nlohmann::ordered_json;

namespace {

constexpr int kVersion = 1;  ///< of the form of run.json and pairs.jsonl

ordered_json textsToJson(const std::vector<std::string>& texts) {
  ordered_json json = ordered_json::array();
  for (const std::string& text : texts) {
    json.push_back(textToJson(text));
  }
  return json;
}

std::vector<std::string> textsFromJson(const ordered_json& json) {
  std::vector<std::string> texts;
  for (const ordered_json& text : json) {
    texts.push_back(textFromJson(text));
  }
  return texts;
}

ordered_json findingToJson(const FindingTotal& total) {
  return {{"kind", std::string(keyOf(total.kind))},
          {"count", total.count},
          {"example", textToJson(total.example.path)},
          {"detail", textToJson(total.example.detail)},
          {"details", textsToJson({total.details.begin(), total.details.end()})}};
}

FindingTotal findingFromJson(const ordered_json& json) {
  const std::string key = json.at("kind").get<std::string>();
  const std::optional<FindingKind> kind = kindFor(key);
  if (!kind) {
    throw std::runtime_error("\"" + key + "\" is no kind of finding");
  }
  const std::vector<std::string> details = textsFromJson(json.at("details"));
  return {*kind,
          json.at("count").get<std::uint64_t>(),
          {*kind, textFromJson(json.at("example")), textFromJson(json.at("detail"))},
          {details.begin(), details.end()}};
}

ordered_json formatsToJson(const FormatOptions& formats) {
  ordered_json json;
  json["names"] = formats.names;
  json["subFolders"] = textsToJson(formats.subFolders);
  json["folderSuffix"] = textToJson(formats.folderSuffix);
  json["layoutSchema"] = textToJson(formats.layoutData.schema);
  json["layoutNamespace"] = textToJson(formats.layoutData.namespaceUri);
  json["places"] = ordered_json::object();
  for (const auto& [format, places] : formats.places) {
    json["places"][format] = {{"outputDirectory", textToJson(places.outputDirectory)},
                              {"masterSubFolder", textToJson(places.masterSubFolder)},
                              {"fileNameSuffix", textToJson(places.fileNameSuffix)}};
  }
  return json;
}

FormatOptions formatsFromJson(const ordered_json& json) {
  FormatOptions formats;
  formats.names = json.at("names").get<std::vector<std::string>>();
  formats.subFolders = textsFromJson(json.at("subFolders"));
  formats.folderSuffix = textFromJson(json.at("folderSuffix"));
  formats.layoutData = {textFromJson(json.at("layoutSchema")),
                        textFromJson(json.at("layoutNamespace"))};
  for (const auto& [format, places] : json.at("places").items()) {
    formats.places[format] = {textFromJson(places.at("outputDirectory")),
                              textFromJson(places.at("masterSubFolder")),
                              textFromJson(places.at("fileNameSuffix"))};
  }
  return formats;
}

ordered_json configToJson(const RunConfig& config) {
  ordered_json patterns = ordered_json::array();
  for (const RunPattern& pattern : config.patterns) {
    patterns.push_back({{"name", textToJson(pattern.name)},
                        {"why", textToJson(pattern.why)},
                        {"place", textToJson(pattern.place)}});
  }
  return {{"file", textToJson(config.file)}, {"hash", config.hash}, {"patterns", patterns}};
}

RunConfig configFromJson(const ordered_json& json) {
  RunConfig config = {textFromJson(json.at("file")), json.at("hash").get<std::string>(), {}};
  for (const ordered_json& pattern : json.at("patterns")) {
    config.patterns.push_back({textFromJson(pattern.at("name")), textFromJson(pattern.at("why")),
                               textFromJson(pattern.at("place"))});
  }
  return config;
}

ordered_json knownToJson(const std::vector<KnownUse>& uses) {
  ordered_json json = ordered_json::array();
  for (const KnownUse& use : uses) {
    json.push_back(
        {{"what", textToJson(use.what)}, {"occurs", use.occurs}, {"applies", use.applies}});
  }
  return json;
}

std::vector<KnownUse> knownFromJson(const ordered_json& json) {
  std::vector<KnownUse> uses;
  for (const ordered_json& use : json) {
    uses.push_back({textFromJson(use.at("what")), use.at("occurs").get<bool>(),
                    use.at("applies").get<bool>()});
  }
  return uses;
}

}  // namespace

std::string remarkOn(const KnownUse& use) {
  return use.occurs    ? ""
         : use.applies ? "no longer needed: " + use.what
                       : "there is no such pair: " + use.what;
}

std::string toJson(const RunRecord& run) {
  ordered_json json;
  json["version"] = kVersion;
  json["program"] = run.program;
  json["commandLine"] = textsToJson(run.commandLine);
  json["formats"] = formatsToJson(run.formats);
  if (!run.config.file.empty()) {
    json["config"] = configToJson(run.config);
  }
  json["workingFolder"] = textToJson(run.workingFolder);
  json["host"] = run.host;
  json["start"] = run.start;
  json["end"] = run.end;
  json["shards"] = {{"indices", run.shards.indices}, {"count", run.shards.count}};
  json["suite"] = run.suite;
  json["reports"] = run.reports;
  json["pairs"] = run.pairs;
  json["totals"] = run.totals;
  json["unverified"] = textsToJson(run.unverified);
  json["findings"] = ordered_json::array();
  for (const FindingTotal& total : run.findings) {
    json["findings"].push_back(findingToJson(total));
  }
  json["notes"] = textsToJson(run.notes);
  if (!run.remarks.empty()) {
    json["remarks"] = textsToJson(run.remarks);
  }
  if (!run.known.empty()) {
    json["known"] = knownToJson(run.known);
  }
  json["mayBeEmpty"] = run.mayBeEmpty;
  json["status"] = run.status;
  json["complete"] = run.complete;
  return json.dump(2) + '\n';
}

RunRecord runFromJson(const std::string& text) {
  const ordered_json json = ordered_json::parse(text);
  const int version = json.at("version").get<int>();
  if (version != kVersion) {
    throw std::runtime_error("the record is of version " + std::to_string(version) +
                             "; this orvdiff reads version " + std::to_string(kVersion));
  }
  RunRecord run;
  run.program = json.at("program").get<std::string>();
  run.commandLine = textsFromJson(json.at("commandLine"));
  run.formats = formatsFromJson(json.at("formats"));
  if (json.contains("config")) {
    run.config = configFromJson(json.at("config"));
  }
  run.workingFolder = textFromJson(json.at("workingFolder"));
  run.host = json.at("host").get<std::string>();
  run.start = json.at("start").get<std::string>();
  run.end = json.at("end").get<std::string>();
  run.shards.indices = json.at("shards").at("indices").get<std::vector<std::uint32_t>>();
  run.shards.count = json.at("shards").at("count").get<std::uint32_t>();
  run.suite = json.at("suite").get<std::string>();
  run.reports = json.at("reports").get<std::uint64_t>();
  run.pairs = json.at("pairs").get<std::uint64_t>();
  run.totals = json.at("totals").get<std::map<std::string, std::uint64_t>>();
  run.unverified = textsFromJson(json.at("unverified"));
  for (const ordered_json& finding : json.at("findings")) {
    run.findings.push_back(findingFromJson(finding));
  }
  run.notes = textsFromJson(json.at("notes"));
  if (json.contains("remarks")) {
    run.remarks = textsFromJson(json.at("remarks"));
  }
  if (json.contains("known")) {
    run.known = knownFromJson(json.at("known"));
  }
  run.mayBeEmpty = json.at("mayBeEmpty").get<bool>();
  run.status = json.at("status").get<int>();
  run.complete = json.at("complete").get<bool>();
  return run;
}
