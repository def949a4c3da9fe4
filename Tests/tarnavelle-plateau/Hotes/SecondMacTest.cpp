#include "Hotes/SecondMac.hpp"

#include <gtest/gtest.h>

namespace tarnavelle::Plateau {
namespace {

using Sortie = Resultat<SortieSSH, PanneSSH>;

Sortie fini(int statut, std::string sortie = "") { return SortieSSH{statut, std::move(sortie)}; }
Sortie casse(PanneSSH::Cause cause) { return Sinon{PanneSSH::de(cause, "studio")}; }
std::string annonce(const std::string& jeton) {
  return R"({"host":"127.0.0.1","pid":7,"port":4242,"token":")" + jeton + "\"}\n";
}

constexpr std::string_view peutEtre = " Le verbe a pu y être exécuté : il n'est pas envoyé de nouveau.";

/// What comes of a command when the door announces these tokens, one a reading, and each post gives that.
struct Cas {
  std::vector<std::string> annonces;
  std::vector<Sortie> sorts;
  std::string postes;  ///< the tokens that commands were posted with
  std::string dit;
};

TEST(SecondMac, RienNePartDeuxFoisDeCeQuiAPuEtreFait) {
  const std::string va = R"({"ok":true,"spoken_text":"fait"})", non = R"({"ok":false,"error":"Jeton faux."})";
  using Cause = PanneSSH::Cause;
  const Cas tous[] = {
      {{annonce("A")}, {fini(0, va)}, "A", "fait"},
      {{annonce("A"), annonce("B")}, {fini(7), fini(0, va)}, "AB", "fait"},
      {{annonce("A"), annonce("B")}, {fini(0, non), fini(0, va)}, "AB", "fait"},
      {{annonce("A"), annonce("A")}, {fini(0, non)}, "A", "KO Jeton faux."},
      {{annonce("A"), annonce("B")},
       {fini(7), fini(7)},
       "AB",
       "La porte annoncée sur « studio » ne répond pas : le cockpit a pu s'y fermer."},
      {{annonce("A"), ""},
       {fini(7)},
       "A",
       "Le cockpit de « studio » n'annonce aucune porte : il n'y est pas ouvert."},
      {{annonce("A"), annonce("B")},
       {fini(28)},
       "A",
       "La porte de « studio » n'a pas répondu à temps." + std::string(peutEtre)},
      {{annonce("A"), annonce("B")},
       {fini(52)},
       "A",
       "La porte de « studio » n'a rien répondu de lisible (curl 52)." + std::string(peutEtre)},
      {{annonce("A"), annonce("B")},
       {fini(0, "<html>")},
       "A",
       "Ce que la porte de « studio » a répondu n'est pas lisible." + std::string(peutEtre)},
      {{annonce("A"), annonce("B")},
       {casse(Cause::coupe)},
       "A",
       "Le lien avec « studio » est coupé." + std::string(peutEtre)},
      {{annonce("A"), annonce("B")},
       {casse(Cause::injoignable)},
       "A",
       "« studio » ne répond pas : machine éteinte, réseau coupé, ou ssh fermé là-bas."},
      {{" \n"}, {}, "", "Le cockpit de « studio » n'annonce aucune porte : il n'y est pas ouvert."},
      {{annonce("A\\nX: y")}, {}, "", "Ce que « studio » annonce de sa porte n'est pas lisible."},
  };
  for (const Cas& cas : tous) {
    std::size_t lectures = 0, posts = 0;
    std::string postes;
    SecondMac mac("studio", [&](const OrdreSSH& ordre) {
      const auto jeton = ordre.ligne.find("Bearer ");
      if (jeton == std::string::npos) return fini(0, cas.annonces.at(lectures++));
      postes += ordre.ligne[jeton + 7];
      return cas.sorts.at(posts++);
    });
    const auto reponse = mac.relayer({CommandeControle::focus{"Merlin"}});
    const std::string dit = !reponse      ? reponse.raison()
                            : reponse->ok ? reponse->spoken_text.value()
                                          : "KO " + reponse->error.value();
    EXPECT_EQ(dit, cas.dit);
    EXPECT_EQ(postes, cas.postes) << cas.dit;
  }
}

TEST(SecondMac, CeQuEstSuResteQuandPlusRienNeSeLit) {
  std::atomic<bool> eteint = false;
  SecondMac mac("studio", [&](const OrdreSSH& ordre) {
    if (eteint) return casse(PanneSSH::Cause::injoignable);
    return ordre.ligne.find("Bearer ") == std::string::npos
               ? fini(0, annonce("A"))
               : fini(0, R"({"ok":true,"data":{"scene":"Forge"}})");
  });
  EXPECT_FALSE(mac.vue(false).plateau) << "nobody has asked yet";
  const auto vue = mac.vue(true);
  ASSERT_TRUE(vue.plateau);
  EXPECT_EQ(vue.plateau->scene + vue.panne, "Forge");
  eteint = true;
  (void)mac.relayer({CommandeControle::focus{"Merlin"}});  // what it shows may have changed: it is read again
  const auto apres = mac.vue(true);
  EXPECT_EQ(apres.panne, "« studio » ne répond pas : machine éteinte, réseau coupé, ou ssh fermé là-bas.");
  EXPECT_TRUE(apres.plateau && apres.age);
}

}  // namespace
}  // namespace tarnavelle::Plateau
