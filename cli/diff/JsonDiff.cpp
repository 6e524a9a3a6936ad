#include "cli/diff/JsonDiff.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "cli/content/JsonTree.h"
#include "cli/diff/DifferenceBuilder.h"
#include "cli/diff/GapAlignment.h"

namespace {

using Nodes = std::vector<std::uint32_t>;

/// What has become of the elements of an array.
struct ElementPairs {
  static constexpr std::uint32_t kGone = ~std::uint32_t{0};
  static constexpr std::uint32_t kUnchanged = kGone - 1;

  std::vector<SequenceEdit> edits;
  Nodes newPlace;           ///< of each of the master's that has changed or moved; or see above
  std::vector<bool> isNew;  ///< of each of the output's
};

/// Compares two trees from the top, without recursion.
class JsonComparison {
 public:
  JsonComparison(const JsonTree& master, const JsonTree& output, DifferenceBuilder& builder)
      : m_master(master), m_output(output), m_builder(builder) {}

  void run();

 private:
  /// One step of a path: from `parent`, to a member or to an element.
  struct Step {
    std::uint32_t parent;  ///< itself for the root
    std::uint32_t node;    ///< whose name it is, if it is a member's
    std::uint32_t element;
    enum { Root, MasterMember, OutputMember, Element } kind;
  };

  /// A pair of values that differ, or a value that only one side has.
  struct Task {
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};
    std::uint32_t master = kNone;
    std::uint32_t output = kNone;
    std::uint32_t step = 0;
    std::uint32_t movedTo = kNone;  ///< for an element that has moved: its new place
  };

  void visit(const Task& task);
  void compareObjects(const Task& task);
  void compareArrays(const Task& task);
  ElementPairs pairElements(const Nodes& master, const Nodes& output);
  void pairChanged(const Nodes& master, const Nodes& output, ElementPairs& pairs);
  std::uint32_t addStep(const Step& step);
  std::uint32_t similarity(std::uint32_t master, std::uint32_t output) const;
  std::string pathOf(std::uint32_t step) const;

  const JsonTree& m_master;
  const JsonTree& m_output;
  DifferenceBuilder& m_builder;
  std::vector<Step> m_steps;
  std::vector<Task> m_tasks;  ///< still to be visited, the next one last
  WorkBudget m_budget;
};

void JsonComparison::run() {
  m_steps.push_back({0, 0, 0, Step::Root});
  m_tasks.push_back({0, 0, 0, Task::kNone});
  while (!m_tasks.empty()) {
    const Task task = m_tasks.back();
    m_tasks.pop_back();
    visit(task);
  }
}

std::uint32_t JsonComparison::addStep(const Step& step) {
  m_steps.push_back(step);
  return static_cast<std::uint32_t>(m_steps.size() - 1);
}

void JsonComparison::visit(const Task& task) {
  const bool inMaster = task.master != Task::kNone;
  const bool inOutput = task.output != Task::kNone;
  if (inMaster && inOutput && task.movedTo == Task::kNone) {
    const auto type = m_master.typeOf(task.master);
    if (type == m_output.typeOf(task.output) && type == JsonTree::Type::Object) {
      return compareObjects(task);
    }
    if (type == m_output.typeOf(task.output) && type == JsonTree::Type::Array) {
      return compareArrays(task);
    }
  }
  const bool isKept = m_builder.keepsNext();
  const std::string path = isKept ? pathOf(task.step) : std::string();
  const std::string master = inMaster ? m_master.compactTextOf(task.master) : std::string();
  const std::string output = inOutput ? m_output.compactTextOf(task.output) : std::string();
  const DiffValue removed = {master, isKept && inMaster ? m_master.lineOf(task.master) : 0};
  const DiffValue added = {output, isKept && inOutput ? m_output.lineOf(task.output) : 0};
  if (task.movedTo != Task::kNone) {
    m_builder.addChange(path + ", moved to [" + std::to_string(task.movedTo) + ']', removed, added);
  } else if (!inOutput) {
    m_builder.addRemoval(path + ", only in the master", removed);
  } else if (!inMaster) {
    m_builder.addAddition(path + ", only in the output", added);
  } else {
    m_builder.addChange(path, removed, added);
  }
}

