#include "Agents/CarnetDeVol.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "Agents/Interprete.hpp"
#include "Agents/Montrer.hpp"
#include "DossierTemporaire.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle {
namespace {

using namespace std::string_literals;
using E = EvenementVol;

std::string repeter(std::size_t fois, std::string_view motif) {
  std::string texte;
  while (fois-- > 0) texte += motif;
  return texte;
}

std::string enCitation(const std::string& texte) { return EcritureJSON::compacte(texte).value(); }

const std::string journalMilan = "$HOME/.tarnavelle/vol/Milan.jsonl";

TEST(CarnetDeVol, NomSur) {
  const struct {
    std::string nom;
    std::string sur;
  } cas[] = {
      {"Milan 2/é!", "Milan2é"},
      {"///", "session"},
      {"", "session"},
      {"tarnavelle-claude-2", "tarnavelle-claude-2"},
      {"a.b-c_d", "a.b-c_d"},
      {"../..", "...."},
      {"a'\"`$\\;#&|<>(){}*?[]~!\n\t\r\0 b"s, "ab"},
      // A letter keeps its accents, composed or not; a sign with an accent is no letter.
      {"é|e\u0301|\u0301|.\u0301|-\u0308", "ée\u0301"},
      {"日本語 한글 ١٢ Ⅷ ² ½ नमस्ते", "日本語한글١٢Ⅷ²½नमस्ते"},
      {"क्\u200Dष\u200D", "क्\u200Dष\u200D"},
      {"😀👨\u200D👩\u200D👧🇫🇷", "session"},
      {"a🏽1\uFE0F\u20E3", "a1\uFE0F\u20E3"},
      {"\u00A0\u3000\u2028\u200B€«»“’", "session"},
      {"a\xFF\xC3z\xED\xA0\x80", "az"},
      // Letters that take whatever follows them along
      {"\u0D4E\"\u0D4E'\u0D4E$\u0D4E`\u0D4E/\u0D4E\\\u0D4Eക", "\u0D4E\u0D4E\u0D4E\u0D4E\u0D4E\u0D4E\u0D4Eക"},
  };
  for (const auto& c : cas) {
    EXPECT_EQ(CarnetDeVol::nomSur(c.nom), c.sur) << testing::PrintToString(c.nom);
    EXPECT_EQ(CarnetDeVol::nomSur(c.sur), c.sur) << testing::PrintToString(c.sur);
  }
  EXPECT_EQ(CarnetDeVol::journalDistant("Mi lan"), ".tarnavelle/vol/Milan.jsonl");
  EXPECT_EQ(CarnetDeVol::reglagesDistant("Mi lan"), ".tarnavelle/vol/Milan.hooks.json");
}

TEST(CarnetDeVol, CommandeHook) {
  EXPECT_EQ(CarnetDeVol::commandeHook(journalMilan),
            R"(/bin/sh -c '{ tr -d "\n"; printf "\n"; } >> "$HOME/.tarnavelle/vol/Milan.jsonl" 2>/dev/null')");
  EXPECT_EQ(CarnetDeVol::commandeHook(R"($A\"`'b)"),
            R"(/bin/sh -c '{ tr -d "\n"; printf "\n"; } >> "$A\\\"\`'b" 2>/dev/null')");
}

// Every event takes exactly one line of the log, whatever the path is made of.
TEST(CarnetDeVol, LeHookAjouteUneLigneParEvenement) {
  const std::string nom = R"(a "b" `touch canari` c\d é😀)";
  const std::string evenements[] = {"{}",
                                    "{\n  \"a\" : 1\n}\n",
                                    "",
                                    "\n\n",
                                    "{\"é\":\"\r\"}",
                                    "100 % \\n $HOME 'x'",
                                    std::string(300'000, 'x') + "\n" + std::string(5, 'y')};
  for (const auto& shell : essai::interpretes()) {
    const DossierTemporaire maison;
    std::string attendu;
    for (const std::string& evenement : evenements) {
      const auto sortie =
          shell.executer("cd; " + CarnetDeVol::commandeHook("$HOME/" + nom),
                         {{"HOME", maison.chemin().string()}, {"PATH", ::getenv("PATH")}}, evenement);
      EXPECT_EQ(sortie.texte + sortie.erreurs, "") << shell;
      EXPECT_EQ(sortie.statut, 0) << shell;
      for (const char c : evenement)
        if (c != '\n') attendu += c;
      attendu += '\n';
    }
    EXPECT_EQ(lireFichier(maison.chemin() / nom, 1'000'000), attendu) << shell;
    EXPECT_FALSE(std::filesystem::exists(maison.chemin() / "canari")) << shell;
  }
}

TEST(CarnetDeVol, ReglagesEnJSON) {
  std::string attendu = "{\n  \"hooks\" : {";
  for (const char* evenement :
       {"Notification", "PreToolUse", "SessionEnd", "SessionStart", "Stop", "UserPromptSubmit"})
    attendu += (attendu.ends_with('{') ? "\n    \"" : ",\n    \"") + std::string(evenement) + R"(" : [
      {
        "hooks" : [
          {
            "command" : "/bin/sh -c '{ tr -d \"\\n\"; printf \"\\n\"; } >> \"$HOME/.tarnavelle/vol/Milan.jsonl\" 2>/dev/null'",
            "timeout" : 5,
            "type" : "command"
          }
        ]
      }
    ])";
  attendu += "\n  }\n}";
  EXPECT_EQ(CarnetDeVol::json(journalMilan), attendu);
  EXPECT_EQ(CarnetDeVol::Reglages::lire(attendu), CarnetDeVol::reglages(journalMilan));
  EXPECT_EQ(CarnetDeVol::json("a\xFF"), std::nullopt);
}

TEST(CarnetDeVol, ReglagesRelus) {
  using Reglages = CarnetDeVol::Reglages;
  const struct {
    std::string texte;
    Reglages reglages;
    std::string relu;
  } acceptes[] = {
      {R"({"hooks":{}})", {}, R"({"hooks":{}})"},
      {R"({"hooks":{"Stop":[]},"autre":1})", {{{"Stop", {}}}}, R"({"hooks":{"Stop":[]}})"},
      {R"({"hooks":{"Stop":[{"hooks":[],"matcher":"*"}],"A":[{"hooks":[{"type":"t","command":"c"}]}]}})",
       {{{"Stop", {{"*", {}}}}, {"A", {{{}, {{"t", "c", {}}}}}}}},
       R"({"hooks":{"A":[{"hooks":[{"command":"c","type":"t"}]}],"Stop":[{"hooks":[],"matcher":"*"}]}})"},
      {R"({"hooks":{"A":[{"matcher":null,"hooks":[{"type":"","command":"\/","timeout":-3},
           {"type":"t","command":"c","timeout":null}]}]}})",
       {{{"A", {{{}, {{"", "/", -3}, {"t", "c", {}}}}}}}},
       R"({"hooks":{"A":[{"hooks":[{"command":"/","timeout":-3,"type":""},{"command":"c","type":"t"}]}]}})"},
  };
  for (const auto& c : acceptes) {
    EXPECT_EQ(Reglages::lire(c.texte), c.reglages) << c.texte;
    EXPECT_EQ(EcritureJSON::compacte(c.reglages.json()), c.relu) << c.texte;
  }
  for (const char* refuse :
       {"", "[]", "{}", R"({"hooks":[]})", R"({"hooks":{"A":{}}})", R"({"hooks":{"A":[[]]}})",
        R"({"hooks":{"A":[{}]}})", R"({"hooks":{"A":[{"hooks":{}}]}})",
        R"({"hooks":{"A":[{"hooks":[],"matcher":1}]}})", R"({"hooks":{"A":[{"hooks":[{"type":"t"}]}]}})",
        R"({"hooks":{"A":[{"hooks":[{"command":"c"}]}]}})",
        R"({"hooks":{"A":[{"hooks":[{"type":1,"command":"c"}]}]}})",
        R"({"hooks":{"A":[{"hooks":[{"type":"t","command":"c","timeout":"5"}]}]}})",
        R"({"hooks":{"A":[{"hooks":[{"type":"t","command":"c","timeout":5.5}]}]}})",
        R"({"hooks":{"A":[{"hooks":[{"type":"t","command":"c","timeout":18446744073709551615}]}]}})"})
    EXPECT_EQ(Reglages::lire(refuse), std::nullopt) << refuse;
}

