#include "Son/Pupitre.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <fstream>
#include <thread>

#include "DossierTemporaire.hpp"
#include "Socle/Fichiers.hpp"
#include "Son/AnneauSon.hpp"
#include "Son/Fichiers.hpp"

namespace tarnavelle::Voix {
namespace {

using namespace std::chrono_literals;

TEST(AnneauSon, RienNEstPerduNiReluEntreDeuxFils) {
  constexpr int total = 200000;  // exact as floats
  AnneauSon anneau(1000);
  std::thread ecrivain([&] {
    for (int i = 0; i < total;) {
      const std::array<float, 3> trois = {static_cast<float>(i), static_cast<float>(i + 1),
                                          static_cast<float>(i + 2)};
      i += static_cast<int>(
          anneau.ecrire(std::span(trois).first(static_cast<std::size_t>(std::min(3, total - i)))));
    }
  });
  std::array<float, 7> lus;
  for (int attendu = 0; attendu < total;)
    for (const float s : std::span(lus).first(anneau.lire(lus))) ASSERT_EQ(s, static_cast<float>(attendu++));
  ecrivain.join();
}

TEST(AnneauSon, CeQuiEstAbandonneNEstPasLu) {
  AnneauSon anneau(8);
  const std::array<float, 5> premiers = {1, 2, 3, 4, 5};
  std::array<float, 8> lus;
  anneau.ecrire(premiers);
  ASSERT_EQ(anneau.lire(std::span(lus).first(2)), 2U);
  anneau.abandonner();
  EXPECT_EQ(anneau.enAttente(), 0U);
  const std::array<float, 1> neuf = {9};
  anneau.ecrire(neuf);
  ASSERT_EQ(anneau.lire(lus), 1U) << "only what came since";
  EXPECT_EQ(lus[0], 9);
}

/// A loudspeaker that takes what it is told to take.
struct Faux {
  std::atomic<std::size_t> place = 0;
  std::atomic<std::size_t> verses = 0;
  std::atomic<std::size_t> enAttente = 0;
};
struct FausseSortie final : SortieSon {
  explicit FausseSortie(Faux& f) : faux(f) {}
  std::size_t place(Montre::time_point) override { return faux.place.exchange(0); }
  void verser(std::span<const float> mono) override {
    faux.enAttente += mono.size();
    faux.verses += mono.size();  // the last: the test waits for it
  }
  void finir() override {}
  void vider() override { faux.enAttente = 0; }
  std::size_t enAttente() const override { return faux.enAttente; }
  Faux& faux;
};
struct EntreeMuette final : EntreeSon {
  void puiser(std::vector<float>&, Montre::time_point) override {}
};

TEST(Pupitre, CouperDitCeQuiNeSeraPasEntendu) {
  Faux faux;
  Pupitre pupitre(std::make_unique<EntreeMuette>(), std::make_unique<FausseSortie>(faux), [](const Octets&) {});
  pupitre.jouer(Octets(2000));
  pupitre.jouer(Octets(1001));  // half a sample of no use
  faux.place = 600;
  while (faux.verses < 600) std::this_thread::yield();
  faux.enAttente = 100;  // 500 of them were heard
  EXPECT_EQ(pupitre.couper(), 1000);
  EXPECT_TRUE(pupitre.muet());
  EXPECT_EQ(pupitre.couper(), 0);
  pupitre.jouer(Octets(200));
  faux.place = 5000;
  while (faux.verses < 700) std::this_thread::yield();
  EXPECT_EQ(faux.verses, 700U) << "what was cut off never comes back";
}

/// A WAV file of that many frames of a tone; sizes as a writer on a pipe leaves them when `tube`.
std::string wav(int frequence, int voies, int trames, bool tube) {
  std::string texte = "RIFF....WAVEfmt ";
  const auto nombre = [&](std::uint32_t v, int taille) {
    for (int i = 0; i < taille; ++i) texte += static_cast<char>(v >> (8 * i) & 0xFFU);
  };
  const auto octets = static_cast<std::uint32_t>(trames * voies * 2);
  nombre(16, 4), nombre(1, 2), nombre(static_cast<std::uint32_t>(voies), 2);
  nombre(static_cast<std::uint32_t>(frequence), 4),
      nombre(static_cast<std::uint32_t>(frequence * voies * 2), 4);
  nombre(static_cast<std::uint32_t>(voies * 2), 2), nombre(16, 2);
  texte += "LIST";
  nombre(4, 4);
  texte += "INFOdata";
  nombre(tube ? 0x7FFFF000U : octets, 4);
  for (int i = 0; i < trames; ++i)
    for (int v = 0; v < voies; ++v)
      nombre(static_cast<std::uint16_t>(std::lround(12000 * std::sin(2 * M_PI * 440 * i / frequence))), 2);
  return texte;
}

TEST(Fichiers, UnFichierSEntendAuPasDuTempsEtEntier) {
  const DossierTemporaire dossier;
  const auto chemin = (dossier.chemin() / "son.wav").string();
  struct Cas {
    int frequence, voies;
    bool tube;
  };
  for (const auto& [frequence, voies, tube] :
       {Cas{8000, 1, false}, {24000, 1, true}, {44100, 2, true}, {192000, 2, false}}) {
    std::ofstream(chemin, std::ios::binary) << wav(frequence, voies, frequence, tube);
    auto entree = ouvrirEntree(chemin);
    ASSERT_TRUE(entree) << entree.raison();
    std::vector<float> entendus;
    auto t = Montre::now();
    (*entree)->puiser(entendus, t);
    std::size_t avant = 0;
    while (!(*entree)->finie()) {
      avant = entendus.size();
      (*entree)->puiser(entendus, t += 10ms);
      ASSERT_LE(entendus.size() - avant, 241U);
      std::this_thread::yield();
    }
    ASSERT_TRUE((*entree)->finie()) << frequence;
    // A thread reads ahead: moments when it had not yet are silence that comes on top, never sound that is
    // lost.
    const auto forts = std::ranges::count_if(entendus, [](float s) { return std::abs(s) > 0.02; });
    EXPECT_NEAR(static_cast<double>(forts), 24000 * 0.965, 24000 * 0.01) << frequence;
  }
}

TEST(Fichiers, CeQuiNEstPasUnSonEstRefuse) {
  const DossierTemporaire dossier;
  const auto chemin = (dossier.chemin() / "x.wav").string();
  EXPECT_EQ(ouvrirEntree(chemin).raison(), "« " + chemin + " » n'existe pas.");
  for (const std::string& contenu : {std::string(), std::string("RIFF"), std::string(5000, '\xFF'),
                                     wav(24000, 1, 10, false).substr(0, 30), wav(4000, 1, 10, false)}) {
    std::ofstream(chemin, std::ios::binary) << contenu;
    EXPECT_FALSE(ouvrirEntree(chemin)) << contenu.size();
  }
}

TEST(Fichiers, LaSortieTientCeQuiAuraitEteEntendu) {
  const DossierTemporaire dossier;
  const auto chemin = dossier.chemin() / "r.wav";
  const auto t = Montre::now();
  {
    auto sortie = ouvrirSortie(chemin.string());
    ASSERT_TRUE(sortie);
    ASSERT_GE((*sortie)->place(t), 1000U);
    (*sortie)->verser(std::vector<float>(1000, 0.5F));
    (*sortie)->place(t);
    (*sortie)->place(t + 25ms);
    EXPECT_EQ((*sortie)->enAttente(), 400U);
    (*sortie)->vider();
  }
  const auto ecrit = lireFichier(chemin, 10000);
  ASSERT_TRUE(ecrit);
  EXPECT_EQ(ecrit->size(), 44U + 1200);
  EXPECT_EQ(ecrit->substr(40, 4), std::string("\xB0\x04\0\0", 4)) << "the size of the sound is told";
}

TEST(Fichiers, UnTubeQueNulNeLitNeRetientPersonne) {
  const DossierTemporaire dossier;
  const auto tube = dossier.chemin() / "tube";
  ASSERT_EQ(::mkfifo(tube.c_str(), 0600), 0);
  const auto sortie = *ouvrirSortie(tube.string());
  const int fd = ::open(tube.c_str(), O_RDWR | O_NONBLOCK);
  std::array<char, 4096> bloc{};
  while (::write(fd, bloc.data(), bloc.size()) > 0) continue;
  auto t = Montre::now();
  sortie->verser(std::vector<float>(1000, 0.5F));
  sortie->place(t);
  sortie->place(t += 100ms);
  EXPECT_EQ(sortie->enAttente(), 1000U) << "what is not taken is not heard";
  while (::read(fd, bloc.data(), bloc.size()) > 0) continue;
  sortie->place(t += 10ms);
  sortie->place(t += 10ms);
  EXPECT_EQ(sortie->enAttente(), 760U) << "and goes on at its pace";
  EXPECT_EQ(sortie->panne(), std::nullopt);
  ::close(fd);
}

TEST(Fichiers, UnDisquePleinSeDit) {
  if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no such device here";
  EXPECT_EQ((*ouvrirSortie("/dev/full"))->panne(), "Le son ne peut plus être écrit : le disque est plein.");
}

}  // namespace
}  // namespace tarnavelle::Voix
