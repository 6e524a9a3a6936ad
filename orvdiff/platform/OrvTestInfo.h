#pragma once

#include <map>
#include <memory>
#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvStrStream.h"

/// Describes one report run and holds those of its outputs that were never written to disk.
///
/// The library only reads from it: `OrvDiffFileEngine` asks for every actual output by its path,
/// spelled exactly as the engine builds it, for example
/// "../webcontent/bi/v5DebugHTML/Revenue.html". A host with a store of its own derives from this
/// class and overrides both questions. Not for use from two threads at once.
class ORVDIFF_API OrvTestInfo {
 public:
  OrvTestInfo();
  OrvTestInfo(const OrvTestInfo&) = delete;
  OrvTestInfo& operator=(const OrvTestInfo&) = delete;
  virtual ~OrvTestInfo();

  /// Creates (or replaces) the in-memory output of this name and returns its stream for the host to
  /// write to; it stays owned by this object. A text must end with a NUL character (`std::ends`).
  /// `binary` decides how a failing output is written to disk: byte for byte, or as UTF-8 text up
  /// to its first NUL.
  std::strstream& addOutput(const std::string& fileName, bool binary);

  /// Whether the output with this path is held in memory.
  virtual bool isOutputInMemory(const char* fileName);

  /// The in-memory output with this path, or null if there is none; it stays owned by the host.
  /// May leave `binary` as it was, which callers read as false.
  virtual std::strstream* getOutputStream(const char* fileName, bool& binary);

 private:
  /// A stream that an error left frozen would not free its buffer.
  struct UnfreezeAndDelete {
    void operator()(std::strstream* stream) const;
  };
  struct Output {
    std::unique_ptr<std::strstream, UnfreezeAndDelete> stream;
    bool binary;
  };
  std::map<std::string, Output> m_outputs;
};
