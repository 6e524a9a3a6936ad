#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "cli/content/JsonTree.h"
#include "cli/custom/ContentOutcome.h"
#include "cli/custom/JsonPaths.h"
#include "cli/custom/OwnFormat.h"

/// Applies the rules of a format to two trees: gives values that count as equal the same hash. The
/// texts are equal if their roots then are, and whoever shows how the trees differ by their hashes
/// shows nothing that the rules allow.
///
/// In an array whose order does not count, equal elements belong together first; what remains must
/// pair up within the tolerance.
class JsonSettlement {
 public:
  /// Both trees must be without problems, and outlive the object. Raises `CommandError` for a path
  /// that is none, and if there are too many elements in any order to pair them.
  JsonSettlement(JsonTree& master, JsonTree& output, const JsonRules& rules);

  bool areEqual() const { return m_master.node(0).hash == m_output.node(0).hash; }

  /// Whether the order of the elements of this array of the master does not count.
  bool isUnordered(std::uint32_t masterNode) const { return m_ofMaster.isUnordered[masterNode]; }

  /// Which rules made values equal that are not.
  std::vector<std::string> rules() const;

  static constexpr std::size_t kDeepest = 2000;  ///< levels of nesting
  static bool isTooDeep(const JsonTree& tree) { return tree.depth() > kDeepest; }

 private:
  using Nodes = std::vector<std::uint32_t>;
  using Hashes = std::vector<std::uint64_t>;

  /// What the paths say of one tree.
  struct Marks {
    std::vector<bool> isUnordered;  ///< by node
    std::vector<Hashes> ignored;    ///< by path: what the values were
    std::vector<Nodes> unordered;   ///< by path
  };

  /// Which children of two containers belong together.
  struct Pairing {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;  ///< equal ones may be left out
    bool isComplete = true;                                      ///< no child is left over
  };

  Marks mark(JsonTree& tree) const;
  bool settle(std::uint32_t master, std::uint32_t output, bool isFinal);
  Pairing pairChildren(std::uint32_t master, std::uint32_t output);
  Pairing pairMembers(const Nodes& master, const Nodes& output) const;
  Pairing pairInAnyOrder(const Nodes& master, const Nodes& output);
  bool isAllowedNumber(std::uint32_t master, std::uint32_t output) const;

  JsonTree& m_master;
  JsonTree& m_output;
  const Tolerance m_tolerance;
  const std::vector<JsonPath> m_ignoredPaths;
  const std::vector<JsonPath> m_unorderedPaths;
  Marks m_ofMaster;
  Marks m_ofOutput;
  bool m_usedTolerance = false;
  std::uint64_t m_comparisons = 0;  ///< of elements in any order
};

/// Compares two JSON texts. One that is not JSON, has an object with two members of the same name,
/// or is nested too deeply is bad.
ContentOutcome compareJson(std::string_view master, std::string_view output,
                           const JsonRules& rules);
