#include "run/letters_ahead.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "smtp/envelope_address.h"
#include "smtp/result_code.h"

namespace quillcast::run {
namespace {

// So many rows are read ahead, half of them at a time, and so much of them is made; one letter is, however large.
constexpr std::size_t kAhead = 64;
constexpr std::size_t kMostOctets = 1 << 20;

std::size_t OctetsOf(const MadeLetter& letter) { return letter.message->pieces.personal().size(); }

// The report's name for a failure of ours, before any server was asked.
smtp::Outcome FailureOfOurs(smtp::ResultCode code, const Error& error) {
  return {.state = smtp::State::kFailed, .code = code, .reply = {}, .reason = Describe(error)};
}

}  // namespace

LettersAhead::LettersAhead(JournalledRun& run, const message::MessageTemplate& message, On on)
    : run_(run), message_(message) {
  // On a single processor two threads would only take turns.
  if (on == On::kCallersThread || std::thread::hardware_concurrency() < 2) return;
  try {
    thread_.emplace([this] { MakeThem(); });
  } catch (const std::system_error&) {
    thread_.reset();
  }
}

// --- the list ---

Result<bool> LettersAhead::Next(recipients::Recipient& recipient, std::int64_t& position) {
  if (given_) {
    std::unique_lock lock(mutex_);
    if (Withdraw(lock, *given_)) messages_.push_back(std::move(given_->letter.message));
    free_.push_back(std::move(given_));
  }
  ReadOn();
  if (list_.empty()) return *end_;
  given_ = std::move(list_.front());
  list_.pop_front();
  position = given_->position;
  recipient = given_->recipient;  // a letter may be being made of it
  return true;
}

void LettersAhead::ReadOn() {
  const std::size_t most = thread_ ? kAhead : 1;
  if (list_.size() > most / 2 || end_) return;
  const std::size_t first = list_.size();
  while (list_.size() < most && !end_) {
    if (free_.empty()) free_.push_back(std::make_unique<Row>());
    Row& row = *free_.back();
    auto next = run_.Next(row.recipient, row.position);
    if (!next || !*next) {
      end_ = std::move(next);
      break;
    }
    row.before = run_.before();
    list_.push_back(std::move(free_.back()));
    free_.pop_back();
  }
  if (thread_) Want(first);
}

// --- the letters ---

void LettersAhead::Want(std::size_t first) {
  {
    const std::scoped_lock lock(mutex_);
    for (std::size_t i = first; i < list_.size(); ++i) {
      list_[i]->stage = Stage::kWanted;
      wanted_.push_back(list_[i].get());
    }
  }
  changed_.notify_one();
}

// It is the caller's alone then; true where a letter is made.
bool LettersAhead::Withdraw(std::unique_lock<std::mutex>& lock, Row& row) {
  if (row.stage == Stage::kWanted) std::erase(wanted_, &row);
  made_.wait(lock, [&] { return row.stage != Stage::kIsBeingMade; });
  const bool is_made = row.stage == Stage::kMade;
  row.stage = Stage::kNotWanted;
  if (!is_made) return false;
  if (octets_ >= kMostOctets) changed_.notify_one();
  octets_ -= OctetsOf(row.letter);
  return true;
}

MadeLetter LettersAhead::Take(const recipients::Recipient& recipient, std::int64_t position) {
  std::unique_ptr<message::RenderedMessage> message;
  {
    std::unique_lock lock(mutex_);
    const bool is_given = given_ && given_->position == position;
    if (is_given && Withdraw(lock, *given_)) return std::move(given_->letter);
    message = AMessage();
  }
  return Make(recipient, position, std::move(message));
}

void LettersAhead::GiveBack(std::unique_ptr<message::RenderedMessage> message) {
  const std::scoped_lock lock(mutex_);
  messages_.push_back(std::move(message));
}

std::unique_ptr<message::RenderedMessage> LettersAhead::AMessage() {
  if (messages_.empty()) return std::make_unique<message::RenderedMessage>();
  auto message = std::move(messages_.back());
  messages_.pop_back();
  return message;
}

MadeLetter LettersAhead::Make(const recipients::Recipient& recipient, std::int64_t position,
                              std::unique_ptr<message::RenderedMessage> message) const {
  MadeLetter letter{std::move(message)};
  if (const auto& trouble = message_.trouble()) {
    letter.failure = FailureOfOurs(trouble->code, trouble->error);
    return letter;
  }
  const auto address = smtp::EnvelopeAddress(recipient.email());
  if (!address) {
    letter.failure = FailureOfOurs(smtp::ResultCode::kRecipientRefused, address.error());
    return letter;
  }
  const auto rendered = message_.Render(recipient, *address, position, *letter.message);
  if (!rendered) letter.failure = FailureOfOurs(smtp::ResultCode::kOutOfMemory, rendered.error());
  letter.domain = DomainOf(address->domain());
  return letter;
}

void LettersAhead::Forget() {
  if (!thread_) return;
  std::unique_lock lock(mutex_);
  for (const auto& row : list_) {
    if (Withdraw(lock, *row)) messages_.push_back(std::move(row->letter.message));
  }
}

void LettersAhead::EndMaking() {
  if (!thread_) return;
  {
    const std::scoped_lock lock(mutex_);
    ends_ = true;
  }
  changed_.notify_one();
  thread_->join();
  thread_.reset();
  for (const auto& row : list_) row->stage = Stage::kNotWanted;
  if (given_) given_->stage = Stage::kNotWanted;
  wanted_.clear();
}

// --- the thread ---

void LettersAhead::MakeThem() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ends_ || (!wanted_.empty() && octets_ < kMostOctets); });
    if (ends_) return;
    Row& row = *wanted_.front();
    wanted_.pop_front();
    row.stage = Stage::kIsBeingMade;
    auto message = AMessage();
    lock.unlock();
    MadeLetter letter = Make(row.recipient, row.position, std::move(message));
    lock.lock();
    row.letter = std::move(letter);
    row.stage = Stage::kMade;
    octets_ += OctetsOf(row.letter);
    made_.notify_one();
  }
}

}  // namespace quillcast::run
