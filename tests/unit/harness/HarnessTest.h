#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "orvdiff/harness/MOXTestHarness.h"

inline std::string readFile(const std::filesystem::path& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::string& name, const std::string& content) {
  std::ofstream(name, std::ios::binary) << content;
}

/// Runs in an empty working folder of its own, with a fresh harness and the console captured.
class HarnessTest : public testing::Test {
 public:
  HarnessTest() {
    std::filesystem::create_directories(m_folder);
    std::filesystem::current_path(m_folder);
    m_realConsole = std::cout.rdbuf(m_console.rdbuf());
  }

  ~HarnessTest() override {
    harness().getLogStream().exceptions(std::ios::goodbit);
    harness().endScript(false);
    std::cout.rdbuf(m_realConsole);
    std::filesystem::current_path(m_home);
    std::filesystem::remove_all(m_folder);
  }

 protected:
  static MOXTestHarness& harness() { return *MOXTestHarness::getInstance(); }
  std::string console() const { return m_console.str(); }

  /// Opens a script with a test case, then a log file, so that the log starts empty.
  static void startTest(int level) {
    harness().setLogLevel(level);
    harness().startScript(nullptr);
    harness().startTest("test", nullptr);
    harness().openLogFile("log", false);
  }

  /// What the log holds so far.
  static std::string log() {
    harness().getLogStream().flush();
    return readFile("log");
  }

 private:
  std::filesystem::path m_home = std::filesystem::current_path();
  std::filesystem::path m_folder =
      std::filesystem::path(testing::TempDir()) / ("harness." + std::to_string(getpid()));
  std::ostringstream m_console;
  std::streambuf* m_realConsole;
};
