#include "cli/suite/MasterChecks.h"

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>

#include "cli/suite/XmlCheck.h"

namespace {

std::uint32_t bigEndian(std::string_view bytes) {
  std::uint32_t number = 0;
  for (const char byte : bytes.substr(0, 4)) {
    number = (number << 8U) | static_cast<unsigned char>(byte);
  }
  return number;
}

/// The checksum of PNG chunks (ISO 3309).
std::uint32_t checksum(std::string_view bytes) {
  static const std::array<std::uint32_t, 256> table = [] {
    std::array<std::uint32_t, 256> values = {};
    for (std::uint32_t i = 0; i < values.size(); ++i) {
      values[i] = i;
      for (int bit = 0; bit < 8; ++bit) {
        values[i] = (values[i] >> 1U) ^ ((values[i] & 1U) != 0 ? 0xEDB88320U : 0U);
      }
    }
    return values;
  }();
  std::uint32_t sum = 0xFFFFFFFFU;
  for (const char byte : bytes) {
    sum = table[(sum ^ static_cast<unsigned char>(byte)) & 0xFFU] ^ (sum >> 8U);
  }
  return ~sum;
}

/// Checks that all chunks are there and whole; what the pixels are is left to those who compare.
std::optional<std::string> whyNotPng(std::string_view bytes) {
  constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";
  constexpr std::size_t kFrame = 12;  // length and type before the data of a chunk, checksum after
  if (bytes.substr(0, kSignature.size()) != kSignature) {
    return "not a PNG picture";
  }
  bytes.remove_prefix(kSignature.size());
  while (bytes.size() >= kFrame) {
    const std::size_t length = bigEndian(bytes);
    if (length > bytes.size() - kFrame) {
      break;
    }
    const std::string_view covered = bytes.substr(4, 4 + length);
    if (checksum(covered) != bigEndian(bytes.substr(8 + length))) {
      return "damaged: a checksum is wrong";
    }
    if (covered.substr(0, 4) == "IEND") {
      return std::nullopt;
    }
    bytes.remove_prefix(kFrame + length);
  }
  return "cut short";
}

std::optional<std::string> unlessItStartsWith(std::string_view bytes, std::string_view start,
                                              const char* problem) {
  return bytes.substr(0, start.size()) == start ? std::nullopt
                                                : std::optional<std::string>(problem);
}

bool endsWith(std::string_view name, std::string_view ending) {
  return name.size() >= ending.size() && name.substr(name.size() - ending.size()) == ending;
}

}  // namespace

std::optional<std::string> whyInvalid(const std::string& master, std::string_view bytes,
                                      std::string_view ending, bool isText) {
  if (isText && bytes.find('\0') != std::string_view::npos) {
    return "contains a NUL byte; only the text before it is compared";
  }
  if (endsWith(ending, ".xml")) {
    return whyNotXml(master);
  }
  if (endsWith(ending, ".json") && !nlohmann::json::accept(bytes)) {
    return "not valid JSON";
  }
  if (endsWith(ending, ".png")) {
    return whyNotPng(bytes);
  }
  if (endsWith(ending, ".pdf")) {
    return unlessItStartsWith(bytes, "%PDF-", "not a PDF document");
  }
  if (endsWith(ending, ".xlsx")) {
    return unlessItStartsWith(bytes, "PK\x03\x04", "not a workbook");
  }
  return std::nullopt;
}
