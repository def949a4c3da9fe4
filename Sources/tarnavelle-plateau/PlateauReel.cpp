#include "PlateauReel.hpp"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Agents/CrochetAgent.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/Programme.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "TerminauxTmux/Lanceur.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::chrono::seconds tourDuFichier{5};  ///< between two looks at whether the endpoint file is there

/// The board needs a scene, and whoever starts it in a folder wants that one. The root is where a service
/// starts: it is no one's folder.
std::optional<std::string> dresserScene(Registre& registre,
                                        const std::function<void(const std::string&)>& dire) {
  const auto scenes = registre.scenes();
  if (!scenes) return scenes.raison().phrase;
  std::error_code erreur;
  const auto ici = std::filesystem::current_path(erreur);
  const bool connu = ici.empty() || ici == ici.root_path() ||
                     std::ranges::any_of(*scenes, [&](const FicheScene& s) { return s.dossier == ici; });
  if (!scenes->empty() && connu) return std::nullopt;
  const std::string base = ici.filename().empty() ? "Scène" : ici.filename().string();
  auto scene = registre.ajouterScene(base, ici.string());
  std::string nom = base;
  for (int rang = 2; !scene && scene.raison().cas == Avarie::Cas::pris; ++rang) {
    nom = base + " " + std::to_string(rang);
    scene = registre.ajouterScene(nom, ici.string());
  }
  if (scenes->empty()) return scene ? std::nullopt : std::optional(scene.raison().phrase);
  if (scene && registre.montrerScene(*scene))
    dire("Nouvelle scène : « " + nom + " », pour " + ici.string() + ".");
  else
    dire("Pas de scène pour " + ici.string() + (scene ? "." : " : " + scene.raison().phrase));
  return std::nullopt;
}

/// A program beside this one; empty when it is not there.
std::string voisin(std::string_view nom) {
  std::string chemin = Programme::voisin(nom);
  return fichierExecutable(chemin) ? chemin : "";
}

CatalogueRegles reglesDe(const Variables& environnement) {
  const auto configuration = environnement.texte("XDG_CONFIG_HOME");
  const std::filesystem::path reglages =
      configuration ? std::filesystem::path(*configuration) : dossierPersonnel(environnement) / ".config";
  return CatalogueRegles((reglages / "tarnavelle" / "regles").string());
}

std::vector<std::unique_ptr<CanalAlertes>> canaux(const Variables& environnement, const Variables& reglages,
                                                  const std::function<void(const std::string&)>& dire) {
  std::vector<std::unique_ptr<CanalAlertes>> ouverts;
  if (auto bureau = canalBureau(environnement)) ouverts.push_back(std::move(bureau));
  auto ntfy = canalNtfy(reglages);
  if (!ntfy)
    dire("Pas d'alertes par ntfy. " + ntfy.raison());
  else if (*ntfy)
    ouverts.push_back(*std::move(ntfy));
  return ouverts;
}

ReglagesSSH ssh(const PlateauReel::Reglages& reglages) {
  return {.configuration = reglages.ssh,
          .dossier = ReglagesSSH::dossierCourt(reglages.lieux.ssh()),
          .environnement = Lanceur::heritage()};
}

std::unique_ptr<SecondMac> secondMac(const PlateauReel::Reglages& reglages, const ReglagesHermes& reglees) {
  const auto hote = reglees.texte(ReglagesHermes::clePlateauDistant);
  if (!hote) return nullptr;
  return std::make_unique<SecondMac>(
      *hote, [lien = LienSSH(ssh(reglages), *hote)](const OrdreSSH& ordre) { return lien.courir(ordre); });
}

/// How a conversation with Hermès is to reach his machine: over the board's own connections.
std::vector<std::string> motsSSH(const PlateauReel::Reglages& reglages) {
  std::vector<std::string> mots = {"--prises", reglages.lieux.ssh().string()};
  if (!reglages.ssh.empty()) mots.insert(mots.end(), {"--config-ssh", reglages.ssh.string()});
  return mots;
}

}  // namespace