TEST(CarnetDeVol, CommandeLancement) {
  AgentCLI claude = AgentCLI::claude();
  claude.arguments = {"--un", "l'autre"};
  EXPECT_EQ(CarnetDeVol::commandeLancement(claude, "l'é 2", {"-p", "dis \"$x\""}),
            R"(tmux has-session -t 'l'\''é 2' 2>/dev/null || { mkdir -p "$HOME/.tarnavelle/vol" && )"
            R"(: > "$HOME/.tarnavelle/vol/lé2.jsonl" && cat > "$HOME/.tarnavelle/vol/lé2.hooks.json" )"
            "<<'TV_VOL_EOF'\n" +
                CarnetDeVol::json("$HOME/.tarnavelle/vol/lé2.jsonl").value() +
                "\nTV_VOL_EOF\n }; "
                R"(tmux new -A -s 'l'\''é 2' 'claude' '--un' 'l'\''autre' '-p' 'dis "$x"' '--settings' )"
                R"("$HOME/.tarnavelle/vol/lé2.hooks.json" ';' set -t 'l'\''é 2' mouse on)");
  EXPECT_EQ(CarnetDeVol::commandeLancement(AgentCLI::codex(), "tarnavelle-codex-2", {"-c", "a=\"b\""}),
            R"(tmux new -A -s 'tarnavelle-codex-2' 'codex' '-c' 'a="b"' ';' )"
            R"(set -t 'tarnavelle-codex-2' mouse on)");
  // tmux would end its command at the last ";" of a word, and run what a new session's name says in "#()".
  EXPECT_EQ(CarnetDeVol::commandeLancement(AgentCLI::grok(), "#(id);", {";", "a;b", "c\\;"}),
            R"(tmux new -A -s '##(id)\;' 'grok' '\;' 'a;b' 'c\\;' ';' set -t '#(id)\;' mouse on)");
}

