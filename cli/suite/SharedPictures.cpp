#include "cli/suite/SharedPictures.h"

#include <sys/stat.h>

#include <algorithm>

#include "cli/suite/FolderReader.h"

namespace {

constexpr std::string_view kPicture = ".png";

bool isThere(const std::string& folder) {
  return folderId(folder) != FolderId{};
}

std::string mastersOf(const SelectedFormat& format) {
  return format.engine->getMasterPattern("R");
}

bool isPictures(const std::string& pattern) {
  return pattern.size() > kPicture.size() &&
         pattern.compare(pattern.size() - kPicture.size(), kPicture.size(), kPicture) == 0;
}

}  // namespace

SharedPictures::SharedPictures(const std::vector<SelectedFormat>& formats,
                               const std::vector<std::string>& named) {
  for (const SelectedFormat& format : formats) {
    const std::string pattern = mastersOf(format);
    const bool isNamed = std::find(named.begin(), named.end(), format.format->name) != named.end();
    if (isNamed || !isPictures(pattern) || isThere(format.outputRoot)) {
      continue;
    }
    Absent absent = {&format, {}};
    for (const SelectedFormat& other : formats) {
      if (mastersOf(other) == pattern && isThere(other.outputRoot)) {
        absent.others.push_back(&other);
      }
    }
    m_absent.push_back(std::move(absent));
  }
}

bool SharedPictures::isLeftToAnother(const SelectedFormat& format, std::string_view name) const {
  const auto absent = std::find_if(m_absent.begin(), m_absent.end(),
                                   [&format](const Absent& row) { return row.format == &format; });
  return absent != m_absent.end() &&
         std::any_of(absent->others.begin(), absent->others.end(), [name](const auto* other) {
           struct stat status = {};
           const std::string output = other->outputFolder + '/' + std::string(name);
           return stat(output.c_str(), &status) == 0 && S_ISREG(status.st_mode);
         });
}
