#include "cli/custom/JsonSettlement.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

#include "cli/system/CommandError.h"
#include "cli/terminal/Counts.h"

namespace {

using Verdict = ContentOutcome::Verdict;

constexpr std::uint64_t kIgnored = 0x1D6A07ED;  ///< the hash of all values that do not count

std::vector<JsonPath> parsePaths(const std::vector<std::string>& texts) {
  std::vector<JsonPath> paths;
  for (const std::string& text : texts) {
    const auto path = JsonPath::parse(text);
    if (!path) {
      throw CommandError("\"" + text + "\" is no path to values of a JSON text");
    }
    paths.push_back(*path);
  }
  return paths;
}

/// Finds as many pairs as there can be, each side in one at most. `mayPair` is asked for each
/// combination once.
class MostPairs {
 public:
  MostPairs(std::size_t left, std::size_t right,
            const std::function<bool(std::size_t, std::size_t)>& mayPair)
      : m_candidates(left), m_leftOf(right, kNone) {
    for (std::size_t i = 0; i < left; ++i) {
      for (std::size_t j = 0; j < right; ++j) {
        if (mayPair(i, j)) {
          m_candidates[i].push_back(j);
        }
      }
    }
    for (std::size_t i = 0; i < left; ++i) {
      m_isTried.assign(right, false);
      findFor(i);
    }
  }

  static constexpr std::size_t kNone = ~std::size_t{0};
  /// By right side; `kNone`: left over.
  const std::vector<std::size_t>& leftOf() const { return m_leftOf; }

 private:
  /// Finds a partner, if need be by finding another one for the partner's.
  bool findFor(std::size_t left) {
    for (const std::size_t right : m_candidates[left]) {
      if (!m_isTried[right]) {
        m_isTried[right] = true;
        if (m_leftOf[right] == kNone || findFor(m_leftOf[right])) {
          m_leftOf[right] = left;
          return true;
        }
      }
    }
    return false;
  }

  std::vector<std::vector<std::size_t>> m_candidates;
  std::vector<std::size_t> m_leftOf;
  std::vector<bool> m_isTried;
};

}  // namespace

JsonSettlement::JsonSettlement(JsonTree& master, JsonTree& output, const JsonRules& rules)
    : m_master(master),
      m_output(output),
      m_tolerance(rules.tolerance),
      m_ignoredPaths(parsePaths(rules.ignored)),
      m_unorderedPaths(parsePaths(rules.unordered)),
      m_ofMaster(mark(master)),
      m_ofOutput(mark(output)) {
  if (!m_tolerance.isNone()) {
    settle(0, 0, true);
  }
}

/// Gives every value its hash by the paths, and remembers what they lead to.
JsonSettlement::Marks JsonSettlement::mark(JsonTree& tree) const {
  Marks marks = {std::vector<bool>(tree.size()), std::vector<Hashes>(m_ignoredPaths.size()),
                 std::vector<Nodes>(m_unorderedPaths.size())};
  if (m_ignoredPaths.empty() && m_unorderedPaths.empty()) {
    return marks;
  }
  struct Level {
    std::uint32_t node;
    std::uint32_t children;
    JsonPathWatch ignored;
    JsonPathWatch unordered;
  };
  std::vector<Level> levels;
  std::vector<std::uint32_t> containers;
  for (std::uint32_t node = 0; node < tree.size();) {
    while (!levels.empty() && node >= tree.node(levels.back().node).end) {
      levels.pop_back();
    }
    Level level = {node, 0, JsonPathWatch(m_ignoredPaths), JsonPathWatch(m_unorderedPaths)};
    if (!levels.empty()) {
      Level& parent = levels.back();
      const bool isElement = tree.typeOf(parent.node) == JsonTree::Type::Array;
      const auto step = [&](const JsonPathWatch& watch) {
        return isElement ? watch.atElement(parent.children)
                         : watch.atMember(tree.node(node).keyHash);
      };
      level = {node, 0, step(parent.ignored), step(parent.unordered)};
      ++parent.children;
    }
    if (const auto path = level.ignored.match()) {
      marks.ignored[*path].push_back(tree.node(node).hash);
      tree.setHash(node, kIgnored);
      node = tree.node(node).end;
      continue;
    }
    const auto path = level.unordered.match();
    if (path && tree.typeOf(node) == JsonTree::Type::Array) {
      marks.isUnordered[node] = true;
      marks.unordered[*path].push_back(node);
    }
    if (tree.typeOf(node) != JsonTree::Type::Scalar) {
      containers.push_back(node);
      levels.push_back(std::move(level));
    }
    ++node;
  }
  for (auto node = containers.rbegin(); node != containers.rend(); ++node) {
    tree.rehash(*node, marks.isUnordered[*node]);
  }
  return marks;
}

