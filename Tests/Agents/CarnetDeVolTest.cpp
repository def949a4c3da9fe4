#include "Agents/CarnetDeVol.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Agents/EvenementVol.hpp"
#include "Agents/HooksVol.hpp"
#include "Agents/Interprete.hpp"
#include "DossierTemporaire.hpp"
#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

using namespace std::string_literals;
using E = EvenementVol;

std::string repeter(std::size_t fois, std::string_view motif) {
  std::string texte;
  while (fois-- > 0) texte += motif;
  return texte;
}

TEST(CarnetDeVol, NomSur) {
  const std::pair<std::string, std::string> cas[] = {
      {"Milan 2/é!", "Milan2é"},
      {"tarnavelle-claude_2.b", "tarnavelle-claude_2.b"},
      {"a'\"`$\\;#&|<>(){}*?[]~!\n\t\r\0 b"s, "ab"},
      // A letter keeps its accents, composed or not; a sign with an accent is no letter.
      {"é|e\u0301|\u0301|.\u0301|-\u0308", "ée\u0301"},
      {"日本語 한글 ١٢ Ⅷ ² ½ नमस्ते", "日本語한글١٢Ⅷ²½नमस्ते"},
      {"\u00A0\u3000\u2028\u200B€«»“’", "session"},
      {"a\xFF\xC3z\xED\xA0\x80", "az"},
      // Letters that take whatever follows them along
      {"\u0D4E\"\u0D4E'\u0D4E$\u0D4E`\u0D4E/\u0D4E\\\u0D4Eക", "\u0D4E\u0D4E\u0D4E\u0D4E\u0D4E\u0D4E\u0D4Eക"},
  };
  for (const auto& [nom, sur] : cas) EXPECT_EQ(CarnetDeVol::nomSur(nom), sur) << testing::PrintToString(nom);
}

TEST(CarnetDeVol, ReglagesEnJSON) {
  const std::string journalMilan = "$HOME/.tarnavelle/vol/Milan.jsonl";
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
  EXPECT_EQ(CarnetDeVol::commandeHook(R"($A\"`'b)"),
            R"(/bin/sh -c '{ tr -d "\n"; printf "\n"; } >> "$A\\\"\`'b" 2>/dev/null')");
}

TEST(CarnetDeVol, ReglagesRelus) {
  using Reglages = CarnetDeVol::Reglages;
  const auto relu = Reglages::lire(
      R"({"hooks":{"Stop":[],"A":[{"matcher":"*","hooks":[{"type":"","command":"\/","timeout":-3,"x":1}]},
          {"matcher":null,"hooks":[{"type":"t","command":"c","timeout":null}]}]},"autre":1})");
  const Reglages attendus = {{{"Stop", {}}, {"A", {{"*", {{"", "/", -3}}}, {{}, {{"t", "c", {}}}}}}}};
  EXPECT_EQ(relu, attendus);
  EXPECT_EQ(EcritureJSON::compacte(attendus.json()),
            R"({"hooks":{"A":[{"hooks":[{"command":"/","timeout":-3,"type":""}],"matcher":"*"},)"
            R"({"hooks":[{"command":"c","type":"t"}]}],"Stop":[]}})");
  for (const std::string refuse :
       {"1", "[1]", R"([{"hooks":{}}])", R"([{"hooks":[],"matcher":1}])", R"([{"hooks":[{"type":"t"}]}])",
        R"([{"hooks":[{"command":"c"}]}])", R"([{"hooks":[{"type":"t","command":"c","timeout":5.5}]}])"})
    EXPECT_EQ(Reglages::lire(R"({"hooks":{"A":)" + refuse + "}}"), std::nullopt) << refuse;
  EXPECT_EQ(Reglages::lire(R"({"hooks":[]})"), std::nullopt);
}

TEST(CarnetDeVol, CommandeLecture) {
  EXPECT_EQ(
      CarnetDeVol::commandeLecture("Mi lan", std::numeric_limits<std::int64_t>::max()),
      R"(sh -c 'f="$HOME/.tarnavelle/vol/Milan.jsonl"; { [ -f "$f" ] && tail -c +9223372036854775808 "$f" | )"
      R"(head -c 262144; } || :')");
}

