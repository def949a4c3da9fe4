#include "Hermes/TourHermes.hpp"

#include <gtest/gtest.h>

#include "Hermes/Dire.hpp"
#include "Hermes/MondeFlux.hpp"

namespace tarnavelle {
namespace {

using essai::dire;
using essai::ligne;
using essai::MondeFlux;
using essai::Ouverture;

constexpr auto texte = R"(data: {"choices":[{"delta":{"content":"a"}}]})";
constexpr auto outil = R"(data: {"type":"tool.start","name":"n"})";
constexpr auto outilFini = R"(data: {"type":"tool.end","name":"n"})";
constexpr auto demande = R"(data: {"type":"approval.request","id":"i"})";
constexpr auto feuVert = R"(data: {"type":"approval.responded","id":"i","approved":true})";
constexpr auto feuRouge = R"(data: {"type":"approval.responded","id":"i","approved":false})";
constexpr auto erreur = R"(data: {"error":"e"})";
constexpr LectureFlux fin{LectureFlux::fin{}};
constexpr LectureFlux illisible{LectureFlux::illisible{}};
constexpr LectureFlux perdue{LectureFlux::perte{ErreurReseau::connexionPerdue}};

TEST(TourHermes, LivreLesEvenementsEtFinitUneFois) {
  const struct {
    Ouverture ouverture;
    std::string attendu;
  } cas[] = {
      {{200,
        {ligne(0, ": x"), ligne(0, texte), ligne(0, ""), ligne(0, "data: {}"), ligne(0, outil), ligne(0, texte),
         ligne(0, "data: [DONE]"), ligne(0, texte)}},
       "texte|a; outil|n|∅; texte|a; finie"},
      {{400}, "400, session refusée"},
      {{ErreurReseau::certificatPerime}, "la liaison chiffrée a échoué, rejouer"},
      {{ErreurReseau::annulee}, "arretee"},
      {{200, {ligne(0, texte), ligne(0, outil), {0, fin}}}, "texte|a; outil|n|∅; tronqué, annoncer"},
      {{200, {ligne(0, outilFini), {0, illisible}}}, "outilFini|n; tronqué, annoncer"},
      {{200, {ligne(0, demande), {0, fin}}}, "approbation|i|||∅|∅; tronqué, rejouer"},
      {{200, {ligne(0, feuRouge), {0, perdue}}}, "tranchee|i|non; la liaison réseau a été coupée, rejouer"},
      {{200, {ligne(0, feuVert), {0, perdue}}}, "tranchee|i|oui; la liaison réseau a été coupée, annoncer"},
      {{200, {ligne(0, erreur)}}, "erreur|e; le serveur n'a plus rien dit, rejouer"},
  };
  for (const auto& c : cas) {
    MondeFlux monde({c.ouverture});
    std::string vu;
    TourHermes tour(monde);
    const auto issue = tour.jouer({.base = "http://h/v1", .message = "m", .modele = "hermes", .cle = "k"},
                                  [&](const EvenementGateway& evenement) { vu += dire(evenement) + "; "; });
    EXPECT_EQ(vu + dire(issue), c.attendu);
    ASSERT_EQ(monde.requetes.size(), 1u);
    EXPECT_EQ(monde.requetes[0],
              RequeteGateway::chat({.base = "http://h/v1", .message = "m", .modele = "hermes", .cle = "k"}));
  }
}

TEST(TourHermes, UnFeuVertDonneIciCompteAussi) {
  MondeFlux monde({{200, {ligne(0, demande), {0, fin}}}});
  TourHermes tour(monde);
  EXPECT_EQ(dire(tour.jouer({.base = "http://h", .message = "m", .modele = "m"},
                            [&](const EvenementGateway&) { tour.donnerFeuVert(); })),
            "tronqué, annoncer");
}

}  // namespace
}  // namespace tarnavelle
