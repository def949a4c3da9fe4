// How an agent is started on another machine, or joined again there.
#include <algorithm>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/InjectionPorte.hpp"
#include "Etats/Crochets.hpp"
#include "Hotes/Lointains.hpp"
#include "Hotes/Rejoindre.hpp"
#include "ScriptsInterne.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Texte.hpp"
#include "SuiviHoteInterne.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t ficheMax = 64 * 1024;

std::string citer(std::string_view texte) { return "« " + Inoffensif::epurer(texte) + " »"; }

/// Why an agent cannot be started there.
std::optional<std::string> refus(const interne::Scripts::Lieu& lieu, const Embarquement& e,
                                 const AgentCLI& cli) {
  const std::string hote = citer(e.hote);
  if (!lieu.tmux)
    return "tmux n'est pas installé sur " + hote +
           " : sans lui, un agent n'y survivrait pas au lien. Installe-le là-bas.";
  if (!lieu.programme)
    return cli.titre + " n'est pas installé sur " + hote + " : " + citer(cli.id) + " n'y est pas sur le PATH.";
  if (lieu.dossier.empty()) return "Ce dossier n'existe pas sur " + hote + " : " + citer(e.dossier) + ".";
  const bool prise =
      std::ranges::any_of(lieu.sessions, [&](const std::string& s) { return s.starts_with(e.session); });
  if (prise)
    return "Une session qui commence par " + e.session + " vient de naître sur " + hote + " : recommence.";
  return std::nullopt;
}

}  // namespace

Resultat<std::vector<std::string>, std::string> Lointains::donnerPorte(const Embarquement& e,
                                                                       const AgentCLI& cli,
                                                                       const std::string& pont, int& port) {
  const std::string hote = citer(e.hote);
  const auto forme = InjectionPorte::forme(cli);
  if (!forme) return Sinon{cli.titre + " ne sait pas recevoir la porte : il n'a pas les outils du plateau."};
  if (pont.empty())
    return Sinon{"tarnavelle-mcp n'est pas installé sur " + hote + " : l'agent n'a pas les outils du plateau."};
  const auto jeton = reglages_.jeton(e.cle);
  const auto suivi = de(e.hote);
  port = jeton ? suivi->porte() : 0;
  const std::string refuse =
      hote + " ne laisse pas passer la porte (AllowTcpForwarding) : l'agent ne peut pas joindre le plateau.";
  if (port == 0) return Sinon{refuse};
  const InjectionPorte::Porte porte{
      .url = "http://127.0.0.1:" + std::to_string(port), .token = *jeton, .nodeId = e.nom, .etendu = true};
  const bool parFichier = *forme == InjectionPorte::FormeInjection::fichierJSON;
  const std::string chemin =
      parFichier ? interne::Scripts::cheminPorte(e.session) : interne::Scripts::cheminPont(e.session);
  const auto depose = suivi->lien().courir(
      {.ligne = interne::Scripts::deposer(chemin, !parFichier) + " && printf %s \"$HOME\"",
       .entree = parFichier ? InjectionPorte::configLigne(pont, porte) : interne::Scripts::pont(pont, porte)});
  if (!depose || depose->statut != 0)
    return Sinon{"Impossible d'écrire ce qui donne la porte sur " + hote +
                 " : l'agent n'a pas les outils du plateau."};
  const std::string la = Texte::reparer(depose->sortie) + "/" + chemin;
  // Its words are there for whoever lists processes: the bridge that they name brings the token itself.
  return InjectionPorte::arguments(
      {.cli = cli, .actif = true, .cheminConfig = la, .binaireMCP = la, .porte = {}});
}

Resultat<Depart, std::string> Lointains::embarquer(const Embarquement& e, const AgentCLI& cli) {
  const auto suivi = de(e.hote);
  const LienSSH& lien = suivi->lien();
  const std::string session = e.laBas.empty() ? e.session : e.laBas;
  if (CarnetDeVol::nomSur(session) != session)
    return Sinon{"Le nom de session " + citer(session) + " n'est pas sûr."};
  Depart depart;
  int port = 0;
  if (e.laBas.empty()) {
    const auto sonde = lien.courir({.ligne = interne::Scripts::sonder(cli.id, e.dossier)});
    if (!sonde) return Sinon{sonde.raison().phrase};
    const auto lieu = interne::Scripts::lieu(sonde->sortie);
    if (auto pourquoi = refus(lieu, e, cli)) return Sinon{*std::move(pourquoi)};
    const auto porte = donnerPorte(e, cli, lieu.pont, port);
    {
      const std::lock_guard verrou(mutex_);
      sansPorte_.erase(e.cle);
      if (!porte) sansPorte_[e.cle] = porte.raison();
    }
    const auto depose = lien.courir(
        {.ligne = interne::Scripts::effacer(session) +
                  interne::Scripts::deposer(interne::Scripts::cheminDepart(session)),
         .entree = interne::Scripts::depart({.cli = cli,
                                             .session = session,
                                             .dossier = lieu.dossier,
                                             .extra = porte ? *porte : std::vector<std::string>()})});
    if (!depose) return Sinon{depose.raison().phrase};
    if (depose->statut != 0)
      return Sinon{"Impossible d'écrire dans le dossier personnel sur " + citer(e.hote) + "."};
    depart.dossier = lieu.dossier;
  }
  const auto journal = reglages_.journal(e.cle);
  const auto fichier = fiche(e.cle);
  if (const auto avant = e.laBas.empty() ? std::nullopt : lireFichier(fichier, ficheMax))
    if (const auto lue = Rejoindre::lire(*avant)) port = lue->port;  // it calls by that one still
  const auto texte = Rejoindre::ecrire(
      {.ssh = reglages_.ssh, .hote = e.hote, .titre = cli.titre, .journal = journal, .port = port});
  const std::string impossible = "Impossible d'écrire dans " + reglages_.dossier.string() + ".";
  if (!texte || !creerDossierPrive(fichier.parent_path()) || !creerDossierPrive(journal.parent_path()) ||
      !JournalCrochets::commencer(journal) || !ecrireFichierPrive(fichier, *texte, Duree::passagere))
    return Sinon{impossible};
  depart.lancement.cle = e.cle;
  depart.lancement.session = e.session;
  depart.lancement.dossier = reglages_.personnel.string();
  depart.lancement.mots = {reglages_.plateau, "rejoindre", fichier.string(), session};
  depart.conversation = e.conversation;
  return depart;
}

}  // namespace tarnavelle::Plateau
