#pragma once

#include <memory>
#include <string>

#include "orvdiff/platform/VELAssert.h"

struct UConverter;

namespace orvdiff::host {

/// Allocates the memory for a conversion's result. With `size` > 0: a new block of `size` bytes, or
/// null with `*status` set. With `size` 0: releases `pBufferToDelete` and returns null.
using I18NAllocator = char* (*)(void* context, char* pBufferToDelete, int size, int* status);

/// Raises `VELOutOfMemoryError` if `status`, an ICU status, means out of memory; the caller's next
/// check can then attribute any other failure to its own subject.
void velCheckIcuMemory(int status, const VELPlace& place);

/// Converts between one encoding and UTF-16.
///
/// UTF-8 is converted without loss, whatever the bytes: a byte that is not part of a valid sequence
/// becomes the lone surrogate U+DC00 + byte and comes back as that byte. Replacing it by U+FFFD
/// instead would make two texts that differ only in such bytes (two Latin-1 pages, say) compare
/// equal. A converter keeps state while it works: one thread at a time.
class I18NConverter {
 public:
  /// Raises `VELAssertError` when ICU does not know `encoding`.
  explicit I18NConverter(const char* encoding);
  ~I18NConverter();
  I18NConverter(const I18NConverter&) = delete;
  I18NConverter& operator=(const I18NConverter&) = delete;

  /// Converts `inLength` bytes (-1: up to the NUL) and stores the NUL-terminated text and its
  /// length in code units. The block comes from `allocator`; the caller releases it. Raises
  /// `VELAssertError` if the text is too long for 32-bit lengths and `VELOutOfMemoryError` if the
  /// allocator returns null.
  void toUnicode(char16_t** out, int* outLength, const char* in, int inLength,
                 I18NAllocator allocator, void* context) const;

  /// The reverse, for a NUL-terminated text; `*outLength` is in bytes, without the NUL.
  void fromUnicode(char** out, int* outLength, const char16_t* in, I18NAllocator allocator,
                   void* context) const;

 private:
  struct Close {
    void operator()(UConverter* converter) const;
  };
  std::unique_ptr<UConverter, Close> m_converter;
};

/// The encoding of narrow texts that name none: UTF-8.
const char* I18NGetPlatformDefaultEncoding();

/// A text held as UTF-16, whatever encoding it came in.
class I18NString {
 public:
  /// `text` is NUL-terminated (with a NUL of two bytes for "UTF-16", which is read in the
  /// machine's byte order). A null `encoding` means the platform's default.
  explicit I18NString(const char* text, const char* encoding = nullptr);

  bool empty() const { return m_text.empty(); }

  /// The text in `encoding` (null: the platform's default), without byte-order mark.
  std::string toBytes(const char* encoding = nullptr) const;

 private:
  std::u16string m_text;
};

}  // namespace orvdiff::host

using orvdiff::host::I18NAllocator;
using orvdiff::host::I18NConverter;
using orvdiff::host::I18NGetPlatformDefaultEncoding;
using orvdiff::host::I18NString;
using orvdiff::host::velCheckIcuMemory;
