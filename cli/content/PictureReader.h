#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Decodes a PNG from the top, a row at a time, so that memory depends on its width and not on what
/// it declares to be. All pictures come out alike, whatever their depth and colour type: red,
/// green, blue and opacity of each pixel, 16 bits each.
///
/// The bytes are untrusted. Damage ends the rows, and `problem` says what is wrong. Only an
/// interlaced picture is decoded as a whole.
class PictureReader {
 public:
  static constexpr std::uint64_t kMostPixels = 50'000'000;
  static constexpr std::uint64_t kMostInterlacedPixels = 16'000'000;  ///< 8 bytes each
  static constexpr std::uint32_t kWidest = 1'000'000;

  /// Reads the header. `bytes` must outlive the reader.
  explicit PictureReader(std::string_view bytes);
  ~PictureReader();
  PictureReader(const PictureReader&) = delete;
  PictureReader& operator=(const PictureReader&) = delete;

  /// 0 when the header could not be read. Known even for a picture that is too large to decode.
  std::uint32_t width() const { return m_width; }
  std::uint32_t height() const { return m_height; }

  /// The next row, four numbers for each pixel, valid until the next call. Null after the last one,
  /// and when there is a problem.
  const std::uint16_t* nextRow();

  /// Why the picture cannot be decoded (further), to be printed after its name; empty: it can.
  const std::string& problem() const { return m_problem; }

 private:
  struct Decoder;

  std::uint16_t* rowAt(std::uint32_t row);
  bool readAllPasses();

  std::unique_ptr<Decoder> m_decoder;
  std::vector<std::uint16_t> m_samples;  ///< one row, or all of an interlaced picture
  std::uint32_t m_width = 0;
  std::uint32_t m_height = 0;
  std::uint32_t m_nextRow = 0;
  std::string m_problem;
};
