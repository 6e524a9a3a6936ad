#pragma once

#include <iostream>
#include <sstream>
#include <string>

/// Catches what engines print, so that the program can show it beside the pair that it is about,
/// and without what it would do to a terminal.
///
/// The library prints on `std::cout`. Programs that engines start inherit the process's standard
/// output and error; they are caught in a file without a name, which takes any amount and makes
/// nobody wait.
///
/// One may catch at a time in a process. What was caught outlives an exception, until it is taken.
class OutputCapture {
 public:
  OutputCapture() = default;
  ~OutputCapture();
  OutputCapture(const OutputCapture&) = delete;
  OutputCapture& operator=(const OutputCapture&) = delete;

  /// What was caught since it was last taken: that of the library, then that of programs.
  std::string take();

  /// Catches from construction to destruction.
  class Session {
   public:
    /// With `programs`, also what programs print; costs a few system calls, and raises
    /// `CommandError` when there are no descriptors left.
    Session(OutputCapture& capture, bool programs);
    ~Session() { m_capture.stop(); }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

   private:
    OutputCapture& m_capture;
  };

  /// Lets the program itself print in the middle of a session.
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

  bool m_catchesPrograms = false;
  std::stringbuf m_text{std::ios::out};
  std::streambuf* m_formerBuffer = nullptr;  ///< of `std::cout`; not null while this catches
  std::ios::iostate m_formerState = std::ios::goodbit;
  int m_file = -1;  ///< what programs print; opened when first needed, like the next two
  int m_output = -1;
  int m_error = -1;
};
