#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// The stable text around a place that varies, and how much of it a pattern has to hold on to. A
// label is a word of it that says something: not the name of an HTML tag, not "the" or "on".

/// Literal text that a pattern matches on both sides of a value and puts back.
struct Anchor {
  std::string left;
  std::string right;

  friend bool operator==(const Anchor& a, const Anchor& b) {
    return a.left == b.left && a.right == b.right;
  }
  friend bool operator<(const Anchor& a, const Anchor& b) {
    return a.left != b.left ? a.left < b.left : a.right < b.right;
  }
};

/// The end of `before` from its `labels`th last label on. Nothing if it has fewer that a pattern
/// can hold on to. 0 stands for the tag, or the punctuation, at its end.
std::optional<std::string> leftAnchor(std::string_view before, std::size_t labels);

/// Likewise the start of `after`, to the end of its `labels`th label. 0 stands for nothing, or, if
/// `wantsTag`, for the tag at its start.
std::optional<std::string> rightAnchor(std::string_view after, std::size_t labels, bool wantsTag);

/// The words of an anchor as a part of a name: "generated-on".
std::string slugOf(const Anchor& anchor);

/// Whether a word of the anchor says that what follows comes from the run: "Build", "session".
bool saysVolatile(const Anchor& anchor);
