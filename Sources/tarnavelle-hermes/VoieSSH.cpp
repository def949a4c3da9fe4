#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "Enfants/Enfant.hpp"
#include "EnvHermes.hpp"
#include "Hermes/RequeteGateway.hpp"
#include "Hermes/ReveilGateway.hpp"
#include "Hotes/HotesConnus.hpp"
#include "Hotes/LienSSH.hpp"
#include "Reseau/ClientHTTP.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/Lanceur.hpp"
#include "Voie.hpp"

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;
using ReveilGateway::EchecGateway;
using ReveilGateway::Geste;

constexpr auto tunnelMax = 20s;                 ///< for ssh to lead there
constexpr auto sondeMax = 5s;                   ///< for a health probe
constexpr auto rejouerMax = 900s;               ///< for the command-line program
constexpr std::size_t messageMax = 100 * 1024;  ///< bytes of one word there

std::string phrase(const EchecGateway& echec, const std::string& hote, bool aLuLeFichier) {
  const std::string sur = "Sur « " + hote + " », ";
  return std::visit(
      Selon{
          [&](const EchecGateway::liaison& e) {
            return "La passerelle d'Hermès n'a pas pu être cherchée sur « " + e.hote + " ».";
          },
          [&](const EchecGateway::binaireAbsent& e) {
            return sur +
                   "Hermès ne peut pas être lancé : " + Inoffensif::epurer(Texte::tronquer(e.texte, 200)) + ".";
          },
          [&](const EchecGateway::serveurDesactive&) {
            return sur +
                   "la passerelle d'Hermès est fermée : il faut API_SERVER_ENABLED=true dans ~/.hermes/.env" +
                   (aLuLeFichier ? "." : ", et ce fichier n'y est pas.");
          },
          [&](const EchecGateway::cleIntrouvable&) {
            return sur + "la passerelle d'Hermès n'a pas de clé : il faut API_SERVER_KEY dans ~/.hermes/.env.";
          },
          [&](const EchecGateway::refusee&) {
            return sur + "la passerelle d'Hermès refuse la clé : " + std::string(ReglagesHermes::cleSecrete) +
                   ", ou son ~/.hermes/.env, est à revoir.";
          },
          [&](const EchecGateway::tourneMaisMuette&) {
            return sur + "Hermès tourne, mais sa passerelle ne répond pas.";
          }},
      echec.cas);
}

/// A port of the loopback that was free just now; 0 when there is none.
int portLibre() {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0) return 0;
  sockaddr_in adresse{};
  adresse.sin_family = AF_INET;
  adresse.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t taille = sizeof adresse;
  const bool lie = ::bind(fd, reinterpret_cast<sockaddr*>(&adresse), sizeof adresse) == 0 &&
                   ::getsockname(fd, reinterpret_cast<sockaddr*>(&adresse), &taille) == 0;
  ::close(fd);
  return lie ? ntohs(adresse.sin_port) : 0;
}

bool accepte(int port) {
  const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
  if (fd < 0) return false;
  sockaddr_in adresse{};
  adresse.sin_family = AF_INET;
  adresse.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  adresse.sin_port = htons(static_cast<std::uint16_t>(port));
  const bool pris = ::connect(fd, reinterpret_cast<sockaddr*>(&adresse), sizeof adresse) == 0;
  ::close(fd);
  return pris;
}

/// An ssh that forwards one port. Its input is ours: when that ends, however this process does, it ends.
class Tunnel {
 public:
  Tunnel(const Plateau::LienSSH& lien, int portLaBas)
      : hote_(lien.hote()),
        journal_(lien.reglages().dossier / ("tunnel-" + std::to_string(::getpid()))),
        port_(portLibre()) {
    static const std::string gardien =
        "exec 3<&0; \"$@\" </dev/null & p=$!; { read -r x <&3; kill $p; } 2>/dev/null & wait $p; s=$?; "
        "kill $! 2>/dev/null; exit $s";
    std::vector<std::string> mots = {"/bin/sh", "-c", gardien, "sh"};
    for (std::string& mot : lien.motsTunnel(port_, "127.0.0.1", portLaBas, journal_))
      mots.push_back(std::move(mot));
    enfant_ = Plateau::Enfant::lancer(
        {.mots = std::move(mots), .environnement = lien.reglages().environnement, .dossier = "/"});
  }
  ~Tunnel() {
    if (enfant_) enfant_->entree.fermer();
    if (enfant_ && !statut_) ::waitpid(enfant_->pid, nullptr, 0);
    ::unlink(journal_.c_str());
  }
  Tunnel(const Tunnel&) = delete;
  Tunnel& operator=(const Tunnel&) = delete;

