#include "MiseEnSceneInterne.hpp"

#include <algorithm>
#include <utility>

#include "Socle/Fichiers.hpp"
#include "Socle/Texte.hpp"
#include "TextesVuesInterne.hpp"
#include "Vues/ListeScene.hpp"

namespace tarnavelle::Plateau {
namespace {

using namespace CommandesVues;

/// A plan as the scene's own session keeps it, for the next door.
std::string ecrit(const MiseEnScene::Souhait& souhait) {
  return std::string(Disposition::nom(souhait.plan)) + " " + souhait.vedette;
}

MiseEnScene::Souhait souhaitLu(const std::string& texte) {
  const auto mots = Texte::mots(texte);
  if (mots.empty()) return {};
  return {.plan = Disposition::plan(mots[0]).value_or(Disposition::Plan::automatique),
          .vedette = mots.size() > 1 ? std::string(mots[1]) : ""};
}

Taille agrandie(Taille a, Taille b) { return {std::max(a.colonnes, b.colonnes), std::max(a.lignes, b.lignes)}; }

}  // namespace

std::filesystem::path MiseEnScene::fichier(std::int64_t scene) const {
  return reglages_.dossier / session(scene);
}

std::vector<std::string> MiseEnScene::motsListe(std::int64_t scene) const {
  auto mots = reglages_.liste;
  mots.push_back(fichier(scene).string());
  return mots;
}

Ou<Fait> MiseEnScene::demander(const std::string& commandes) {
  if (commandes.empty()) return Fait{};
  const auto fait = terminaux_.commander(commandes);
  if (!fait) return Sinon{fait.raison()};
  return Fait{};
}

Ou<Fait> MiseEnScene::demanderChacune(const std::vector<std::string>& commandes) {
  auto fait = demander(Texte::joindre(commandes, " ; "));
  if (fait || fait.raison() != Panne::inconnu) return fait;
  fait = Fait{};
  for (const std::string& commande : commandes)
    if (const auto f = demander(commande); !f && f.raison() != Panne::inconnu) fait = f;
  return fait;
}

Ou<Fait> MiseEnScene::relever() {
  const auto ecrits = terminaux_.commander(CommandesVues::relever());
  if (!ecrits) return Sinon{ecrits.raison()};
  releve_ = releve(*ecrits);
  if (const std::string suivi = quelquUn() ? releve_.lien : ""; suivi != suivi_) {
    if (!suivi.empty() || suivi_ == releve_.lien)
      if (const auto fait = demander(suivreTailles(!suivi.empty())); !fait) return fait;
    suivi_ = suivi;
  }
  return Fait{};
}

Ou<Fait> MiseEnScene::regarder(const Apercu& apercu, const Souhaits& souhaits) {
  if (const auto fait = relever(); !fait) return fait;
  const FicheScene* visible = apercu.visible();
  const bool neuve = visible && !releve_.scenes.contains(visible->numero);
  if (const auto fait = ouvrirScenes(apercu); !fait) return fait;
  if (const auto fait = visible ? mener(visible->numero, neuve) : Fait{}; !fait) return fait;
  for (const auto& [scene, voulu] : souhaits) {
    souhaits_[scene] = voulu;
    montrees_[scene].ecartees.clear();
    if (const auto la = releve_.scenes.find(scene); la != releve_.scenes.end())
      demander(retenirPlan(la->second.session, ecrit(voulu)));
  }
  for (const FicheScene& scene : apercu.scenes) {
    if (!releve_.scenes.contains(scene.numero)) continue;
    const auto fait = releve_.regardee(scene.numero) ? montrer(apercu, scene, souhaits.contains(scene.numero))
                                                     : retirerVues(scene.numero);
    if (!fait) return fait;
  }
  return dimensionner();
}

Ou<Fait> MiseEnScene::ouvrirScenes(const Apercu& apercu) {
  bool change = false;
  for (const FicheScene& scene : apercu.scenes) {
    const auto la = releve_.scenes.find(scene.numero);
    if (la == releve_.scenes.end()) {
      montrees_.erase(scene.numero);
      ListeScene::ecrire(fichier(scene.numero), {"=" + scene.nom});
      auto fait = demander(ouvrirScene(scene.numero, motsListe(scene.numero), false));
      if (!fait && fait.raison() == Panne::refuse)  // a person made a window of his own there, and closed ours
        fait = demander(ouvrirScene(scene.numero, motsListe(scene.numero), true));
      if (!fait) return fait;
      if (const auto voulu = souhaits_.find(scene.numero); voulu != souhaits_.end())
        demander(retenirPlan("=" + session(scene.numero) + ":", ecrit(voulu->second)));
      change = true;
    } else if (std::ranges::none_of(la->second.volets, &Volet::liste)) {
      if (const auto fait = demander(ouvrirListe(la->second, motsListe(scene.numero))); !fait) return fait;
      change = true;
    }
  }
  return change ? relever() : Fait{};
}

/// Persons follow the scene that a verb made visible, or the board's start did; else a start leaves them where
/// they are.
Ou<Fait> MiseEnScene::mener(std::int64_t visible, bool neuve) {
  const auto la = releve_.scenes.find(visible);
  if (la == releve_.scenes.end()) return Fait{};
  const std::string session = la->second.session;
  const auto avant = std::exchange(visible_, visible);
  if (avant ? *avant == visible : !neuve) return Fait{};
  bool change = false;
  for (const Spectateur& s : releve_.spectateurs) {
    if (s.scene == 0 || s.scene == visible) continue;
    demander(CommandesVues::mener(s.client, session));
    change = true;
  }
  return change ? relever() : Fait{};
}

std::optional<std::int64_t> MiseEnScene::sceneChoisie() const {
  std::set<std::int64_t> scenes;
  for (const Spectateur& s : releve_.spectateurs)
    if (s.scene != 0) scenes.insert(s.scene);
  if (scenes.size() != 1 || !visible_ || *scenes.begin() == *visible_) return std::nullopt;
  return *scenes.begin();
}

std::map<std::int64_t, std::set<std::string>> MiseEnScene::vues() const {
  std::map<std::int64_t, std::set<std::string>> vues;
  for (const auto& [numero, scene] : releve_.scenes) {
    if (!releve_.regardee(numero)) continue;
    auto& ici = vues[numero];
    for (const Volet& v : scene.volets)
      if (!v.vue.empty()) ici.insert(v.vue);
  }
  return vues;
}

std::string MiseEnScene::nomDeSession(std::int64_t scene) const {
  const auto la = releve_.scenes.find(scene);
  return la == releve_.scenes.end() ? session(scene) : la->second.nom;
}

MiseEnScene::Souhait MiseEnScene::souhait(std::int64_t scene) const {
  if (const auto voulu = souhaits_.find(scene); voulu != souhaits_.end()) return voulu->second;
  const auto la = releve_.scenes.find(scene);
  return la == releve_.scenes.end() ? Souhait{} : souhaitLu(la->second.plan);
}

/// Whose views the scene shows, what takes the large place first, else in the order of their opening; what is
/// in view always among them.
std::vector<std::string> MiseEnScene::choisies(const Apercu& apercu, const FicheScene& scene) {
  const Souhait voulu = souhait(scene.numero);
  const auto& ecartees = montrees_[scene.numero].ecartees;
  std::vector<std::string> ids;
  for (const Apercu::Element& e : apercu.elements)
    if (e.scene == scene.numero && e.ouvert && releve_.terminaux.contains(e.id) && !ecartees.contains(e.id))
      ids.push_back(e.id);
  const auto mettreAuPlusTard = [&](const std::string& id, std::size_t place) {
    const auto ou = std::ranges::find(ids, id);
    if (ou == ids.end() || ou - ids.begin() <= static_cast<std::ptrdiff_t>(place)) return;
    std::rotate(ids.begin() + static_cast<std::ptrdiff_t>(place), ou, ou + 1);
  };
  const auto places = Disposition::capacite(releve_.scenes.at(scene.numero).taille, voulu.plan);
  const bool vedette = Disposition::aVedette(voulu.plan);
  if (vedette) mettreAuPlusTard(std::ranges::count(ids, voulu.vedette) ? voulu.vedette : scene.auRegard, 0);
  mettreAuPlusTard(scene.auRegard, std::max<std::size_t>(places, vedette ? 2 : 1) - 1);
  if (ids.size() > places) ids.resize(places);
  return ids;
}

Ou<Fait> MiseEnScene::montrer(const Apercu& apercu, const FicheScene& scene, bool voulu) {
  Montree& montree = montrees_[scene.numero];
  // What was made and is gone, although its terminal stands, was closed by hand.
  for (auto vue = montree.vues.begin(); vue != montree.vues.end();) {
    const std::string& id = vue->first;
    const auto& volets = releve_.scenes.at(scene.numero).volets;
    const auto la = releve_.terminaux.find(id);
    const bool present = std::ranges::any_of(volets, [&](const Volet& v) { return v.vue == id; });
    if (!present && !voulu && la != releve_.terminaux.end() && la->second.terminal == vue->second)
      montree.ecartees.insert(id);
    vue = present ? std::next(vue) : montree.vues.erase(vue);
  }
  const auto voulues = choisies(apercu, scene);
  if (const auto fait = poserVues(scene, voulues); !fait) return fait;
  return ranger(scene.numero, voulues, voulu);
}

Ou<Fait> MiseEnScene::poserVues(const FicheScene& scene, const std::vector<std::string>& voulues) {
  Montree& montree = montrees_[scene.numero];
  const auto bonne = [&](const Volet& v) {
    const auto terminal = releve_.terminaux.find(v.vue);
    return std::ranges::count(voulues, v.vue) && terminal != releve_.terminaux.end() &&
           terminal->second.terminal == v.regarde;
  };
  std::vector<std::string> fermetures;
  for (const Volet& v : releve_.scenes.at(scene.numero).volets) {
    if (v.vue.empty() || bonne(v)) continue;
    fermetures.push_back(fermerVolet(v.id));
    montree.vues.erase(v.vue);
  }
  if (!fermetures.empty()) {
    if (const auto fait = demanderChacune(fermetures); !fait) return fait;
    if (const auto fait = relever(); !fait) return fait;
  }
  if (!releve_.scenes.contains(scene.numero)) return Sinon{Panne::inconnu};
  const Scene& la = releve_.scenes.at(scene.numero);
  bool neuve = false;
  for (const std::string& id : voulues) {
    const auto terminal = releve_.terminaux.find(id);
    if (terminal == releve_.terminaux.end() || std::ranges::count(la.volets, id, &Volet::vue)) continue;
    auto mots = terminaux_.motsPourRegarder(terminal->second.session);
    mots.insert(std::ranges::find(mots, "-t"), {"-f", "ignore-size"});
    if (const auto fait = demander(ouvrirVue(la, id, terminal->second, mots)); !fait) return fait;
    montree.vues[id] = terminal->second.terminal;
    neuve = true;
  }
  for (const Volet& v : la.volets)
    if (!v.vue.empty()) montree.vues[v.vue] = v.regarde;
  if (!neuve) return Fait{};
  montree.disposition.clear();
  return relever();
}

Ou<Fait> MiseEnScene::ranger(std::int64_t scene, const std::vector<std::string>& voulues, bool voulu) {
  const auto la = releve_.scenes.find(scene);
  if (la == releve_.scenes.end()) return Sinon{Panne::inconnu};
  Montree& montree = montrees_[scene];
  const Scene& montree_ = la->second;
  std::vector<std::string> ordre, vues;
  for (const Volet& v : montree_.volets)
    if (v.liste && ordre.empty()) ordre.push_back(v.id);
  for (const std::string& id : voulues)
    if (const auto v = std::ranges::find(montree_.volets, id, &Volet::vue); v != montree_.volets.end())
      vues.push_back(v->id);
  ordre.insert(ordre.end(), vues.begin(), vues.end());
  // Panes of the person's own have no place of ours: tmux lays all of them out.
  const bool propres = ordre.size() == montree_.volets.size();
  const std::string disposition =
      propres ? Disposition::texte(montree_.taille, souhait(scene).plan, vues.size()) : "tiled";
  const std::string empreinte = disposition + Texte::joindre(ordre, " ");
  if (empreinte == montree.disposition && !voulu) return Fait{};
  std::string ligne = ordonner(montree_, ordre);
  ligne += (ligne.empty() ? "" : " ; ") + disposer(montree_, disposition);
  // The keyboard goes where a verb asked for, and from the list to the first view; else it stays.
  const auto actif = std::ranges::find(montree_.volets, montree_.actif, &Volet::id);
  const bool surListe = actif == montree_.volets.end() || actif->liste;
  if (!vues.empty() && ((voulu && Disposition::aVedette(souhait(scene).plan)) || surListe))
    ligne += " ; " + choisir(vues.front());
  if (const auto fait = demander(ligne); !fait) return fait;
  montree.disposition = empreinte;
  return relever();
}

Ou<Fait> MiseEnScene::retirerVues(std::int64_t scene) {
  Montree& montree = montrees_[scene];
  montree.vues.clear();
  montree.ecartees.clear();
  montree.disposition.clear();
  montree.ligne.clear();
  montree.liste.clear();
  montree.titres.clear();
  std::vector<std::string> fermetures;
  for (const Volet& v : releve_.scenes.at(scene).volets)
    if (!v.vue.empty()) fermetures.push_back(fermerVolet(v.id));
  std::erase_if(releve_.scenes.at(scene).volets, [](const Volet& v) { return !v.vue.empty(); });
  return demanderChacune(fermetures);
}

Ou<Fait> MiseEnScene::dimensionner() {
  std::map<std::string, Taille> vues;  // by the board's id
  const auto compter = [&](const std::string& id, Taille taille) {
    const auto [ou, neuve] = vues.try_emplace(id, agrandie(taille, Disposition::plancher));
    if (!neuve) ou->second = agrandie(ou->second, taille);
  };
  for (const auto& [numero, scene] : releve_.scenes)
    if (releve_.regardee(numero))
      for (const Volet& v : scene.volets)
        if (!v.vue.empty()) compter(v.vue, v.taille);
  for (const auto& [id, terminal] : releve_.terminaux)
    for (const Spectateur& s : releve_.spectateurs)
      if (s.scene == 0 && s.session == terminal.session) compter(id, s.taille);
  std::vector<std::string> retouches;
  for (auto& [id, terminal] : releve_.terminaux) {
    const auto vue = vues.find(id);
    const Taille due = vue == vues.end() ? Disposition::ordinaire : vue->second;
    if (due == terminal.taille) continue;
    retouches.push_back(redimensionner(terminal.terminal, due));
    terminal.taille = due;
  }
  return demanderChacune(retouches);
}

Ou<Fait> MiseEnScene::ecrire(const Apercu& apercu) {
  for (const FicheScene& scene : apercu.scenes) {
    const auto la = releve_.scenes.find(scene.numero);
    if (la == releve_.scenes.end() || !releve_.regardee(scene.numero)) continue;
    Montree& montree = montrees_[scene.numero];
    std::set<std::string> enVue;
    std::string commandes;
    const auto ajouter = [&](const std::string& commande) {
      commandes += (commandes.empty() ? "" : " ; ") + commande;
    };
    for (const Volet& v : la->second.volets) {
      const auto e = std::ranges::find(apercu.elements, v.vue, &Apercu::Element::id);
      const bool connue = !v.vue.empty() && e != apercu.elements.end();
      if (connue) enVue.insert(v.vue);
      const std::string titre = connue ? TextesVues::titre(*e) : "";
      if (std::exchange(montree.titres[v.id], titre) != titre) ajouter(titrer(v.id, titre));
    }
    const auto largeur = static_cast<std::size_t>(std::max(0, la->second.taille.colonnes));
    if (const auto ligne = TextesVues::ligneEtat(apercu, scene, largeur); ligne != montree.ligne) {
      ajouter(ecrireLigne(la->second.session, ligne));
      montree.ligne = ligne;
    }
    if (auto liste = TextesVues::liste(apercu, scene, enVue); liste != montree.liste) {
      ListeScene::ecrire(fichier(scene.numero), liste);
      montree.liste = std::move(liste);
    }
    if (const auto fait = demander(commandes); !fait) {
      montree.ligne.clear();
      montree.titres.clear();
      return fait;
    }
  }
  return Fait{};
}

void MiseEnScene::annoncer(const std::string& texte) {
  std::vector<std::string> clients;
  for (const Spectateur& s : releve_.spectateurs) clients.push_back(s.client);
  if (clients.empty()) return;
  demander(CommandesVues::annoncer(clients, TextesVues::neutre(texte, 200)));
  ListeScene::sonner(reglages_.dossier);
}

void MiseEnScene::fermerPorte() { demander(CommandesVues::fermerPorte()); }

}  // namespace tarnavelle::Plateau