bool JsonSettlement::isAllowedNumber(std::uint32_t master, std::uint32_t output) const {
  const std::string_view masterText = m_master.textOf(master);
  const std::string_view outputText = m_output.textOf(output);
  return masterText.front() != '"' && outputText.front() != '"' &&
         m_tolerance.allows(masterText, outputText);
}

/// Whether two values are as good as equal. `isFinal`: they belong together, so what is as good as
/// equal in them gets the same hash.
bool JsonSettlement::settle(std::uint32_t master, std::uint32_t output, bool isFinal) {
  if (m_master.node(master).hash == m_output.node(output).hash) {
    return true;
  }
  const auto type = m_master.typeOf(master);
  if (type != m_output.typeOf(output)) {
    return false;
  }
  if (type == JsonTree::Type::Scalar) {
    const bool isAllowed = isAllowedNumber(master, output);
    if (isAllowed && isFinal) {
      m_output.setHash(output, m_master.node(master).hash);
      m_usedTolerance = true;
    }
    return isAllowed;
  }
  const Pairing pairing = pairChildren(master, output);
  bool areEqual = pairing.isComplete;
  for (const auto& [masterChild, outputChild] : pairing.pairs) {
    if (!areEqual && !isFinal) {
      return false;
    }
    areEqual = settle(masterChild, outputChild, isFinal) && areEqual;
  }
  if (isFinal) {
    m_output.rehash(output, m_ofMaster.isUnordered[master]);
  }
  return areEqual;
}

JsonSettlement::Pairing JsonSettlement::pairChildren(std::uint32_t master, std::uint32_t output) {
  const Nodes inMaster = m_master.childrenOf(master);
  const Nodes inOutput = m_output.childrenOf(output);
  if (m_master.typeOf(master) == JsonTree::Type::Object) {
    return pairMembers(inMaster, inOutput);
  }
  if (m_ofMaster.isUnordered[master]) {
    return pairInAnyOrder(inMaster, inOutput);
  }
  Pairing pairing = {{}, inMaster.size() == inOutput.size()};
  for (std::size_t i = 0; i < std::min(inMaster.size(), inOutput.size()); ++i) {
    pairing.pairs.emplace_back(inMaster[i], inOutput[i]);
  }
  return pairing;
}

JsonSettlement::Pairing JsonSettlement::pairMembers(const Nodes& master,
                                                    const Nodes& output) const {
  std::unordered_map<std::uint64_t, std::uint32_t> inOutput;
  for (const std::uint32_t member : output) {
    inOutput.emplace(m_output.node(member).keyHash, member);
  }
  Pairing pairing = {{}, master.size() == output.size()};
  for (const std::uint32_t member : master) {
    const auto match = inOutput.find(m_master.node(member).keyHash);
    if (match != inOutput.end()) {
      pairing.pairs.emplace_back(member, match->second);
    } else {
      pairing.isComplete = false;
    }
  }
  return pairing;
}

