#include "Agents/TranscriptClaude.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Agents/Interprete.hpp"
#include "DossierTemporaire.hpp"

namespace tarnavelle {
namespace {

using namespace std::string_literals;

TEST(TranscriptClaude, CheminSur) {
  for (const std::string sur :
       {"/", "/x", "/Users/a b/x.jsonl", "/home/u/.claude/projects/-work-é/9c008bb0-9aa5.jsonl", "//a/./b_c.",
        "/Bibliothe\u0300que/日本語/١", "/ "})
    EXPECT_TRUE(TranscriptClaude::cheminSur(sur)) << sur;
  for (const std::string autre :
       {"",       "relative/x", "~/x",       "C:\\Users\\x", "/home/u/../x", "/..",     "/a..b",
        "/a'b",   "/a\"b",      "/a`b",      "/a$b",         "/a\\b",        "/a;b",    "/a|b",
        "/a&b",   "/a#b",       "/a*b",      "/a?b",         "/a(b",         "/a\nb",   "/a\tb",
        "/a\rb",  "/a\u00A0b",  "/a\u3000b", "/a😀",          "/a\u200Bb",    "/\u0301", "/a\xFF",
        "/a\xC3", "/…",         "/\u0D4E\"", "/\u0D4E$",     "/\u0D4E'",     " /a"})
    EXPECT_FALSE(TranscriptClaude::cheminSur(autre)) << testing::PrintToString(autre);
  EXPECT_FALSE(TranscriptClaude::cheminSur("/a\0b"s));
}

TEST(TranscriptClaude, CommandeLecture) {
  EXPECT_EQ(
      TranscriptClaude::commandeLecture("/Users/a b/x.jsonl", 9),
      R"(sh -c '{ [ -f "/Users/a b/x.jsonl" ] && tail -c +10 "/Users/a b/x.jsonl" | head -c 262144; } || :')");
  EXPECT_EQ(TranscriptClaude::commandeLecture("/a$(b)", 0), std::nullopt);

  const std::string contenu = std::string(300'000, 'x') + "\nfin\n";
  for (const auto& shell : essai::interpretes())
    for (const char* nom : {"x.jsonl", "a  b/é\u0301 日本-_.jsonl", "-n"}) {
      const DossierTemporaire maison;
      const auto chemin = maison.chemin() / nom;
      const auto lire = [&](std::int64_t curseur) {
        const auto ligne = TranscriptClaude::commandeLecture(chemin.string(), curseur);
        const auto sortie = shell.executer(ligne.value(), {{"PATH", ::getenv("PATH")}});
        EXPECT_EQ(sortie.statut, 0) << shell << sortie;
        EXPECT_EQ(sortie.erreurs, "") << shell;
        return sortie.texte;
      };
      EXPECT_EQ(lire(0), "") << shell << chemin;
      maison.ecrire(nom, contenu);
      EXPECT_TRUE(lire(-5) == contenu.substr(0, 262144)) << shell << chemin;
      EXPECT_EQ(lire(299'999), "x\nfin\n") << shell << chemin;
    }
}

std::string assistant(const std::string& contenu) {
  return R"({"type":"assistant","message":{"role":"assistant","content":)" + contenu + "}}";
}

const struct {
  std::string ligne;
  std::optional<std::string> texte;
} lignes[] = {
    {assistant(R"([{"type":"text","text":" Voilà \ud83d\ude00\nla suite. \n"}])"), "Voilà 😀\nla suite."},
    {"\uFEFF" + assistant(R"([{"type":"text","text":"BOM"}])") + "\r", "BOM"},
    {assistant(
         R"([{"type":"thinking","thinking":"hum"},{"type":"text","text":"un"},{"type":"text","text":"\n "},)"
         R"({"type":"tool_use","name":"Bash","text":"non"},[{"type":"text","text":"non"}],"non",)"
         R"({"type":"text","text":7},{"type":["text"],"text":"non"},{"text":"non"},)"
         R"({"type":"text","text":"\tdeux"}])"),
     "un\ndeux"},
    {assistant(R"([{"type":"text","text":")" + std::string(1200, 'a') + "\"}]"), std::string(1200, 'a')},
    {assistant(R"([{"type":"text","text":"ab"},{"type":"text","text":")" + std::string(1198, 'c') + "\"}]"),
     "ab\n" + std::string(1197, 'c') + "…"},
    {assistant("[]"), {}},
    {assistant(R"([{"type":"text","text":" \u00a0\n"}])"), {}},
    {assistant(R"("du texte")"), {}},
    {assistant("null"), {}},
    {R"({"type":"assistant","message":"error"})", {}},
    {R"({"type":"assistant","message":{"contenst":[{"type":"text","text":"non"}]}})", {}},
    {R"({"type":"assistant"})", {}},
    {R"({"type":"user","message":{"content":[{"type":"text","text":"non"}]}})", {}},
    {R"({"type":1,"message":{"content":[{"type":"text","text":"non"}]}})", {}},
    {R"({"message":{"content":[{"type":"text","text":"non"}]}})", {}},
    {R"("massive error")", {}},
    {"42", {}},
    {"[1]", {}},
    {"", {}},
    {assistant("[{\"type\":\"text\",\"text\":\"\xFF\"}]"), {}},
    {assistant(R"([{"type":"text","text":"non"}])") + "}", {}},
};

TEST(TranscriptClaude, ReponseDUneLigne) {
  for (const auto& c : lignes) EXPECT_EQ(TranscriptClaude::texte(c.ligne), c.texte) << c.ligne;
}

TEST(TranscriptClaude, LitParTranches) {
  std::string transcript;
  std::vector<std::string> attendus;
  for (const auto& c : lignes) {
    if (c.ligne.size() > 1000) continue;  // what is long adds nothing here
    transcript += c.ligne + "\n";
    if (c.texte) attendus.push_back(*c.texte);
  }
  const std::size_t complet = transcript.size();
  transcript += assistant(R"([{"type":"text","text":"pas fini"}])");
  const std::string_view tout = transcript;
  for (std::size_t coupe = 0; coupe <= tout.size(); ++coupe) {
    auto lue = TranscriptClaude::lire(tout.substr(0, coupe));
    const auto suite = TranscriptClaude::lire(tout.substr(lue.consommes));
    lue.textes.insert(lue.textes.end(), suite.textes.begin(), suite.textes.end());
    EXPECT_EQ(lue.textes, attendus) << coupe;
    EXPECT_EQ(lue.consommes + suite.consommes, complet) << coupe;
  }
}

}  // namespace
}  // namespace tarnavelle
