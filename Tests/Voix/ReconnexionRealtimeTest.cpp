#include "Voix/ReconnexionRealtime.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tarnavelle {
namespace {

using namespace std::chrono_literals;

TEST(ReconnexionRealtime, Decide) {
  using D = ReconnexionRealtime::Decision;
  constexpr auto plein = std::numeric_limits<std::int64_t>::max();
  const D credit{D::abandonner{"La voix s'arrête : le compte du fournisseur n'a plus de crédit."}};
  const D cle{D::abandonner{"La voix s'arrête : la clé du fournisseur est refusée."}};
  const D rien{D::rien{}};
  const auto reprendre = [](std::chrono::seconds delai, std::int64_t tentative) {
    return D{D::reconnecter{delai, tentative}};
  };
  struct {
    ReconnexionRealtime::Fermeture fermeture;
    D attendue;
  } const cas[] = {
      {{.fermetureVoulue = true, .message = "invalid_api_key"}, rien},
      {{.superviseurEnCours = true, .message = "code invalid_api_key."}, cle},
      {{.message = "account_deactivated"}, cle},
      {{.message = "error: insufficient_quota"}, credit},
      {{.message = "billing_hard_limit_reached", .tentative = 4}, credit},
      {{.superviseurEnCours = true, .message = "coupure"}, rien},
      {{.message = "Invalid_Api_Key", .tentative = 3}, reprendre(3s, 3)},
      {{.message = "", .tentative = 10}, reprendre(10s, 10)},
      {{.tentative = 37}, reprendre(10s, 37)},
      {{.tentative = plein}, reprendre(10s, plein)},
      {{.tentative = 0}, reprendre(1s, 1)},
      {{.tentative = -plein}, reprendre(1s, 1)},
  };
  for (const auto& c : cas) {
    const auto message = c.fermeture.message;
    EXPECT_EQ(ReconnexionRealtime::decision(c.fermeture), c.attendue)
        << message.value_or("(rien)") << ", " << c.fermeture.tentative;
    EXPECT_EQ(ReconnexionRealtime::estIrrecuperable(message),
              ReconnexionRealtime::explication(message).has_value());
  }
  EXPECT_EQ(ReconnexionRealtime::code("x invalid_api_key x"), "invalid_api_key");
}

TEST(InactiviteConversation, VidePuisRaccroche) {
  using G = InactiviteConversation::Geste;
  struct {
    InactiviteConversation::Etat etat;
    G attendu;
  } const cas[] = {
      {{.silenceDepuis = 299.9s}, G::rien},
      {{.silenceDepuis = 300s}, G::viderHistorique},
      {{.silenceDepuis = 300s, .historiqueVide = true}, G::rien},
      {{.silenceDepuis = 899.9s}, G::viderHistorique},
      {{.silenceDepuis = 900s, .historiqueVide = true}, G::raccrocher},
      {{.silenceDepuis = 900s, .reponseActive = true}, G::rien},
      {{.silenceDepuis = 900s, .appelEnCours = true}, G::rien},
      {{.silenceDepuis = std::chrono::duration<double>(std::nan(""))}, G::rien},
  };
  for (const auto& c : cas)
    EXPECT_EQ(InactiviteConversation::geste(c.etat), c.attendu) << c.etat.silenceDepuis.count();
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