TEST(CarnetDeVol, CommandeLecture) {
  EXPECT_EQ(CarnetDeVol::commandeLecture("Mi lan", 41),
            R"(sh -c 'f="$HOME/.tarnavelle/vol/Milan.jsonl"; { [ -f "$f" ] && tail -c +42 "$f" | )"
            R"(head -c 262144; } || :')");
  EXPECT_EQ(CarnetDeVol::impressionDepuis("$f", std::numeric_limits<std::int64_t>::max()),
            R"({ [ -f "$f" ] && tail -c +9223372036854775808 "$f" | head -c 262144; } || :)");

  const std::string sessions[] = {"tarnavelle-claude", "é 日本 'x' \"y\" $(touch canari) `z` \\ \n 😀"};
  const std::string contenu = "{\"a\":\"é\"}\n" + std::string(300'000, 'x') + "\n";
  const struct {
    std::int64_t curseur;
    std::string lu;
  } cas[] = {
      {0, contenu.substr(0, 262144)},
      {-1, contenu.substr(0, 262144)},
      {std::numeric_limits<std::int64_t>::min(), contenu.substr(0, 262144)},
      {7, contenu.substr(7, 262144)},  // within a character
      {11, contenu.substr(11, 262144)},
      {300'000, contenu.substr(300'000)},
      {static_cast<std::int64_t>(contenu.size()), ""},
      {std::int64_t{1} << 42, ""},
  };
  for (const auto& shell : essai::interpretes())
    for (const auto& session : sessions) {
      const DossierTemporaire maison;
      const Environnement ailleurs = {{"HOME", maison.chemin().string()}, {"PATH", ::getenv("PATH")}};
      const auto lire = [&](std::int64_t curseur) {
        const auto sortie = shell.executer("cd; " + CarnetDeVol::commandeLecture(session, curseur), ailleurs);
        EXPECT_EQ(sortie.statut, 0) << shell << " " << session << " " << sortie;
        EXPECT_EQ(sortie.erreurs, "") << shell << " " << session;
        return sortie.texte;
      };
      EXPECT_EQ(lire(0), "") << shell << " " << session;
      maison.ecrire(CarnetDeVol::journalDistant(session), contenu);
      for (const auto& c : cas) EXPECT_TRUE(lire(c.curseur) == c.lu) << shell << " " << session << c.curseur;
      EXPECT_FALSE(std::filesystem::exists(maison.chemin() / "canari")) << shell;
    }
}

