#include "Seance.hpp"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

#include "Outils.hpp"
#include "Porte.hpp"
#include "Recit.hpp"
#include "Socle/Texte.hpp"
#include "Son/Cartes.hpp"
#include "Son/Fichiers.hpp"
#include "Son/Pupitre.hpp"
#include "Terminal/Courrier.hpp"
#include "Touches.hpp"
#include "Veille.hpp"
#include "Voix/AnnonceVoix.hpp"
#include "Voix/ConversationVoix.hpp"
#include "Voix/CoutDuJour.hpp"
#include "VoixReseau/OuvrirRealtime.hpp"

namespace tarnavelle::Voix {
namespace {

using namespace std::chrono_literals;
using Etat = ConversationVoix::Etat;
using Message = ConversationVoix::Message;

constexpr auto image = 100ms;            ///< between two drawings of the line that lives
constexpr auto patienceConnexion = 30s;  ///< without anybody to wait longer
constexpr auto reposApresEntree = 3s;    ///< of quiet, once the input is over, before hanging up
constexpr auto attenteReponse = 20s;     ///< for an answer to what the input said
constexpr auto attenteEntiere = 90s;     ///< the same, whatever the service does meanwhile
constexpr auto attenteCout = 1s;         ///< for the cost of a conversation that is over
constexpr auto attenteDepart = 2s;       ///< for it to be over once it is left
constexpr int enVolMax = 16;             ///< tools at work at once
constexpr auto suspens = 50ms;           ///< after which an Esc is a key of its own

struct Sons {
  std::shared_ptr<Cartes> cartes;
  std::unique_ptr<EntreeSon> entree;
  std::unique_ptr<SortieSon> sortie;
};

class Seance {
 public:
  Seance(const Variables& environnement, const Options& options, int erreurs)
      : environnement_(environnement),
        options_(options),
        reglages_(Reglages::lire(environnement, familleVoix())),
        recit_(forme(options), {.dits = options.sortie == "-" ? erreurs : STDOUT_FILENO, .messages = erreurs}),
        porte_(std::make_shared<const Porte>(environnement)),
        outils_(std::make_shared<Outils>(porte_, AccesTexte::lire(reglages_.variables()))) {}

  int mener() {
    suivreSignaux(
        [courrier = courrier_](int numero) { courrier->poster([numero](Seance& s) { s.signal(numero); }); });
    for (const std::string& plainte : reglages_.plaintes()) recit_.message({.texte = plainte});
    const auto service = choisirService(reglages_, options_.service);
    if (!service) return refuser(service.raison().phrase, service.raison().conseil);
    if (const auto acces = AccesTexte::lire(reglages_.variables()); acces && acces->refus())
      return refuser(*acces->refus(), "");
    const auto profil = regle(options_.profil, Cles::profil);
    if (const auto refus = profil ? Options::refusProfil(*profil) : std::nullopt) return refuser(*refus, "");
    auto sons = ouvrirSons();
    if (!sons) return refuser(sons.raison().phrase, sons.raison().conseil);

    std::string raison;
    auto plateau = Veille::regarder(*porte_, &raison);
    if (!plateau)
      recit_.message({.texte = raison, .conseil = "La voix n'aura pas d'outils tant que le plateau manque."});
    if (plateau) outils_->monde(plateau->monde);
    composer(*service, plateau ? plateau->monde : MondeVoix{});
    pupitre_ = std::make_shared<Pupitre>(std::move(sons->entree), std::move(sons->sortie),
                                         [c = conversation_](Octets pcm) { c->entendre(std::move(pcm)); });
    *son_ = pupitre_;
    pupitre_->retenir(options_.entree && !options_.pousser);
    const Veille veille(porte_, std::move(plateau), rappels());
    conversation_->commencer();
    if (options_.pousser && clavier()) recit_.commander(Touches::question, "");
    if (options_.pousser && !clavier()) conversation_->appuyer();
    while (!fini_) tour();
    pupitre_->couper();
    return issue_;
  }

 private:
  using Action = std::function<void(Seance&)>;
  using Courrier = CourrierDe<Action>;

  static Recit::Forme forme(const Options& options) {
    if (options.json) return Recit::Forme::json;
    const bool terminal =
        ::isatty(0) == 1 && ::isatty(1) == 1 && options.entree != "-" && options.sortie != "-";
    return terminal ? Recit::Forme::terminal : Recit::Forme::lignes;
  }
  bool clavier() const { return recit_.forme() == Recit::Forme::terminal; }

