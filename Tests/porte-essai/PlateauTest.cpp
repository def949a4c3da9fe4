#include "Plateau.hpp"

#include <gtest/gtest.h>

#include "Motif.hpp"
#include "Noms.hpp"
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

/// A board and the calls made to it, written as the door receives them.
class PlateauTest : public testing::Test {
 protected:
  ReponsePorte appeler(std::string_view corps) {
    const auto objet = LectureJSON::objet(corps);
    EXPECT_TRUE(objet) << corps;
    return plateau_.executer(
        CommandeControle::decoderObjet(Champ::texte(*objet, "action"), objet.value_or(Json::object())));
  }

  /// The payload as one line, "REFUS : " and the reason for a refusal.
  std::string donnees(std::string_view corps) {
    const ReponsePorte r = appeler(corps);
    if (!r.ok) return "REFUS : " + r.error.value_or("");
    return r.data ? EcritureJSON::compacte(r.data->json()).value_or("illisible") : "";
  }

  struct Echange {
    std::string_view corps;
    std::string_view attendu;  ///< what is said, or "REFUS : " and the reason
  };
  void jouer(const std::vector<Echange>& echanges) {
    for (const Echange& e : echanges) {
      const ReponsePorte r = appeler(e.corps);
      EXPECT_EQ(r.ok ? r.spoken_text.value_or("") : "REFUS : " + r.error.value_or(""), e.attendu) << e.corps;
    }
  }

  HorlogeSauteuse horloge_;
  Plateau plateau_{horloge_};
};

TEST_F(PlateauTest, EtatALaFormeDUnRapportDeCockpit) {
  jouer({{R"({"action":"postit","texte":"livrer jeudi"})", "Post-it posé."},
         {R"({"action":"ouvrir_agent","cli":"GROK","hote":" forge.local "})",
          "Harfang est ouvert : grok dans ~/Sources."}});
  EXPECT_EQ(
      donnees(R"({"action":"state","format":"json"})"),
      R"({"agents":[{"etat":"au repos","hote":"","nom":"Merlin","tmux":"tarnavelle-claude"},)"
      R"({"etat":"au repos","hote":"forge.local","nom":"Harfang","tmux":"tarnavelle-grok"}],)"
      R"("ailleurs":[{"etat":"au repos","hote":"","nom":"Milan","scene":"Atelier","tmux":"tarnavelle-codex"}],)"
      R"("autres_scenes":["Atelier"],"crew":["Forge"],"dossier":"~/Sources","postits":["livrer jeudi"],)"
      R"("scene":"Sources"})");
}