PlateauReel::PlateauReel(const Reglages& reglages, Registre registre, Acces acces,
                         std::unique_ptr<TerminauxTmux> terminaux, CatalogueRegles regles)
    : hermes_(ReglagesHermes::lire(reglages.environnement)),
      registre_(std::move(registre)),
      acces_(std::move(acces)),
      terminaux_(std::move(terminaux)),
      veille_(*terminaux_, std::move(regles), reglages.lieux.crochets()),
      trousseau_(acces_.jeton, acces_.secret),
      lointains_({.ssh = ssh(reglages),
                  .personnel = dossierPersonnel(reglages.environnement),
                  .plateau = Programme::chemin(),
                  .dossier = reglages.lieux.agents(),
                  .journal = [this](std::string_view cle) { return veille_.journal(cle); },
                  .port = [this] { return static_cast<int>(acces_.port); },
                  .jeton = [this](std::string_view cle) { return trousseau_.jetonDe(cle); }}),
      secondMac_(secondMac(reglages, hermes_)),
      lanceurs_({.url = [this] { return "http://127.0.0.1:" + std::to_string(acces_.port); },
                 .jeton = [this](std::string_view cle) { return trousseau_.jetonDe(cle); },
                 .pont = Programme::pont(reglages.environnement).value_or(""),
                 .ctl = voisin("tarnavellectl"),
                 .hermes = voisin("tarnavelle-hermes"),
                 .motsSSH = motsSSH(reglages),
                 .conversations = reglages.lieux.conversations(),
                 .dossier = reglages.lieux.agents(),
                 .journal = [this](std::string_view cle) { return veille_.journal(cle); },
                 .environnement = reglages.environnement,
                 .ailleurs = [this](const Embarquement& e,
                                    const AgentCLI& cli) { return lointains_.embarquer(e, cli); }}),
      machine_(reglages.environnement, Lanceur::heritage()),
      extinction_(*terminaux_),
      alertes_(canaux(reglages.environnement, hermes_.variables(), reglages.dire),
               [this, dire = reglages.dire](const std::string& plainte) {
                 dire(plainte);
                 registre_.inscrire({.quand = std::chrono::floor<std::chrono::milliseconds>(horloge_.date()),
                                     .qui = "le plateau",
                                     .verbe = "alerte",
                                     .issue = plainte});
               }),
      vues_(*terminaux_, registre_, veille_, alertes_,
            {.dossier = reglages.lieux.vues(),
             .liste = {Programme::chemin(), "liste"},
             .regard = reglages.regard}),
      dessin_(Programme::voisin("tarnavelle-dessin"), Lanceur::heritage()),
      photographe_(*terminaux_, {.dossier = reglages.lieux.captures(),
                                 .personnel = dossierPersonnel(reglages.environnement),
                                 .peindre = [this](const Grille& grille) { return dessin_.peindre(grille); }}),
      ecoute_(registre_, {.ntfy = hermes_.ntfy(),
                          .alertes = hermes_.alertes(),
                          .change = [this] { vues_.rafraichir(); },
                          .dire = reglages.dire}),
      executeur_({.terminaux = *terminaux_,
                  .registre = registre_,
                  .veille = veille_,
                  .horloge = horloge_,
                  .lanceurs = lanceurs_,
                  .machine = &machine_,
                  .vues = &vues_,
                  .photographe = &photographe_,
                  .extincteur = &extinction_,
                  .oreille = &ecoute_,
                  .lointain = &lointains_,
                  .distant = secondMac_.get()}) {}

PlateauReel::~PlateauReel() {
  terminaux_->neRienDemarrer();
  if (secondMac_) secondMac_->arreter();
  executeur_.arreter();
}

