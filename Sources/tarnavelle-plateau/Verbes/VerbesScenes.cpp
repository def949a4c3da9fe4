// What is in view: scenes, windows, their layout, and what is closed. The registry holds it; whoever shows it
// is told.
#include <algorithm>

#include "Appliquer.hpp"
#include "Noms.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

/// Added where what was asked for is not what is seen. `nom`: of what was to take the large place, if anything.
std::string reserve(Vues::Rangement rangement, const std::string& nom) {
  switch (rangement) {
    case Vues::Rangement::vu: return "";
    case Vues::Rangement::sansVue:
      return nom.empty() ? " Aucune vue : rien à montrer, ou la place manque."
                         : " " + nom + " n'a pas de vue : son terminal n'est plus, ou la place manque.";
    case Vues::Rangement::ignore: return " Personne ne regarde la scène : ce sera ainsi au prochain regard.";
  }
  return "";
}

/// Closes a window. An agent that lives goes on without it; a shell's terminal, and a dead agent's, goes with
/// it.
std::optional<ReponsePorte> fermerFenetre(Atelier& atelier, const Tableau& tableau, const Fenetre& fenetre) {
  if (fenetre.agent) {
    const FicheAgent& agent = *fenetre.agent;
    const auto garde = atelier.constat(agent).situation.etat == Etat::sorti ? atelier.oublier(agent)
                       : atelier.loin(agent.hote)
                           ? atelier.quitter(agent)
                           : atelier.modifier(agent.id, [](FicheAgent& fiche) { fiche.ouvert = false; });
    if (!garde) return refus(garde.raison());
  } else {
    if (!fenetre.fenetre->terminal.empty()) {
      const auto fin = atelier.sol.terminaux.terminer(terminalDe(fenetre));
      if (!fin && fin.raison() != Panne::inconnu)
        return ReponsePorte::echec("Impossible de fermer " + fenetre.nom + " : " +
                                   std::string(description(fin.raison())) + ".");
    }
    if (const auto fait = atelier.sol.registre.oublierFenetre(fenetre.id); !fait) return refus(fait.raison());
  }
  const FicheScene* scene = tableau.scene(fenetre.scene);
  if (!scene || scene->auRegard != fenetre.id) return std::nullopt;
  std::string regard;  // the last opened comes into view
  if (const auto reste = Tableau::lire(atelier.sol.registre))
    for (const Fenetre& f : reste->fenetres())
      if (f.scene == fenetre.scene) regard = f.id;
  atelier.sol.registre.regarder(fenetre.scene, regard);
  return std::nullopt;
}

