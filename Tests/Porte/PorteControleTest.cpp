#include "Porte/PorteControle.hpp"

#include <gtest/gtest.h>

#include <string>

#include "DossierTemporaire.hpp"
#include "Socle/EcritureJSON.hpp"

namespace tarnavelle {
namespace {

constexpr auto fichierValide = R"({"host":"127.0.0.1","pid":1,"port":5000,"token":"t"})";

TEST(EndpointPorte, Lecture) {
  struct {
    const char* texte;
    std::optional<EndpointPorte> lu;
  } const cas[] = {
      {fichierValide, {{"127.0.0.1", 1, 5000, "t"}}},
      {R"( {"token":"","port":5000.0,"version":[2],"pid":4242,"host":"mac.local"} )",
       {{"mac.local", 4242, 5000, ""}}},
      {R"({"host":"h","pid":-1,"port":9223372036854775807,"token":"é"})", {{"h", -1, INT64_MAX, "é"}}},
      {R"({"pid":1,"port":5000,"token":"t"})", {}},
      {R"({"host":"h","port":5000,"token":"t"})", {}},
      {R"({"host":"h","pid":1,"token":"t"})", {}},
      {R"({"host":"h","pid":1,"port":5000})", {}},
      {R"({"Host":"h","pid":1,"port":5000,"token":"t"})", {}},
      {R"({"host":"h","pid":1,"port":"5000","token":"t"})", {}},
      {R"({"host":"h","pid":true,"port":5000,"token":"t"})", {}},
      {R"({"host":"h","pid":1,"port":5000.5,"token":"t"})", {}},
      {R"({"host":"h","pid":1,"port":1e300,"token":"t"})", {}},
      {R"({"host":"h","pid":9223372036854775808,"port":5000,"token":"t"})", {}},
      {R"({"host":1,"pid":1,"port":5000,"token":"t"})", {}},
      {R"({"host":"h","pid":1,"port":5000,"token":null})", {}},
      {R"([{"host":"h","pid":1,"port":5000,"token":"t"}])", {}},
      {R"({"host":"h","pid":1,"port":5000,"token":"t"},)", {}},
      {"", {}},
  };
  for (const auto& c : cas) {
    EXPECT_TRUE(EndpointPorte::lire(c.texte) == c.lu) << c.texte;
    const auto relu = [](const EndpointPorte& e) {
      return EndpointPorte::lire(EcritureJSON::compacte(e.json()).value());
    };
    EXPECT_TRUE(!c.lu || relu(*c.lu) == c.lu) << c.texte;
  }
  EXPECT_EQ(EcritureJSON::compacte(EndpointPorte::lire(fichierValide)->json()), fichierValide);
}

TEST(PorteControle, PorteResolue) {
  const char* const url = "TARNAVELLE_CONTROL_URL";
  const char* const jeton = "TARNAVELLE_CONTROL_TOKEN";
  const std::optional<PorteResolue> duFichier{{"http://127.0.0.1:5000/action", "t"}};
  struct {
    Environnement environnement;
    const char* fichier;  ///< null: no file
    std::optional<PorteResolue> attendue;
  } const cas[] = {
      // The environment alone decides as soon as it gives a complete URL.
      {{{url, "http://127.0.0.1:6000/action"}}, fichierValide, {{"http://127.0.0.1:6000/action", ""}}},
      {{{url, "http://127.0.0.1:6000"}, {jeton, "j"}}, nullptr, {{"http://127.0.0.1:6000/action", "j"}}},
      {{{url, " http://127.0.0.1:6000/\n"}, {jeton, " j\t"}}, nullptr, {{"http://127.0.0.1:6000/action", "j"}}},
      {{{url, "http://127.0.0.1:6000//"}}, nullptr, {{"http://127.0.0.1:6000/action", ""}}},
      {{{url, "//http://h/x/"}}, nullptr, {{"http://h/x/action", ""}}},
      {{{url, "https://mac.local/porte"}}, nullptr, {{"https://mac.local/porte/action", ""}}},
      {{{url, "http://h/action/"}}, nullptr, {{"http://h/action/action", ""}}},
      {{{url, "http://h/reaction"}}, nullptr, {{"http://h/reaction/action", ""}}},
      {{{url, "http://[::1]:6000"}}, nullptr, {{"http://[::1]:6000/action", ""}}},
      // Without one it is forgotten, its token too.
      {{}, fichierValide, duFichier},
      {{{url, ""}, {jeton, "j"}}, fichierValide, duFichier},
      {{{url, " \n"}, {jeton, "j"}}, fichierValide, duFichier},
      {{{url, "pas une adresse"}, {jeton, "j"}}, fichierValide, duFichier},
      {{{url, "127.0.0.1:6000"}}, fichierValide, duFichier},
      {{{url, "http://"}}, fichierValide, duFichier},
      {{{url, "/action"}}, fichierValide, duFichier},
      {{{url, "http://h\uFFFD/action"}}, fichierValide, duFichier},
      {{{url, "http://h:port"}}, nullptr, {}},
      {{{url, "http://h:5000x"}}, nullptr, {}},
      // The file
      {{}, nullptr, {}},
      {{{jeton, "j"}}, nullptr, {}},
      {{}, R"({"host":"127.0.0.1","port":5000,"token":"t"})", {}},
      {{}, R"({"host":"127.0.0.1","pid":1,"port":"5000","token":"t"})", {}},
      {{}, R"({"host":"pas un hôte","pid":1,"port":5000,"token":"t"})", {}},
      {{}, R"({"host":"","pid":1,"port":5000,"token":"t"})", {}},
      {{}, R"({"host":"::1","pid":1,"port":5000,"token":"t"})", {}},
      {{}, R"({"host":"[::1]","pid":1,"port":5000,"token":""})", {{"http://[::1]:5000/action", ""}}},
      {{}, R"({"host":"h","pid":1,"port":-1,"token":"t"})", {}},
  };
  for (const auto& c : cas) {
    const DossierTemporaire maison;
    if (c.fichier) maison.ecrire("Library/Application Support/Tarnavelle/porte-commande.json", c.fichier);
    Environnement environnement = c.environnement;
    environnement["HOME"] = maison.chemin().string();
    EXPECT_TRUE(PorteControle::resoudrePorte(environnement) == c.attendue)
        << testing::PrintToString(c.environnement) << " " << (c.fichier ? c.fichier : "sans fichier");
  }
}

TEST(PorteControle, FichierDemesure) {
  const DossierTemporaire dossier;
  const std::string texte = fichierValide;
  const auto lire = [&](std::size_t blancs) {
    return PorteControle::lireEndpoint(dossier.ecrire("f", texte + std::string(blancs, ' ')));
  };
  EXPECT_TRUE(lire(64 * 1024 - texte.size()));
  EXPECT_FALSE(lire(64 * 1024 - texte.size() + 1));
  EXPECT_FALSE(PorteControle::lireEndpoint(dossier.chemin()));
}

}  // namespace
}  // namespace tarnavelle
