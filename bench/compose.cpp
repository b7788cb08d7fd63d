// Composes messages for N recipients, complete wire bytes, and hashes them:
// bench_compose N HTML_FILE [none|base64|wrapped|boundary].
#include <fmt/format.h>
#include <openssl/evp.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <memory>

#include "document/message_document.h"
#include "message/message_template.h"
#include "platform/clock.h"
#include "platform/entropy.h"

namespace {

using namespace quillcast;  // NOLINT(google-build-using-namespace)

struct FreeDigest {
  void operator()(EVP_MD_CTX* digest) const { EVP_MD_CTX_free(digest); }
};

recipients::Recipient RecipientNumber(std::uint64_t number) {
  recipients::Recipient recipient;
  recipient.values[0] = fmt::format("user{}@example.org", number);
  recipient.values[2] = fmt::format("Ada{}", number % 1000);
  recipient.values[3] = "Lovelace";
  recipient.values[6] = "K\xC3\xB6ln";
  recipient.values[12] = "Analytical Engines";
  return recipient;
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint64_t count = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 100'000;
  document::MessageDocument document;
  if (const auto loaded = document::LoadBody(document, argc > 2 ? argv[2] : "letter.html"); !loaded) {
    fmt::print(stderr, "{}\n", Describe(loaded.error()));
    return ExitCode(loaded.error().failure);
  }
  document.subject = "Spring papers for $*MergeFirstName*$";
  message::MessageOptions options;
  options.sender_name = "Ada";
  options.sender_address = *smtp::Address::From("ada@example.org");
  const std::string_view how = argc > 3 ? argv[3] : "";
  if (how == "none" || how == "wrapped") options.body_encoding = message::TransferEncoding::kNone;
  if (how == "base64") options.body_encoding = message::TransferEncoding::kBase64;
  if (how == "wrapped") options.wrap = 76;
  options.own_boundary_prefix = how == "boundary";
  const platform::SystemClock clock;
  platform::SystemEntropy entropy;

  const auto start = std::chrono::steady_clock::now();
  const message::MessageTemplate message(document, options, "/tmp", clock, entropy);
  const std::unique_ptr<EVP_MD_CTX, FreeDigest> digest(EVP_MD_CTX_new());
  EVP_DigestInit_ex(digest.get(), EVP_sha256(), nullptr);
  message::RenderedMessage rendered;
  std::uint64_t octets = 0;
  for (std::uint64_t number = 1; number <= count; ++number) {
    const auto recipient = RecipientNumber(number);
    IgnoreErrors(message.Render(recipient, *smtp::Address::From(recipient.email()), static_cast<std::int64_t>(number),
                                rendered));  // values without tags
    for (auto bytes = rendered.Next(); bytes && !bytes->empty(); bytes = rendered.Next()) {
      EVP_DigestUpdate(digest.get(), bytes->data(), bytes->size());
      octets += bytes->size();
    }
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  fmt::print("{{\"messages\":{},\"octets\":{},\"seconds\":{:.4f},\"peak_kib\":{}}}\n", count, octets, seconds,
             usage.ru_maxrss);
  return 0;
}
