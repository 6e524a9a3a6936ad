#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

// Values as bytes, for processes of one run on one machine: the layout is that of the machine, and
// no version is kept. A type takes part by a function `describe(archive, value)` that names its
// members once, for both directions.

/// Appends values to a string.
class ArchiveWriter {
 public:
  explicit ArchiveWriter(std::string& bytes) : m_bytes(bytes) {}

  template <typename... Values>
  void operator()(const Values&... values) {
    (put(values), ...);
  }

 private:
  template <typename Value>
  void put(const Value& value) {
    if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
      m_bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    } else {
      describe(*this, const_cast<Value&>(value));  // one function for both directions; reads only
    }
  }

  void put(const std::string& text) {
    put(std::uint64_t{text.size()});
    m_bytes += text;
  }

  template <typename Value>
  void put(const std::vector<Value>& values) {
    put(std::uint64_t{values.size()});
    for (const Value& value : values) {
      put(value);
    }
  }

  template <typename Value>
  void put(const std::optional<Value>& value) {
    put(value.has_value());
    if (value) {
      put(*value);
    }
  }

  std::string& m_bytes;
};

/// Takes values from bytes, in the order in which they were written. Raises `std::runtime_error`
/// when the bytes end too early.
class ArchiveReader {
 public:
  explicit ArchiveReader(std::string_view bytes) : m_bytes(bytes) {}

  template <typename... Values>
  void operator()(Values&... values) {
    (get(values), ...);
  }

 private:
  std::string_view take(std::uint64_t count) {
    if (count > m_bytes.size()) {
      throw std::runtime_error("a message between processes is cut short");
    }
    const std::string_view taken = m_bytes.substr(0, static_cast<std::size_t>(count));
    m_bytes.remove_prefix(taken.size());
    return taken;
  }

  template <typename Value>
  void get(Value& value) {
    if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value>) {
      std::memcpy(&value, take(sizeof value).data(), sizeof value);
    } else {
      describe(*this, value);
    }
  }

  std::uint64_t getCount() {
    std::uint64_t count = 0;
    get(count);
    return count;
  }

  void get(std::string& text) { text = take(getCount()); }

  template <typename Value>
  void get(std::vector<Value>& values) {
    for (std::uint64_t left = getCount(); left > 0; --left) {
      get(values.emplace_back());
    }
  }

  template <typename Value>
  void get(std::optional<Value>& value) {
    bool given = false;
    get(given);
    if (given) {
      get(value.emplace());
    }
  }

  std::string_view m_bytes;
};
