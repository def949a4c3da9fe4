#include "Outils.hpp"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "Agents/AgentCLI.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"
#include "Voix/ContratVoix.hpp"
#include "Voix/RealtimeFrame.hpp"
#include "VoixReseau/ModeleTexte.hpp"

namespace tarnavelle::Voix {
namespace {

constexpr std::array<std::string_view, 4> curseurs = {"❯", "›", "●", ">"};
constexpr std::array<std::string_view, 9> refus = {"no",     "non",    "deny",    "reject", "refuser",
                                                   "refuse", "cancel", "annuler", "quit"};

std::vector<std::string> clisInstalles() {
  std::vector<std::string> noms;
  for (const AgentCLI& cli : AgentCLI::tous())
    if (cli.disponible()) noms.push_back(cli.id);
  return noms;
}

/// The choice that a dialog's cursor is on; empty when none is seen.
std::string choixAuCurseur(std::string_view ecran) {
  std::string choix;
  for (std::size_t debut = 0; debut <= ecran.size();) {
    const auto fin = std::min(ecran.find('\n', debut), ecran.size());
    auto ligne = Texte::rogner(ecran.substr(debut, fin - debut));
    for (const std::string_view bord : {"│", "┃", "|"})
      if (ligne.starts_with(bord)) ligne = Texte::rogner(ligne.substr(bord.size()));
    for (const std::string_view curseur : curseurs)
      if (ligne.starts_with(curseur) && ligne.size() > curseur.size())
        choix = Texte::replier(Texte::rogner(ligne.substr(curseur.size())));
    debut = fin + 1;
  }
  while (!choix.empty() && (choix.front() < 'a' || choix.front() > 'z') && Texte::ascii(choix.front()))
    choix.erase(0, 1);  // its number
  return choix;
}

Json lire(const std::string& agent, bool depuisPrompt) {
  if (!depuisPrompt) return {{"action", "lire"}, {"agent", agent}};
  return {{"action", "lire_terminal"}, {"agent", agent}, {"depuis_prompt", true}};
}

/// What a reply holds for the model: a screen as it is, else the door's sentence.
std::string pourLeModele(const Porte::Reponse& reponse, std::string_view action) {
  if (!reponse.ok) return "Refusé : " + reponse.texte;
  if (action == "lire" || action == "lire_terminal" || action == "resumer") {
    const auto objet = LectureJSON::objet(reponse.corps.value_or(""));
    const Json* donnees = objet ? Champ::membre(*objet, "data") : nullptr;
    const std::string texte = donnees ? Champ::texte(*donnees, "texte") : "";
    if (!Texte::rogner(texte).empty())
      return std::string(Texte::derniers(Texte::rogner(texte), Outils::texteMax));
  }
  return reponse.texte;
}

}  // namespace

std::optional<std::string> touchesDuVerdict(bool accord, std::string_view programme, std::string_view ecran) {
  if (programme.starts_with("hermes")) return accord ? "o" : "n";
  if (!accord) return "esc";
  const std::string choix = choixAuCurseur(ecran);
  const auto mot = std::string_view(choix).substr(0, choix.find_first_of(" ,.("));
  if (std::ranges::find(refus, mot) != refus.end()) return std::nullopt;
  return "entree";
}

const AgentVu* viseParLeVerdict(const std::vector<AgentVu>& attendent, std::string_view lu) {
  if (attendent.size() == 1) return &attendent.front();
  const auto trouve =
      std::ranges::find(attendent, Texte::replier(lu), [](const AgentVu& a) { return Texte::replier(a.nom); });
  return trouve == attendent.end() ? nullptr : &*trouve;
}

void Outils::monde(MondeVoix monde) {
  const std::lock_guard verrou(verrou_);
  monde_ = std::move(monde);
}

void Outils::unAutreAttend() {
  const std::lock_guard verrou(verrou_);
  lu_.clear();
}

std::string Outils::lireEcran(const std::string& agent, bool depuisPrompt) {
  const Json corps = lire(agent, depuisPrompt);
  const auto reponse = porte_->appeler(corps);
  if (reponse.ok) {
    const auto objet = LectureJSON::objet(reponse.corps.value_or(""));
    const Json* donnees = objet ? Champ::membre(*objet, "data") : nullptr;
    const std::string nom = donnees ? Champ::texte(*donnees, "agent") : "";
    const std::lock_guard verrou(verrou_);
    lu_ = nom.empty() ? agent : nom;
  }
  return pourLeModele(reponse, Champ::texte(corps, "action"));
}

std::string Outils::poster(const Json& corps) const {
  return pourLeModele(porte_->appeler(corps), Champ::texte(corps, "action"));
}

std::string Outils::executer(const FileAppelsRealtime::Appel& appel) {
  const std::string& arguments = appel.argsJSON;
  if (appel.name == "confirm") return trancher(RealtimeFrame::verdict(arguments));
  if (appel.name == "handle_command") return demander(RealtimeFrame::commandText(arguments));
  if (appel.name == "lire")
    return lireEcran(RealtimeFrame::texte("agent", arguments),
                     RealtimeFrame::booleen("depuis_prompt", arguments, false));
  const auto& outils = ContratVoix::outilsTarnavelleV2();
  if (std::ranges::find(outils, appel.name, &OutilVoix::nom) == outils.end()) return "Cet outil n'existe pas.";
  return poster(PorteMCP::corpsAppel(appel.name, LectureJSON::objet(arguments).value_or(Json::object())));
}

std::string Outils::demander(std::string_view phrase) {
  const Json telle = {{"action", "commande"}, {"texte", std::string(phrase)}};
  if (!modeleTexte_ || Texte::rogner(phrase).empty()) return poster(telle);
  MondeVoix monde;
  {
    const std::lock_guard verrou(verrou_);
    monde = monde_;
  }
  const auto clis = clisInstalles();
  const auto lecture =
      ModeleTexte(*modeleTexte_)
          .demander({.monde = monde, .clis = clis, .adresse = AdresseVoix::pressionTouche, .phrase = phrase});
  if (!lecture) return lecture.raison() + " Le plateau, lui, dit : " + poster(telle);
  // Without commands, the sentence is still to be answered, by whoever takes any.
  if (lecture->teneur != TeneurReponse::demande) return poster(telle);
  std::vector<std::string> faits;
  for (const IntentionTarnavelle& intention : lecture->verdict->commandes) faits.push_back(mener(intention));
  return Texte::joindre(faits, "\n");
}

std::string Outils::mener(const IntentionTarnavelle& intention) {
  using I = IntentionTarnavelle;
  return std::visit(
      Selon{[&](const I::dicter& c) {
              return poster(
                  {{"action", "dicter"}, {"agent", c.agent}, {"texte", c.texte}, {"valider", c.valider}});
            },
            [&](const I::focus& c) {
              return poster({{"action", "focus"}, {"cible", c.cible}});
            },
            [&](const I::allerScene& c) {
              return poster({{"action", "aller_scene"}, {"nom", c.nom}});
            },
            [&](const I::ouvrirAgent& c) {
              return poster(
                  {{"action", "ouvrir_agent"}, {"cli", c.cli}, {"dossier", c.dossier}, {"hote", c.hote}});
            },
            [&](const I::ouvrirWeb& c) {
              return poster({{"action", "ouvrir_web"}, {"cible", c.cible}, {"externe", c.externe}});
            },
            [&](const I::lire& c) { return lireEcran(c.agent, c.depuisPrompt); },
            [&](const I::resumer& c) {
              return poster({{"action", "resumer"}, {"agent", c.agent}});
            },
            [&](const I::repli& c) {
              return poster({{"action", "commande"}, {"texte", c.texte}});
            },
            [&](const I::verdict& c) { return trancher(c.valeur); },
            [&](const I::inconnue& c) {
              return poster({{"action", "commande"}, {"texte", c.texte}});
            },
            [&](const I::etat&) {
              return poster({{"action", "etat"}});
            }},
      intention.cas);
}

std::string Outils::trancher(bool accord) {
  const auto reponse = porte_->appeler({{"action", "etat"}});
  const auto plateau = reponse.corps ? PlateauVu::lire(*reponse.corps) : std::nullopt;
  if (!plateau) return "Refusé : " + reponse.texte;
  std::vector<AgentVu> attendent;
  std::ranges::copy_if(plateau->agents, std::back_inserter(attendent), &AgentVu::attend);
  if (attendent.empty()) return "Rien n'attend de feu vert.";
  std::string lu;
  {
    const std::lock_guard verrou(verrou_);
    lu = lu_;
  }
  const AgentVu* vise = viseParLeVerdict(attendent, lu);
  if (!vise)
    return "Plusieurs attendent : " + Texte::joindre(attendent, ", ", [](const AgentVu& a) { return a.nom; }) +
           ". Rien n'a été fait : demande lequel, et lis son écran.";
  const AgentVu& agent = *vise;
  const std::string ecran = poster(lire(agent.nom, false));
  const auto touches = touchesDuVerdict(accord, agent.programme, ecran);
  if (!touches)
    return "Rien n'a été fait : le choix sous le curseur de " + agent.nom +
           " n'est pas un accord. Son écran : " + ecran;
  return poster({{"action", "envoyer_touches"}, {"agent", agent.nom}, {"touches", *touches}});
}

}  // namespace tarnavelle::Voix
