#pragma once

#include <string>
#include <vector>

/// Enters the folder `workFolder` of --work, if any, and rewrites the user's other paths, which are
/// relative to the folder it leaves, so that they name the same files from there: the `locations`,
/// and `files`, of which those that are empty or "-" stay as they are. Raises `CommandError` if the
/// folder cannot be entered.
void enterWorkFolder(const std::string& workFolder, std::vector<std::string>& locations,
                     const std::vector<std::string*>& files);

/// Raises `CommandError` for a location that exists only in `startFolder`, the folder that -C has
/// left (empty: there was no -C), and explains the difference between -C and --work.
void requireLocations(const std::vector<std::string>& locations, const std::string& startFolder);
