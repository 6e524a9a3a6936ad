#include "cli/diff/PictureDiff.h"

#include <xxhash.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "cli/content/PictureReader.h"
#include "cli/diff/DifferenceBuilder.h"

namespace {

constexpr std::size_t kSamples = 4;    // of a pixel
constexpr unsigned kSampleUnit = 257;  // 16-bit samples in one step of 8 bits
constexpr std::size_t kPixelBytes = kSamples * sizeof(std::uint16_t);

struct FreeState {
  void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
};

/// Where pixels differ and by how much.
class PixelDifferences {
 public:
  PixelDifferences() : m_hash(XXH3_createState()) {
    if (m_hash == nullptr) {
      throw std::bad_alloc();
    }
    XXH3_64bits_reset(m_hash.get());
  }

  void addRow(const std::uint16_t* master, const std::uint16_t* output, std::uint32_t width,
              std::uint32_t row) {
    ++m_rows;
    if (std::memcmp(master, output, width * kPixelBytes) == 0) {
      return;
    }
    for (std::uint32_t column = 0; column < width; ++column) {
      const std::size_t at = column * kSamples;
      if (std::memcmp(master + at, output + at, kPixelBytes) != 0) {
        addPixel(master + at, output + at, column, row);
      }
    }
  }

  std::uint64_t count() const { return m_count; }
  std::uint64_t rows() const { return m_rows; }  ///< that were compared
  std::string extent() const;
  std::string howMuch() const;
  /// Equal for pictures whose pixels differ in the same way, wherever they do.
  std::string key() const { return std::to_string(XXH3_64bits_digest(m_hash.get())); }
  DiffHunk hunk() const;

 private:
  void addPixel(const std::uint16_t* master, const std::uint16_t* output, std::uint32_t column,
                std::uint32_t row);

  std::unique_ptr<XXH3_state_t, FreeState> m_hash;
  std::uint64_t m_rows = 0;
  std::uint64_t m_count = 0;
  std::uint64_t m_sum = 0;  ///< of the largest distance in each pixel
  unsigned m_largest = 0;
  std::uint32_t m_left = 0, m_right = 0, m_top = 0, m_bottom = 0;
  std::uint32_t m_lastColumn = 0;
  std::array<std::uint16_t, kSamples> m_firstMaster = {}, m_firstOutput = {};
  std::uint32_t m_firstColumn = 0;
};

void PixelDifferences::addPixel(const std::uint16_t* master, const std::uint16_t* output,
                                std::uint32_t column, std::uint32_t row) {
  if (m_count == 0) {
    m_left = m_right = m_firstColumn = m_lastColumn = column;
    m_top = m_bottom = row;
    std::copy_n(master, kSamples, m_firstMaster.begin());
    std::copy_n(output, kSamples, m_firstOutput.begin());
  }
  const std::array<std::uint32_t, 2> step = {column - m_lastColumn, row - m_bottom};
  XXH3_64bits_update(m_hash.get(), step.data(), sizeof step);
  XXH3_64bits_update(m_hash.get(), master, kPixelBytes);
  XXH3_64bits_update(m_hash.get(), output, kPixelBytes);
  unsigned distance = 0;
  for (std::size_t i = 0; i < kSamples; ++i) {
    distance = std::max(distance, master[i] > output[i] ? unsigned{master[i]} - output[i]
                                                        : unsigned{output[i]} - master[i]);
  }
  ++m_count;
  m_sum += distance;
  m_largest = std::max(m_largest, distance);
  m_left = std::min(m_left, column);
  m_right = std::max(m_right, column);
  m_lastColumn = column;
  m_bottom = row;
}

std::string size(std::uint64_t width, std::uint64_t height) {
  return withThousands(width) + " x " + withThousands(height);
}

/// Of the smallest rectangle with all that differ.
std::string PixelDifferences::extent() const {
  return size(m_right - m_left + 1, m_bottom - m_top + 1);
}

/// `distance` between samples of 16 bits, as steps of the usual 8.
std::string inSteps(double distance) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", distance / kSampleUnit);
  return text;
}

std::string PixelDifferences::howMuch() const {
  return "by up to " + inSteps(m_largest) + " of 255, " +
         inSteps(static_cast<double>(m_sum) / static_cast<double>(m_count)) + " on average";
}

