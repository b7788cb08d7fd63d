#include "platform/keyring.h"

#include <fmt/format.h>
#include <libsecret/secret.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <memory>
#include <thread>

#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::platform {
namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr const char* kOwner = "entry";
constexpr const char* kServer = "server";
constexpr const char* kUser = "user";
constexpr int kUntilCancelIsSeen = 200;  // milliseconds; a cancel may come without waking anybody
constexpr Milliseconds kGrace{500};      // for what was cancelled to come back by itself
constexpr const char* kTheWayOn =
    "Unlock it and try once more, or let the account have its password from the settings or from a command.";

struct ObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using Object = std::unique_ptr<T, ObjectUnref>;

struct ErrorFree {
  void operator()(GError* error) const { g_error_free(error); }
};
using Failed = std::unique_ptr<GError, ErrorFree>;

struct ItemsFree {
  void operator()(GList* items) const { g_list_free_full(items, g_object_unref); }
};
using Items = std::unique_ptr<GList, ItemsFree>;

struct TableUnref {
  void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, TableUnref>;

struct ValueUnref {
  void operator()(gpointer value) const { secret_value_unref(value); }
};
using Value = std::unique_ptr<SecretValue, ValueUnref>;

const SecretSchema* Schema() {
  static const SecretSchema schema = [] {
    SecretSchema made{};
    made.name = "example.quillcast.secret";
    made.flags = SECRET_SCHEMA_NONE;
    made.attributes[0] = {kOwner, SECRET_SCHEMA_ATTRIBUTE_STRING};
    made.attributes[1] = {kServer, SECRET_SCHEMA_ATTRIBUTE_STRING};
    made.attributes[2] = {kUser, SECRET_SCHEMA_ATTRIBUTE_STRING};
    return made;
  }();
  return &schema;
}

Error Locked(const char* what) { return {Failure::kNotPermitted, what, kTheWayOn}; }

// Whether an error means that there is no keyring.
bool NobodyServes(const GError* error) {
  constexpr std::array kCodes = {G_DBUS_ERROR_SERVICE_UNKNOWN,     G_DBUS_ERROR_NAME_HAS_NO_OWNER,
                                 G_DBUS_ERROR_UNKNOWN_OBJECT,      G_DBUS_ERROR_SPAWN_EXEC_FAILED,
                                 G_DBUS_ERROR_SPAWN_FAILED,        G_DBUS_ERROR_SPAWN_CHILD_EXITED,
                                 G_DBUS_ERROR_SPAWN_CHILD_SIGNALED};
  return std::any_of(kCodes.begin(), kCodes.end(),
                     [error](GDBusError code) { return g_error_matches(error, G_DBUS_ERROR, code) != 0; });
}

// Whether the keyring itself, and not what stands between, said that it failed.
bool IsItsAnswer(const GError* error) {
  if (error == nullptr || error->domain == SECRET_ERROR) return true;
  constexpr std::array kUnanswered = {G_DBUS_ERROR_NO_REPLY, G_DBUS_ERROR_TIMEOUT, G_DBUS_ERROR_TIMED_OUT,
                                      G_DBUS_ERROR_DISCONNECTED};
  if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_DBUS_ERROR) != 0) return true;  // one that is the keyring's own
  return error->domain == G_DBUS_ERROR &&
         std::none_of(kUnanswered.begin(), kUnanswered.end(),
                      [error](GDBusError code) { return g_error_matches(error, G_DBUS_ERROR, code) != 0; });
}

// One question to the keyring, on the thread that asks it.
class Question {
 public:
  Question(GCancellable* stop, bool may_ask) : stop_(stop), may_ask_(may_ask) {}

  Result<void> Open();
  Result<std::optional<Secret>> Find(const SecretName& name);
  // `may_have_it` is true from before the secret is given until the keyring says that it does not keep it.
  Result<void> Keep(const SecretName& name, const std::string& label, const Secret& secret,
                    std::atomic<bool>& may_have_it);
  Result<void> Forget(const SecretName& name, Which which);

