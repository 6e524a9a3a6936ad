#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// The steps by which a file gets new content that survives a crash: write a temporary file, flush
// it, rename it, flush the folder. Several files take each step together, which spares a disk most
// of the waiting.

/// Writes a new file; one that is left over from a killed process makes room. Gives it `mode`,
/// unless none, and the owner of `former` (may be null) as far as the system allows. Leaves nothing
/// behind on an error.
std::error_code writeTemporary(const std::string& path, std::string_view bytes,
                               std::optional<mode_t> mode, const struct stat* former);

/// Waits until a file's bytes, or a folder's names, are on the disk.
std::error_code flushToDisk(const std::string& path);

/// Gives a file another name, in place of what has it.
std::error_code moveFile(const std::string& from, const std::string& to);

std::error_code removeFile(const std::string& path);

/// Removes those folders, outermost first, that are empty.
void removeEmptyFolders(const std::vector<std::string>& folders);

/// The bytes of a regular file. Sets `error` if they cannot all be read.
std::string readWhole(const std::string& path, std::error_code& error);

/// The folder that a file is in.
std::string folderAbove(const std::string& path);
