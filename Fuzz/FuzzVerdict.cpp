// A text model's answer to a spoken sentence.
#include "Cible.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"
#include "Voix/MoteurIntentions.hpp"

using namespace tarnavelle;

namespace {

/// What the cockpit would carry out is never an empty order, and each text is trimmed.
void verifier(const IntentionTarnavelle& intention) {
  using I = IntentionTarnavelle;
  const auto rogne = [](const std::string& texte) { exiger(Texte::rogner(texte) == texte); };
  const auto dit = [&](const std::string& texte) {
    rogne(texte);
    exiger(!texte.empty());
  };
  std::visit(Selon{[&](const I::dicter& i) {
                     rogne(i.agent);
                     dit(i.texte);
                   },
                   [&](const I::focus& i) { dit(i.cible); }, [&](const I::allerScene& i) { dit(i.nom); },
                   [&](const I::ouvrirAgent& i) {
                     rogne(i.cli);
                     rogne(i.dossier);
                     rogne(i.hote);
                   },
                   [&](const I::ouvrirWeb& i) { dit(i.cible); }, [&](const I::lire& i) { rogne(i.agent); },
                   [&](const I::resumer& i) { rogne(i.agent); }, [&](const I::repli& i) { dit(i.texte); },
                   [](const I::verdict&) { exiger(false); }, [](const I::inconnue&) { exiger(false); },
                   [](const I::etat&) {}},
             intention.cas);
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const std::string reponse(vue(octets, taille));
  const auto lecture = MoteurIntentions::lire(reponse);
  exiger(MoteurIntentions::lire("Voici :\n```json\n" + reponse + "\n``` Voilà.") == lecture);
  const auto& verdict = lecture.verdict;
  exiger((lecture.teneur == TeneurReponse::demande) ==
         (verdict && verdict->adressee && !verdict->commandes.empty()));
  if (!verdict) return 0;
  exiger(verdict->confiance >= 0 && verdict->confiance <= 1);
  exiger(Texte::caracteres(verdict->raison) <= MoteurIntentions::raisonMax);
  for (const IntentionTarnavelle& intention : verdict->commandes) verifier(intention);
  return 0;
}