TEST_F(PlateauTest, ScenesEtFenetres) {
  jouer({
      {R"({"action":"focus"})", "REFUS : Il manque « cible »."},
      {R"({"action":"focus","cible":"Foo"})",
       "REFUS : Aucune fenêtre ne s'appelle « Foo ». Ouvertes : Forge, Merlin, Milan."},
      {R"({"action":"focus","cible":"milan"})",
       "REFUS : Milan est sur la scène « Atelier » : c'est aller_scene qui y mène."},
      {R"({"action":"focus","cible":" FORGE"})", "Forge est en grand."},
      {R"({"action":"lire"})", "REFUS : Aucun agent n'est au regard. Ouverts : Merlin, Milan."},
      {R"({"action":"nommer_zone","nom":"l'Établi"})", "Forge répond aussi au nom de « l'Établi »."},
      {R"({"action":"nommer_zone","nom":"L'ETABLI","cible":"Forge"})",
       "Forge répond aussi au nom de « L'ETABLI »."},
      {R"({"action":"nommer_zone","nom":"l'établi","cible":"Merlin"})",
       "REFUS : « l'établi » désigne déjà autre chose."},
      {R"({"action":"focus","cible":"l'etabli"})", "Forge est en grand."},
      {R"({"action":"close","target":"forge"})", "Fermé : Forge."},
      {R"({"action":"focus","cible":"l'établi"})",
       "REFUS : Aucune fenêtre ne s'appelle « l'établi ». Ouvertes : Merlin, Milan."},
      {R"({"action":"fermer"})", "Fermé : Merlin, dont la session tarnavelle-claude continue."},
      {R"({"action":"fermer"})", "REFUS : Aucune fenêtre n'est au regard : nomme-la."},
      {R"({"action":"dicter","agent":"Merlin","texte":"va"})",
       "REFUS : Aucun agent ne s'appelle « Merlin ». Ouverts : Milan."},
      {R"({"action":"fini","agent":"Merlin"})", "Merlin a fini."},  // its session goes on
      {R"({"action":"aller_scene","nom":"Cave"})",
       "REFUS : Aucune scène ne s'appelle « Cave ». Scènes : Sources, Atelier."},
      {R"({"action":"aller_scene","nom":"~/atelier"})", "Scène Atelier."},
      {R"({"action":"lire"})", "Milan affiche : codex dans ~/Atelier"},
  });
}

TEST_F(PlateauTest, FermerToutEpargneCeQuOnNomme) {
  jouer({
      {R"({"action":"ouvrir_agent"})", "Harfang est ouvert : claude dans ~/Sources."},
      {R"({"action":"nommer_zone","nom":"le front","cible":"Merlin"})",
       "Merlin répond aussi au nom de « le front »."},
      {R"({"action":"fermer_tout","sauf":"Merlan, Forge"})",
       "REFUS : Aucune fenêtre ne s'appelle « Merlan ». Ouvertes : Forge, Merlin, Milan, Harfang."},
      {R"({"action":"fermer_tout","sauf":"LE FRONT","except":["forge"]})", "Fermé : Harfang."},
      {R"({"action":"fermer_tout"})", "Fermé : Forge, Merlin."},
      {R"({"action":"fermer_tout"})", "Rien à fermer."},
      {R"({"action":"etat"})", "Scène Sources. Milan : au repos (Atelier)."},
  });
}

TEST_F(PlateauTest, UnAgentTravaillePuisSeRepose) {
  jouer({
      {R"({"action":"dicter","texte":"relis ","valider":false})", "Posé chez Merlin."},
      {R"({"action":"dicter","texte":"le patch"})", "Envoyé à Merlin."},
      {R"({"action":"etat"})", "Scène Sources. Merlin : travaille. Milan : au repos (Atelier)."},
  });
  EXPECT_EQ(donnees(R"({"action":"attendre","agent":"Merlin"})"),
            R"({"agent":"Merlin","atteint":true,"duree_s":3,"etat":"au repos","raison":"idle"})");
  EXPECT_EQ(donnees(R"({"action":"lire"})"),
            R"({"agent":"Merlin","etat":"au repos","texte":"claude dans ~/Sources\n(saisie) relis \n)"
            R"(> relis le patch\nAu travail…\nFait : relis le patch"})");
  jouer({
      {R"({"action":"bloque","agent":"Merlin"})", "REFUS : Il manque « raison »."},
      {R"({"action":"bloque","raison":"x"})", "REFUS : Il manque « agent »."},
      {R"({"action":"bloque","agent":"tarnavelle-claude","raison":"écraser ?"})",
       "Merlin a besoin de vous : écraser ?"},
      {R"({"action":"etat"})", "Scène Sources. Merlin : attend une réponse. Milan : au repos (Atelier)."},
      {R"({"action":"dicter","texte":" Exit"})", "Envoyé à Merlin."},
      {R"({"action":"dicter","texte":"encore"})", "REFUS : Merlin est sorti : son processus a pris fin."},
      {R"({"action":"fini","agent":"Merlin"})", "REFUS : Merlin est sorti : son processus a pris fin."},
      {R"({"action":"fermer"})", "Fermé : Merlin."},
  });
}

TEST_F(PlateauTest, AttendreRendToujoursCeQuiSEstPasse) {
  const struct {
    std::string_view avant;
    std::string_view attendre;
    std::string_view attendu;  ///< without the agent's name, always Milan
  } cas[] = {
      {"", R"("jusqu_a":"fini","timeout_s":"301")",
       R"("atteint":false,"duree_s":300,"etat":"au repos","raison":"timeout"})"},
      {"", R"("jusqu_a":"besoin","timeout_s":-5)",
       R"("atteint":false,"duree_s":60,"etat":"au repos","raison":"timeout"})"},
      {R"("action":"dicter","texte":"va")", R"("timeout_s":2)",
       R"("atteint":false,"duree_s":2,"etat":"travaille","raison":"timeout"})"},
      {"", R"("motif":"^Fait : v.$","jusqu_a":"idle")",
       R"("atteint":true,"duree_s":1,"etat":"au repos","raison":"motif"})"},
      {"", R"("motif":"absent","timeout_s":"7")",
       R"("atteint":false,"duree_s":7,"etat":"au repos","raison":"timeout"})"},
      {R"("action":"bloque","raison":"?")", R"("jusqu_a":"Besoin")",
       R"("atteint":true,"duree_s":0,"etat":"attend une réponse","raison":"besoin"})"},
      {R"("action":"fini","note":"tout")", R"("jusqu_a":"fini")",
       R"("atteint":true,"duree_s":0,"etat":"au repos","raison":"fini"})"},
      {R"("action":"dicter","texte":"suite")", R"("jusqu_a":"fini","timeout_s":9)",  // a new instruction
       R"("atteint":false,"duree_s":9,"etat":"au repos","raison":"timeout"})"},
      {R"("action":"dicter","texte":"/quit")", R"("jusqu_a":"fini")",
       R"("atteint":false,"duree_s":0,"etat":"sorti","raison":"mort"})"},
      {"", R"("jusqu_a":"mort")", R"("atteint":true,"duree_s":0,"etat":"sorti","raison":"mort"})"},
      {"", R"("motif":"terminé")", R"("atteint":true,"duree_s":0,"etat":"sorti","raison":"motif"})"},
  };
  for (const auto& c : cas) {
    if (!c.avant.empty()) appeler(R"({"agent":"Milan",)" + std::string(c.avant) + "}");
    const std::string reste = c.attendre.empty() ? "" : "," + std::string(c.attendre);
    EXPECT_EQ(donnees(R"({"action":"attendre","agent":"milan")" + reste + "}"),
              R"({"agent":"Milan",)" + std::string(c.attendu))
        << c.avant << " puis " << c.attendre;
  }
}

