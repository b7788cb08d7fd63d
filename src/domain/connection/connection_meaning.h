// What a connection test means for the account, in plain words.
#pragma once

#include <vector>

#include "domain/connection/connection_test.h"
#include "platform/sentence.h"

namespace quillcast::domain {

// What it means, and what to set in the account or to look at next; of a list also what became of the others.
std::vector<Sentence> MeaningOf(const ConnectionTest& test);

}  // namespace quillcast::domain
