#include "domain/sender/sender_lookup.h"

#include <future>

#include "net/dns/dns_client.h"

namespace quillcast::domain {
namespace {

class Lookup {
 public:
  Lookup(const SenderQuestion& question, const SenderLookup& lookup, const net::Patience& patience)
      : question_(question), lookup_(lookup), patience_(patience), client_(lookup.servers) {}

  Result<SenderReport> Run() {
    Look();
    while (true) {
      if (Result<void> done = client_.Run(patience_); !done) return done.error();
      if (report_.is_complete || !fetched_.valid()) break;
      sts_.content = fetched_.get();
      if (patience_.cancel.Requested() >= patience_.gives_up_at) return sts_.content->error();
      Look();
    }
    return std::move(report_);
  }

 private:
  // Makes the report of what is known by now, and asks for what it lacks.
  void Look() {
    report_ = CheckSender(question_, answers_, sts_);
    for (net::DnsQuestion& wanted : answers_.TakeWanted()) {
      client_.Ask(wanted, [this, wanted](const net::DnsAnswer& answer) {
        answers_.Put(wanted, answer);
        Look();
      });
    }
    if (sts_.is_wanted && !sts_.content && !fetched_.valid()) {
      fetched_ = std::async(std::launch::async, lookup_.fetch, StsPlace{question_.domain, sts_.addresses},
                            std::cref(patience_));
    }
  }

  const SenderQuestion& question_;
  const SenderLookup& lookup_;
  const net::Patience& patience_;
  Answers answers_;
  StsFile sts_;
  SenderReport report_;
  net::DnsClient client_;
  std::future<Result<std::string>> fetched_;  // the last: its end waits for the transfer
};

}  // namespace

Result<SenderReport> LookUpSender(const SenderQuestion& question, const SenderLookup& lookup,
                                  const net::Patience& patience) {
  return Lookup(question, lookup, patience).Run();
}

}  // namespace quillcast::domain