void JsonComparison::compareObjects(const Task& task) {
  std::unordered_multimap<std::uint64_t, std::uint32_t> inOutput;
  const Nodes outputMembers = m_output.childrenOf(task.output);
  for (auto member = outputMembers.rbegin(); member != outputMembers.rend(); ++member) {
    inOutput.emplace(m_output.node(*member).keyHash, *member);
  }
  std::vector<Task> tasks;
  for (const std::uint32_t member : m_master.childrenOf(task.master)) {
    const auto match = inOutput.find(m_master.node(member).keyHash);
    const bool isInBoth = match != inOutput.end();
    if (!isInBoth || m_output.node(match->second).hash != m_master.node(member).hash) {
      tasks.push_back({member, isInBoth ? match->second : Task::kNone,
                       addStep({task.step, member, 0, Step::MasterMember}), Task::kNone});
    }
    if (isInBoth) {
      inOutput.erase(match);
    }
  }
  for (const std::uint32_t member : outputMembers) {
    const auto [first, last] = inOutput.equal_range(m_output.node(member).keyHash);
    if (std::any_of(first, last, [member](const auto& left) { return left.second == member; })) {
      tasks.push_back(
          {Task::kNone, member, addStep({task.step, member, 0, Step::OutputMember}), Task::kNone});
    }
  }
  m_tasks.insert(m_tasks.end(), tasks.rbegin(), tasks.rend());  // the first one is visited next
}

/// How much two values have in common: equal members or elements for containers of the same kind.
std::uint32_t JsonComparison::similarity(std::uint32_t master, std::uint32_t output) const {
  constexpr std::size_t kMostChildren = 50;
  const auto type = m_master.typeOf(master);
  if (type != m_output.typeOf(output) || type == JsonTree::Type::Scalar) {
    return 0;
  }
  const auto start = [](const JsonTree& tree, std::uint32_t node) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> values;
    for (std::uint32_t child = node + 1;
         child < tree.node(node).end && values.size() < kMostChildren;
         child = tree.node(child).end) {
      values.emplace_back(tree.node(child).keyHash, tree.node(child).hash);
    }
    std::sort(values.begin(), values.end());
    return values;
  };
  const auto inMaster = start(m_master, master);
  const auto inOutput = start(m_output, output);
  std::uint32_t common = 0;
  for (auto a = inMaster.begin(), b = inOutput.begin();
       a != inMaster.end() && b != inOutput.end();) {
    common += *a == *b ? 1 : 0;
    const bool stepsInA = !(*b < *a);
    const bool stepsInB = !(*a < *b);
    a += stepsInA ? 1 : 0;
    b += stepsInB ? 1 : 0;
  }
  return common;
}

Nodes idsOf(const JsonTree& tree, const Nodes& nodes,
            std::unordered_map<std::uint64_t, std::uint32_t>& known) {
  Nodes ids;
  ids.reserve(nodes.size());
  for (const std::uint32_t node : nodes) {
    ids.push_back(known.try_emplace(tree.node(node).hash, static_cast<std::uint32_t>(known.size()))
                      .first->second);
  }
  return ids;
}

/// Finds the elements that are equal, in order or elsewhere, and then those that have changed.
ElementPairs JsonComparison::pairElements(const Nodes& master, const Nodes& output) {
  std::unordered_map<std::uint64_t, std::uint32_t> known;
  const Nodes masterIds = idsOf(m_master, master, known);
  const Nodes outputIds = idsOf(m_output, output, known);
  SequenceDiff diff = diffSequences(masterIds, outputIds, m_budget);
  if (diff.isCoarse) {
    m_builder.setCoarse();
  }
  ElementPairs pairs = {std::move(diff.edits), Nodes(master.size(), ElementPairs::kUnchanged),
                        std::vector<bool>(output.size())};
  std::unordered_multimap<std::uint32_t, std::uint32_t> added;
  for (auto edit = pairs.edits.rbegin(); edit != pairs.edits.rend(); ++edit) {
    for (std::uint32_t i = edit->endB; i-- > edit->beginB;) {
      added.emplace(outputIds[i], i);
      pairs.isNew[i] = true;
    }
  }
  for (const SequenceEdit& edit : pairs.edits) {
    for (std::uint32_t i = edit.beginA; i < edit.endA; ++i) {
      pairs.newPlace[i] = ElementPairs::kGone;
      const auto match = added.find(masterIds[i]);
      if (match != added.end()) {
        pairs.newPlace[i] = match->second;
        pairs.isNew[match->second] = false;
        added.erase(match);
      }
    }
  }
  pairChanged(master, output, pairs);
  return pairs;
}

