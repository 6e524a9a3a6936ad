#include "bench/BenchInputs.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>

namespace fs = std::filesystem;

std::string makePage(std::size_t size, unsigned run) {
  std::mt19937 words(1);        // the same in every run
  std::mt19937 volatiles(run);  // another in every run
  const auto number = [](std::mt19937& random) { return std::to_string(random() % 100000); };
  std::string page = "<html><head><meta name=\"GeneratorID\" content=\"" + number(volatiles) +
                     "\">\r\n</head><body><table>\n";
  while (page.size() < size) {
    page += "<tr><td id=\"rt_" + number(volatiles) + "\" class=\"cell\"";
    if (words() % 4 == 0) {
      page += " onclick=\"go(" + number(volatiles) + ")\"";
    }
    page += ">Revenue " + number(words) + "</td><td style=\"text-align:right\">" + number(words) +
            "</td></tr>\n";
    if (words() % 50 == 0) {
      page += "<script>var t = " + number(volatiles) + ";</script>\n";
    }
  }
  return page + "</table></body></html>\n";
}

TemporaryFolder::TemporaryFolder()
    : m_path(fs::temp_directory_path() / ("orvdiff-bench-" + std::to_string(getpid()))) {
  if (!fs::create_directory(m_path)) {
    throw std::runtime_error(m_path.string() + " exists already");
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(m_path, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& content) const {
  const fs::path path = m_path / name;
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << content;
  return path.string();
}
