#include "cli/record/ContentHash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include <cerrno>
#include <memory>
#include <new>
#include <vector>

namespace {

std::string hexOf(const XXH128_hash_t& hash) {
  XXH128_canonical_t bytes;
  XXH128_canonicalFromHash(&bytes, hash);
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  for (const unsigned char byte : bytes.digest) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

/// A descriptor that is closed at the end.
struct Descriptor {
  explicit Descriptor(int opened) : number(opened) {}
  ~Descriptor() {
    if (number >= 0) {
      close(number);
    }
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  const int number;
};

struct FreeState {
  void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
};

/// Hashes what can be read from `descriptor`; nothing after a read error.
std::optional<FileContent> hashDescriptor(int descriptor) {
  constexpr std::size_t kBlockSize = std::size_t{256} << 10;
  static std::vector<char> block(kBlockSize);
  static const std::unique_ptr<XXH3_state_t, FreeState> state(XXH3_createState());
  if (state == nullptr) {
    throw std::bad_alloc();
  }
  XXH3_128bits_reset(state.get());
  std::uint64_t size = 0;
  for (;;) {
    const ssize_t count = read(descriptor, block.data(), block.size());
    if (count == 0) {
      return FileContent{size, hexOf(XXH3_128bits_digest(state.get()))};
    }
    if (count < 0 && errno != EINTR) {
      return std::nullopt;
    }
    if (count > 0) {
      XXH3_128bits_update(state.get(), block.data(), static_cast<std::size_t>(count));
      size += static_cast<std::uint64_t>(count);
    }
  }
}

}  // namespace

std::string contentHash(std::string_view bytes) {
  return hexOf(XXH3_128bits(bytes.data(), bytes.size()));
}

std::optional<FileContent> hashFile(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status = {};
  if (file.number < 0 || fstat(file.number, &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return hashDescriptor(file.number);
}
