#include <dlfcn.h>

#include <climits>
#include <stdexcept>

#include "orvdiff/formats/XmlModule.h"
#include "orvdiff/platform/VELAssert.h"

// For the shared form of the library only.

namespace {

/// The folder of this library. The dynamic linker made it absolute when it loaded the library; the
/// process may have changed its working folder since.
std::string ownFolder() {
  Dl_info unused = {};
  void* self = nullptr;
  char folder[PATH_MAX] = "";
  if (dladdr1(reinterpret_cast<const void*>(&ownFolder), &unused, &self, RTLD_DL_LINKMAP) == 0 ||
      dlinfo(self, RTLD_DI_ORIGIN, folder) != 0) {
    throw VELStdExceptionError(std::runtime_error("the folder of liborvdiff cannot be determined"),
                               VEL_HERE.unit(), __LINE__);
  }
  return folder;
}

[[noreturn]] void raiseNotLoaded(const std::string& path) {
  const char* const reason = dlerror();
  throw VELStdExceptionError(
      std::runtime_error("cannot load " + path + " (installed with liborvdiff; needs Xerces): " +
                         (reason != nullptr ? reason : "unknown error")),
      VEL_HERE.unit(), __LINE__);
}

const orvdiff::detail::XmlModule* loadModule() {
  const std::string path = ownFolder() + '/' + ORVDIFF_XML_MODULE;
  void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  void* const entry = handle != nullptr ? dlsym(handle, "OrvXmlModuleEntry") : nullptr;
  if (entry == nullptr) {
    raiseNotLoaded(path);
  }
  return reinterpret_cast<decltype(&OrvXmlModuleEntry)>(entry)();
}

}  // namespace

const orvdiff::detail::XmlModule& orvdiff::detail::xmlModule() {
  static const XmlModule& module = *loadModule();  // tried again after an exception
  return module;
}
