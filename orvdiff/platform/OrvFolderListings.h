#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

/// The names in folders, each folder read once for as long as it provably stays the same.
///
/// A run asks for the masters of every report in a folder, format by format; reading the folder
/// each time would make it quadratic. A listing is used again only while the folder's time stamps
/// and identity are those of the listing, and only if it was made well after the folder last
/// changed: a change that falls into the same tick of the file system's clock as the listing would
/// leave the time stamp as it is, so a folder that was changed just now is always read again.
class OrvFolderListings {
 public:
  /// The names in `folder` (empty: the working folder) without "." and "..", sorted; none when
  /// there is no such folder. Valid until the next call. Raises `VELStdExceptionError` with folder
  /// and reason for one that cannot be read: what it holds would pass for not being there.
  const std::vector<std::string>& list(const std::string& folder);

 private:
  struct Listing {
    struct stat identity;
    bool reusable;
    std::vector<std::string> names;
  };
  std::unordered_map<std::string, Listing> m_listings;
};
