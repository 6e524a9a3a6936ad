#include "cli/record/ContentHash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <xxhash.h>

#include <cerrno>
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

/// Hashes what can be read from `descriptor`; nothing after a read error.
std::optional<FileContent> hashDescriptor(int descriptor) {
  constexpr std::size_t kBlockSize = std::size_t{256} << 10;
  static std::vector<char> block(kBlockSize);
  ContentHasher hasher;
  for (;;) {
    const ssize_t count = read(descriptor, block.data(), block.size());
    if (count == 0) {
      return hasher.content();
    }
    if (count < 0 && errno != EINTR) {
      return std::nullopt;
    }
    if (count > 0) {
      hasher.add({block.data(), static_cast<std::size_t>(count)});
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

void ContentHasher::FreeState::operator()(XXH3_state_s* state) const {
  XXH3_freeState(state);
}

ContentHasher::ContentHasher() : m_state(XXH3_createState()) {
  if (m_state == nullptr) {
    throw std::bad_alloc();
  }
  reset();
}

void ContentHasher::reset() {
  XXH3_128bits_reset(m_state.get());
  m_size = 0;
}

void ContentHasher::add(std::string_view block) {
  XXH3_128bits_update(m_state.get(), block.data(), block.size());
  m_size += block.size();
}

FileContent ContentHasher::content() const {
  return {m_size, hexOf(XXH3_128bits_digest(m_state.get()))};
}