  int port() const { return port_; }

  bool vit() {
    int statut = 0;
    if (enfant_ && !statut_ && ::waitpid(enfant_->pid, &statut, WNOHANG) != 0) statut_ = statut;
    return enfant_ && !statut_;
  }

  /// Waits until it leads there. Why it does not: sentences.
  std::optional<std::string> attendre(const std::atomic<bool>& arret) {
    const auto fin = std::chrono::steady_clock::now() + tunnelMax;
    while (vit() && !arret && std::chrono::steady_clock::now() < fin) {
      if (accepte(port_)) return std::nullopt;
      std::this_thread::sleep_for(20ms);
    }
    if (arret) return "Interrompu.";
    if (vit()) return Plateau::PanneSSH::de(Plateau::PanneSSH::Cause::horsDelai, hote_).phrase;
    return Plateau::PanneSSH::lire(hote_, lireFichier(journal_, 65536).value_or("")).phrase;
  }

 private:
  const std::string hote_;
  const std::filesystem::path journal_;
  const int port_;
  std::optional<Plateau::Enfant> enfant_;
  std::optional<int> statut_;
};

class VoieSSH final : public Voie {
 public:
  VoieSSH(ReglagesHermes::Passerelle passerelle, const AccesSSH& acces)
      : passerelle_(std::move(passerelle)),
        lien_({.configuration = acces.configuration,
               .dossier = Plateau::ReglagesSSH::dossierCourt(acces.prises),
               .environnement = Plateau::Lanceur::heritage()},
              acces.hote) {}

  Resultat<Ouverte, std::string> ouvrir(const Dire& dire) override {
    arret_ = false;
    if (lien_.reglages().dossier.empty())
      return Sinon{std::string("Il n'y a pas de dossier où tenir les liaisons ssh.")};
    if (!Plateau::HotesConnus::nomSur(lien_.hote()))
      return Sinon{Plateau::PanneSSH::de(Plateau::PanneSSH::Cause::nom, lien_.hote()).phrase};
    if (tunnel_ && tunnel_->vit() && ouverte_ && estUnSucces(sonder().value_or(0))) return *ouverte_;
    tunnel_.reset();
    ouverte_.reset();

    const auto env = courir(EnvHermes::ligne());
    if (!env) return Sinon{env.raison().phrase};
    auto lecture = EnvHermes::lire(env->sortie);
    if (!passerelle_.cle.empty()) lecture.cle = passerelle_.cle;
    if (const auto echec = ReveilGateway::apresEnv(lecture))
      return Sinon{phrase(*echec, lien_.hote(), lecture.aLuLeFichier)};
    tunnel_.emplace(lien_, lecture.portDistant.value_or(EnvHermes::portUsuel));
    if (auto refus = tunnel_->attendre(arret_)) {
      tunnel_.reset();
      return Sinon{*std::move(refus)};
    }
    const Ouverte ouverte{
        .base = "http://127.0.0.1:" + std::to_string(tunnel_->port()) + "/v1",
        .cle = *lecture.cle,
        .modele = RequeteGateway::modele({.annonce = lecture.modele, .surcharge = passerelle_.modele})};
    ouverte_ = ouverte;
    if (const auto echec = reveiller(dire)) {
      ouverte_.reset();
      return Sinon{phrase(*echec, lien_.hote(), lecture.aLuLeFichier)};
    }
    return ouverte;
  }

