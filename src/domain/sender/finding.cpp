#include "domain/sender/finding.h"

#include <array>
#include <utility>

#include "domain/dns_failure.h"

namespace quillcast::domain {
namespace {

using enum FindingKind;

constexpr std::array kRows{
    FindingRow{kMx, "MX", "mx", Verdict::kGood},
    FindingRow{kNoSuchDomain, "MX", "no-such-domain", Verdict::kBad},
    FindingRow{kNoMx, "MX", "no-mx", Verdict::kWeak},
    FindingRow{kNoMailServer, "MX", "no-mail-server", Verdict::kBad},
    FindingRow{kNullMx, "MX", "null-mx", Verdict::kBad},
    FindingRow{kNullMxBeside, "MX", "null-mx-beside", Verdict::kBad},
    FindingRow{kMxIsAddress, "MX", "mx-is-address", Verdict::kBad},
    FindingRow{kMxWithoutAddress, "MX", "mx-without-address", Verdict::kBad},
    FindingRow{kMxNoAnswer, "MX", "no-answer", Verdict::kUnknown},
    FindingRow{kSpf, "SPF", "spf", Verdict::kGood},
    FindingRow{kNoSpf, "SPF", "no-spf", Verdict::kBad},
    FindingRow{kTwoSpf, "SPF", "two-spf", Verdict::kBad},
    FindingRow{kSpfMistake, "SPF", "spf-mistake", Verdict::kBad},
    FindingRow{kSpfLoop, "SPF", "spf-loop", Verdict::kBad},
    FindingRow{kSpfBrokenInclude, "SPF", "spf-broken-include", Verdict::kBad},
    FindingRow{kSpfLookups, "SPF", "spf-lookups", Verdict::kBad},
    FindingRow{kSpfVoid, "SPF", "spf-void", Verdict::kBad},
    FindingRow{kSpfMxHosts, "SPF", "spf-mx-hosts", Verdict::kBad},
    FindingRow{kSpfOpen, "SPF", "spf-open", Verdict::kBad},
    FindingRow{kSpfNobody, "SPF", "spf-nobody", Verdict::kBad},
    FindingRow{kSpfNeutral, "SPF", "spf-neutral", Verdict::kWeak},
    FindingRow{kSpfBehindAll, "SPF", "spf-behind-all", Verdict::kWeak},
    FindingRow{kSpfPtr, "SPF", "spf-ptr", Verdict::kNote},
    FindingRow{kSpfCoversServer, "SPF", "spf-covers-server", Verdict::kGood},
    FindingRow{kSpfMissesServer, "SPF", "spf-misses-server", Verdict::kWeak},
    FindingRow{kSpfStopsAtServer, "SPF", "spf-stops-at-server", Verdict::kWeak},
    FindingRow{kSpfServerUnknown, "SPF", "spf-server-unknown", Verdict::kUnknown},
    FindingRow{kSpfNoAnswer, "SPF", "no-answer", Verdict::kUnknown},
    FindingRow{kDkim, "DKIM", "dkim", Verdict::kGood},
    FindingRow{kNoDkim, "DKIM", "no-dkim", Verdict::kBad},
    FindingRow{kTwoDkim, "DKIM", "two-dkim", Verdict::kBad},
    FindingRow{kDkimDamaged, "DKIM", "dkim-damaged", Verdict::kBad},
    FindingRow{kDkimRevoked, "DKIM", "dkim-revoked", Verdict::kBad},
    FindingRow{kDkimUnfit, "DKIM", "dkim-unfit", Verdict::kBad},
    FindingRow{kDkimUnknownKind, "DKIM", "dkim-unknown-kind", Verdict::kWeak},
    FindingRow{kDkimShort, "DKIM", "dkim-short", Verdict::kBad},
    FindingRow{kDkimALittleShort, "DKIM", "dkim-short", Verdict::kWeak},
    FindingRow{kDkimTests, "DKIM", "dkim-tests", Verdict::kWeak},
    FindingRow{kDkimNotFound, "DKIM", "dkim-not-found", Verdict::kUnknown},
    FindingRow{kDkimNoAnswer, "DKIM", "no-answer", Verdict::kUnknown},
    FindingRow{kDmarc, "DMARC", "dmarc", Verdict::kGood},
    FindingRow{kNoDmarc, "DMARC", "no-dmarc", Verdict::kBad},
    FindingRow{kTwoDmarc, "DMARC", "two-dmarc", Verdict::kBad},
    FindingRow{kDmarcMistake, "DMARC", "dmarc-mistake", Verdict::kBad},
    FindingRow{kDmarcNone, "DMARC", "dmarc-none", Verdict::kWeak},
    FindingRow{kDmarcPart, "DMARC", "dmarc-part", Verdict::kNote},
    FindingRow{kDmarcNoReports, "DMARC", "dmarc-no-reports", Verdict::kNote},
    FindingRow{kDmarcReportsNowhere, "DMARC", "dmarc-reports-nowhere", Verdict::kWeak},
    FindingRow{kDmarcStrictKey, "DMARC", "dmarc-strict-key", Verdict::kWeak},
    FindingRow{kDmarcAlignment, "DMARC", "dmarc-alignment", Verdict::kGood},
    FindingRow{kDmarcAlignmentUnknown, "DMARC", "dmarc-alignment-unknown", Verdict::kUnknown},
    FindingRow{kDmarcNoAlignment, "DMARC", "dmarc-no-alignment", Verdict::kBad},
    FindingRow{kDmarcNoAlignmentWatched, "DMARC", "dmarc-no-alignment", Verdict::kWeak},
    FindingRow{kDmarcNoAnswer, "DMARC", "no-answer", Verdict::kUnknown},
    FindingRow{kMtaSts, "MTA-STS", "mta-sts", Verdict::kGood},
    FindingRow{kNoMtaSts, "MTA-STS", "no-mta-sts", Verdict::kNote},
    FindingRow{kMtaStsMistake, "MTA-STS", "mta-sts-mistake", Verdict::kBad},
    FindingRow{kMtaStsNoPolicy, "MTA-STS", "mta-sts-no-policy", Verdict::kBad},
    FindingRow{kMtaStsNotFetched, "MTA-STS", "mta-sts-not-fetched", Verdict::kUnknown},
    FindingRow{kMtaStsOff, "MTA-STS", "mta-sts-off", Verdict::kNote},
    FindingRow{kMtaStsOtherServer, "MTA-STS", "mta-sts-other-server", Verdict::kBad},
    FindingRow{kMtaStsOtherServerOnTrial, "MTA-STS", "mta-sts-other-server", Verdict::kWeak},
    FindingRow{kMtaStsNoAnswer, "MTA-STS", "no-answer", Verdict::kUnknown},
    FindingRow{kReverseName, "Reverse name", "reverse-name", Verdict::kGood},
    FindingRow{kNoReverseName, "Reverse name", "no-reverse-name", Verdict::kBad},
    FindingRow{kProvidersNoReverseName, "Reverse name", "no-reverse-name", Verdict::kWeak},
    FindingRow{kReverseNameElsewhere, "Reverse name", "reverse-name-elsewhere", Verdict::kBad},
    FindingRow{kProvidersReverseNameElsewhere, "Reverse name", "reverse-name-elsewhere", Verdict::kWeak},
    FindingRow{kServerWithoutAddress, "Reverse name", "server-without-address", Verdict::kWeak},
    FindingRow{kReverseNameNoAnswer, "Reverse name", "no-answer", Verdict::kUnknown},
};
static_assert([] {
  for (std::size_t i = 0; i < kRows.size(); ++i) {
    if (kRows[i].kind != static_cast<FindingKind>(i)) return false;
  }
  return kRows.back().kind == kReverseNameNoAnswer;
}());

const FindingRow& RowOf(FindingKind kind) { return kRows.at(static_cast<std::size_t>(kind)); }

}  // namespace

std::span<const FindingRow> FindingRows() { return kRows; }

std::string_view Finding::topic() const { return RowOf(kind).topic; }

std::string_view Finding::word() const { return RowOf(kind).word; }

Finding Found(FindingKind kind, Sentence what, Sentence remedy) {
  return {kind, RowOf(kind).verdict, std::move(what), std::move(remedy)};
}

bool IsToMend(const Finding& finding) { return finding.verdict == Verdict::kBad || finding.verdict == Verdict::kWeak; }

std::string_view WordOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kGood:
      return "good";
    case Verdict::kNote:
      return "note";
    case Verdict::kWeak:
      return "weak";
    case Verdict::kBad:
      return "bad";
    case Verdict::kUnknown:
      break;
  }
  return "unknown";
}

Finding Unanswered(FindingKind kind, std::string_view name, const net::DnsAnswer& answer) {
  const Error failure = DnsFailure(answer, name, "a record");
  return Found(kind, failure.what, failure.remedy);
}

}  // namespace quillcast::domain
