#include <stdlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <xercesc/util/PlatformUtils.hpp>

#include "fuzz/LiteralXmlParser.h"

namespace {

/// The engines beside the plain parser, in a new folder that holds the files they read.
class Bench {
 public:
  Bench() {
    xercesc::XMLPlatformUtils::Initialize();
    const bool hasMemory = std::filesystem::is_directory("/dev/shm");
    const std::filesystem::path parent =
        hasMemory ? "/dev/shm" : std::filesystem::temp_directory_path();
    m_folder = parent / "orvdiff-fuzz-XXXXXX";
    m_folder = mkdtemp(m_folder.data());
  }
  ~Bench() {
    m_comparison.reset();
    std::filesystem::remove_all(m_folder);
    xercesc::XMLPlatformUtils::Terminate();
  }

  std::string differenceOver(const std::string& document) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder);
    if (m_count++ % kDocumentsPerParser == 0) {
      m_comparison.emplace();
    }
    std::string difference = m_comparison->differenceOver(document);
    std::filesystem::current_path(before);
    return difference;
  }

 private:
  static constexpr int kDocumentsPerParser = 500;  ///< a parser keeps every name that it met

  std::string m_folder;
  std::optional<XmlComparison> m_comparison;
  int m_count = 0;
};

}  // namespace

/// Debian's Xerces rather leaks the declaration of an external DTD than read it once it is freed.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:xercesc_3_2::XMLScanner::scanProlog\n";
}

/// A document. The engines must say of it what a parser says that builds the tree.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Bench bench;
  const std::string difference =
      bench.differenceOver(std::string(reinterpret_cast<const char*>(data), size));
  if (!difference.empty()) {
    std::cerr << difference;
    std::abort();
  }
  return 0;
}
