#include "cli/report/PdfPages.h"

#include <dirent.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <system_error>

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostPages = 20;
constexpr int kNotFound = 127;  // of timeout(1): the program that it should start
constexpr int kTimedOut = 124;

/// A new folder that goes away with everything in it.
struct TemporaryFolder {
  TemporaryFolder() {
    std::error_code unknown;
    std::string name = (fs::temp_directory_path(unknown) / "orvdiff-pages-XXXXXX").string();
    if (mkdtemp(name.data()) != nullptr) {
      path = name;
    }
  }
  ~TemporaryFolder() {
    try {
      for (const std::string& name : files()) {
        unlink(name.c_str());
      }
      rmdir(path.c_str());
    } catch (const std::bad_alloc&) {  // it stays, where temporary files are
    }
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  /// The paths of all files, sorted.
  std::vector<std::string> files() const {
    // Not fs::directory_iterator, which ends the program when it lacks memory.
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(path.c_str()), closedir);
    std::vector<std::string> names;
    while (const dirent* const entry = entries ? readdir(entries.get()) : nullptr) {
      if (entry->d_name[0] != '.') {
        names.push_back(path + '/' + entry->d_name);
      }
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string path;  ///< empty when it could not be made
};

/// Runs a program of the search path without input and output. Returns its exit status, or -1.
int runQuietly(std::vector<std::string> words) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
  }
  pid_t process = 0;
  const int error =
      posix_spawnp(&process, arguments.front(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    return kNotFound;
  }
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) {
      return -1;
    }
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string problemOf(int status) {
  switch (status) {
    case 0:
      return "it has none.";
    case kNotFound:
      return "pdftoppm (Debian package poppler-utils) is not installed where the report was "
             "written.";
    case kTimedOut:
      return "rendering them took too long.";
    default:
      return "pdftoppm could not render the document.";
  }
}

}  // namespace

PdfPages renderPdf(const std::string& document) {
  const TemporaryFolder folder;
  if (folder.path.empty()) {
    return {{}, false, "no temporary folder could be made."};
  }
  const std::string input = folder.path + "/document.pdf";
  std::ofstream(input, std::ios::binary) << document;
  const int status = runQuietly({"timeout", "-k", "1", "20", "pdftoppm", "-png", "-r", "80", "-l",
                                 std::to_string(kMostPages), input, folder.path + "/page"});
  PdfPages pages;
  for (const std::string& name : folder.files()) {  // numbers are padded: they sort as pages do
    if (name != input) {
      std::ifstream file(name, std::ios::binary);
      pages.files.emplace_back(std::istreambuf_iterator<char>(file),
                               std::istreambuf_iterator<char>());
    }
  }
  pages.isCut = pages.files.size() == kMostPages;
  if (status != 0 || pages.files.empty()) {
    pages.problem = problemOf(status);
  }
  return pages;
}
