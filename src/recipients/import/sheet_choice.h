// Which sheet of a spreadsheet is read: the one that somebody chose, else the one that is shown.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/sentence.h"

namespace quillcast::recipients {

// Of one file. What is imported is of the sheet that is shown, whatever became of the file since; none is named before
// the first look.
class SheetChoice {
 public:
  void Pick(std::string sheet) {
    picked_ = std::move(sheet);
    wanted_.clear();
  }
  // By a mapping. The file may lack it; the next look tells.
  void Want(std::string sheet) { wanted_ = std::move(sheet); }

  const std::string& ToRead() const { return wanted_.empty() ? Otherwise() : wanted_; }
  // Where the file lacks the one that is wanted.
  const std::string& Otherwise() const { return picked_.empty() ? shown_ : picked_; }
  // To be kept with a mapping; empty where the first that is filled will do.
  const std::string& picked() const { return picked_; }

  // What a look read; empty where it was read as what has no sheets, which changes no choice. Gives what it lacks.
  std::optional<Sentence> Take(const std::string& read);

 private:
  std::string picked_;
  std::string wanted_;
  std::string shown_;
};

}  // namespace quillcast::recipients