 private:
  Result<Items> Search(const Attributes& attributes);
  Result<void> UnlockItem(SecretItem* item);
  Result<void> Unlock(gpointer item_or_collection);
  // Whether something may be put there, after it was unlocked where that is needed.
  Result<void> OpenCollection();

  GCancellable* stop_;
  const bool may_ask_;
  Object<GDBusConnection> bus_;
  Object<SecretService> service_;
};

// Attributes are UTF-8, which names of users and folders need not be. No two names have the same: those that are coded
// begin with a mark, and one that begins with it by itself is coded too.
std::string AsAttribute(const std::string& name) {
  constexpr const char* kMark = "%octets:";
  if (IsUtf8(name) && !name.starts_with(kMark)) return name;
  std::string coded = kMark;
  for (const char octet : name) {
    const auto value = static_cast<unsigned char>(octet);
    coded += value < 0x80 && octet != '%' ? std::string(1, octet) : fmt::format("%{:02X}", value);
  }
  return coded;
}

// What a library said, at the end of a sentence: some of what it says brings its own full stop.
std::string AsEnd(const GError& error) {
  std::string said = Printable(error.message, 200);
  if (!said.ends_with('.')) said += '.';
  return said;
}

Error WhyNot(const GError* error) {
  if (error == nullptr) return {Failure::kUnavailable, "The keyring gave no answer that can be used.", kTheWayOn};
  if (g_error_matches(error, SECRET_ERROR, SECRET_ERROR_IS_LOCKED) != 0) return Locked("The keyring was not unlocked.");
  if (NobodyServes(error)) {
    return {Failure::kUnavailable, "No keyring runs in this session.",
            "Start one, or let the account have its password from the settings or from a command."};
  }
  const Failed copy(g_error_copy(error));
  g_dbus_error_strip_remote_error(copy.get());
  return {Failure::kUnavailable, Say("The keyring could not be used: {}", AsEnd(*copy)), kTheWayOn};
}

// The library would end the program with its bus.
Result<void> Question::Open() {
  GError* error = nullptr;
  bus_.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, stop_, &error));
  const Failed unreached(error);
  if (!bus_) {
    return Error{Failure::kUnavailable,
                 Say("The session bus, over which a keyring is asked, cannot be reached: {}", AsEnd(*unreached)),
                 kTheWayOn};
  }
  g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);
  error = nullptr;
  service_.reset(secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, stop_, &error));
  const Failed closed(error);
  return service_ ? Result<void>() : WhyNot(closed.get());
}

Attributes Named(const SecretName& name) {
  return Attributes(secret_attributes_build(Schema(), kOwner, AsAttribute(name.owner).c_str(), kServer,
                                            AsAttribute(name.server).c_str(), kUser, AsAttribute(name.user).c_str(),
                                            nullptr));
}

// One that an older version kept names no server and no user.
Attributes OwnedBy(const std::string& owner) {
  return Attributes(secret_attributes_build(Schema(), kOwner, AsAttribute(owner).c_str(), nullptr));
}

bool IsFor(SecretItem* item, const SecretName& name) {
  const Attributes attributes(secret_item_get_attributes(item));
  const auto has = [&](const char* attribute, const std::string& value) {
    const auto* text = static_cast<const char*>(g_hash_table_lookup(attributes.get(), attribute));
    return text != nullptr && AsAttribute(value) == text;
  };
  return has(kServer, name.server) && has(kUser, name.user);
}

Result<Items> Question::Search(const Attributes& attributes) {
  GError* error = nullptr;
  Items items(secret_service_search_sync(service_.get(), Schema(), attributes.get(), SECRET_SEARCH_ALL, stop_, &error));
  const Failed failed(error);
  return failed ? Result<Items>(WhyNot(failed.get())) : Result<Items>(std::move(items));
}

Result<void> Question::UnlockItem(SecretItem* item) {
  return secret_item_get_locked(item) == 0 ? Result<void>() : Unlock(item);
}

