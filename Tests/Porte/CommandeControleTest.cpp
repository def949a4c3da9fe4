#include "Porte/CommandeControle.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace tarnavelle {
namespace {

using C = CommandeControle;

TEST(CommandeControle, NomCanonique) {
  struct {
    const char* action;
    const char* attendu;
  } const cas[] = {
      {"  Spawn-Agent \n", "pondre_agent"},
      {"CLOSE", "fermer"},
      {"organise", "ranger"},
      {"organize", "ranger"},
      {"tidy", "ranger"},
      {"prompt", "souffler"},
      {"type", "dicter"},
      {"Window-Screenshot", "capture"},
      {"focus", "focus"},
      {"Aller-Scene", "aller_scene"},
      {"\u00A0\u2028etat\u0085\t", "etat"},
      {"inconnu", "inconnu"},
      {"trv_etat", "trv_etat"},
      {"ÉTAT", "état"},
      {"aller scene", "aller scene"},
      {"_etat-", "_etat_"},
      {" \n", ""},
      {"", ""},
  };
  for (const auto& c : cas) EXPECT_EQ(C::canonique(c.action), c.attendu) << "«" << c.action << "»";
}

TEST(CommandeControle, Decodage) {
  struct {
    const char* action;
    const char* arguments;
    CommandeControle attendue;
  } const cas[] = {
      {"State", "{}", {C::etat{}}},
      {"etat", R"({"format":"json"})", {C::etat{}}},
      {"taches", R"({"agent":"Merlin"})", {C::taches{}}},
      {"focus", R"({"cible":" Merlin "})", {C::focus{.cible = " Merlin "}}},
      {"focus", R"({"target":"Merlin"})", {C::focus{}}},
      {"focus", R"({"cible":12})", {C::focus{}}},

      {"close_node", R"({"target":"Merlin"})", {C::fermer{.cible = "Merlin"}}},
      {"fermer", R"({"target":"Merlin","cible":"Milan"})", {C::fermer{.cible = "Milan"}}},
      {"fermer", R"({"target":"Merlin","cible":""})", {C::fermer{.cible = "Merlin"}}},
      {"fermer_tout",
       R"({"sauf":"Merlin; Milan","except":["Harfang"]})",
       {C::fermerTout{.sauf = "Merlin, Milan, Harfang"}}},
      {"fermer_tout", R"({"except":"Harfang"})", {C::fermerTout{.sauf = "Harfang"}}},
      {"close-all", R"({"sauf":" ;, "})", {C::fermerTout{.sauf = ""}}},

      {"ranger", R"({"plan":"scene","cible":"Merlin"})", {C::ranger{.plan = "scene", .vedette = "Merlin"}}},
      {"tidy", R"({"vedette":"Milan","cible":"Merlin"})", {C::ranger{.plan = "", .vedette = "Milan"}}},
      {"retiens", R"({"texte":"port 5173"})", {C::retiens{.texte = "port 5173", .portee = "canvas"}}},
      {"retiens", R"({"texte":"x","portee":"global"})", {C::retiens{.texte = "x", .portee = "global"}}},
      {"rappelle", R"({"limite":" 7 "})", {C::rappelle{.requete = "", .limite = 7}}},
      {"rappelle", R"({"limite":"sept"})", {C::rappelle{.requete = "", .limite = 5}}},
      {"rappelle", R"({"limite":7.9})", {C::rappelle{.requete = "", .limite = 7}}},

      {"dicter",
       R"({"texte":"lance","agent":"Merlin","valider":"non"})",
       {C::dicter{.agent = "Merlin", .texte = "lance", .valider = false}}},
      {"dicter", R"({"valider":"bof"})", {C::dicter{.agent = "", .texte = "", .valider = true}}},
      {"ouvrir_agent",
       R"({"hote":"h","cli":"c","dossier":"d"})",
       {C::ouvrirAgent{.cli = "c", .dossier = "d", .hote = "h"}}},
      {"ouvrir_web", R"({"cible":"u","externe":1})", {C::ouvrirWeb{.cible = "u", .externe = true}}},
      {"pondre_agent",
       R"({"nom":"n","verify":"v","prompt":"p","cli":"c"})",
       {C::pondreAgent{.cli = "c", .prompt = "p", .verify = "v", .nom = "n", .nombre = 1}}},
      {"pondre_agent", R"({"nombre":"3"})", {C::pondreAgent{{}, {}, {}, {}, 3}}},
      {"souffler", R"({"texte":"t","agent":"a"})", {C::souffler{.agent = "a", .texte = "t"}}},
      {"lire-terminal",
       R"({"agent":"a","depuis_prompt":"OUI"})",
       {C::lireTerminal{.agent = "a", .depuisPrompt = true}}},
      {"lire_terminal", R"({"depuis-prompt":true})", {C::lireTerminal{}}},
      {"shell", R"({"cible":"n","commande":"ls"})", {C::shell{.commande = "ls", .cible = "n"}}},
      {"capture",
       R"({"inline":true,"chemin":"/c","cible":"n"})",
       {C::capture{.cible = "n", .chemin = "/c", .inline_ = true}}},
      {"capture_web", R"({"chemin":"/c"})", {C::captureWeb{.chemin = "/c", .inline_ = false}}},
      {"diffuser", R"({"texte":"t","scene_seulement":"yes"})", {C::diffuser{"t", true}}},
      {"fini", R"({"note":"n","agent":"a"})", {C::fini{.agent = "a", .note = "n"}}},
      {"bloque", R"({"raison":"r","agent":"a"})", {C::bloque{.agent = "a", .raison = "r"}}},
      {"nommer_zone", R"({"cible":"c","nom":"n"})", {C::nommerZone{.nom = "n", .cible = "c"}}},
      {"script", R"({"dossier":"d","genre":"test"})", {C::script{.genre = "test", .dossier = "d"}}},
      {"ouvrir_chat", R"({"texte":"t","hote":"h"})", {C::ouvrirChat{.hote = "h", .texte = "t"}}},
      {"message_chat", R"({"cible":"h","texte":"t"})", {C::messageChat{.texte = "t", .cible = "h"}}},
      {"attendre", R"({"agent":"a"})", {C::attendre{"a", {}, {}, 0}}},
      {"wait",
       R"({"timeout_s":900,"motif":"m","jusqu_a":"motif","agent":"a"})",
       {C::attendre{.agent = "a", .jusquA = "motif", .motif = "m", .timeoutS = 900}}},
      {"send_keys", R"({"touches":"esc","agent":"a"})", {C::envoyerTouches{.agent = "a", .touches = "esc"}}},

      {"nommage", R"({"noms":["Mal","Zoe"]})", {C::nommage{{"Mal", "Zoe"}}}},
      {"nommage", R"({"noms":"[\"Mal\",\"Zoe\"]"})", {C::nommage{{"[\"Mal\"", "\"Zoe\"]"}}}},
      {"nommage", R"({"noms":"","call_signs":"Mal,Zoe"})", {C::nommage{{"Mal", "Zoe"}}}},
      {"nommage", R"({"noms":"Mal","call_signs":"Zoe"})", {C::nommage{{"Mal"}}}},
      {"set-naming", "{}", {C::nommage{}}},

      {" \t\n", "{}", {C::inconnue{""}}},
      {" Ouvre-Tout\n", R"({"cible":"x"})", {C::inconnue{"Ouvre-Tout"}}},
      {"trv_etat", "{}", {C::inconnue{"trv_etat"}}},
      {"inconnue", "{}", {C::inconnue{"inconnue"}}},
  };
  for (const auto& c : cas)
    EXPECT_TRUE(C::decoder(c.action, c.arguments) == c.attendue) << c.action << " " << c.arguments;
}