  int refuser(const std::string& phrase, const std::string& conseil) {
    recit_.message({.niveau = Message::Niveau::panne, .texte = phrase, .conseil = conseil});
    return Issue::mauvaiseLigne;
  }

  std::optional<std::string> regle(const std::optional<std::string>& option, std::string_view cle) const {
    return option ? option : reglages_.texte(cle);
  }

  Resultat<Sons, Cartes::Refus> ouvrirSons() {
    Sons sons;
    if (options_.entree) {
      auto entree = ouvrirEntree(*options_.entree);
      if (!entree) return Sinon{Cartes::Refus{entree.raison(), ""}};
      sons.entree = *std::move(entree);
    }
    if (options_.sortie) {
      auto sortie = ouvrirSortie(*options_.sortie);
      if (!sortie) return Sinon{Cartes::Refus{sortie.raison(), ""}};
      sons.sortie = *std::move(sortie);
    }
    if (sons.entree && sons.sortie) return sons;
    Cartes::Reglages voulues{.dire = [courrier = courrier_](std::string phrase, std::string conseil) {
      courrier->poster([phrase = std::move(phrase), conseil = std::move(conseil)](Seance& s) {
        s.recit_.message({.texte = phrase, .conseil = conseil});
      });
    }};
    if (!sons.entree) voulues.micro = regle(options_.micro, Cles::micro).value_or("");
    if (!sons.sortie) voulues.hautParleur = regle(options_.hautParleur, Cles::hautParleur).value_or("");
    auto cartes = Cartes::ouvrir(std::move(voulues));
    if (!cartes) return Sinon{cartes.raison()};
    sons.cartes = *cartes;
    if (!sons.entree) sons.entree = sons.cartes->micro();
    if (!sons.sortie) sons.sortie = sons.cartes->hautParleur();
    cartes_ = sons.cartes;
    return sons;
  }

  void composer(const Service& service, MondeVoix monde) {
    const std::string modele = regle(options_.modele, Cles::modele).value_or(service.provider.modeleParDefaut);
    const bool casque = regle(options_.profil, Cles::profil) == ProfilEcouteVoix::casque().nom;
    ConversationVoix::Reglages r{
        .provider = service.provider,
        .model = modele,
        .voice = regle(options_.voix, Cles::voix).value_or(""),
        .monde = std::move(monde),
        .ouvrir = [acces = AccesRealtime{.model = modele, .apiKey = service.cle}](
                      RealtimeClient::Reglages client) { return ouvrirRealtime(acces, std::move(client)); }};
    if (!options_.pousser) r.profil = ProfilEcouteVoix::pour(casque);
    // Whoever captures, keeps alive: events may come while this thread leaves.
    const auto dire = [courrier = courrier_](auto action) { courrier->poster(Action(std::move(action))); };
    auto& e = r.evenements;
    e.surEtat = [dire](Etat etat) { dire([etat](Seance& s) { s.surEtat(etat); }); };
    e.surSon = [son = son_](const Octets& pcm) {
      if (const auto pupitre = son->lock()) pupitre->jouer(pcm);
    };
    e.surSilence = [son = son_]() -> std::optional<std::int64_t> {
      const auto pupitre = son->lock();
      return pupitre ? std::optional(pupitre->couper()) : std::nullopt;
    };
    e.surOperateur = [dire](std::string texte) {
      dire([texte = std::move(texte)](Seance& s) { s.recit_.operateur(texte); });
    };
    e.surModele = [dire](std::string texte) {
      dire([texte = std::move(texte)](Seance& s) {
        s.repondu_ = true;
        s.recit_.modele(texte);
      });
    };
    e.surAppel = [dire](FileAppelsRealtime::Appel appel) {
      dire([appel = std::move(appel)](Seance& s) { s.executer(appel); });
    };
    e.surCout = [dire](ConversationVoix::Cout cout) {
      dire([cout = std::move(cout)](Seance& s) { s.recit_.cout(cout); });
    };
    e.surMessage = [dire](Message message) {
      dire([message = std::move(message)](Seance& s) {
        if (message.niveau == Message::Niveau::panne) s.issue_ = Issue::refus;
        s.recit_.message(message);
      });
    };
    e.surFin = [dire](ConversationVoix::Cout cout) {
      dire([cout = std::move(cout)](Seance& s) { s.compter(cout); });
    };
    conversation_ = std::make_shared<ConversationVoix>(std::move(r));
  }

