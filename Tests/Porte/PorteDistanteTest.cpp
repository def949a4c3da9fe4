// The lines run under every shell that a Mac may hand them to: against a stand-in curl that shows the
// words it was given, and against the trial door through the real curl.
#include "Porte/PorteDistante.hpp"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdio>
#include <string>
#include <utility>

#include "Agents/Interprete.hpp"
#include "DossierTemporaire.hpp"
#include "Socle/Shell.hpp"

namespace tarnavelle {
namespace {

using C = CommandeControle;
using namespace PorteDistante;
using namespace std::chrono_literals;
using namespace std::string_literals;

/// Each is one word, or one key, that a careless line would break or run.
const std::vector<std::string> hostiles = {
    // Quotes and spaces
    "l'atelier", "''\\'''", "\"guillemets\" \"", "deux\nlignes\n", "a b\tc  ",
    // What a shell replaces, or runs
    "$HOME ${PATH} $(id) `id`", "\\ \\\\ \\", "; touch intrus #", "!! !$ *?[a] ~ {a,b}", "=x",
    "&& exit 3 || exit 4 > f",
    // What curl and printf read
    "-H @/etc/passwd", "%s\\n\\c", "é\u0301Œ🦅\u00A0"};

TEST(PorteDistante, LitUnEndpoint) {
  const auto avec = [](const char* host, const char* port, const char* token) {
    return R"({"host":")"s + host + R"(","pid":7,"port":)" + port + R"(,"token":")" + token + R"("})";
  };
  const std::pair<std::string, EndpointPorte> cas[] = {
      {"\r\n\u00A0 " + avec(" \\tmac.local ", "1", " t ") + "\n\n", {"mac.local", 7, 1, " t "}},
      {avec(" ", "65535", "t"), {"127.0.0.1", 7, 65535, "t"}},
  };
  for (const auto& [texte, endpoint] : cas) EXPECT_TRUE(analyserEndpoint(texte) == endpoint) << texte;
  for (const auto& refuse :
       {avec("h", "0", "t"), avec("h", "65536", "t"), avec("h", "80", ""), avec("h", "80", " \\t\\u00a0"),
        avec("h", "80", "t") + "}", "cat: no such file"s, ""s})
    EXPECT_FALSE(analyserEndpoint(refuse)) << refuse;
}

TEST(PorteDistante, NeRelaieQueCinqCommandes) {
  const std::vector<std::pair<CommandeControle, std::string>> relayees = {
      {{C::focus{"l'atelier \"é\"\n/"}}, R"({"action":"focus","cible":"l'atelier \"é\"\n/"})"},
      {{C::allerScene{""}}, R"({"action":"aller_scene","nom":""})"},
      {{C::ouvrirAgent{"codex", "~/S", "mac"}},
       R"({"action":"ouvrir_agent","cli":"codex","dossier":"~/S","hote":"mac"})"},
      {{C::ouvrirWeb{"a.fr", true}}, R"({"action":"ouvrir_web","cible":"a.fr","externe":true})"},
      {{C::etat{}}, R"({"action":"etat","format":"json"})"},
  };
  for (const auto& [commande, corps] : relayees) EXPECT_EQ(corpsAction(commande), corps);
  EXPECT_EQ(corpsAction({C::focus{"\xFF"}}), std::nullopt);

  int relayes = 0;
  for (const OutilVoix& outil : C::outilsPorte())
    relayes += corpsAction(C::decoder(outil.nom, "{}")).has_value();
  EXPECT_EQ(relayes, 5);
  EXPECT_EQ(corpsAction({C::inconnue{"focus"}}), std::nullopt);
}

// The stand-in is only in ~/.local/bin, which the shell itself does not know.
TEST(PorteDistante, RienNAjouteUnMot) {
  const DossierTemporaire dossier;
  const auto curl = dossier.ecrire("maison/.local/bin/curl", "#!/bin/sh\nprintf '<%s>' \"$@\"\n");
  std::filesystem::permissions(curl, std::filesystem::perms::owner_all);
  std::filesystem::create_directory(dossier.chemin() / "bin");
  std::filesystem::create_symlink("/bin/sh", dossier.chemin() / "bin/sh");
  const Environnement environnement = {{"HOME", dossier.chemin() / "maison"},
                                       {"PATH", dossier.chemin() / "bin"}};
  for (const auto& interprete : essai::interpretes())
    for (const auto& texte : hostiles) {
      const auto sortie =
          essai::executerLigne(interprete, commandeAction({texte, 7, 4242, texte}, texte), environnement);
      EXPECT_EQ(sortie.texte, "<-s><-m><5><-X><POST><http://" + texte +
                                  ":4242/action><-H><Authorization: Bearer " + texte +
                                  "><-H><Content-Type: application/json><--data-binary><" + texte + ">")
          << interprete[0];
      EXPECT_EQ(sortie.statut, 0) << interprete[0] << sortie;
    }
}

/// The real trial door, which writes its endpoint file under the home folder given; ended as by Ctrl-C.
class PorteEssai {
 public:
  PorteEssai(const std::filesystem::path& maison, const std::string& options) {
    const std::string ligne =
        "echo $$; HOME=" + Shell::mot(maison.string()) + " exec " + Shell::mot(PORTE_ESSAI) + " " + options;
    sortie_ = ::popen(ligne.c_str(), "r");
    char adresse[200];
    if (std::fscanf(sortie_, "%d\n", &pid_) != 1 || !std::fgets(adresse, sizeof adresse, sortie_)) std::abort();
  }
  ~PorteEssai() {
    ::kill(pid_, SIGINT);
    ::pclose(sortie_);
  }
  PorteEssai(const PorteEssai&) = delete;
  PorteEssai& operator=(const PorteEssai&) = delete;
  pid_t pid() const { return pid_; }

 private:
  std::FILE* sortie_ = nullptr;
  pid_t pid_ = 0;
};

const PlateauMac depart{
    .scene = "Sources",
    .autresScenes = {"Atelier"},
    .agents = {{"Merlin", "au repos"}, {"Milan", "sur « Atelier »"}},
    .crew = {"Forge"},
    .ancrages = {{"Merlin", "Sources", "tarnavelle-claude", ""}, {"Milan", "Atelier", "tarnavelle-codex", ""}},
    .dossier = "~/Sources"};

TEST(PorteDistante, PiloteLaPorteDEssaiParCurl) {
  for (const auto& interprete : essai::interpretes()) {
    SCOPED_TRACE(testing::PrintToString(interprete));
    const DossierTemporaire dossier;
    const auto maison = dossier.chemin() / "l'œil \"de\" $HOME `id`\\\n🦅";
    const auto lancer = [&](const std::string& ligne) {
      return essai::executerLigne(interprete, ligne, {{"HOME", maison}, {"PATH", "/usr/bin:/bin"}});
    };
    const auto lire = [&] { return analyserEndpoint(lancer(commandeLecture()).texte); };
    const auto relayer = [&](const EndpointPorte& endpoint, const CommandeControle& commande) {
      return analyserReponse(lancer(commandeAction(endpoint, corpsAction(commande).value())).texte);
    };

    EXPECT_EQ(lancer(commandeLecture()).erreurs, "");
    EXPECT_FALSE(lire());

    EndpointPorte endpoint;
    {
      const std::string jeton = "s'\"\\$`!";
      const PorteEssai porte(maison, "--jeton " + Shell::mot(jeton));
      endpoint = lire().value();
      EXPECT_TRUE(endpoint == (EndpointPorte{"127.0.0.1", porte.pid(), endpoint.port, jeton}));

      EXPECT_TRUE(plateau(relayer(endpoint, {C::etat{}}).value()) == depart);
      EXPECT_EQ(depart.recit(),
                "SCÈNE VISIBLE sur le Mac : « Sources ». Autres scènes : « Atelier ». Agents ouverts là-bas : "
                "Merlin (au repos), Milan (sur « Atelier »). Fenêtres du cockpit : Forge.");

      EXPECT_EQ(relayer(endpoint, {C::allerScene{"Atelier"}}).value().spoken_text, "Scène Atelier.");
      EXPECT_EQ(plateau(relayer(endpoint, {C::etat{}}).value()).value().scene, "Atelier");
      EndpointPorte faux = endpoint;
      faux.token += "x";
      EXPECT_TRUE(relayer(faux, {C::etat{}}) == ReponsePorte::echec("Jeton absent ou faux."));
    }
    // The door is gone, and its file with it.
    EXPECT_FALSE(lire());
    EXPECT_EQ(lancer(commandeAction(endpoint, "{}")).statut, 7);  // curl: could not connect
    EXPECT_FALSE(std::filesystem::exists("intrus"));
  }
}

TEST(PorteDistante, LitUnPlateau) {
  // Mistyped members are empty, mistyped elements skipped; what is left is told.
  const auto lu = plateau(analyserReponse(R"( {"ok":true,"data":{"scene":3,"dossier":[],"crew":["","Forge"],
      "autres_scenes":["B",1,null,["C"],"D"],
      "ailleurs":[{"nom":"Milan","scene":7,"tmux":"t","hote":"h","etat":"actif"},{"nom":""},"Milan"],
      "agents":[[],{"etat":"actif"},{"nom":5},{"nom":"Merlin","etat":true,"tmux":1,"hote":"mac"}]}} )")
                              .value());
  EXPECT_TRUE(lu == (PlateauMac{.scene = "",
                                .autresScenes = {"B", "D"},
                                .agents = {{"Merlin", ""}, {"Milan", "ailleurs"}},
                                .crew = {"", "Forge"},
                                .ancrages = {{"Merlin", "", "", "mac"}, {"Milan", "", "t", "h"}},
                                .dossier = ""}));
  EXPECT_EQ(lu->recit(),
            "Autres scènes : « B », « D ». Agents ouverts là-bas : Merlin (), Milan (ailleurs). "
            "Fenêtres du cockpit : , Forge.");
  for (const char* vide :
       {R"({"ok":true,"data":{"dossier":"~/S","autres_scenes":[1],"crew":"Forge","agents":{"nom":"x"}}})",
        R"({"ok":true,"data":[{"scene":"A"}]})", R"({"ok":true})", R"({"ok":false,"data":{"scene":"A"}})"})
    EXPECT_FALSE(plateau(analyserReponse(vide).value())) << vide;
  for (const char* illisible : {"", "curl: (7) Failed", R"({"data":{"scene":"A"}})"})
    EXPECT_FALSE(analyserReponse(illisible)) << illisible;
}

TEST(PorteDistante, RelitUnEndpointPerime) {
  const EndpointPorte connu{"h", 7, 80, "t"};
  EXPECT_FALSE(doitDecouvrir(connu, 30s, false, 30s));
  EXPECT_TRUE(doitDecouvrir(connu, 30.5s, false, 30s));
  EXPECT_TRUE(doitDecouvrir(connu, 0s, true, 30s));
  EXPECT_TRUE(doitDecouvrir(connu, {}, false, 30s));
  EXPECT_TRUE(doitDecouvrir({}, 0s, false, 30s));
}

}  // namespace
}  // namespace tarnavelle
