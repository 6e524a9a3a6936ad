#include "cli/suite/MasterRules.h"

#include <algorithm>
#include <set>
#include <system_error>
#include <tuple>
#include <utility>

#include "cli/custom/FormatList.h"
#include "cli/suite/FoldedName.h"
#include "cli/suite/FolderReader.h"
#include "cli/system/CommandError.h"

namespace {

constexpr const char* kProbe = "R";  ///< stands for a report

std::string withoutSuperfluousSlashes(std::string_view path) {
  std::string plain;
  for (const char c : path) {
    if (c != '/' || (!plain.empty() && plain.back() != '/')) {
      plain += c;
    }
  }
  if (!plain.empty() && plain.back() == '/') {
    plain.pop_back();
  }
  return plain;
}

std::string_view topOf(std::string_view folder) {
  return folder.substr(0, folder.find('/'));
}

/// The folder of an engine's masters below "Masters", and the name of a master of `kProbe`.
std::pair<std::string, std::string> askForMasters(const OrvDiffFileEngine& engine) {
  const std::string pattern = engine.getMasterPattern(kProbe);
  const std::size_t start = pattern.find('/') + 1;  // after "Masters"
  const std::size_t name = pattern.rfind('/') + 1;
  const std::string folder = name > start ? pattern.substr(start, name - start - 1) : "";
  return {folder, pattern.substr(name)};
}

MasterRule ruleOf(const OrvDiffFormat& format, OrvDiffFileEngine& engine,
                  const std::string& suffix) {
  MasterRule rule = {format.name, nullptr, {}, {}, {}, false, false, {}};
  engine.setMasterAndOutputFoldersSuffix("");
  rule.bareFolder = withoutSuperfluousSlashes(askForMasters(engine).first);
  engine.setMasterAndOutputFoldersSuffix("_probe");
  rule.hasSuffix = withoutSuperfluousSlashes(askForMasters(engine).first) != rule.bareFolder;
  engine.setMasterAndOutputFoldersSuffix(suffix);
  std::string name;
  std::tie(rule.folderAsWritten, name) = askForMasters(engine);
  rule.folder = withoutSuperfluousSlashes(rule.folderAsWritten);
  const std::size_t star = name.rfind('*');
  rule.isWholeName = star == std::string::npos;
  rule.tail = name.substr(rule.isWholeName ? std::string_view(kProbe).size() : star + 1);
  return rule;
}

}  // namespace

bool MasterRule::endsName(std::string_view name) const {
  return name.size() >= tail.size() && name.substr(name.size() - tail.size()) == tail;
}

bool MasterRule::isMasterOf(std::string_view name, std::string_view stem) const {
  const std::size_t least = stem.size() + tail.size();
  return isWholeName ? name.size() == least : name.size() >= least;
}

MasterRules::MasterRules(const std::vector<SelectedFormat>& formats, const FormatOptions& options) {
  for (const SelectedFormat& format : formats) {
    m_selected.push_back(ruleOf(*format.format, *format.engine, options.folderSuffix));
    m_selected.back().selected = &format;
  }
  for (const OrvDiffFormat& format : FormatList::all()) {
    m_known.push_back(ruleOf(format, *createPairEngine(format), options.folderSuffix));
  }
  for (const MasterRule& rule : m_selected) {
    m_selectedByFolder[rule.folder].push_back(&rule);
    if (rule.selected->subFolder.empty()) {
      addOwnFolder(rule.folder, false);
    }
  }
  for (const MasterRule& rule : m_known) {
    m_knownByFolder[rule.folder].push_back(&rule);
    m_knownByFolded[foldedName(rule.folder)].push_back(&rule);
    addOwnFolder(rule.bareFolder, rule.hasSuffix);
  }
}

const std::vector<const MasterRule*>& MasterRules::find(const Index& index,
                                                        const std::string& folder) {
  static const std::vector<const MasterRule*> none;
  const auto found = index.find(folder);
  return found != index.end() ? found->second : none;
}

const std::vector<const MasterRule*>& MasterRules::selectedIn(const std::string& folder) const {
  return find(m_selectedByFolder, folder);
}

const std::vector<const MasterRule*>& MasterRules::knownIn(const std::string& folder) const {
  return find(m_knownByFolder, folder);
}

const std::vector<const MasterRule*>& MasterRules::knownInFolded(const std::string& folded) const {
  return find(m_knownByFolded, folded);
}

void MasterRules::addOwnFolder(const std::string& folder, bool hasSuffix) {
  const std::string top = foldedName(topOf(folder));
  if (!top.empty()) {
    m_ownFolders.insert(top);
  }
  if (!top.empty() && hasSuffix) {
    m_suffixedFolders.insert(top);
  }
}

bool MasterRules::isOfFormats(std::string_view topFolder) const {
  const std::string folded = foldedName(topFolder);
  return m_ownFolders.count(folded) != 0 ||
         std::any_of(
             m_suffixedFolders.begin(), m_suffixedFolders.end(),
             [&folded](const std::string& own) { return folded.compare(0, own.size(), own) == 0; });
}

namespace {

std::string below(const std::string& folder, const std::string& name) {
  std::string path = folder;
  return path.append("/").append(name);
}

/// Collects the sub-folders of one folder "Masters".
class SubFolderFinder {
 public:
  SubFolderFinder(const MasterRules& rules, std::set<std::string>& found)
      : m_rules(rules), m_found(found) {}

  void search(const std::string& folder, const std::string& subFolder) {
    if (!m_searched.insert(folderId(folder)).second) {
      return;  // a loop of links
    }
    std::vector<std::string> names;
    const int error = readEntries(folder, [&](std::string_view name, EntryKind kind) {
      if (kind == EntryKind::Folder && !m_rules.isOfFormats(name)) {
        names.emplace_back(name);
      }
    });
    if (error != 0) {
      throw CommandError(folder + ": " + std::generic_category().message(error));
    }
    if (!subFolder.empty()) {
      m_found.insert(subFolder);
    }
    for (const std::string& name : names) {
      search(below(folder, name), subFolder.empty() ? name : below(subFolder, name));
    }
  }

 private:
  const MasterRules& m_rules;
  std::set<std::string>& m_found;
  std::set<FolderId> m_searched;
};

}  // namespace

std::set<std::string> findSubFolders(const std::vector<std::string>& masterFolders,
                                     const MasterRules& rules) {
  std::set<std::string> found;
  for (const std::string& folder : masterFolders) {
    SubFolderFinder(rules, found).search(folder, "");
  }
  return found;
}