  Veille::Rappels rappels() {
    const auto conversation = conversation_;
    const auto outils = outils_;
    return {.surPlateau =
                [conversation, outils](const PlateauVu& vu) {
                  outils->monde(vu.monde);
                  conversation->monde(vu.monde);
                },
            .surAppel =
                [conversation, outils](const std::string& agent) {
                  outils->unAutreAttend();
                  conversation->annoncer(
                      AnnonceVoix::evenement({.titre = agent + " attend une réponse", .corps = ""}));
                },
            .surActivite =
                [conversation](const Veille::Rappels::Activite& a) {
                  conversation->activite({.agent = a.agent, .travaille = a.travaille, .resume = a.resume});
                },
            .surPorte =
                [courrier = courrier_](const std::string& raison) {
                  courrier->poster([raison](Seance& s) {
                    s.recit_.message({.texte = raison.empty() ? "Le plateau répond de nouveau." : raison});
                  });
                }};
  }

  // What comes.

  void tour() {
    std::array<pollfd, 2> attendus{{{courrier_->descripteur(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}}};
    const auto attente = touches_.enSuspens() ? suspens : std::chrono::milliseconds(image);
    ::poll(attendus.data(), clavier() ? 2 : 1, static_cast<int>(attente.count()));
    for (const Action& action : courrier_->prendre()) action(*this);
    if (clavier()) {
      if (attendus[1].revents != 0)
        lireClavier();
      else if (touches_.enSuspens())
        for (const Touche touche : touches_.calme()) presser(touche);
    }
    if (recit_.perdu()) quitter(Issue::sansReponse);
    veillerALaFin();
    recit_.vivre({.micro = pupitre_->niveau(), .parole = pupitre_->niveauParole(), .aide = aide()});
  }

  void lireClavier() {
    std::array<char, 1024> bloc;
    const auto lus = ::read(STDIN_FILENO, bloc.data(), bloc.size());
    if (lus == 0) return quitter(Issue::fait);
    if (lus < 0) return;
    const bool savait = touches_.saitLacher();
    for (const Touche touche : touches_.lire({bloc.data(), static_cast<std::size_t>(lus)})) presser(touche);
    if (!savait && touches_.saitLacher() && options_.pousser)
      recit_.commander(Touches::demande, Touches::adieu);
  }

  void presser(Touche touche) {
    switch (touche) {
      case Touche::quitter: return quitter(Issue::fait);
      case Touche::redessiner: return recit_.remesurer();
      case Touche::echap: return conversation_->interrompre();
      case Touche::espaceLachee:
        if (options_.pousser) tenir(false);
        return;
      case Touche::espace:
        if (options_.pousser) return tenir(!tenue_ || touches_.saitLacher());
        if (etat_ == Etat::sommeil || etat_ == Etat::raccroche) return conversation_->commencer();
        return conversation_->interrompre();
    }
  }

  void tenir(bool tenue) {
    if (tenue_ == tenue) return;
    tenue_ = tenue;
    if (tenue)
      conversation_->appuyer();
    else
      conversation_->relacher();
  }

  std::string_view aide() const {
    if (etat_ == Etat::sommeil) return "espace : réveiller · Ctrl-C : partir";
    if (!options_.pousser) return "espace : faire taire · Ctrl-C : raccrocher";
    if (touches_.saitLacher()) return "espace tenue : parler · Ctrl-C : raccrocher";
    return tenue_ ? "espace : fini · Ctrl-C : raccrocher" : "espace : parler · Ctrl-C : raccrocher";
  }

  void signal(int numero) {
    if (numero == SIGWINCH) return recit_.remesurer();
    quitter(Issue::interrompu);
  }

  void surEtat(Etat etat) {
    etat_ = etat;
    change_ = Montre::now();
    prete_ = prete_ || etat == Etat::ecoute;
    recit_.etat(etat);
    if (options_.entree && !options_.pousser) pupitre_->retenir(etat == Etat::connexion);
    if (etat == Etat::raccroche || (etat == Etat::sommeil && !clavier())) terminee_ = true;
  }

  void executer(const FileAppelsRealtime::Appel& appel) {
    recit_.outil(appel.name, appel.argsJSON);
    if (*enVol_ >= enVolMax)  // given up one after the other, and still waiting for the door
      return conversation_->rendre(appel.callID, "Refusé : trop d'outils travaillent déjà.");
    ++*enVol_;
    std::thread([appel, outils = outils_, courrier = courrier_, conversation = conversation_, enVol = enVol_] {
      const auto debut = Montre::now();
      std::string sortie = outils->executer(appel);
      const std::chrono::duration<double> duree = Montre::now() - debut;
      courrier->poster(
          [nom = appel.name, sortie, duree](Seance& s) { s.recit_.outilRendu(nom, sortie, duree.count()); });
      conversation->rendre(appel.callID, std::move(sortie));
      --*enVol;
    }).detach();
  }

  void compter(const ConversationVoix::Cout& cout) {
    const auto maintenant = std::chrono::system_clock::now();
    const CoutDuJour jour(CoutDuJour::chemin(environnement_));
    comptee_ = true;
    if (cout.usage.tours == 0 && cout.dollars <= 0)  // nothing was held: it is none of the day's conversations
      return recit_.fin(cout, jour.ligne(maintenant).value_or(""));
    const auto ajout = jour.ajouter(cout.dollars, maintenant);
    const std::string plainte = ajout ? ajout->plainte : ajout.raison();
    if (!plainte.empty()) recit_.message({.texte = plainte});
    recit_.fin(cout, ajout ? ajout->cumul.ligne(maintenant, Calendrier::local()).value_or("") : "");
  }

  // The end.

  void quitter(int issue) {
    if (std::exchange(partie_, true)) return;
    if (issue_ == Issue::fait) issue_ = issue == Issue::fait && !prete_ ? Issue::sansReponse : issue;
    depart_ = Montre::now();
    conversation_->raccrocher();
    if (etat_ == Etat::raccroche || etat_ == Etat::sommeil) fini_ = true;
  }

  void veillerALaFin() {
    const auto maintenant = Montre::now();
    if (terminee_ && (comptee_ || maintenant - change_ > attenteCout)) fini_ = true;
    if (partie_) {
      if (maintenant - depart_ > attenteDepart) fini_ = true;
      return;
    }
    if (!clavier() && !(prete_ && !options_.entree) && etat_ == Etat::connexion &&
        maintenant - change_ > patienceConnexion) {
      recit_.message({.niveau = Message::Niveau::panne,
                      .texte = "Le service vocal n'a pas pu être joint.",
                      .conseil = "Vérifiez que cette machine est reliée au réseau, ou essayez plus tard."});
      return quitter(Issue::sansReponse);
    }
    if (const auto panne = pupitre_->panne()) {
      recit_.message({.niveau = Message::Niveau::panne, .texte = *panne});
      return quitter(Issue::mauvaiseLigne);
    }
    if (!pupitre_->entreeFinie()) return;
    if (options_.pousser && !std::exchange(relachee_, true)) conversation_->relacher();
    if (entreeFinie_ == Montre::time_point{}) entreeFinie_ = maintenant;
    if (!repondu_ && maintenant - entreeFinie_ > attenteEntiere) return quitter(Issue::sansReponse);
    const bool calme = etat_ == Etat::ecoute && pupitre_->muet();
    if (!calme) calmeDepuis_ = maintenant;
    const auto repos = maintenant - std::max(calmeDepuis_, entreeFinie_);
    if (calme && repos > (repondu_ ? reposApresEntree : attenteReponse)) quitter(Issue::fait);
  }

  const Variables environnement_;
  const Options options_;
  const Reglages reglages_;
  const std::shared_ptr<Courrier> courrier_ = std::make_shared<Courrier>();
  Recit recit_;
  Touches touches_;
  std::shared_ptr<const Porte> porte_;
  std::shared_ptr<Outils> outils_;
  std::shared_ptr<Cartes> cartes_;
  std::shared_ptr<ConversationVoix> conversation_;
  const std::shared_ptr<std::weak_ptr<Pupitre>> son_ = std::make_shared<std::weak_ptr<Pupitre>>();
  std::shared_ptr<Pupitre> pupitre_;

  Etat etat_ = Etat::raccroche;
  int issue_ = Issue::fait;
  const std::shared_ptr<std::atomic<int>> enVol_ = std::make_shared<std::atomic<int>>(0);  ///< tools
  bool fini_ = false;
  bool partie_ = false;    ///< asked to leave
  bool terminee_ = false;  ///< the conversation is
  bool comptee_ = false;   ///< its cost was told
  bool prete_ = false;     ///< it has been, once
  bool repondu_ = false;   ///< the model has said something
  bool tenue_ = false;     ///< the key
  bool relachee_ = false;
  Montre::time_point change_{}, depart_{}, entreeFinie_{}, calmeDepuis_{};
};

}  // namespace

int parlerAuPlateau(const Variables& environnement, const Options& options, int erreurs) {
  return Seance(environnement, options, erreurs).mener();
}

}  // namespace tarnavelle::Voix
