#include "run/what_changed.h"

#include <array>
#include <utility>

#include "account/account_connection.h"
#include "account/key_roles.h"
#include "platform/file.h"
#include "platform/text.h"

namespace quillcast::run {
namespace {

using account::AccountKey;
using account::AccountSettings;

constexpr std::size_t kMostListed = 20;

// What cannot be read through counts as other.
bool HaveSameBytes(int one, int other, const std::filesystem::path& file) {
  std::array<std::string, 2> blocks{std::string(platform::kFileBlock, '\0'), std::string(platform::kFileBlock, '\0')};
  for (;;) {
    const auto got = platform::ReadSome(one, file, blocks[0].data(), platform::kFileBlock);
    const auto got_too = platform::ReadSome(other, file, blocks[1].data(), platform::kFileBlock);
    if (!got || !got_too || *got != *got_too || blocks[0].compare(0, *got, blocks[1], 0, *got) != 0) return false;
    if (*got == 0) return true;
  }
}

enum class Now { kSame, kOther, kGone };

Now LookAt(const std::string& file, const Content& content, const KeptFiles& kept) {
  const auto present = platform::OpenForReading(file);
  const bool was_there = std::holds_alternative<KeptFile>(content);
  if (!was_there || !present) return was_there ? Now::kGone : present ? Now::kOther : Now::kSame;
  const auto frozen = kept.Open(content);
  const auto* fd = std::get_if<platform::UniqueFd>(&frozen);
  return fd != nullptr && HaveSameBytes(fd->get(), present->get(), file) ? Now::kSame : Now::kOther;
}

std::vector<Sentence> ChangesOfFiles(const KeptFiles& kept) {
  std::vector<Sentence> changes;
  const auto look = [&](const std::string& file, const Content& content, SentencePattern<1> other,
                        SentencePattern<1> gone) {
    const Now now = LookAt(file, content, kept);
    if (now == Now::kSame) return;
    const std::string name = platform::Printable(file, 300);
    changes.emplace_back((now == Now::kOther ? other : gone).text(), std::vector<Sentence>{name});
  };
  for (const auto& source : kept.files().sources) {
    look(source.file, source.content, "Since then the letter's file {} has changed.",
         "Since then the letter's file {} has gone, or may no longer be read.");
  }
  for (const auto& attachment : kept.files().attachments) {
    look(attachment.file, attachment.content, "Since then the attachment {} has changed.",
         "Since then the attachment {} has gone, or may no longer be read.");
  }
  for (const auto& picture : kept.files().pictures) {
    if (!IsTaken(picture)) continue;
    look(picture.file, picture.content, "Since then the picture {} has changed.",
         "Since then the picture {} has gone, or may no longer be read.");
  }
  if (changes.size() <= kMostListed) return changes;
  const auto more = std::ssize(changes) - std::int64_t{kMostListed};
  changes.resize(kMostListed);
  changes.push_back(SayOf(more, "And {} more file has changed or gone.", "And {} more files have changed or gone."));
  return changes;
}

// "1 address was taken out or corrected, 2 were added"
Sentence InOneSentence(const ListChanges& changes) {
  std::optional<Sentence> all;
  const auto add = [&](std::int64_t count, SentencePattern<1> one, SentencePattern<1> several) {
    if (count == 0) return;
    const Sentence part = SayOf(count, one, several);
    all = all ? Say("{}, {}", *all, part) : part;
  };
  add(changes.gone, "{} address was taken out or corrected", "{} addresses were taken out or corrected");
  add(changes.added, "{} address is new", "{} addresses are new");
  add(changes.changed, "{} recipient has other fields", "{} recipients have other fields");
  return *all;
}

void AddChangesOfGroup(const MailingInputs& then, const std::optional<PresentGroup>& now,
                       std::vector<Sentence>& changes) {
  const std::string group = platform::Printable(then.group, 80);
  if (!now) {
    changes.push_back(
        Say("There is no group {} any more. The run goes on to those who were in it when it began.", group));
    return;
  }
  if (now->is_another) {
    changes.push_back(
        Say("The group {} of then was deleted, and the one of this name is another. The run goes on to those "
            "who were in the one of then.",
            group));
    return;
  }
  const std::string name = platform::Printable(now->name, 80);
  if (!platform::EqualsIgnoringAsciiCase(now->name, then.group)) {
    changes.push_back(Say("The group {} has the name {} by now.", group, name));
  }
  if (now->changes && *now->changes != ListChanges()) {
    changes.push_back(
        Say("Since then the group {} has changed: {}. The run goes on to those who were in it when it began, with "
            "their addresses and fields of then.",
            name, InOneSentence(*now->changes)));
  } else if (now->recipients != then.recipients) {
    changes.push_back(
        Say("Since then the group {} has changed: {} are in it, not {}. The run goes on to those who were "
            "in it when it began.",
            name, NumberValue(now->recipients), NumberValue(then.recipients)));
  } else if (!now->changes) {
    changes.push_back(
        Say("The group {} has {} recipients as before; so many are not compared one by one. The run goes on to those "
            "who were in it when it began, with their addresses and fields of then.",
            group, NumberValue(now->recipients)));
  }
}

void AddChangesOfAccount(const MailingInputs& then, const PresentInputs& present, std::vector<Sentence>& changes) {
  const AccountSettings& now = present.account;
  const auto differs = [&](AccountKey key) { return then.account[key] != now[key]; };
  if (differs(AccountKey::kEmail)) {
    changes.push_back(Say("Since then the account's address has changed to {}. The letter still comes from {}.",
                          platform::Printable(now[AccountKey::kEmail], 80),
                          platform::Printable(then.account[AccountKey::kEmail], 80)));
  }
  std::string names;
  const auto add = [&](std::string_view name) { names += (names.empty() ? "" : ", ") + std::string(name); };
  for (const auto& row : account::AccountKeyRows()) {
    const bool is_of_message = account::RoleOf(row.key) == account::KeyRole::kTheMessage;
    if (is_of_message && row.key != AccountKey::kEmail && differs(row.key)) add(row.name);
  }
  if (then.body_format != present.body_format) add("Advanced/Encoding");
  if (!names.empty()) changes.push_back(Say("Since then these settings have changed: {}.", names));
  if (account::ServersText(then.account) != account::ServersText(now)) {
    changes.push_back(Say("Since then the account's server has changed. The run goes on by way of {}.",
                          platform::Printable(account::ServersText(now), 300)));
  }
}

}  // namespace

std::vector<Sentence> WhatChanged(const ThawedInputs& frozen, const PresentInputs& present) {
  std::vector<Sentence> changes{"The letter goes out as it was when the run began."};
  for (auto& change : ChangesOfFiles(frozen.files)) changes.push_back(std::move(change));
  AddChangesOfGroup(frozen.inputs, present.group, changes);
  AddChangesOfAccount(frozen.inputs, present, changes);
  // A letter of no file may have been changed where nobody can look.
  if (changes.size() == 1 && !frozen.files.files().sources.empty()) changes.clear();
  return changes;
}

}  // namespace quillcast::run