void JsonComparison::pairChanged(const Nodes& master, const Nodes& output, ElementPairs& pairs) {
  constexpr std::uint64_t kCostOfOne = 100;
  const auto inCommon = [&](std::uint32_t a, std::uint32_t b) {
    return similarity(master[a], output[b]);
  };
  for (const SequenceEdit& edit : pairs.edits) {
    Nodes gone;
    Nodes added;
    for (std::uint32_t i = edit.beginA; i < edit.endA; ++i) {
      if (pairs.newPlace[i] == ElementPairs::kGone) {
        gone.push_back(i);
      }
    }
    for (std::uint32_t i = edit.beginB; i < edit.endB; ++i) {
      if (pairs.isNew[i]) {
        added.push_back(i);
      }
    }
    for (const auto& [a, b] : pairUnequal(gone, added, inCommon, kCostOfOne, m_budget)) {
      pairs.newPlace[a] = b;
      pairs.isNew[b] = false;
    }
  }
}

void JsonComparison::compareArrays(const Task& task) {
  const Nodes master = m_master.childrenOf(task.master);
  const Nodes output = m_output.childrenOf(task.output);
  const ElementPairs pairs = pairElements(master, output);
  std::vector<std::pair<std::uint32_t, Task>> tasks;  // by their place in the output
  std::uint64_t moved = 0;
  for (std::uint32_t i = 0; i < master.size(); ++i) {
    if (pairs.newPlace[i] == ElementPairs::kUnchanged) {
      continue;
    }
    Task next = {master[i], Task::kNone, addStep({task.step, 0, i, Step::Element}), Task::kNone};
    if (pairs.newPlace[i] != ElementPairs::kGone) {
      next.output = output[pairs.newPlace[i]];
      const bool isMoved = m_master.node(next.master).hash == m_output.node(next.output).hash;
      next.movedTo = isMoved ? pairs.newPlace[i] : Task::kNone;
      moved += isMoved ? 1 : 0;
    }
    tasks.emplace_back(placeInB(pairs.edits, i), next);
  }
  for (std::uint32_t i = 0; i < output.size(); ++i) {
    if (pairs.isNew[i]) {
      const std::uint32_t step = addStep({task.step, 0, i, Step::Element});
      tasks.push_back({i, {Task::kNone, output[i], step, Task::kNone}});
    }
  }
  if (moved > 1 && moved == tasks.size()) {
    m_builder.note(pathOf(task.step) + " has the same elements in another order");
  }
  std::stable_sort(tasks.begin(), tasks.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto next = tasks.rbegin(); next != tasks.rend(); ++next) {
    m_tasks.push_back(next->second);
  }
}

bool isPlainName(std::string_view name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-';
  });
}

std::string JsonComparison::pathOf(std::uint32_t step) const {
  constexpr std::size_t kMostSteps = 20;
  std::vector<std::string> pieces;
  std::size_t left = 0;
  for (; m_steps[step].kind != Step::Root; step = m_steps[step].parent) {
    if (pieces.size() == kMostSteps) {
      ++left;
      continue;
    }
    const Step& last = m_steps[step];
    if (last.kind == Step::Element) {
      pieces.push_back('[' + std::to_string(last.element) + ']');
      continue;
    }
    const std::string_view key =
        (last.kind == Step::MasterMember ? m_master : m_output).keyOf(last.node);
    const std::string_view name = key.substr(1, key.size() - 2);
    pieces.push_back(isPlainName(name) ? '.' + std::string(name) : '[' + std::string(key) + ']');
  }
  std::string path = left == 0 ? "$" : "$ ... " + withThousands(left) + " more levels ... ";
  for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
    path += *piece;
  }
  return path;
}

void noteTree(DifferenceBuilder& builder, const std::string& side, const JsonTree& tree) {
  if (!tree.problem().empty()) {
    builder.note(side + ' ' + tree.problem());
  } else if (tree.duplicate() != 0) {
    builder.note(side + " has an object with two members named " +
                 std::string(tree.keyOf(tree.duplicate())) + ", in line " +
                 withThousands(tree.lineOf(tree.duplicate())));
  }
}

}  // namespace

Difference jsonDifference(const DiffRequest& request) {
  DifferenceBuilder builder("json", request);
  const JsonTree masterTree(request.master);
  const JsonTree outputTree(request.output);
  noteTree(builder, "the master", masterTree);
  noteTree(builder, "the output", outputTree);
  if (!masterTree.problem().empty() || !outputTree.problem().empty()) {
    return builder.take();
  }
  if (masterTree.orderedHash() == outputTree.orderedHash()) {
    builder.noteChange("the same values; only spacing or the spelling of strings differs");
  } else if (masterTree.node(0).hash == outputTree.node(0).hash) {
    builder.noteChange("the same values; only the order of members differs");
  } else {
    JsonComparison(masterTree, outputTree, builder).run();
  }
  return builder.take();
}
