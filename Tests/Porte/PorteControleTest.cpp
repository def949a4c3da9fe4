#include "Porte/PorteControle.hpp"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <tuple>
#include <utility>

#include "DossierTemporaire.hpp"
#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

constexpr auto fichierValide = R"({"host":"127.0.0.1","pid":1,"port":5000,"token":"t"})";

TEST(EndpointPorte, Lecture) {
  const std::pair<const char*, EndpointPorte> cas[] = {
      {fichierValide, {"127.0.0.1", 1, 5000, "t"}},
      {R"( {"token":"","port":5e3,"version":[2],"pid":4242,"host":"mac.local"} )",
       {"mac.local", 4242, 5000, ""}},
      {R"({"host":"h","pid":-1,"port":9223372036854775807,"token":"é"})", {"h", -1, INT64_MAX, "é"}}};
  for (const auto& [texte, endpoint] : cas) {
    EXPECT_TRUE(EndpointPorte::lire(texte) == endpoint) << texte;
    EXPECT_TRUE(EndpointPorte::lire(EcritureJSON::compacte(endpoint.json()).value()) == endpoint) << texte;
  }
  EXPECT_EQ(EcritureJSON::compacte(cas[0].second.json()), fichierValide);
  for (const char* refuse : {R"({"pid":1,"port":5000,"token":"t"})", R"({"host":"h","port":5000,"token":"t"})",
                             R"({"host":"h","pid":1,"token":"t"})", R"({"host":"h","pid":1,"port":5000})",
                             R"({"host":"h","pid":1,"port":5000.5,"token":"t"})",
                             R"({"host":"h","pid":9223372036854775808,"port":5000,"token":"t"})"})
    EXPECT_FALSE(EndpointPorte::lire(refuse)) << refuse;
}

TEST(PorteControle, PorteResolue) {
  const std::optional<PorteResolue> duFichier{{"http://127.0.0.1:5000/action", "t"}};
  const std::tuple<const char*, const char*, std::optional<PorteResolue>> cas[] = {
      // The environment alone decides as soon as it gives a complete URL.
      {"http://127.0.0.1:6000/action", "", {{"http://127.0.0.1:6000/action", ""}}},
      {" http://127.0.0.1:6000/\n", " j\t", {{"http://127.0.0.1:6000/action", "j"}}},
      {"//https://h/x//", "", {{"https://h/x/action", ""}}},
      {"http://h/reaction", "", {{"http://h/reaction/action", ""}}},
      {"http://[::1]:6000", "", {{"http://[::1]:6000/action", ""}}},
      // Without one it is forgotten, its token too.
      {"pas une adresse", "j", duFichier},
      {"http://", "j", duFichier},
      {"http://h:5000x", "j", duFichier},
  };
  const DossierTemporaire maison;
  const auto resoudre = [&](const char* url, const char* jeton) {
    return PorteControle::resoudrePorte({{"HOME", maison.chemin().string()},
                                         {"TARNAVELLE_CONTROL_URL", url},
                                         {"TARNAVELLE_CONTROL_TOKEN", jeton}});
  };
  EXPECT_FALSE(resoudre("", "j"));
  const auto ecrire = [&](std::string_view texte) {
    maison.ecrire("Library/Application Support/Tarnavelle/porte-commande.json", texte);
  };
  ecrire(fichierValide);
  for (const auto& [url, jeton, attendue] : cas) EXPECT_TRUE(resoudre(url, jeton) == attendue) << url;
  ecrire(R"({"host":"[::1]","pid":1,"port":5000,"token":""})");
  EXPECT_TRUE(resoudre("", "j") == (PorteResolue{"http://[::1]:5000/action", ""}));
  ecrire(fichierValide + std::string(64 * 1024, ' '));
  EXPECT_FALSE(resoudre("", "j")) << "larger than any endpoint";
  for (const char* hote : {"pas un hôte", "", "::1"}) {
    ecrire(EcritureJSON::compacte(EndpointPorte{hote, 1, 5000, "t"}.json()).value());
    EXPECT_FALSE(resoudre("", "j")) << hote;
  }
}

}  // namespace
}  // namespace tarnavelle
