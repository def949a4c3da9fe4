#include "Hotes/LienSSH.hpp"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <random>

#include "Enfants/Enfant.hpp"
#include "Hotes/HotesConnus.hpp"
#include "MarquesInterne.hpp"
#include "Socle/Fichiers.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::size_t journalMax = 64 * 1024;  ///< bytes read of what ssh said
constexpr std::chrono::seconds ordreMax{3};    ///< for what is asked of the shared connection here

/// Said before the user's configuration, whose value for each counts no more: nothing of ours goes along,
/// nobody is asked anything, a silent link ends within 15 s. ssh before 8.7 lacks the options that
/// `IgnoreUnknown` names.
constexpr std::array options = {
    "IgnoreUnknown=SessionType,StdinNull,ForkAfterAuthentication",
    "BatchMode=yes",
    "ConnectTimeout=10",
    "ServerAliveInterval=5",
    "ServerAliveCountMax=2",
    "LogLevel=VERBOSE",
    "ForwardAgent=no",
    "ForwardX11=no",
    "Tunnel=no",
    "RemoteCommand=none",
    "PermitLocalCommand=no",
    "StdinNull=no",
    "ForkAfterAuthentication=no",
    "VisualHostKey=no",
};

/// Of the shared connection's socket, in few bytes (FNV-1a).
std::string empreinte(std::string_view texte) {
  std::uint64_t h = 14695981039346656037U;
  for (const char c : texte) h = (h ^ static_cast<unsigned char>(c)) * 1099511628211U;
  std::string chiffres;
  for (int i = 0; i < 12; ++i, h >>= 4U) chiffres += "0123456789abcdef"[h & 15U];
  return chiffres;
}

/// A file for what one ssh says of itself.
class Journal {
 public:
  explicit Journal(const std::filesystem::path& dossier)
      : chemin_(dossier / ("j" + std::to_string(::getpid()) + "-" + std::to_string(++rang_))) {}
  ~Journal() { ::unlink(chemin_.c_str()); }
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;
  const std::filesystem::path& chemin() const { return chemin_; }
  std::string lire() const { return lireFichier(chemin_, journalMax).value_or(""); }

 private:
  static inline std::atomic<unsigned> rang_ = 0;
  std::filesystem::path chemin_;
};

void ajouter(std::vector<std::string>& mots, std::initializer_list<std::string> autres) {
  mots.insert(mots.end(), autres);
}

}  // namespace

std::filesystem::path ReglagesSSH::dossierCourt(const std::filesystem::path& voulu) {
  if (voulu.string().size() <= dossierMax && reserverDossier(voulu)) return voulu;
  const std::filesystem::path court =
      "/tmp/tarnavelle-" + std::to_string(::getuid()) + "-" + empreinte(voulu.string());
  return reserverDossier(court) ? court : std::filesystem::path();
}

LienSSH::LienSSH(ReglagesSSH reglages, std::string hote)
    : reglages_(std::move(reglages)), hote_(std::move(hote)) {
  // The ssh that leads there through another machine is told nothing of `BatchMode`: without a terminal it
  // would ask in a window.
  reglages_.environnement["SSH_ASKPASS_REQUIRE"] = "never";
}

std::string LienSSH::prise() const {
  std::string chemin;
  for (const char c : (reglages_.dossier / ("c" + empreinte(hote_))).string()) {
    if (c == '%') chemin += '%';  // ssh expands it
    chemin += c;
  }
  return chemin;
}

std::vector<std::string> LienSSH::mots(const std::filesystem::path& journal) const {
  std::vector<std::string> mots = {reglages_.programme};
  if (!reglages_.configuration.empty()) ajouter(mots, {"-F", reglages_.configuration.string()});
  ajouter(mots, {"-e", "none", "-E", journal.string()});
  for (const char* option : options) ajouter(mots, {"-o", option});
  return mots;
}

std::vector<std::string> LienSSH::motsTerminal(const std::string& ligne,
                                               const std::filesystem::path& journal) const {
  auto mots = this->mots(journal);
  // Of its own: a server allows few sessions on one connection, and what floods a screen must not hold up the
  // rest.
  ajouter(mots, {"-o", "ControlMaster=no", "-o", "ControlPath=none", "-o", "ClearAllForwardings=yes", "-o",
                 "SessionType=default", "-tt", "--", hote_, ligne});
  return mots;
}

std::vector<std::string> LienSSH::motsTunnel(int portIci, const std::string& cible, int portLaBas,
                                             const std::filesystem::path& journal) const {
  auto mots = this->mots(journal);
  ajouter(mots, {"-o", "ControlMaster=no", "-o", "ControlPath=none", "-o", "ExitOnForwardFailure=yes", "-o",
                 "GatewayPorts=no", "-N", "-T", "-L",
                 "127.0.0.1:" + std::to_string(portIci) + ":" + cible + ":" + std::to_string(portLaBas), "--",
                 hote_});
  return mots;
}

