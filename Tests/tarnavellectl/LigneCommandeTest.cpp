#include "LigneCommande.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <vector>

#include "Aide.hpp"
#include "Chemins.hpp"
#include "Client.hpp"
#include "DirePorte.hpp"
#include "Porte/CommandeControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Proche.hpp"
#include "Socle/Colonnes.hpp"

namespace tarnavelle {
namespace {

using Mots = std::vector<std::string>;

/// What becomes of a command line: the body to post and what is left aside, or why it is refused.
std::string lire(const Mots& mots) {
  const auto lue = LigneCommande::lire(mots);
  if (!lue) return lue.raison().message;
  const LigneCommande& ligne = *lue;
  std::string texte = ligne.aide ? "aide " + ligne.mot : PorteMCP::ligne(ligne.charge);
  for (const auto& mot : ligne.laisses) texte += " | " + mot;
  return (ligne.json ? "json " : "") + texte;
}

TEST(LigneCommande, Decoupee) {
  const std::pair<Mots, const char*> cas[] = {
      {{"lire_terminal", "--depuis-prompt", "Merlin"},
       R"({"action":"lire_terminal","agent":"Merlin","depuis_prompt":true})"},
      {{"wait", "M", "--jusqu_a=fini", "--timeout-s", "120"},
       R"({"action":"attendre","agent":"M","jusqu_a":"fini","timeout_s":"120"})"},
      {{"rappelle", "-3", "--limite", "-5"}, R"({"action":"rappelle","limite":"-5","requete":"-3"})"},
      {{"nommage", "--noms="}, R"({"action":"nommage","noms":""})"},
      {{"dicter", "--texte=--json=oui", "--agent", "="},
       R"({"action":"dicter","agent":"=","texte":"--json=oui"})"},
      {{"dicter", "--", "--json", "--"}, R"({"action":"dicter","agent":"--","texte":"--json"})"},
      {{"dicter", "-", "--agent", "A", "--agent=B"}, R"({"action":"dicter","agent":"B","texte":"-"})"},
      {{"souffler", "a", "b", "c", "d"}, R"({"action":"souffler","agent":"a","texte":"b"} | c | d)"},
      // A boolean's value is what the door would read in it.
      {{"dicter", "x", "--valider=Non"}, R"({"action":"dicter","texte":"x","valider":false})"},
      {{"dicter", "x", "--valider=0", "--valider"}, R"({"action":"dicter","texte":"x","valider":true})"},
      {{"dicter", "x", "--valider", "--valider=false"}, R"({"action":"dicter","texte":"x","valider":false})"},
      {{"dicter", "--valider", "--", "oui"}, R"({"action":"dicter","texte":"oui","valider":true})"},
      {{"dicter", "x", "--valider", "false"},
       "--valider ne prend pas de mot pour valeur. Écrivez --valider=false, ou placez le mot « false » avant "
       "l'option."},
      {{"dicter", "x", "--valider=peut-être"}, "--valider vaut true ou false, pas « peut-être »."},
      // The door answers for a verb that is unknown.
      {{"Ouvre-Tout", "x", "--y", "--json"}, R"(json {"action":"ouvre_tout"} | x | --y)"},
      {{"focus"}, "Il manque « cible ». Le nom de l'agent, du membre du crew ou de la fenêtre."},
      {{"lire", "--agnet=x"}, "Option inconnue : « --agnet ». Vouliez-vous dire --agent ?"},
      {{"--agent", "M", "lire"}, "Option inconnue avant le verbe : « --agent »."},
      {{"-version"}, "Option inconnue avant le verbe : « -version ». Vouliez-vous dire --version ?"},
      {{"lire", "-agent=M"}, "Option inconnue : « -agent=M ». Vouliez-vous dire --agent ?"},
      {{"lire", "--agent"}, "Il manque la valeur de --agent."},
      {{"lire", "--agent", "--json"},
       "Il manque la valeur de --agent. Si elle commence par deux tirets, écrivez --agent=…"},
      {{"etat", "--json=1"}, "--json ne prend pas de valeur."},
      {{}, "Il manque le verbe."},
      {{" ", "x"}, "Le verbe est vide."},
      {{"lire", "\xFF"}, "Ce mot n'est pas de l'UTF-8 valide : « \\xff »."},
      {{"lire", "--agent", "\xC3"}, "La valeur de --agent n'est pas de l'UTF-8 valide."},
      // What a board of terminals answers, as a verb's body.
      {{"journal", "5"}, R"({"action":"journal","nombre":"5"})"},
      {{"relais", "A", "fini", "B", "va"},
       R"({"action":"relais","agent":"A","destinataire":"B","evenement":"fini","texte":"va"})"},
      {{"eteindre", "--oui"}, R"({"action":"eteindre","oui":true})"},
      {{"etat", "A", "--pourquoi"}, R"({"action":"pourquoi","agent":"A"})"},
      {{"etat", "--pourquoi=oui"}, R"({"action":"pourquoi"})"},
      {{"etat", "--pourquoi", "--pourquoi=false"}, R"({"action":"etat"})"},
      {{"etat", "json"}, R"({"action":"etat","format":"json"})"},
      {{"etat", "--agent", "A"}, R"({"action":"etat"} | --agent)"},
      // Help comes before any reproach.
      {{"focus", "--zzz", "--help"}, "aide focus"},
      {{"dicter", "--", "-h"}, R"({"action":"dicter","texte":"-h"})"},
  };
  for (const auto& [mots, attendu] : cas) EXPECT_EQ(lire(mots), attendu) << testing::PrintToString(mots);
}

TEST(LigneCommande, CommandesDuClient) {
  EXPECT_NE(commande("MCP_CONFIG").locale, nullptr);
  // No command may hide a verb of the door.
  for (const CommandeLocale& c : commandesLocales()) {
    auto noms = c.alias;
    noms.push_back(c.outil.nom);
    for (const auto nom : noms)
      EXPECT_EQ(CommandeControle::outil(CommandeControle::canonique(nom)), nullptr) << nom;
  }
}

TEST(Aide, TientSurUnTerminal) {
  const Page page = Aide::generale(80);
  for (const Ligne& ligne : page) EXPECT_LE(Colonnes::largeur(ligne.texte), 80u) << ligne.texte;
  for (const std::string& nom : nomsDesCommandes()) {
    const std::string bref(enBref(*commande(nom).outil));
    EXPECT_TRUE(std::ranges::any_of(page,
                                    [&](const Ligne& ligne) {
                                      return ligne.texte.starts_with("  " + nom + " ") &&
                                             ligne.texte.ends_with(" " + bref);
                                    }))
        << nom << " must take one line";
    EXPECT_TRUE(bref.ends_with('.') || bref.ends_with("…")) << bref;
    EXPECT_TRUE(!commande(nom).locale || commande(nom).outil->description.starts_with(bref)) << nom;
  }
  for (const auto& [nom, usage] : {std::pair("dicter", "dicter TEXTE [AGENT] [--valider=false]"),
                                   {"capture", "capture [CIBLE] [CHEMIN] [--inline]"}})
    EXPECT_EQ(Aide::usage(commande(nom).outil), std::string("Usage : tarnavellectl ") + usage);
}

TEST(Chemins, AbsolusSIlsSontEcritsEnChemins) {
  const std::tuple<const char*, bool, const char*> cas[] = {{"./p.html", true, "/c/p.html"},
                                                            {"../d/", true, "/d/"},
                                                            {"..", true, "/"},
                                                            {"~/x", true, "/h/x"},
                                                            {"~", true, "/h/"},
                                                            {"/a/./b", true, "/a/./b"},
                                                            {"p/q", false, "/c/p/q"},
                                                            {"~x", false, "/c/~x"},
                                                            {"...", false, "/c/..."},
                                                            {"http://h", false, "/c/http:/h"}};
  for (const auto& [tape, ecrit, absolu] : cas) {
    EXPECT_EQ(Chemins::ecritEnChemin(tape), ecrit) << tape;
    EXPECT_EQ(Chemins::absolu(tape, "/c", "/h"), absolu) << tape;
  }
}

TEST(DirePorte, SansSecretEtSelonLaRaison) {
  const RecherchePorte porte{.porte = {{"http://moi:passe@h:5/le-jeton/action?j=le-jeton", "le-jeton"}},
                             .variable = "x",
                             .endpoint = {}};
  EXPECT_EQ(DirePorte::adresse(*porte.porte), "http://h:5/…/action");
  const RecherchePorte sans{.porte = {}, .variable = "moi:passe@le-jeton", .endpoint = {}};
  EXPECT_EQ(DirePorte::variable(sans, {{"TARNAVELLE_CONTROL_TOKEN", "le-jeton"}}),
            "TARNAVELLE_CONTROL_URL n'est pas une adresse complète, « … » : il faut http://HÔTE:PORT");
  const std::pair<EchecHTTP, const char*> cas[] = {
      {{ErreurReseau::delaiDepasse}, "pas de réponse entière en 9 s. Le verbe a pu être exécuté."},
      {{ErreurReseau::delaiDepasse, false}, "le serveur ne répond pas. Rien n'a été envoyé."},
      {{EchecHTTP::Faute::reponse},
       "ce qui est venu n'est pas une réponse HTTP, ou dépasse 256 Mio. Le verbe a pu être exécuté."}};
  for (const auto& [echec, dit] : cas)
    EXPECT_EQ(DirePorte::sansReponse(echec, std::chrono::seconds(9), porte, {})[0],
              std::string("La porte n'a pas répondu : ") + dit);
}

TEST(Client, Patience) {
  const std::pair<const char*, int> cas[] = {
      {R"({"action":"attendre"})", 70},
      {R"({"action":"attendre","timeout_s":"99999999999999999"})", 310},
      {R"({"action":"attendre","timeout_s":"-1"})", 70},
      {R"({"action":"Wait","timeout_s":200})", 210},
      {R"({"action":"commande","timeout_s":"5"})", 90},
  };
  for (const auto& [corps, secondes] : cas)
    EXPECT_EQ(Client::patience(Json::parse(corps)), std::chrono::seconds(secondes)) << corps;
}

TEST(Proche, NomVoulu) {
  for (const auto& [mot, voulu] :
       {std::pair("trv_close", "fermer"), {"Trv-Screnshot", "screenshot"}, {"trv_", ""}})
    EXPECT_EQ(nomVoulu(mot).value_or(""), voulu) << mot;
  const std::vector<std::string> noms = {"etat",    "dicter", "lire",        "lire_terminal",
                                         "retiens", "fermer", "fermer_tout", "ls"};
  const std::pair<std::string, std::string> cas[] = {
      {"teta", "etat"}, {"dictre", "dicter"}, {"fermertout", "fermer_tout"},   {"ret", "retiens"}, {"l", ""},
      {"sl", "ls"},     {"bonjour", ""},      {std::string(100'000, 'e'), ""},
  };
  for (const auto& [tape, voulu] : cas)
    EXPECT_EQ(nomProche(tape, noms).value_or(""), voulu) << tape.substr(0, 40);
}

}  // namespace
}  // namespace tarnavelle
