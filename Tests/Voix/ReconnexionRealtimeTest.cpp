#include "Voix/ReconnexionRealtime.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;

TEST(ReconnexionRealtime, Decide) {
  using D = ReconnexionRealtime::Decision;
  constexpr auto plein = std::numeric_limits<std::int64_t>::max();
  const D credit{D::abandonner{"La voix s'arrête : le compte du fournisseur n'a plus de crédit."}};
  const D cle{D::abandonner{"La voix s'arrête : la clé du fournisseur est refusée."}};
  const std::pair<ReconnexionRealtime::Fermeture, D> cas[] = {
      {{.fermetureVoulue = true, .message = "invalid_api_key"}, {D::rien{}}},
      {{.superviseurEnCours = true, .message = "code invalid_api_key."}, cle},
      {{.message = "account_deactivated"}, cle},
      {{.message = "error: insufficient_quota"}, credit},
      {{.message = "billing_hard_limit_reached", .tentative = 4}, credit},
      {{.superviseurEnCours = true, .message = "coupure"}, {D::rien{}}},
      {{.message = "Invalid_Api_Key", .tentative = 3}, {D::reconnecter{3s, 3}}},
      {{.tentative = plein}, {D::reconnecter{10s, plein}}},
      {{.tentative = -plein}, {D::reconnecter{1s, 1}}},
  };
  for (const auto& [fermeture, attendue] : cas)
    EXPECT_EQ(ReconnexionRealtime::decision(fermeture), attendue)
        << fermeture.message.value_or("") << fermeture.tentative;
}

TEST(InactiviteConversation, VidePuisRaccroche) {
  using G = InactiviteConversation::Geste;
  const std::pair<InactiviteConversation::Etat, G> cas[] = {
      {{.silenceDepuis = 299.9s}, G::rien},
      {{.silenceDepuis = 300s}, G::viderHistorique},
      {{.silenceDepuis = 899.9s, .historiqueVide = true}, G::rien},
      {{.silenceDepuis = 900s, .historiqueVide = true}, G::raccrocher},
      {{.silenceDepuis = 900s, .reponseActive = true}, G::rien},
      {{.silenceDepuis = 900s, .appelEnCours = true}, G::rien},
  };
  for (const auto& [etat, attendu] : cas)
    EXPECT_EQ(InactiviteConversation::geste(etat), attendu) << etat.silenceDepuis.count();
}

TEST(FinDActiviteDurable, AnnonceLaFinDUnLongTravail) {
  using FinDActiviteDurable::merite;
  EXPECT_TRUE(merite({.travaillaitAvant = true, .travailDepuis = 20s}));
  EXPECT_FALSE(merite({.travaillaitAvant = true, .travailDepuis = 19.9s}));
  EXPECT_FALSE(merite({.travaillaitAvant = true, .travailleMaintenant = true, .travailDepuis = 60s}));
  EXPECT_FALSE(merite({.travailDepuis = 60s}));
}

}  // namespace
}  // namespace tarnavelle