std::vector<std::string> LienSSH::motsShell(const std::filesystem::path& journal) const {
  auto mots = this->mots(journal);
  ajouter(mots, {"-o", "SessionType=default", "-o", "ClearAllForwardings=yes", "-o", "ControlMaster=auto", "-o",
                 "ControlPersist=60", "-S", prise(), "-T", "--", hote_, "exec sh -s"});
  return mots;
}

Resultat<SortieSSH, PanneSSH> LienSSH::courir(const OrdreSSH& ordre) const {
  if (!HotesConnus::nomSur(hote_)) return Sinon{PanneSSH::de(PanneSSH::Cause::nom, hote_)};
  const Journal journal(reglages_.dossier);
  const interne::Marques marques;
  const std::string script = marques.autour(ordre.ligne, ordre.entree) + "exit 0\n";
  const auto arrivee = Plateau::courir({.embarque = {.mots = motsShell(journal.chemin()),
                                                     .environnement = reglages_.environnement,
                                                     .dossier = "/"},
                                        .auPlus = ordre.auPlus,
                                        .sortieMax = ordre.sortieMax + interne::Marques::autourMax,
                                        .entree = script,
                                        .arret = ordre.arret});
  if (const auto lue = marques.lire(arrivee.sortie); lue && lue->statut)
    return SortieSSH{*lue->statut, std::string(lue->sortie)};
  if (arrivee.horsDelai) {
    rompre();  // it may be a link that nobody knows to be dead
    return Sinon{PanneSSH::de(PanneSSH::Cause::horsDelai, hote_)};
  }
  if (arrivee.statut == 127 && journal.lire().empty() && arrivee.sortie.empty())
    return Sinon{PanneSSH::de(PanneSSH::Cause::sansSSH, hote_)};
  constexpr int deSSH = 255;
  if (arrivee.statut == deSSH || arrivee.statut < 0) return Sinon{PanneSSH::lire(hote_, journal.lire())};
  return Sinon{PanneSSH::de(PanneSSH::Cause::pasDeShell, hote_)};
}

Resultat<std::string, PanneSSH> LienSSH::destination() const {
  if (!HotesConnus::nomSur(hote_)) return Sinon{PanneSSH::de(PanneSSH::Cause::nom, hote_)};
  const Journal journal(reglages_.dossier);
  auto mots = this->mots(journal.chemin());
  ajouter(mots, {"-G", "--", hote_});
  const auto arrivee =
      Plateau::courir({.embarque = {.mots = mots, .environnement = reglages_.environnement, .dossier = "/"},
                       .auPlus = ordreMax});
  if (arrivee.horsDelai)
    return Sinon{PanneSSH::de(PanneSSH::Cause::configuration, hote_, "ssh -G n'en finit pas")};
  if (auto mene = HotesConnus::destination(arrivee.sortie); mene && arrivee.statut == 0)
    return *std::move(mene);
  if (arrivee.statut == 127) return Sinon{PanneSSH::de(PanneSSH::Cause::sansSSH, hote_)};
  return Sinon{PanneSSH::lire(hote_, journal.lire())};
}

void LienSSH::rompre() const {
  Plateau::courir(
      {.embarque = {.mots = {reglages_.programme, "-F", "none", "-S", prise(), "-O", "exit", "--", hote_},
                    .environnement = reglages_.environnement,
                    .dossier = "/"},
       .auPlus = ordreMax,
       .sortieMax = 0});
}

Resultat<int, PanneSSH> LienSSH::rebours(int portIci, int voulu) const {
  if (!HotesConnus::nomSur(hote_)) return Sinon{PanneSSH::de(PanneSSH::Cause::nom, hote_)};
  const Journal journal(reglages_.dossier);
  const auto arrivee = Plateau::courir(
      {.embarque = {.mots = {reglages_.programme, "-F", "none", "-E", journal.chemin().string(), "-S", prise(),
                             "-O", "forward", "-R",
                             "127.0.0.1:" + std::to_string(voulu) + ":127.0.0.1:" + std::to_string(portIci),
                             "--", hote_},
                    .environnement = reglages_.environnement,
                    .dossier = "/"},
       .auPlus = ordreMax,
       .sortieMax = 64});
  if (arrivee.statut != 0)
    return Sinon{PanneSSH::de(PanneSSH::Cause::autre, hote_, Texte::rogner(journal.lire()))};
  const auto port =
      voulu != 0 ? std::optional<std::int64_t>(voulu) : entierDecimal(Texte::rogner(arrivee.sortie));
  if (!port || *port < 1 || *port > 65535)
    return Sinon{PanneSSH::de(PanneSSH::Cause::autre, hote_, arrivee.sortie)};
  return static_cast<int>(*port);
}

}  // namespace tarnavelle::Plateau
