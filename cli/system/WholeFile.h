#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <system_error>

/// Writes `text` to the file `path`, in full or not at all, and returns the error if that fails.
///
/// Writes a hidden temporary file in the same folder and renames it, so that readers never see half
/// a file; if several processes write the same file, the last one wins. Replaces whatever has the
/// name, links included. If `former` is not null, the new file gets that file's owner and
/// permissions as far as the system allows.
std::error_code writeWholeFile(const std::string& path, std::string_view text,
                               const struct stat* former = nullptr);

/// Overwrites the existing file `path`, for files that cannot be replaced (in a read-only folder,
/// or a mount point). If the text does not fit, leaves the file empty.
std::error_code writeInPlace(const std::string& path, std::string_view text);
