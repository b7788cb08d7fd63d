#include "smtp/sasl/ntlm.h"

#include <openssl/evp.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "platform/utf8.h"
#include "smtp/sasl/digest.h"
#include "smtp/sasl/md4.h"

namespace quillcast::smtp {
namespace {

// NegotiateFlags (2.2.2.5).
constexpr std::uint32_t kUnicode = 0x00000001;
constexpr std::uint32_t kTargetInfo = 0x00800000;
// These two, and: request target, NTLM, always sign, extended session security.
constexpr std::uint32_t kAsked = 0x00888205;

constexpr std::string_view kSignature{"NTLMSSP\0", 8};
constexpr std::size_t kNonceSize = 8;
constexpr std::size_t kMicSize = 16;

// Where things stand in the challenge (2.2.1.2). Old servers end its head after the nonce.
constexpr std::size_t kTargetNameAt = 12;
constexpr std::size_t kFlagsAt = 20;
constexpr std::size_t kNonceAt = 24;
constexpr std::size_t kTargetInfoAt = 40;
constexpr std::size_t kShortHead = 32;
constexpr std::size_t kWholeHead = 48;

// Where the payload of the answer begins (2.2.1.3): after the version, and with a code after that.
constexpr std::size_t kPlainHead = 72;
constexpr std::size_t kMicAt = kPlainHead;
constexpr std::size_t kSealedHead = kMicAt + kMicSize;

// Attributes of the target information (2.2.2.1).
constexpr std::uint16_t kEndOfList = 0;
constexpr std::uint16_t kAvFlags = 6;
constexpr std::uint16_t kAvTimestamp = 7;
constexpr std::uint32_t kMicPresent = 0x2;

struct Attribute {
  std::uint16_t id;
  std::string_view value;
};

std::uint32_t Number(std::string_view octets) {
  std::uint32_t value = 0;
  for (std::size_t n = octets.size(); n > 0; --n) value = value << 8 | static_cast<unsigned char>(octets[n - 1]);
  return value;
}

Error Broken() { return {Failure::kBadData, "The server's NTLM challenge makes no sense."}; }

// --- reading ---

struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// The place that a field of eight octets (length, room, offset) points to. An empty one may point anywhere.
std::optional<Span> PlaceOf(std::string_view message, std::size_t field, std::size_t head) {
  const std::size_t length = Number(message.substr(field, 2));
  const std::size_t offset = Number(message.substr(field + 4, 4));
  if (length == 0) return Span{};
  if (offset < head || offset > message.size() || length > message.size() - offset) return {};
  return Span{offset, offset + length};
}

bool Overlap(const Span& a, const Span& b) { return a.begin < b.end && b.begin < a.end; }

// The attributes before the one that ends the list; nothing when it does not end, or one comes twice.
std::optional<std::vector<Attribute>> AttributesOf(std::string_view list) {
  std::vector<Attribute> out;
  while (list.size() >= 4) {
    const auto id = static_cast<std::uint16_t>(Number(list.substr(0, 2)));
    const std::size_t length = Number(list.substr(2, 2));
    if (id == kEndOfList) return length == 0 ? std::optional(std::move(out)) : std::nullopt;
    if (length > list.size() - 4) return {};
    const bool twice = std::any_of(out.begin(), out.end(), [&](const Attribute& known) { return known.id == id; });
    if (twice) return {};
    out.push_back({id, list.substr(4, length)});
    list.remove_prefix(4 + length);
  }
  return {};
}

std::string ListOf(const std::vector<Attribute>& attributes) {
  std::string out;
  for (const Attribute& attribute : attributes) {
    AppendLittleEndian(out, attribute.id, 2);
    AppendLittleEndian(out, attribute.value.size(), 2);
    out += attribute.value;
  }
  AppendLittleEndian(out, kEndOfList, 4);
  return out;
}

bool TakeTargetInfo(std::string_view list, NtlmChallenge& out) {
  const auto attributes = AttributesOf(list);
  if (!attributes) return false;
  for (const Attribute& attribute : *attributes) {
    if (attribute.id == kAvTimestamp) out.timestamp = attribute.value;
    if (attribute.id == kAvTimestamp && attribute.value.size() != 8) return false;
    if (attribute.id == kAvFlags && attribute.value.size() != 4) return false;
  }
  out.target_info = ListOf(*attributes);
  return true;
}

// --- writing ---

// UTF-16LE; what is not UTF-8 becomes U+FFFD.
platform::Secret Wide(std::string_view text, bool upper = false) {
  std::string out;
  out.reserve(text.size() * 2);  // a code point takes no more octets in UTF-16 than twice those in UTF-8
  while (!text.empty()) {
    const auto [code, length] = platform::DecodeUtf8(text);
    text.remove_prefix(length);
    char32_t wide = code == platform::kNotUtf8 ? U'\uFFFD' : code;
    if (upper) wide = static_cast<char32_t>(u_toupper(static_cast<UChar32>(wide)));
    if (wide > 0xFFFF) {
      AppendLittleEndian(out, 0xD800 + ((wide - 0x10000) >> 10), 2);
      AppendLittleEndian(out, 0xDC00 + ((wide - 0x10000) & 0x3FF), 2);
    } else {
      AppendLittleEndian(out, wide, 2);
    }
  }
  return platform::Secret(std::move(out));
}

// The target information as it goes back: with the flag that says that the messages are sealed.
std::string WithMicFlag(std::string_view target_info) {
  auto attributes = AttributesOf(target_info).value_or(std::vector<Attribute>());
  std::string flags;
  const auto known =
      std::find_if(attributes.begin(), attributes.end(), [](const Attribute& a) { return a.id == kAvFlags; });
  AppendLittleEndian(flags, kMicPresent | (known == attributes.end() ? 0 : Number(known->value)), 4);
  if (known == attributes.end()) {
    attributes.push_back({kAvFlags, flags});
  } else {
    known->value = flags;
  }
  return ListOf(attributes);
}

// The head's fields and the payload that they point into.
class Answer {
 public:
  explicit Answer(std::size_t head) : head_size_(head) {
    head_ += kSignature;
    AppendLittleEndian(head_, 3, 4);
  }
  void Add(std::string_view octets) {
    AppendLittleEndian(head_, octets.size(), 2);
    AppendLittleEndian(head_, octets.size(), 2);
    AppendLittleEndian(head_, head_size_ + payload_.size(), 4);
    payload_ += octets;
  }
  std::string Finish(std::uint32_t flags) {
    AppendLittleEndian(head_, flags, 4);
    head_.resize(head_size_, '\0');  // version, and room for the code
    return head_ + payload_;
  }

