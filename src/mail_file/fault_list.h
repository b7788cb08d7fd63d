// What a load found wrong, in the order in which it was met.
#pragma once

#include <utility>
#include <vector>

#include "mail_file/limits.h"
#include "mail_file/load_code.h"

namespace quillcast::mail_file {

class FaultList {
 public:
  // Beyond kMostFaults nothing is added.
  void Add(LoadCode code, Sentence what) {
    if (faults_.size() < kMostFaults) faults_.push_back({code, std::move(what)});
  }
  std::vector<LoadFault> Take() { return std::move(faults_); }

 private:
  std::vector<LoadFault> faults_;
};

}  // namespace quillcast::mail_file
