#include "Parole.hpp"

#include <nlohmann/json.hpp>

#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

constexpr std::size_t retenuMax = 200;  ///< bytes of a word; a longer one goes out in pieces
constexpr std::string_view gardes = "\n\t";

std::string_view nom(DecisionApprobation decision) {
  return decision == DecisionApprobation::approuver ? "approuver" : "rejeter";
}

/// Where what is held back may be cut: behind its last white space, or between two characters of a long word.
std::size_t coupe(std::string_view texte) {
  const auto blanc = texte.find_last_of(" \n\t");
  if (blanc != texte.npos) return blanc + 1;
  if (texte.size() < retenuMax) return 0;
  auto fin = texte.size();
  while (fin > 0 && (static_cast<unsigned char>(texte[fin - 1]) & 0xC0U) == 0x80U) --fin;
  return fin > 0 ? fin - 1 : texte.size();
}

Json enJSON(const DemandeApprobationHermes& d) {
  Json objet = {{"evenement", "approbation"}, {"id", d.id}, {"outil", d.outil}, {"titre", d.titre}};
  if (d.detail) objet["detail"] = *d.detail;
  if (d.expiration) objet["expiration"] = d.expiration->time_since_epoch().count() / 1000;
  return objet;
}

}  // namespace

std::string enClair(const DemandeApprobationHermes& demande) {
  std::string texte = "Hermès demande votre accord";
  if (!demande.outil.empty()) texte += " pour " + demande.outil;
  if (!demande.titre.empty()) texte += "\n" + demande.titre;
  if (demande.detail && demande.detail != demande.titre) texte += "\n" + *demande.detail;
  return texte;
}

void Parole::ecrire(int descripteur, std::string_view octets) {
  if (!ecrireTout(descripteur, octets) && descripteur == 1) perdue_ = true;
}

void Parole::objet(const Json& objet) {
  if (json_) ecrire(1, EcritureJSON::compacte(objet).value_or("{}") + "\n");
}

void Parole::texte(std::string_view morceau) {
  if (json_) return objet({{"evenement", "texte"}, {"texte", Texte::reparer(morceau)}});
  retenu_ += morceau;
  const auto fin = coupe(retenu_);
  if (fin == 0) return;
  enLigne_ = retenu_[fin - 1] != '\n';
  ecrire(1, Inoffensif::montrable(std::string_view(retenu_).substr(0, fin), gardes));
  retenu_.erase(0, fin);
}

void Parole::finir() {
  if (json_) return;
  if (!retenu_.empty()) {
    enLigne_ = true;
    ecrire(1, Inoffensif::montrable(std::exchange(retenu_, {}), gardes));
  }
  if (std::exchange(enLigne_, false)) ecrire(1, "\n");
}

void Parole::ligne(std::string_view texte) {
  if (!json_) ecrire(1, Inoffensif::montrable(texte, "\t") + "\n");
}

void Parole::note(std::string_view phrase, std::string_view genre) {
  if (json_) return objet({{"evenement", genre}, {"texte", Texte::reparer(phrase)}});
  finir();
  ecrire(2, Inoffensif::montrable(phrase, gardes) + "\n");
}

void Parole::evenement(const EvenementGateway& evenement) {
  using E = EvenementGateway;
  const auto dire = [this](Json quoi, const std::string& phrase) {
    if (json_)
      objet(quoi);
    else
      note(phrase);
  };
  std::visit(Selon{[&](const E::texte& e) { texte(e.morceau); },
                   [&](const E::outil& e) {
                     Json quoi = {{"evenement", "outil"}, {"nom", e.nom}};
                     if (e.chemin) quoi["chemin"] = *e.chemin;
                     dire(std::move(quoi), "→ " + e.nom + (e.chemin ? " " + *e.chemin : ""));
                   },
                   [&](const E::outilFini& e) {
                     objet({{"evenement", "outil_fini"}, {"nom", e.nom}});
                   },
                   [&](const E::session& e) {
                     objet({{"evenement", "session"}, {"session", e.id}});
                   },
                   [&](const E::approbation& e) { dire(enJSON(e.demande), enClair(e.demande)); },
                   [&](const E::approbationTranchee& e) {
                     dire({{"evenement", "approbation_tranchee"}, {"id", e.id}, {"decision", nom(e.decision)}},
                          e.decision == DecisionApprobation::approuver ? "Accordé." : "Refusé.");
                   },
                   [&](const E::erreur& e) {
                     dire({{"evenement", "erreur"}, {"texte", e.message}}, "Erreur d'Hermès : " + e.message);
                   },
                   [](const E::rien&) {}},
             evenement.cas);
}

}  // namespace tarnavelle
