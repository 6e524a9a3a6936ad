#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A path to values of a JSON text, as `JsonRules` describes it.
struct JsonPath {
  struct Step {
    enum class Kind { Member, AnyMember, Element, AnyElement, MemberAtAnyDepth };
    Kind kind;
    std::uint64_t name;     ///< hash of a member's name
    std::uint32_t element;  ///< counted from 0
  };

  std::string text;
  std::vector<Step> steps;

  /// Nothing if `text` is no path.
  static std::optional<JsonPath> parse(const std::string& text);
};

/// How far paths have got on the way from the root of a text to one of its values.
class JsonPathWatch {
 public:
  /// At the root. `paths` must outlive the watch.
  explicit JsonPathWatch(const std::vector<JsonPath>& paths);

  /// At a member with this hash of its name, or at an element.
  JsonPathWatch atMember(std::uint64_t name) const { return at({true, name, 0}); }
  JsonPathWatch atElement(std::uint32_t element) const { return at({false, 0, element}); }

  /// The number of the first path that leads to this value.
  std::optional<std::size_t> match() const;

 private:
  struct Move {
    bool isMember;
    std::uint64_t name;
    std::uint32_t element;
  };
  struct State {
    std::size_t path;
    std::size_t step;  ///< the next one
  };

  JsonPathWatch at(const Move& move) const;

  const std::vector<JsonPath>* m_paths;
  std::vector<State> m_states;
};