const struct {
  std::string nom;
  std::string champs;
  EvenementVol evenement;
  std::optional<std::string> transcript = {};
} hooks[] = {
    {"SessionStart", R"("source":"startup")", {E::demarre{}}},
    {"Stop", R"("transcript_path":{})", {E::fini{}}},
    {"SessionEnd", R"("transcript_path":"/a/b.jsonl")", {E::fini{}}, "/a/b.jsonl"},
    {"SubagentStop", R"("transcript_path":"/s")", {E::inconnu{}}, "/s"},
    {"UserPromptSubmit",
     R"("prompt":"\u2003\n dis « é\ud83d\ude00 »\nbis\r\n")",
     {E::consigne{"dis « é😀 »\nbis"}}},
    {"UserPromptSubmit", R"("prompt":" \t\n\u00a0\u2029")", {E::inconnu{}}},
    {"UserPromptSubmit",
     "\"prompt\":\"" + repeter(600, "e\u0301") + "\"",
     {E::consigne{repeter(500, "e\u0301") + "…"}}},
    {"PreToolUse", R"("tool_name":"R","tool_input":{"path":"/b/c.txt","command":"ls"})", {E::outil{"R", "ls"}}},
    {"PreToolUse", R"("tool_name":"W","tool_input":{"file_path":"/x/y/z.md"})", {E::outil{"W", "z.md"}}},
    {"PreToolUse", R"("tool_name":"","tool_input":{"command":7,"pattern":" "})", {E::outil{"", " "}}},
    {"PreToolUse", R"("tool_name":"L","tool_input":{"path":"/a/é b//"})", {E::outil{"L", "é b"}}},
    {"PreToolUse",
     R"("tool_name":"F","tool_input":{"description":"d","query":"q","url":"u/v"})",
     {E::outil{"F", "u/v"}}},
    {"PreToolUse", R"("tool_name":"F","tool_input":["ls"])", {E::outil{"F", ""}}},
    {"PreToolUse",
     R"("tool_name":"B","tool_input":{"command":")" + repeter(501, "c") + "\"}",
     {E::outil{"B", repeter(500, "c") + "…"}}},
    {"PreToolUse", R"("tool_input":{"command":"ls"},"transcript_path":"/t")", {E::inconnu{}}, "/t"},
    {"Notification", R"("message":" Claude attend\n")", {E::besoin{"Claude attend"}}},
    {"Notification", R"("a":1)", {E::besoin{""}}},  // also when it says nothing
    {"Notification", "\"message\":\"" + repeter(501, "m") + "\"", {E::besoin{repeter(500, "m") + "…"}}},
    {"Notification", R"("message":"\ud83c, l'emoji coup\u00e9")", {E::besoin{"\uFFFD, l'emoji coupé"}}},
};

TEST(CarnetDeVol, DecodeChaqueLigneDUnJournalQuiGrandit) {
  std::string journal;
  std::vector<EvenementVol> attendus = {{E::fini{}}};
  for (const char* illisible :
       {"", "42", R"({"hook_event_name":["Stop"],"transcript_path":"/a"})",
        "{\"hook_event_name\":\"Stop\",\"a\":\"\xC3\"}", R"([{"hook_event_name":"Stop"}])"})
    journal.append(illisible).append("\n");
  journal += "\uFEFF{\"hook_event_name\":\"Stop\"} \r\n";
  for (const auto& c : hooks) {
    const std::string ligne = R"({"hook_event_name":")" + c.nom + "\"," + c.champs + "}";
    const auto decodes = CarnetDeVol::decoder(ligne);
    ASSERT_EQ(decodes.size(), 1u) << ligne;
    EXPECT_EQ(decodes[0].evenement, c.evenement) << ligne;
    EXPECT_EQ(decodes[0].transcript, c.transcript) << ligne;
    if (ligne.size() > 400) continue;  // what is long adds nothing to the cuts
    journal += ligne + "\n";
    if (!std::holds_alternative<E::inconnu>(c.evenement.cas)) attendus.push_back(c.evenement);
  }
  const std::string_view tout = journal;
  for (const std::size_t pas : {std::size_t{1}, std::size_t{7}, tout.size()}) {
    std::vector<EvenementVol> lus;
    std::optional<std::string> transcript;
    std::size_t consommes = 0;
    for (std::size_t fin = pas; fin < tout.size() + pas; fin += pas) {
      auto lecture = CarnetDeVol::lire(tout.substr(0, fin).substr(consommes));
      consommes += lecture.consommes;
      lus.insert(lus.end(), lecture.evenements.begin(), lecture.evenements.end());
      if (lecture.transcript) transcript = lecture.transcript;
    }
    EXPECT_EQ(lus, attendus) << pas;
    EXPECT_EQ(transcript, "/t") << pas;
    EXPECT_EQ(consommes, tout.size()) << pas;
  }
  EXPECT_EQ(CarnetDeVol::lire("A\nB").consommes, 2u);
  EXPECT_EQ(FichierDistant::curseurSuivant(10, 262143, 0), 10);
  EXPECT_EQ(FichierDistant::curseurSuivant(10, 262144, 1), 11);
  EXPECT_EQ(FichierDistant::curseurSuivant(10, 262144, 0), 262154);
}

