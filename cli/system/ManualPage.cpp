#include "cli/system/ManualPage.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

void showManualPage(const std::string& name) {
  std::error_code unknown;
  const fs::path folder =
      fs::read_symlink("/proc/self/exe", unknown).parent_path() / ORVDIFF_MAN_FROM_BIN / "man1";
  for (const char* const ending : {".1", ".1.gz"}) {
    const std::string page = folder / (name + ending);
    if (fs::exists(page, unknown)) {
      execlp("man", "man", page.c_str(), static_cast<char*>(nullptr));
      return;
    }
  }
}
