#include "document/way_out.h"

#include <unicode/uchar.h>

#include <algorithm>
#include <vector>

#include "document/phrase_search.h"
#include "platform/text.h"
#include "platform/utf8.h"

namespace quillcast::document {
namespace {

constexpr std::size_t kAtOnce = 4096;       // bytes that are gathered before they are looked through
constexpr std::size_t kLongestPhrase = 64;  // bytes, at the most

// Stems, so that each form of the word is found. In lower case, with single blanks.
const PhraseSearch& Phrases() {
  static const PhraseSearch phrases(std::vector<std::string>{
      "unsubscribe", "un-subscribe", "opt-out", "opt out", "optout", "mailing preferences", "email preferences",
      "e-mail preferences", "list-remove", "leave the list", "leave this list", "leave our list", "remove me",
      "stop receiving", "no longer wish to receive", "no longer want to receive", "cancel your subscription",
      "cancel my subscription", "manage your subscription", "manage subscription", "manage preferences",
      "manage your preferences", "manage your email preferences", "update preferences", "update your preferences",
      // German
      "abmelde", "abmeldung", "abzumelden", "abbestell", "abzubestellen", "nicht mehr erhalten", "nicht mehr bekommen",
      "keine weiteren e-mail", "keine weiteren mail", "keine weiteren newsletter", "keine e-mails mehr",
      "keine mails mehr", "keinen newsletter mehr", "keine newsletter mehr", "sich austragen", "hier austragen",
      "jetzt austragen", "bitte austragen", "zum austragen", "newsletter austragen", "liste austragen",
      "verteiler austragen", "\naustragen\n", "aus dem verteiler", "aus unserem verteiler",
      // Dutch, Danish, Norwegian, Swedish
      "afmeld", "uitschrijven", "uit te schrijven", "schrijf je uit", "schrijf u uit", "meld je af", "meld u af",
      "meld af", "opzeggen", "avmeld", "meld deg av", "frameld", "avregistrer", "avprenumerer", "avsluta prenumeration",
      "avslutt abonnement",
      // French, Spanish, Portuguese, Italian, Romanian
      "désabonn", "desabonn", "désinscri", "desinscri", "plus recevoir", "dar de baja", "darse de baja",
      "darme de baja", "darte de baja", "date de baja", "cancelar suscrip", "cancelar la suscrip",
      "cancelar su suscrip", "cancelar tu suscrip", "anular suscrip", "anular la suscrip", "anular su suscrip",
      "recibir más", "dejar de recibir", "cancelar subscri", "cancelar a subscri", "cancelar inscri",
      "cancelar a inscri", "cancelar assinatura", "cancelar a assinatura", "descadastr", "deixar de receber",
      "annulla l'iscrizione", "annulla iscrizione", "cancella l'iscrizione", "cancella iscrizione", "cancellati da",
      "disiscri", "non ricevere più", "dezabon",
      // Catalan, Croatian, Lithuanian, Estonian
      "donar de baixa", "donar-me de baixa", "donar-se de baixa", "donar-te de baixa", "donar-vos de baixa",
      "dona't de baixa", "doneu-vos de baixa", "cancel·la la subscripci", "cancel·lar la subscripci", "odjavi",
      "odjava", "otkaži pretplatu", "otkažite pretplatu", "atsisakyti prenumerat", "atsisakykite prenumerat",
      "prenumeratos atsisak", "loobu uudiskirja", "loobu tellimus", "uudiskirjast loobu", "tühista tellimus",
      // Polish, Czech, Slovak, Hungarian, Finnish, Turkish
      "wypisz", "wypisać", "rezygnacja z subskrypcji", "zrezygnuj z subskrypcji", "anuluj subskrypcj", "odhlás",
      "leiratkoz", "peruuta tilaus", "lopeta tilaus", "uutiskirjeen tilaus", "abonelikten",
      // Russian, Bulgarian, Ukrainian, Greek
      "отписать", "отпишит", "отпишете", "отписване", "прекрати абонамент", "прекратете абонамент",
      "отказаться от подписки", "отказаться от рассылки", "отменить подписку", "відписатис", "διαγραφ",
      "κατάργηση εγγραφής",
      // Vietnamese, Indonesian, Thai, Hindi
      "hủy đăng ký", "huỷ đăng ký", "berhenti berlangganan", "berhenti langganan", "ยกเลิกการสมัคร", "ยกเลิกการรับ",
      "सदस्यता समाप्त", "सदस्यता रद्द", "अनसब्सक्राइब",
      // Hebrew, Arabic, Chinese, Japanese, Korean
      "הסרה מרשימת", "להסרה", "ביטול הרשמה", "ביטול מנוי", "הסר אותי", "להסיר מרשימ", "إلغاء الاشتراك", "退订",
      "取消订阅", "取消訂閱", "退訂", "配信停止", "配信を停止", "購読解除", "購読を解除", "登録解除", "수신거부",
      "수신 거부", "구독 취소"});
  return phrases;
}

// What hyphenates and joins words without being seen.
bool IsInvisible(char32_t code) {
  return code == 0xAD || (code >= 0x200B && code <= 0x200D) || code == 0x2060 || code == 0xFEFF;
}

}  // namespace

void WayOutSearch::Add(std::string_view text) {
  while (!text.empty() && !found_) {
    const auto [code, length] = platform::DecodeUtf8(text);
    AddCharacter(code, text.substr(0, length));
    text.remove_prefix(length);
  }
}

void WayOutSearch::AddCharacter(char32_t code, std::string_view bytes) {
  if (IsInvisible(code)) return;
  if (code < 0x80) {
    const bool blank = code <= ' ';
    if (blank && pending_.ends_with(' ')) return;
    const char low = blank ? ' ' : platform::AsciiLower(static_cast<char>(code));
    return Append({&low, 1});
  }
  if (code == platform::kNotUtf8) return Append(bytes);
  if (u_isUWhiteSpace(static_cast<UChar32>(code))) return AddCharacter(' ', " ");
  if (code == 0x2019) return Append("'");
  if (code == 0x2010 || code == 0x2011) return Append("-");
  std::string lower;
  platform::AppendUtf8(lower, static_cast<char32_t>(u_tolower(static_cast<UChar32>(code))));
  Append(lower);
}

void WayOutSearch::Append(std::string_view bytes) {
  pending_ += bytes;
  if (pending_.size() >= kAtOnce) Search();
}

void WayOutSearch::Search() {
  const auto occurring = Phrases().Occurring(pending_);
  found_ = found_ || std::find(occurring.begin(), occurring.end(), true) != occurring.end();
  pending_.erase(0, pending_.size() - std::min(pending_.size(), kLongestPhrase));
}

bool WayOutSearch::Found() {
  Search();
  return found_;
}

}  // namespace quillcast::document
