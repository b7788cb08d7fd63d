#include "document/way_out.h"

#include <algorithm>
#include <string>
#include <vector>

#include "document/phrase_search.h"

namespace quillcast::document {
namespace {

// Stems, so that each form of the word is found; without the first letter where that has capitals beyond ASCII.
const PhraseSearch& Phrases() {
  static const PhraseSearch phrases(std::vector<std::string>{
      "unsubscribe", "opt-out", "opt out", "optout", "mailing preferences", "email preferences", "list-remove",
      // German, Dutch, Danish, Norwegian, Swedish
      "abmelde", "abbestell", "austragen", "afmeld", "uitschrijven", "opzeggen", "avmeld", "frameld", "avregistrer",
      "avprenumerer", "avsluta prenumeration", "avslutt abonnement",
      // French, Spanish, Portuguese, Italian, Romanian
      "désabonn", "desabonn", "désinscri", "desinscri", "desincri", "dar de baja", "darse de baja", "darme de baja",
      "cancelar suscrip", "anular suscrip", "cancelar subscri", "cancelar a subscri", "cancelar inscri", "descadastr",
      "annulla l'iscrizione", "annulla iscrizione", "disiscri", "dezabon",
      // Polish, Czech, Slovak, Hungarian, Finnish, Turkish
      "wypisz", "wypisać", "rezygnacja z subskrypcji", "odhlás", "leiratkoz", "peruuta tilaus", "lopeta tilaus",
      "abonelikten",
      // Russian, Ukrainian, Greek
      "тписать", "тпишит", "ідписатис", "ιαγραφ", "ατάργηση εγγραφής",
      // Hebrew, Arabic, Chinese, Japanese, Korean
      "הסרה מרשימת", "להסרה", "إلغاء الاشتراك", "退订", "取消订阅", "取消訂閱", "退訂", "配信停止", "購読解除",
      "登録解除", "수신거부", "수신 거부", "구독 취소"});
  return phrases;
}

}  // namespace

bool SpeaksOfLeaving(std::string_view text) {
  const auto occurring = Phrases().Occurring(text);
  return std::find(occurring.begin(), occurring.end(), true) != occurring.end();
}

}  // namespace quillcast::document
