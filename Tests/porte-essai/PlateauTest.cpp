#include "Plateau.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Socle/EcritureJSON.hpp"

namespace tarnavelle::PorteEssai {
namespace {

/// A clock that leaps to the end of every wait.
class HorlogeSauteuse final : public Horloge {
 public:
  Instant maintenant() const override { return maintenant_; }
  void attendre(std::condition_variable&, std::unique_lock<std::mutex>&, Instant echeance) override {
    maintenant_ = echeance;
  }

 private:
  Instant maintenant_{};
};

class PlateauTest : public testing::Test {
 protected:
  ReponsePorte appeler(std::string_view verbe, const std::string& arguments = "") {
    return plateau_.executer(CommandeControle::decoder(verbe, "{" + arguments + "}"));
  }

  std::string donnees(std::string_view verbe, const std::string& arguments) {
    return EcritureJSON::compacte(appeler(verbe, arguments).data.value_or(PorteJSON{}).json()).value();
  }

  struct Echange {
    std::string_view verbe;
    std::string arguments;
    std::string_view attendu;  ///< what is said, or "KO " and why it is refused
  };
  void jouer(const std::vector<Echange>& echanges) {
    for (const auto& [verbe, arguments, attendu] : echanges) {
      const ReponsePorte r = appeler(verbe, arguments);
      EXPECT_EQ(r.ok ? r.spoken_text.value() : "KO " + r.error.value(), attendu) << verbe << arguments;
    }
  }

