// What a conversation reads and keeps: keys in any pieces, a box that shows the end of what it holds, a memory
// that outlives its program, another machine's settings.
#include <gtest/gtest.h>

#include "Boite.hpp"
#include "Clavier.hpp"
#include "Croquis.hpp"
#include "DossierTemporaire.hpp"
#include "EnvHermes.hpp"
#include "Fil.hpp"
#include "Memoire.hpp"
#include "Socle/Colonnes.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using enum Frappe::Touche;

std::vector<Frappe> suite(std::vector<Frappe> frappes) {
  std::vector<Frappe> jointes;  // a text may come in pieces
  for (Frappe& f : frappes) {
    auto* texte = std::get_if<Frappe::saisie>(&f.cas);
    auto* avant = jointes.empty() ? nullptr : std::get_if<Frappe::saisie>(&jointes.back().cas);
    if (texte && avant)
      avant->texte += texte->texte;
    else
      jointes.push_back(std::move(f));
  }
  return jointes;
}

TEST(Clavier, LitLesTouchesEnMorceauxQuelconques) {
  const std::pair<std::string, std::vector<Frappe>> cas[] = {
      {"été\r", {{Frappe::saisie{"été"}}, {entree}}},
      {"a\033[A\033OB\033[3~b", {{Frappe::saisie{"a"}}, {haut}, {bas}, {supprimer}, {Frappe::saisie{"b"}}}},
      {"\033[200~un\r\ndeux\r\t\033[31m\003\033[201~x",
       {{Frappe::collage{"un\ndeux\n\t[31m"}}, {Frappe::saisie{"x"}}}},
      {"\033[200~\033[201\033[201~", {{Frappe::collage{"[201"}}}},
      {"\033[1;5Cz\033\r\n", {{Frappe::saisie{"z"}}, {nouvelleLigne}, {nouvelleLigne}}},
      {"\xff\x03", {{Frappe::saisie{"\uFFFD"}}, {ctrlC}}},
      {"\033", {{echap}}},
      {"o\033", {{Frappe::saisie{"o"}}, {echap}}},
  };
  for (const auto& [octets, attendu] : cas)
    for (std::size_t coupe = 0; coupe <= octets.size(); ++coupe) {
      Clavier clavier;
      auto lues = clavier.lire(std::string_view(octets).substr(0, coupe));
      for (const auto& reste : {clavier.lire(std::string_view(octets).substr(coupe)), clavier.calme()})
        lues.insert(lues.end(), reste.begin(), reste.end());
      EXPECT_EQ(suite(std::move(lues)), attendu) << octets << " | " << coupe;
    }
}

