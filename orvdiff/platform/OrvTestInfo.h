#pragma once

#include <map>
#include <memory>
#include <string>

#include "orvdiff/orvdiff_export.h"
#include "orvdiff/platform/OrvStrStream.h"

namespace orvdiff::host {

/// Describes one report run and holds those of its outputs that were never written to disk. Stands
/// in for the host's own class (docs/host-classes.md).
///
/// The library only reads from it: `OrvDiffFileEngine` asks for every actual output by its path,
/// spelled exactly as the engine builds it, for example
/// "../webcontent/bi/v5DebugHTML/Revenue.html". A host with a store of its own derives from this
/// class and overrides both queries. For the process's one verifying thread.
///
/// A stream knows where the next byte goes, but not how much was written. So a host must leave
/// every output in this state:
///
/// - A text, even an empty one, ends with a NUL (`std::ends`) and is read up to the first one,
///   wherever the put position is: the host may have gone back to fill in a number. A text without
///   a NUL extends over whatever the stream's memory contains after it, up to the next NUL or the
///   end of that memory. All of that is compared, so such a text may differ needlessly.
/// - The put position of a binary output is at its end. A host that goes back to fill in a header
///   returns to the position it came from, not to `std::ios::end`, which is the end of the memory
///   reserved. Bytes after the put position are not part of the output. If the stream shows that
///   the host had written more, the output equals nothing; the stream cannot always show it.
/// - An array that the host filled without the stream is a finished output:
///   `std::strstream(array, size, std::ios::in)`. It is read whole, or up to its NUL if the size is
///   unknown (negative).
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
  /// An error may leave a stream frozen; it would then not free its buffer.
  struct UnfreezeAndDelete {
    void operator()(std::strstream* stream) const;
  };
  struct Output {
    std::unique_ptr<std::strstream, UnfreezeAndDelete> stream;
    bool binary;
  };
  std::map<std::string, Output> m_outputs;
};

}  // namespace orvdiff::host

using orvdiff::host::OrvTestInfo;