const struct {
  std::string ligne;
  EvenementVol evenement;
  std::optional<std::string> transcript = {};
} lignes[] = {
    {R"({"hook_event_name":"SessionStart","source":"startup"})", {E::demarre{}}},
    {R"({"hook_event_name":"Stop"})", {E::fini{}}},
    {R"({"hook_event_name":"SessionEnd","transcript_path":"/a/b.jsonl"})", {E::fini{}}, "/a/b.jsonl"},
    {"\uFEFF{\"hook_event_name\":\"Stop\"} \r", {E::fini{}}},
    // Prompts
    {R"({"hook_event_name":"UserPromptSubmit","prompt":"\u2003\n dis « é\ud83d\ude00 »\nbis\r\n"})",
     {E::consigne{"dis « é😀 »\nbis"}}},
    {R"({"hook_event_name":"UserPromptSubmit","prompt":" \t\n\u00a0\u2029"})", {E::inconnu{}}},
    {R"({"hook_event_name":"UserPromptSubmit","transcript_path":""})", {E::inconnu{}}, ""},
    {R"({"hook_event_name":"UserPromptSubmit","prompt":["x"]})", {E::inconnu{}}},
    {R"({"hook_event_name":"UserPromptSubmit","prompt":" )" + repeter(500, "é") + " \"}",
     {E::consigne{repeter(500, "é")}}},
    {R"({"hook_event_name":"UserPromptSubmit","prompt":" )" + repeter(600, "e\u0301") + "\"}",
     {E::consigne{repeter(500, "e\u0301") + "…"}}},
    {R"({"hook_event_name":"UserPromptSubmit","prompt":")" + repeter(501, "👨\u200D👩\u200D👧") + "\"}",
     {E::consigne{repeter(500, "👨\u200D👩\u200D👧") + "…"}}},
    // Tools
    {R"({"hook_event_name":"PreToolUse","tool_name":"Read","tool_input":{"path":"/a/b/c.txt","command":"ls"}})",
     {E::outil{"Read", "ls"}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"Write","tool_input":{"file_path":"/x/y/z.md"}})",
     {E::outil{"Write", "z.md"}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"","tool_input":{"file_path":"","command":7,"pattern":" "}})",
     {E::outil{"", " "}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"LS","tool_input":{"path":"/a/é b//"}})",
     {E::outil{"LS", "é b"}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"LS","tool_input":{"path":"///"}})", {E::outil{"LS", "/"}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"W","tool_input":{"file_path":"E:\\p\\i.ts"}})",
     {E::outil{"W", "E:\\p\\i.ts"}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"F","tool_input":{"description":"d","query":"q","url":"u/v"}})",
     {E::outil{"F", "u/v"}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"F","tool_input":{"prompt":"p"}})", {E::outil{"F", ""}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":"F","tool_input":["ls"]})", {E::outil{"F", ""}}},
    {R"({"hook_event_name":"PreToolUse","tool_name":")" + repeter(600, "n") + R"(","tool_input":{"command":")" +
         repeter(501, "c") + "\"}}",
     {E::outil{repeter(600, "n"), repeter(500, "c") + "…"}}},
    {R"({"hook_event_name":"PreToolUse","tool_input":{"command":"ls"},"transcript_path":"/t"})",
     {E::inconnu{}},
     "/t"},
    {R"({"hook_event_name":"PreToolUse","tool_name":null})", {E::inconnu{}}},
    // Notifications, also when they say nothing
    {R"({"hook_event_name":"Notification","message":" Claude attend\n"})", {E::besoin{"Claude attend"}}},
    {R"({"hook_event_name":"Notification"})", {E::besoin{""}}},
    {R"({"hook_event_name":"Notification","message":" "})", {E::besoin{""}}},
    {R"({"hook_event_name":"Notification","message":")" + repeter(501, "m") + "\"}",
     {E::besoin{repeter(500, "m") + "…"}}},
    // Others
    {R"({"hook_event_name":"SubagentStop","transcript_path":"/s"})", {E::inconnu{}}, "/s"},
    {R"({"hook_event_name":"stop"})", {E::inconnu{}}},
    {R"({"hook_event_name":["Stop"],"transcript_path":"/a"})", {E::inconnu{}}},
    {R"({"transcript_path":"/a"})", {E::inconnu{}}},
    {R"({"hook_event_name":"Stop","transcript_path":{}})", {E::fini{}}},
    {"", {E::inconnu{}}},
    {"42", {E::inconnu{}}},
    {R"(["hook_event_name","Stop"])", {E::inconnu{}}},
    {R"({"hook_event_name":"Stop"}{"hook_event_name":"Stop"})", {E::inconnu{}}},
    {R"({"hook_event_name":"Stop","a":")"
     "\xC3\"}",
     {E::inconnu{}}},
    {"{\"hook_event_name\":\"Stop\",\"a\":\"\0\"}"s, {E::inconnu{}}},
    {R"({"hook_event_name":"Stop","a":)" + repeter(600, "[") + repeter(600, "]") + "}", {E::inconnu{}}},
};

