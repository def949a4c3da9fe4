// What the registry is told comes back as it was, and follows what happens to agents, tasks and messages.
#include "Registre/Registre.hpp"

#include <gtest/gtest.h>

#include <thread>

namespace tarnavelle::Plateau {
namespace {

using Cas = Avarie::Cas;
using std::chrono::milliseconds;

Date::Instant a(std::int64_t millisecondes) { return Date::Instant(milliseconds(millisecondes)); }

class RegistreFiches : public testing::Test {
 protected:
  Garde<Registre> registre = Registre::enMemoire();
};

template <class T>
std::optional<Cas> echec(const Garde<T>& garde) {
  return garde ? std::nullopt : std::optional(garde.raison().cas);
}

TEST_F(RegistreFiches, ReviennentTellesQuelles) {
  const std::string hostile("\0\xff«'\";--\n%_\x1b[31m", 18);
  const FicheAgent agents[] = {
      {.id = "a1", .nom = "Merlin"},
      {.id = "a2",
       .nom = hostile,
       .etiquettes = {"le front", hostile + "2"},
       .programme = "codex",
       .dossier = "/tmp/a b",
       .hote = "loin",
       .scene = 3,
       .ouvert = false,
       .noeud = "noeud",
       .mots = {"codex", "", "--x=\xff", ""},
       .conversation = "c",
       .session = "s",
       .terminal = "%1",
       .ouverture = a(5),
       .etat = "travaille",
       .depuis = a(-7),
       .termine = true,
       .consigne = {.empreinte = "e", .extrait = hostile, .quand = a(9)},
       .entamee = true},
  };
  for (const auto& agent : agents) {
    ASSERT_TRUE(registre->garderAgent(agent));
    EXPECT_EQ(*registre->agent(agent.id), agent);
  }
  EXPECT_EQ(*registre->agents(), std::vector(std::begin(agents), std::end(agents)));

  const FicheFenetre fenetres[] = {
      {.id = "f1", .nom = "tests", .commande = hostile, .ouverture = a(2), .termine = true, .statut = 0},
      {.id = "f2", .nom = "serveur", .etiquettes = {"api"}, .dossier = "/", .scene = 1, .ouverture = a(3)}};
  for (const auto& fenetre : fenetres) ASSERT_TRUE(registre->garderFenetre(fenetre));
  EXPECT_EQ(*registre->fenetres(), std::vector(std::begin(fenetres), std::end(fenetres)));

  const FicheNote note{.numero = 1, .texte = hostile, .scene = 2, .auteur = "Merlin", .quand = a(4)};
  EXPECT_EQ(*registre->noter(note), 1);
  EXPECT_EQ(*registre->rappeler({.requete = "", .scene = 2}), std::vector{note});

  const FichePostIt postit{.numero = 1, .texte = hostile, .scene = 2, .quand = a(4)};
  EXPECT_EQ(*registre->coller(postit), 1);
  EXPECT_EQ(*registre->postits(), std::vector{postit});
  EXPECT_TRUE(registre->decoller(1));
  EXPECT_EQ(registre->postits()->size(), 0U);
  EXPECT_EQ(*registre->coller(postit), 2);  // a number is never given again

  const FicheTache tache{.numero = 1,
                         .agent = "a1",
                         .nomAgent = "Merlin",
                         .prompt = hostile,
                         .verify = "true",
                         .exemplaire = 2,
                         .nombre = 3,
                         .etat = FicheTache::Etat::unknown,
                         .note = "n",
                         .rapportee = a(1),
                         .sortie = "s",
                         .pondue = a(2),
                         .close = a(3),
                         .issue = "statut 1"};
  EXPECT_EQ(*registre->pondre(tache), 1);
  EXPECT_EQ(*registre->taches(), std::vector{tache});

  const FicheMessage message{.numero = 1,
                             .expediteur = "vous",
                             .destinataire = "a1",
                             .nomDestinataire = "Merlin",
                             .texte = hostile,
                             .quand = a(6),
                             .etat = FicheMessage::Etat::perdu};
  EXPECT_EQ(*registre->souffler(message), 1);
  EXPECT_EQ(*registre->messages(), std::vector{message});

  const FicheRelais relais{
      .numero = 1, .agent = "a1", .evenement = "fini", .destinataire = "a2", .texte = hostile, .quand = a(6)};
  EXPECT_EQ(*registre->armer(relais), 1);
  EXPECT_EQ(*registre->relais(), std::vector{relais});

  for (int i = 1; i <= 3; ++i)
    ASSERT_TRUE(
        registre->inscrire({.quand = a(i), .qui = hostile, .verbe = "dicter", .cible = "a1", .issue = "ok"}));
  const auto journal = registre->journal(2);
  ASSERT_EQ(journal->size(), 2U);
  EXPECT_EQ(journal->front(), (FicheJournal{3, a(3), hostile, "dicter", "a1", "ok"}));

  const std::vector<std::string> indicatifs = {"Mal", "Zoé", "Wash"};
  ASSERT_TRUE(registre->reglerIndicatifs({"ancien"}));
  ASSERT_TRUE(registre->reglerIndicatifs(indicatifs));
  EXPECT_EQ(*registre->indicatifs(), indicatifs);
}

TEST_F(RegistreFiches, UnNomNeDesigneQuUneChose) {
  ASSERT_TRUE(registre->garderAgent({.id = "a1", .nom = "Épervier", .session = "tarn_claude"}));
  ASSERT_TRUE(registre->garderFenetre({.id = "f1", .nom = "tests"}));
  ASSERT_TRUE(registre->etiqueter("f1", "le Tunnel"));
  const struct {
    const char* nom;
    std::optional<std::string> id;
  } cas[] = {{"  EPERVIER ", "a1"}, {"tarn_claude", "a1"}, {"le tunnel", "f1"}, {"TESTS", "f1"}, {"", {}},
             {"autre", {}}};
  for (const auto& c : cas) EXPECT_EQ(*registre->designe(c.nom), c.id) << c.nom;

  const auto pris = registre->garderAgent({.id = "a2", .nom = "LE TUNNEL"});
  EXPECT_EQ(pris ? Avarie{} : pris.raison(), (Avarie{Cas::pris, "« LE TUNNEL » désigne déjà autre chose."}));
  EXPECT_EQ(*registre->agent("a2"), std::nullopt);
  EXPECT_EQ(echec(registre->etiqueter("a1", "Tests")), Cas::pris);
  EXPECT_EQ(echec(registre->etiqueter("a9", "x")), Cas::absent);
  EXPECT_TRUE(registre->etiqueter("a1", "epervier"));  // its own name
  ASSERT_TRUE(registre->garderAgent({.id = "a1", .nom = "Buse"}));
  EXPECT_EQ(*registre->designe("epervier"), std::nullopt);
  ASSERT_TRUE(registre->oublierFenetre("f1"));
  EXPECT_EQ(echec(registre->oublierFenetre("f1")), Cas::absent);
  EXPECT_TRUE(registre->garderAgent({.id = "a2", .nom = "tests", .etiquettes = {"le tunnel"}}));
}

TEST_F(RegistreFiches, UneSeuleSceneEstVisible) {
  EXPECT_EQ(*registre->ajouterScene("Sources", "/s"), 1);
  EXPECT_EQ(*registre->ajouterScene("Atelier", "/a"), 2);
  EXPECT_EQ(echec(registre->ajouterScene("ATELIER", "/b")), Cas::pris);
  ASSERT_TRUE(registre->regarder(1, "a1"));
  EXPECT_EQ(*registre->scenes(),
            (std::vector<FicheScene>{{1, "Sources", "/s", "a1", true}, {2, "Atelier", "/a", "", false}}));
  ASSERT_TRUE(registre->montrerScene(2));
  EXPECT_EQ(echec(registre->montrerScene(9)), Cas::absent);
  EXPECT_EQ(echec(registre->regarder(9, "a1")), Cas::absent);
  ASSERT_TRUE(registre->garderAgent({.id = "a1", .nom = "Merlin"}));
  ASSERT_TRUE(registre->oublierAgent("a1", a(1)));
  EXPECT_EQ(*registre->scenes(),
            (std::vector<FicheScene>{{1, "Sources", "/s", "", false}, {2, "Atelier", "/a", "", true}}));
}

TEST_F(RegistreFiches, UnAgentSuitSaVie) {
  ASSERT_TRUE(registre->garderAgent({.id = "a1", .nom = "Merlin"}));
  ASSERT_TRUE(registre->noterEtat("a1", "besoin", a(5)));
  ASSERT_TRUE(registre->noterConsigne("a1", std::string(100, 'a') + "b", a(6)));
  const auto agent = **registre->agent("a1");
  EXPECT_EQ(agent.etat, "besoin");
  EXPECT_EQ(agent.depuis, a(5));
  EXPECT_EQ(agent.consigne,
            (FicheConsigne{empreinteTexte(std::string(100, 'a') + "b"), std::string(80, 'a'), a(6)}));
  EXPECT_EQ(empreinteTexte("foobar"), "85944171f73967e8");  // a vector of the algorithm's page
  EXPECT_EQ(echec(registre->noterEtat("a9", "", a(0))), Cas::absent);
  EXPECT_EQ(echec(registre->noterConsigne("a9", "", a(0))), Cas::absent);
  EXPECT_EQ(echec(registre->oublierAgent("a9", a(0))), Cas::absent);
}

TEST_F(RegistreFiches, UneTacheEstRapporteePuisJugee) {
  const auto numero = *registre->pondre({.agent = "a1"});
  ASSERT_TRUE(registre->rapporter(numero, "fait", a(5)));
  const std::string sortie = std::string(Registre::sortieMax, 'x') + "é";
  ASSERT_TRUE(registre->juger(numero, {.sortie = "raté", .issue = "statut 1"}, a(5)));
  EXPECT_EQ(registre->tachesAJuger()->size(), 0U);
  ASSERT_TRUE(registre->rapporter(numero, "fait", a(5)));  // repaired
  EXPECT_EQ(registre->tachesAJuger()->front().issue, "");
  ASSERT_TRUE(registre->juger(numero, {FicheTache::Etat::done, "é" + sortie, "statut 0"}, a(6)));
  const auto tache = registre->taches()->front();
  EXPECT_EQ(tache.note, "fait");
  EXPECT_EQ(tache.rapportee, a(5));
  EXPECT_EQ(tache.etat, FicheTache::Etat::done);
  EXPECT_EQ(tache.sortie, std::string(Registre::sortieMax - 2, 'x') + "é");
  EXPECT_EQ(tache.close, a(6));
  EXPECT_EQ(echec(registre->rapporter(numero, "encore", a(7))), Cas::absent);  // it is done
  auto close = tache;
  close.sortie.clear();
  EXPECT_EQ(*registre->tachesCloses(), std::vector{close});

  ASSERT_TRUE(registre->garderAgent({.id = "a1", .nom = "Merlin"}));
  ASSERT_TRUE(registre->pondre({.agent = "a1", .prompt = std::string(300, 'x')}));
  EXPECT_EQ(registre->tachesCloses()->size(), 1U);
  ASSERT_TRUE(registre->oublierAgent("a1", a(8)));
  EXPECT_EQ(registre->tachesCloses()->back().prompt, std::string(Registre::champMax, 'x'));
  EXPECT_EQ(registre->taches()->back().etat, FicheTache::Etat::unknown);
  EXPECT_EQ(registre->taches()->back().close, a(8));
  EXPECT_EQ(registre->taches()->front().close, a(6));
}

TEST_F(RegistreFiches, UnMessageEstDonneUneFoisAuPlus) {
  using Etat = FicheMessage::Etat;
  ASSERT_TRUE(registre->garderAgent({.id = "a1", .nom = "Merlin"}));
  for (const char* texte : {"un", "deux", "trois"})
    ASSERT_TRUE(registre->souffler({.destinataire = "a1", .texte = texte}));
  const auto prendre = [&] {
    const auto pris = registre->prendreMessage("a1");
    return pris && *pris ? (*pris)->texte : "rien";
  };
  const auto etats = [&] {
    std::vector<std::pair<std::int64_t, Etat>> lus;
    const auto messages = registre->messages();
    for (const FicheMessage& m : *messages) lus.emplace_back(m.numero, m.etat);
    return lus;
  };
  using Etats = std::vector<std::pair<std::int64_t, Etat>>;
  EXPECT_EQ(*registre->prendreMessage("a2"), std::nullopt);
  EXPECT_EQ(prendre(), "un");
  EXPECT_EQ(prendre(), "rien");  // until the first one's fate is known
  ASSERT_TRUE(registre->rendreMessage(1));
  EXPECT_EQ(echec(registre->rendreMessage(1)), Cas::absent);
  EXPECT_EQ(prendre(), "un");
  ASSERT_TRUE(registre->retirerMessage(1));
  EXPECT_EQ(prendre(), "deux");
  ASSERT_TRUE(registre->douterMessage(2));
  EXPECT_EQ(echec(registre->rendreMessage(2)), Cas::absent);  // perhaps typed: never again
  EXPECT_EQ(prendre(), "trois");
  EXPECT_EQ(etats(), (Etats{{2, Etat::douteux}, {3, Etat::pris}}));
  ASSERT_TRUE(registre->souffler({.destinataire = "a1", .texte = "quatre"}));
  ASSERT_TRUE(registre->oublierAgent("a1", a(1)));
  EXPECT_EQ(etats(), (Etats{{2, Etat::douteux}, {3, Etat::douteux}, {4, Etat::perdu}}));
  EXPECT_EQ(prendre(), "rien");
  // Those that nobody will give any more make room, the oldest first, and go after a while; the others stay.
  for (auto i = Registre::fichesMax; i > 3; --i)
    ASSERT_TRUE(registre->souffler({.destinataire = "a1", .texte = "x"}));
  ASSERT_TRUE(registre->souffler({.destinataire = "a2", .texte = "x"}));
  EXPECT_EQ(registre->messages()->front().numero, 3);
  EXPECT_EQ(*registre->destinataires(), (std::vector<std::string>{"a1", "a2"}));
  EXPECT_EQ(*registre->courrier(), (std::map<std::string, std::size_t>{{"a1", 999}, {"a2", 1}}));
  ASSERT_TRUE(registre->oublierMessages(a(1) + Registre::messageGarde));
  EXPECT_EQ(registre->messages()->front().etat, Etat::attend);
}

TEST_F(RegistreFiches, UnRelaisSeDeclencheUneFois) {
  ASSERT_TRUE(registre->garderAgent({.id = "a1", .nom = "Merlin"}));
  ASSERT_TRUE(registre->garderAgent({.id = "a2", .nom = "Milan"}));
  ASSERT_TRUE(registre->armer({.agent = "a1", .evenement = "fini", .destinataire = "a2", .texte = "à toi"}));
  ASSERT_TRUE(registre->armer({.agent = "a1", .evenement = "besoin", .destinataire = "a2", .texte = "aide"}));
  EXPECT_EQ(registre->declencher("a1", "fini", a(3))->size(), 1U);
  EXPECT_EQ(registre->declencher("a1", "fini", a(4))->size(), 0U);
  EXPECT_EQ(*registre->messages(),
            (std::vector<FicheMessage>{{1, "Merlin", "a2", "Milan", "à toi", a(3), {}}}));
  ASSERT_TRUE(registre->armer({.agent = "a1", .evenement = "fini", .destinataire = "a2", .texte = "à toi"}));
  ASSERT_TRUE(registre->rompreRelais("a1", a(5)));  // it has ended: one message for both
  ASSERT_TRUE(registre->armer({.agent = "a1", .evenement = "fini", .destinataire = "a2", .texte = "à toi"}));
  ASSERT_TRUE(registre->armer({.agent = "a2", .evenement = "besoin", .destinataire = "a1", .texte = "aide"}));
  ASSERT_TRUE(registre->oublierAgent("a2", a(6)));
  EXPECT_EQ(registre->relais()->size(), 0U);
  std::vector<std::string> textes;
  for (const FicheMessage& m : *registre->messages()) textes.push_back(m.nomDestinataire + " : " + m.texte);
  EXPECT_EQ(textes, (std::vector<std::string>{"Milan : à toi", "Milan : Merlin est sorti sans avoir fini.",
                                              "Merlin : Milan est sorti."}));
}

TEST_F(RegistreFiches, ToutEstBorne) {
  const Avarie plein{Cas::borne, "Le plateau est plein : 1000 fiches au plus."};
  const std::function<Garde<std::int64_t>(int)> ajouts[] = {
      [&](int) { return registre->noter({.texte = "n"}); },
      [&](int) { return registre->coller({.texte = "p"}); },
      [&](int) { return registre->pondre({.agent = "a"}); },
      [&](int) { return registre->souffler({.texte = "m"}); },
      [&](int) { return registre->armer({.texte = "r"}); },
      [&](int i) { return registre->ajouterScene("s" + std::to_string(i), ""); },
  };
  for (const auto& ajouter : ajouts) {
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(ajouter(i));
    const auto deTrop = ajouter(1000);
    EXPECT_EQ(deTrop ? Avarie{} : deTrop.raison(), plein) << &ajouter - ajouts;
  }
  ASSERT_TRUE(registre->juger(5, {FicheTache::Etat::done}, a(1)));
  EXPECT_EQ(*registre->pondre({.agent = "a"}), 1001);  // a closed one leaves
  EXPECT_EQ(registre->taches()->size(), 1000U);

  EXPECT_EQ(echec(registre->noterConsigne("a", "x", a(0))), Cas::absent);
  const std::string enorme(Registre::texteMax + 1, 'x');
  ASSERT_TRUE(registre->decoller(1));
  const auto tropLong = registre->coller({.texte = enorme});
  EXPECT_EQ(tropLong ? Avarie{} : tropLong.raison(),
            (Avarie{Cas::borne, "Un texte de plus de 256 Kio n'entre pas dans le registre."}));
  EXPECT_TRUE(registre->coller({.texte = enorme.substr(1)}));
  ASSERT_TRUE(registre->inscrire({.qui = enorme, .verbe = "v"}));
  EXPECT_EQ(registre->journal(1)->front().qui, std::string(Registre::champMax, 'x') + "…");
  for (int i = 0; i < Registre::journalMax; ++i) registre->inscrire({.verbe = "v"});
  EXPECT_EQ(registre->journal(Registre::journalMax * 2)->back().numero, 2);
}

TEST_F(RegistreFiches, PlusieursFilsLEmploient) {
  std::vector<std::thread> fils;
  for (int f = 0; f < 4; ++f)
    fils.emplace_back([&] {
      for (int i = 0; i < 50; ++i) {
        registre->noter({.texte = "note"});
        registre->rappeler({.requete = "note"});
      }
    });
  for (std::thread& fil : fils) fil.join();
  EXPECT_EQ(registre->rappeler({.requete = "", .limite = 1000})->size(), 200U);
}

TEST(Registre, UnAvisEstEntenduUneFois) {
  auto registre = Registre::enMemoire();
  ASSERT_TRUE(registre);
  const auto entendre = [&](const std::string& id, std::optional<Date::Instant> jusque, bool aMontrer = true) {
    return *registre->entendre({.id = id,
                                .avis = {.titre = "T", .texte = std::string(5000, 'x'), .quand = a(7)},
                                .canal = "c",
                                .jusque = jusque,
                                .aMontrer = aMontrer});
  };
  const std::string long_(100'000, 'i');
  EXPECT_TRUE(entendre("1", a(10)));
  EXPECT_FALSE(entendre("1", a(20)));
  EXPECT_TRUE(entendre(long_, {}));
  EXPECT_FALSE(entendre(long_, {}));
  EXPECT_TRUE(entendre("alerte", {}, false));
  const auto ecoute = *registre->ecoute("c");
  EXPECT_EQ(ecoute.jusque, a(20));
  EXPECT_EQ(ecoute.ids.size(), 3U);
  EXPECT_EQ(registre->ecoute("autre")->jusque, std::nullopt);
  ASSERT_EQ(registre->avisRecus()->size(), 2U);
  EXPECT_LT(registre->avisRecus()->front().texte.size(), 5000U);
  EXPECT_EQ(*registre->lireAvis(1), 1);
  for (int i = 0; i < Registre::fichesMax; ++i) EXPECT_TRUE(entendre("n" + std::to_string(i), {}));
  const auto gardes = *registre->avisRecus();  // the one that was read went first
  EXPECT_EQ(gardes.size(), static_cast<std::size_t>(Registre::fichesMax));
  EXPECT_EQ(std::pair(gardes.front().numero, gardes.front().lu), std::pair(std::int64_t{3}, false));
}

}  // namespace
}  // namespace tarnavelle::Plateau
