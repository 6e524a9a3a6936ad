#include "orvdiff/compare/OrvDiffLib.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <string_view>

#include "orvdiff/compare/EqualContents.h"
#include "orvdiff/compare/OrvComparisonObserver.h"
#include "orvdiff/compare/VmdStatistics.h"
#include "orvdiff/compare/WorkingText.h"
#include "orvdiff/platform/I18N.h"
#include "orvdiff/platform/OrvWholeFile.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELDowncastSize.h"
#include "orvdiff/platform/VELFmFile.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// Reads `fh` to its end into `buffer` and appends a NUL. False if the stream fails or has more
/// than `capacity` - 1 bytes left.
bool readStreamIntoBuffer(FILE* fh, char* buffer, std::size_t capacity) {
  VEL_ASSERT(buffer);
  VEL_ASSERT(fh);
  std::size_t filled = 0;
  std::size_t room = capacity;
  while (std::feof(fh) == 0) {
    const std::size_t count = std::fread(buffer + filled, 1, room, fh);
    if (std::ferror(fh) != 0) {
      return false;
    }
    filled += count;
    if (count >= room) {
      return false;  // no room for the terminator: the file has grown since it was measured
    }
    room -= count;
  }
  buffer[filled] = '\0';
  return true;
}

/// The contents of a file as a text, which ends at the file's first NUL.
struct FileText {
  /// Reads a file that was just opened.
  explicit FileText(OrvFileHandle& handle) : buffer(OrvDiffLib::slurpFile(handle)) {
    const long end = std::ftell(handle);
    const bool ok = end >= 0;
    VEL_ASSERT_NAMED(ok, "Unable to read all of the contents of file ");
    length = static_cast<std::size_t>(end);
    containsNul = std::strlen(buffer.get()) < length;
  }

  std::string_view bytes() const { return {buffer.get(), length}; }

  OrvTextBuffer buffer;
  std::size_t length = 0;  ///< of the file
  bool containsNul = false;
};

void tellObserver(const FileText& master, const FileText& actual) {
  if (OrvComparisonObserver* const observer = OrvComparisonObserver::current()) {
    observer->sawFiles(master.bytes(), actual.bytes());
  }
}

/// Returns `result` unless it is a pass although a file contains a NUL, so that not all of it was
/// compared. `fileWithNul` is that file, or null.
OrvDiffResult* limitPass(OrvDiffResult* result, const std::string* fileWithNul) {
  std::unique_ptr<OrvDiffResult> owned(result);
  if (fileWithNul == nullptr || !owned->isPassed()) {
    return owned.release();
  }
  return velNew<OrvDiffResultPassUpToNul>(VEL_HERE, owned->getMasterName(), owned->getActualName(),
                                          *fileWithNul);
}

bool opens(VELFmFile& file, const char* name) {
  return file.open(name, VELFmFile::eOpenExisting, 1) != 0;
}

/// Whether equal texts need not be normalised: they stay equal, and no pattern can raise.
bool isEqualityEnough(const OrvPatternList& patterns, bool writeCleansed) {
  return !writeCleansed && orvdiff::WorkingText::cannotFail(patterns);
}

void writeCleansedFile(const std::string& baseName, const char* text) {
  OrvWholeFile::write(baseName + ".cleansed", text);
}

/// `textFileComparison` for an output on disk.
OrvDiffResult* compareWithFile(const std::string& masterName, const std::string& actualName,
                               const OrvPatternList& patterns, bool writeCleansed) {
  VELFmFile masterFile;
  VELFmFile actualFile;
  const bool bothOpen =
      opens(masterFile, masterName.c_str()) && opens(actualFile, actualName.c_str());
  if (bothOpen && isEqualityEnough(patterns, writeCleansed) &&
      haveEqualContents(masterFile, actualFile)) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  OrvFileHandle master(masterFile.releaseStream());
  OrvFileHandle actual(actualFile.releaseStream());
  OrvDiffResult* const missing = OrvDiffLib::checkOpenFiles(masterName, actualName, master, actual);
  if (missing != nullptr) {
    return missing;
  }
  FileText expected(master);
  FileText found(actual);
  tellObserver(expected, found);
  const std::string* const masterWithNul = expected.containsNul ? &masterName : nullptr;
  return limitPass(OrvDiffLib::textBufferComparison(masterName, actualName, expected.buffer,
                                                    found.buffer, patterns, writeCleansed),
                   found.containsNul ? &actualName : masterWithNul);
}

