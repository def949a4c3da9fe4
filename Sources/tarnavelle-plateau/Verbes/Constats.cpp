#include "Verbes/Constats.hpp"

namespace tarnavelle::Plateau {

Constat constater(const FicheAgent& agent, Veille& veille) {
  Constat constat = veille.constat(agent.id);
  if (agent.termine) constat.situation.etat = constat.situation.activite = Etat::sorti;
  return constat;
}

Etat etatDe(const FicheFenetre& fenetre) { return fenetre.termine ? Etat::sorti : Etat::travaille; }

}  // namespace tarnavelle::Plateau
