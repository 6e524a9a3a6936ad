#pragma once

#include <iostream>
#include <sstream>
#include <string>

/// Catches standard output while it lives.
class CapturedOutput : private std::stringbuf {
 public:
  CapturedOutput() : m_before(std::cout.rdbuf(this)) {}
  ~CapturedOutput() override { std::cout.rdbuf(m_before); }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  std::string text() const { return str(); }
  int flushes() const { return m_flushes; }

 private:
  int sync() override {
    ++m_flushes;
    return 0;
  }

  std::streambuf* const m_before;
  int m_flushes = 0;
};
