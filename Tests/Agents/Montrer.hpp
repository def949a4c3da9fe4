// Flight events and remote sessions as gtest shows them.
#pragma once

#include <gtest/gtest.h>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/VoliereTmux.hpp"
#include "Socle/Selon.hpp"

namespace tarnavelle {

inline void PrintTo(const EvenementVol& evenement, std::ostream* flux) {
  const auto dire = [&](const char* nom, const auto&... textes) {
    *flux << nom;
    ((*flux << ' ' << testing::PrintToString(textes)), ...);
  };
  std::visit(Selon{[&](const EvenementVol::consigne& e) { dire("consigne", e.texte); },
                   [&](const EvenementVol::outil& e) { dire("outil", e.nom, e.resume); },
                   [&](const EvenementVol::besoin& e) { dire("besoin", e.message); },
                   [&](const EvenementVol::reponse& e) { dire("reponse", e.texte); },
                   [&](const EvenementVol::demarre&) { dire("demarre"); },
                   [&](const EvenementVol::fini&) { dire("fini"); },
                   [&](const EvenementVol::inconnu&) { dire("inconnu"); }},
             evenement.cas);
}

namespace VoliereTmux {
inline void PrintTo(const SessionLaBas& session, std::ostream* flux) {
  *flux << testing::PrintToString(std::array{session.nom, session.dossier, session.titre});
}
}  // namespace VoliereTmux

}  // namespace tarnavelle