 private:
  std::size_t head_size_;
  std::string head_;
  std::string payload_;
};

}  // namespace

NtlmIdentity::NtlmIdentity(std::string_view account) : user(account) {
  const auto backslash = account.find('\\');
  if (backslash == std::string_view::npos) return;
  domain = account.substr(0, backslash);
  user = account.substr(backslash + 1);
}

std::string NtlmTime(std::int64_t unix_seconds) {
  constexpr std::int64_t kFrom1601To1970 = 11'644'473'600;
  constexpr std::int64_t kTicks = 10'000'000;
  std::string out;
  AppendLittleEndian(out, static_cast<std::uint64_t>((unix_seconds + kFrom1601To1970) * kTicks), 8);
  return out;
}

std::string NtlmNegotiate() {
  std::string out(kSignature);
  AppendLittleEndian(out, 1, 4);
  AppendLittleEndian(out, kAsked, 4);
  out.append(16, '\0');  // neither domain nor workstation
  return out;
}

Result<NtlmChallenge> ParseNtlmChallenge(std::string_view message) {
  if (message.size() < kShortHead || !message.starts_with(kSignature)) return Broken();
  if (Number(message.substr(kSignature.size(), 4)) != 2) return Broken();
  NtlmChallenge out;
  out.flags = Number(message.substr(kFlagsAt, 4));
  out.nonce = message.substr(kNonceAt, kNonceSize);
  const bool has_info = (out.flags & kTargetInfo) != 0;
  if (has_info && message.size() < kWholeHead) return Broken();
  const std::size_t head = has_info ? kWholeHead : kShortHead;
  const auto name = PlaceOf(message, kTargetNameAt, head);
  if (!name) return Broken();
  if (!has_info) return out;
  const auto info = PlaceOf(message, kTargetInfoAt, head);
  if (!info || Overlap(*name, *info)) return Broken();
  if (info->end != 0 && !TakeTargetInfo(message.substr(info->begin, info->end - info->begin), out)) return Broken();
  return out;
}

platform::Secret NtlmKey(const NtlmIdentity& identity, std::string_view password) {
  const platform::Secret hash = Md4(Wide(password).view());
  const std::string name = std::string(Wide(identity.user, true).view()) + std::string(Wide(identity.domain).view());
  return Hmac(EVP_md5(), hash.view(), name);
}

Result<platform::Secret> NtlmAuthenticate(const NtlmClient& client, std::string_view negotiate,
                                          std::string_view message) {
  const auto challenge = ParseNtlmChallenge(message);
  if (!challenge) return challenge.error();
  if ((challenge->flags & kUnicode) == 0) return Error{Failure::kBadData, "The server's NTLM knows no Unicode."};
  const bool sealed = !challenge->timestamp.empty();
  const NtlmIdentity identity(client.account);
  const platform::Secret key = NtlmKey(identity, client.password);

  // NTLMv2_CLIENT_CHALLENGE (2.2.2.7).
  std::string blob("\x01\x01\0\0\0\0\0\0", 8);
  blob += sealed ? challenge->timestamp : client.time;
  blob.append(client.nonce).append(4, '\0');
  blob.append(sealed ? WithMicFlag(challenge->target_info) : challenge->target_info).append(4, '\0');

  const platform::Secret proof = Hmac(EVP_md5(), key.view(), challenge->nonce + blob);
  const platform::Secret old_proof = Hmac(EVP_md5(), key.view(), challenge->nonce + std::string(client.nonce));
  if (proof.empty()) return Error{Failure::kUnavailable, "This computer's policy does not allow NTLM."};

  Answer answer(sealed ? kSealedHead : kPlainHead);
  // With a timestamp the older response is left out (3.1.5.1.2).
  answer.Add(sealed ? std::string(24, '\0') : std::string(old_proof.view()) + std::string(client.nonce));
  answer.Add(std::string(proof.view()) + blob);
  answer.Add(Wide(identity.domain).view());
  answer.Add(Wide(identity.user).view());
  answer.Add("");  // workstation
  answer.Add("");  // session key: nothing is signed or sealed after signing in
  std::string out = answer.Finish(challenge->flags & kAsked);
  if (!sealed) return platform::Secret(std::move(out));

  const platform::Secret session_key = Hmac(EVP_md5(), key.view(), proof.view());
  const platform::Secret mic = Hmac(EVP_md5(), session_key.view(), std::string(negotiate).append(message).append(out));
  return platform::Secret(out.replace(kMicAt, kMicSize, mic.view()));
}

}  // namespace quillcast::smtp
