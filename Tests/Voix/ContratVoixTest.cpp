#include "Voix/ContratVoix.hpp"

#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>

#include "Porte/PorteDistante.hpp"

namespace tarnavelle {
namespace {

// The seams between the pieces, in order: a space or a blank line each, none missing, none doubled.
TEST(ContratVoix, InstructionsDansLOrdre) {
  const MondeVoix monde{.recit = "RÉCIT.", .nomsAgents = {"Merlin", "Milan", "Merlin"}};
  const auto texte = ContratVoix::instructionsTarnavelleV2(monde, {.bloc = "REGISTRE."}, true);
  std::size_t i = 0;
  for (const std::string_view morceau : {
           "Tu ES la voix de Tarnavelle",
           "courte. VOICI LE PLATEAU, MAINTENANT. RÉCIT. AGIS D'ABORD",
           "que ce soit. Les agents ouverts s'appellent Merlin, Milan. Nomme-les TOUJOURS",
           "par un numéro. Quand l'opérateur ne nomme personne",
           "sinon tu AGIS. SI ON NE TE PARLE PAS, TU TE TAIS.",
           "le silence. QUAND TU REÇOIS UNE NOTE",
           "la même formulation. INTERDIT de dire",
           "seulement le résultat.\n\nREGISTRE. CE REGISTRE NE VAUT QUE",
       }) {
    i = texte.find(morceau, i);
    ASSERT_NE(i, texte.npos) << morceau;
  }
}

// What a service has read of a session's instructions serves the next session, whatever the board.
TEST(ContratVoix, PrefixeStable) {
  std::set<std::string> prefixes = {ContratVoix::prefixeStableTarnavelle()};
  for (const TonVoix& ton : {TonVoix{.id = "autre"}, TonVoix{.id = "corsaire", .bloc = "Parle en corsaire."}})
    for (const bool micOuvert : {false, true}) {
      const auto prefixe = ContratVoix::prefixeStableTarnavelle(ton, micOuvert);
      prefixes.insert(prefixe);
      EXPECT_NE(prefixe.find("des noms PROPRES (Merlin, Milan, Harfang…) : nomme-les"), prefixe.npos);
      EXPECT_EQ(ContratVoix::instructionsConversation({"", {"Merlin"}}, ton, micOuvert), prefixe);
      EXPECT_EQ(ContratVoix::tarnavelleConversation({"SCÈNE.", {"Merlin"}}, ton, micOuvert),
                (ContratVoix{prefixe + "\n\nVOICI LE PLATEAU, MAINTENANT. SCÈNE.",
                             ContratVoix::outilsTarnavelleV2()}));
    }
  EXPECT_EQ(prefixes.size(), 4u);  // the register and the microphone, nothing else of the tone
}

// What a tool's texts tell the model agrees with what it is offered.
TEST(ContratVoix, LesTextesDesOutilsDisentVrai) {
  const std::regex nomCompose("[a-z]+(_[a-z]+)+"),
      facultatif("Vide = |[Pp]ar défaut (true|false)|\\(défaut\\)"), ouiOuNon("true|false|^$");
  for (const auto* outils :
       {&ContratVoix::outilsTarnavelleV2(), &ContratVoix::outilsPerchoir(), &ContratVoix::outilsPlateauMac()}) {
    std::set<std::string> noms;
    for (const OutilVoix& outil : *outils) EXPECT_TRUE(noms.insert(outil.nom).second) << outil.nom;
    for (const OutilVoix& outil : *outils) {
      const auto& texte = outil.description;
      for (std::sregex_iterator i(texte.begin(), texte.end(), nomCompose), fin; i != fin; ++i)
        EXPECT_TRUE(noms.contains(i->str())) << outil.nom << " nomme " << i->str();
      for (const ParamVoix& p : outil.parametres) {
        EXPECT_NE(p.requis, std::regex_search(p.description, facultatif)) << outil.nom << " " << p.nom;
        EXPECT_EQ(p.genre == ParamVoix::Genre::booleen, std::regex_search(p.description, ouiOuNon)) << p.nom;
      }
    }
  }
  for (const OutilVoix& outil : ContratVoix::outilsPlateauMac())
    EXPECT_TRUE(PorteDistante::corpsAction(CommandeControle::decoder(outil.nom, "{}"))) << outil.nom;
}

// A model that reads the same phrasing in two tools has to guess.
TEST(ContratVoix, UnExempleNAppartientQuAUnOutil) {
  const std::regex cite("« (.*?) »");
  for (const auto* outils : {&CommandeControle::outilsPorte(), &ContratVoix::outilsTarnavelleV2(),
                             &ContratVoix::outilsPerchoir(), &ContratVoix::outilsPlateauMac()}) {
    std::map<std::string, std::string> premier;
    for (const OutilVoix& outil : *outils) {
      std::string texte = outil.description;
      for (const ParamVoix& p : outil.parametres) texte += p.description;
      for (std::sregex_iterator i(texte.begin(), texte.end(), cite), fin; i != fin; ++i)
        EXPECT_EQ(premier.emplace(i->str(1), outil.nom).first->second, outil.nom) << i->str();
    }
  }
}

}  // namespace
}  // namespace tarnavelle
