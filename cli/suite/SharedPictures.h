#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/suite/FormatSelection.h"

/// Decides which pictures a run need not look for.
///
/// HTML, XHTML and raw XML share their picture masters, but few servers write all three. If a
/// format's output folder does not exist at all, its pictures are not missing as long as another
/// format compares the same masters. A server that wrote nothing is a failure all the same: a
/// picture that no format finds an output for stays missing, and so does every picture of a format
/// that the user named.
class SharedPictures {
 public:
  /// Looks for the output folders. `formats` must outlive the object; `named` are those that the
  /// user named.
  SharedPictures(const std::vector<SelectedFormat>& formats, const std::vector<std::string>& named);

  /// Whether the picture called `name` is left to another format. `format` is one of the formats.
  bool isLeftToAnother(const SelectedFormat& format, std::string_view name) const;

 private:
  struct Absent {
    const SelectedFormat* format;
    std::vector<const SelectedFormat*> others;  ///< with the same masters, and an output folder
  };
  std::vector<Absent> m_absent;
};