TEST_F(PlateauTest, AttendreRefuseCeQuIlNePeutPasGuetter) {
  const auto motif = [](const std::string& m) {
    return R"({"action":"attendre","agent":"Milan","motif":")" + m + R"("})";
  };
  const std::string juste = motif(std::string(199, 'x') + "é");
  const std::string trop = motif(std::string(200, 'x') + "é");
  appeler(R"({"action":"dicter","agent":"Milan","texte":")" + std::string(150, 'a') + R"("})");
  jouer({
      {R"({"action":"attendre"})", "REFUS : Il manque « agent »."},
      {R"({"action":"attendre","agent":"Milan","jusqu_a":"demain"})",
       "REFUS : « jusqu_a » vaut idle, besoin, fini, mort ou motif, pas « demain »."},
      {R"({"action":"attendre","agent":"Milan","jusqu_a":"motif"})", "REFUS : Il manque « motif »."},
      {motif("(a"), "REFUS : « (a » n'est pas une expression régulière."},
      {motif("(a|aa)+$b"), "REFUS : « (a|aa)+$b » demande trop de calcul : simplifie le motif."},
      {juste, "Délai écoulé : rien de ce qui était attendu chez Milan."},
      {trop, "REFUS : « motif » est trop long : 200 caractères au plus."},
  });
  plateau_.arreter();
  jouer({{R"({"action":"attendre","agent":"Milan","jusqu_a":"fini"})", "REFUS : La porte ferme."}});
}

TEST_F(PlateauTest, MemoireDuCanvas) {
  jouer({
      {R"({"action":"retiens"})", "REFUS : Il manque « texte »."},
      {R"({"action":"retiens","texte":"x","portee":"lune"})",
       "REFUS : La portée est canvas ou global, pas « lune »."},
      {R"({"action":"retiens","texte":"Le port dev est 5173"})", "C'est noté."},
      {R"({"action":"retiens","texte":"La démo est jeudi","portee":"Global"})", "C'est noté."},
      {R"({"action":"retiens","texte":"Port de la démo : 8080"})", "C'est noté."},
      {R"({"action":"rappelle","requete":"météo"})", "Rien dans la mémoire là-dessus."},
      {R"({"action":"rappelle"})", "Port de la démo : 8080"},
  });
  EXPECT_EQ(donnees(R"({"action":"recall","requete":"DEMO, port ?","limite":"2"})"),
            R"({"fiches":[{"portee":"canvas","scene":"Sources","texte":"Port de la démo : 8080"},)"
            R"({"portee":"global","scene":"","texte":"La démo est jeudi"}]})");
  jouer({{R"({"action":"aller_scene","nom":"Atelier"})", "Scène Atelier."},
         {R"({"action":"rappelle","requete":"port","limite":0})", "Rien dans la mémoire là-dessus."},
         {R"({"action":"rappelle"})", "La démo est jeudi"}});
}

TEST_F(PlateauTest, NommageDistribueNumeroteEtRevientAuRoster) {
  jouer({
      {R"({"action":"nommage","noms":"Mal, Claude"})",
       "REFUS : « Claude » désigne un programme ou un modèle : un agent ne peut pas porter ce nom."},
      {R"({"action":"nommage","noms":["Zoe","Opus 2"]})",
       "REFUS : « Opus 2 » désigne un programme ou un modèle : un agent ne peut pas porter ce nom."},
      {R"({"action":"ouvrir_agent"})", "Harfang est ouvert : claude dans ~/Sources."},  // nothing changed
      {R"({"action":"nommage","call_signs":["Mal","Zoé","MAL"]})", "Les prochains agents : Mal, Zoé."},
      {R"({"action":"ouvrir_agent","cli":"codex","dossier":"atelier"})",
       "Mal est ouvert : codex dans ~/Atelier."},
      {R"({"action":"ouvrir_agent","dossier":"/srv/x"})", "Zoé est ouvert : claude dans /srv/x."},
      {R"({"action":"ouvrir_agent"})", "Mal 2 est ouvert : claude dans ~/Sources."},
      {R"({"action":"fermer","cible":"zoe"})", "Fermé : Zoé, dont la session tarnavelle-claude-3 continue."},
      {R"({"action":"nommage","noms":""})", "Retour aux noms d'usine : Merlin, Milan, Harfang…"},
      {R"({"action":"ouvrir_agent"})", "Faucon est ouvert : claude dans ~/Sources."},
      {R"({"action":"ouvrir_agent","cli":"vim"})",
       "REFUS : Aucun CLI ne s'appelle « vim ». Connus : claude, codex, grok, gemini, hermes."},
  });
}

