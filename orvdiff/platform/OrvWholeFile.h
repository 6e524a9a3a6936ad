#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>
#include <string_view>
#include <system_error>

#include "orvdiff/orvdiff_export.h"

/// Writing a file so that no reader ever sees half of it. Exported for the orvdiff program; not
/// part of the public interface, so this header is not installed.
///
/// The bytes go to a hidden temporary file in the same folder, which then takes the name. Until
/// then a reader sees the former file; if several processes write the same name at once, the last
/// one's file remains, whole. Links are replaced, not followed.
class ORVDIFF_API OrvWholeFile {
 public:
  /// Hands the bytes of a file, one piece after the other, to the function that it is given. May be
  /// called again, for a second attempt; may raise `std::bad_alloc`, nothing else.
  using Pieces = std::function<void(const std::function<void(std::string_view)>& take)>;

  /// Makes `name` a file of exactly these bytes. On an error nothing has changed. The new file gets
  /// the permissions and owner of `former`, as far as the system allows, or, if that is null, those
  /// of any new file.
  static std::error_code replace(const std::string& name, std::string_view bytes,
                                 const struct stat* former = nullptr);
  static std::error_code replace(const std::string& name, const Pieces& pieces,
                                 const struct stat* former = nullptr);

  /// Writes into an existing file, for names that no other file can take (in a read-only folder, at
  /// a mount point). If not all bytes fit, the file is left empty or removed.
  static std::error_code overwrite(const std::string& name, std::string_view bytes);
  static std::error_code overwrite(const std::string& name, const Pieces& pieces);

  /// Writes by `replace`, keeping the permissions of a former file; by `overwrite` if `name` is not
  /// a file (a device) or the folder takes no new files. Returns false if the file cannot be
  /// opened for writing. A write that fails later (disk full) is not reported, but the former file
  /// is removed: nobody must take it for the new one.
  static bool write(const std::string& name, std::string_view bytes);

  /// Writes all bytes to an open file, in as many steps as that takes.
  static std::error_code writeAll(int descriptor, std::string_view bytes);
};
