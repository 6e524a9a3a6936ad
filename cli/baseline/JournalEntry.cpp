#include "cli/baseline/JournalEntry.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "cli/record/ContentHash.h"
#include "cli/record/JsonText.h"

using nlohmann::ordered_json;

namespace {

constexpr int kVersion = 1;
constexpr const char* kCheck = "check";  ///< hash of all other members

std::string relativeTo(const std::string& top, const std::string& path) {
  const bool isBelow = path.size() > top.size() + 1 && path.compare(0, top.size(), top) == 0 &&
                       path[top.size()] == '/';
  return isBelow ? path.substr(top.size() + 1) : path;
}

std::string absoluteFrom(const std::string& top, const std::string& path) {
  return path.empty() || path.front() == '/' ? path : top + '/' + path;
}

JournalFile fileFromJson(const ordered_json& json, const std::string& top) {
  return {absoluteFrom(top, textFromJson(json.at("path"))), json.at("before").get<std::string>(),
          json.at("after").get<std::string>(), json.at("mode").get<mode_t>()};
}

}  // namespace

std::string toText(const JournalEntry& entry, const std::string& top) {
  ordered_json json;
  json["version"] = kVersion;
  json["id"] = entry.id;
  json["verb"] = entry.verb;
  json["undoes"] = entry.undoes;
  json["time"] = entry.time;
  json["user"] = textToJson(entry.user);
  json["host"] = textToJson(entry.host);
  json["finished"] = entry.isFinished;
  json["leftOut"] = entry.leftOut;
  json["files"] = ordered_json::array();
  for (const JournalFile& file : entry.files) {
    json["files"].push_back({{"path", textToJson(relativeTo(top, file.path))},
                             {"before", file.before},
                             {"after", file.after},
                             {"mode", file.mode}});
  }
  json["folders"] = ordered_json::array();
  for (const std::string& folder : entry.folders) {
    json["folders"].push_back(textToJson(relativeTo(top, folder)));
  }
  json[kCheck] = contentHash(json.dump());
  return json.dump(1) + '\n';
}

JournalEntry entryFromText(std::string_view text, const std::string& top) {
  ordered_json json = ordered_json::parse(text);
  if (json.at("version").get<int>() != kVersion) {
    throw std::runtime_error("another version of orvdiff wrote it");
  }
  const std::string check = json.at(kCheck).get<std::string>();
  json.erase(kCheck);
  if (contentHash(json.dump()) != check) {
    throw std::runtime_error("it is not what was written");
  }
  JournalEntry entry;
  entry.id = json.at("id").get<std::uint64_t>();
  entry.verb = json.at("verb").get<std::string>();
  entry.undoes = json.at("undoes").get<std::uint64_t>();
  entry.time = json.at("time").get<std::string>();
  entry.user = textFromJson(json.at("user"));
  entry.host = textFromJson(json.at("host"));
  entry.isFinished = json.at("finished").get<bool>();
  entry.leftOut = json.at("leftOut").get<std::uint64_t>();
  for (const ordered_json& file : json.at("files")) {
    entry.files.push_back(fileFromJson(file, top));
  }
  for (const ordered_json& folder : json.at("folders")) {
    entry.folders.push_back(absoluteFrom(top, textFromJson(folder)));
  }
  return entry;
}