JsonSettlement::Pairing JsonSettlement::pairInAnyOrder(const Nodes& master, const Nodes& output) {
  constexpr std::uint64_t kMostComparisons = 1'000'000;
  std::unordered_multimap<std::uint64_t, std::uint32_t> inOutput;
  for (const std::uint32_t element : output) {
    inOutput.emplace(m_output.node(element).hash, element);
  }
  Nodes masterRest;
  for (const std::uint32_t element : master) {
    const auto match = inOutput.find(m_master.node(element).hash);
    if (match == inOutput.end()) {
      masterRest.push_back(element);
    } else {
      inOutput.erase(match);
    }
  }
  Nodes outputRest;
  for (const auto& [hash, element] : inOutput) {
    outputRest.push_back(element);
  }
  std::sort(outputRest.begin(), outputRest.end());
  m_comparisons += std::uint64_t{masterRest.size()} * outputRest.size();
  if (m_comparisons > kMostComparisons) {
    throw CommandError(
        "too many elements have changed in an array without an order to tell which belong "
        "together; leave out the tolerance or the array");
  }
  const MostPairs found(masterRest.size(), outputRest.size(), [&](std::size_t a, std::size_t b) {
    return settle(masterRest[a], outputRest[b], false);
  });
  Pairing pairing = {{}, master.size() == output.size()};
  for (std::size_t i = 0; i < outputRest.size(); ++i) {
    if (found.leftOf()[i] != MostPairs::kNone) {
      pairing.pairs.emplace_back(masterRest[found.leftOf()[i]], outputRest[i]);
    }
  }
  pairing.isComplete = pairing.isComplete && pairing.pairs.size() == outputRest.size();
  return pairing;
}

std::vector<std::string> JsonSettlement::rules() const {
  std::vector<std::string> names;
  for (std::size_t path = 0; path < m_ignoredPaths.size(); ++path) {
    Hashes master = m_ofMaster.ignored[path];
    Hashes output = m_ofOutput.ignored[path];
    std::sort(master.begin(), master.end());
    std::sort(output.begin(), output.end());
    if (master != output) {
      names.push_back("ignored value " + m_ignoredPaths[path].text);
    }
  }
  const auto elementsOf = [](const JsonTree& tree, const Nodes& arrays) {
    Hashes hashes;
    for (const std::uint32_t array : arrays) {
      for (const std::uint32_t element : tree.childrenOf(array)) {
        hashes.push_back(tree.node(element).hash);
      }
    }
    return hashes;
  };
  for (std::size_t path = 0; path < m_unorderedPaths.size(); ++path) {
    if (elementsOf(m_master, m_ofMaster.unordered[path]) !=
        elementsOf(m_output, m_ofOutput.unordered[path])) {
      names.push_back("any order of elements " + m_unorderedPaths[path].text);
    }
  }
  if (m_usedTolerance) {
    names.emplace_back("tolerance");
  }
  return names;
}

namespace {

std::string problemOf(const JsonTree& tree) {
  if (!tree.problem().empty()) {
    return tree.problem();
  }
  if (std::string duplicate = tree.duplicateProblem(); !duplicate.empty()) {
    return duplicate;
  }
  return JsonSettlement::isTooDeep(tree)
             ? "is nested deeper than " + withThousands(JsonSettlement::kDeepest) + " levels"
             : std::string();
}

}  // namespace

ContentOutcome compareJson(std::string_view master, std::string_view output,
                           const JsonRules& rules) {
  if (master == output) {
    return {};
  }
  JsonTree masterTree(master);
  if (std::string problem = problemOf(masterTree); !problem.empty()) {
    return {Verdict::BadMaster, {}, std::move(problem)};
  }
  JsonTree outputTree(output);
  if (std::string problem = problemOf(outputTree); !problem.empty()) {
    return {Verdict::BadOutput, {}, std::move(problem)};
  }
  const JsonSettlement settlement(masterTree, outputTree, rules);
  if (!settlement.areEqual()) {
    return ContentOutcome::differs();
  }
  ContentOutcome outcome = {Verdict::Equal, settlement.rules(), {}};
  if (outcome.rules.empty()) {
    outcome.rules.emplace_back("other spacing, order of members or spelling of strings");
  }
  return outcome;
}
