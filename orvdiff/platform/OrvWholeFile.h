#pragma once

#include <string>
#include <string_view>

/// Writing files of which no half may be seen.
struct OrvWholeFile {
  /// Makes `name` a file of exactly these bytes; false when it cannot be opened for writing.
  ///
  /// The bytes go to a file beside it, which then takes its name: whoever looks meanwhile sees the
  /// file from before or the new one, several processes may write it at once, and a link under that
  /// name is replaced, not followed. What is no file (a device) is written to directly, and so is a
  /// file in a folder that takes no new ones.
  ///
  /// What cannot be written completely (a full disk) is dropped without a word, and the file from
  /// before is removed: it must not pass for this one.
  static bool write(const std::string& name, std::string_view bytes);
};
