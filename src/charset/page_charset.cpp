#include "charset/page_charset.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>

#include "charset/converter.h"
#include "platform/text.h"

namespace quillcast::charset {
namespace {

// What browsers take in place of a set (the encoding standard of the WHATWG), and which of the library's tables of one
// name they mean.
struct PageSet {
  std::string_view label;
  const char* converter;
};
constexpr auto kPageSets = std::to_array<PageSet>({
    {"ascii", "ibm-5348_P100-1997"},        {"us-ascii", "ibm-5348_P100-1997"},
    {"iso-8859-1", "ibm-5348_P100-1997"},   {"latin1", "ibm-5348_P100-1997"},
    {"iso-8859-9", "ibm-5350_P100-1998"},   {"latin5", "ibm-5350_P100-1998"},
    {"iso-8859-11", "ibm-1162_P100-1999"},  {"tis-620", "ibm-1162_P100-1999"},
    {"iso-8859-8-i", "ibm-5012_P100-1999"}, {"gb2312", "windows-936-2000"},
    {"gb_2312-80", "windows-936-2000"},     {"gbk", "windows-936-2000"},
    {"x-gbk", "windows-936-2000"},          {"big5", "windows-950-2000"},
    {"x-x-big5", "windows-950-2000"},       {"cn-big5", "windows-950-2000"},
    {"shift_jis", "ibm-943_P15A-2003"},     {"shift-jis", "ibm-943_P15A-2003"},
    {"sjis", "ibm-943_P15A-2003"},          {"x-sjis", "ibm-943_P15A-2003"},
    {"cp932", "ibm-943_P15A-2003"},         {"windows-31j", "ibm-943_P15A-2003"},
    {"euc-jp", "ibm-954_P101-2007"},        {"x-euc-jp", "ibm-954_P101-2007"},
    {"euc-kr", "windows-949-2000"},         {"ks_c_5601-1987", "windows-949-2000"},
    {"korean", "windows-949-2000"},         {"cp949", "windows-949-2000"},
    {"ks_c_5601-1989", "windows-949-2000"},
});

// The library's own names may carry options, and lead to files beside its tables.
bool IsPlainName(std::string_view label) {
  constexpr std::size_t kLongest = 40;
  const auto is_of_name = [](char c) { return platform::AsciiIsAlnum(c) || c == '-' || c == '_' || c == ':'; };
  return !label.empty() && label.size() <= kLongest && std::ranges::all_of(label, is_of_name);
}

// Whether a page can be in it at all: its markup is ASCII. The sets of mainframes are not, and UTF-7 and the like hide
// markup in other letters.
bool HoldsAscii(UConverter* converter) {
  constexpr auto kTypes = std::to_array<UConverterType>({UCNV_SBCS, UCNV_DBCS, UCNV_MBCS, UCNV_ISO_2022, UCNV_LATIN_1});
  if (std::ranges::find(kTypes, ucnv_getType(converter)) == kTypes.end()) return false;
  std::string ascii;
  for (char c = ' '; c <= '~'; ++c) ascii += c;
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString read(ascii.data(), static_cast<std::int32_t>(ascii.size()), converter, status);
  return U_SUCCESS(status) != 0 && read == icu::UnicodeString::fromUTF8(ascii);
}

Converter Open(std::string_view label) {
  if (!IsPlainName(label)) return nullptr;
  const auto* const row = std::ranges::find_if(
      kPageSets, [&](const PageSet& one) { return platform::EqualsIgnoringAsciiCase(one.label, label); });
  Converter converter = OpenConverter(row == kPageSets.end() ? label : row->converter);
  return converter && HoldsAscii(converter.get()) ? std::move(converter) : nullptr;
}

}  // namespace

bool IsPageCharset(std::string_view label) { return Open(label) != nullptr; }

std::optional<std::string> DecodePage(std::string_view bytes, std::string_view label) {
  const Converter converter = Open(label);
  if (!converter) return {};
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()), converter.get(), status);
  if (U_FAILURE(status) != 0) return {};
  std::string utf8;
  text.toUTF8String(utf8);
  return utf8;
}

std::optional<std::string> EncodePage(std::string_view html, std::string_view label) {
  const Converter converter = Open(label);
  if (!converter) return {};
  UErrorCode status = U_ZERO_ERROR;
  ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_ESCAPE, UCNV_ESCAPE_XML_DEC, nullptr, nullptr, &status);
  ucnv_setFallback(converter.get(), 0);
  const auto text = icu::UnicodeString::fromUTF8({html.data(), static_cast<std::int32_t>(html.size())});
  std::string bytes;
  std::int32_t size = text.extract(nullptr, 0, converter.get(), status);
  if (status == U_BUFFER_OVERFLOW_ERROR) status = U_ZERO_ERROR;
  bytes.resize(static_cast<std::size_t>(std::max(size, 0)));
  size = text.extract(bytes.data(), size, converter.get(), status);
  if (U_FAILURE(status) != 0) return {};
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

}  // namespace quillcast::charset