TEST_F(PlateauTest, TachesSuivies) {
  jouer({
      {R"({"action":"pondre_agent","cli":"codex","prompt":"a","nombre":9})", "REFUS : « nombre » va de 1 à 8."},
      {R"({"action":"pondre_agent","cli":"codex","prompt":"a","nom":"codex"})",
       "REFUS : « codex » désigne un programme ou un modèle : un agent ne peut pas porter ce nom."},
      {R"({"action":"taches"})", "Aucune tâche."},
      {R"({"action":"pondre_agent","cli":"codex","prompt":"a","nom":"Ouvrier","nombre":2})",
       "Au travail : Ouvrier, Ouvrier 2."},
      {R"({"action":"pondre_agent","cli":"grok","prompt":"b","verify":"make test"})", "Au travail : Harfang."},
      {R"({"action":"fini","agent":"Ouvrier","note":"fait"})", "Ouvrier a fini : fait"},
      {R"({"action":"fini","agent":"Harfang"})", "Harfang a fini."},  // nobody ran the verify here
      {R"({"action":"taches"})", "Ouvrier : done. Ouvrier 2 : en cours. Harfang : unknown."},
      {R"({"action":"dicter","agent":"ouvrier 2","texte":"exit"})", "Envoyé à Ouvrier 2."},
      {R"({"action":"pipe_list"})", "Ouvrier : done. Ouvrier 2 : unknown. Harfang : unknown."},
  });
}

TEST_F(PlateauTest, LePlateauNeGrossitPasSansFin) {
  const std::string long_(16 * 1024, 'x');
  jouer({{R"({"action":"postit","texte":")" + long_ + R"("})", "Post-it posé."},
         {R"({"action":"postit","texte":"é)" + long_ + R"("})",
          "REFUS : « texte » est trop long : 16384 octets au plus."}});
  for (int i = 0; i < 62; ++i) ASSERT_TRUE(appeler(R"({"action":"ouvrir_agent"})").ok) << i;
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(appeler(R"({"action":"retiens","texte":"n"})").ok) << i;
  jouer({{R"({"action":"ouvrir_agent"})", "REFUS : Le plateau est plein : 64 agents au plus."},
         {R"({"action":"retiens","texte":"n"})", "REFUS : Le plateau est plein : 1000 fiches au plus."}});
  appeler(R"({"action":"dicter","agent":"Merlin","texte":")" + long_ + R"("})");
  EXPECT_LT(donnees(R"({"action":"lire","agent":"Merlin"})").size(), 500u);
}

TEST_F(PlateauTest, LeResteNEstPasCable) {
  EXPECT_EQ(appeler(R"({"action":"shell","commande":"ls"})"), ReponsePorte::pasCable);
  jouer(
      {{R"({"action":" Zut "})", "REFUS : Verbe inconnu : « Zut »."}, {"{}", "REFUS : Il manque « action »."}});
}

TEST(Motif, ChercheParLigneEtParCaractere) {
  const std::deque<std::string> ecran = {"port : 5173", "Terminé à l'été"};
  const struct {
    std::string_view motif;
    Motif::Resultat attendu;
  } cas[] = {{"port.*été", Motif::Resultat::absent},
             {"^Termin.\\sà", Motif::Resultat::present},
             {"[éè]t[éè]$", Motif::Resultat::present},
             {"\\d{4}$", Motif::Resultat::present},
             {"^5173", Motif::Resultat::absent}};
  for (const auto& c : cas) {
    const auto motif = Motif::lire(c.motif);
    ASSERT_TRUE(motif) << c.motif;
    EXPECT_EQ(motif->chercher(ecran), c.attendu) << c.motif;
  }
  for (const std::string_view mauvais : {"(", "[a", "*", "a{2,1}", "(?R)"})
    EXPECT_FALSE(Motif::lire(mauvais)) << mauvais;
}

}  // namespace
}  // namespace tarnavelle::PorteEssai
