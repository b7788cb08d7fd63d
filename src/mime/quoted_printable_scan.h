// The two loops that quoted-printable spends its time in, by vector instructions that every processor of the
// architecture has, and portably. Private to the encoders and their test.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace quillcast::mime::quoted_printable {

// What may stand as it is inside a line.
constexpr std::array<bool, 256> MakePlain() {
  std::array<bool, 256> plain{};
  for (std::size_t c = ' '; c <= '~'; ++c) plain[c] = c != '=';
  plain['\t'] = true;
  return plain;
}
inline constexpr std::array<bool, 256> kPlain = MakePlain();

inline bool IsPlain(char c) { return kPlain[static_cast<std::uint8_t>(c)]; }

struct Census {
  std::size_t foreign = 0;  // bytes that are not plain, line feeds included
  std::size_t line_feeds = 0;
  bool operator==(const Census&) const = default;
};

// One byte after the other; the vector way gives the same.
struct PortableScan {
  static Census Count(std::string_view bytes) {
    Census census;
    for (const char c : bytes) {
      census.foreign += IsPlain(c) ? 0 : 1;
      census.line_feeds += c == '\n' ? 1 : 0;
    }
    return census;
  }

  // Copies the plain bytes at the start of `in`, at most `room`, and gives their number. `to` must have space for all
  // of `in`: more bytes than that number may be written.
  static std::size_t CopyPlain(char* to, std::string_view in, std::size_t room) {
    const std::size_t limit = std::min(room, in.size());
    std::size_t at = 0;
    for (; at < limit && IsPlain(in[at]); ++at) to[at] = in[at];
    return at;
  }
};

#ifdef __SSE2__

struct VectorScan {
  static Census Count(std::string_view bytes) {
    const __m128i zero = _mm_setzero_si128();
    __m128i plain = zero;
    __m128i line_feeds = zero;
    std::size_t at = 0;
    for (; bytes.size() - at >= kStep; at += kStep) {
      const __m128i step = Load(bytes.data() + at);
      // A byte that matches is -1; the sums of absolute differences add up sixteen of them.
      plain = _mm_add_epi64(plain, _mm_sad_epu8(_mm_sub_epi8(zero, Plain(step)), zero));
      const __m128i is_line_feed = _mm_cmpeq_epi8(step, _mm_set1_epi8('\n'));
      line_feeds = _mm_add_epi64(line_feeds, _mm_sad_epu8(_mm_sub_epi8(zero, is_line_feed), zero));
    }
    const Census rest = PortableScan::Count(bytes.substr(at));
    return {rest.foreign + at - Sum(plain), rest.line_feeds + Sum(line_feeds)};
  }

  static std::size_t CopyPlain(char* to, std::string_view in, std::size_t room) {
    std::size_t at = 0;
    for (; at < room && in.size() - at >= kStep; at += kStep) {
      const __m128i step = Load(in.data() + at);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to + at), step);
      const auto foreign = ~static_cast<std::uint32_t>(_mm_movemask_epi8(Plain(step))) & 0xFFFF;
      if (foreign != 0) return std::min<std::size_t>(room, at + static_cast<std::size_t>(std::countr_zero(foreign)));
    }
    if (at >= room) return room;
    return at + PortableScan::CopyPlain(to + at, in.substr(at), room - at);
  }

 private:
  static constexpr std::size_t kStep = sizeof(__m128i);

  static __m128i Load(const char* in) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in)); }

  // -1 for each plain byte. The comparisons are signed: what has the eighth bit is less than a blank.
  static __m128i Plain(__m128i bytes) {
    const __m128i printable =
        _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(' ' - 1)), _mm_cmpgt_epi8(_mm_set1_epi8('~' + 1), bytes));
    const __m128i equals = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('='));
    const __m128i tab = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\t'));
    return _mm_or_si128(_mm_andnot_si128(equals, printable), tab);
  }

  static std::size_t Sum(__m128i halves) {
    return static_cast<std::size_t>(_mm_cvtsi128_si64(halves)) +
           static_cast<std::size_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(halves, halves)));
  }
};
using Scan = VectorScan;

#else
using Scan = PortableScan;
#endif

}  // namespace quillcast::mime::quoted_printable