TEST(CarnetDeVol, DecodeUneLigne) {
  for (const auto& c : lignes) {
    const auto decodee = CarnetDeVol::decoder(c.ligne);
    EXPECT_EQ(decodee.evenement, c.evenement) << c.ligne;
    EXPECT_EQ(decodee.transcript, c.transcript) << c.ligne;
  }
}

void ajouter(CarnetDeVol::Lecture& vue, CarnetDeVol::Lecture suite) {
  vue.evenements.insert(vue.evenements.end(), suite.evenements.begin(), suite.evenements.end());
  vue.consommes += suite.consommes;
  if (suite.transcript) vue.transcript = suite.transcript;
}

TEST(CarnetDeVol, LitParTranches) {
  std::string journal;
  CarnetDeVol::Lecture attendue;
  for (const auto& c : lignes) {
    if (c.ligne.size() > 400) continue;  // what is long adds nothing here
    journal += c.ligne + "\n";
    if (c.transcript) attendue.transcript = c.transcript;
    if (!std::holds_alternative<E::inconnu>(c.evenement.cas)) attendue.evenements.push_back(c.evenement);
  }
  attendue.consommes = journal.size();
  journal += R"({"hook_event_name":"Stop"})";
  ASSERT_EQ(attendue.transcript, "/s");
  const auto verifier = [&](const CarnetDeVol::Lecture& lue, std::size_t coupe) {
    EXPECT_EQ(lue.evenements, attendue.evenements) << coupe;
    EXPECT_EQ(lue.consommes, attendue.consommes) << coupe;
    EXPECT_EQ(lue.transcript, attendue.transcript) << coupe;
  };
  const std::string_view tout = journal;
  for (std::size_t coupe = 0; coupe <= tout.size(); ++coupe) {
    auto lue = CarnetDeVol::lire(tout.substr(0, coupe));
    ajouter(lue, CarnetDeVol::lire(tout.substr(lue.consommes)));
    verifier(lue, coupe);
  }
  for (const std::size_t pas : {std::size_t{1}, std::size_t{7}}) {  // a file that grows by as many bytes
    CarnetDeVol::Lecture lue;
    for (std::size_t fin = 0; fin <= tout.size(); fin += pas)
      ajouter(lue, CarnetDeVol::lire(tout.substr(lue.consommes, fin - lue.consommes)));
    ajouter(lue, CarnetDeVol::lire(tout.substr(lue.consommes)));
    verifier(lue, pas);
  }

  EXPECT_EQ(CarnetDeVol::lire("").consommes, 0u);
  EXPECT_EQ(CarnetDeVol::lire(std::string(CarnetDeVol::lectureMax, 'x')).consommes, 0u);
  EXPECT_EQ(CarnetDeVol::lire("A\nB").consommes, 2u);
  EXPECT_EQ(CarnetDeVol::lire("\n\r\n\n").consommes, 4u);
}

TEST(CarnetDeVol, CurseurSuivant) {
  EXPECT_EQ(CarnetDeVol::curseurSuivant(10, 0, 0), 10);
  EXPECT_EQ(CarnetDeVol::curseurSuivant(10, 262143, 0), 10);
  EXPECT_EQ(CarnetDeVol::curseurSuivant(10, 262144, 1), 11);
  EXPECT_EQ(CarnetDeVol::curseurSuivant(10, 262144, 0), 262154);
}

TEST(CarnetDeVol, SansEcho) {
  const std::vector<EvenementVol> evenements = {{E::besoin{"oui"}},
                                                {E::consigne{"oui"}},
                                                {E::fini{}},
                                                {E::consigne{"oui"}},
                                                {E::consigne{repeter(500, "é") + "…"}}};
  const auto sans = [&](std::size_t position) {
    auto reste = evenements;
    reste.erase(reste.begin() + static_cast<std::ptrdiff_t>(position));
    return reste;
  };
  const struct {
    std::optional<std::string> echo;
    std::vector<EvenementVol> reste;
    bool consomme;
  } cas[] = {
      {{}, evenements, false},
      {"", evenements, false},
      {"non", evenements, false},
      {"Oui", evenements, false},
      {"oui", sans(1), true},
      {"\u00A0oui\r\n", sans(1), true},
      {" " + repeter(700, "é") + " ", sans(4), true},
      {repeter(500, "é"), evenements, false},
  };
  for (const auto& c : cas) {
    const auto resultat = CarnetDeVol::sansEcho(evenements, c.echo);
    EXPECT_EQ(resultat.evenements, c.reste) << c.echo.value_or("(absent)");
    EXPECT_EQ(resultat.echoConsomme, c.consomme) << c.echo.value_or("(absent)");
  }
}