/// `textFileComparison` for an output in memory.
OrvDiffResult* compareWithText(const std::string& masterName, const std::string& actualName,
                               const OrvPatternList& patterns, bool writeCleansed,
                               const char* actualText) {
  OrvFileHandle master(masterName.c_str(), "r");
  OrvDiffResult* const missing = OrvDiffLib::checkOpenFiles(masterName, actualName, master, master);
  if (missing != nullptr) {
    return missing;
  }
  FileText expected(master);
  const std::string* const fileWithNul = expected.containsNul ? &masterName : nullptr;
  if (isEqualityEnough(patterns, writeCleansed) &&
      std::strcmp(expected.buffer.get(), actualText) == 0) {
    return limitPass(velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName), fileWithNul);
  }
  OrvTextBuffer found = OrvDiffLib::strdupnew(actualText);
  return limitPass(OrvDiffLib::textBufferComparison(masterName, actualName, expected.buffer, found,
                                                    patterns, writeCleansed),
                   fileWithNul);
}

}  // namespace

OrvDiffLib::OrvDiffLib() = default;
OrvDiffLib::~OrvDiffLib() = default;

int OrvDiffLib::getFileLength(FILE* fp) {
  VEL_ASSERT(fp);
  const long position = std::ftell(fp);
  if (std::fseek(fp, 0, SEEK_END) != 0) {
    return 0;  // the position has not changed
  }
  const long length = std::ftell(fp);
  const bool isBack = length >= 0 && std::fseek(fp, position, SEEK_SET) == 0;
  VEL_ASSERT_NAMED(isBack, "The file can be sought");  // else the rest would pass for the whole
  VEL_ASSERT_NAMED(length <= INT_MAX, "Files of 2 GiB or more cannot be compared");
  return static_cast<int>(length);
}

OrvTextBuffer OrvDiffLib::slurpFile(OrvFileHandle& handle) {
  const std::size_t size = static_cast<std::size_t>(getFileLength(handle)) + 1;
  OrvTextBuffer buffer = velNewArray<char>(VEL_HERE, size);
  VEL_ASSERT(NULL != buffer);  // NOLINT(modernize-use-nullptr): the text is the interface
  const bool ok = readStreamIntoBuffer(handle, buffer.get(), size);
  VEL_ASSERT_NAMED(ok, "Unable to read all of the contents of file ");
  return buffer;
}

bool OrvDiffLib::readFileIntoBuffer(const char* fileName, OrvByteBuffer& buffer,
                                    unsigned int& length) {
  VELFmFile file;
  if (!opens(file, fileName)) {
    return false;
  }
  const std::uint32_t size = VELDowncastSize::uint32(file.getLength(), "OrvDiffLib", __LINE__);
  const std::size_t room = std::size_t{size} + 1;  // enough to notice that the file has grown
  OrvByteBuffer bytes(velNewArray<char>(VEL_HERE, room).release());
  const std::size_t count = file.read(bytes.get(), room);
  if (file.hasFailed() || count > size) {
    return false;
  }
  buffer = std::move(bytes);
  length = static_cast<unsigned int>(count);  // less than `size` if the file has shrunk
  return true;
}

OrvDiffResult* OrvDiffLib::checkOpenFiles(const std::string& masterName,
                                          const std::string& actualName, OrvFileHandle& master,
                                          OrvFileHandle& actual) {
  if (master == nullptr) {
    return velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterName, actualName, masterName);
  }
  if (actual == nullptr) {
    return velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterName, actualName, actualName);
  }
  return nullptr;
}

OrvTextBuffer OrvDiffLib::strdupnew(const char* in) {
  VEL_ASSERT(in);
  const std::size_t size = std::strlen(in) + 1;
  OrvTextBuffer copy = velNewArray<char>(VEL_HERE, size);
  std::memcpy(copy.get(), in, size);
  return copy;
}

void OrvDiffLib::cleanse(OrvTextBuffer& masterBuffer, OrvTextBuffer& currentBuffer,
                         const OrvPatternList& patterns) {
  VEL_ASSERT(masterBuffer.get());
  VEL_ASSERT(currentBuffer.get());
  orvdiff::WorkingText master(masterBuffer);
  orvdiff::WorkingText current(currentBuffer);
  OrvComparisonObserver* const observer = OrvComparisonObserver::current();
  const auto tell = [observer](bool masterChanged, bool currentChanged,
                               const OrvDiffNormalizationPattern* pattern) {
    if (observer != nullptr && (masterChanged || currentChanged)) {
      observer->sawChangeBy(pattern);
    }
  };
  if (observer != nullptr) {
    master.setLongestUsualMatch(observer->longestUsualMatch(master.length()));
    current.setLongestUsualMatch(observer->longestUsualMatch(current.length()));
  }
  const bool masterHadReturns = master.removeCarriageReturns();
  tell(masterHadReturns, current.removeCarriageReturns(), nullptr);
  for (const OrvDiffNormalizationPattern* const pattern : patterns) {
    VEL_ASSERT(pattern);
    const bool masterChanged = master.apply(*pattern);
    tell(masterChanged, current.apply(*pattern), pattern);
  }
  if (observer != nullptr) {
    observer->sawMatches(master.matchSizes(), current.matchSizes());
  }
}

