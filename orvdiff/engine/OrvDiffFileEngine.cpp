#include "orvdiff/engine/OrvDiffFileEngine.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "orvdiff/compare/EqualContents.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/InMemoryOutput.h"
#include "orvdiff/platform/OrvGlob.h"
#include "orvdiff/platform/OrvHelper.h"
#include "orvdiff/platform/OrvWholeFile.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmDir.h"
#include "orvdiff/platform/VELFmFile.h"
#include "orvdiff/registry/OrvDiffListener.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

constexpr const char* kOutputRoot = "../webcontent/bi";
constexpr const char* kMasterFolder = "Masters";
constexpr const char* kDefaultMasterTail = "*.pdf";

bool isGiven(const char* text) {
  return text != nullptr && *text != '\0';
}

/// Writes an in-memory output to its file. Failing to write bytes is not reported; failing to open
/// the file for a text raises `VELAssertError`.
void writeToDisk(std::strstream& stream, bool binary, const std::string& fileName) {
  InMemoryOutput output(stream);
  if (binary) {
    output.rewind();
    OrvWholeFile::write(fileName, output.bytes());
  } else {
    OrvDiffLib::writeEncodedStringToFile(fileName.c_str(), "utf-8", output.text());
  }
}

bool hasSameBytes(VELFmFile& master, std::string_view actual) {
  if (actual.size() != master.getLength()) {
    return false;
  }
  const std::size_t length = actual.size();
  const auto readMaster = [&master](char* block, std::size_t count) {
    return master.read(block, count);
  };
  const auto readActual = [&actual](char* block, std::size_t count) {
    const std::size_t done = actual.copy(block, count);
    actual.remove_prefix(done);
    return done;
  };
  return haveEqualContents(readMaster, readActual, length, nullptr) && !master.hasFailed();
}

/// The contents of a stream from its start to its end, unless it cannot be sought or read.
std::optional<std::string> readAll(std::istream& stream) {
  stream.clear();
  stream.seekg(0, std::ios::end);
  const std::streamoff length = stream.tellg();
  stream.seekg(0);
  std::string bytes(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  const bool isWhole = length >= 0 && stream.good();
  stream.clear();
  return isWhole ? std::optional(std::move(bytes)) : std::nullopt;
}

bool hasSameBytes(VELFmFile& master, std::iostream& stream) {
  // Seeking a strstream's end would find the end of the memory it has reserved.
  if (auto* const memory = dynamic_cast<std::strstream*>(&stream)) {
    InMemoryOutput output(*memory);
    output.rewind();
    return output.isWhole() && hasSameBytes(master, output.bytes());
  }
  const std::optional<std::string> bytes = readAll(stream);
  return bytes && hasSameBytes(master, *bytes);
}

/// Which file to report as missing if there is no output. A master that is a folder or a dangling
/// link comes first: the pair could not be compared even with the output.
const std::string& findMissing(const std::string& masterFile, const std::string& actualFile) {
  return VELFmDir::isUnreadableEntry(masterFile.c_str()) ? masterFile : actualFile;
}

OrvDiffResult* createMissing(const std::string& masterName, const std::string& actualName,
                             const std::string& missingFile) {
  return velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterName, actualName, missingFile);
}

}  // namespace

OrvDiffFileEngine::OrvDiffFileEngine(const char* subFolder) : m_subFolder(subFolder) {}

OrvDiffFileEngine::~OrvDiffFileEngine() {
  m_subFolder = nullptr;
}

void OrvDiffFileEngine::verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                                     OrvTestInfo* testInfo) {
  std::list<std::string> masters;
  globFiles(getMasterFileGlobExpression(location).c_str(), masters);
  for (const std::string& master : masters) {
    compareMaster(master, listeners, testInfo);
  }
}

std::vector<OrvFilePair> OrvDiffFileEngine::findPairs(const std::string& location) const {
  std::list<std::string> masters;
  globFiles(getMasterPattern(location).c_str(), masters);
  std::vector<OrvFilePair> pairs;
  for (const std::string& master : masters) {
    pairs.push_back({master, getActualFile(master)});
  }
  return pairs;
}

OrvDiffResult* OrvDiffFileEngine::comparePair(const OrvFilePair& pair, OrvTestInfo* testInfo) {
  const bool bOutputInMemory =
      testInfo != nullptr && testInfo->isOutputInMemory(pair.actual.c_str());
  VEL_ASSERT((bOutputInMemory && testInfo) || !bOutputInMemory);
  bool binary = false;
  std::strstream* const stream =
      bOutputInMemory ? testInfo->getOutputStream(pair.actual.c_str(), binary) : nullptr;
  const bool available = bOutputInMemory ? stream != nullptr : doesFileExist(pair.actual);
  std::unique_ptr<OrvDiffResult> result(
      available ? performDiff(pair.master, pair.actual, stream)
                : createMissing(pair.master, pair.actual, findMissing(pair.master, pair.actual)));
  if (stream != nullptr && !result->isPassed()) {
    writeToDisk(*stream, binary, pair.actual);
  }
  return result.release();
}

