#include "Socle/Base64.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace tarnavelle {
namespace {

TEST(Base64, AllerRetour) {
  const std::pair<Octets, const char*> cas[] = {
      {{'f'}, "Zg=="}, {{0, 0}, "AAA="}, {{'f', 'o', 'o'}, "Zm9v"}, {{0xFB, 0xEF, 0xBE, 0xFF}, "++++/w=="}};
  for (const auto& [octets, texte] : cas) EXPECT_EQ(Base64::coder(octets), texte);
  Octets tous;
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(Base64::decoder(Base64::coder(tous)), tous) << i;
    tous.push_back(static_cast<std::uint8_t>(i * 167 >> 2));
  }
  EXPECT_EQ(Base64::decoder("Zh=="), Octets{'f'});  // bits in excess
}

TEST(Base64, RefuseToutCaractereHorsDeLAlphabet) {
  for (const char* texte : {"Z", "Zg", "Zg=", "Zg===", "====", "=Zg=", "Z===", "Zg==Zg==", "Zm=v", "Zg==\n"})
    EXPECT_FALSE(Base64::decoder(texte)) << texte;
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int c = 0; c < 256; ++c)
    for (std::size_t place = 0; place < 4; ++place) {
      std::string texte = "Zm9vZm9v";
      texte[place] = static_cast<char>(c);
      EXPECT_EQ(Base64::decoder(texte).has_value(), alphabet.find(static_cast<char>(c)) != std::string::npos)
          << texte;
    }
}

}  // namespace
}  // namespace tarnavelle
