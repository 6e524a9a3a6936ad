#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/platform/VELErrors.h"
#include "orvdiff/registry/OrvDiffListener.h"
#include "orvdiff/registry/OrvDiffResult.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// A temporary place with the layout of a host: a working folder, in which the process is while
/// this object lives, and room for "../webcontent/bi/" beside it.
class TestFolder {
 public:
  TestFolder() : m_before(std::filesystem::current_path()) {
    std::string pattern = std::filesystem::temp_directory_path() / "orvdiff-XXXXXX";
    m_root = mkdtemp(pattern.data());
    std::filesystem::create_directories(m_root / "work");
    std::filesystem::current_path(m_root / "work");
  }
  ~TestFolder() {
    std::filesystem::current_path(m_before);
    std::filesystem::remove_all(m_root);
  }
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  /// Writes a file and creates the folders it lies in.
  static void write(const std::filesystem::path& path, const std::string& contents) {
    if (path.has_parent_path()) {
      std::filesystem::create_directories(path.parent_path());
    }
    std::ofstream(path, std::ios::binary) << contents;
  }

  /// The contents of a file, or "(missing)".
  static std::string read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return file ? std::string(std::istreambuf_iterator<char>(file), {}) : "(missing)";
  }

 private:
  std::filesystem::path m_before;
  std::filesystem::path m_root;
};

/// Holds a resource of the process (`RLIMIT_NOFILE`: descriptors, `RLIMIT_FSIZE`: bytes in a file)
/// to a limit while this object lives; a write beyond the limit then fails as on a full disk.
class LimitedTo {
 public:
  LimitedTo(int resource, rlim_t limit) : m_resource(resource) {
    std::signal(SIGXFSZ, SIG_IGN);
    // The sanitizer needs descriptors to look at a class for the first time.
    static_cast<void>(VELStdExceptionError(std::system_error(0, std::generic_category()), "", 0));
    getrlimit(resource, &m_before);
    const rlimit now = {limit, m_before.rlim_max};
    setrlimit(resource, &now);
  }
  ~LimitedTo() { setrlimit(m_resource, &m_before); }
  LimitedTo(const LimitedTo&) = delete;
  LimitedTo& operator=(const LimitedTo&) = delete;

 private:
  int m_resource;
  rlimit m_before = {};
};

/// "unit: text" of the assertion error that `action` raises, or "nothing".
template <typename Action>
std::string raisedBy(Action action) {
  try {
    action();
  } catch (const VELAssertError& error) {
    return error.getSourceUnit() + ": " + error.getText();
  }
  return "nothing";
}

/// The whole story of the library's error that `action` raises, or "nothing".
template <typename Action>
std::string storyOf(Action action) {
  try {
    action();
  } catch (const VELThrowable& error) {
    return error.what();
  }
  return "nothing";
}

/// What a normalised difference takes over; null of null.
inline char* copyOf(const char* text) {
  const std::size_t size = text != nullptr ? std::strlen(text) + 1 : 0;
  return size != 0 ? static_cast<char*>(std::memcpy(new char[size], text, size)) : nullptr;
}

/// Writes down every result: its class, master and actual name, and what the class adds.
class Recorder : public OrvDiffListener {
 public:
  using Missing = OrvDiffResultFailFileMissing;
  using Normalized = OrvDiffResultFailDiffNormalized;
  void comparisonNotification(const Missing& r) override {
    record("missing", r, " " + r.getMissingFile());
  }
  void comparisonNotification(const Normalized& r) override {
    const std::string texts = std::string(r.getNormalizedMaster()) + "|" + r.getNormalizedActual();
    record("normalized", r, " at " + std::to_string(r.getDiffPosition()) + " " + texts);
  }
  void comparisonNotification(const OrvDiffResultFailDiff& r) override { record("diff", r, ""); }
  void comparisonNotification(const OrvDiffResultFail& r) override { record("fail", r, ""); }
  void comparisonNotification(const OrvDiffResultPass& r) override { record("pass", r, ""); }
  void comparisonNotification(const OrvDiffResult& r) override { record("result", r, ""); }

  std::vector<std::string> heard;

 private:
  void record(const char* kind, const OrvDiffResult& result, const std::string& more) {
    heard.push_back(kind + (" " + result.getMasterName()) + " " + result.getActualName() + more);
  }
};

/// What a recorder hears of `result`, which is deleted.
inline std::string described(OrvDiffResult* result) {
  Recorder recorder;
  std::unique_ptr<OrvDiffResult>(result)->notifyListener(recorder);
  return recorder.heard.at(0);
}

/// What comes of comparing files "m" and "a" with these contents.
inline std::string compared(OrvDiffFileEngine& engine, const std::string& master,
                            const std::string& actual) {
  TestFolder::write("m", master);
  TestFolder::write("a", actual);
  return described(engine.performDiff("m", "a", nullptr));
}
