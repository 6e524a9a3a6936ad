#include "cli/config/FindConfig.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "cli/system/CommandError.h"

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t kMostBytes = std::uintmax_t{4} << 20;

/// The files on the way up from `location`, nearest first. A location that is not there has the
/// same way up as if it were.
std::vector<std::string> filesAbove(const std::string& location) {
  std::error_code error;
  fs::path folder = fs::weakly_canonical(location.empty() ? "." : location, error);
  if (error) {
    folder = fs::absolute(location, error).lexically_normal();
  }
  if (!fs::is_directory(folder, error)) {
    folder = folder.parent_path();
  }
  std::vector<std::string> files;
  for (;; folder = folder.parent_path()) {
    const fs::path file = folder / kConfigName;
    if (fs::symlink_status(file, error).type() != fs::file_type::not_found) {
      files.push_back(file);
    }
    if (folder == folder.parent_path()) {
      return files;
    }
  }
}

std::string describe(const std::string& location, const std::vector<std::string>& files) {
  return location + (files.empty() ? " has none" : " has " + files.front());
}

/// The file that all locations agree on; empty if none has one.
std::string findFile(const std::vector<std::string>& locations,
                     std::vector<std::string>& overruled) {
  std::vector<std::string> found;
  for (std::size_t i = 0; i < locations.size(); ++i) {
    std::vector<std::string> files = filesAbove(locations[i]);
    const bool agrees = i == 0 || (files.empty() == found.empty() &&
                                   (files.empty() || files.front() == found.front()));
    if (!agrees) {
      throw CommandError(
          "the locations belong to different suites: " + describe(locations[0], found) + ", " +
          describe(locations[i], files) + " as its " + kConfigName +
          "; verify them one by one, or name one file " + "with --config");
    }
    found = std::move(files);
  }
  if (found.empty()) {
    return {};
  }
  overruled.assign(found.begin() + 1, found.end());
  return found.front();
}

[[noreturn]] void raise(const std::string& file, const std::string& reason) {
  throw CommandError(file + " cannot be read: " + reason);
}

std::string readFile(const std::string& file, struct stat& status) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream || stat(file.c_str(), &status) != 0) {
    raise(file, std::generic_category().message(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    raise(file, "it is not a file");
  }
  if (static_cast<std::uintmax_t>(status.st_size) > kMostBytes) {
    raise(file, "it is larger than " + std::to_string(kMostBytes) + " bytes");
  }
  std::string content{std::istreambuf_iterator<char>(stream), {}};
  if (stream.bad()) {
    raise(file, std::generic_category().message(errno));
  }
  return content;
}

/// Why somebody else may have written the file; empty if only the user and root can have. Running
/// the programs that it names would then let that person act as the user.
std::string whoElseWrites(const struct stat& status) {
  if (status.st_uid != geteuid() && status.st_uid != 0) {
    return "it belongs to another user";
  }
  return (status.st_mode & S_IWOTH) != 0 ? "everybody can write it" : "";
}

/// The file's name as messages are to call it: short if it is near.
std::string shortName(const std::string& file) {
  std::error_code error;
  const fs::path near = fs::path(file).lexically_proximate(fs::current_path(error));
  return near.native().size() < file.size() ? near.native() : file;
}

}  // namespace

std::optional<SuiteConfig> loadConfig(ConfigChoice& choice,
                                      const std::vector<std::string>& locations) {
  const std::string file = choice.isNone          ? std::string()
                           : !choice.file.empty() ? choice.file
                                                  : findFile(locations, choice.overruled);
  if (file.empty()) {
    return std::nullopt;
  }
  struct stat status = {};
  std::string content = readFile(file, status);
  std::error_code error;
  const fs::path path = fs::canonical(file, error);
  SuiteConfig config =
      readSuiteConfig(error ? file : path.native(), shortName(file), std::move(content));
  const std::string other = whoElseWrites(status);
  if (namesPrograms(config) && !other.empty() && !choice.isTrusted) {
    throw CommandError(shortName(file) + " names programs to run, but " + other +
                       "; read it, then give --trust-config");
  }
  return config;
}

bool isChanged(const SuiteConfig& config) {
  std::ifstream stream(config.path, std::ios::binary);
  return !stream || std::string{std::istreambuf_iterator<char>(stream), {}} != config.content;
}

void requireSound(const SuiteConfig& config) {
  constexpr std::size_t kMost = 3;
  if (config.problems.empty()) {
    return;
  }
  std::string text;
  for (std::size_t i = 0; i < std::min(kMost, config.problems.size()); ++i) {
    text += (i == 0 ? "" : "; ") + toText(config.problems[i]);
  }
  if (config.problems.size() > kMost) {
    text += "; and " + std::to_string(config.problems.size() - kMost) +
            " more (\"orvdiff config --check\" lists all)";
  }
  throw CommandError(text);
}
