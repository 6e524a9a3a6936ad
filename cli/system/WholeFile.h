#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <system_error>

/// Writes `text` to the file `path`, whole or not at all, and returns why that failed.
///
/// The text goes to a hidden file of its own beside `path`, which then takes the name: a reader
/// never sees half of it, and of several processes that do so at once the last one's text stands
/// there whole. What had the name, a link included, is replaced, never written through. `former`,
/// if not null, is the file whose permissions and owner the new one gets, where the system allows
/// that; else they are those of any new file.
std::error_code writeWholeFile(const std::string& path, std::string_view text,
                               const struct stat* former = nullptr);

/// Writes `text` into the file that is there, for names that cannot be given to another file (a
/// folder that is read-only, a mount point). A file that does not take all of it is left empty.
std::error_code writeInPlace(const std::string& path, std::string_view text);
