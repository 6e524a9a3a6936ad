#pragma once

#include <list>
#include <string>

/// Wildcard file listing.
struct OrvGlob {
  /// Appends to `files`, sorted by name, every entry of the pattern's folder whose name matches the
  /// pattern's file-name part, as a path made of the folder part as written and the name.
  ///
  /// "*" stands for any run of characters; every other character, "[" and "?" included, stands for
  /// itself, because report names hold them. The folder part is taken as it is. A folder that is
  /// missing, or cannot exist, lists nothing; one that cannot be read raises
  /// `VELStdExceptionError`. An entry that is no readable file (a folder, a dangling link) is
  /// listed all the same: whoever opens it then reports it, where leaving it out would hide a
  /// broken master.
  static void globFiles(const char* pattern, std::list<std::string>& files);
};
