#include "Reprise.hpp"

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "Accueil/Signaux.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::Reprise {
namespace {

constexpr int ensembleMax = 4;  ///< agents started at once

/// One that was closed is not missed.
bool sansTerminal(const FicheAgent& agent) { return agent.ouvert && agent.terminal.empty(); }
bool sansTerminal(const FicheFenetre& f) {
  return !f.session.empty() && f.terminal.empty() && !f.statut;  // else its command had ended before
}

}  // namespace

Absents absents(const Registre& registre) {
  Absents ids;
  if (const auto agents = registre.agents())
    for (const FicheAgent& agent : *agents)
      if (sansTerminal(agent)) ids.insert(agent.id);
  if (const auto fenetres = registre.fenetres())
    for (const FicheFenetre& f : *fenetres)
      if (sansTerminal(f)) ids.insert(f.id);
  return ids;
}

void reprendre(Executeur& executeur, const Registre& registre, const Absents& absents,
               const std::function<void(const std::string&)>& dire) {
  const auto agents = registre.agents();
  if (!agents) return dire(agents.raison().phrase);
  std::mutex parole;
  std::atomic<std::size_t> suivant = 0;
  const auto servir = [&] {
    for (std::size_t i; (i = suivant++) < agents->size() && !Signaux::finDemandee();) {
      const FicheAgent& agent = (*agents)[i];
      if (!absents.contains(agent.id) || !sansTerminal(agent)) continue;
      const auto reponse =
          executeur.executer(agent.hote.empty() ? Json{{"action", "relancer_agent"}, {"agent", agent.nom}}
                                                : Json{{"action", "ouvrir_agent"}, {"cli", agent.nom}});
      std::string phrase = reponse.ok ? reponse.spoken_text.value_or("") : reponse.error.value_or("");
      if (!reponse.ok && !phrase.starts_with(agent.nom)) phrase = agent.nom + " : " + phrase;
      const std::lock_guard tour(parole);
      dire(Inoffensif::epurer(phrase));
    }
  };
  std::vector<std::thread> fils;
  for (int i = 1; i < ensembleMax; ++i) fils.emplace_back(servir);
  servir();
  for (std::thread& fil : fils) fil.join();
}

std::string disparus(const Registre& registre, const Absents& absents, bool reprise) {
  // What an agent gave a name, a folder or a line to is no word to a terminal.
  const auto sur = [](const std::string& texte) { return Inoffensif::epurer(texte); };
  std::string lignes;
  const auto agents = registre.agents();
  const auto fenetres = registre.fenetres();
  if (!agents || !fenetres) return lignes;
  for (const FicheAgent& agent : *agents) {
    if (!absents.contains(agent.id) || !sansTerminal(agent)) continue;
    if (agent.hote.empty())
      lignes += "\n  " + sur(agent.nom) + " : " + agent.programme + " dans " + sur(agent.dossier) +
                (agent.conversation.empty() ? "" : ", conversation gardée");
    else if (!agent.termine)
      lignes +=
          "\n  " + sur(agent.nom) + " : " + agent.programme + " sur " + sur(agent.hote) + ", où il continue";
  }
  for (const FicheFenetre& f : *fenetres)
    if (absents.contains(f.id) && sansTerminal(f))
      lignes +=
          "\n  " + sur(f.nom) + " : « " + sur(Texte::tronquer(f.commande, 80)) + " » dans " + sur(f.dossier);
  if (lignes.empty()) return lignes;
  return "ces terminaux ont pris fin :" + lignes +
         "\nPour rouvrir un agent : " + (reprise ? "" : "--reprendre au départ, ou ") +
         "relancer_agent ; pour une fenêtre : shell.";
}

}  // namespace tarnavelle::Plateau::Reprise
