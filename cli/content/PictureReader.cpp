#include "cli/content/PictureReader.h"

#include <png.h>

#include <array>
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include "cli/terminal/Counts.h"

// libpng reports errors by a long jump, which skips destructors. So every call into it stands in a
// member function of Decoder that has only trivial variables and starts with setjmp.

namespace {

constexpr png_alloc_size_t kMostMemoryOfChunk = png_alloc_size_t{8} << 20;
constexpr std::size_t kSamplesPerPixel = 4;

}  // namespace

struct PictureReader::Decoder {
  explicit Decoder(std::string_view bytes) : rest(bytes) {}
  ~Decoder() { png_destroy_read_struct(&png, &info, nullptr); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  bool readHeader();
  bool start();
  bool readRow(std::uint16_t* row);

  [[noreturn]] static void fail(png_structp png, png_const_charp message);
  static void ignoreWarning(png_structp, png_const_charp) {}
  static void readBytes(png_structp png, png_bytep to, std::size_t length);

  std::string_view rest;  ///< of the file, not yet read
  png_structp png = nullptr;
  png_infop info = nullptr;
  int passes = 1;
  std::array<char, 200> message = {};
};

void PictureReader::Decoder::fail(png_structp png, png_const_charp message) {
  auto& decoder = *static_cast<Decoder*>(png_get_error_ptr(png));
  std::snprintf(decoder.message.data(), decoder.message.size(), "%s", message);
  png_longjmp(png, 1);
}

void PictureReader::Decoder::readBytes(png_structp png, png_bytep to, std::size_t length) {
  auto& decoder = *static_cast<Decoder*>(png_get_io_ptr(png));
  if (length > decoder.rest.size()) {
    png_error(png, "the file ends early");
  }
  std::memcpy(to, decoder.rest.data(), length);
  decoder.rest.remove_prefix(length);
}

/// False when the picture has no usable header; `message` says why.
bool PictureReader::Decoder::readHeader() {
  png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, fail, ignoreWarning);
  info = png != nullptr ? png_create_info_struct(png) : nullptr;
  if (info == nullptr) {
    std::snprintf(message.data(), message.size(), "out of memory");
    return false;
  }
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  // Whoever made this decoder limits the size, and says so in words of its own.
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_chunk_malloc_max(png, kMostMemoryOfChunk);
  png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);  // comments, profiles, ...
  png_set_read_fn(png, this, readBytes);
  png_read_info(png, info);
  return true;
}

bool PictureReader::Decoder::start() {
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  png_set_expand_16(png);
  png_set_gray_to_rgb(png);
  png_set_add_alpha(png, 0xFFFF, PNG_FILLER_AFTER);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  png_set_swap(png);
#endif
  passes = png_set_interlace_handling(png);
  png_start_read_image(png);
  return true;
}

bool PictureReader::Decoder::readRow(std::uint16_t* row) {
  if (setjmp(png_jmpbuf(png)) != 0) {
    return false;
  }
  png_read_row(png, reinterpret_cast<png_bytep>(row), nullptr);
  return true;
}

PictureReader::PictureReader(std::string_view bytes) : m_decoder(std::make_unique<Decoder>(bytes)) {
  if (bytes.empty()) {
    m_problem = "is empty";
    return;
  }
  if (!m_decoder->readHeader()) {
    m_problem = std::string("is not a readable PNG: ") + m_decoder->message.data();
    return;
  }
  m_width = png_get_image_width(m_decoder->png, m_decoder->info);
  m_height = png_get_image_height(m_decoder->png, m_decoder->info);
  const bool isInterlaced =
      png_get_interlace_type(m_decoder->png, m_decoder->info) != PNG_INTERLACE_NONE;
  const std::uint64_t most = isInterlaced ? kMostInterlacedPixels : kMostPixels;
  if (std::uint64_t{m_width} * m_height > most || m_width > kWidest) {
    m_problem = "declares " + withThousands(m_width) + " x " + withThousands(m_height) +
                " pixels, too many to decode";
    return;
  }
  if (!m_decoder->start()) {
    m_problem = std::string("is a damaged PNG: ") + m_decoder->message.data();
    return;
  }
  m_samples.resize(kSamplesPerPixel * m_width * (isInterlaced ? m_height : 1));
}

PictureReader::~PictureReader() = default;

const std::uint16_t* PictureReader::nextRow() {
  if (!m_problem.empty() || m_nextRow == m_height) {
    return nullptr;
  }
  const bool isInterlaced = m_decoder->passes > 1;
  const bool isRead = !isInterlaced    ? m_decoder->readRow(m_samples.data())
                      : m_nextRow == 0 ? readAllPasses()
                                       : true;
  if (!isRead) {
    m_problem = "is a damaged PNG: " + std::string(m_decoder->message.data()) + ", in row " +
                withThousands(m_nextRow + 1) + " of " + withThousands(m_height);
    return nullptr;
  }
  return rowAt(m_nextRow++);
}

std::uint16_t* PictureReader::rowAt(std::uint32_t row) {
  const bool isInterlaced = m_decoder->passes > 1;
  return m_samples.data() + (isInterlaced ? kSamplesPerPixel * m_width * row : 0);
}

bool PictureReader::readAllPasses() {
  for (int pass = 0; pass < m_decoder->passes; ++pass) {
    for (std::uint32_t row = 0; row < m_height; ++row) {
      if (!m_decoder->readRow(rowAt(row))) {
        return false;
      }
    }
  }
  return true;
}
