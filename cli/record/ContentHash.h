#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct XXH3_state_s;

/// 32 hexadecimal digits (XXH3, 128 bits) that tell contents apart. It finds accidents, not
/// forgeries.
std::string contentHash(std::string_view bytes);

/// Length in bytes and hash of a file's content.
struct FileContent {
  std::uint64_t size;
  std::string hash;
};

/// The content of the regular file `path`, or nothing when it cannot be read to its end.
std::optional<FileContent> hashFile(const std::string& path);

/// Takes a content block by block.
class ContentHasher {
 public:
  ContentHasher();

  /// Forgets what was added.
  void reset();
  void add(std::string_view block);
  FileContent content() const;

 private:
  struct FreeState {
    void operator()(XXH3_state_s* state) const;
  };

  std::unique_ptr<XXH3_state_s, FreeState> m_state;
  std::uint64_t m_size = 0;
};