/// A post-it of the visible scene, by its text or the beginning of it; nothing when none is meant.
std::optional<ReponsePorte> decoller(Atelier& atelier, const Tableau& tableau, const std::string& nom) {
  if (vide(nom)) return std::nullopt;
  const auto postits = atelier.sol.registre.postits();
  if (!postits) return refus(postits.raison());
  const std::string replie = Texte::replier(nom);
  std::vector<FichePostIt> vises;
  for (const FichePostIt& p : *postits) {
    if (p.scene != tableau.visible().numero) continue;
    const std::string texte = Texte::replier(p.texte);
    if (texte == replie) {
      vises = {p};
      break;
    }
    if (texte.starts_with(replie)) vises.push_back(p);
  }
  if (vises.empty()) return std::nullopt;
  if (vises.size() > 1)
    return ReponsePorte::echec("Plusieurs post-it commencent par " + cite(nom) + " : donne la suite.");
  if (const auto fait = atelier.sol.registre.decoller(vises.front().numero); !fait) return refus(fait.raison());
  return ReponsePorte::succes("Post-it retiré : " + cite(vises.front().texte) + ".",
                              donnees({{"ferme", Json::array({vises.front().texte})}}));
}

}  // namespace

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::focus& c) {
  if (vide(c.cible)) return manque("cible");
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  // An agent without a window is given one again.
  const FicheAgent* ferme = tableau->ferme(c.cible);
  const auto fenetre = ferme ? tableau->terminal(ferme->nom) : tableau->fenetre(c.cible);
  if (!fenetre) return fenetre.raison();
  const FicheScene& visible = tableau->visible();
  const FicheScene* scene = tableau->scene(fenetre->scene);
  if (scene && scene->numero != visible.numero)
    return ReponsePorte::echec(fenetre->nom + " est sur la scène " + cite(scene->nom) +
                               " : c'est aller_scene qui y mène.");
  if (ferme)
    if (const auto fait = atelier.modifier(ferme->id, [](FicheAgent& fiche) { fiche.ouvert = true; }); !fait)
      return refus(fait.raison());
  if (const auto fait = atelier.sol.registre.regarder(visible.numero, fenetre->id); !fait)
    return refus(fait.raison());
  std::string phrase = fenetre->nom + " est en grand.";
  if (atelier.sol.vues) {
    const auto vu = atelier.sol.vues->ranger(visible.numero, "apercu_agents", fenetre->id);
    if (!vu) return ReponsePorte::echec(vu.raison());
    if (*vu != Vues::Rangement::vu) phrase = fenetre->nom + " est au regard." + reserve(*vu, fenetre->nom);
  }
  return ReponsePorte::succes((ferme ? "Rouvert. " : "") + phrase, donnees({{"cible", fenetre->nom}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::allerScene& c) {
  if (vide(c.nom)) return manque("nom");
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const FicheScene* scene = tableau->scene(c.nom);
  if (!scene)
    return ReponsePorte::echec(
        "Aucune scène ne s'appelle " + cite(c.nom) +
        ". Scènes : " + Texte::joindre(tableau->scenes, ", ", [](const FicheScene& s) { return s.nom; }) + ".");
  if (const auto fait = atelier.sol.registre.montrerScene(scene->numero); !fait) return refus(fait.raison());
  return ReponsePorte::succes("Scène " + scene->nom + ".",
                              donnees({{"scene", scene->nom}, {"dossier", scene->dossier}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::ranger& c) {
  if (!atelier.sol.vues) return ReponsePorte::pasCable;
  constexpr std::string_view plans[] = {"grille", "colonnes", "scene", "apercu_agents", "auto"};
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const FicheScene& scene = tableau->visible();
  std::string vedette, nomVedette;
  if (!vide(c.vedette)) {
    const auto fenetre = tableau->fenetre(c.vedette);
    if (!fenetre) return fenetre.raison();
    if (fenetre->scene != scene.numero)
      return ReponsePorte::echec(fenetre->nom + " n'est pas sur la scène visible.");
    vedette = fenetre->id;
    nomVedette = fenetre->nom;
  }
  const std::string voulu =
      vide(c.plan) ? (vedette.empty() ? "auto" : "apercu_agents") : Texte::replier(c.plan);
  if (std::ranges::find(plans, voulu) == std::end(plans))
    return ReponsePorte::echec("« plan » vaut grille, colonnes, scene, apercu_agents ou auto, pas " +
                               cite(c.plan) + ".");
  const auto vu = atelier.sol.vues->ranger(scene.numero, voulu, vedette);
  if (!vu) return ReponsePorte::echec(vu.raison());
  return ReponsePorte::succes("Scène rangée : " + voulu + "." + reserve(*vu, nomVedette),
                              donnees({{"scene", scene.nom}, {"plan", voulu}, {"vedette", nomVedette}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::fermer& c) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  const FicheAgent* ferme = tableau->ferme(c.cible);
  const bool mort = ferme && atelier.constat(*ferme).situation.etat == Etat::sorti;
  const auto fenetre = mort ? tableau->terminal(ferme->nom) : tableau->fenetre(c.cible);
  if (!fenetre) {
    if (ferme) return ReponsePorte::echec(ferme->nom + " est déjà fermé : focus le rouvre.");
    if (auto reponse = decoller(atelier, *tableau, c.cible)) return *reponse;
    return fenetre.raison();
  }
  const FicheAgent* agent = fenetre->agent;
  const bool continue_ = agent && atelier.constat(*agent).situation.etat != Etat::sorti;
  std::string suite = agent ? agent->session : "";
  if (agent && atelier.loin(agent->hote)) suite = sessionLaBas(*agent) + " sur " + cite(agent->hote);
  if (auto refus = fermerFenetre(atelier, *tableau, *fenetre)) return *refus;
  return ReponsePorte::succes(
      "Fermé : " + fenetre->nom + (continue_ ? ", dont la session " + suite + " continue." : "."),
      donnees({{"ferme", Json::array({fenetre->nom})}}));
}

ReponsePorte appliquer(Atelier& atelier, const Appelant&, const C::fermerTout& c) {
  const auto tableau = Tableau::lire(atelier.sol.registre);
  if (!tableau) return tableau.raison();
  std::vector<std::string> epargnes;
  for (const std::string& nom : Champ::liste({{"sauf", c.sauf}}, "sauf")) {
    const auto fenetre = tableau->fenetre(nom);
    if (!fenetre) return fenetre.raison();  // a misheard name must not cost the window it meant
    epargnes.push_back(fenetre->id);
  }
  const std::int64_t scene = tableau->visible().numero;
  std::vector<std::string> fermes, vivants;
  for (const Fenetre& f : tableau->fenetres()) {
    if (f.scene != scene || std::ranges::find(epargnes, f.id) != epargnes.end()) continue;
    const auto maintenant = Tableau::lire(atelier.sol.registre);  // what is in view changes with each
    if (!maintenant) return maintenant.raison();
    if (f.agent && atelier.constat(*f.agent).situation.etat != Etat::sorti) vivants.push_back(f.nom);
    if (auto refus = fermerFenetre(atelier, *maintenant, f)) return *refus;
    fermes.push_back(f.nom);
  }
  std::string phrase = fermes.empty() ? "Rien à fermer." : "Fermé : " + enumerer(fermes) + ".";
  if (!vivants.empty())
    phrase += (vivants.size() > 1 ? " Continuent : " : " Continue : ") + enumerer(vivants) + ".";
  return ReponsePorte::succes(phrase, donnees({{"ferme", fermes}}));
}

}  // namespace tarnavelle::Plateau
