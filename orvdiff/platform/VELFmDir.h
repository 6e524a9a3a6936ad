#pragma once

#include <string>

/// Path services. Paths are narrow strings; "/" separates.
struct VELFmDir {
  /// Mode bits of `exists`: kinds and permissions as the C library numbers them.
  enum Mode : unsigned short {
    eRegularFile = 0x8000,
    eFolder = 0x4000,
    eReadable = 0x0100,
  };

  /// Cuts `path` at its last "/" and stores the parts whose out-parameter is not null. Without a
  /// "/" the folder is empty; the folder of a file in the root is "/".
  static void splitPath(const char* path, std::string* folder, std::string* file);

  /// Appends `component` to `path` as one further level; an empty path gets no separator.
  static void joinPath(std::string& path, const char* component);

  /// Non-zero when `path` exists, is of the kind that `mode` names and grants what it asks. Raises
  /// `VELStdExceptionError` when the machine has no memory left to tell.
  static int exists(const char* path, unsigned short mode);

  /// Whether something is called `path` that cannot be read as a file: a folder, a link to nothing,
  /// no permission.
  static bool isUnreadableEntry(const char* path);

  /// Removes a file of which only half could be written, so that it does not pass for a whole one.
  /// Leaves everything but regular files (devices, links) alone.
  static void discardFile(const char* path);

  /// Creates the folder and its missing parents; false when it does not exist afterwards.
  static bool createRecursiveDir(const char* path);

  /// Makes `path` the process's working folder, so that every service resolves relative paths
  /// against it; false when that is not possible.
  static bool setEffectiveWorkingDir(const char* path);
};
