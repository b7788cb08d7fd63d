#include "document/signature.h"

#include <algorithm>
#include <array>

#include "document/link_trouble.h"
#include "html/html_tokenizer.h"
#include "platform/text.h"
#include "profile/main_window_contents.h"

namespace quillcast::document {
namespace {

// Where a widely used reader cuts a message off.
constexpr std::size_t kCutAt = std::size_t{102} * 1024;

// Elements and attributes that run something.
class ScriptSearch final : public html::HtmlVisitor {
 public:
  bool found = false;
  bool has_forms = false;  // or frames and the like, which are taken out
  bool has_tags = false;

 private:
  void StartTag(const html::HtmlTokenizer& tokenizer, const html::HtmlToken& token) override {
    has_tags = true;
    found = found || token.name == "script";
    has_forms = has_forms || IsTakenOut(token.name);
    for (const auto& attribute : token.attributes) found = found || Runs(tokenizer, token, attribute);
  }
  void StyleSheet(std::string_view) override {}

  static bool IsTakenOut(std::string_view name) {
    constexpr auto kTakenOut =
        std::to_array<std::string_view>({"iframe", "frame", "object", "embed", "form", "applet"});
    return std::find(kTakenOut.begin(), kTakenOut.end(), name) != kTakenOut.end();
  }

  static bool Runs(const html::HtmlTokenizer& tokenizer, const html::HtmlToken& token,
                   const html::HtmlAttribute& attribute) {
    const auto name =
        tokenizer.Source(token).substr(attribute.name_begin - token.begin, attribute.name_end - attribute.name_begin);
    if (platform::StartsWithIgnoringAsciiCase(name, "on")) return true;
    const std::string scheme = SchemeOf(html::DecodeCharacterReferences(tokenizer.RawValue(attribute), true));
    return scheme == "javascript" || scheme == "vbscript";
  }
};

}  // namespace

Result<Signature> LoadSignature(const profile::SettingsStore& settings) {
  const auto status = settings.Read(profile::kSignatureSection, profile::kSignatureStatus, "0");
  if (!status) return status.error();
  auto html = settings.Read(profile::kSignatureSection, profile::kSignatureMessage, kBuiltInSignature);
  if (!html) return html.error();
  return Signature{platform::ParseWholeNumber(*status) == 1, std::move(*html)};
}

Result<void> SaveSignature(const Signature& signature, profile::SettingsStore& settings) {
  const auto values = std::to_array<profile::SettingValue>(
      {{profile::kSignatureStatus, signature.is_on ? "1" : "0"}, {profile::kSignatureMessage, signature.html}});
  return settings.WriteAll(profile::kSignatureSection, values);
}

Result<bool> ResetSignature(profile::SettingsStore& settings, platform::Prompts& prompts) {
  if (prompts.Ask(kResetSignatureQuestion) != platform::Answer::kYes) return false;
  const auto deleted = settings.DeleteSection(profile::kSignatureSection);
  return deleted ? Result<bool>(true) : deleted.error();
}

std::vector<Sentence> SignatureNotes(std::string_view html) {
  ScriptSearch search;
  html::VisitTagsAndStyles(html, search);
  std::vector<Sentence> notes;
  if (search.found)
    notes.emplace_back("The signature holds a script. Mail programs run none, and some refuse such mail.");
  if (search.has_forms)
    notes.emplace_back("The signature holds a form, a frame or an object, which mail programs take out.");
  if (!search.has_tags && !platform::Trim(html).empty()) {
    notes.emplace_back(
        "The signature holds no HTML; its lines run together. A text file whose name ends in .txt keeps them.");
  }
  if (html.size() > kCutAt) {
    notes.push_back(Say("The signature takes {} of each message, and some readers cut messages over 102 KiB.",
                        platform::HumanSize(html.size())));
  }
  return notes;
}

}  // namespace quillcast::document
