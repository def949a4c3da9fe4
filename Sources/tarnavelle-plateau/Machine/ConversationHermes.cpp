// How a conversation with Hermès is started: a program of ours in a terminal, which has the board's settings,
// and keeps the thread in a file that outlives it.
#include "Agents/CrochetAgent.hpp"
#include "Etats/Crochets.hpp"
#include "Hermes/ReglagesHermes.hpp"
#include "Hotes/HotesConnus.hpp"
#include "Hotes/PanneSSH.hpp"
#include "Machine/LanceursReels.hpp"
#include "Registre/Fiches.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {

std::optional<Resultat<std::string, std::string>> LanceursReels::conversation(const std::string& hote) const {
  using Lieu = Resultat<std::string, std::string>;
  if (reglages_.hermes.empty())
    return Lieu(
        Sinon{std::string("tarnavelle-hermes n'est pas à côté du plateau : il mène ces conversations.")});
  const auto reglages = ReglagesHermes::lire(reglages_.environnement);
  if (auto refus = reglages.refusVoie(hote)) return Lieu(Sinon{*std::move(refus)});
  auto machine = reglages.hotePour(hote);
  if (!machine.empty() && !HotesConnus::nomSur(machine))
    return Lieu(Sinon{PanneSSH::de(PanneSSH::Cause::nom, machine).phrase});
  return Lieu(std::move(machine));
}

Resultat<Depart, std::string> LanceursReels::converser(const Embarquement& e) {
  const auto journal = reglages_.journal(e.cle);
  if (!creerDossierPrive(reglages_.conversations) || !creerDossierPrive(journal.parent_path()) ||
      !JournalCrochets::commencer(journal))
    return Sinon{"Impossible d'écrire dans " + reglages_.conversations.string() + "."};
  Depart depart;
  depart.conversation = e.conversation;
  Lancement& lancement = depart.lancement;
  lancement.cle = e.cle;
  lancement.session = e.session;
  lancement.dossier = dossierPersonnel(reglages_.environnement).string();
  lancement.mots = {reglages_.hermes, "converser", "--dossier", reglages_.conversations.string()};
  lancement.mots.insert(lancement.mots.end(), reglages_.motsSSH.begin(), reglages_.motsSSH.end());
  if (!e.conversation.empty()) lancement.mots.insert(lancement.mots.end(), {"--hote", e.conversation});
  // What its environment tells the board alone; the file it reads itself, so that no secret of it is handed on.
  const auto dit = [&](const char* nom) { return reglages_.environnement.octets(nom).value_or(""); };
  for (const auto& cle : ReglagesHermes::cles())
    lancement.environnement[std::string(cle.nom)] = dit(std::string(cle.nom).c_str());
  lancement.environnement["HOME"] = lancement.dossier;
  lancement.environnement["XDG_CONFIG_HOME"] = dit("XDG_CONFIG_HOME");
  lancement.environnement[CrochetAgent::variable] = journal.string();
  return depart;
}

}  // namespace tarnavelle::Plateau
