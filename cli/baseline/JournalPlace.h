#pragma once

#include <string>
#include <vector>

/// What a user gives as the journal's folder to keep none.
inline constexpr const char* kNoJournal = "none";

/// Where a suite begins, and where its journal is.
struct JournalPlace {
  std::string top;     ///< absolute, without links; masters outside of it are not written
  std::string folder;  ///< of the journal; empty: none is kept
};

/// The place for changes to masters of the reports at `locations`. The top is the nearest folder,
/// from the one that holds all locations upwards, with a journal or a Git repository in it. If
/// there is none: of a location within the server's folder (the one above the working folder), the
/// folder in that; else the one that holds all locations.
///
/// `given` is what the user said: empty (".orvdiff" in the top), "none", or a folder. Raises
/// `CommandError` for a location that is not there.
JournalPlace placeOfJournal(const std::vector<std::string>& locations, const std::string& given);

/// The journal that `undo` and `log` mean: `given`, or else the one in the working folder, in the
/// nearest folder above that has one, or in a folder beside the working folder. `work` takes the
/// place of the working folder if it is not empty. Raises `CommandError` if there is none, or if
/// there are several.
std::string findJournal(const std::string& given, const std::string& work = {});