// Transcripts as claude keeps them: titles are appended again and again, the last one wins, and a title
// quoted in what someone says does not count.
TEST(CarnetDeVol, TitresDesTranscripts) {
  const std::string fin =
      R"({"type":"ai-title","aiTitle":"Refonte du « parseur » \u00e0 $(touch canari) 100% `x` l'été 😀","sessionId":"s"})"
      "\n";
  const std::string transcript =
      R"({"type":"ai-title","aiTitle":"Premier essai","sessionId":"s"})"
      "\n"
      R"({"type":"custom-title","customTitle":"autre","sessionId":"s"})"
      "\n"
      R"({"type":"user","message":{"role":"user","content":"cite : {\"aiTitle\":\"PAS un titre\"}"}})"
      "\n" +
      fin + R"({"type":"assistant","message":{"content":[]}})" + "\n";
  const std::string titre = R"(Refonte du « parseur » \u00e0 $(touch canari) 100% `x` l'été 😀)";
  for (const auto& shell : essai::interpretes()) {
    const DossierTemporaire maison;
    const Environnement ailleurs = {{"HOME", maison.chemin().string()}, {"PATH", ::getenv("PATH")}};
    const auto titres = [&](std::string_view marque, std::int64_t queue) {
      const auto sortie = shell.executer("cd\n" + CarnetDeVol::commandeTitres(marque, queue), ailleurs);
      EXPECT_EQ(sortie.statut, 0) << shell << sortie;
      EXPECT_EQ(sortie.erreurs, "") << shell;
      return sortie.texte;
    };
    const auto journal = [&](const std::string& session, const std::string& chemin,
                             const std::string& apres = "") {
      maison.ecrire(
          CarnetDeVol::journalDistant(session),
          "{\"hook_event_name\":\"SessionStart\",\"transcript_path\":" + enCitation(chemin) + "}\n" + apres);
    };
    const auto ecrit = [&](const std::string& nom) {
      return maison.ecrire("projets/" + nom + ".jsonl", transcript).string();
    };
    journal("tarnavelle-claude", ecrit("a b'c;$(touch canari)`d`*"));
    if (shell.mots !=
        std::vector<std::string>{"zsh", "-c"}) {  // where a pattern that names no file is an error
      const DossierTemporaire vide;
      EXPECT_EQ(shell
                    .executer(CarnetDeVol::commandeTitres("T:", 10),
                              {{"HOME", vide.chemin().string()}, {"PATH", ::getenv("PATH")}})
                    .statut,
                0)
          << shell;
    }
    EXPECT_EQ(titres("T:", 65536), "T:tarnavelle-claude:" + titre + "\n") << shell;
    EXPECT_EQ(titres("T:", 20), "") << shell;
    EXPECT_EQ(titres(R"(100% \n'"$x)", 65536), R"(100% \n'"$xtarnavelle-claude:)" + titre + "\n") << shell;

    journal("un-autre", ecrit("b"), "{\"hook_event_name\":\"Stop\",\"transcript_path\":\"/nulle/part\"}\n");
    journal("sans-titre", maison.ecrire("c.jsonl", "{\"type\":\"summary\"}\n").string());
    journal("deux", "/nulle/part",
            "{\"hook_event_name\":\"Stop\",\"transcript_path\":" + enCitation(ecrit("d")) +
                "}\n{\"prompt\":\"" + R"(cite \"transcript_path\":\"/x\"")" + "}\n");
    maison.ecrire(".tarnavelle/vol/vide.jsonl", "");
    EXPECT_EQ(titres("T:", 65536), "T:deux:" + titre + "\nT:tarnavelle-claude:" + titre + "\n") << shell;
    EXPECT_FALSE(std::filesystem::exists(maison.chemin() / "canari")) << shell;
  }
}

}  // namespace
}  // namespace tarnavelle
