#include "Refus.hpp"

#include "Noms.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::PorteEssai::Refus {
namespace {

ReponsePorte agentInconnu(const Monde& monde, const std::string& sujet) {
  return ReponsePorte::echec(sujet + ". Ouverts : " + enumerer(monde.nomsDesAgentsOuverts()) + ".");
}

}  // namespace

bool vide(std::string_view texte) { return Texte::rogner(texte).empty(); }

ReponsePorte manque(std::string_view argument) {
  return ReponsePorte::echec("Il manque « " + std::string(argument) + " ».");
}

std::optional<ReponsePorte> texte(std::string_view argument, std::string_view valeur) {
  return vide(valeur) ? manque(argument) : tropLong(argument, valeur);
}

std::optional<ReponsePorte> tropLong(std::string_view argument, std::string_view valeur) {
  if (valeur.size() <= octetsMax) return std::nullopt;
  return ReponsePorte::echec("« " + std::string(argument) + " » est trop long : " + std::to_string(octetsMax) +
                             " octets au plus.");
}

std::optional<ReponsePorte> sorti(const Agent& agent) {
  if (agent.etat() != EtatAgent::sorti) return std::nullopt;
  return ReponsePorte::echec(agent.nom + " est sorti : son processus a pris fin.");
}

Fenetre* fenetreVisee(Monde& monde, const std::string& nom, ReponsePorte& refus) {
  Fenetre* trouvee = monde.fenetre(nom);
  if (!trouvee)
    refus = ReponsePorte::echec(vide(nom) ? "Aucune fenêtre n'est au regard : nomme-la."
                                          : "Aucune fenêtre ne s'appelle " + cite(nom) +
                                                ". Ouvertes : " + enumerer(monde.nomsDesFenetres()) + ".");
  return trouvee;
}

Agent* agentOuvert(Monde& monde, const std::string& nom, ReponsePorte& refus) {
  const Fenetre* trouvee = monde.fenetre(nom);
  Agent* agent = trouvee ? monde.agent(trouvee->agent) : nullptr;
  if (!agent)
    refus = agentInconnu(monde,
                         vide(nom) ? "Aucun agent n'est au regard" : "Aucun agent ne s'appelle " + cite(nom));
  return agent;
}

Agent* session(Monde& monde, const std::string& nom, ReponsePorte& refus) {
  Agent* agent = monde.agent(nom);
  if (!agent)
    refus = vide(nom) ? manque("agent") : agentInconnu(monde, "Aucun agent ne s'appelle " + cite(nom));
  return agent;
}

}  // namespace tarnavelle::PorteEssai::Refus
