#include "cli/record/Decision.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>
#include <tuple>
#include <utility>

#include "cli/record/JsonText.h"
#include "cli/system/CommandError.h"

using nlohmann::ordered_json;

namespace {

constexpr std::pair<Decision::Fix, const char*> kWords[] = {{Decision::Fix::Accept, "accept"},
                                                            {Decision::Fix::Remove, "remove"},
                                                            {Decision::Fix::Fault, "fault"},
                                                            {Decision::Fix::Skip, "skip"}};

/// The members that are texts, in the order in which they are written.
constexpr std::pair<const char*, std::string Decision::*> kTexts[] = {
    {"kind", &Decision::kind},
    {"report", &Decision::report},
    {"format", &Decision::format},
    {"path", &Decision::path},
    {"output", &Decision::output},
    {"masterHash", &Decision::masterHash},
    {"outputHash", &Decision::outputHash},
    {"group", &Decision::group},
    {"note", &Decision::note}};

}  // namespace

std::string toJsonLine(const Decision& decision) {
  ordered_json json;
  for (const auto& [fix, word] : kWords) {
    if (fix == decision.fix) {
      json["fix"] = word;
    }
  }
  for (const auto& [name, member] : kTexts) {
    if (!(decision.*member).empty()) {
      json[name] = textToJson(decision.*member);
    }
  }
  for (const std::string& group : decision.accepted) {
    json["accepted"].push_back(textToJson(group));
  }
  return json.dump();
}

Decision decisionFromJsonLine(std::string_view line) {
  const ordered_json json = ordered_json::parse(line, nullptr, false);
  if (!json.is_object()) {  // nor is what cannot be parsed
    throw std::runtime_error("it is not a JSON object");
  }
  if (!json.contains("fix") || !json["fix"].is_string()) {
    throw std::runtime_error("it has no \"fix\"");
  }
  Decision decision;
  const std::string word = json["fix"].get<std::string>();
  const auto* const known = std::find_if(std::begin(kWords), std::end(kWords),
                                         [&word](const auto& row) { return word == row.second; });
  if (known == std::end(kWords)) {
    throw std::runtime_error("\"" + word + "\" is none of accept, remove, fault, skip");
  }
  decision.fix = known->first;
  for (const auto& [name, member] : kTexts) {
    if (json.contains(name)) {
      decision.*member = textFromJson(json.at(name));
    }
  }
  for (const ordered_json& group : json.value("accepted", ordered_json::array())) {
    decision.accepted.push_back(textFromJson(group));
  }
  if (decision.path.empty()) {
    throw std::runtime_error("it names no \"path\"");
  }
  return decision;
}

std::vector<Decision> readDecisions(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw CommandError(path + ": " + std::generic_category().message(errno));
  }
  std::map<std::tuple<std::string, std::string>, std::size_t> numbers;
  std::vector<Decision> decisions;
  std::size_t number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    if (line.empty() || line == "\r") {
      continue;
    }
    try {
      Decision decision = decisionFromJsonLine(line);
      const auto [place, isNew] =
          numbers.try_emplace({decision.path, decision.format}, decisions.size());
      if (isNew) {
        decisions.push_back(std::move(decision));
      } else {
        decisions[place->second] = std::move(decision);
      }
    } catch (const std::exception& error) {
      throw CommandError(path + ", line " + std::to_string(number) +
                         " is not a decision: " + error.what());
    }
  }
  if (file.bad()) {
    throw CommandError(path + " cannot be read to its end");
  }
  return decisions;
}
