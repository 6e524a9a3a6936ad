#include "cli/record/DifferenceJson.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "cli/record/JsonText.h"

using nlohmann::ordered_json;

namespace {

constexpr std::string_view kLineKinds[] = {"context", "removed", "added"};
constexpr std::string_view kSpanKinds[] = {"same", "changed", "masked"};

template <typename Kind, std::size_t N>
Kind kindFrom(const std::string_view (&words)[N], const std::string& word) {
  const auto* const found = std::find(std::begin(words), std::end(words), word);
  if (found == std::end(words)) {
    throw std::runtime_error("\"" + word + "\" is no kind of line or span");
  }
  return static_cast<Kind>(found - std::begin(words));
}

ordered_json lineJson(const DiffLine& line) {
  ordered_json json;
  json["kind"] = kLineKinds[static_cast<std::size_t>(line.kind)];
  if (line.masterLine != 0) {
    json["masterLine"] = line.masterLine;
  }
  if (line.outputLine != 0) {
    json["outputLine"] = line.outputLine;
  }
  if (line.isCutBefore) {
    json["cutBefore"] = true;
  }
  if (line.isCutAfter) {
    json["cutAfter"] = true;
  }
  if (line.omitted != 0) {
    json["omitted"] = line.omitted;
  }
  ordered_json& spans = json["spans"] = ordered_json::array();
  for (const DiffSpan& span : line.spans) {
    ordered_json& last = spans.emplace_back();
    last["kind"] = kSpanKinds[static_cast<std::size_t>(span.kind)];
    last["text"] = textToJson(span.text);
    if (!span.rule.empty()) {
      last["rule"] = span.rule;
    }
  }
  return json;
}

DiffLine lineFrom(const ordered_json& json) {
  DiffLine line;
  line.kind = kindFrom<DiffLine::Kind>(kLineKinds, json.at("kind").get<std::string>());
  line.masterLine = json.value("masterLine", std::uint64_t{0});
  line.outputLine = json.value("outputLine", std::uint64_t{0});
  line.isCutBefore = json.value("cutBefore", false);
  line.isCutAfter = json.value("cutAfter", false);
  line.omitted = json.value("omitted", std::uint64_t{0});
  for (const ordered_json& span : json.at("spans")) {
    line.spans.push_back({kindFrom<DiffSpan::Kind>(kSpanKinds, span.at("kind").get<std::string>()),
                          textFromJson(span.at("text")), span.value("rule", "")});
  }
  return line;
}

}  // namespace

ordered_json differenceToJson(const Difference& difference) {
  ordered_json json;
  json["kind"] = difference.kind;
  ordered_json& notes = json["notes"] = ordered_json::array();
  for (const std::string& note : difference.notes) {
    notes.push_back(textToJson(note));
  }
  ordered_json& hunks = json["hunks"] = ordered_json::array();
  for (const DiffHunk& hunk : difference.hunks) {
    ordered_json& last = hunks.emplace_back();
    last["place"] = textToJson(hunk.place);
    last["groups"] = hunk.groups;
    ordered_json& lines = last["lines"] = ordered_json::array();
    for (const DiffLine& line : hunk.lines) {
      lines.push_back(lineJson(line));
    }
  }
  json["hunkCount"] = difference.hunkCount;
  json["coarse"] = difference.isCoarse;
  ordered_json& changes = json["changes"] = ordered_json::array();
  for (const DiffChange& change : difference.changes) {
    changes.push_back({{"group", change.group},
                       {"removed", textToJson(change.removed)},
                       {"added", textToJson(change.added)},
                       {"count", change.count}});
  }
  return json;
}

Difference differenceFromJson(const ordered_json& json) {
  Difference difference;
  difference.kind = json.at("kind").get<std::string>();
  for (const ordered_json& note : json.at("notes")) {
    difference.notes.push_back(textFromJson(note));
  }
  for (const ordered_json& hunk : json.at("hunks")) {
    DiffHunk& last = difference.hunks.emplace_back();
    last.place = textFromJson(hunk.at("place"));
    last.groups = hunk.at("groups").get<std::vector<std::string>>();
    for (const ordered_json& line : hunk.at("lines")) {
      last.lines.push_back(lineFrom(line));
    }
  }
  difference.hunkCount = json.at("hunkCount").get<std::uint64_t>();
  difference.isCoarse = json.at("coarse").get<bool>();
  for (const ordered_json& change : json.at("changes")) {
    difference.changes.push_back(
        {change.at("group").get<std::string>(), textFromJson(change.at("removed")),
         textFromJson(change.at("added")), change.at("count").get<std::uint64_t>()});
  }
  return difference;
}
