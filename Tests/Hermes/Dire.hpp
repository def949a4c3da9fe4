// Hermès's values in one line each, for tables of expectations.
#pragma once

#include <cmath>
#include <functional>
#include <string>

#include "Hermes/AbonnementNtfy.hpp"
#include "Hermes/EvenementGateway.hpp"
#include "Hermes/FluxSSE.hpp"
#include "Hermes/MessageNtfy.hpp"
#include "Hermes/OreilleNtfy.hpp"
#include "Hermes/ReveilGateway.hpp"
#include "Hermes/TourHermes.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle::essai {

template <class... Textes>
std::string joindre(std::string nom, const Textes&... textes) {
  ((nom.append("|").append(textes)), ...);
  return nom;
}

inline std::string dire(Date::Instant instant) { return std::to_string(instant.time_since_epoch().count()); }

inline std::string dire(const LectureNtfy& lecture) {
  using L = LectureNtfy;
  return std::visit(Selon{[](const L::message& l) {
                            const MessageNtfy& m = l.message;
                            return joindre(m.id, dire(m.date), m.topic, m.titre.value_or("∅"), m.texte);
                          },
                          [](const L::vivant&) -> std::string { return "vivant"; },
                          [](const L::rien&) -> std::string { return "rien"; }},
                    lecture.cas);
}

inline std::string dire(const FluxSSE::Ligne& ligne) {
  using L = FluxSSE::Ligne;
  return std::visit(Selon{[](const L::charge& l) { return "charge|" + std::string(l.texte); },
                          [](const L::ignorer&) -> std::string { return "ignorer"; },
                          [](const L::fin&) -> std::string { return "fin"; }},
                    ligne.cas);
}

inline std::string dire(const AbonnementNtfy::Verdict& verdict) {
  using V = AbonnementNtfy::Verdict;
  return std::visit(Selon{[](const V::reprendre& v) {
                            return std::to_string(static_cast<int>(v.recul.count())) +
                                   (v.avecRattrapage ? "s, rattrapage" : "s");
                          },
                          [](const V::abandonner& v) { return v.message; }},
                    verdict.cas);
}

inline std::string dire(const EvenementGateway& evenement) {
  using E = EvenementGateway;
  const auto dit = [](const std::optional<std::string>& texte) { return texte.value_or("∅"); };
  return std::visit(Selon{[](const E::texte& e) { return joindre("texte", e.morceau); },
                          [&](const E::outil& e) { return joindre("outil", e.nom, dit(e.chemin)); },
                          [](const E::outilFini& e) { return joindre("outilFini", e.nom); },
                          [](const E::session& e) { return joindre("session", e.id); },
                          [&](const E::approbation& e) {
                            const auto& d = e.demande;
                            return joindre("approbation", d.id, d.outil, d.titre, dit(d.detail),
                                           d.expiration ? dire(*d.expiration) : "∅");
                          },
                          [](const E::approbationTranchee& e) {
                            return joindre("tranchee", e.id,
                                           e.decision == DecisionApprobation::approuver ? "oui" : "non");
                          },
                          [](const E::erreur& e) { return joindre("erreur", e.message); },
                          [](const E::rien&) -> std::string { return "rien"; }},
                    evenement.cas);
}

inline std::string dire(const ReveilGateway::EchecGateway& echec) {
  using E = ReveilGateway::EchecGateway;
  return std::visit(Selon{[](const E::liaison& e) { return joindre("liaison", e.hote); },
                          [](const E::binaireAbsent& e) { return joindre("binaireAbsent", e.texte); },
                          [](const E::serveurDesactive&) -> std::string { return "serveurDesactive"; },
                          [](const E::cleIntrouvable&) -> std::string { return "cleIntrouvable"; },
                          [](const E::refusee&) -> std::string { return "refusee"; },
                          [](const E::tourneMaisMuette&) -> std::string { return "tourneMaisMuette"; }},
                    echec.cas);
}

inline std::string dire(const ReveilGateway::Geste& geste) {
  using G = ReveilGateway::Geste;
  return std::visit(Selon{[](const G::attendreSante& g) { return joindre("sante", std::to_string(g.essais)); },
                          [](const G::abandonner& g) { return dire(g.echec); },
                          [](const G::rienAFaire&) -> std::string { return "rienAFaire"; },
                          [](const G::sonderProcessus&) -> std::string { return "sonder"; },
                          [](const G::lancer&) -> std::string { return "lancer"; }},
                    geste.cas);
}

inline std::string dire(const OreilleNtfy::Fin& issue) {
  using F = OreilleNtfy::Fin;
  return std::visit(Selon{[](const F::fermee&) -> std::string { return "fermee"; },
                          [](const F::arretee&) -> std::string { return "arretee"; },
                          [](const F::abandonnee& f) { return f.message; }},
                    issue.cas);
}

inline std::string dire(const EchecNtfy& echec) {
  return std::visit(Selon{[](const EchecNtfy::http& e) { return std::to_string(e.statut); },
                          [](const EchecNtfy::transport& e) { return e.phrase; },
                          [](const EchecNtfy::flotEnLoques&) -> std::string { return "loques"; }},
                    echec.cas);
}

inline std::string dire(const IssueTour& issue) {
  using E = ErreurFluxGateway;
  const auto* echec = std::get_if<IssueTour::echouee>(&issue.cas);
  if (!echec) return std::holds_alternative<IssueTour::finie>(issue.cas) ? "finie" : "arretee";
  std::string texte = std::visit(Selon{[](const E::http& e) { return std::to_string(e.statut); },
                                       [](const E::transport& e) { return e.phrase; },
                                       [](const E::fluxTronque&) -> std::string { return "tronqué"; }},
                                 echec->erreur.cas);
  if (!echec->repli) return texte + (echec->erreur.sentLaSessionRefusee() ? ", session refusée" : "");
  return texte + (*echec->repli == RepliApresCoupure::Decision::rejouerEnCLI ? ", rejouer" : ", annoncer");
}

/// Notices and states, as they come.
inline OreilleNtfy::Rappels raconter(const std::function<void(const std::string&)>& noter) {
  using E = OreilleNtfy::Etat;
  return {.surMessage = [noter](const MessageNtfy& m) { noter(m.texte); },
          .surEtat =
              [noter](const E& etat) {
                std::visit(Selon{[](const E::connexion&) {}, [&](const E::ouverte&) { noter("ouverte"); },
                                 [&](const E::attente& e) {
                                   noter(dire(e.echec) + ", " + std::to_string(std::lround(e.recul.count())));
                                 }},
                           etat.cas);
              }};
}

}  // namespace tarnavelle::essai
