#include "orvdiff/harness/MOXFileCheck.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

#include "orvdiff/platform/VELAssert.h"

namespace orvdiff::detail {

namespace {

// Large enough for stdio to bypass its own buffer and read straight into ours.
constexpr std::size_t kBlockBytes = std::size_t{64} << 10U;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Null if the file cannot be opened. Folders are refused: one opens, but reads like an empty file
/// and would equal one.
File openFile(const char* name) {
  File file(std::fopen(name, "rb"));
  struct stat status = {};
  if (file && fstat(fileno(file.get()), &status) == 0 && S_ISDIR(status.st_mode)) {
    file.reset();
  }
  return file;
}

/// Reads a file from its start, block by block.
struct Reader {
  explicit Reader(const char* name) : file(openFile(name)) {}

  bool isOpen() const { return file != nullptr; }
  bool isBroken() const { return std::ferror(file.get()) != 0; }

  /// Reads the next block; it is short only at the end of the file or after a read error.
  void next() { size = std::fread(block.get(), 1, kBlockBytes, file.get()); }

  /// Reads bytes from `offset` on, for the dump; false when the file cannot be positioned.
  bool readExcerpt(std::int64_t offset, std::array<unsigned char, 128>& excerpt,
                   std::size_t& length) const {
    if (fseeko(file.get(), offset, SEEK_SET) != 0) {
      return false;
    }
    length = std::fread(excerpt.data(), 1, excerpt.size(), file.get());
    return true;
  }

  File file;
  std::unique_ptr<unsigned char[]> block = velNewArray<unsigned char>(VEL_HERE, kBlockBytes);
  std::size_t size = 0;
};

enum class Outcome { Equal, Differ, Unreadable };

/// Reads both files to their end or to their first difference, which is at `offset`.
Outcome findMismatch(Reader& actual, Reader& expected, std::int64_t& offset) {
  for (offset = 0;; offset += static_cast<std::int64_t>(kBlockBytes)) {
    expected.next();
    actual.next();
    const std::size_t common = std::min(actual.size, expected.size);
    const unsigned char* bytes = expected.block.get();
    if (std::memcmp(bytes, actual.block.get(), common) != 0) {
      offset += std::mismatch(bytes, bytes + common, actual.block.get()).first - bytes;
      return Outcome::Differ;
    }
    if (actual.isBroken() || expected.isBroken()) {
      return Outcome::Unreadable;
    }
    if (actual.size != expected.size) {
      offset += static_cast<std::int64_t>(common);
      return Outcome::Differ;
    }
    if (common < kBlockBytes) {
      return Outcome::Equal;
    }
  }
}

MOXFileMismatch failure(const char* error) {
  MOXFileMismatch mismatch;
  mismatch.error = error;
  return mismatch;
}

MOXFileMismatch mismatchAt(std::int64_t offset, const Reader& actual, const Reader& expected) {
  MOXFileMismatch mismatch;
  mismatch.offset = offset;
  std::size_t expectedLength = 0;
  std::size_t actualLength = 0;
  if (!expected.readExcerpt(offset, mismatch.expected, expectedLength)) {
    mismatch.error = "Bad seek on expected file!\n";
  } else if (!actual.readExcerpt(offset, mismatch.actual, actualLength)) {
    mismatch.error = "Bad seek on actual file!\n";
  }
  mismatch.length = static_cast<std::uint32_t>(expectedLength);
  return mismatch;
}

}  // namespace

std::optional<MOXFileMismatch> moxCompareFiles(const char* actualFile, const char* expectedFile) {
  // If both files are at fault, the actual one is named.
  if (actualFile == nullptr || expectedFile == nullptr) {
    return failure(actualFile == nullptr ? "Invalid actual file name\n"
                                         : "Invalid expected file name\n");
  }
  Reader expected(expectedFile);
  Reader actual(actualFile);
  if (!actual.isOpen() || !expected.isOpen()) {
    return failure(!actual.isOpen() ? "Unable to open actual file\n"
                                    : "Unable to open expected file\n");
  }
  std::int64_t offset = 0;
  switch (findMismatch(actual, expected, offset)) {
    case Outcome::Equal:
      return std::nullopt;
    case Outcome::Differ:
      return mismatchAt(offset, actual, expected);
    case Outcome::Unreadable:
    default:
      return failure(actual.isBroken() ? "Unable to read actual file\n"
                                       : "Unable to read expected file\n");
  }
}

}  // namespace orvdiff::detail
