#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>

/// Identifies a folder regardless of the path that leads to it.
using FolderId = std::pair<dev_t, ino_t>;

/// What an entry of a folder is, links followed. `Other` is also what cannot be told.
enum class EntryKind { File, Folder, Other };

/// Hands every entry of `folder` (empty: the working folder) that is not hidden to `take`, in no
/// particular order and without keeping a list, so that a folder of a million entries costs no
/// memory. Returns the number of the system's error, 0 if there was none.
int readEntries(const std::string& folder,
                const std::function<void(std::string_view name, EntryKind kind)>& take);

/// The id of `folder` (empty: the working folder); {0, 0} if there is no such folder.
FolderId folderId(const std::string& folder);
