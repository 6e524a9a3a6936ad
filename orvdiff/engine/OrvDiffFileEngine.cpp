#include "orvdiff/engine/OrvDiffFileEngine.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <utility>

#include "orvdiff/compare/EqualContents.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/InMemoryText.h"
#include "orvdiff/platform/OrvGlob.h"
#include "orvdiff/platform/OrvHelper.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmDir.h"
#include "orvdiff/platform/VELFmFile.h"
#include "orvdiff/registry/OrvDiffListener.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

constexpr const char* kOutputRoot = "../webcontent/bi/";
constexpr const char* kMasterFolder = "Masters";
constexpr const char* kDefaultMasterTail = "*.pdf";

bool isGiven(const char* text) {
  return text != nullptr && *text != '\0';
}

/// Puts the read position at the start, wherever and in whatever state the stream was left.
void goToStart(std::iostream& stream) {
  stream.clear();
  stream.seekg(0);
  stream.clear();  // a stream that nothing was written to may refuse
}

/// Writes the bytes of an in-memory output. What cannot be written is dropped without a word, but
/// no half of it is left behind.
void writeBytes(std::strstream& stream, const std::string& fileName) {
  goToStart(stream);
  std::ofstream file(fileName, std::ios::out | std::ios::binary | std::ios::trunc);
  const bool opened = file.is_open();
  const char* const bytes = stream.str();
  file.write(bytes, bytes != nullptr ? stream.pcount() : 0);
  file.flush();
  file.close();
  if (opened && !file) {
    VELFmDir::discardFile(fileName.c_str());
  }
}

struct Unfreeze {
  void operator()(std::strstream* stream) const { stream->freeze(false); }
};

void writeOutput(std::strstream& stream, bool binary, const std::string& fileName) {
  const std::unique_ptr<std::strstream, Unfreeze> unfreezing(&stream);  // also after an error
  if (binary) {
    writeBytes(stream, fileName);
  } else {
    const InMemoryText output(stream);
    OrvDiffLib::writeEncodedStringToFile(fileName.c_str(), "utf-8", output.text());
  }
}

/// The number of bytes that a stream holds; its read position is then at the start.
std::size_t measure(std::iostream& stream) {
  goToStart(stream);
  if (auto* const memory = dynamic_cast<std::strstream*>(&stream)) {
    return heldLength(*memory);  // its end would be that of the memory it has reserved
  }
  stream.seekg(0, std::ios::end);
  const std::streamoff length = stream.tellg();
  goToStart(stream);
  return length > 0 ? static_cast<std::size_t>(length) : 0;
}

bool holdsSameBytes(VELFmFile& master, std::iostream& output) {
  const std::size_t length = measure(output);
  if (length != master.getLength()) {
    return false;
  }
  std::size_t rest = length;
  const auto readOutput = [&output, &rest](char* block, std::size_t count) {
    output.read(block, static_cast<std::streamsize>(std::min(count, rest)));
    const auto done = static_cast<std::size_t>(output.gcount());
    rest -= done;
    return done;
  };
  const auto readMaster = [&master](char* block, std::size_t count) {
    return master.read(block, count);
  };
  const bool equal = haveEqualContents(readMaster, readOutput, length) && !master.hasFailed();
  output.clear();
  return equal;
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

std::string OrvDiffFileEngine::getMasterPattern(const std::string& location) const {
  return getMasterFileGlobExpression(location);
}

void OrvDiffFileEngine::setMasterAndOutputFoldersSuffix(std::string suffix) {
  m_masterAndOutputFoldersSuffix = std::move(suffix);
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

std::string OrvDiffFileEngine::getOutputDirectory() const {
  std::string directory =
      kOutputRoot + getOutputDirectoryTypeName() + m_masterAndOutputFoldersSuffix;
  if (isGiven(m_subFolder)) {
    directory += '/';
    directory += m_subFolder;
  }
  return directory;
}

std::string OrvDiffFileEngine::getMasterFileDirectory(const std::string& location) const {
  std::string directory;
  VELFmDir::splitPath(location.c_str(), &directory, nullptr);
  VELFmDir::joinPath(directory, kMasterFolder);
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
  const std::string actualFile = getActualFile(masterFile);
  const bool bOutputInMemory =
      testInfo != nullptr && testInfo->isOutputInMemory(actualFile.c_str());
  VEL_ASSERT((bOutputInMemory && testInfo) || !bOutputInMemory);
  bool binary = false;
  std::strstream* const stream =
      bOutputInMemory ? testInfo->getOutputStream(actualFile.c_str(), binary) : nullptr;
  const bool available = bOutputInMemory ? stream != nullptr : doesFileExist(actualFile);
  const std::unique_ptr<const OrvDiffResult> result(
      available
          ? performDiff(masterFile, actualFile, stream)
          : velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterFile, actualFile, actualFile));
  if (stream != nullptr && !result->isPassed()) {
    writeOutput(*stream, binary, actualFile);
  }
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
    return velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterName, actualName, masterName);
  }
  VELFmFile actual;
  if (inMemoryOutput == nullptr &&
      actual.open(actualName.c_str(), VELFmFile::eOpenExisting, 1) == 0) {
    return velNew<OrvDiffResultFailFileMissing>(VEL_HERE, masterName, actualName, actualName);
  }
  const bool identical = inMemoryOutput != nullptr ? holdsSameBytes(master, *inMemoryOutput)
                                                   : haveEqualContents(master, actual);
  if (identical) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  return velNew<OrvDiffResultFailDiff>(VEL_HERE, masterName, actualName);
}

OrvDiffFileEngine::Notifier::Notifier(const OrvDiffResult& result) : m_result(result) {}

void OrvDiffFileEngine::Notifier::operator()(OrvDiffListener* const listener) const {
  VEL_ASSERT(listener);
  m_result.notifyListener(*listener);
}
