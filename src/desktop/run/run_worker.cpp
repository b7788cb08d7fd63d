#include "desktop/run/run_worker.h"

#include <QMetaObject>

#include "account/account_message.h"
#include "account/account_settings.h"
#include "desktop/widgets/qt_text.h"
#include "message/message_template.h"
#include "run/left_run.h"
#include "run/partial_range.h"
#include "run/run_words.h"

namespace quillcast::desktop {
namespace {

constexpr auto kPatience = std::chrono::seconds(2);  // for the message that is under way

// What the window says, and what the person agreed to, is not so any more.
Error OthersWentOn(std::int64_t left) {
  return {
      Failure::kNotPermitted,
      SayOf(left, "Nothing was sent: another program has gone on with this run meanwhile, and {} recipient is left.",
            "Nothing was sent: another program has gone on with this run meanwhile, and {} recipients are left."),
      "Close this window, and choose the run once more."};
}

}  // namespace

RunWorker::~RunWorker() {
  if (!thread_.joinable()) return;
  const bool is_ended_by_person = cancel_.Requested() != platform::Stop::kNone;
  cancel_.Request();
  {
    std::unique_lock lock(mutex_);
    ending_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, kPatience, [this] { return ended_; });
  }
  cancel_.Request();
  thread_.join();
  if (!is_ended_by_person) KeepIfLeft();
}

void RunWorker::KeepIfLeft() {
  if (left_ != 0 && !said_no_) IgnoreErrors(run::KeepLeftRun(program_.settings, left_));
}

void RunWorker::Start(const document::MessageDocument& document, const run::ChosenGroup& group,
                      const std::optional<run::PartialRange>& range, const Way& way) {
  progress_.Begins(range ? run::SizeOf(*range) : group.recipients);  // until the run knows better
  Run([this, document, group, range, way] {
    auto prepared = run::Prepare(document, group, run::PlaceOf(program_, cancel_));
    prepared.GoOnlyOver(way.route);
    prepared.Ask(way.pace);
    KeepTo(prepared.Pace());
    return prepared.Run(range, *this);
  });
}

void RunWorker::GoOnWith(const GoOnRequest& request, const Way& way) {
  progress_.Begins(request.recipients);
  Run([this, request, way]() -> Result<run::RunSummary> {
    auto prepared = run::PrepareToGoOn(request.run, request.kind, request.choice, run::PlaceOf(program_, cancel_));
    if (!prepared) return prepared.error();
    const std::int64_t left = prepared->group().recipients;
    if (left != request.recipients) return OthersWentOn(left);
    prepared->GoOnlyOver(way.route);
    prepared->Ask(way.pace);
    KeepTo(prepared->Pace());
    const auto changed = prepared->WhatChangedSince();
    if (!changed) return changed.error();
    for (const auto& sentence : *changed) Note(sentence);
    return prepared->Run({}, *this);
  });
}

void RunWorker::Run(std::function<Result<run::RunSummary>()> run) {
  thread_ = std::thread([this, run = std::move(run)] {
    awake_ = program_.power.StayAwake(run::kKeepsAwake);
    auto summary = std::make_shared<Result<run::RunSummary>>(run());
    awake_.reset();
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
      if (*summary && !(*summary)->reached_its_end()) left_ = (*summary)->run;
      progress_.Ends();
    }
    changed_.notify_all();
    QMetaObject::invokeMethod(this, [this, summary] {
      thread_.join();
      if (cancel_.Requested() == platform::Stop::kNone) KeepIfLeft();
      emit Ended(*summary);
    });
  });
}

// What cannot be read the run itself tells of.
void RunWorker::KeepTo(const Result<run::RunPace>& pace) {
  if (!pace || !pace->rules.rate) return;
  const std::lock_guard lock(mutex_);
  progress_.KeepsTo(*pace->rules.rate);
}

