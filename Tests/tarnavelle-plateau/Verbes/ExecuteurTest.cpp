#include "Verbes/Executeur.hpp"

#include <gtest/gtest.h>

#include "HorlogeSauteuse.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "TerminauxSimules/PlateauSimule.hpp"

namespace tarnavelle::Plateau {
namespace {

class ExecuteurTest : public testing::Test {
 protected:
  ReponsePorte appeler(std::string_view verbe, const std::string& arguments = "",
                       const Appelant& appelant = {}) {
    Json corps = Json::parse("{" + arguments + "}");
    corps["action"] = verbe;
    return executeur_.executer(corps, appelant);
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
  std::unique_ptr<PlateauSimule> plateau_ = PlateauSimule::depart(horloge_);
  Executeur& executeur_ = plateau_->executeur();
};

TEST_F(ExecuteurTest, ScenesEtFenetres) {
  jouer({
      {"focus", R"("cible":"Fo")", "KO Aucune fenêtre ne s'appelle « Fo ». Ouvertes : Forge, Merlin, Milan."},
      {"focus", R"("cible":"milan")", "KO Milan est sur la scène « Atelier » : c'est aller_scene qui y mène."},
      {"focus", R"("cible":" FORGE")", "Forge est en grand."},
      {"nommer_zone", R"("nom":"l'Établi")", "Forge répond aussi au nom de « l'Établi »."},
      {"nommer_zone", R"("nom":"l'établi","cible":"Merlin")", "KO « l'établi » désigne déjà autre chose."},
      {"focus", R"("cible":"l'etabli")", "Forge est en grand."},
      {"postit", R"("texte":"Relire la migration")", "Post-it posé."},
      {"postit", R"("texte":"Relire le patch")", "Post-it posé."},
      {"fermer", R"("cible":"relire")", "KO Plusieurs post-it commencent par « relire » : donne la suite."},
      {"fermer", R"("cible":"relire la")", "Post-it retiré : « Relire la migration »."},
      {"close", R"("target":"forge")", "Fermé : Forge."},
      {"fermer", "", "Fermé : Merlin, dont la session tarnavelle-claude continue."},
      {"fermer", "", "KO Aucune fenêtre n'est au regard : nomme-la."},
      {"dicter", R"("agent":"Merlin","texte":"va")", "KO Merlin est fermé : focus le rouvre."},
      {"lire", R"("agent":"merlin")", "KO Merlin est fermé : focus le rouvre."},
      {"fermer", R"("cible":"Merlin")", "KO Merlin est déjà fermé : focus le rouvre."},
      {"etat", "", "Scène Sources. Milan : au repos (Atelier). Merlin : au repos (fermé)."},
      {"focus", R"("cible":"Merlin")", "Rouvert. Merlin est en grand."},
      {"lire", "", "Merlin affiche : claude dans ~/Sources"},
      {"fermer", "", "Fermé : Merlin, dont la session tarnavelle-claude continue."},
      {"fini", R"("agent":"Merlin")", "Merlin a fini."},  // its session goes on
      {"aller_scene", R"("nom":"~/atelier")", "Scène Atelier."},
      {"lire", "", "Milan affiche : codex dans ~/Atelier"},
      {"shell", R"("commande":"ls")", "KO pas encore câblé"},
      {" Zut ", "", "KO Verbe inconnu : « Zut »."},
  });
}

TEST_F(ExecuteurTest, UnArgumentIllisibleNEstPasAbsent) {
  jouer({
      {"dicter", R"("agent":["Milan"],"texte":"va")", "KO « agent » doit être un texte."},
      {"fermer", R"("cible":42)", "KO « cible » doit être un texte."},
      {"fermer_tout", R"("sauf":[42])", "KO « sauf » doit être un texte."},
      {"fermer_tout", R"("sauf":{"a":"Forge"})", "KO « sauf » doit être un texte."},
      {"diffuser", R"("texte":"x","scene_seulement":"peut-être")",
       "KO « scene_seulement » vaut true ou false."},
      {"relais", R"("evenement":"fini","destinataire":"Milan","texte":"x")", "KO Il manque « agent »."},
      {"relais", R"("agent":["Merlin"])", "KO Il manque « agent »."},
      {"attendre", R"("agent":"Merlin","timeout_s":1,"jusqu_a":null,"motif":"")", "Merlin s'est calmé."},
      {"nommage", R"("noms":["Mal","Zoe, Wash"])", "Les prochains agents : Mal, Zoe, Wash."},
      {"fermer_tout", R"("sauf":["Forge","Merlin"])", "Rien à fermer."},
  });
}

TEST_F(ExecuteurTest, LesServicesDuPlateau) {
  jouer({
      {"relais", "", "Aucun relais n'est armé."},
      {"relais", R"("agent":"Merlin")", "KO Il manque « evenement »."},
      {"relais", R"("agent":"Merlin","evenement":"mort")",
       "KO « evenement » vaut fini ou besoin, pas « mort »."},
      {"relais", R"("agent":"Merlin","evenement":"fini","destinataire":"merlin","texte":"x")",
       "KO Un relais va d'un agent à un autre."},
      {"relais", R"("agent":"Merlin","evenement":"Fini","destinataire":"Milan","texte":" ")",
       "KO Il manque « texte »."},
      {"relais", R"("agent":"Merlin","evenement":"Fini","destinataire":"Milan","texte":"va")",
       "Quand Merlin aura fini, Milan sera averti."},
      {"fini", R"("agent":"Merlin")", "Merlin a fini."},
      {"relais", "", "Aucun relais n'est armé."},
      {"relais", R"("agent":"Merlin","evenement":"fini","destinataire":"Milan","texte":"va")",
       "C'est déjà le cas : Milan en est averti."},
      {"pourquoi", R"("agent":"Merlin")", "Merlin : fini, d'après la porte « fini » ; claude."},
      {"journal", R"("nombre":"0")", "KO « nombre » va de 1 à 10000."},
      {"eteindre", "", "KO pas encore câblé"},
  });
  EXPECT_EQ(executeur_.avancer(), 1u);  // Milan is at work with it; the other one waits
  const auto reste = plateau_->registre().messages();
  ASSERT_TRUE(reste && reste->size() == 1);
  EXPECT_EQ(reste->front().expediteur + " : " + reste->front().texte, "Merlin : va");
  const std::string agent = plateau_->registre().agents()->front().id;
  EXPECT_EQ(appeler("Éteindre", "", {.agent = agent, .patience = {}}).error, "Verbe inconnu : « Éteindre ».");
  EXPECT_EQ(appeler("ETEINDRE", R"("oui":true)", {.agent = agent, .patience = {}}).error,
            "eteindre est réservé à l'opérateur.");
  const auto lignes = plateau_->registre().journal(3);
  ASSERT_TRUE(lignes);
  EXPECT_EQ((*lignes)[0].verbe + " " + (*lignes)[0].qui + " " + (*lignes)[0].issue, "eteindre Merlin refusé");
}

TEST_F(ExecuteurTest, FermerToutEpargneCeQuOnNomme) {
  jouer({
      {"nommer_zone", R"("nom":"le front","cible":"Merlin")", "Merlin répond aussi au nom de « le front »."},
      {"fermer_tout", R"("sauf":"Merlan, Forge")",
       "KO Aucune fenêtre ne s'appelle « Merlan ». Ouvertes : Forge, Merlin, Milan."},
      {"fermer_tout", R"("sauf":"LE FRONT")", "Fermé : Forge."},
      {"fermer_tout", "", "Fermé : Merlin. Continue : Merlin."},
  });
  const IdTerminal merlin{plateau_->registre().agents()->front().terminal};
  plateau_->terminaux().coller(merlin, "exit");
  plateau_->terminaux().presser(merlin, {"entree"});
  jouer({
      {"fermer", R"("cible":"le front")", "Fermé : Merlin."},
      {"etat", "", "Scène Sources. Milan : au repos (Atelier)."},
  });
}

TEST_F(ExecuteurTest, UnAgentTravaillePuisSeRepose) {
  jouer({
      {"dicter", R"("texte":"relis ","valider":false)", "Posé chez Merlin."},
      {"diffuser", R"("texte":"va")", "Reçu par Milan. Manqué : Merlin (un texte y est posé)."},
      {"dicter", R"("texte":"le patch")", "Envoyé à Merlin."},
      {"etat", "", "Scène Sources. Merlin : travaille. Milan : travaille (Atelier)."},
  });
  EXPECT_EQ(donnees("attendre", R"("agent":"Merlin")"),
            R"({"agent":"Merlin","atteint":true,"duree_s":3,"etat":"au repos","raison":"idle"})");
  EXPECT_EQ(donnees("lire", ""), R"({"agent":"Merlin","etat":"au repos","texte":"claude dans ~/Sources\n)"
                                 R"(> relis le patch\nAu travail…\nFait : relis le patch"})");
  jouer({
      {"bloque", R"("agent":"tarnavelle-claude","raison":"où ?")", "Merlin a besoin de vous : où ?"},
      {"etat", "", "Scène Sources. Merlin : attend une réponse. Milan : au repos (Atelier)."},
      {"dicter", R"("texte":" Exit")", "Envoyé à Merlin."},
      {"fini", R"("agent":"Merlin")", "KO Merlin est sorti : son processus a pris fin."},
      {"fermer", "", "Fermé : Merlin."},
  });
}

TEST_F(ExecuteurTest, AttendreRendToujoursCeQuiSEstPasse) {
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
      {"etat", "", R"("jusqu_a":"idle")", "true 0 attend une réponse besoin"},
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

TEST_F(ExecuteurTest, AttendreSuitUnAgentRelance) {
  horloge_.pendant = [&] {
    jouer({{"relancer_agent", R"("agent":"Milan")", "Milan est relancé : un processus neuf, le même dossier."},
           {"dicter", R"("agent":"Milan","texte":"neuf")", "Envoyé à Milan."}});
  };
  jouer({{"attendre", R"("agent":"Milan","motif":"^> neuf$")", "Le motif est à l'écran de Milan."}});
}

TEST_F(ExecuteurTest, AttendreRefuseCeQuIlNePeutPasGuetter) {
  const std::string milan = R"("agent":"Milan",)";
  appeler("dicter", milan + R"("texte":")" + std::string(150, 'a') + '"');
  jouer({
      {"attendre", "", "KO Il manque « agent »."},
      {"attendre", milan + R"("motif":"3","jusqu_a":"besoin")",
       "KO « motif » ne va pas avec « jusqu_a » « besoin » : c'est l'un ou l'autre."},
      {"attendre", milan + R"("motif":"(a")", "KO « (a » n'est pas une expression régulière."},
      {"attendre", milan + R"("motif":"a{1001}")",
       "KO « a{1001} » demande trop de calcul : simplifie le motif."},
      {"attendre", milan + R"("motif":")" + std::string(200, 'x') + "é\"",
       "KO « motif » est trop long : 200 caractères au plus."},
  });
  executeur_.arreter();
  jouer({{"attendre", milan + R"("jusqu_a":"fini")", "KO La porte ferme."}});
}

TEST_F(ExecuteurTest, MemoireNomsEtTaches) {
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

TEST_F(ExecuteurTest, CeQuiEstTapeEstRapporteCommeVu) {
  const IdTerminal merlin{plateau_->registre().agents()->front().terminal};
  jouer({
      {"dicter", R"("texte":"/compact")", "Envoyé à Merlin. C'est une commande de claude, pas un message."},
      {"envoyer_touches", R"("agent":"Merlin","touches":"esc zut")",
       "KO Touche inconnue : « zut ». Rien n'a été tapé. Connues : esc, entree, tab, haut, bas, gauche, "
       "droite, "
       "espace, ctrl+c, ctrl+d, ctrl+z, ctrl+u, ctrl+r, ou un caractère seul."},
      {"envoyer_touches", R"("agent":"Merlin","touches":" ESC ")", "Tapé chez Merlin : esc."},
      {"lire", "", "Merlin affiche : Interrompu : /compact"},
  });
  plateau_->terminaux().coller(merlin, "je ta");  // a person types
  jouer({
      {"dicter", R"("texte":"va")",
       "KO Rien n'a été tapé chez Merlin : quelqu'un a un texte dans sa boîte de saisie."},
      {"diffuser", R"("texte":"!stop")",
       "Reçu par Milan. Manqué : Merlin (quelqu'un a un texte dans sa boîte de saisie)."},
      {"lire", R"("agent":"Milan")", "Milan affiche : Au travail…"},
      {"envoyer_touches", R"("agent":"Merlin","touches":"ctrl+u")", "Tapé chez Merlin : ctrl+u."},
      {"dicter", R"("texte":"demande un mot")", "Envoyé à Merlin."},
      {"dicter", R"("texte":"n")", "KO Rien n'a été tapé chez Merlin : un dialogue attend une réponse."},
      {"attendre", R"("agent":"Merlin","jusqu_a":"besoin")", "Merlin attend une réponse."},
      {"envoyer_touches", R"("agent":"Merlin","touches":"o")", "Tapé chez Merlin : o."},
      {"lire_terminal", R"("agent":"Merlin","depuis_prompt":true)", "Merlin affiche : Fait : demande un mot"},
      {"lire_terminal", R"("agent":"Milan","depuis_prompt":true)", "Milan affiche : Au travail…"},
      {"resumer", R"("agent":"Merlin")", "Continuer ? o, n\nFait : demande un mot"},
      {"relancer_agent", R"("agent":"Merlin")", "Merlin est relancé : un processus neuf, le même dossier."},
      {"lire", R"("agent":"Merlin")", "Merlin affiche : claude dans ~/Sources"},
  });
  EXPECT_EQ(donnees("dicter", R"("texte":"x","valider":false,"agent":"Milan")"),
            R"({"agent":"Milan","etat":"travaille","livraison":"pose"})");
}

TEST_F(ExecuteurTest, UnMessageEstDonneUneFoisAuRepos) {
  const std::string milan = plateau_->registre().agents()->back().id;
  jouer({{"dicter", R"("texte":"va")", "Envoyé à Merlin."}});
  EXPECT_EQ(
      appeler("souffler", R"("agent":"Merlin","texte":"/relis")", {.agent = milan, .patience = {}}).spoken_text,
      "Gardé pour Merlin : il l'aura dès qu'il sera au repos.");
  EXPECT_EQ(executeur_.avancer(), 0U);
  const Json etat = Json::parse(donnees("etat", ""));
  EXPECT_EQ(etat["messages"][0]["de"], "Milan");
  EXPECT_EQ(etat["agents"][0]["messages"], 1);
  jouer({{"attendre", R"("agent":"Merlin")", "Merlin s'est calmé."}});
  EXPECT_EQ(executeur_.avancer(), 1U);
  EXPECT_EQ(executeur_.avancer(), 0U);
  jouer({
      {"lire", "", "Merlin affiche : Au travail…"},
      {"attendre", R"("agent":"Merlin","motif":"^> Message de Milan : /relis$")",
       "Le motif est à l'écran de Merlin."},
      {"souffler", R"("agent":"Milan","texte":"bonjour")", "Soufflé à Milan."},
  });
  EXPECT_FALSE(Json::parse(donnees("etat", "")).contains("messages"));
}

TEST_F(ExecuteurTest, UnMessageRefuseNEstPasRetenteSansFin) {
  plateau_->terminaux().coller({plateau_->registre().agents()->front().terminal}, "je ta");  // a person types
  jouer({{"souffler", R"("agent":"Merlin","texte":"a")",
          "Gardé pour Merlin : quelqu'un a un texte dans sa boîte de saisie."}});
  EXPECT_EQ(Json::parse(donnees("etat", ""))["messages"][0]["raison"],
            "quelqu'un a un texte dans sa boîte de saisie");
  EXPECT_EQ(executeur_.avancer(), 0U);
  const Instant avant = horloge_.maintenant();
  for (int i = 0; i < 10; ++i) EXPECT_EQ(executeur_.avancer(), 0U);
  EXPECT_EQ(horloge_.maintenant(), avant);  // a look takes its time
  jouer({{"envoyer_touches", R"("agent":"Merlin","touches":"ctrl+u")", "Tapé chez Merlin : ctrl+u."},
         {"attendre", R"("agent":"Milan","jusqu_a":"mort","timeout_s":5)",
          "Délai écoulé : rien de ce qui était attendu chez Milan."}});
  EXPECT_EQ(executeur_.avancer(), 1U);
}

TEST_F(ExecuteurTest, LaPorteSaitQuiAppelleEtLeNote) {
  const std::string milan = plateau_->registre().agents()->back().id;
  const Appelant lui{.agent = milan, .patience = std::chrono::seconds(5)};
  EXPECT_EQ(appeler("fini", R"("agent":"Merlin")", lui).error,
            "fini se déclare pour soi : tu es Milan, pas Merlin.");
  EXPECT_EQ(appeler("fini", "", lui).spoken_text, "Milan a fini.");
  EXPECT_EQ(appeler("attendre", R"("agent":"Merlin","jusqu_a":"mort")", lui).spoken_text,
            "Délai écoulé : rien de ce qui était attendu chez Merlin. Relance attendre pour continuer.");
  EXPECT_EQ(horloge_.maintenant(), Instant{} + std::chrono::seconds(5));
  std::string lignes;
  for (const FicheJournal& l : *plateau_->registre().journal(3))
    lignes += l.qui + " " + l.verbe + " " + l.cible + " " + l.issue + "\n";
  EXPECT_EQ(lignes, "Milan attendre Merlin fait\nMilan fini  fait\nMilan fini Merlin refusé\n");
}

}  // namespace
}  // namespace tarnavelle::Plateau
