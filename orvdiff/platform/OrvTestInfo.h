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
///
/// A stream does not know how much was written to it, only where the next byte would go. So a host
/// must leave every output in this state:
///
/// - A text ends with a NUL (`std::ends`), an empty one too, and counts up to the first one,
///   wherever the put position is; the host may have gone back to fill in a number. A text without
///   a NUL goes on through whatever the stream's memory holds behind it, to the next NUL or to the
///   end of that memory. All of that is compared, so such a text may differ without need.
/// - The put position of a binary output is at its end. A host that goes back to fill in a header
///   returns to the position it came from, not to `std::ios::end`, which is the end of the memory
///   reserved. What stands behind the put position is not part of the output. Where the stream
///   shows that the host had written more, the output equals nothing; it cannot always show it.
/// - An array of the host's that nothing was written to through the stream is a finished output:
///   `std::strstream(array, size, std::ios::in)`. It counts whole, or up to its NUL where the size
///   is unknown (negative).
class ORVDIFF_API OrvTestInfo {
 public:
  OrvTestInfo();
  OrvTestInfo(const OrvTestInfo&) = delete;
  OrvTestInfo& operator=(const OrvTestInfo&) = delete;
  virtual ~OrvTestInfo();

  /// Creates (or replaces) the in-memory output of this name and returns its stream for the host to
  /// write to; it stays owned by this object. `binary` decides how a failing output is written to
  /// disk: byte for byte, or as UTF-8 text up to its first NUL.
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