// Said at once: the run itself looks when it would come to somebody.
void RunWorker::Hold() {
  hold_.Hold();
  const std::lock_guard lock(mutex_);
  progress_.IsHeld(run::RunProgress::UnderWay::kSomething);
}

void RunWorker::GoOnAgain() {
  hold_.LetGo();
  const std::lock_guard lock(mutex_);
  progress_.IsLetGo();
}

void RunWorker::Held(std::int64_t under_way) {
  using run::RunProgress;
  if (under_way == 0) awake_.reset();
  const std::lock_guard lock(mutex_);
  progress_.IsHeld(under_way > 0 ? RunProgress::UnderWay::kSomething : RunProgress::UnderWay::kNothing);
}

void RunWorker::LetGo() {
  if (!awake_) awake_ = program_.power.StayAwake(run::kKeepsAwake);
  const std::lock_guard lock(mutex_);
  progress_.IsLetGo();
}

RunNews RunWorker::TakeNews() {
  const std::lock_guard lock(mutex_);
  RunNews news = news_;
  news.progress = progress_.Now();
  news_.notes.clear();
  return news;
}

void RunWorker::TakeResults(run::RunResults& results) {
  std::vector<run::RecipientResult> taken;
  std::vector<NotTriedRow> not_tried;
  {
    const std::lock_guard lock(mutex_);
    taken.swap(results_);
    not_tried.swap(not_tried_);
  }
  for (const auto& result : taken) results.Add(result);
  for (const auto& row : not_tried) results.AddNotTried(row.position, row.address, row.stays);
}

void RunWorker::Answer(bool go_on) {
  {
    const std::lock_guard lock(mutex_);
    answer_ = go_on;
    said_no_ = !go_on;
  }
  changed_.notify_all();
}

void RunWorker::Began(const std::filesystem::path& report) {
  const std::lock_guard lock(mutex_);
  news_.report = report;
}

void RunWorker::Finished(const run::RecipientResult& result) {
  const std::lock_guard lock(mutex_);
  results_.push_back(result);
  progress_.Finished(result);
}

void RunWorker::Progress(std::int64_t, std::int64_t total, std::uint64_t sent, std::uint64_t size) {
  const std::lock_guard lock(mutex_);
  progress_.TotalIs(total);
  progress_.GoesOut();
  if (size == 0) return;  // the oldest on its way stays the current one until another is
  news_.sent_octets = sent;
  news_.message_octets = size;
}

bool RunWorker::GoOn(const smtp::Outcome& refusal, int times, std::int64_t left_out) {
  std::unique_lock lock(mutex_);
  answer_.reset();
  progress_.Asks();
  QString why = InWords(run::RefusedTheSame(refusal, times, run::Then::kWaits));
  if (left_out > 0) {
    why += '\n' + Counted(left_out,
                          tr("“Go on” leaves out the recipient who got nothing so far; Runs… sends there once this run "
                             "has ended."),
                          tr("“Go on” leaves out the %1 recipients who got nothing so far; Runs… sends to them once "
                             "this run has ended."));
  }
  emit Asked(why);
  awake_.reset();
  changed_.wait(lock, [this] { return answer_ || ending_; });
  if (answer_.value_or(false)) awake_ = program_.power.StayAwake(run::kKeepsAwake);
  progress_.Answered();
  return answer_.value_or(false);
}

void RunWorker::NotTried(std::int64_t position, const std::string& address, run::ResultState stays) {
  const std::lock_guard lock(mutex_);
  not_tried_.push_back({position, address, stays});
}

void RunWorker::Waits(const Sentence& why, run::Moment until) {
  const std::lock_guard lock(mutex_);
  progress_.Waits(why, until);
}

void RunWorker::WayLost(const Sentence& why, run::Moment until) {
  const std::lock_guard lock(mutex_);
  progress_.WayLost(why, until);
}

void RunWorker::Note(const Sentence& sentence) {
  const std::lock_guard lock(mutex_);
  news_.notes.push_back(sentence);
}

}  // namespace quillcast::desktop
