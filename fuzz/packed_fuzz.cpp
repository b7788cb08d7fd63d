// Any bytes taken for what parts are packed in, and for what one is called: compressed rich text and its words, rich
// text alone, BinHex and a name. All of it stays within bounds, and is the same however it is cut.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "mail_file/bin_hex.h"
#include "mail_file/compressed_rtf.h"
#include "mail_file/rtf_text.h"
#include "mail_file/safe_part_name.h"
#include "platform/utf8.h"

namespace {

using namespace quillcast;
using namespace quillcast::mail_file;

void Expect(bool holds) {
  if (!holds) std::abort();
}

template <typename Decoder>
std::string Decoded(Decoder decoder, std::string_view bytes, std::size_t cut) {
  std::string out;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(cut, bytes.size()))) decoder.Decode(bytes.substr(0, cut), out);
  if constexpr (requires { decoder.Finish(out); }) decoder.Finish(out);
  return out;
}

template <typename Decoder>
std::string CheckDecoder(std::string_view bytes, std::size_t growth) {
  std::string whole = Decoded(Decoder(), bytes, bytes.size());
  Expect(whole == Decoded(Decoder(), bytes, 1));
  Expect(whole.size() <= growth * bytes.size() + 2'000'000);
  return whole;
}

void CheckName(std::string_view name) {
  const std::string safe = SafePartName(name);
  Expect(safe.size() <= 220 && platform::IsUtf8(safe) && SafePartName(safe) == safe);
  Expect(safe.find_first_of(std::string_view("/\\\0:", 4)) == std::string::npos);
  Expect(safe.empty() || std::string_view(".-~ ").find(safe.front()) == std::string_view::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::string rtf = CheckDecoder<CompressedRtfDecoder>(bytes, 9);
  for (const std::string_view text : {std::string_view(rtf), bytes})
    Expect(platform::IsUtf8(CheckDecoder<RtfTextDecoder>(text, 3)));
  CheckDecoder<BinHexDecoder>(bytes, 20);
  CheckName(bytes.substr(0, 1000));
  return 0;
}
