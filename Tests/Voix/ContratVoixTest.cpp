#include "Voix/ContratVoix.hpp"

#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "Porte/PorteDistante.hpp"
#include "Voix/AnnonceVoix.hpp"

namespace tarnavelle {
namespace {

/// Each piece is looked for after the one before it.
void contientDansLOrdre(std::string_view texte, const std::vector<std::string_view>& morceaux) {
  std::size_t i = 0;
  for (const auto morceau : morceaux) {
    i = texte.find(morceau, i);
    ASSERT_NE(i, texte.npos) << morceau;
    i += morceau.size();
  }
}

TEST(ContratVoix, InstructionsDansLOrdre) {
  const MondeVoix monde{.recit = "RÉCIT.", .nomsAgents = {"Merlin", "Milan", "Merlin"}};
  const auto texte = ContratVoix::instructionsTarnavelleV2(monde, {.bloc = "REGISTRE."}, true);
  contientDansLOrdre(
      texte,
      {"Tu ES la voix de Tarnavelle — le cockpit d'agents de l'opérateur.",
       "en UNE phrase courte. VOICI LE PLATEAU, MAINTENANT. RÉCIT. AGIS D'ABORD, PARLE ENSUITE. Tu n'annonces "
       "JAMAIS ce que tu vas faire : tu appelles l'outil en silence, puis tu dis en une phrase ce qui s'est "
       "passé",
       "TU RELAIES MOT POUR MOT.", "INVENTE", "lire",
       "« Merlin démarre. » · « Voilà ton navigateur. » · « On est sur la scène API. » · « Il attend ta "
       "réponse. »",
       "VA SUR X", "aller_scene", "ouvrir_web", "PLUSIEURS DEMANDES", "autant d'appels", "se reprend",
       "AVANT d'appeler",
       " Les agents ouverts s'appellent Merlin, Milan. Nomme-les TOUJOURS par ces noms-là, JAMAIS par le nom "
       "du "
       "CLI (« claude », « codex », « grok ») ni par un numéro. Quand l'opérateur ne nomme personne, l'outil "
       "vise l'agent REGARDÉ",
       "sinon tu AGIS. SI ON NE TE PARLE PAS, TU TE TAIS.", "le silence. QUAND TU REÇOIS UNE NOTE",
       "deux fois la même formulation. INTERDIT de dire",
       "énonce seulement le résultat.\n\nREGISTRE. CE REGISTRE NE VAUT QUE POUR CE QUE TU DIS À L'OPÉRATEUR."});
  EXPECT_TRUE(texte.ends_with("et tu appelles tes outils comme d'habitude."));
}

// What a service has read of a session's instructions serves the next session, whatever the board.
TEST(ContratVoix, PrefixeStable) {
  const MondeVoix mondes[] = {{},
                              {.recit = "", .nomsAgents = {"Merlin"}},
                              {.recit = "SCÈNE « API ».", .nomsAgents = {"Merlin", "Milan"}},
                              {.recit = "\n", .nomsAgents = {}}};
  const TonVoix tons[] = {{}, {.id = "autre"}, {.id = "corsaire", .bloc = "Parle en corsaire."}};
  std::set<std::string> prefixes;
  for (const TonVoix& ton : tons)
    for (const bool micOuvert : {false, true}) {
      const auto prefixe = ContratVoix::prefixeStableTarnavelle(ton, micOuvert);
      prefixes.insert(prefixe);
      EXPECT_EQ(prefixe.find("VOICI LE PLATEAU"), prefixe.npos);
      contientDansLOrdre(prefixe,
                         {"Les agents ouverts portent des noms PROPRES (Merlin, Milan, Harfang…)",
                          micOuvert ? ContratVoix::regleMicroOuvert() : ContratVoix::reglePressionTouche(),
                          AnnonceVoix::contratAnnonces});
      for (const MondeVoix& monde : mondes) {
        const auto contrat = ContratVoix::tarnavelleConversation(monde, ton, micOuvert);
        const auto suite = monde.recit.empty() ? "" : "\n\nVOICI LE PLATEAU, MAINTENANT. " + monde.recit;
        EXPECT_EQ(contrat.instructions, prefixe + suite);
        EXPECT_EQ(contrat.outils, ContratVoix::outilsTarnavelleV2());
      }
    }
  EXPECT_EQ(prefixes.size(), 4u);  // the register and the microphone, nothing else of the tone
  EXPECT_TRUE(prefixes.contains(ContratVoix::prefixeStableTarnavelle()));
  EXPECT_TRUE(ContratVoix::prefixeStableTarnavelle().ends_with("énonce seulement le résultat."));
}

/// "nom(obligatoire!, facultatif, booleen?)"
std::string signature(const OutilVoix& outil) {
  std::string texte = outil.nom + "(";
  for (const ParamVoix& p : outil.parametres)
    texte += (&p == outil.parametres.data() ? "" : ", ") + p.nom +
             (p.genre == ParamVoix::Genre::booleen ? "?" : "") + (p.requis ? "!" : "");
  return texte + ")";
}

struct Liste {
  const std::vector<OutilVoix>& outils;
  std::vector<std::string> signatures;
};

const std::vector<Liste>& listes() {
  static const std::vector<Liste> toutes = {
      {ContratVoix::outilsTarnavelleV2(),
       {"dicter(texte!, agent, valider?)", "focus(cible!)", "aller_scene(nom!)",
        "ouvrir_agent(cli, dossier, hote)", "ouvrir_web(cible!, externe?)", "lire(agent, depuis_prompt?)",
        "resumer(agent)", "etat()", "handle_command(text!)", "confirm(verdict?!)"}},
      {ContratVoix::outilsPerchoir(),
       {"lire(agent)", "envoyer_touche(touche!, agent)", "focus(cible!)", "reconnecter(agent)",
        "retirer(agent!)"}},
      {ContratVoix::outilsPlateauMac(),
       {"focus(cible!)", "aller_scene(nom!)", "ouvrir_agent(cli, dossier, hote)",
        "ouvrir_web(cible!, externe?)", "etat()"}}};
  return toutes;
}

// A tool that a text names as its neighbour is offered beside it.
TEST(ContratVoix, OutilsEtVoisins) {
  const std::regex nomCompose("[a-z]+(_[a-z]+)+");
  for (const Liste& liste : listes()) {
    std::vector<std::string> signatures;
    std::set<std::string> noms;
    for (const OutilVoix& outil : liste.outils) {
      signatures.push_back(signature(outil));
      EXPECT_TRUE(noms.insert(outil.nom).second) << outil.nom;
    }
    EXPECT_EQ(signatures, liste.signatures);
    for (const OutilVoix& outil : liste.outils) {
      const auto& texte = outil.description;
      for (std::sregex_iterator i(texte.begin(), texte.end(), nomCompose), fin; i != fin; ++i)
        EXPECT_TRUE(noms.contains(i->str())) << outil.nom << " nomme " << i->str();
    }
    EXPECT_EQ((ContratVoix{.instructions = "", .outils = liste.outils}.outilsJSON().size()), noms.size());
  }
}

TEST(ContratVoix, LePlateauDuMacAccepteSesOutils) {
  for (const OutilVoix& outil : ContratVoix::outilsPlateauMac())
    EXPECT_TRUE(PorteDistante::corpsAction(CommandeControle::decoder(outil.nom, "{}"))) << outil.nom;
}

TEST(ContratVoix, Typographie) {
  std::vector<std::string> textes = {ContratVoix::prefixeStableTarnavelle({.bloc = "B."}, false),
                                     ContratVoix::prefixeStableTarnavelle({.bloc = "B."}, true)};
  for (const Liste& liste : listes())
    for (const OutilVoix& outil : liste.outils) {
      textes.push_back(outil.description);
      for (const ParamVoix& p : outil.parametres) textes.push_back(p.description);
    }
  const std::regex fautes(R"(  |\.\.\.|"|«[^ ]|[^ ]»|[^ ][:;?!]|« [^»]*«|»[^«]*»| [,.)]| $)");
  std::smatch faute;
  for (const auto& texte : textes)
    EXPECT_FALSE(std::regex_search(texte, faute, fautes)) << "« " << faute.str() << " » dans " << texte;
}

}  // namespace
}  // namespace tarnavelle
