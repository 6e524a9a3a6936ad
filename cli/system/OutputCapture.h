#pragma once

#include <iostream>
#include <sstream>
#include <string>

/// Captures what engines print, so that the program can show it with the pair that it is about, and
/// escaped for the terminal.
///
/// The library prints on `std::cout`. Scripts that engines start inherit the process's standard
/// output and error, which are redirected to an anonymous file: unlike a pipe, it never fills up
/// and needs no reader.
///
/// Only one capture may be active per process. Captured text is kept, even after an exception,
/// until it is taken.
class OutputCapture {
 public:
  OutputCapture() = default;
  ~OutputCapture();
  OutputCapture(const OutputCapture&) = delete;
  OutputCapture& operator=(const OutputCapture&) = delete;

  /// Returns and forgets the captured text: that of the library, then that of scripts.
  std::string take();

  /// Captures output during its lifetime.
  class Session {
   public:
    /// `scripts`: also capture what scripts print. That costs a few system calls, and raises
    /// `CommandError` if there are no descriptors left.
    Session(OutputCapture& capture, bool scripts);
    ~Session() { m_capture.stop(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

   private:
    OutputCapture& m_capture;
  };

  /// Suspends a session, so that the program itself can print.
  class Pause {
   public:
    explicit Pause(OutputCapture& capture) : m_capture(capture) { m_capture.stop(); }
    ~Pause() { m_capture.start(); }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    OutputCapture& m_capture;
  };

 private:
  void openDescriptors();
  void start();
  void stop();
  std::string takeFromFile() const;

  bool m_capturesScripts = false;
  std::stringbuf m_text{std::ios::out};
  std::streambuf* m_formerBuffer = nullptr;  ///< of `std::cout`; not null while capturing
  std::ios::iostate m_formerState = std::ios::goodbit;
  int m_file = -1;  ///< output of scripts; opened on first use, like the next two
  int m_output = -1;
  int m_error = -1;
};
