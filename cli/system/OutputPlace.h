#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

/// A file that the user has named for the program to write: links are followed, as they are by the
/// shell's ">". Made before a run looks for its reports, so that a name that cannot be written
/// shows at once.
class OutputPlace {
 public:
  /// `what` names the contents in messages. Creates a file that is not there, empty, so that the
  /// run finds it where it would find the finished one. Raises `CommandError` when the file cannot
  /// be written, or standard output or error goes there.
  OutputPlace(const char* what, std::string name);
  OutputPlace(const OutputPlace&) = delete;
  OutputPlace& operator=(const OutputPlace&) = delete;
  /// Removes a file that was created here and never claimed.
  ~OutputPlace();

  /// Says that the file is written from here on.
  void claim();

  /// Claims the place, and removes what an earlier run has left there: it must not pass for this
  /// run's, however this one ends.
  void clear();

  /// As the user wrote it.
  const std::string& name() const { return m_name; }

  /// False for a pipe or a device, which can only be written to as it is.
  bool isRegularFile() const { return S_ISREG(m_status.st_mode); }

  /// Gives a regular file this text, whole or not at all. Raises `CommandError`.
  void write(std::string_view text) const;

  /// Whether the place is the file that `other` describes. Devices have room for everybody.
  bool isSameFile(const struct stat& other) const;
  bool isSameFile(const OutputPlace& other) const { return isSameFile(other.m_status); }

  /// Raises `CommandError` that says why the file cannot be written.
  [[noreturn]] void refuse(const std::string& reason) const;

 private:
  void open();

  const char* const m_what;
  const std::string m_name;
  std::string m_target;  ///< where the name leads; empty for what is no regular file
  struct stat m_status = {};
  /// Open until the place is claimed, so that no other file can get this one's identity when
  /// another process removes it. -1: not open.
  int m_descriptor = -1;
  bool m_isCreatedHere = false;
};
