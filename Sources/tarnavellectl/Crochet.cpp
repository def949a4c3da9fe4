#include <chrono>

#include "Agents/CrochetAgent.hpp"
#include "Commandes.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Commandes {

/// Whatever goes wrong, the agent that runs its hook is told nothing, and goes on.
int crochet(Session& session, const Json& arguments) {
  const auto journal = session.environnement.octets(CrochetAgent::variable);
  const std::string dit = CrochetAgent::entree(0);  // read in any case: the program may wait for it to be
  if (!journal || journal->empty()) return Statut::fait;
  const auto quand = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  const std::string programme = Champ::texte(arguments, "programme");
  const std::string evenement = Champ::texte(arguments, "evenement");
  CrochetAgent::ajouter(*journal, CrochetAgent::ligne({programme, evenement, dit, quand}));
  return Statut::fait;
}

}  // namespace tarnavelle::Commandes
