#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>
#include <vector>

#include "orvdiff/platform/OrvWholeFile.h"

/// An output file that the user named. Follows links, as the shell's ">" does. Create it before
/// searching for reports, so that a file that cannot be written is reported at once.
class OutputPlace {
 public:
  /// `what` describes the contents in messages. Creates the file, empty, if it does not exist, so
  /// that a search of its folder gives the same result in the first run as in later ones. Raises
  /// `CommandError` if the file cannot be written, or if standard output or error goes to it.
  OutputPlace(const char* what, std::string name);
  OutputPlace(const OutputPlace&) = delete;
  OutputPlace& operator=(const OutputPlace&) = delete;
  /// Removes the file if the constructor created it and it was never claimed.
  ~OutputPlace();

  /// Keeps the file from being removed: the caller is about to write it.
  void claim();

  /// Claims the file and removes what an earlier run left there, so that it is not mistaken for
  /// this run's, however this run ends.
  void clear();

  /// The name as the user gave it.
  const std::string& name() const { return m_name; }

  /// False for a pipe or a device, which cannot be replaced by another file.
  bool isRegularFile() const { return S_ISREG(m_status.st_mode); }

  /// Writes `text` to a regular file, in full or not at all. Raises `CommandError` on failure.
  void write(std::string_view text) const;
  void write(const OrvWholeFile::Pieces& pieces) const;

  /// Whether this is the file that `other` describes. Never true of devices, which may be shared.
  bool isSameFile(const struct stat& other) const;
  bool isSameFile(const OutputPlace& other) const { return isSameFile(other.m_status); }

  /// Raises a `CommandError` that names two of the `places` if they are the same file.
  static void requireDistinct(const std::vector<const OutputPlace*>& places);

  /// Raises a `CommandError` that says why the file cannot be written.
  [[noreturn]] void refuse(const std::string& reason) const;

 private:
  void open();

  const char* const m_what;
  const std::string m_name;
  std::string m_target;  ///< `m_name` with links resolved; empty unless a regular file
  struct stat m_status = {};
  /// Kept open until the file is claimed: if another process removes the file, its inode number
  /// cannot be reused, so `isSameFile` stays reliable. -1: not open.
  int m_descriptor = -1;
  bool m_isCreatedHere = false;
};
