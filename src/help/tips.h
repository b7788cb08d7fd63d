// Thirty tips in three series of ten. They come in turn, one of each series after the other, so that three days tell of
// three subjects.
#pragma once

#include "platform/sentence.h"
#include "profile/settings_store.h"

namespace quillcast::help {

inline constexpr int kTipSeries = 3;
inline constexpr int kTipsInSeries = 10;

struct Tip {
  const char* text;   // as translations know it
  const char* topic;  // the page of the help that says more
};

// Both from 1.
struct TipPlace {
  int series = 1;
  int place = 1;
  bool operator==(const TipPlace&) const = default;
};

const Tip& TipAt(TipPlace place);
// What the series is about, as translations know it.
const char* SeriesName(int series);
// In the order in which they come, from 1.
int NumberOf(TipPlace place);
// Behind the last one comes the first, and the other way round.
TipPlace NextTip(TipPlace place);
TipPlace TipBefore(TipPlace place);

// The one to begin with: `FirstTip` of `Options` is the series, `TipPlace` the place in it. What is missing or no such
// number counts as 1.
TipPlace FirstTip(const profile::SettingsStore& settings);
Result<void> KeepFirstTip(profile::SettingsStore& settings, TipPlace place);

}  // namespace quillcast::help