  HorlogeSauteuse horloge_;
  Plateau plateau_{horloge_};
};

TEST_F(PlateauTest, ScenesEtFenetres) {
  jouer({
      {"focus", R"("cible":"Fo")", "KO Aucune fenêtre ne s'appelle « Fo ». Ouvertes : Forge, Merlin, Milan."},
      {"focus", R"("cible":"milan")", "KO Milan est sur la scène « Atelier » : c'est aller_scene qui y mène."},
      {"focus", R"("cible":" FORGE")", "Forge est en grand."},
      {"nommer_zone", R"("nom":"l'Établi")", "Forge répond aussi au nom de « l'Établi »."},
      {"nommer_zone", R"("nom":"l'établi","cible":"Merlin")", "KO « l'établi » désigne déjà autre chose."},
      {"focus", R"("cible":"l'etabli")", "Forge est en grand."},
      {"close", R"("target":"forge")", "Fermé : Forge."},
      {"fermer", "", "Fermé : Merlin, dont la session tarnavelle-claude continue."},
      {"fermer", "", "KO Aucune fenêtre n'est au regard : nomme-la."},
      {"dicter", R"("agent":"Merlin","texte":"va")",
       "KO Aucun agent ne s'appelle « Merlin ». Ouverts : Milan."},
      {"fini", R"("agent":"Merlin")", "Merlin a fini."},  // its session goes on
      {"aller_scene", R"("nom":"~/atelier")", "Scène Atelier."},
      {"lire", "", "Milan affiche : codex dans ~/Atelier"},
      {"shell", R"("commande":"ls")", "KO pas encore câblé"},
      {" Zut ", "", "KO Verbe inconnu : « Zut »."},
  });
}

TEST_F(PlateauTest, FermerToutEpargneCeQuOnNomme) {
  jouer({
      {"nommer_zone", R"("nom":"le front","cible":"Merlin")", "Merlin répond aussi au nom de « le front »."},
      {"fermer_tout", R"("sauf":"Merlan, Forge")",
       "KO Aucune fenêtre ne s'appelle « Merlan ». Ouvertes : Forge, Merlin, Milan."},
      {"fermer_tout", R"("sauf":"LE FRONT")", "Fermé : Forge."},
      {"fermer_tout", "", "Fermé : Merlin."},
      {"etat", "", "Scène Sources. Milan : au repos (Atelier)."},
  });
}

TEST_F(PlateauTest, UnAgentTravaillePuisSeRepose) {
  jouer({
      {"dicter", R"("texte":"relis ","valider":false)", "Posé chez Merlin."},
      {"dicter", R"("texte":"le patch")", "Envoyé à Merlin."},
      {"etat", "", "Scène Sources. Merlin : travaille. Milan : au repos (Atelier)."},
  });
  EXPECT_EQ(donnees("attendre", R"("agent":"Merlin")"),
            R"({"agent":"Merlin","atteint":true,"duree_s":3,"etat":"au repos","raison":"idle"})");
  EXPECT_EQ(donnees("lire", ""),
            R"({"agent":"Merlin","etat":"au repos","texte":"claude dans ~/Sources\n(saisie) relis \n)"
            R"(> relis le patch\nAu travail…\nFait : relis le patch"})");
  jouer({
      {"bloque", R"("agent":"tarnavelle-claude","raison":"où ?")", "Merlin a besoin de vous : où ?"},
      {"etat", "", "Scène Sources. Merlin : attend une réponse. Milan : au repos (Atelier)."},
      {"dicter", R"("texte":" Exit")", "Envoyé à Merlin."},
      {"fini", R"("agent":"Merlin")", "KO Merlin est sorti : son processus a pris fin."},
      {"fermer", "", "Fermé : Merlin."},
  });
}

TEST_F(PlateauTest, AttendreRendToujoursCeQuiSEstPasse) {
  const struct {
    const char* avant;  ///< a verb
    const char* arguments;
    const char* attendre;
    const char* attendu;  ///< whether it came, after how many seconds, the agent's state, why the wait ended
  } cas[] = {
      {"etat", "", R"("jusqu_a":"fini","timeout_s":"301")", "false 300 au repos timeout"},
      {"dicter", R"("texte":"va")", R"("timeout_s":2)", "false 2 travaille timeout"},
      {"etat", "", R"("motif":"^Fait : v.$","jusqu_a":"idle")", "true 1 au repos motif"},
      {"bloque", R"("raison":"?")", R"("jusqu_a":"Besoin")", "true 0 attend une réponse besoin"},
      {"fini", "", R"("jusqu_a":"fini")", "true 0 au repos fini"},
      {"dicter", R"("texte":"suite")", R"("jusqu_a":"fini","timeout_s":9)", "false 9 au repos timeout"},
      {"dicter", R"("texte":"/quit")", R"("jusqu_a":"fini")", "false 0 sorti mort"},
      {"etat", "", R"("jusqu_a":"mort")", "true 0 sorti mort"},
      {"etat", "", R"("motif":"termin.\\]$")", "true 0 sorti motif"},  // "." is one character
  };
  for (const auto& c : cas) {
    const auto milan = [](const std::string& a) { return R"("agent":"milan")" + (a.empty() ? "" : "," + a); };
    appeler(c.avant, milan(c.arguments));
    const auto d = Json::parse(donnees("attendre", milan(c.attendre)));
    EXPECT_EQ(d["atteint"].dump() + " " + d["duree_s"].dump() + " " + d["etat"].get<std::string>() + " " +
                  d["raison"].get<std::string>(),
              c.attendu)
        << c.avant << " puis " << c.attendre;
  }
}

TEST_F(PlateauTest, AttendreRefuseCeQuIlNePeutPasGuetter) {
  const std::string milan = R"("agent":"Milan",)";
  appeler("dicter", milan + R"("texte":")" + std::string(150, 'a') + '"');
  jouer({
      {"attendre", "", "KO Il manque « agent »."},
      {"attendre", milan + R"("motif":"(a")", "KO « (a » n'est pas une expression régulière."},
      {"attendre", milan + R"("motif":"(a|aa)+$b")",
       "KO « (a|aa)+$b » demande trop de calcul : simplifie le motif."},
      {"attendre", milan + R"("motif":")" + std::string(200, 'x') + "é\"",
       "KO « motif » est trop long : 200 caractères au plus."},
  });
  plateau_.arreter();
  jouer({{"attendre", milan + R"("jusqu_a":"fini")", "KO La porte ferme."}});
}

TEST_F(PlateauTest, MemoireNomsEtTaches) {
  jouer({
      {"retiens", R"("texte":"La démo est jeudi","portee":"Global")", "C'est noté."},
      {"retiens", R"("texte":"Le port dev est 5173")", "C'est noté."},
      {"rappelle", R"("requete":"PORT ?")", "Le port dev est 5173"},
      {"aller_scene", R"("nom":"Atelier")", "Scène Atelier."},
      {"rappelle", "", "La démo est jeudi"},
      {"aller_scene", R"("nom":"Sources")", "Scène Sources."},
      {"nommage", R"("noms":"Mal, Opus 2")",
       "KO « Opus 2 » désigne un programme ou un modèle : un agent ne peut pas porter ce nom."},
      {"ouvrir_agent", "", "Harfang est ouvert : claude dans ~/Sources."},  // nothing changed
      {"nommage", R"("call_signs":["Mal","MAL"])", "Les prochains agents : Mal."},
      {"ouvrir_agent", R"("cli":"codex","dossier":"atelier")", "Mal est ouvert : codex dans ~/Atelier."},
      {"ouvrir_agent", R"("dossier":"/srv/x")", "Mal 2 est ouvert : claude dans /srv/x."},
      {"fermer", R"("cible":"mal 2")", "Fermé : Mal 2, dont la session tarnavelle-claude-3 continue."},
      {"nommage", R"("noms":"")", "Retour aux noms d'usine : Merlin, Milan, Harfang…"},
      {"ouvrir_agent", R"("cli":"vim")",
       "KO Aucun CLI ne s'appelle « vim ». Connus : claude, codex, grok, gemini, hermes."},
      {"pondre_agent", R"("cli":"codex","prompt":"a","nombre":9)", "KO « nombre » va de 1 à 8."},
      {"pondre_agent", R"("cli":"codex","prompt":"a","nom":"Ouvrier","nombre":2)",
       "Au travail : Ouvrier, Ouvrier 2."},
      {"pondre_agent", R"("cli":"grok","prompt":"b","verify":"make test")", "Au travail : Faucon."},
      {"fini", R"("agent":"Ouvrier","note":"fait")", "Ouvrier a fini : fait"},
      {"fini", R"("agent":"Faucon")", "Faucon a fini."},  // nobody ran the verify here
      {"taches", "", "Ouvrier : done. Ouvrier 2 : en cours. Faucon : unknown."},
      {"dicter", R"("agent":"ouvrier 2","texte":"exit")", "Envoyé à Ouvrier 2."},
      {"pipe_list", "", "Ouvrier : done. Ouvrier 2 : unknown. Faucon : unknown."},
  });
}

}  // namespace
}  // namespace tarnavelle::PorteEssai
