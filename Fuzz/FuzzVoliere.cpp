// A listing of tmux sessions with the titles after it, as another machine prints them.
#include <algorithm>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/HooksVol.hpp"
#include "Agents/VoliereTmux.hpp"
#include "Cible.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto sortie = vue(octets, taille);
  const auto sessions = VoliereTmux::lire(sortie);
  std::string reecrite;
  for (const auto& session : sessions) {
    exiger(VoliereTmux::vraiNom(session.nom) && VoliereTmux::commandeTuer(session.nom));
    exiger(!session.titreAffiche().empty());
    const auto nom = VoliereTmux::decomposer(session.nom);
    exiger(nom.has_value() != VoliereTmux::nomCLI(session.nom).empty());
    exiger(!nom || VoliereTmux::nommer(*nom) == session.nom);
    exiger(session.dossierCourt().empty() == session.dossier.empty());
    reecrite += session.nom + ":" + session.dossier + "\nT:" + session.nom + ":" + session.titre + "\n";
  }
  exiger(std::ranges::is_sorted(sessions, {}, &VoliereTmux::SessionLaBas::nom));
  exiger(VoliereTmux::lire(reecrite) == sessions);

  const std::string sur = CarnetDeVol::nomSur(sortie);
  exiger(!sur.empty() && CarnetDeVol::nomSur(sur) == sur && CarnetDeVol::json(sur));
  exiger(std::ranges::all_of(sur, [](char c) {
    return static_cast<unsigned char>(c) >= 0x80 || std::string_view("._-").find(c) != std::string_view::npos ||
           (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  }));
  return 0;
}