std::string OrvDiffFileEngine::getMasterPattern(const std::string& location) const {
  return getMasterFileGlobExpression(location);
}

void OrvDiffFileEngine::setMasterAndOutputFoldersSuffix(std::string suffix) {
  m_masterAndOutputFoldersSuffix = std::move(suffix);
}

void OrvDiffFileEngine::setFolders(std::string masterFolder, std::string outputRoot) {
  m_masterFolder = std::move(masterFolder);
  m_outputRoot = std::move(outputRoot);
}

std::string OrvDiffFileEngine::getMasterFileGlobExpression(const std::string& location) const {
  return getMasterFileDirectory(location) + '/' + getReportName(location) + kDefaultMasterTail;
}

void OrvDiffFileEngine::globFiles(const char* pattern, std::list<std::string>& files) const {
  OrvGlob::globFiles(pattern, files);
}

bool OrvDiffFileEngine::doesFileExist(const std::string& path) const {
  return VELFmDir::exists(path.c_str(), VELFmDir::eRegularFile | VELFmDir::eReadable) != 0;
}

const OrvPatternList* OrvDiffFileEngine::getCleansingPatterns() const {
  return nullptr;
}

std::string OrvDiffFileEngine::getOutputDirectory() const {
  std::string directory = (m_outputRoot.empty() ? kOutputRoot : m_outputRoot) + '/' +
                          getOutputDirectoryTypeName() + m_masterAndOutputFoldersSuffix;
  if (isGiven(m_subFolder)) {
    directory += '/';
    directory += m_subFolder;
  }
  return directory;
}

std::string OrvDiffFileEngine::getMasterFileDirectory(const std::string& location) const {
  std::string directory;
  VELFmDir::splitPath(location.c_str(), &directory, nullptr);
  VELFmDir::joinPath(directory, m_masterFolder.empty() ? kMasterFolder : m_masterFolder.c_str());
  if (isGiven(m_subFolder)) {
    VELFmDir::joinPath(directory, m_subFolder);
  }
  return directory;
}

std::string OrvDiffFileEngine::getReportName(const std::string& location) const {
  std::string fileName;
  VELFmDir::splitPath(location.c_str(), nullptr, &fileName);
  std::string base;
  std::string extension;
  OrvHelper::fileBasename(fileName, base, extension);
  return base;
}

std::string OrvDiffFileEngine::getActualFile(const std::string& masterFile) const {
  std::string path = getOutputDirectory();
  path += '/';
  return path.append(masterFile, masterFile.rfind('/') + 1, std::string::npos);
}

void OrvDiffFileEngine::compareMaster(const std::string& masterFile,
                                      const OrvDiffListenerSet& listeners, OrvTestInfo* testInfo) {
  const std::unique_ptr<const OrvDiffResult> result(
      comparePair({masterFile, getActualFile(masterFile)}, testInfo));
  notifyListeners(listeners, *result);
}

void OrvDiffFileEngine::notifyListeners(const OrvDiffListenerSet& listeners,
                                        const OrvDiffResult& result) const {
  std::for_each(listeners.begin(), listeners.end(), Notifier(result));
}

OrvDiffResult* OrvDiffFileEngine::areFilesIdentical(const std::string& masterName,
                                                    const std::string& actualName,
                                                    std::iostream* inMemoryOutput) {
  VELFmFile master;
  if (master.open(masterName.c_str(), VELFmFile::eOpenExisting, 1) == 0) {
    return createMissing(masterName, actualName, masterName);
  }
  VELFmFile actual;
  if (inMemoryOutput == nullptr &&
      actual.open(actualName.c_str(), VELFmFile::eOpenExisting, 1) == 0) {
    return createMissing(masterName, actualName, actualName);
  }
  const bool identical = inMemoryOutput != nullptr ? hasSameBytes(master, *inMemoryOutput)
                                                   : haveEqualContents(master, actual);
  if (identical) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  if (master.hasFailed() || actual.hasFailed()) {
    return createMissing(masterName, actualName, master.hasFailed() ? masterName : actualName);
  }
  return velNew<OrvDiffResultFailDiff>(VEL_HERE, masterName, actualName);
}

OrvDiffFileEngine::Notifier::Notifier(const OrvDiffResult& result) : m_result(result) {}

void OrvDiffFileEngine::Notifier::operator()(OrvDiffListener* const listener) const {
  VEL_ASSERT(listener);
  m_result.notifyListener(*listener);
}
