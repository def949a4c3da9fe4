#include "Verbes/Saisie.hpp"

#include <gtest/gtest.h>

namespace tarnavelle::Plateau {
namespace {

using namespace std::chrono_literals;

/// What the screen shows from an instant on.
struct Image {
  std::chrono::milliseconds quand;
  LectureEcran lecture;
  bool soumise = false;
  bool mort = false;
  bool besoin = false;
};

LectureEcran boite(std::string texte, Etat etat = Etat::repos, int collages = 0) {
  LectureEcran lecture;
  lecture.etat = etat;
  lecture.boite = true;
  lecture.horsCollages = texte.substr(0, collages > 0 ? texte.find('[') : texte.npos);
  lecture.texteBoite = std::move(texte);
  lecture.collages = collages;
  return lecture;
}
LectureEcran sansBoite(Etat etat) {
  LectureEcran lecture;
  lecture.etat = etat;
  return lecture;
}

struct Cas {
  std::string_view nom;
  Saisie::Consigne consigne;
  std::vector<Image> film;
  std::string_view gestes;  ///< in order: E for the box emptied, C for a paste, V for Enter
  Livraison attendue;
  Ou<Fait> entree = Fait{};
};

/// Plays the film, looking whenever the machine asks to, and tells what it did and when it ended.
std::pair<std::string, Livraison> jouer(const Cas& cas) {
  Instant maintenant{};
  Saisie saisie(cas.consigne, {}, maintenant);
  std::string gestes;
  for (int tours = 0; tours < 10'000; ++tours) {
    const Image* image = &cas.film.front();
    for (const Image& i : cas.film)
      if (i.quand <= maintenant.time_since_epoch()) image = &i;
    auto suite = saisie.regard({image->lecture, image->mort, image->besoin, image->soumise}, maintenant);
    if (const auto* effacer = std::get_if<Saisie::Effacer>(&suite)) {
      gestes += 'E';
      EXPECT_EQ(effacer->lignes, 2U) << cas.nom;
      suite = saisie.efface(Fait{}, maintenant);
    } else if (std::holds_alternative<Saisie::Coller>(suite)) {
      gestes += 'C';
      suite = saisie.colle(Fait{}, maintenant);
    } else if (std::holds_alternative<Saisie::Valider>(suite)) {
      gestes += 'V';
      suite = saisie.valide(cas.entree, maintenant);
    }
    if (const auto* livraison = std::get_if<Livraison>(&suite)) return {gestes, *livraison};
    const Instant quand = std::get<Saisie::Regarder>(suite).auPlusTard;
    EXPECT_GT(quand, maintenant) << cas.nom;
    maintenant = quand;
  }
  return {gestes, {}};
}

TEST(Saisie, NeDitQueCeQuiFutVu) {
  using L = Livraison;
  const auto vide = boite("");
  const auto pleine = boite("relis le patch");
  const auto dialogue = sansBoite(Etat::besoin);
  const Saisie::Consigne va{.texte = "relis le patch"};
  const Saisie::Consigne pose{.texte = "relis le patch", .valider = false};
  const Cas cas[] = {
      {"le crochet le prouve", va, {{0ms, vide}, {40ms, pleine}, {300ms, vide, true}}, "CV", {L::Sort::soumis}},
      {"la boîte coupe où elle veut",
       va,
       {{0ms, vide}, {40ms, boite("relis le\n patch")}, {400ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"ce qu'un programme redessine",
       {.texte = "voila\u0300 co\u00adop a\u200bb x\u202ey 👍🏽 ❤\ufe0f"},
       {{0ms, vide}, {40ms, boite("voilà coop ab x\ufffdy 👍 ❤")}, {400ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"ou montre autrement",
       {.texte = "premier\u2028 second"},
       {{0ms, vide}, {40ms, boite("premierk second")}},
       "C",
       {L::Sort::pose, L::Raison::autrement}},
      {"ou que quelqu'un a tapé",
       va,
       {{0ms, vide}, {40ms, boite("je ta")}},
       "C",
       {L::Sort::inconnu, L::Raison::pasMontre}},
      {"vidée et au travail",
       va,
       {{0ms, vide}, {40ms, pleine}, {300ms, boite("", Etat::travaille)}},
       "CV",
       {L::Sort::soumis}},
      {"vidée, deux regards", va, {{0ms, vide}, {40ms, pleine}, {300ms, vide}}, "CV", {L::Sort::soumis}},
      {"vidée d'un clignement",
       va,
       {{0ms, vide}, {40ms, pleine}, {300ms, vide}, {350ms, pleine}},
       "CVVV",
       {L::Sort::pose}},
      {"Entrée avalée, puis entendue",
       va,
       {{0ms, vide}, {40ms, pleine}, {1000ms, boite("", Etat::travaille)}},
       "CVV",
       {L::Sort::soumis}},
      {"un grand collage",
       va,
       {{0ms, vide}, {40ms, boite("[Pasted]", Etat::repos, 1)}, {300ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"une commande ouvre un menu",
       {.texte = "/exit", .commande = true},
       {{0ms, vide}, {20ms, boite("/exit")}, {60ms, sansBoite(Etat::inconnu)}, {400ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"ou un écran à elle",
       {.texte = "/help", .commande = true},
       {{0ms, vide}, {20ms, boite("/help")}, {200ms, dialogue}},
       "CV",
       {L::Sort::soumis, L::Raison::dialogue}},
      {"ou finit le programme",
       {.texte = "/exit", .commande = true},
       {{0ms, vide}, {20ms, boite("/exit")}, {200ms, vide, false, true}},
       "CV",
       {L::Sort::soumis, L::Raison::mort}},
      {"une commande refusée ne se redemande pas",
       {.texte = "/non", .commande = true},
       {{0ms, vide}, {20ms, boite("/non")}},
       "CV",
       {L::Sort::pose}},
      {"posé, pas envoyé", pose, {{0ms, vide}, {40ms, pleine}}, "C", {L::Sort::pose}},
      {"un dialogue", va, {{0ms, dialogue}}, "", {L::Sort::refuse, L::Raison::dialogue}},
      {"un dialogue d'un instant",
       va,
       {{0ms, dialogue}, {100ms, vide}, {240ms, pleine}, {600ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"un dialogue annoncé, pas encore dessiné",
       va,
       {{0ms, vide, false, false, true}},
       "",
       {L::Sort::refuse, L::Raison::dialogue}},
      {"la consigne d'avant, rendue par Esc",
       {.texte = "relis le patch", .derniere = "corrige la\nfaute"},
       {{0ms, boite("corrige la\n faute")}, {220ms, vide}, {300ms, pleine}, {600ms, vide, true}},
       "ECV",
       {L::Sort::soumis}},
      {"notre grand collage, resté là",
       {.texte = "relis le patch", .vue = "[Pasted]", .derniere = "un long texte"},
       {{0ms, boite("[Pasted\n]", Etat::repos, 1)}, {220ms, vide}, {300ms, pleine}, {600ms, vide, true}},
       "ECV",
       {L::Sort::soumis}},
      {"celui de quelqu'un",
       {.texte = "relis le patch", .vue = "[Pasted]", .derniere = "un long texte"},
       {{0ms, boite("[Pasted 2]", Etat::repos, 1)}},
       "",
       {L::Sort::refuse, L::Raison::brouillon}},
      {"à la suite de notre grand collage",
       {.texte = "fin", .dejaPose = "un long texte", .suite = true, .vue = "[Pasted]"},
       {{0ms, boite("[Pasted]", Etat::repos, 1)},
        {40ms, boite("[Pasted] fin", Etat::repos, 1)},
        {400ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"rendue, et retouchée",
       {.texte = "relis le patch", .derniere = "corrige la\nfaute"},
       {{0ms, boite("corrige la\n grosse faute")}},
       "",
       {L::Sort::refuse, L::Raison::brouillon}},
      {"le texte de quelqu'un", va, {{0ms, boite("je ta")}}, "", {L::Sort::refuse, L::Raison::brouillon}},
      {"le nôtre d'avant",
       {.texte = " le patch", .dejaPose = "relis", .suite = true},
       {{0ms, boite("relis")}, {40ms, pleine}, {300ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"le même, qui vient de partir",
       {.texte = "relis le patch", .derniere = "relis le patch"},
       {{0ms, pleine}, {60ms, vide}, {320ms, pleine}, {600ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"le même, laissé par une porte morte", va, {{0ms, pleine}, {300ms, vide, true}}, "V", {L::Sort::soumis}},
      {"à soumettre s'il est là",
       {.texte = "relis le patch", .reprise = true},
       {{0ms, pleine}, {300ms, vide, true}},
       "V",
       {L::Sort::soumis}},
      {"à soumettre, mais il n'y est pas",
       {.texte = "relis le patch", .reprise = true},
       {{0ms, vide}},
       "",
       {L::Sort::refuse, L::Raison::brouillon}},
      {"posé deux fois",
       {.texte = "relis", .dejaPose = "relis", .suite = true},
       {{0ms, boite("relis")}, {40ms, boite("relisrelis")}, {300ms, vide, true}},
       "CV",
       {L::Sort::soumis}},
      {"un shell", va, {{0ms, sansBoite(Etat::inconnu)}}, "", {L::Sort::refuse, L::Raison::sansBoite}},
      {"mort", va, {{0ms, vide, false, true}}, "", {L::Sort::refuse, L::Raison::mort}},
      {"jamais montré", va, {{0ms, vide}}, "C", {L::Sort::inconnu, L::Raison::pasMontre}},
      {"un dialogue après le collage",
       va,
       {{0ms, vide}, {20ms, dialogue}},
       "C",
       {L::Sort::inconnu, L::Raison::dialogue}},
      {"mêlé", va, {{0ms, vide}, {40ms, boite("non relis le patch")}}, "C", {L::Sort::pose, L::Raison::mele}},
      {"mêlé à un grand collage",
       va,
       {{0ms, vide}, {40ms, boite("je tape[Pasted]", Etat::repos, 1)}},
       "C",
       {L::Sort::pose, L::Raison::mele}},
      {"un dialogue juste avant Entrée",
       va,
       {{0ms, vide}, {40ms, pleine}},
       "CV",
       {L::Sort::pose, L::Raison::dialogue},
       Sinon{Panne::condition}},
      {"muet à Entrée",
       va,
       {{0ms, vide}, {40ms, pleine}},
       "CV",
       {L::Sort::inconnu, L::Raison::panne, Panne::muet},
       Sinon{Panne::muet}},
      {"tombé après Entrée",
       va,
       {{0ms, vide}, {40ms, pleine}, {200ms, vide, false, true}},
       "CV",
       {L::Sort::inconnu, L::Raison::mort}},
      {"un programme qu'on ne sait pas lire",
       {.texte = "va", .lisible = false},
       {{0ms, sansBoite(Etat::inconnu)}},
       "CV",
       {L::Sort::inconnu, L::Raison::pasMontre}},
  };
  for (const Cas& c : cas) {
    const auto [gestes, livraison] = jouer(c);
    EXPECT_EQ(gestes, c.gestes) << c.nom;
    EXPECT_EQ(std::string(nom(livraison.sort)) + " " + std::string(description(livraison)),
              std::string(nom(c.attendue.sort)) + " " + std::string(description(c.attendue)))
        << c.nom;
  }
}

TEST(Saisie, CeQuiFutPosePuisEffaceNEstPlusAttendu) {
  Saisie saisie({.texte = "relis", .dejaPose = "abc", .suite = true}, {}, Instant{});
  const Saisie::Regard vide{.lecture = boite("")};
  EXPECT_TRUE(std::holds_alternative<Saisie::Regarder>(saisie.regard(vide, Instant{})));
  EXPECT_TRUE(std::holds_alternative<Saisie::Coller>(saisie.regard(vide, Instant{} + 1s)));
  EXPECT_EQ(saisie.tout(), "relis");
}

}  // namespace
}  // namespace tarnavelle::Plateau
