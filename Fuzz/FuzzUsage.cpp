// The usage of one response, added up and priced, and the day's record as it is kept.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "Cible.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Voix/UsageRealtime.hpp"

using namespace tarnavelle;

namespace {

std::int64_t moindre(const TourRealtime& t) {
  return std::min({t.texteEntreeNonCache, t.audioEntreeNonCache, t.entreeCachee, t.texteSortie, t.audioSortie});
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto texte = vue(octets, taille);
  if (const auto tour = LectureUsageRealtime::lire(texte)) {
    UsageRealtime usage;
    for (int i = 0; i < 3; ++i) {
      usage.ajouter(*tour);
      exiger(moindre(usage.total) >= moindre(*tour) && moindre(*tour) >= 0);
    }
    exiger(usage.tours == 3 && usage.cout(TarifRealtime::defaut) >= 0);
    exiger(usage.ligne(usage.cout(TarifRealtime::defaut), TarifRealtime::defaut).ends_with(" $"));
  }
  if (const auto cumul = CumulVoixDuJour::lire(texte)) {
    exiger(CumulVoixDuJour::lire(EcritureJSON::compacte(cumul->json()).value()) == cumul);
    const auto suivant = cumul->ajoutant(cumul->usd, {}, Calendrier{});
    exiger(suivant.jour == "1970-01-01" && suivant.sessions >= std::min<std::int64_t>(cumul->sessions, 1));
    exiger(CumulVoixDuJour::lire(EcritureJSON::compacte(suivant.json()).value()) == suivant);
  }
  return 0;
}