Resultat<std::unique_ptr<PlateauReel>, std::string> PlateauReel::ouvrir(const Reglages& reglages,
                                                                        Registre registre) {
  if (!registre.avis().empty()) reglages.dire(registre.avis());
  if (!creerDossierPrive(reglages.lieux.crochets()))
    return Sinon{"Impossible de créer " + reglages.lieux.crochets().string() + "."};
  if (auto refus = dresserScene(registre, reglages.dire)) return Sinon{*std::move(refus)};
  auto acces = Acces::lire(reglages.lieux.acces());
  if (!acces) return Sinon{std::string("Le système ne fournit pas d'aléa pour les jetons.")};
  if (!acces->avis.empty()) reglages.dire(acces->avis);
  const auto marque = [crochets = reglages.lieux.crochets()](const std::string& cle) {
    return CrochetAgent::variable + ("=" + VeilleReelle::journalDe(crochets, cle).string());
  };
  auto terminaux = TerminauxTmux::ouvrir({.prise = reglages.socket,
                                          .dossier = reglages.lieux.tmux(),
                                          .lanceur = {Programme::chemin(), "lancer"},
                                          .environnement = Lanceur::heritage(),
                                          .marque = marque,
                                          .demons = {AgentCLI::codex().id}});
  if (!terminaux) return Sinon{terminaux.raison()};
  const auto chemin = PorteControle::cheminEndpoint(reglages.environnement);
  if (const auto autre = FichierEndpoint::autrePorte(chemin))
    return Sinon{"Une autre porte est ouverte (processus " + std::to_string(autre->pid) + ", port " +
                 std::to_string(autre->port) + ") : « " + chemin.string() +
                 " » mène à elle. À fermer d'abord."};
  auto regles = reglesDe(reglages.environnement);
  for (const std::string& plainte : regles.plaintes()) reglages.dire(plainte);

  std::unique_ptr<PlateauReel> plateau(new PlateauReel(reglages, std::move(registre), *std::move(acces),
                                                       *std::move(terminaux), std::move(regles)));
  for (const std::string& plainte : plateau->hermes_.plaintes()) reglages.dire(plainte);
  if (const std::string manques = plateau->lanceurs_.manques(); !manques.empty()) reglages.dire(manques);
  if (auto refus = plateau->demarrer(reglages)) return Sinon{*std::move(refus)};
  return plateau;
}

std::unique_ptr<ServeurHTTP> PlateauReel::ecouter(std::uint16_t port) {
  return ServeurHTTP::ouvrir({.port = port,
                              .pannes = {},
                              .renvoie = [this](std::uint16_t laBas) { return lointains_.mene(laBas); },
                              .repondu = [this] { extinction_.achever(); }},
                             trousseau_, [this](const Json& corps, const Appelant& appelant) {
                               return executeur_.executer(corps, appelant);
                             });
}

std::optional<std::string> PlateauReel::demarrer(const Reglages& reglages) {
  if (const auto avarie = executeur_.adopter()) return avarie->phrase;
  veille_.demarrer();
  executeur_.veiller();

  serveur_ = ecouter(acces_.port);  // the agents that outlived the last door know that one
  if (!serveur_) serveur_ = ecouter(0);
  if (!serveur_) return "Aucun port n'est libre.";
  acces_.port = serveur_->port();
  if (!acces_.ecrire(reglages.lieux.acces()))
    return "Impossible d'écrire dans " + reglages.lieux.racine().string() + " : " + raisonEcriture(errno) + ".";
  const auto chemin = PorteControle::cheminEndpoint(reglages.environnement);
  if (auto fichier = FichierEndpoint::ecrire(
          chemin, {.host = "127.0.0.1", .pid = ::getpid(), .port = acces_.port, .token = acces_.jeton}))
    fichier_.emplace(*std::move(fichier));
  else
    return "Impossible d'écrire " + chemin.string() + " : " + raisonEcriture(errno) + ".";
  // Without it nobody finds the door, and nothing tells that it was cleared away.
  ronde_.emplace(tourDuFichier, [this] { fichier_->retablir(); });
  if (const auto refus = vues_.demarrer()) reglages.dire(*refus);
  ecoute_.demarrer();
  return std::nullopt;
}

}  // namespace tarnavelle::Plateau
