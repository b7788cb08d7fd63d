// Answers of whois servers: what is read out of them is UTF-8, and a server that they name can be asked.
#include "domain/whois.h"
#include "platform/utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto answer = quillcast::domain::ReadWhoisAnswer({reinterpret_cast<const char*>(bytes), size});
  if (!quillcast::platform::IsUtf8(answer.text)) __builtin_trap();
  if (answer.referral && (answer.referral->host.empty() || answer.referral->port == 0)) __builtin_trap();
  return 0;
}
