// Challenges from a hostile server, to each mechanism that reads them.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "smtp/sasl/ntlm.h"
#include "smtp/sasl/sasl_mechanism.h"

namespace {

namespace smtp = quillcast::smtp;

const std::string kNonce(24, 'n');
const smtp::Credentials kCredentials{"ada", "s3cret", kNonce};

// Says the challenge again, so that the second step is reached too. No mechanism may take it for a proof.
void Talk(smtp::SaslMechanism& mechanism, std::string_view challenge) {
  mechanism.Start();
  if (mechanism.Step(challenge)) quillcast::IgnoreErrors(mechanism.Step(challenge));
}

// Rounds of work are the one thing that may take long; here they must not.
bool AsksForWork(std::string_view challenge) {
  const auto at = challenge.find(",i=");
  return at != std::string_view::npos && challenge.substr(at + 3).find_first_not_of("0123456789") > 4;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string challenge(reinterpret_cast<const char*>(bytes), size);
  Talk(*smtp::MakeNtlm(kCredentials), challenge);
  Talk(*smtp::MakeCramMd5(kCredentials), challenge);
  if (AsksForWork(challenge)) return 0;
  const auto scram = smtp::MakeScramSha256(kCredentials);
  Talk(*scram, challenge);
  if (scram->Finish()) std::abort();
  return 0;
}
