#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvdiff::detail {

/// A cache of folder listings that is never stale.
///
/// A run asks for the masters of every report in a folder, format by format; reading the folder
/// every time would take quadratic time. OrvFolderListings.cpp explains when a listing is reused.
/// One thread at a time.
class OrvFolderListings {
 public:
  /// The names in `folder` (empty: the working folder) without "." and "..", sorted; none if there
  /// is no such folder. Valid until the next call. Raises `VELStdExceptionError`, naming folder and
  /// reason, if the folder cannot be read: treating it as empty would hide its masters.
  const std::vector<std::string>& list(const std::string& folder);

 private:
  struct Listing {
    struct stat identity;
    bool reusable;
    std::vector<std::string> names;
  };
  std::unordered_map<std::string, Listing> m_listings;
};

}  // namespace orvdiff::detail