std::size_t OrvDiffLib::compareStrings(const char* masterBuffer, const char* currentBuffer) {
  VEL_ASSERT(masterBuffer);
  VEL_ASSERT(currentBuffer);
  constexpr std::size_t kBlockSize = 4096;
  const std::size_t masterLength = std::strlen(masterBuffer);
  const std::size_t currentLength = std::strlen(currentBuffer);
  const std::size_t common = std::min(masterLength, currentLength);
  std::size_t position = 0;
  while (position + kBlockSize <= common &&
         std::memcmp(masterBuffer + position, currentBuffer + position, kBlockSize) == 0) {
    position += kBlockSize;
  }
  while (position < common && masterBuffer[position] == currentBuffer[position]) {
    ++position;
  }
  return position == masterLength && position == currentLength ? std::string::npos : position;
}

OrvDiffResult* OrvDiffLib::createComparisonResult(const std::string& masterName,
                                                  const std::string& actualName,
                                                  OrvTextBuffer& masterBuffer,
                                                  OrvTextBuffer& actualBuffer, std::size_t position,
                                                  bool normalized) {
  if (position == std::string::npos) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  if (!normalized) {
    return velNew<OrvDiffResultFailDiff>(VEL_HERE, masterName, actualName);
  }
  OrvDiffResult* const result = velNew<OrvDiffResultFailDiffNormalized>(
      VEL_HERE, masterName, actualName, masterBuffer.get(), actualBuffer.get(), position);
  masterBuffer.release();
  actualBuffer.release();
  return result;
}

OrvDiffResult* OrvDiffLib::textBufferComparison(
    const std::string& masterName, const std::string& actualName, OrvTextBuffer& masterBuffer,
    OrvTextBuffer& currentBuffer, const OrvPatternList& patterns, bool writeCleansed) {
  cleanse(masterBuffer, currentBuffer, patterns);
  if (OrvComparisonObserver* const observer = OrvComparisonObserver::current()) {
    observer->sawNormalized(masterBuffer.get(), currentBuffer.get());
  }
  const std::size_t position = compareStrings(masterBuffer.get(), currentBuffer.get());
  if (writeCleansed) {
    writeCleansedFile(masterName, masterBuffer.get());
    writeCleansedFile(actualName, currentBuffer.get());
  }
  return createComparisonResult(masterName, actualName, masterBuffer, currentBuffer, position,
                                !patterns.empty());
}

OrvDiffResult* OrvDiffLib::textFileComparison(const std::string& masterName,
                                              const std::string& actualName,
                                              const OrvPatternList& patterns, bool writeCleansed,
                                              const char* actualText) {
  return actualText != nullptr
             ? compareWithText(masterName, actualName, patterns, writeCleansed, actualText)
             : compareWithFile(masterName, actualName, patterns, writeCleansed);
}

void OrvDiffLib::writeEncodedStringToFile(const char* fname, const char* encoding,
                                          const char* str) {
  VEL_ASSERT(str);
  VEL_ASSERT(encoding);
  VEL_ASSERT(fname);
  const I18NString text(str);
  if (text.empty()) {
    return;
  }
  const bool bFileOpened = OrvWholeFile::write(fname, text.toBytes(encoding));
  VEL_ASSERT(bFileOpened);
}

OrvDiffResult* OrvDiffLib::vmdCompare(const std::string& masterName, const std::string& actualName,
                                      const char* masterText, const char* actualText) {
  OrvVmdStatistics master;
  OrvVmdStatistics actual;
  if (master.parse(masterText) && actual.parse(actualText) && areWithinAllowances(master, actual)) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  return velNew<OrvDiffResultFailDiff>(VEL_HERE, masterName, actualName);
}

OrvDiffResult* OrvDiffLib::vmdFileComparison(const std::string& masterName,
                                             const std::string& actualName,
                                             const char* actualText) {
  OrvFileHandle master(masterName.c_str(), "rt");
  OrvFileHandle actual(actualName.c_str(), "rt");
  OrvFileHandle& needed = actualText != nullptr ? master : actual;
  OrvDiffResult* const missing = checkOpenFiles(masterName, actualName, master, needed);
  if (missing != nullptr) {
    return missing;
  }
  const FileText expected(master);
  const std::string* fileWithNul = expected.containsNul ? &masterName : nullptr;
  if (actualText != nullptr) {
    return limitPass(vmdCompare(masterName, actualName, expected.buffer.get(), actualText),
                     fileWithNul);
  }
  const FileText found(actual);
  tellObserver(expected, found);
  fileWithNul = found.containsNul ? &actualName : fileWithNul;
  return limitPass(vmdCompare(masterName, actualName, expected.buffer.get(), found.buffer.get()),
                   found.bytes() == expected.bytes() ? nullptr : fileWithNul);
}
