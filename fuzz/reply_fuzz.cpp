// Replies from a hostile server: read in one piece, octet by octet and in large pieces, they must come to the same.
#include <array>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "smtp/capabilities.h"
#include "smtp/client/reply_reader.h"

namespace {

using quillcast::smtp::ReplyReader;

void Drain(ReplyReader& reader, std::string& told) {
  ReplyReader::Step step = reader.Next();
  for (; step == ReplyReader::Step::kReply; step = reader.Next()) {
    const auto& reply = reader.reply();
    if (reply.code < 200 || reply.code > 599 || reply.text.find('\0') != std::string::npos) std::abort();
    quillcast::smtp::ParseCapabilities(reply.text);
    told.append(reader.lines()).append(reply.enhanced).append("|").append(reply.text).append(";");
  }
  if (step == ReplyReader::Step::kSenseless) told = "senseless: " + reader.complaint();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const std::array<std::size_t, 3> pieces = {size, 1, 4500};
  std::array<std::string, 3> told;
  for (std::size_t n = 0; n < pieces.size(); ++n) {
    ReplyReader reader;
    for (std::size_t at = 0; at < size; at += pieces[n]) {
      reader.Add(text.substr(at, pieces[n]));
      Drain(reader, told[n]);
    }
  }
  if (told[0] != told[1] || told[0] != told[2]) std::abort();
  return 0;
}
