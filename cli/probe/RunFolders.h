#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// The files of several runs whose outputs should be the same.
struct RunFolders {
  std::vector<std::string> folders;  ///< as the user named them
  std::vector<std::string> files;    ///< relative to each of them; in all of them
  /// In some of them only: the name, and the indices in `folders`.
  std::vector<std::pair<std::string, std::vector<std::size_t>>> strays;
  std::size_t others = 0;  ///< files in the first folder with other name endings

  std::string pathOf(std::size_t run, std::size_t file) const;
};

/// Finds the files below `folders` whose names end with `tail`, sorted by name. Hidden files and
/// folders are left out. Raises `CommandError` if a folder cannot be read, if two are the same, and
/// if there is no such file in any of them.
RunFolders findRunFiles(std::vector<std::string> folders, const std::string& tail);