TEST(CommandeControle, ChargeDUneLigneDeCommande) {
  struct {
    const char* verbe;
    MotsCLI mots;
    const char* charge;
  } const cas[] = {
      {"souffler",
       {{"Merlin", "bonjour", "surplus"}, {}, {}},
       R"({"action":"souffler","agent":"Merlin","texte":"bonjour"})"},
      // A required text is served before an optional one that stands, or has its words, ahead of it.
      {"dicter", {{"lance"}, {}, {}}, R"({"action":"dicter","texte":"lance"})"},
      {"bloque", {{"r", "Merlin"}, {}, {}}, R"({"action":"bloque","raison":"r","agent":"Merlin"})"},
      {"souffler",
       {{"bonjour"}, {{"agent", "A"}}, {}},
       R"({"action":"souffler","agent":"A","texte":"bonjour"})"},
      {" Lire-Terminal",
       {{"Merlin"}, {}, {"depuis-prompt"}},
       R"({"action":"lire_terminal","agent":"Merlin","depuis_prompt":true})"},
      {"diffuser",
       {{"t"}, {}, {"scene_seulement"}},
       R"({"action":"diffuser","texte":"t","scene_seulement":true})"},
      {"type", {{}, {{"valider", "FALSE"}}, {"valider"}}, R"({"action":"dicter","valider":false})"},
      {"type", {{}, {{"valider", "non"}}, {}}, R"({"action":"dicter","valider":true})"},
      {"wait",
       {{"M"}, {{"timeout_s", "-3"}, {"timeout-s", "9"}, {"jusqu-a", ""}}, {}},
       R"({"action":"attendre","agent":"M","jusqu_a":"","timeout_s":"-3"})"},
      {"capture", {{}, {{"TIMEOUT", "1"}}, {"cible", "inconnu"}}, R"({"action":"capture"})"},
      {"taches", {{"a"}, {}, {}}, R"({"action":"taches"})"},
      {"Ouvre-Tout", {{"a"}, {{"b", "c"}}, {"d"}}, R"({"action":"ouvre_tout"})"},
  };
  for (const auto& c : cas) EXPECT_EQ(C::chargeGenerique(c.verbe, c.mots), Json::parse(c.charge)) << c.verbe;
}

