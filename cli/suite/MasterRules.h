#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "cli/suite/FormatSelection.h"

/// Where one format looks for masters in one sub-folder.
struct MasterRule {
  std::string_view format;
  const SelectedFormat* selected;  ///< null: known, but not selected
  std::string folderAsWritten;     ///< below "Masters", as the engine writes it
  std::string folder;              ///< the same without superfluous slashes
  std::string tail;                ///< how a master's name ends
  bool isWholeName;                ///< nothing stands between the report's name and the tail
  bool hasSuffix;                  ///< the folder's name ends in the folder suffix...
  std::string bareFolder;          ///< ... and is this without it

  bool endsName(std::string_view name) const;

  /// Whether `name` is that of a master of the report called `stem`, with which it begins.
  bool isMasterOf(std::string_view name, std::string_view stem) const;
};

/// What the engines of all formats look for, asked of the engines themselves.
class MasterRules {
 public:
  /// `formats`, selected by `options`, must outlive the object. Creates engines of all formats.
  MasterRules(const std::vector<SelectedFormat>& formats, const FormatOptions& options);

  using Rules = std::vector<MasterRule>;

  const Rules& selected() const { return m_selected; }

  /// All formats, as they would look for masters without a sub-folder, selected or not.
  const Rules& known() const { return m_known; }

  /// The selected rules for masters in `folder`, which is below "Masters".
  const std::vector<const MasterRule*>& selectedIn(const std::string& folder) const;

  /// The known rules likewise.
  const std::vector<const MasterRule*>& knownIn(const std::string& folder) const;

  /// The known rules of a folder whose folded name is `folded`.
  const std::vector<const MasterRule*>& knownInFolded(const std::string& folded) const;

  /// Whether a folder directly in "Masters" belongs to formats, whatever the case of its name, so
  /// that it is no sub-folder of its own.
  bool isOfFormats(std::string_view topFolder) const;

 private:
  using Index = std::map<std::string, std::vector<const MasterRule*>>;

  void addOwnFolder(const std::string& folder, bool hasSuffix);
  static const std::vector<const MasterRule*>& find(const Index& index, const std::string& folder);

  Rules m_selected;
  Rules m_known;
  Index m_selectedByFolder;
  Index m_knownByFolder;
  Index m_knownByFolded;
  std::set<std::string> m_ownFolders;  ///< directly in "Masters", folded
  std::set<std::string> m_suffixedFolders;
};

/// The sub-folders that the suite has: folders in any of `masterFolders`, at any depth,
/// that are not formats' own. Hidden ones are none. Raises `CommandError` for a folder that cannot
/// be read.
std::set<std::string> findSubFolders(const std::vector<std::string>& masterFolders,
                                     const MasterRules& rules);
