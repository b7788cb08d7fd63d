// Times the encoders against plain loops over a table, in blocks that stay in the cache: bench_encoders prints one JSON
// object a line. Each figure is the best of many short measurements taken in turn.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "mime/quoted_printable.h"
#include "mime/quoted_printable_scan.h"
#include "platform/base64.h"
#include "platform/base64_paths.h"

namespace {

using namespace quillcast;  // NOLINT(google-build-using-namespace)

constexpr std::size_t kBlock = 57 * 1024;
constexpr int kRounds = 400;

using Encoder = std::function<void(std::string_view, std::string&)>;

void PlainBase64(std::string_view in, std::string& out) {
  for (std::size_t i = 0; i + 3 <= in.size(); i += 3) {
    const auto byte = [&](std::size_t at) { return std::uint32_t{static_cast<std::uint8_t>(in[i + at])}; };
    const std::uint32_t bits = byte(0) << 16 | byte(1) << 8 | byte(2);
    for (int shift = 18; shift >= 0; shift -= 6) out += platform::base64::kAlphabet[(bits >> shift) & 63];
    if ((i + 3) % platform::base64::kLineBytes == 0) out += "\r\n";
  }
}

// As the text encoder, but for what must not begin or end a line.
void PlainQuotedPrintable(std::string_view in, std::string& out) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::size_t column = 0;
  for (std::size_t i = 0; i < in.size(); ++i) {
    if (in[i] == '\r' && i + 1 < in.size() && in[i + 1] == '\n') {
      out += "\r\n";
      column = 0;
      ++i;
      continue;
    }
    const bool plain = mime::quoted_printable::IsPlain(in[i]);
    if (column + (plain ? 1 : 3) > 75) {
      out += "=\r\n";
      column = 0;
    }
    const auto byte = static_cast<std::uint8_t>(in[i]);
    if (plain) {
      out += in[i];
    } else {
      out += {'=', kHex[byte >> 4], kHex[byte & 15]};
    }
    column += plain ? 1 : 3;
  }
}

// Words of two to ten letters in lines of prose; `foreign` of a hundred letters are two bytes of UTF-8.
std::string Prose(unsigned foreign) {
  std::mt19937 random(1);
  std::string text;
  for (std::size_t column = 0; text.size() < kBlock;) {
    const std::size_t letters = 2 + random() % 9;
    for (std::size_t i = 0; i < letters; ++i) {
      text +=
          random() % 100 < foreign ? std::string("\xC3\xA9") : std::string(1, static_cast<char>('a' + random() % 26));
    }
    column += letters + 1;
    text += column > 70 ? "\r\n" : " ";
    if (column > 70) column = 0;
  }
  return text;
}

std::string Bytes(unsigned from) {
  std::mt19937 random(2);
  std::string bytes(kBlock, '\0');
  for (char& c : bytes) c = static_cast<char>(from + random() % (256 - from));
  return bytes;
}

double Seconds(const Encoder& encode, std::string_view in, std::string& out) {
  const auto start = std::chrono::steady_clock::now();
  out.clear();
  encode(in, out);
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void Compare(std::string_view name, std::string_view in, const Encoder& ours, const Encoder& plain) {
  std::array<std::string, 2> out;
  std::array<double, 2> best = {1e9, 1e9};
  for (int round = 0; round < kRounds; ++round) {
    best[0] = std::min(best[0], Seconds(ours, in, out[0]));
    best[1] = std::min(best[1], Seconds(plain, in, out[1]));
  }
  const auto mb = [&](double seconds) { return static_cast<double>(in.size()) / seconds / 1e6; };
  fmt::print(
      "{{\"name\":\"{}\",\"mb_per_second\":{:.0f},\"plain_mb_per_second\":{:.0f},\"octets_in\":{},\"octets_out\":{}}}"
      "\n",
      name, mb(best[0]), mb(best[1]), in.size(), out[0].size());
}

void Base64Lines(std::string_view in, std::string& out) {
  platform::Base64LineEncoder encoder;
  encoder.Encode(in, out);
  encoder.Finish(out);
}

void QuotedPrintableText(std::string_view in, std::string& out) {
  std::size_t column = 0;
  mime::AppendQuotedPrintable(out, in, column, true);
}

void QuotedPrintableFile(std::string_view in, std::string& out) {
  mime::QuotedPrintableFileEncoder encoder;
  encoder.Encode(in, out);
  encoder.Finish(out);
}

}  // namespace

int main() {
  const std::string any = Bytes(0);
  Compare(fmt::format("base64 in lines ({})", platform::base64::Paths().back().name), any, Base64Lines, PlainBase64);
  for (const platform::base64::Path& path : platform::base64::Paths()) {
    const auto encode_lines = [&](std::string_view in, std::string& out) {
      out.resize(in.size() / platform::base64::kLineBytes * platform::base64::kLineSize);
      path.encode_lines(out.data(), in.data(), in.size() / platform::base64::kLineBytes);
    };
    Compare(fmt::format("base64 in lines, path {}", path.name), any, encode_lines, PlainBase64);
  }
  struct Input {
    std::string_view name;
    std::string bytes;
  };
  const Input inputs[] = {{"ASCII", Prose(0)},
                          {"3 % UTF-8 letters", Prose(3)},
                          {"10 % UTF-8 letters", Prose(10)},
                          {"all 8-bit", Bytes(128)}};
  for (const auto& [name, bytes] : inputs) {
    Compare(fmt::format("quoted-printable, {}", name), bytes, QuotedPrintableText, PlainQuotedPrintable);
    Compare(fmt::format("quoted-printable file, {}", name), bytes, QuotedPrintableFile, PlainQuotedPrintable);
  }
  return 0;
}
