#include "cli/custom/PictureComparison.h"

#include <cstdint>
#include <cstring>

#include "cli/content/PictureReader.h"

namespace {

using Verdict = ContentOutcome::Verdict;

/// Pixels that are not equal.
struct PixelCount {
  std::uint64_t near = 0;  ///< within the distance that does not count
  std::uint64_t far = 0;

  void addRow(const std::uint16_t* master, const std::uint16_t* output, std::uint32_t width,
              double distance) {
    for (std::uint32_t column = 0; column < width; ++column) {
      const std::size_t at = column * PictureReader::kSamples;
      const unsigned apart = PictureReader::distance(master + at, output + at);
      if (apart > distance * PictureReader::kStep) {
        ++far;
      } else if (apart > 0) {
        ++near;
      }
    }
  }
};

}  // namespace

ContentOutcome comparePictures(std::string_view master, std::string_view output,
                               const PictureRules& rules) {
  if (master == output) {
    return {};
  }
  PictureReader masterPicture(master);
  PictureReader outputPicture(output);
  if (!masterPicture.problem().empty()) {
    return {Verdict::BadMaster, {}, masterPicture.problem()};
  }
  if (!outputPicture.problem().empty()) {
    return {Verdict::BadOutput, {}, outputPicture.problem()};
  }
  const std::uint32_t width = masterPicture.width();
  if (width != outputPicture.width() || masterPicture.height() != outputPicture.height()) {
    return ContentOutcome::differs();
  }
  PixelCount pixels;
  for (std::uint32_t row = 0; row < masterPicture.height(); ++row) {
    const std::uint16_t* const masterRow = masterPicture.nextRow();
    const std::uint16_t* const outputRow = outputPicture.nextRow();
    if (masterRow == nullptr) {
      return {Verdict::BadMaster, {}, masterPicture.problem()};
    }
    if (outputRow == nullptr) {
      return {Verdict::BadOutput, {}, outputPicture.problem()};
    }
    if (std::memcmp(masterRow, outputRow, width * PictureReader::kPixelBytes) != 0) {
      pixels.addRow(masterRow, outputRow, width, rules.distance);
    }
  }
  const auto all = static_cast<double>(std::uint64_t{width} * masterPicture.height());
  if (static_cast<double>(pixels.far) * 100 > rules.share * all) {
    return ContentOutcome::differs();
  }
  ContentOutcome outcome;
  if (pixels.far > 0) {
    outcome.rules.emplace_back("allowed share of pixels");
  }
  if (pixels.near > 0) {
    outcome.rules.emplace_back("allowed distance of pixels");
  }
  if (outcome.rules.empty()) {
    outcome.rules.emplace_back("the same pixels in other bytes");
  }
  return outcome;
}
