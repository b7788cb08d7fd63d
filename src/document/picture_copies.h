// Copies of pictures in one folder, each under its own name where that is free, whoever else puts some there at the
// same time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/cancel.h"
#include "platform/result.h"

namespace quillcast::document {

// For one piece of work: what it has looked at it does not look at again, so that its time grows with what it reads.
// The folder is made for the first copy. What was copied stays when the work fails: each copy is whole, and another
// piece of work may name it by then.
class PictureCopies {
 public:
  // A request by `cancel`, which may be null, fails the copy that is under way, with kTryAgain.
  explicit PictureCopies(std::filesystem::path folder, const platform::CancelToken* cancel = nullptr)
      : folder_(std::move(folder)), cancel_(cancel) {}

  // The copy of the file. One with the same content that lies there already is that copy.
  Result<std::filesystem::path> Keep(const std::filesystem::path& file);
  // The same of a picture that the program made, under such a name.
  Result<std::filesystem::path> Keep(std::string_view bytes, const std::filesystem::path& name);

 private:
  // Two contents that differ nearly always differ in this; the bytes are compared where they do not.
  struct Content {
    std::uint64_t size = 0;
    std::uint64_t digest = 0;
    bool operator<(const Content& other) const { return std::pair(size, digest) < std::pair(other.size, other.digest); }
  };
  // The files "NAME", "NAME (2)", ... as far as they were come upon. They are read when one of that size is looked for.
  struct SameName {
    int next = 1;
    std::map<std::uint64_t, std::vector<std::filesystem::path>> unread;  // by size
    std::multimap<Content, std::filesystem::path> read;
  };
  struct Wanted {
    Content content;
    std::filesystem::path name;
    std::function<bool(const std::filesystem::path& other)> is_alike;
    std::function<Result<bool>(const std::filesystem::path& place)> put;  // false: something stands there
  };

  Result<std::filesystem::path> Place(const Wanted& wanted);
  Result<std::filesystem::path> Find(const Wanted& wanted, SameName& same);
  Result<Content> ContentOf(const std::filesystem::path& file) const;

  std::filesystem::path folder_;
  const platform::CancelToken* cancel_;
  std::map<std::filesystem::path, std::filesystem::path> kept_;  // by their originals
  std::map<std::filesystem::path, SameName> names_;
};

}  // namespace quillcast::document
