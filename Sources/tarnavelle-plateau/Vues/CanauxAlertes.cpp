// The ways out of the terminals: the desktop, ntfy.
#include <chrono>

#include "Enfants/Enfant.hpp"
#include "Hermes/ReglagesHermes.hpp"
#include "Reseau/ClientHTTP.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/Lanceur.hpp"
#include "Vues/Alertes.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view titre = ReglagesHermes::titreAlertes;
constexpr std::size_t detailMax = 200;  ///< characters

class Bureau final : public CanalAlertes {
 public:
  std::optional<std::string> donner(const Alerte& alerte, const std::function<bool()>& arret) override {
    constexpr auto delai = 5s;
    if (absent_) return std::nullopt;
    const std::string texte = Inoffensif::epurer(phrase(alerte));
#if defined(__APPLE__)
    const std::vector<std::string> mots = {"osascript",
                                           "-e",
                                           "on run argv",
                                           "-e",
                                           "display notification (item 2 of argv) with title (item 1 of argv)",
                                           "-e",
                                           "end run",
                                           std::string(titre),
                                           texte};
#else
    // A server may read marks in the text: a name holds none of their signs.
    std::string sansMarques;
    for (const char c : texte) sansMarques += c == '<' || c == '>' || c == '&' ? ' ' : c;
    const std::vector<std::string> mots = {"notify-send", "--app-name",       std::string(titre),
                                           "--",          std::string(titre), sansMarques};
#endif
    const auto issue = courir({.embarque = {.mots = mots, .environnement = Lanceur::heritage(), .dossier = "/"},
                               .auPlus = delai,
                               .sortieMax = 0,
                               .arret = arret});
    if (issue.statut == 0 || issue.arretee) return std::nullopt;
    absent_ = issue.statut == 127;
    if (absent_) return "Les alertes ne vont pas au bureau : " + mots.front() + " n'est pas installé.";
    return "Le bureau n'a pas montré l'alerte « " + texte +
           " » : " + (issue.horsDelai ? "il ne répond pas." : mots.front() + " a échoué.");
  }

 private:
  bool absent_ = false;  ///< what would show them: a session's bus alone is no desktop
};

class Ntfy final : public CanalAlertes {
 public:
  Ntfy(ReglageNtfy reglage, bool detail) : reglage_(std::move(reglage)), detail_(detail) {}

  std::optional<std::string> donner(const Alerte& alerte, const std::function<bool()>&) override {
    std::string texte = phrase(alerte);
    if (detail_ && !alerte.detail.empty())
      texte += "\n" + Texte::tronquer(Inoffensif::epurer(alerte.detail), detailMax);
    const Json corps = {{"topic", reglage_.topicNet()},
                        {"title", titre},
                        {"message", Texte::reparer(texte)},
                        {"priority", alerte.genre == Alerte::Genre::besoin ? 4 : 3}};
    RequeteHTTP requete{.methode = "POST",
                        .url = std::string(reglage_.serveurNet()) + "/",
                        .entetes = {{"Content-Type", "application/json"}},
                        .corps = EcritureJSON::compacte(corps).value_or("{}")};
    if (const auto jeton = Texte::rogner(reglage_.jeton); !jeton.empty())
      requete.entetes.push_back({"Authorization", "Bearer " + std::string(jeton)});
    const auto reponse = client_.envoyer(requete, {.attente = 3s, .vie = 10s, .corpsMax = 64 * 1024});
    if (reponse && estUnSucces(reponse->statut)) return std::nullopt;
    return "Le serveur ntfy n'a pas pris l'alerte « " + phrase(alerte) + " »" +
           (reponse ? " (HTTP " + std::to_string(reponse->statut) + ")." : " : il ne répond pas.");
  }

 private:
  const ReglageNtfy reglage_;
  const bool detail_;
  ClientHTTP client_;
};

}  // namespace

std::unique_ptr<CanalAlertes> canalBureau([[maybe_unused]] const Variables& environnement) {
#if !defined(__APPLE__)
  if (!environnement.texte("DISPLAY") && !environnement.texte("WAYLAND_DISPLAY") &&
      !environnement.texte("DBUS_SESSION_BUS_ADDRESS"))
    return nullptr;
#endif
  return std::make_unique<Bureau>();
}

Resultat<std::unique_ptr<CanalAlertes>, std::string> canalNtfy(const Variables& environnement) {
  ReglageNtfy reglage;
  reglage.topic = environnement.texte("TARNAVELLE_NTFY_TOPIC").value_or("");
  if (reglage.topic.empty()) return std::unique_ptr<CanalAlertes>();
  reglage.serveur = environnement.texte("TARNAVELLE_NTFY_SERVEUR").value_or(reglage.serveur);
  reglage.jeton = environnement.texte("TARNAVELLE_NTFY_JETON").value_or("");
  if (auto refus = reglage.refus()) return Sinon{*std::move(refus)};
  return std::unique_ptr<CanalAlertes>(
      std::make_unique<Ntfy>(std::move(reglage), environnement.texte("TARNAVELLE_NTFY_DETAIL") == "1"));
}

}  // namespace tarnavelle::Plateau
