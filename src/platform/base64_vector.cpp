// Base64 by vector instructions. Each function is compiled for the instructions it names and only called where the
// processor has them; the rest of the program is built for the plain architecture.
//
// Three bytes become four characters in three steps that are the same at every width: the bytes of a group are laid out
// as (1, 0, 2, 1), so that each 32-bit element holds all its bits; the four six-bit values are moved to bytes of their
// own; the values are mapped to letters.
#include <array>
#include <cstdint>
#include <cstring>

#include "platform/base64_paths.h"

#ifdef __x86_64__
#include <immintrin.h>

#ifndef __clang__  // false alarms inside the 512-bit intrinsics (GCC bug 105593)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define QUILLCAST_AVX2 __attribute__((target("avx2")))
#define QUILLCAST_VBMI __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi")))

namespace quillcast::platform::base64 {
namespace {

QUILLCAST_AVX2 __m256i ToAvx2(__m128i low, __m128i high) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}

QUILLCAST_AVX2 __m128i Load16(const char* in) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(in)); }

// Six-bit values in bytes from elements laid out as (1, 0, 2, 1): the multiplications are shifts by a distance of each
// element's own.
QUILLCAST_AVX2 __m256i Values(__m256i groups) {
  const __m256i first_and_third = _mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00));
  const __m256i second_and_fourth = _mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0));
  return _mm256_or_si256(_mm256_mulhi_epu16(first_and_third, _mm256_set1_epi32(0x04000040)),
                         _mm256_mullo_epi16(second_and_fourth, _mm256_set1_epi32(0x01000010)));
}

// A letter is its value plus a distance that depends on the range the value is in: 13 for A-Z, 0 for a-z, 1 to 10 for
// the digits, 11 and 12 for the rest.
QUILLCAST_AVX2 __m256i Letters(__m256i values) {
  const __m256i capital = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
  const __m256i range =
      _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)), _mm256_and_si256(capital, _mm256_set1_epi8(13)));
  constexpr char kDigit = '0' - 52;
  const __m128i distances = _mm_setr_epi8('a' - 26, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit, kDigit,
                                          kDigit, kDigit, '+' - 62, '/' - 63, 'A', 0, 0);
  return _mm256_add_epi8(_mm256_shuffle_epi8(ToAvx2(distances, distances), range), values);
}

// 32 characters from the bytes 0 to 11 of the lower half and `high_from` to `high_from` + 11 of the upper one.
QUILLCAST_AVX2 __m256i Encode24(__m128i low, __m128i high, char high_from) {
  const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
  const __m256i orders = ToAvx2(order, _mm_add_epi8(order, _mm_set1_epi8(high_from)));
  return Letters(Values(_mm256_shuffle_epi8(ToAvx2(low, high), orders)));
}

QUILLCAST_AVX2 void Store32(char* to, __m256i letters) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), letters); }

QUILLCAST_AVX2 void EncodeByAvx2(char* to, const char* in, std::size_t size) {
  for (; size >= 28; size -= 24, in += 24, to += 32) Store32(to, Encode24(Load16(in), Load16(in + 12), 0));
  EncodePortably(to, in, size);
}

// The third step takes the line's last 24 bytes, of which the second has done the first 15, so that nothing behind the
// line is read.
QUILLCAST_AVX2 void EncodeLinesByAvx2(char* to, const char* in, std::size_t lines) {
  for (; lines > 0; --lines, in += kLineBytes, to += kLineSize) {
    Store32(to, Encode24(Load16(in), Load16(in + 12), 0));
    Store32(to + 32, Encode24(Load16(in + 24), Load16(in + 36), 0));
    Store32(to + 44, Encode24(Load16(in + 33), Load16(in + 41), 4));
    std::memcpy(to + kLineSize - kLineEnd.size(), kLineEnd.data(), kLineEnd.size());
  }
}

struct Vbmi {
  __m512i order;  // of the first 48 bytes
  __m512i shifts;
  __m512i alphabet;
};

constexpr std::array<std::uint8_t, 64> MakeOrder() {
  std::array<std::uint8_t, 64> order{};
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = static_cast<std::uint8_t>(i / 4 * 3 + "\1\0\2\1"[i % 4]);
  return order;
}
constexpr std::array<std::uint8_t, 64> kOrder = MakeOrder();

QUILLCAST_VBMI Vbmi MakeVbmi() {
  // Where each of the eight values of two elements begins in their 64 bits.
  const __m512i shifts = _mm512_set1_epi64(0x3036242A1016040A);
  return {_mm512_loadu_si512(kOrder.data()), shifts, _mm512_loadu_si512(kAlphabet.data())};
}

QUILLCAST_VBMI __m512i Encode48(const Vbmi& vbmi, __m512i bytes, __m512i order) {
  const __m512i values = _mm512_multishift_epi64_epi8(vbmi.shifts, _mm512_permutexvar_epi8(order, bytes));
  return _mm512_permutexvar_epi8(values, vbmi.alphabet);
}

// What the mask leaves out is not touched, nor does it fault.
constexpr std::uint64_t FirstOf(std::size_t bytes) { return (std::uint64_t{1} << bytes) - 1; }

QUILLCAST_VBMI void EncodeByVbmi(char* to, const char* in, std::size_t size) {
  const Vbmi vbmi = MakeVbmi();
  for (; size >= 64; size -= 48, in += 48, to += 64) {
    _mm512_storeu_si512(to, Encode48(vbmi, _mm512_loadu_si512(in), vbmi.order));
  }
  for (std::size_t groups = size / 3; groups > 0; groups = size / 3) {
    const std::size_t step = groups < 15 ? groups : 15;
    const __m512i bytes = _mm512_maskz_loadu_epi8(FirstOf(step * 3), in);
    _mm512_mask_storeu_epi8(to, FirstOf(step * 4), Encode48(vbmi, bytes, vbmi.order));
    size -= step * 3;
    in += step * 3;
    to += step * 4;
  }
  EncodePortably(to, in, size);
}

// The line's last 12 bytes give its last 16 characters, the first four of which are written twice, and the CRLF goes
// out with them.
QUILLCAST_VBMI void EncodeLinesByVbmi(char* to, const char* in, std::size_t lines) {
  const Vbmi vbmi = MakeVbmi();
  const __m512i end_order = _mm512_add_epi8(vbmi.order, _mm512_set1_epi8(45));
  const __m512i line_end = _mm512_set1_epi16('\n' << 8 | '\r');
  for (; lines > 0; --lines, in += kLineBytes, to += kLineSize) {
    const __m512i bytes = _mm512_maskz_loadu_epi8(FirstOf(kLineBytes), in);
    const __m512i end = _mm512_mask_blend_epi8(FirstOf(16), line_end, Encode48(vbmi, bytes, end_order));
    _mm512_storeu_si512(to, Encode48(vbmi, bytes, vbmi.order));
    _mm512_mask_storeu_epi8(to + 60, FirstOf(18), end);
  }
}

}  // namespace

void AddVectorPaths(std::vector<Path>& paths) {
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx2") != 0) paths.push_back({"AVX2", EncodeByAvx2, EncodeLinesByAvx2});
  if (__builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
      __builtin_cpu_supports("avx512vbmi") != 0) {
    paths.push_back({"AVX-512 VBMI", EncodeByVbmi, EncodeLinesByVbmi});
  }
}

}  // namespace quillcast::platform::base64

#else

void quillcast::platform::base64::AddVectorPaths(std::vector<Path>&) {}

#endif
