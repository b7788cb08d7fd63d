#include "charset/charset_rows.h"

#include <memory>
#include <mutex>

namespace quillcast::charset {
namespace {

using Form = CharsetForm;

constexpr std::array kHighHalf = {ByteArea{0, 0, 0x80, 0xFF}};
constexpr std::array kGb2312 = {ByteArea{0xA1, 0xF7, 0xA1, 0xFE}};
constexpr std::array kKsX1001 = {ByteArea{0xA1, 0xFE, 0xA1, 0xFE}};
constexpr std::array kBig5 = {ByteArea{0xA1, 0xF8, 0x40, 0xFE}, ByteArea{0xF9, 0xF9, 0x40, 0xD5}};
constexpr ByteArea kHalfWidth = {0x8E, 0x8E, 0xA1, 0xDF};
constexpr ByteArea kJisX0208 = {0xA1, 0xF4, 0xA1, 0xFE};
constexpr ByteArea kJisX0212 = {0x8FA1, 0x8FED, 0xA1, 0xFE};
constexpr std::array kEucJp = {kHalfWidth, kJisX0208, kJisX0212};
constexpr std::array kShiftJis = {kHalfWidth, kJisX0208};
constexpr std::array kIso2022Jp = {kJisX0208};

// Two rows of 94 characters of EUC share one lead byte.
std::uint32_t ShiftJisOf(std::uint32_t euc) {
  const std::uint32_t lead = euc >> 8;
  const std::uint32_t cell = (euc & 0xFF) - 0xA1;
  if (lead == 0x8E) return euc & 0xFF;
  const std::uint32_t row = lead - 0xA1;
  const std::uint32_t first = row / 2 + (row < 62 ? 0x81 : 0xC1);
  const std::uint32_t second = row % 2 == 1 ? 0x9F + cell : 0x40 + cell + (cell >= 0x3F ? 1 : 0);
  return first << 8 | second;
}

constexpr auto kRows = std::to_array<CharsetRow>({
    {"utf-8", Form::kUtf8, {}, {"utf8", "unicode-1-1-utf-8"}},
    {"utf-7", Form::kUtf7, {}, {"unicode-1-1-utf-7"}},
    {"us-ascii", Form::kPlain, {}, {"ascii", "ansi_x3.4-1968", "iso646-us"}},
    {"iso-8859-1", Form::kPlain, {"ISO-8859-1", kHighHalf}, {"latin1", "iso_8859-1", "l1"}},
    {"iso-8859-2", Form::kPlain, {"ibm-912_P100-1995", kHighHalf}, {"latin2", "iso_8859-2", "l2"}},
    {"iso-8859-3", Form::kPlain, {"ibm-913_P100-2000", kHighHalf}, {"latin3", "iso_8859-3", "l3"}},
    {"iso-8859-4", Form::kPlain, {"ibm-914_P100-1995", kHighHalf}, {"latin4", "iso_8859-4", "l4"}},
    {"iso-8859-5", Form::kPlain, {"ibm-915_P100-1995", kHighHalf}, {"cyrillic", "iso_8859-5"}},
    {"iso-8859-6", Form::kPlain, {"ibm-1089_P100-1995", kHighHalf}, {"arabic", "iso_8859-6"}},
    {"iso-8859-7", Form::kPlain, {"ibm-9005_X110-2007", kHighHalf}, {"greek", "iso_8859-7"}},
    {"iso-8859-8", Form::kPlain, {"ibm-5012_P100-1999", kHighHalf}, {"hebrew", "iso_8859-8"}},
    {"iso-8859-8-i", Form::kPlain, {"ibm-5012_P100-1999", kHighHalf}, {"iso_8859-8-i"}},
    {"iso-8859-9", Form::kPlain, {"ibm-920_P100-1995", kHighHalf}, {"latin5", "iso_8859-9", "l5"}},
    {"iso-8859-11", Form::kPlain, {"iso-8859_11-2001", kHighHalf}, {"iso_8859-11"}},
    {"iso-8859-15", Form::kPlain, {"ibm-923_P100-1998", kHighHalf}, {"latin-9", "iso_8859-15"}},
    {"windows-874", Form::kPlain, {"ibm-1162_P100-1999", kHighHalf}, {"cp874"}},
    {"windows-1250", Form::kPlain, {"ibm-5346_P100-1998", kHighHalf}, {"cp1250", "x-cp1250"}},
    {"windows-1251", Form::kPlain, {"ibm-5347_P100-1998", kHighHalf}, {"cp1251", "x-cp1251"}},
    {"Windows-1252", Form::kPlain, {"ibm-5348_P100-1997", kHighHalf}, {"cp1252", "x-cp1252", "x-ansi"}},
    {"windows-1253", Form::kPlain, {"ibm-5349_P100-1998", kHighHalf}, {"cp1253", "x-cp1253"}},
    {"windows-1254", Form::kPlain, {"ibm-5350_P100-1998", kHighHalf}, {"cp1254", "x-cp1254"}},
    {"windows-1255", Form::kPlain, {"ibm-9447_P100-2002", kHighHalf}, {"cp1255", "x-cp1255"}},
    {"windows-1256", Form::kPlain, {"ibm-9448_X100-2005", kHighHalf}, {"cp1256", "x-cp1256"}},
    {"windows-1257", Form::kPlain, {"ibm-9449_P100-2002", kHighHalf}, {"cp1257", "x-cp1257"}},
    {"windows-1258", Form::kPlain, {"ibm-5354_P100-1998", kHighHalf}, {"cp1258", "x-cp1258"}},
    {"koi8-r", Form::kPlain, {"ibm-878_P100-1996", kHighHalf}, {"koi8", "koi"}},
    {"koi8-u", Form::kPlain, {"ibm-1168_P100-2002", kHighHalf}, {}},
    {"x-user-defined", Form::kPlain, {nullptr, kHighHalf}, {}},
    {"gb2312", Form::kPlain, {"ibm-1383_P110-1999", kGb2312}, {"gb_2312-80", "euc-cn", "csgb2312"}},
    {"hz-gb-2312", Form::kHz, {"ibm-1383_P110-1999", kGb2312}, {"hz"}},
    {"big5", Form::kPlain, {"windows-950-2000", kBig5}, {"cn-big5", "x-x-big5", "csbig5"}},
    {"euc-jp", Form::kPlain, {"ibm-954_P101-2007", kEucJp}, {"x-euc-jp"}},
    {"shift-jis", Form::kPlain, {"ibm-954_P101-2007", kShiftJis, ShiftJisOf}, {"shift_jis", "sjis", "x-sjis"}},
    {"iso-2022-jp", Form::kIso2022Jp, {"ibm-954_P101-2007", kIso2022Jp}, {"csiso2022jp"}},
    {"euc-kr", Form::kPlain, {"windows-949-2000", kKsX1001}, {"cseuckr"}},
    {"iso-ir-149", Form::kPlain, {"windows-949-2000", kKsX1001}, {"ks_c_5601-1987", "ksc5601", "korean"}},
    {"iso-2022-kr", Form::kIso2022Kr, {"windows-949-2000", kKsX1001}, {"csiso2022kr"}},
});

}  // namespace

std::span<const CharsetRow> CharsetRows() { return kRows; }

const CodedCharacters& CharactersOf(const CharsetRow& row) {
  static std::array<std::once_flag, kRows.size()> read;
  static std::array<std::unique_ptr<const CodedCharacters>, kRows.size()> characters;
  const auto index = static_cast<std::size_t>(&row - kRows.data());
  std::call_once(read[index],
                 [&] { characters[index] = std::make_unique<const CodedCharacters>(ReadCharacters(row.source)); });
  return *characters[index];
}

}  // namespace quillcast::charset
