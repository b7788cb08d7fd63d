// One thing that a sender should know of a domain, and what can be done about it.
#pragma once

#include <span>
#include <string_view>

#include "net/dns/dns_answer.h"
#include "platform/sentence.h"

namespace quillcast::domain {

// From what is as it should be to what keeps mail from arriving; then what could not be found out.
enum class Verdict { kGood, kNote, kWeak, kBad, kUnknown };

// What there is to find, by topic.
enum class FindingKind {
  // MX
  kMx,
  kNoSuchDomain,
  kNoMx,
  kNoMailServer,
  kNullMx,
  kNullMxBeside,
  kMxIsAddress,
  kMxWithoutAddress,
  kMxNoAnswer,
  // SPF
  kSpf,
  kNoSpf,
  kTwoSpf,
  kSpfMistake,
  kSpfLoop,
  kSpfBrokenInclude,
  kSpfLookups,
  kSpfVoid,
  kSpfMxHosts,
  kSpfOpen,
  kSpfNobody,
  kSpfNeutral,
  kSpfBehindAll,
  kSpfPtr,
  kSpfCoversServer,
  kSpfMissesServer,
  kSpfStopsAtServer,
  kSpfServerUnknown,
  kSpfNoAnswer,
  // DKIM
  kDkim,
  kNoDkim,
  kTwoDkim,
  kDkimDamaged,
  kDkimRevoked,
  kDkimUnfit,
  kDkimUnknownKind,
  kDkimShort,
  kDkimALittleShort,
  kDkimTests,
  kDkimNotFound,
  kDkimNoAnswer,
  // DMARC
  kDmarc,
  kNoDmarc,
  kTwoDmarc,
  kDmarcMistake,
  kDmarcNone,
  kDmarcPart,
  kDmarcNoReports,
  kDmarcReportsNowhere,
  kDmarcStrictKey,
  kDmarcAlignment,
  kDmarcAlignmentUnknown,
  kDmarcNoAlignment,
  kDmarcNoAlignmentWatched,
  kDmarcNoAnswer,
  // MTA-STS
  kMtaSts,
  kNoMtaSts,
  kMtaStsMistake,
  kMtaStsNoPolicy,
  kMtaStsNotFetched,
  kMtaStsOff,
  kMtaStsOtherServer,
  kMtaStsOtherServerOnTrial,
  kMtaStsNoAnswer,
  // Reverse name
  kReverseName,
  kNoReverseName,
  kProvidersNoReverseName,
  kReverseNameElsewhere,
  kProvidersReverseNameElsewhere,
  kServerWithoutAddress,
  kReverseNameNoAnswer,
};

struct FindingRow {
  FindingKind kind;
  std::string_view topic;  // "SPF"
  std::string_view word;   // "no-spf": the same in every version, for programs; kinds that differ in gravity share it
  Verdict verdict;
};
// Each kind, in its order.
std::span<const FindingRow> FindingRows();

struct Finding {
  FindingKind kind;
  Verdict verdict;  // the kind's own, but for what is held against nobody
  Sentence what;
  Sentence remedy = {};  // empty where nothing is to be done

  std::string_view topic() const;
  std::string_view word() const;
};

Finding Found(FindingKind kind, Sentence what, Sentence remedy = {});

// What is weak or bad.
bool IsToMend(const Finding& finding);

// "good", "note", "weak", "bad", "unknown".
std::string_view WordOf(Verdict verdict);

// The finding of a question that got no answer.
Finding Unanswered(FindingKind kind, std::string_view name, const net::DnsAnswer& answer);

}  // namespace quillcast::domain
