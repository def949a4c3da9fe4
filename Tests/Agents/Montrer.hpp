// Flight events and remote sessions as gtest shows them.
#pragma once

#include <gtest/gtest.h>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/VoliereTmux.hpp"

namespace tarnavelle {

inline void PrintTo(const EvenementVol& evenement, std::ostream* flux) {
  *flux << "cas " << evenement.cas.index();
  std::visit(
      [&](const auto& e) {
        if constexpr (requires { e.texte; }) *flux << ' ' << e.texte;
        if constexpr (requires { e.message; }) *flux << ' ' << e.message;
        if constexpr (requires { e.resume; }) *flux << ' ' << e.nom << " : " << e.resume;
      },
      evenement.cas);
}

namespace VoliereTmux {
inline void PrintTo(const SessionLaBas& session, std::ostream* flux) {
  *flux << session.nom << " | " << session.dossier << " | " << session.titre;
}
}  // namespace VoliereTmux

}  // namespace tarnavelle
