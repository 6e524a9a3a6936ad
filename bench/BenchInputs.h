#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

/// Inputs for the benchmarks, made up but shaped like what report servers write.

/// An HTML page of about `size` bytes. Two runs (`run` 1 and 2, say) of the same page differ in
/// what the HTML patterns remove, and in nothing else.
std::string makePage(std::size_t size, unsigned run);

/// A folder that goes away with the object.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return m_path; }

  /// Writes a file, and the folders above it that are not there; returns its path.
  std::string write(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path m_path;
};
