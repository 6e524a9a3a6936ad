#include "cli/diff/ByteDiff.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

#include "cli/diff/DifferenceBuilder.h"

namespace {

constexpr std::size_t kRow = 16;      // bytes in a row
constexpr std::size_t kMostRows = 4;  // of one side of a hunk
constexpr std::size_t kResync = 8;    // equal bytes that end a stretch
constexpr std::size_t kMostStretches = 1'000'000;

/// A stretch of one file, [begin, end).
struct Stretch {
  std::size_t begin;
  std::size_t end;
};

std::string hex(std::size_t number, int digits) {
  char text[24];
  std::snprintf(text, sizeof text, "%0*zx", digits, number);
  return text;
}

/// Adds to the last span if it is of the same kind.
void append(DiffLine& line, bool isChanged, const std::string& text) {
  const DiffSpan::Kind kind = isChanged ? DiffSpan::Kind::Changed : DiffSpan::Kind::Same;
  if (line.spans.empty() || line.spans.back().kind != kind) {
    line.spans.push_back({kind, {}, {}});
  }
  line.spans.back().text += text;
}

/// The row of `bytes` that starts at `offset`, a multiple of a row's length.
DiffLine rowAt(DiffLine::Kind kind, std::string_view bytes, std::size_t offset,
               const Stretch& changed) {
  constexpr int kDigitsOfOffset = 8;
  DiffLine line;
  line.kind = kind;
  append(line, false, hex(offset, kDigitsOfOffset) + ' ');
  std::string printable;
  for (std::size_t i = offset; i < offset + kRow; ++i) {
    if (i >= bytes.size()) {
      append(line, false, "   ");
      continue;
    }
    const auto byte = static_cast<unsigned char>(bytes[i]);
    append(line, i > changed.begin && i < changed.end && i > offset, " ");
    append(line, i >= changed.begin && i < changed.end, hex(byte, 2));
    printable += byte >= 0x20 && byte < 0x7F && byte != '\\' ? bytes[i] : '.';
  }
  append(line, false, "  |" + printable + '|');
  return line;
}

void addRows(DiffHunk& hunk, DiffLine::Kind kind, std::string_view bytes, const Stretch& changed) {
  const std::size_t first = changed.begin / kRow * kRow;
  const std::size_t end =
      std::min({bytes.size(), std::max(changed.end, changed.begin + 1), first + kMostRows * kRow});
  for (std::size_t offset = first; offset < end; offset += kRow) {
    hunk.lines.push_back(rowAt(kind, bytes, offset, changed));
  }
}

std::string offsetText(std::size_t offset) {
  return "offset " + withThousands(offset) + " (0x" + hex(offset, 1) + ')';
}

class ByteComparison {
 public:
  ByteComparison(const DiffRequest& request, DifferenceBuilder& builder)
      : m_master(request.master), m_output(request.output), m_builder(builder) {}

  void run();

 private:
  void addStretches();
  void addReplacement();
  void add(const std::string& place, const Stretch& master, const Stretch& output);

  std::string_view m_master;
  std::string_view m_output;
  DifferenceBuilder& m_builder;
};

void ByteComparison::run() {
  if (m_master.size() == m_output.size()) {
    addStretches();
    m_builder.note(counted(m_master.size(), "byte") + " in both files");
  } else {
    addReplacement();
    m_builder.note(counted(m_master.size(), "byte") + " in the master, " +
                   withThousands(m_output.size()) + " in the output");
  }
}

/// Adds the stretches in which files of the same length differ.
void ByteComparison::addStretches() {
  const std::size_t size = m_master.size();
  const auto differsFrom = [this, size](std::size_t begin) {
    const auto* const start = m_master.data();
    return static_cast<std::size_t>(
        std::mismatch(start + begin, start + size, m_output.data() + begin).first - start);
  };
  for (std::size_t begin = differsFrom(0); begin < size;) {
    std::size_t end = begin + 1;
    std::size_t next = differsFrom(end);
    while (next < size && next - end < kResync) {
      end = next + 1;
      next = differsFrom(end);
    }
    if (m_builder.hunkCount() == kMostStretches) {
      m_builder.setCoarse();
      end = size;
      next = size;
    }
    add(counted(end - begin, "byte") + " at " + offsetText(begin), {begin, end}, {begin, end});
    begin = next;
  }
}

/// Adds what lies between what both files start and end with.
void ByteComparison::addReplacement() {
  const std::size_t most = std::min(m_master.size(), m_output.size());
  const auto* const start = m_master.data();
  const auto prefix =
      static_cast<std::size_t>(std::mismatch(start, start + most, m_output.data()).first - start);
  const std::string_view masterRest = m_master.substr(prefix);
  const std::string_view outputRest = m_output.substr(prefix);
  const std::size_t mostOfRest = most - prefix;
  const auto suffix = static_cast<std::size_t>(
      std::mismatch(masterRest.rbegin(),
                    masterRest.rbegin() + static_cast<std::ptrdiff_t>(mostOfRest),
                    outputRest.rbegin())
          .first -
      masterRest.rbegin());
  const std::size_t removed = masterRest.size() - suffix;
  const std::size_t added = outputRest.size() - suffix;
  const std::string at = " at " + offsetText(prefix);
  add(removed == 0 ? counted(added, "byte") + " more" + at
      : added == 0 ? counted(removed, "byte") + " fewer" + at
                   : counted(added, "byte") + " instead of " + withThousands(removed) + at,
      {prefix, prefix + removed}, {prefix, prefix + added});
}

void ByteComparison::add(const std::string& place, const Stretch& master, const Stretch& output) {
  DiffHunk hunk;
  if (m_builder.keepsNext()) {
    hunk.place = place;
    addRows(hunk, DiffLine::Kind::Removed, m_master, master);
    addRows(hunk, DiffLine::Kind::Added, m_output, output);
  }
  const auto bytesOf = [](std::string_view bytes, const Stretch& stretch) {
    constexpr std::size_t kMostInName = 16;
    std::string text;
    for (std::size_t i = stretch.begin; i < std::min(stretch.end, stretch.begin + kMostInName);
         ++i) {
      text += (text.empty() ? "" : " ") + hex(static_cast<unsigned char>(bytes[i]), 2);
    }
    return text + (stretch.end - stretch.begin > kMostInName ? " \u2026" : "");
  };
  std::string key(m_master.substr(master.begin, master.end - master.begin));
  key += '\0';
  key += m_output.substr(output.begin, output.end - output.begin);
  m_builder.add(std::move(hunk), bytesOf(m_master, master), bytesOf(m_output, output), key);
}

}  // namespace

Difference byteDifference(const DiffRequest& request) {
  DifferenceBuilder builder("bytes", request);
  ByteComparison(request, builder).run();
  return builder.take();
}