std::string colorOf(const std::array<std::uint16_t, kSamples>& pixel) {
  char text[64];
  const bool isDeep = std::any_of(pixel.begin(), pixel.end(), [](std::uint16_t sample) {
    return sample != sample / kSampleUnit * kSampleUnit;
  });
  const unsigned unit = isDeep ? 1 : kSampleUnit;
  const char* const form = isDeep ? "#%04x%04x%04x" : "#%02x%02x%02x";
  std::snprintf(text, sizeof text, form, pixel[0] / unit, pixel[1] / unit, pixel[2] / unit);
  std::string color = text;
  if (pixel[3] != 0xFFFF) {
    std::snprintf(text, sizeof text, ", opacity %.4g%%", pixel[3] * 100.0 / 0xFFFF);
    color += text;
  }
  return color;
}

DiffHunk PixelDifferences::hunk() const {
  const std::string at =
      " at " + std::to_string(m_firstColumn) + ',' + std::to_string(m_top) + ", the first of them";
  DiffHunk hunk;
  hunk.place = extent() + " pixels at " + std::to_string(m_left) + ',' + std::to_string(m_top);
  const auto line = [&at](DiffLine::Kind kind, const auto& pixel) {
    DiffLine result;
    result.kind = kind;
    result.spans = {{DiffSpan::Kind::Changed, colorOf(pixel), {}}, {DiffSpan::Kind::Same, at, {}}};
    return result;
  };
  hunk.lines = {line(DiffLine::Kind::Removed, m_firstMaster),
                line(DiffLine::Kind::Added, m_firstOutput)};
  return hunk;
}

std::string share(std::uint64_t part, std::uint64_t whole) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3g%%",
                100.0 * static_cast<double>(part) / static_cast<double>(whole));
  return text;
}

/// Compares what both pictures have, from the top left corner on.
PixelDifferences comparePixels(PictureReader& master, PictureReader& output) {
  PixelDifferences found;
  const std::uint32_t width = std::min(master.width(), output.width());
  const std::uint32_t height = std::min(master.height(), output.height());
  for (std::uint32_t row = 0; row < height; ++row) {
    const std::uint16_t* const masterRow = master.nextRow();
    const std::uint16_t* const outputRow = output.nextRow();
    if (masterRow == nullptr || outputRow == nullptr) {
      break;
    }
    found.addRow(masterRow, outputRow, width, row);
  }
  return found;
}

bool noteProblems(DifferenceBuilder& builder, const PictureReader& master,
                  const PictureReader& output) {
  if (!master.problem().empty()) {
    builder.note("the master " + master.problem());
  }
  if (!output.problem().empty()) {
    builder.note("the output " + output.problem());
  }
  return !master.problem().empty() || !output.problem().empty();
}

void addSizes(DifferenceBuilder& builder, const PictureReader& master,
              const PictureReader& output) {
  const std::string masterSize = size(master.width(), master.height()) + " pixels";
  const std::string outputSize = size(output.width(), output.height()) + " pixels";
  builder.addChange("size", {masterSize}, {outputSize});
}

}  // namespace

Difference pictureDifference(const DiffRequest& request) {
  DifferenceBuilder builder("picture", request);
  PictureReader masterPicture(request.master);
  PictureReader outputPicture(request.output);
  const bool haveSizes = masterPicture.width() != 0 && outputPicture.width() != 0;
  const bool isSameSize = masterPicture.width() == outputPicture.width() &&
                          masterPicture.height() == outputPicture.height();
  if (haveSizes && !isSameSize) {
    addSizes(builder, masterPicture, outputPicture);
  }
  if (noteProblems(builder, masterPicture, outputPicture)) {
    return builder.take();
  }
  const PixelDifferences pixels = comparePixels(masterPicture, outputPicture);
  const bool isDamaged = noteProblems(builder, masterPicture, outputPicture);
  const std::uint32_t width = std::min(masterPicture.width(), outputPicture.width());
  const std::uint32_t height = std::min(masterPicture.height(), outputPicture.height());
  const std::uint64_t compared = pixels.rows() * width;
  const std::string where = isDamaged     ? "in the rows before that, "
                            : !isSameSize ? "in the " + size(width, height) + " they share, "
                                          : "";
  if (pixels.count() > 0) {
    builder.note(where + withThousands(pixels.count()) + " of " + counted(compared, "pixel") +
                 " differ (" + share(pixels.count(), compared) + "), " + pixels.howMuch());
    builder.add(pixels.hunk(), {}, counted(pixels.count(), "pixel") + " in " + pixels.extent(),
                pixels.key());
  } else if ((isDamaged || !isSameSize) && compared > 0) {
    builder.note(where + "all pixels are equal");
  } else if (!isDamaged) {
    builder.noteChange("same pixels, other bytes");
  }
  return builder.take();
}