Result<void> Question::Unlock(gpointer item_or_collection) {
  if (!may_ask_) return Locked("The keyring is locked, and nobody is there to unlock it.");
  GError* error = nullptr;
  GList one{item_or_collection, nullptr, nullptr};
  const int unlocked = secret_service_unlock_sync(service_.get(), &one, stop_, nullptr, &error);
  const Failed failed(error);
  if (failed) return WhyNot(failed.get());
  return unlocked == 1 ? Result<void>() : Locked("The keyring was not unlocked.");
}

// There may be several, each in a collection that was the default one when it was kept.
Result<std::optional<Secret>> Question::Find(const SecretName& name) {
  const auto items = Search(Named(name));
  if (!items) return items.error();
  SecretItem* item = nullptr;
  for (const GList* at = items->get(); at != nullptr; at = at->next) {
    auto* one = SECRET_ITEM(at->data);
    if (item == nullptr || secret_item_get_modified(one) > secret_item_get_modified(item)) item = one;
  }
  if (item == nullptr) return std::optional<Secret>();
  if (const auto usable = UnlockItem(item); !usable) return usable.error();
  GError* error = nullptr;
  const bool loaded = secret_item_load_secret_sync(item, stop_, &error) != 0;
  const Failed failed(error);
  const Value value(loaded ? secret_item_get_secret(item) : nullptr);
  if (!value) return WhyNot(failed.get());
  gsize length = 0;
  const gchar* text = secret_value_get(value.get(), &length);
  return std::optional(Secret(std::string_view(text, length)));
}

Result<void> Question::Forget(const SecretName& name, Which which) {
  const auto items = Search(which == Which::kNamed ? Named(name) : OwnedBy(name.owner));
  if (!items) return items.error();
  for (const GList* at = items->get(); at != nullptr; at = at->next) {
    auto* item = SECRET_ITEM(at->data);
    if (which == Which::kAllOthers && IsFor(item, name)) continue;
    if (auto usable = UnlockItem(item); !usable) return usable;
    GError* error = nullptr;
    const bool deleted = secret_item_delete_sync(item, stop_, &error) != 0;
    const Failed failed(error);
    if (!deleted) return WhyNot(failed.get());
  }
  return {};
}

Result<void> Question::OpenCollection() {
  GError* error = nullptr;
  const Object<SecretCollection> collection(secret_collection_for_alias_sync(service_.get(), SECRET_COLLECTION_DEFAULT,
                                                                             SECRET_COLLECTION_NONE, stop_, &error));
  const Failed failed(error);
  if (failed) return WhyNot(failed.get());
  // Where there is none the keyring makes one, and asks for a password for it.
  if (!collection && !may_ask_) return Locked("No keyring is set up yet, and nobody is there to choose its password.");
  if (!collection || secret_collection_get_locked(collection.get()) == 0) return {};
  return Unlock(collection.get());
}

Result<void> Question::Keep(const SecretName& name, const std::string& label, const Secret& secret,
                            std::atomic<bool>& may_have_it) {
  auto open = OpenCollection();
  if (!open) return open;
  GError* error = nullptr;
  const Value value(secret_value_new(secret.view().data(), static_cast<gssize>(secret.view().size()), "text/plain"));
  may_have_it = true;
  const bool kept = secret_service_store_sync(service_.get(), Schema(), Named(name).get(), SECRET_COLLECTION_DEFAULT,
                                              label.c_str(), value.get(), stop_, &error) != 0;
  const Failed failed(error);
  if (kept) return {};
  may_have_it = !IsItsAnswer(failed.get());
  return WhyNot(failed.get());
}

// What a question comes to. Shared with its thread, which may outlive whoever asked.
template <typename T>
struct Asked {
  Object<GCancellable> stop{g_cancellable_new()};
  std::optional<Result<T>> answer;  // before it is done
  CancelToken done;
};

