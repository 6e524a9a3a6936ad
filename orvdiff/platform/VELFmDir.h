#pragma once

#include <string>

namespace orvdiff::host {

/// Path services. Paths are narrow strings; "/" separates.
struct VELFmDir {
  /// Mode bits of `exists`: kinds and permissions as the C library numbers them.
  enum Mode : unsigned short {
    eRegularFile = 0x8000,
    eFolder = 0x4000,
    eReadable = 0x0100,
  };

  /// Splits `path` at its last "/" and stores the parts whose out-parameter is not null. Without a
  /// "/" the folder is empty; the folder of a file in the root is "/".
  static void splitPath(const char* path, std::string* folder, std::string* file);

  /// Appends `component` to `path` as one further level; an empty path gets no separator.
  static void joinPath(std::string& path, const char* component);

  /// Non-zero when `path` exists, is of the kind that `mode` names and grants what it asks. Raises
  /// `VELStdExceptionError` when the machine is out of memory and cannot tell.
  static int exists(const char* path, unsigned short mode);

  /// Whether `path` exists but cannot be read as a file: a folder, a dangling link, no permission.
  static bool isUnreadableEntry(const char* path);

  /// Removes a partly written file, so that nobody takes it for a whole one. Leaves anything but a
  /// regular file (a device, a link) alone.
  static void discardFile(const char* path);

  /// Creates the folder and its missing parents; false when it does not exist afterwards.
  static bool createRecursiveDir(const char* path);

  /// Makes `path` the process's working folder, so that every service resolves relative paths
  /// against it; false on failure.
  static bool setEffectiveWorkingDir(const char* path);
};

}  // namespace orvdiff::host

using orvdiff::host::VELFmDir;
