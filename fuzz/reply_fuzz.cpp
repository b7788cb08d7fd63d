// Replies from a hostile server: read in one piece and octet by octet, the two must come to the same.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "smtp/capabilities.h"
#include "smtp/reply.h"

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
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  ReplyReader whole;
  std::string told_whole;
  whole.Add(text);
  Drain(whole, told_whole);

  ReplyReader dripped;
  std::string told_dripped;
  for (const char c : text) {
    dripped.Add({&c, 1});
    Drain(dripped, told_dripped);
  }
  if (told_whole != told_dripped) std::abort();
  return 0;
}
