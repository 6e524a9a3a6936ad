#pragma once

// What a host might have long had, under the names for which orvdiff brings stand-ins. Nothing here
// knows of orvdiff.

#include <exception>
#include <map>
#include <mutex>
#include <string>
#include <strstream>
#include <utility>

/// Errors with a ticket number; no `std::exception`.
class VELThrowable {
 public:
  VELThrowable(std::string text, std::string unit, int line)
      : m_story(std::move(text) + " at " + std::move(unit) + ':' + std::to_string(line)) {}
  virtual ~VELThrowable() = default;

  void addBackTraceEntry(const std::string& unit, int line, const std::string& tag) {
    m_story += " < " + tag + ' ' + unit + ':' + std::to_string(line);
  }
  const std::string& story() const { return m_story; }
  virtual int ticket() const { return 0; }

 private:
  std::string m_story;
};

class VELAssertError : public VELThrowable {
 public:
  using VELThrowable::VELThrowable;
  int ticket() const override { return 42; }
};

class VELOutOfMemoryError : public VELThrowable {
 public:
  VELOutOfMemoryError(std::string unit, int line)
      : VELThrowable("no memory", std::move(unit), line) {}
};

class VELStdExceptionError : public VELThrowable {
 public:
  VELStdExceptionError(const std::exception& wrapped, std::string unit, int line)
      : VELThrowable(wrapped.what(), std::move(unit), line) {}
};

class VELThreadCriticalSection {
 public:
  void enter() { m_mutex.lock(); }
  void leave() { m_mutex.unlock(); }

 private:
  std::recursive_timed_mutex m_mutex;  // the thread that holds it may enter again
};

class VELThreadGuard {
 public:
  explicit VELThreadGuard(VELThreadCriticalSection& section) : m_section(section) {
    m_section.enter();
  }
  ~VELThreadGuard() { m_section.leave(); }
  VELThreadGuard(const VELThreadGuard&) = delete;
  VELThreadGuard& operator=(const VELThreadGuard&) = delete;

 private:
  VELThreadCriticalSection& m_section;
};

/// A report run; its pages are kept in memory.
class OrvTestInfo {
 public:
  std::map<std::string, std::strstream> pages;

  bool isOutputInMemory(const char* path) const { return pages.count(path) != 0; }
  std::strstream* getOutputStream(const char* path, bool& binary) {
    binary = false;
    return &pages.at(path);
  }
};

enum OrvOutputFormat {
  Nao,
  PromptNao,
  Cgs,
  DrilledReportSpec,
  RefQueryItem,
  DrillUpDownState,
  PagedLayoutDataXml,
  RawXml,
  Mht,
  Ra,
  Html,
  Xhtml,
  Xml,
  Viz,
  Xls,
  Xlwa,
  Prp,
  HtmlPng,
  LayoutDataXmlPng,
  PagedLayoutDataXmlPng,
  RawXmlPng,
  XhtmlPng,
  CtxMetadataXml,
  AuthoredDThroughTargetsXml,
  LayoutDataXml,
  Pdf,
  Xlsx,
  SingleXls,
  Csv,
  Json,
  Csi,
  DiTree,
  Vmd,
  AcmeLog = 200,
};
