#include "orvdiff/platform/I18N.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/utf16.h>

#include <climits>
#include <cstdint>
#include <cstring>

#include "orvdiff/platform/VELAssert.h"

namespace orvdiff::host {

namespace {

constexpr char16_t kEscapedByte = 0xDC00;  // plus the byte, 0x80 to 0xFF: U+DC80 to U+DCFF

void escapeInvalidBytes(const void*, UConverterToUnicodeArgs* arguments, const char* bytes,
                        int32_t length, UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) {
    return;  // the converter is being reset, closed or cloned
  }
  *status = U_ZERO_ERROR;
  for (int32_t i = 0; i < length; ++i) {
    const UChar escaped = static_cast<UChar>(kEscapedByte + static_cast<unsigned char>(bytes[i]));
    ucnv_cbToUWriteUChars(arguments, &escaped, 1, 0, status);
  }
}

void restoreEscapedBytes(const void* context, UConverterFromUnicodeArgs* arguments,
                         const UChar* units, int32_t length, UChar32 character,
                         UConverterCallbackReason reason, UErrorCode* status) {
  if (reason <= UCNV_IRREGULAR && character >= kEscapedByte + 0x80 &&
      character <= kEscapedByte + 0xFF) {
    *status = U_ZERO_ERROR;
    const char byte = static_cast<char>(character - kEscapedByte);
    ucnv_cbFromUWriteBytes(arguments, &byte, 1, 0, status);
  } else {
    UCNV_FROM_U_CALLBACK_SUBSTITUTE(context, arguments, units, length, character, reason, status);
  }
}

char* allocateBlock(I18NAllocator allocator, void* context, std::int64_t size) {
  VEL_ASSERT_NAMED(size <= INT_MAX, "The text is too long to be converted");
  int status = 0;
  char* const block = allocator(context, nullptr, static_cast<int>(size), &status);
  if (block == nullptr) {
    throw VELOutOfMemoryError(VEL_HERE.unit(), __LINE__);
  }
  return block;
}

char* allocateArray(void*, char*, int size, int*) {
  return new char[static_cast<size_t>(size)];
}

std::int64_t lengthOf(const char* text, int length) {
  return length >= 0 ? length : static_cast<std::int64_t>(std::strlen(text));
}

}  // namespace

void velCheckIcuMemory(int status, const VELPlace& place) {
  if (status == U_MEMORY_ALLOCATION_ERROR) {
    throw VELOutOfMemoryError(place.unit(), place.line);
  }
}

void I18NConverter::Close::operator()(UConverter* converter) const {
  ucnv_close(converter);
}

I18NConverter::I18NConverter(const char* encoding) {
  UErrorCode status = U_ZERO_ERROR;
  m_converter.reset(ucnv_open(encoding, &status));
  velCheckIcuMemory(status, VEL_HERE);
  VEL_ASSERT_NAMED(U_SUCCESS(status), "The encoding is known");
  // These two write a byte-order mark; their variants of fixed byte order do not.
  if (ucnv_getType(m_converter.get()) == UCNV_UTF16) {
    m_converter.reset(ucnv_open("UTF16_PlatformEndian", &status));
  } else if (ucnv_getType(m_converter.get()) == UCNV_UTF32) {
    m_converter.reset(ucnv_open("UTF32_PlatformEndian", &status));
  }
  velCheckIcuMemory(status, VEL_HERE);
  VEL_ASSERT_NAMED(U_SUCCESS(status), "The encoding is known");
  if (ucnv_getType(m_converter.get()) == UCNV_UTF8) {
    ucnv_setToUCallBack(m_converter.get(), escapeInvalidBytes, nullptr, nullptr, nullptr, &status);
    ucnv_setFromUCallBack(m_converter.get(), restoreEscapedBytes, nullptr, nullptr, nullptr,
                          &status);
  }
}

I18NConverter::~I18NConverter() = default;

void I18NConverter::toUnicode(char16_t** out, int* outLength, const char* in, int inLength,
                              I18NAllocator allocator, void* context) const {
  const std::int64_t length = lengthOf(in, inLength);
  // No supported encoding yields more code units than bytes, so one pass is enough.
  const std::int64_t capacity = length + 1;
  char* const block =
      allocateBlock(allocator, context, capacity * static_cast<std::int64_t>(sizeof(char16_t)));
  char16_t* const text = reinterpret_cast<char16_t*>(block);
  UErrorCode status = U_ZERO_ERROR;
  *outLength = ucnv_toUChars(m_converter.get(), text, static_cast<int32_t>(capacity), in,
                             static_cast<int32_t>(length), &status);
  *out = text;
  velCheckIcuMemory(status, VEL_HERE);
  VEL_ASSERT_NAMED(U_SUCCESS(status), "The text was converted to UTF-16");
}

void I18NConverter::fromUnicode(char** out, int* outLength, const char16_t* in,
                                I18NAllocator allocator, void* context) const {
  UErrorCode status = U_ZERO_ERROR;
  const int32_t needed = ucnv_fromUChars(m_converter.get(), nullptr, 0, in, -1, &status);
  velCheckIcuMemory(status, VEL_HERE);
  VEL_ASSERT_NAMED(U_SUCCESS(status) || status == U_BUFFER_OVERFLOW_ERROR,
                   "The text can be converted from UTF-16");
  const std::int64_t capacity = static_cast<std::int64_t>(needed) + 1;
  *out = allocateBlock(allocator, context, capacity);
  status = U_ZERO_ERROR;
  *outLength =
      ucnv_fromUChars(m_converter.get(), *out, static_cast<int32_t>(capacity), in, -1, &status);
  velCheckIcuMemory(status, VEL_HERE);
  VEL_ASSERT_NAMED(U_SUCCESS(status), "The text was converted from UTF-16");
}

const char* I18NGetPlatformDefaultEncoding() {
  return "UTF-8";
}

I18NString::I18NString(const char* text, const char* encoding) {
  if (encoding != nullptr && std::strcmp(encoding, "UTF-16") == 0) {
    m_text = reinterpret_cast<const char16_t*>(text);
    return;
  }
  const I18NConverter converter(encoding != nullptr ? encoding : I18NGetPlatformDefaultEncoding());
  char16_t* units = nullptr;
  int length = 0;
  converter.toUnicode(&units, &length, text, -1, allocateArray, nullptr);
  const std::unique_ptr<char[]> block(reinterpret_cast<char*>(units));
  m_text.assign(units, static_cast<std::size_t>(length));
}

std::string I18NString::toBytes(const char* encoding) const {
  const I18NConverter converter(encoding != nullptr ? encoding : I18NGetPlatformDefaultEncoding());
  char* bytes = nullptr;
  int length = 0;
  converter.fromUnicode(&bytes, &length, m_text.c_str(), allocateArray, nullptr);
  const std::unique_ptr<char[]> block(bytes);
  return std::string(bytes, static_cast<std::size_t>(length));
}

}  // namespace orvdiff::host
