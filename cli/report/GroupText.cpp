#include "cli/report/GroupText.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "cli/terminal/Excerpt.h"

const char* wordsFor(const ChangeGroup& group) {
  constexpr std::pair<std::string_view, const char*> kWords[] = {
      {"missing", "missing from the same folder: "},
      {"xml", "same message: "},
      {"script", "same words printed: "},
      {"picture", "same pixels differ: "},
  };
  for (const auto& [kind, words] : kWords) {
    if (group.kind == kind) {
      return words;
    }
  }
  return "same change: ";
}

std::string textOf(const ChangeGroup& group) {
  constexpr std::size_t kColumns = 60;  // of either side
  const auto quoted = [](const std::string& text, std::size_t columns) {
    return '`' + shortened(text, columns) + '`';
  };
  if (group.removed.empty() || group.added.empty()) {
    const std::string text = quoted(group.removed + group.added, 2 * kColumns);
    return group.kind != "text" && group.kind != "csv" && group.kind != "json" ? text
           : group.added.empty()                                               ? text + " removed"
                                                                               : text + " added";
  }
  return quoted(group.removed, kColumns) + " \u2192 " + quoted(group.added, kColumns);
}

std::string pairNameOf(const PairRecord& pair) {
  return pair.output == pair.master ? pair.master : pair.master + " -> " + pair.output;
}

bool hasGroup(const DiffHunk& hunk, const std::string& id) {
  return std::find(hunk.groups.begin(), hunk.groups.end(), id) != hunk.groups.end();
}

bool hasUnlistedChanges(const PairRecord& pair) {
  return pair.difference->changes.size() == Difference::kMostChanges;
}
