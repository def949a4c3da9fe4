// A ground of one test: tmux on a socket in a folder of its own, and a witness of what it tells.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "DossierTemporaire.hpp"
#include "TerminauxTmux/Lanceur.hpp"
#include "TerminauxTmux/TerminauxTmux.hpp"

namespace tarnavelle::Plateau::essai {

using Mots = std::vector<std::string>;
constexpr std::chrono::seconds patience{30};

class Temoin final : public Observateur {
 public:
  void apparu(const Terminal& t) override { noter("apparu " + t.cle); }
  void disparu(const IdTerminal& id) override { noter("disparu " + id.valeur); }
  void termine(const IdTerminal& id, std::optional<int> statut) override {
    noter("termine " + id.valeur + " " + (statut ? std::to_string(*statut) : "?"));
  }
  void ecrit(const IdTerminal& id) override { noter("ecrit " + id.valeur); }
  void perdu() override { noter("perdu"); }

  /// Waits until that was told, since the last call.
  bool entendre(const std::string& fait) {
    std::unique_lock garde(verrou_);
    const bool entendu = nouveau_.wait_for(
        garde, patience, [&] { return std::find(faits_.begin() + lus_, faits_.end(), fait) != faits_.end(); });
    if (entendu) lus_ = std::find(faits_.begin() + lus_, faits_.end(), fait) - faits_.begin() + 1;
    return entendu;
  }
  std::ptrdiff_t compter(const std::string& fait) {
    const std::lock_guard garde(verrou_);
    return std::ranges::count(faits_, fait);
  }
  /// Waits for the next thing told, whatever it is.
  bool suite(std::size_t& vus) {
    std::unique_lock garde(verrou_);
    const bool venu = nouveau_.wait_for(garde, patience, [&] { return faits_.size() > vus; });
    vus = faits_.size();
    return venu;
  }
  std::size_t taille() {
    const std::lock_guard garde(verrou_);
    return faits_.size();
  }

 private:
  void noter(std::string fait) {
    const std::lock_guard garde(verrou_);
    faits_.push_back(std::move(fait));
    nouveau_.notify_all();
  }

  std::mutex verrou_;
  std::condition_variable nouveau_;
  std::vector<std::string> faits_;
  std::ptrdiff_t lus_ = 0;
};

class Terrain : public testing::Test {
 protected:
  void SetUp() override {
    reglages.prise = (dossier.chemin() / "s").string();
    reglages.dossier = dossier.chemin() / "plateau";
    reglages.lanceur = {LANCEUR_ESSAI};
    reglages.environnement = Lanceur::heritage();
    reglages.environnement["LC_ALL"] = "C";  // tmux is to know UTF-8 without being told
    poser();
  }
  void TearDown() override {
    if (terrain) terrain->eteindre();
  }

  void poser() {
    terrain.reset();
    auto ouvert = TerminauxTmux::ouvrir(reglages);
    if (!ouvert && ouvert.raison().starts_with("tmux est introuvable")) GTEST_SKIP() << ouvert.raison();
    ASSERT_TRUE(ouvert) << ouvert.raison();
    terrain = std::move(*ouvert);
    terrain->observer(&temoin);
  }

  Lancement lancement(const std::string& nom, Mots mots) const {
    return {.cle = "cle-" + nom,
            .session = nom,
            .mots = std::move(mots),
            .environnement = {},
            .dossier = dossier.chemin().string(),
            .taille = {80, 24}};
  }
  IdTerminal ouvrir(const std::string& nom, const std::string& script) {
    const auto terminal = terrain->ouvrir(lancement(nom, {"sh", "-c", script}));
    EXPECT_TRUE(terminal) << description(terminal.raison());
    return terminal ? terminal->id : IdTerminal{};
  }

  /// The first screen that is so, told by what is written; an empty one after too long.
  Ecran attendreEcran(const IdTerminal& id, const std::function<bool(const Ecran&)>& vrai) {
    terrain->guetter(id);
    Ecran vu;
    auto vus = temoin.taille();
    const auto fin = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < fin) {
      if (const auto ecran = terrain->ecran(id); ecran && vrai(*ecran)) {
        vu = *ecran;
        break;
      }
      if (!temoin.suite(vus)) break;
    }
    terrain->laisser(id);
    return vu;
  }
  static bool porte(const Ecran& ecran, std::string_view texte) {
    return std::ranges::any_of(ecran.lignes, [&](const auto& l) { return l.find(texte) != std::string::npos; });
  }
  bool attendreTexte(const IdTerminal& id, std::string_view texte) {
    return !attendreEcran(id, [&](const Ecran& e) { return porte(e, texte); }).lignes.empty();
  }

  /// Asks again and again, until it is so.
  template <class Condition>
  static bool jusqua(Condition vrai) {
    const auto fin = std::chrono::steady_clock::now() + patience;
    while (!vrai())
      if (std::chrono::steady_clock::now() > fin) return false;
    return true;
  }

  /// A command of a person at another terminal of the same server.
  int tmux(const std::string& commande) const {
    return std::system(("tmux -S '" + reglages.prise + "' " + commande + " >/dev/null 2>&1").c_str());
  }

  DossierTemporaire dossier;
  Temoin temoin;
  ReglagesTmux reglages;
  std::unique_ptr<TerminauxTmux> terrain;
};

}  // namespace tarnavelle::Plateau::essai
