#include "Machine/LanceursReels.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <random>

#include "Agents/AgentCLI.hpp"
#include "Agents/CarnetDeVol.hpp"
#include "Agents/InjectionPorte.hpp"
#include "Etats/Crochets.hpp"
#include "ProgrammesInterne.hpp"
#include "Registre/Fiches.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle::Plateau {
namespace {

/// Version 4 (RFC 9562): what programs take for an id of their own.
std::string uuid() {
  std::random_device hasard;
  std::string id = "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx";
  for (char& c : id) {
    constexpr std::string_view chiffres = "0123456789abcdef";
    if (c == 'x') c = chiffres[hasard() % 16];
    if (c == 'y') c = chiffres[8 + hasard() % 4];
  }
  return id;
}

bool idSur(std::string_view id) {
  return !id.empty() && id.size() <= 100 && !id.starts_with('-') &&
         std::ranges::all_of(id, [](unsigned char c) { return c > 0x20 && c < 0x7F; });
}

void ajouter(std::vector<std::string>& mots, const std::vector<std::string>& autres) {
  mots.insert(mots.end(), autres.begin(), autres.end());
}

/// tmux draws any colour and fits it to the terminal of whoever looks; without the variable some programs draw
/// another screen, frame and all.
std::string couleurs(const Variables& environnement) {
  return environnement.texte("COLORTERM").value_or("truecolor");
}

/// What joins it to the door; false when a file could not be written.
bool relier(Lancement& lancement, const AgentCLI& cli, const InjectionPorte::Porte& porte,
            const std::string& pont, const std::filesystem::path& dossier) {
  InjectionPorte::Lancement injection{.cli = cli, .actif = !pont.empty(), .binaireMCP = pont, .porte = porte};
  const auto forme = InjectionPorte::forme(cli);
  // Else it writes its environment, token and all, into a file that others may read, to start shells faster.
  if (forme == InjectionPorte::FormeInjection::tomlPointe)
    ajouter(lancement.mots, {"-c", "features.shell_snapshot=false"});
  if (injection.actif && forme == InjectionPorte::FormeInjection::fichierJSON) {
    const auto fichier = dossier / "porte.json";
    if (!ecrireFichierPrive(fichier, InjectionPorte::configLigne(pont, porte), Duree::passagere)) return false;
    injection.cheminConfig = fichier.string();
  } else if (injection.actif && forme == InjectionPorte::FormeInjection::tomlPointe) {
    injection.porte.token.clear();  // words are there for whoever lists processes
    ajouter(lancement.mots, {"-c", "mcp_servers." + std::string(InjectionPorte::nomServeur) +
                                       ".env_vars=[\"TARNAVELLE_CONTROL_TOKEN\"]"});
  }
  ajouter(lancement.mots, InjectionPorte::arguments(injection));
  for (const auto& [nom, valeur] : InjectionPorte::envPipe(porte)) lancement.environnement[nom] = valeur;
  return true;
}

}  // namespace

std::optional<std::string> LanceursReels::binaire(const std::string& programme) const {
  const std::string chemins = reglages_.environnement.octets("PATH").value_or("");
  for (std::size_t debut = 0; debut <= chemins.size();) {
    const auto fin = std::min(chemins.find(':', debut), chemins.size());
    const std::filesystem::path dossier = chemins.substr(debut, fin - debut);
    if (dossier.is_absolute() && fichierExecutable(dossier / programme)) return (dossier / programme).string();
    debut = fin + 1;
  }
  const auto* connue = interne::programme(programme);
  const auto connu =
      connue ? connue->cli.binaire({.dossierPersonnel = dossierPersonnel(reglages_.environnement).string(),
                                    .estExecutable = fichierExecutable})
             : std::nullopt;
  return connu ? std::optional(connu->string()) : std::nullopt;
}

std::vector<std::string> LanceursReels::enPlus() const {
  std::vector<std::string> ids;
  for (const auto& programme : interne::programmes())
    if (!AgentCLI::parId(programme.cli.id)) ids.push_back(programme.cli.id);
  return ids;
}

std::optional<std::string> LanceursReels::usuel() {
  for (const auto& programme : interne::programmes())
    if (binaire(programme.cli.id)) return programme.cli.id;
  return std::nullopt;
}

std::string LanceursReels::manques() const {
  std::string phrases;
  const auto manque = [&](std::string_view programme, std::string_view effet) {
    phrases += (phrases.empty() ? "" : "\n") + std::string(programme) +
               " n'est pas à côté du plateau : " + std::string(effet);
  };
  if (reglages_.pont.empty()) manque("tarnavelle-mcp", "les agents n'auront pas les outils de la porte.");
  if (reglages_.ctl.empty())
    manque("tarnavellectl", "ce que font les agents ne se lira que sur leur écran, et sera su plus tard.");
  return phrases;
}

std::string LanceursReels::absolu(const std::string& dossier) const {
  if (dossier == "~" || dossier.starts_with("~/"))
    return dossierPersonnel(reglages_.environnement).string() + dossier.substr(1);
  return dossier;
}

