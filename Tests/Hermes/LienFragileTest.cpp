// Thousands of notices over a link that flaps: cut at every stage, slow, the server's clock not ours.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>

#include "Hermes/OreilleNtfy.hpp"

namespace tarnavelle {
namespace {

#define ICI R"(,"topic":"abcdefghijklmnopqrst-_"})"

/// An ntfy server behind such a link, in a world where time passes at once. A minute after the last notice the
/// link holds, slow as it is, and the stream is interrupted when the cockpit has had time to catch up.
class LienFragile final : public FluxLignes {
 public:
  LienFragile(unsigned graine, std::size_t avis) : alea_(graine) {
    double date = 1;  // the first connection catches nothing up
    while (dates_.size() < avis) dates_.push_back(date += hasard(2));
  }

  double secondes = 0;
  std::size_t lignesDites = 0;

  Resultat<int, ErreurReseau> ouvrir(const RequeteHTTP& requete) override {
    for (const auto echec :
         {ErreurReseau::hoteIntrouvable, ErreurReseau::connexionImpossible, ErreurReseau::tlsEchoue}) {
      secondes += calme() ? 5 : hasard(hasard(1) < 0.1 ? 40 : 1);
      if (coupe(0.05)) return Sinon{echec};
    }
    const double lue = secondes;
    flux_ = {{lue, evenement("open", lue)}};
    const auto since = requete.url.find("since=");
    const double duree = since == std::string::npos ? 0 : std::stod(requete.url.substr(since + 6));
    const double debut = heure(lue) - duree * (requete.url.ends_with('m') ? 60 : 1);
    double envoi = lue;
    for (suivant_ = 0; suivant_ < dates_.size() && dates_[suivant_] <= lue; ++suivant_)
      if (since != std::string::npos && heure(dates_[suivant_]) >= std::floor(debut))
        flux_.emplace(envoi += hasard(0.1), avis(suivant_));
    secondes += hasard(1);
    for (double vie = envoi + 45; vie < lue + 4000; vie += 45) flux_.emplace(vie, evenement("keepalive", vie));
    lignes_ = coupe(0.1) ? 0 : coupe(0.4) ? 1 : coupe(0.3) ? static_cast<int>(2 + hasard(20)) : 1 << 30;
    coupure_ = coupe(1) ? secondes + hasard(120) : HUGE_VAL;
    return 200;
  }

  LectureFlux suivante(std::optional<std::chrono::milliseconds> attente) override {
    // Live notices do not wait for those that are caught up.
    for (; suivant_ < dates_.size() && dates_[suivant_] < flux_.begin()->first + 1; ++suivant_)
      flux_.emplace(dates_[suivant_] + hasard(0.5), avis(suivant_));
    const double terme = secondes + std::chrono::duration<double>(*attente).count();
    const double quand = std::max(secondes, flux_.begin()->first);
    if (lignes_-- == 0 || coupure_ < quand) return {LectureFlux::perte{ErreurReseau::connexionPerdue}};
    if (interrompu()) return {LectureFlux::perte{ErreurReseau::annulee}};
    if ((secondes = std::min(quand, terme)) == terme) return {LectureFlux::attente{}};
    ++lignesDites;
    if (coupe(0.004)) secondes += 40;  // stuck, the rest comes late
    ligne_ = std::move(flux_.begin()->second);
    flux_.erase(flux_.begin());
    return {LectureFlux::ligne{ligne_}};
  }

  void fermer() override {}
  void pauser(std::chrono::milliseconds duree) override {
    secondes += std::chrono::duration<double>(duree).count();
  }
  void interrompre() override {}
  bool interrompu() const override { return secondes > dates_.back() + 600; }

 private:
  double hasard(double maximum) { return std::uniform_real_distribution<>(0, maximum)(alea_); }
  bool calme() const { return secondes > dates_.back() + 60; }
  bool coupe(double part) { return !calme() && hasard(1) < part; }
  static double heure(double ici) { return std::floor(1.7e9 + 0.37 + ici); }
  static std::string evenement(const std::string& nom, double ici) {
    return R"(data: {"event":")" + nom + R"(","time":)" + std::to_string(std::llround(heure(ici))) + ICI;
  }
  std::string avis(std::size_t rang) const {
    return evenement(R"(message","message":"m","id":")" + std::to_string(rang), dates_[rang]);
  }

  std::mt19937 alea_;
  std::vector<double> dates_;  ///< of the notices, on our clock
  std::multimap<double, std::string> flux_;
  std::size_t suivant_ = 0;  ///< the next live notice
  double coupure_ = 0;
  int lignes_ = 0;  ///< before a cut
  std::string ligne_;
};

TEST(OreilleNtfy, NePerdNiNeRepeteRienSurUnLienFragile) {
  constexpr std::size_t avis = 3000;
  for (const unsigned graine : {1u, 2u, 3u}) {
    LienFragile lien(graine, avis);
    std::vector<int> recus(avis);
    OreilleNtfy oreille(lien, [&] { return OreilleNtfy::Secondes(lien.secondes); },
                        {[&](const MessageNtfy& m) { ++recus.at(std::stoul(m.id)); }, {}});
    oreille.ecouter({"https://h", "abcdefghijklmnopqrst-_", ""}, {});
    EXPECT_EQ(recus, std::vector<int>(avis, 1)) << graine;
    EXPECT_LT(lien.lignesDites, 3 * avis) << graine;
  }
}

}  // namespace
}  // namespace tarnavelle
