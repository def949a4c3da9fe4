#include "Reechantillonnage/Reechantillonneur.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace tarnavelle::Voix {
namespace {

/// `duree` seconds of a pure sound, each channel the same.
std::vector<float> ton(double hertz, double frequence, int voies, double duree) {
  std::vector<float> samples;
  for (double i = 0; i < duree * frequence; ++i)
    samples.insert(samples.end(), static_cast<std::size_t>(voies),
                   static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * hertz * i / frequence)));
  return samples;
}

std::vector<float> passer(const Reechantillonneur::Forme& forme, std::span<const float> samples,
                          std::size_t morceau) {
  auto par = Reechantillonneur::creer(forme);
  std::vector<float> sortie;
  for (std::size_t i = 0; i < samples.size(); i += morceau)
    par->passer(samples.subspan(i, std::min(morceau, samples.size() - i)), sortie);
  return sortie;
}

/// How loud that pitch is in the second half of the samples: 1 as the tone was made.
double force(std::span<const float> samples, double hertz, double frequence) {
  double reel = 0, imaginaire = 0;
  const std::size_t debut = samples.size() / 2, n = samples.size() - debut;
  for (std::size_t i = debut; i < samples.size(); ++i) {
    const double angle = 2 * std::numbers::pi * hertz * static_cast<double>(i) / frequence;
    reel += samples[i] * std::cos(angle);
    imaginaire += samples[i] * std::sin(angle);
  }
  return 4 * std::hypot(reel, imaginaire) / static_cast<double>(n);
}

TEST(Reechantillonneur, NePerdNiNAjouteRienDUnMorceauALAutre) {
  for (const double frequence : {8000., 11025., 16000., 22050., 24000., 44100., 48000., 96000., 192000.})
    for (const Reechantillonneur::Forme& forme :
         {Reechantillonneur::Forme{frequence, 24000}, {24000, frequence}}) {
      SCOPED_TRACE(std::to_string(forme.entree) + " " + std::to_string(forme.sortie));
      const auto samples = ton(440, forme.entree, 1, 2);
      const auto entier = passer(forme, samples, samples.size());
      EXPECT_NEAR(static_cast<double>(entier.size()), 2 * forme.sortie, 0.005 * forme.sortie);
      EXPECT_NEAR(force(entier, 440, forme.sortie), 1, 0.02);
      for (const std::size_t morceau :
           {std::size_t{1}, std::size_t{7}, static_cast<std::size_t>(forme.entree / 200)}) {
        const auto coupe = passer(forme, samples, morceau);
        EXPECT_TRUE(std::ranges::equal(coupe, entier, [](float a, float b) { return std::abs(a - b) < 1e-5; }))
            << morceau;
      }
    }
}

TEST(Reechantillonneur, NeDeriveNiNeRetarde) {
  auto r = Reechantillonneur::creer({.entree = 44100, .sortie = 24000});
  std::vector<float> sortie;
  double entres = 0, sortis = 0, pire = 0;
  for (std::size_t i = 0; i < 2 * 60 * 200; ++i) {  // two minutes by 5 ms
    sortie.clear();
    r->passer(std::vector<float>(220 + i % 2), sortie);
    entres += static_cast<double>(220 + i % 2) / 44100;
    sortis += static_cast<double>(sortie.size()) / 24000;
    pire = std::max(pire, std::abs(entres - sortis));
  }
  EXPECT_LT(pire, 0.0015) << "seconds between what came in and what went out";
}

TEST(Reechantillonneur, MeleLesVoiesEtCoupeLesAigus) {
  auto samples = ton(1000, 48000, 2, 1);
  for (std::size_t i = 1; i < samples.size(); i += 2) samples[i] = 0;  // on the left alone
  samples.push_back(1);                                                // no frame
  const auto sortie = passer({48000, 24000, 2, 3}, samples, samples.size());
  std::vector<float> premiere;
  for (std::size_t i = 0; i < sortie.size(); i += 3) {
    premiere.push_back(sortie[i]);
    ASSERT_EQ(sortie[i], sortie.at(i + 2));
  }
  EXPECT_NEAR(force(premiere, 1000, 24000), 0.5, 0.01);
  const auto repli = passer({48000, 24000}, ton(20000, 48000, 1, 1), 480);
  EXPECT_LT(force(repli, 4000, 24000), 0.001) << "20 kHz would fold to 4 kHz";
}

TEST(Reechantillonneur, FinitEtRefuse) {
  auto r = Reechantillonneur::creer({.entree = 48000, .sortie = 24000});
  std::vector<float> sortie;
  r->passer(std::vector<float>(480, std::numeric_limits<float>::infinity()), sortie);
  r->finir(sortie);
  EXPECT_EQ(sortie, std::vector<float>(240, 0.F));
  r->passer(std::vector<float>(48, 1.F), sortie);
  r->vider();
  sortie.clear();
  r->finir(sortie);
  EXPECT_EQ(sortie, std::vector<float>{});
  using Forme = Reechantillonneur::Forme;
  for (const Forme& forme : {Forme{},
                             {7999, 24000},
                             {24000, 192001},
                             {std::nan(""), 24000},
                             {48000, 24000, 0},
                             {48000, 24000, 1, 65}})
    EXPECT_FALSE(Reechantillonneur::creer(forme));
}

}  // namespace
}  // namespace tarnavelle::Voix
