#include <gtest/gtest.h>

#include <xercesc/util/PlatformUtils.hpp>

namespace {

/// Stands in for the host: Xerces is there while tests run.
class XercesEnvironment : public testing::Environment {
 public:
  void SetUp() override { xercesc::XMLPlatformUtils::Initialize(); }
  void TearDown() override { xercesc::XMLPlatformUtils::Terminate(); }
};

[[maybe_unused]] const testing::Environment* const kEnvironment =
    testing::AddGlobalTestEnvironment(new XercesEnvironment);

}  // namespace

/// Debian's Xerces rather leaks the declaration of an external DTD than read it once it is freed.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:xercesc_3_2::XMLScanner::scanProlog\n";
}