TEST(CommandeControle, DrapeauxDUnVerbe) {
  using Noms = std::set<std::string, std::less<>>;
  const std::pair<const char*, Noms> cas[] = {{"capture", {"inline"}},
                                              {"Read-Terminal", {"depuis_prompt", "depuis-prompt"}},
                                              {"etat", {}},
                                              {"ouvre_tout", {}}};
  for (const auto& [verbe, noms] : cas) EXPECT_EQ(C::drapeauxBooleens(verbe), noms) << verbe;
}

// Whatever a model or the network sends as arguments, every field takes its default.
TEST(CommandeControle, ArgumentsIllisibles) {
  const std::string profond(LectureJSON::profondeurMax + 1, '[');
  const std::string refermes(LectureJSON::profondeurMax + 1, ']');
  const std::vector<std::string> textes = {
      "",
      "ok",
      "null",
      "[\"cible\"]",
      "\"cible\"",
      R"({"cible":"x")",
      R"({"cible":"x"} x)",
      R"({"cible":"x",})",
      R"({'cible':'x'})",
      R"({"cible":"x","nombre":1e400})",
      R"({"cible":"\ud800"})",
      "{\"cible\":\"\xC3\"}",
      "\xEF\xBB\xBF{\"cible\":\"x\"}",
      R"({"cible":"x","a":)" + profond + refermes + "}",
      R"({"cible":)" + std::string(1'000'000, '['),
      R"({"cible":{"cible":"x"},"texte":["x"],"nombre":1e300,"timeout_s":-1e300,"valider":null,"sauf":3})",
  };
  for (const OutilVoix& outil : C::outilsPorte())
    for (const std::string& texte : textes)
      EXPECT_TRUE(C::decoder(outil.nom, texte) == C::decoder(outil.nom, "{}"))
          << outil.nom << " " << texte.substr(0, 80);
  EXPECT_TRUE(C::decoderObjet("lire", Json::array({"agent", "Merlin"})) == C{C::lire{}});
}

