#include <xercesc/util/PlatformUtils.hpp>

/// Stands in for the host: Xerces is there while tests run.
static const struct XercesEnvironment {
  XercesEnvironment() { xercesc::XMLPlatformUtils::Initialize(); }
  ~XercesEnvironment() { xercesc::XMLPlatformUtils::Terminate(); }
} s_environment;

/// Debian's Xerces rather leaks the declaration of an external DTD than read it once it is freed.
extern "C" const char* __lsan_default_suppressions() {  // NOLINT: the sanitizer's name
  return "leak:xercesc_3_2::XMLScanner::scanProlog\n";
}
