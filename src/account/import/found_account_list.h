// Collects what the readers of the several programs come upon.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "account/import/found_account.h"
#include "platform/cancel.h"
#include "platform/result.h"

namespace quillcast::account {

class FoundAccountList {
 public:
  explicit FoundAccountList(const platform::CancelToken& cancel) : cancel_(cancel) {}

  // A candidate has a name, an address and a server. Others, and those with a text that cannot be used or an address
  // that is none, are left out; TellLeftOut says how many of a file's.
  void Add(FoundAccount account);
  void TellLeftOut(const std::filesystem::path& file);
  void PassOver(Sentence why);
  // The content of a small file. Nothing where there is none, or it cannot be read, which is told unless it is missing:
  // programs write their files when they have something to keep.
  std::string Read(const std::filesystem::path& file);

  // No reader goes on then.
  bool is_over() const;
  FoundAccounts Take() { return std::move(found_); }

 private:
  const platform::CancelToken& cancel_;
  FoundAccounts found_;
  std::int64_t incomplete_ = 0;  // since TellLeftOut
  std::int64_t unusable_ = 0;    // the same
  std::int64_t no_address_ = 0;  // the same
  bool is_full_ = false;
};

// "587" and what else is a port; empty for all other texts.
std::string PortFrom(std::string_view text);

}  // namespace quillcast::account