TEST(CommandeControle, LectureDUnEntier) {
  constexpr auto max = std::numeric_limits<std::int64_t>::max();
  constexpr auto min = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t defaut = 42;
  struct {
    const char* valeur;
    std::int64_t attendu;
  } const cas[] = {
      {"7", 7},
      {"-7.9", -7},
      {"0.99", 0},
      {"2e2", 200},
      {"9223372036854775807", max},
      {"-9223372036854775808", min},
      {"9223372036854775808", defaut},
      {"9.3e18", defaut},
      {"1e300", defaut},
      {"-1e300", defaut},
      {R"("+7")", 7},
      {R"("-7")", -7},
      {R"("007")", 7},
      {R"(" \t\u00a07\u2003")", 7},
      {R"("9223372036854775807")", max},
      {R"("-9223372036854775808")", min},
      {R"("9223372036854775808")", defaut},
      {R"("-9223372036854775809")", defaut},
      {R"("7\n")", defaut},
      {R"("+-7")", defaut},
      {R"("--7")", defaut},
      {R"("+")", defaut},
      {R"("")", defaut},
      {R"("7.0")", defaut},
      {R"("7 8")", defaut},
      {R"("0x10")", defaut},
      {R"("1e3")", defaut},
      {R"("٧")", defaut},
      {"true", defaut},
      {"null", defaut},
      {"[7]", defaut},
      {R"({"n":7})", defaut},
  };
  for (const auto& c : cas)
    EXPECT_EQ(C::entier("n", std::string(R"({"n":)") + c.valeur + "}", defaut), c.attendu) << c.valeur;
  EXPECT_EQ(C::entier("n", R"({"N":7})", defaut), defaut);
}

TEST(CommandeControle, LectureDUneListe) {
  struct {
    const char* valeur;
    std::vector<std::string> attendue;
  } const cas[] = {
      {R"("Mal, Zoe;Wash")", {"Mal", "Zoe", "Wash"}},
      {R"(["Mal","Zoe, Wash"])", {"Mal", "Zoe", "Wash"}},
      {R"("Mal\r\n\n Zoe\u00a0")", {"Mal", "Zoe"}},
      {R"("Grand Duc,,;\n Milan noir ")", {"Grand Duc", "Milan noir"}},
      {R"([1,"Mal",null,["Zoe"],{"a":"b"},true,"Wash"])", {"Mal", "Wash"}},
      {R"("[\"Mal\"]")", {"[\"Mal\"]"}},
      {R"(" ; , \n ")", {}},
      {R"("")", {}},
      {"[]", {}},
      {"7", {}},
      {R"({"a":"Mal"})", {}},
  };
  for (const auto& c : cas)
    EXPECT_EQ(C::listeTextes("noms", std::string(R"({"noms":)") + c.valeur + "}"), c.attendue) << c.valeur;
  EXPECT_EQ(C::listeTextes("noms", "Mal,Zoe"), std::vector<std::string>{});
}

TEST(CommandeControle, LectureDUnBooleen) {
  struct {
    const char* valeur;
    bool siFaux;  ///< what is read when the default is false
    bool siVrai;
  } const cas[] = {
      {"true", true, true},        {"false", false, false},      {"1", true, true},
      {"0.5", true, true},         {"-3", true, true},           {"1e300", true, true},
      {"0", false, false},         {"-0.0", false, false},       {R"(" Oui\t")", true, true},
      {R"("YES")", true, true},    {R"("1")", true, true},       {R"("\u00a0NON ")", false, false},
      {R"("no")", false, false},   {R"("False")", false, false}, {R"("0")", false, false},
      {R"("non\n")", false, true}, {R"("ouais")", false, true},  {R"("2")", false, true},
      {R"("")", false, true},      {"null", false, true},        {"[true]", false, true},
  };
  for (const auto& c : cas) {
    const auto arguments = std::string(R"({"b":)") + c.valeur + "}";
    EXPECT_EQ(C::booleen("b", arguments, false), c.siFaux) << c.valeur;
    EXPECT_EQ(C::booleen("b", arguments, true), c.siVrai) << c.valeur;
  }
  EXPECT_TRUE(C::booleen("b", "ok", true));
}

TEST(CommandeControle, LectureDUnTexte) {
  struct {
    const char* valeur;
    std::string attendu;
  } const cas[] = {
      {R"(" été\n")", " été\n"},
      {R"("a\u0000b")", std::string("a\0b", 3)},
      {"7", ""},
      {"true", ""},
      {"null", ""},
      {R"(["x"])", ""},
  };
  for (const auto& c : cas)
    EXPECT_EQ(C::texte("t", std::string(R"({"t":)") + c.valeur + "}"), c.attendu) << c.valeur;
}

}  // namespace
}  // namespace tarnavelle