// False where it was not done in time, or was cancelled before.
bool WaitFor(const CancelToken& done, Milliseconds most, const CancelToken* cancel) {
  const auto until = std::chrono::steady_clock::now() + most;
  while (done.Requested() == Stop::kNone) {
    const auto left = std::chrono::ceil<Milliseconds>(until - std::chrono::steady_clock::now()).count();
    if (left <= 0 || (cancel != nullptr && cancel->Requested() != Stop::kNone)) return false;
    std::array<pollfd, 2> waits = {
        {{done.PollFd(), POLLIN, 0}, {cancel == nullptr ? -1 : cancel->PollFd(), POLLIN, 0}}};
    IgnoreErrors(
        ::poll(waits.data(), waits.size(), static_cast<int>(std::min<decltype(left)>(left, kUntilCancelIsSeen))));
  }
  return true;
}

// The library waits for some answers without end, whatever is asked of it: then its thread is left to itself.
// `may_have_it` is what the question tells of a secret that it gives.
template <typename T, typename Ask>
Result<T> InTime(const KeyringPlace& place, bool may_ask, const CancelToken& cancel, Ask ask,
                 const std::atomic<bool>* may_have_it = nullptr) {
  if (!place.has_bus) {
    return Error{
        Failure::kUnavailable, "There is no session bus here, over which a keyring is asked.",
        "Start this in the session of a desktop, or let the account have its password from the settings or from "
        "a command."};
  }
  const auto asked = std::make_shared<Asked<T>>();
  std::thread thread([asked, may_ask, ask = std::move(ask)] {
    Question question(asked->stop.get(), may_ask);
    const auto open = question.Open();
    asked->answer = open ? ask(question) : Result<T>(open.error());
    asked->done.Request();
  });
  const Milliseconds patience = may_ask ? place.unlocking : place.patience;
  const bool in_time = WaitFor(asked->done, patience, &cancel);
  if (!in_time) g_cancellable_cancel(asked->stop.get());
  if (in_time || WaitFor(asked->done, kGrace, nullptr)) {
    thread.join();
  } else {
    thread.detach();
  }
  if (in_time) return std::move(*asked->answer);
  const bool may_have_kept = may_have_it != nullptr && *may_have_it;
  if (cancel.Requested() != Stop::kNone) {
    return Error{Failure::kTryAgain, may_have_kept
                                         ? Sentence("Asking the keyring was cancelled; it may have the password.")
                                         : Sentence("Asking the keyring was cancelled.")};
  }
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(patience).count();
  return Error{Failure::kTimedOut,
               may_have_kept
                   ? Say("The keyring gave no answer within {} seconds; it may have the password.", seconds)
                   : Say("The keyring gave no answer within {} seconds, or was not unlocked in that time.", seconds),
               kTheWayOn};
}

}  // namespace

KeyringPlace KeyringPlaceOf(const Environment& environment) {
  const std::filesystem::path runtime = environment.Get("XDG_RUNTIME_DIR").value_or("");
  const bool is_named = environment.Get("DBUS_SESSION_BUS_ADDRESS").has_value();
  return {.has_bus = is_named || (!runtime.empty() && std::filesystem::is_socket(runtime / "bus", IgnoreErrors()))};
}

Result<std::optional<Secret>> Keyring::Find(const SecretName& name, const CancelToken& cancel) {
  return InTime<std::optional<Secret>>(place_, may_ask, cancel,
                                       [name](Question& question) { return question.Find(name); });
}

Keeping Keyring::Keep(const SecretName& name, const std::string& label, const Secret& secret,
                      const CancelToken& cancel) {
  const auto may_have_it = std::make_shared<std::atomic<bool>>(false);
  const auto kept = InTime<void>(
      place_, may_ask, cancel, [=](Question& question) { return question.Keep(name, label, secret, *may_have_it); },
      may_have_it.get());
  return kept ? Keeping() : Keeping{kept.error(), *may_have_it};
}

Result<void> Keyring::Forget(const SecretName& name, Which which, const CancelToken& cancel) {
  return InTime<void>(place_, may_ask, cancel,
                      [name, which](Question& question) { return question.Forget(name, which); });
}

}  // namespace quillcast::platform
