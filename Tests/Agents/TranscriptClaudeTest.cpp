#include "Agents/TranscriptClaude.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <string>
#include <vector>

namespace tarnavelle {
namespace {

TEST(TranscriptClaude, CheminSur) {
  for (const char* sur : {"/", "/Users/a b/x.jsonl", "//a/./b_c.", "/Bibliothe\u0300que/日本語/١"})
    EXPECT_TRUE(TranscriptClaude::cheminSur(sur)) << sur;
  for (const char* autre : {"", "relative/x", "~/x", " /a", "/home/u/../x", "/a..b", "/a\u00A0b", "/a😀",
                            "/\u0301", "/a\xC3", "/…", "/\u0D4E\""})
    EXPECT_FALSE(TranscriptClaude::cheminSur(autre)) << testing::PrintToString(autre);
  for (char c = 0; c < 127; ++c)
    EXPECT_EQ(TranscriptClaude::cheminSur(std::string("/a") + c + "b"),
              std::isalnum(c) || std::string_view(" -./_").find(c) != std::string_view::npos)
        << int(c);
}

TEST(TranscriptClaude, CommandeLecture) {
  EXPECT_EQ(
      TranscriptClaude::commandeLecture("/Users/a b/x.jsonl", 9),
      R"(sh -c '{ [ -f "/Users/a b/x.jsonl" ] && tail -c +10 "/Users/a b/x.jsonl" | head -c 262144; } || :')");
  EXPECT_EQ(TranscriptClaude::commandeLecture("/a$(b)", 0), std::nullopt);
}

std::string assistant(const std::string& contenu) {
  return R"({"type":"assistant","message":{"role":"assistant","content":)" + contenu + "}}";
}

const std::pair<std::string, std::optional<std::string>> lignes[] = {
    {assistant(R"([{"type":"text","text":" Voilà \ud83d\ude00\nla suite. \n"}])"), "Voilà 😀\nla suite."},
    {"\uFEFF" + assistant(R"([{"type":"text","text":"BOM"}])") + "\r", "BOM"},
    {assistant(R"([{"type":"text","text":"\\ud83c \uDF00"}])"), "\\ud83c \uFFFD"},
    {assistant(
         R"([{"type":"thinking","thinking":"hum"},{"type":"text","text":"un"},{"type":"text","text":"\n "},)"
         R"({"type":"tool_use","name":"Bash","text":"non"},[{"type":"text","text":"non"}],"non",)"
         R"({"type":"text","text":7},{"type":["text"],"text":"non"},{"text":"non"},)"
         R"({"type":"text","text":"\tdeux"}])"),
     "un\ndeux"},
    {assistant(R"([{"type":"text","text":"ab"},{"type":"text","text":")" + std::string(1198, 'c') + "\"}]"),
     "ab\n" + std::string(1197, 'c') + "…"},
    {assistant("[]"), {}},
    {assistant(R"([{"type":"text","text":" \u00a0\n"}])"), {}},
    {assistant("null"), {}},
    {R"({"type":"assistant","message":"error"})", {}},
    {R"({"type":"user","message":{"content":[{"type":"text","text":"non"}]}})", {}},
    {assistant("[{\"type\":\"text\",\"text\":\"\xFF\"}]"), {}},
};

TEST(TranscriptClaude, LitLesReponsesDesLignesEntieres) {
  std::string transcript;
  std::vector<std::string> attendus;
  for (const auto& [ligne, texte] : lignes) {
    EXPECT_EQ(TranscriptClaude::texte(ligne), texte) << ligne;
    transcript += ligne + "\n";
    if (texte) attendus.push_back(*texte);
  }
  const auto lecture = TranscriptClaude::lire(transcript + lignes[0].first);
  EXPECT_EQ(lecture.textes, attendus);
  EXPECT_EQ(lecture.consommes, transcript.size());
}

}  // namespace
}  // namespace tarnavelle
