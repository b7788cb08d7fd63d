// What became of one message for one recipient.
#pragma once

#include <string>
#include <string_view>

#include "smtp/result_code.h"
#include "smtp/server_reply.h"

namespace quillcast::smtp {

// What is known of the message at the end.
// Where a message can end. Those that no message went out to have their states in run::ResultState.
enum class State {
  kSent,      // the server took responsibility (2xx at the end of data)
  kRefused,   // 5xx: trying again does not help
  kDeferred,  // 4xx: another time it may be taken
  kFailed,    // it never reached a verdict: no connection, no sign-in, a file of ours missing, cancelled
  kUnknown,   // the end of data went out and no reply came: it may have been taken
};

// Whether a message may go again by itself. Who sends it over a connection says so; who holds the messages of a run
// decides by it, and by how that run stands, what becomes of them.
enum class Whereabouts {
  kDecided,  // it may not: its state says all
  kNotOut,   // nothing by which a server could have taken it is out, and it may go over another connection
  kSilent,   // nothing is out, but the server left it without an answer, and may do so again
  kNoRoom,   // nothing is out, and the server had no room for it over this connection
};

// The verdict on one message, or on a session that had none.
// Told once for each message, by JobSource::Finished.
struct Outcome {
  State state = State::kFailed;
  ResultCode code = ResultCode::kException;
  ServerReply reply;   // the reply that decided it, where there was one
  std::string reason;  // in our words, where the code and the reply do not say it: a whole sentence, may be empty
  Whereabouts whereabouts = Whereabouts::kDecided;  // as a run tells it, kNotOut: it was left, and counts as not tried
  bool has_sender = false;  // where the connection ended over it: the server had taken the sender
  bool no_way = false;      // no connection came about that it could have gone over

  bool is_decided() const { return whereabouts == Whereabouts::kDecided; }
};

// Of a message that a run leaves: it stands as it did before the run came to it.
Outcome Left();

// What a reply of class 4 or 5 makes of a message.
Outcome VerdictOf(ResultCode code, const ServerReply& reply);

// Whether no server was reached, or let the message begin: whoever comes next meets that in one form or another.
bool IsOfWay(const Outcome& outcome);
// Whether it is the sender, or the session, that the server would not have, or we not one like that (its certificate):
// as a rule, but not of each message. Whether it is the sign-in, which is nobody's in a list.
bool IsOfSender(const Outcome& outcome);
bool IsOfSignIn(const Outcome& outcome);

// Puts a sentence behind what a reason says; nothing where there is none.
void AddSentence(std::string& reason, std::string_view sentence);

// "sent", "refused", "deferred", "failed", "unknown".
const char* Name(State state);

}  // namespace quillcast::smtp