  Resultat<std::string, std::string> rejouer(const std::string& message) override {
    if (message.size() > messageMax)
      return Sinon{std::string("Le message est trop long pour la ligne de commande d'Hermès : redemandez.")};
    const auto dit = lien_.courir(
        {.ligne = EnvHermes::ligneMessage(), .entree = message, .auPlus = rejouerMax, .arret = [this] {
           return arret_.load();
         }});
    if (!dit) return Sinon{dit.raison().phrase};
    if (dit->statut == 0) return dit->sortie;
    return Sinon{"La ligne de commande d'Hermès a échoué sur « " + lien_.hote() + " » (statut " +
                 std::to_string(dit->statut) +
                 ") : " + Texte::tronquer(Texte::rogner(Texte::reparer(dit->sortie)), 300) + "."};
  }

  bool rejoue() const override { return true; }
  void interrompre() override { arret_ = true; }

 private:
  Resultat<Plateau::SortieSSH, Plateau::PanneSSH> courir(std::string ligne) {
    return lien_.courir({.ligne = std::move(ligne), .arret = [this] { return arret_.load(); }});
  }

  /// The status of a health probe; nothing when none came.
  std::optional<int> sonder() {
    const std::string base = ouverte_ ? ouverte_->base : "";
    const auto reponse = ClientHTTP().envoyer({.methode = "GET",
                                               .url = base.substr(0, base.rfind('/')) + "/health",
                                               .entetes = RequeteGateway::entetes(ouverte_->cle, std::nullopt),
                                               .corps = ""},
                                              {.attente = sondeMax, .vie = sondeMax, .corpsMax = 1 << 20});
    return reponse ? std::optional(reponse->statut) : std::nullopt;
  }

  /// Takes one step after the other until the gateway answers; why it does not.
  std::optional<EchecGateway> reveiller(const Dire& dire) {
    Geste geste = ReveilGateway::apresSante(sonder());
    while (true) {
      if (arret_) return std::nullopt;  // whoever interrupts says so
      std::optional<EchecGateway> echec;
      bool fini = false;
      geste = std::visit(
          Selon{[&](const Geste::rienAFaire&) -> Geste {
                  fini = true;
                  return {Geste::rienAFaire{}};
                },
                [&](const Geste::abandonner& g) -> Geste {
                  fini = true;
                  echec = g.echec;
                  return {Geste::rienAFaire{}};
                },
                [&](const Geste::attendreSante& g) -> Geste { return patienter(g.essais); },
                [&](const Geste::sonderProcessus&) -> Geste {
                  const auto vu = courir(EnvHermes::ligneProcessus());
                  const bool marque = vu && vu->sortie.find(EnvHermes::sentinelle) != std::string::npos;
                  return ReveilGateway::apresPgrep(vu ? std::optional<std::int32_t>(vu->statut) : std::nullopt,
                                                   marque, lien_.hote());
                },
                [&](const Geste::lancer&) -> Geste {
                  dire("La passerelle d'Hermès dort sur « " + lien_.hote() + " » : elle est réveillée.");
                  const auto fait = courir(EnvHermes::ligneLancement());
                  return ReveilGateway::apresLancement(
                      {.ec = fait ? std::optional<std::int32_t>(fait->statut) : std::nullopt,
                       .err = fait ? std::string_view(fait->sortie) : std::string_view(),
                       .hote = lien_.hote()});
                }},
          geste.cas);
      if (fini) return echec;
    }
  }

  Geste patienter(int essais) {
    for (int essai = 0; essai < essais && !arret_; ++essai) {
      if (essai > 0) std::this_thread::sleep_for(ReveilGateway::pauseSante);
      const auto geste = ReveilGateway::apresSante(sonder());
      if (!std::holds_alternative<Geste::sonderProcessus>(geste.cas)) return geste;
    }
    return {Geste::abandonner{{EchecGateway::tourneMaisMuette{}}}};
  }

  const ReglagesHermes::Passerelle passerelle_;
  const Plateau::LienSSH lien_;
  std::atomic<bool> arret_ = false;
  std::optional<Tunnel> tunnel_;
  std::optional<Ouverte> ouverte_;
};

}  // namespace

std::unique_ptr<Voie> voieSSH(const ReglagesHermes::Passerelle& passerelle, const AccesSSH& acces) {
  return std::make_unique<VoieSSH>(passerelle, acces);
}

}  // namespace tarnavelle