// Each hook appends its object, then its line feed; a long object goes in several writes. Whatever comes in
// between, the objects that are whole are read.
TEST(CarnetDeVol, LitLesHooksQuiSePartagentUneLigne) {
  const std::string a =
      R"({"hook_event_name":"PreToolUse","tool_name":"W","tool_input":{"e":[{"x":"}{\"b\":1}"}]}})";
  const std::string b =
      R"({"hook_event_name":"Notification","message":"m {\"","o":{"hook_event_name":"Stop"}})";
  const EvenementVol evenementA = {E::outil{"W", ""}};
  const EvenementVol evenementB = {E::besoin{"m {\""}};
  for (const std::string& ligne : {a + b, a + " " + b, "\uFEFF" + a + b + "\r"})
    EXPECT_EQ(CarnetDeVol::lire(ligne + "\n\n").evenements, (std::vector{evenementA, evenementB})) << ligne;
  for (std::size_t coupe = 1; coupe < a.size(); ++coupe) {
    const auto debut = a.substr(0, coupe);
    const auto suite = a.substr(coupe);
    for (const std::string& journal : {debut + b + suite + "\n\n", debut + b + "\n" + suite + "\n"}) {
      const auto lus = CarnetDeVol::lire(journal).evenements;
      EXPECT_EQ(std::ranges::count(lus, evenementB), 1) << journal;
      EXPECT_EQ(std::ranges::count(lus, EvenementVol{E::fini{}}), 0) << journal;
    }
    EXPECT_EQ(CarnetDeVol::lire(debut + "\n" + suite + b + "\n").evenements, std::vector{evenementB}) << coupe;
  }
}

TEST(CarnetDeVol, SansEcho) {
  const std::vector<EvenementVol> recus = {
      {E::besoin{"oui"}}, {E::consigne{"oui"}}, {E::consigne{"oui"}}, {E::consigne{repeter(500, "é") + "…"}}};
  EXPECT_EQ(CarnetDeVol::sansEcho(recus, {}).evenements, recus);
  const std::pair<std::string, std::size_t> retires[] = {
      {"", 4}, {"Oui", 4}, {"\u00A0oui\r\n", 1}, {repeter(500, "é"), 4}, {" " + repeter(700, "é") + " ", 3}};
  for (const auto& [echo, position] : retires) {
    auto reste = recus;
    if (position < 4) reste.erase(reste.begin() + static_cast<std::ptrdiff_t>(position));
    const auto resultat = CarnetDeVol::sansEcho(recus, echo);
    EXPECT_EQ(resultat.evenements, reste) << echo;
    EXPECT_EQ(resultat.echoConsomme, position < 4) << echo;
  }
}

// Transcripts as claude keeps them: titles are appended again and again, the last one wins, and a title
// quoted in what someone says does not count.
TEST(CarnetDeVol, TitresDesTranscripts) {
  const std::string titre = R"(Refonte du « parseur » \u00e0 $(touch canari) 100% `x` l'été 😀)";
  const std::string transcript = R"({"type":"ai-title","aiTitle":"Premier essai"}
{"type":"ai-title","aiTitle":")" +
                                 titre + R"(","sessionId":"s"}
{"type":"user","message":{"content":"cite : {\"aiTitle\":\"PAS un titre\"}"}}
)";
  for (const auto& shell : essai::interpretes()) {
    const DossierTemporaire maison;
    const auto titres = [&](const char* marque, std::int64_t queue) {
      const auto sortie = essai::executerLigne(shell, "cd\n" + CarnetDeVol::commandeTitres(marque, queue),
                                               {{"HOME", maison.chemin()}, {"PATH", ::getenv("PATH")}});
      EXPECT_EQ(std::to_string(sortie.statut) + sortie.erreurs, "0") << shell[0];
      return sortie.texte;
    };
    const auto chemin = maison.ecrire("a b'c;$(touch canari)`d`*", transcript).string();
    const auto journal = [&](const char* session, const std::string& avant, const std::string& apres) {
      maison.ecrire(CarnetDeVol::journalDistant(session),
                    R"({"transcript_path":")" + avant + "\"}\n" + R"({"transcript_path":")" + apres +
                        R"("} {"prompt":"cite \"transcript_path\":\"/x\""})" + "\n");
    };
    journal("tarnavelle-claude", "/nulle/part", chemin);
    journal("un-autre", chemin, "/nulle/part");
    journal("sans-titre", chemin, maison.ecrire("c", "{\"type\":\"summary\"}\n").string());
    EXPECT_EQ(titres("T:", 20), "") << shell[0];
    EXPECT_EQ(titres(R"(100% \n'"$x)", 65536), R"(100% \n'"$xtarnavelle-claude:)" + titre + "\n") << shell[0];
    EXPECT_FALSE(std::filesystem::exists(maison.chemin() / "canari")) << shell[0];
  }
}

}  // namespace
}  // namespace tarnavelle