std::optional<std::string> LanceursReels::empechement(const Embarquement& e) const {
  if (e.programme == FicheAgent::conversationHermes) {
    const auto lieu = conversation(e.conversation);
    return *lieu ? std::nullopt : std::optional(lieu->raison());
  }
  const auto* connu = interne::programme(e.programme);
  if (!connu) return "Aucun CLI ne s'appelle « " + e.programme + " ».";
  if (!e.hote.empty() && reglages_.ailleurs) return std::nullopt;
  if (!e.hote.empty()) return "Ouvrir un agent sur une autre machine n'est pas encore câblé ici.";
  if (!binaire(e.programme))
    return connu->cli.titre + " n'est pas installé : « " + e.programme +
           " » n'est ni sur le PATH, ni là où il s'installe d'habitude.";
  const std::filesystem::path dossier = absolu(e.dossier);
  std::error_code erreur;
  if (!dossier.is_absolute() || !std::filesystem::is_directory(dossier, erreur))
    return "Ce dossier n'existe pas : « " + e.dossier + " ».";
  return std::nullopt;
}

Resultat<Depart, std::string> LanceursReels::agent(const Embarquement& e) {
  if (e.programme == FicheAgent::conversationHermes) return converser(e);
  if (auto refus = empechement(e)) return Sinon{*std::move(refus)};
  const auto* connu = interne::programme(e.programme);
  if (!e.hote.empty()) return reglages_.ailleurs(e, connu->cli);
  const auto programme = binaire(e.programme);
  Depart depart;
  Lancement& lancement = depart.lancement;
  lancement.cle = e.cle;
  lancement.session = e.session;
  lancement.dossier = absolu(e.dossier);
  const auto dossier = dossierDe(e.cle);
  const auto journal = reglages_.journal(e.cle);
  const auto refus = [this] {
    const int cause = errno;
    return "Impossible d'écrire dans " + reglages_.dossier.string() + " : " + raisonEcriture(cause) + ".";
  };
  if (!creerDossierPrive(dossier) || !creerDossierPrive(journal.parent_path())) return Sinon{refus()};
  if (!JournalCrochets::commencer(journal)) return Sinon{refus()};  // what an older program said is not its own

  // A program knows no conversation in which nothing was said.
  const std::vector<std::string> reprise = connu->reprise.empty() || !e.entamee || !idSur(e.conversation)
                                               ? std::vector<std::string>()
                                               : std::vector{std::string(connu->reprise), e.conversation};
  lancement.mots = {*programme};
  if (connu->repriseSousCommande) ajouter(lancement.mots, reprise);
  ajouter(lancement.mots, connu->cli.arguments);
  lancement.environnement.emplace("COLORTERM", couleurs(reglages_.environnement));
  const InjectionPorte::Porte porte{
      .url = reglages_.url(), .token = reglages_.jeton(e.cle).value_or(""), .nodeId = e.nom, .etendu = true};
  if (!relier(lancement, connu->cli, porte, reglages_.pont, dossier)) return Sinon{refus()};
  const auto autres =
      reglages_.pont.empty() ? std::nullopt : interne::reglagesDuPont(e.programme, reglages_.pont);
  const auto crochets =
      reglages_.ctl.empty()
          ? std::nullopt
          : Crochets::branchement(e.programme, {.ctl = reglages_.ctl, .dossier = dossier, .journal = journal},
                                  autres.value_or(Json::object()));
  if (crochets) {
    for (const auto& [fichier, texte] : crochets->fichiers)
      if (!creerDossierPrive(fichier.parent_path()) || !ecrireFichierPrive(fichier, texte, Duree::passagere))
        return Sinon{refus()};
    ajouter(lancement.mots, crochets->mots);
    for (const auto& [nom, valeur] : crochets->environnement) lancement.environnement[nom] = valeur;
  }
  if (!reprise.empty()) depart.conversation = e.conversation;
  if (!connu->repriseSousCommande) ajouter(lancement.mots, reprise);
  if (reprise.empty() && !connu->neuve.empty()) {
    depart.conversation = idSur(e.conversation) ? e.conversation : uuid();
    ajouter(lancement.mots, {std::string(connu->neuve), depart.conversation});
  }
  return depart;
}

/// A key is found again on a terminal, where others may have written it.
std::filesystem::path LanceursReels::dossierDe(const std::string& cle) const {
  const std::string nom = CarnetDeVol::nomSur(cle);
  return reglages_.dossier / (nom.starts_with('.') ? "_" + nom : nom);
}

void LanceursReels::oublier(const std::string& cle) {
  std::error_code erreur;
  std::filesystem::remove_all(dossierDe(cle), erreur);
}

std::optional<Lancement> LanceursReels::shell(const std::string& cle, const std::string& session,
                                              const std::string& commande, const std::string& dossier) {
  Lancement lancement;
  lancement.cle = cle;
  lancement.session = session;
  lancement.mots = {reglages_.environnement.texte("SHELL").value_or("/bin/sh"), "-c", commande};
  lancement.dossier = absolu(dossier);
  return lancement;
}

}  // namespace tarnavelle::Plateau
