#include "cli/custom/JsonPaths.h"

#include <charconv>
#include <nlohmann/json.hpp>
#include <system_error>

#include "cli/content/JsonTree.h"

namespace {

using Step = JsonPath::Step;

/// Takes ".name", "..name" or ".*" off the start of `text`.
std::optional<Step> takeMember(std::string_view& text) {
  const bool isDeep = text.substr(0, 2) == "..";
  text.remove_prefix(isDeep ? 2 : 1);
  const std::string_view name = text.substr(0, text.find_first_of(".["));
  text.remove_prefix(name.size());
  if (name.empty() || (isDeep && name == "*")) {
    return std::nullopt;
  }
  if (name == "*") {
    return Step{Step::Kind::AnyMember, 0, 0};
  }
  return Step{isDeep ? Step::Kind::MemberAtAnyDepth : Step::Kind::Member,
              JsonTree::hashOfName(name), 0};
}

/// Where the string that starts at the second character of `text` ends; 0: nowhere.
std::size_t endOfString(std::string_view text) {
  for (std::size_t i = 2; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '"') {
      return i + 1;
    }
  }
  return 0;
}

/// Takes "[3]", "[*]" or "["name"]" off the start of `text`.
std::optional<Step> takeBrackets(std::string_view& text) {
  const bool isName = text.substr(0, 2) == "[\"";
  const std::size_t end = text.find(']', isName ? endOfString(text) : 0);
  if (end == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view inside = text.substr(1, end - 1);
  text.remove_prefix(end + 1);
  if (inside == "*") {
    return Step{Step::Kind::AnyElement, 0, 0};
  }
  if (isName) {
    const auto name = nlohmann::json::parse(inside, nullptr, false);
    return name.is_string() ? std::optional(Step{Step::Kind::Member,
                                                 JsonTree::hashOfName(name.get<std::string>()), 0})
                            : std::nullopt;
  }
  std::uint32_t element = 0;
  const auto [stop, error] = std::from_chars(inside.data(), inside.data() + inside.size(), element);
  const bool isRead = error == std::errc() && stop == inside.data() + inside.size();
  return isRead ? std::optional(Step{Step::Kind::Element, 0, element}) : std::nullopt;
}

}  // namespace

std::optional<JsonPath> JsonPath::parse(const std::string& text) {
  JsonPath path = {text, {}};
  std::string_view rest = text;
  if (rest.empty() || rest.front() != '$') {
    return std::nullopt;
  }
  rest.remove_prefix(1);
  while (!rest.empty()) {
    const auto step = rest.front() == '.'   ? takeMember(rest)
                      : rest.front() == '[' ? takeBrackets(rest)
                                            : std::nullopt;
    if (!step) {
      return std::nullopt;
    }
    path.steps.push_back(*step);
  }
  return path;
}

JsonPathWatch::JsonPathWatch(const std::vector<JsonPath>& paths) : m_paths(&paths) {
  for (std::size_t i = 0; i < paths.size(); ++i) {
    m_states.push_back({i, 0});
  }
}

JsonPathWatch JsonPathWatch::at(const Move& move) const {
  JsonPathWatch next = *this;
  next.m_states.clear();
  for (const State& state : m_states) {
    const std::vector<Step>& steps = (*m_paths)[state.path].steps;
    if (state.step == steps.size()) {
      continue;
    }
    const Step& step = steps[state.step];
    const bool isNamed = move.isMember && move.name == step.name;
    const bool isReached =
        (step.kind == Step::Kind::Member && isNamed) ||
        (step.kind == Step::Kind::MemberAtAnyDepth && isNamed) ||
        (step.kind == Step::Kind::AnyMember && move.isMember) ||
        (step.kind == Step::Kind::AnyElement && !move.isMember) ||
        (step.kind == Step::Kind::Element && !move.isMember && move.element == step.element);
    if (isReached) {
      next.m_states.push_back({state.path, state.step + 1});
    }
    if (step.kind == Step::Kind::MemberAtAnyDepth) {
      next.m_states.push_back(state);
    }
  }
  return next;
}

std::optional<std::size_t> JsonPathWatch::match() const {
  for (const State& state : m_states) {
    if (state.step == (*m_paths)[state.path].steps.size()) {
      return state.path;
    }
  }
  return std::nullopt;
}
