#include "Socle/Inoffensif.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace tarnavelle {
namespace {

TEST(Inoffensif, RienNeConduitLeTerminal) {
  const std::pair<std::string, std::string> cas[] = {
      {"été \"a\\b\" œ漢👩‍🚀 नि", "été \"a\\b\" œ漢👩‍🚀 नि"},
      {"\x1b[31m\a\b\x7f", "\\u001b[31m\\u0007\\u0008\\u007f"},
      {std::string("a\0b", 3), "a\\u0000b"},
      {"a\n\t\r\nb", "a\n\t\\r\nb"},
      {"\u009B2J\u0085", "\\u009b2J\\u0085"},                // C1, as text
      {"\x9B\xFF\xC2", "\\x9b\\xff\\xc2"},                   // C1, as bytes
      {"\xE2\x80\xAEtxt\xE2\x81\xA6", "\\u202etxt\\u2066"},  // writing direction
      {"a\xE2\x80\xA8\xEF\xBB\xBF\xC2\xAD", "a\\u2028\\ufeff\\u00ad"},
      {"\xF3\xA0\x81\xA7", "\\udb40\\udc67"},  // a tag, beyond 16 bits
  };
  for (const auto& [brut, montre] : cas)
    for (const auto& texte : {brut, montre}) EXPECT_EQ(Inoffensif::montrable(texte, "\n\t"), montre);
  EXPECT_EQ(Inoffensif::montrable("a\n\tb"), "a\\n\\tb");
  // In a time that grows as the text, whatever fills it.
  for (const auto& [motif, montre] : {std::pair("\x7f", "\\u007f"), {"\xFF", "\\xff"}}) {
    std::string texte, attendu;
    for (int n = 0; n < 1'000'000; ++n) texte += motif, attendu += montre;
    EXPECT_TRUE(Inoffensif::montrable(texte) == attendu) << montre;
  }
}

}  // namespace
}  // namespace tarnavelle