TEST(Boite, MontreLaFinDeCeQuElleTient) {
  Boite boite;
  boite.inserer("un\ndeux trois\n日本語");
  EXPECT_EQ(boite.vue(6, 10).lignes, (std::vector<std::string>{"un", "deux t", "rois", "日本語"}));
  const auto vue = boite.vue(6, 2);
  EXPECT_EQ(vue.lignes, (std::vector<std::string>{"rois", "日本語"}));
  EXPECT_EQ(std::tuple(vue.ligne, vue.colonne, vue.suite), std::tuple(1U, 5U, true));
  for (const auto touche : {haut, debut, retourArriere, mot, fin, finDeLigne}) boite.toucher(touche);
  EXPECT_EQ(boite.texte(), "deux trois\n日本語");
  boite.inserer(std::string(300'000, 'x') + "fin");
  EXPECT_EQ(boite.vue(80, 10).lignes.size(), 10U);
  EXPECT_EQ(boite.prendre().size(), 300'003 + std::string("deux trois\n日本語").size());
  EXPECT_EQ(boite.vue(80, 10).lignes, std::vector<std::string>{""});
}

TEST(Fil, CeQueDitHermesNeRessembleJamaisAuProgramme) {
  Fil fil;
  std::vector<std::string> lignes;
  for (const char c :
       std::string("❯ toi\r\n────────────\n› \n\033[2Jo : accepter · n : refuser " + std::string(300, 'z')))
    for (std::string& l : fil.ecouter(std::string(1, c), 40)) lignes.push_back(std::move(l));
  for (std::string& l : fil.finir(40)) lignes.push_back(std::move(l));
  ASSERT_GT(lignes.size(), 8U);
  for (const std::string& ligne : lignes) {
    EXPECT_TRUE(ligne.starts_with("  ")) << ligne;
    EXPECT_EQ(ligne.find('\033'), ligne.npos);
    EXPECT_LE(enLignes(ligne, 39, false).size(), 1U) << ligne;
  }
}

TEST(Croquis, TientDansLeTerminal) {
  Fil fil;
  fil.ecouter(std::string(4000, 'x'), 80);
  Boite boite;
  for (int i = 0; i < 30; ++i) boite.inserer("ligne\n");
  const std::vector<std::string> enFile(50, std::string(300, 'y'));
  const std::deque<DemandeApprobationHermes> demandes(
      3, {.id = "a", .outil = "terminal", .titre = "t", .detail = std::string(3000, 'z'), .expiration = {}});
  for (const auto& attendues : {demandes, {}})
    for (const auto& [colonnes, lignes] : {std::pair<std::size_t, std::size_t>{80, 24}, {20, 6}, {20, 12}}) {
      const auto vif =
          Croquis::vif({.fil = fil, .enFile = enFile, .boite = boite, .demandes = attendues, .enTour = true},
                       colonnes, lignes);
      EXPECT_LE(vif.lignes.size(), lignes) << colonnes << " " << attendues.size();
      EXPECT_LT(vif.ligne, vif.lignes.size());
      EXPECT_TRUE(attendues.empty() || vif.lignes.back().ends_with("interrompre")) << vif.lignes.back();
      for (const std::string& ligne : vif.lignes) EXPECT_LT(Colonnes::largeur(ligne), colonnes) << ligne;
    }
}

TEST(Memoire, EstRetrouveeEntiereOuPasDuTout) {
  const DossierTemporaire dossier;
  Memoire memoire{.session = "s", .fil = {}, .enCours = "parti", .enFile = {"a, b", "c\n"}};
  memoire.ajouter({Memoire::Propos::De::vous, "salut\xff"});
  memoire.ajouter({Memoire::Propos::De::hermes, std::string(Memoire::texteMax + 10, 'x')});
  const auto fichier = Memoire::chemin(dossier.chemin() / "neuf", "mini;rm -rf");
  EXPECT_EQ(fichier.filename(), "minirm-rf.json");
  ASSERT_TRUE(memoire.ecrire(fichier));
  memoire.fil.front().texte = "salut\uFFFD";
  EXPECT_EQ(Memoire::lire(fichier), memoire);
  for (const char* texte : {"", "{", "[]", R"({"fil":[1,{"de":2}],"session":3,"enFile":"x"})"}) {
    const auto lue = Memoire::lire(dossier.ecrire("abime.json", texte));
    EXPECT_EQ(lue.session + lue.enCours, "") << texte;
  }
}

TEST(EnvHermes, LitCeQueDitLAutreMachine) {
  const std::pair<std::string, LectureEnvHermes> cas[] = {
      {"API_SERVER_ENABLED=true\n", {}},  // before the mark: noise of a shell
      {"@fichier\n", {.aLuLeFichier = true}},
      {"bonjour\n@fichier\n# API_SERVER_KEY=x\nexport API_SERVER_ENABLED='Yes'\r\nAPI_SERVER_KEY = \"k=1\"\n"
       "API_SERVER_PORT=99999\nAPI_SERVER_MODEL_NAME=nova",
       {.serveurActif = true, .cle = "k=1", .modele = "nova", .aLuLeFichier = true}},
      {"@fichier\nAPI_SERVER_ENABLED=false\nAPI_SERVER_PORT=8650\nAPI_SERVER_KEY=a\tb\n",
       {.portDistant = 8650, .aLuLeFichier = true}},
  };
  for (const auto& [sortie, attendu] : cas) EXPECT_EQ(EnvHermes::lire(sortie), attendu) << sortie;
}

}  // namespace
}  // namespace tarnavelle
