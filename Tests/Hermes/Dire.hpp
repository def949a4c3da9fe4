// What the gateway tells in one line each, for tables of expectations.
#pragma once

#include <string>

#include "Hermes/EvenementGateway.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle::essai {

template <class... Textes>
std::string joindre(std::string nom, const Textes&... textes) {
  ((nom.append("|").append(textes)), ...);
  return nom;
}

inline std::string dire(Date::Instant instant) { return std::to_string(instant.time_since_epoch().count()); }

inline std::string dire(const EvenementGateway& evenement) {
  using E = EvenementGateway;
  const auto tranche = [](auto d) { return d == DecisionApprobation::approuver ? "oui" : "non"; };
  return std::visit(
      Selon{[](const E::texte& e) { return joindre("texte", e.morceau); },
            [](const E::outil& e) { return joindre("outil", e.nom, e.chemin.value_or("∅")); },
            [](const E::outilFini& e) { return joindre("outilFini", e.nom); },
            [](const E::session& e) { return joindre("session", e.id); },
            [](const E::approbation& e) {
              const auto& d = e.demande;
              return joindre("approbation", d.id, d.outil, d.titre, d.detail.value_or("∅"),
                             d.expiration ? dire(*d.expiration) : "∅");
            },
            [&](const E::approbationTranchee& e) { return joindre("tranchee", e.id, tranche(e.decision)); },
            [](const E::erreur& e) { return joindre("erreur", e.message); },
            [](const E::rien&) -> std::string { return "rien"; }},
      evenement.cas);
}

}  // namespace tarnavelle::essai
