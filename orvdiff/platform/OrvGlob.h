#pragma once

#include <list>
#include <string>

namespace orvdiff::host {

/// Wildcard file listing.
struct OrvGlob {
  /// Appends to `files`, sorted by name, every entry of the pattern's folder whose name matches the
  /// pattern's file-name part, as a path made of the folder part as written and the name.
  ///
  /// "*" stands for any run of characters; every other character, "[" and "?" included, stands for
  /// itself, because report names hold them. The folder part is used as written. A folder that does
  /// not or cannot exist yields nothing; one that cannot be read raises `VELStdExceptionError`. An
  /// entry that is not a readable file (a folder, a dangling link) is listed too: opening it
  /// reports the problem, whereas leaving it out would hide a broken master.
  static void globFiles(const char* pattern, std::list<std::string>& files);
};

}  // namespace orvdiff::host

using orvdiff::host::OrvGlob;
