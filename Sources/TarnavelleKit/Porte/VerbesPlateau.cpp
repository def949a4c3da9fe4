// The verbs of the board itself: what goes on there, its scenes, its windows, its pictures.
#include <algorithm>
#include <iterator>

#include "LigneVerbeInterne.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::interne {
namespace {

/// The names to spare, from both keys: the English one adds to the French one.
std::string epargnes(Args a) {
  auto noms = liste(a, "sauf");
  std::ranges::move(liste(a, "except"), std::back_inserter(noms));
  return Texte::joindre(noms, ", ");
}

}  // namespace

std::vector<LigneVerbe> verbesPlateau() {
  return {
      {1,
       {"etat",
        "Dit ce qui se passe sur TOUT le plateau : quels agents sont ouverts, dans quel état (travaille, "
        "attend une réponse, au repos) et sur quelle scène. À appeler pour « où on en est ? », « qui "
        "travaille ? », « fais le point ».",
        {facultatif("format", "texte (défaut) ou json.")}},
       "Dit où en est tout le plateau.",
       "Which agents are running and what each one is doing: state of the board, status, scenes, windows.",
       {"state"},
       [](Args) { return C{C::etat{}}; },
       {},
       {.lectureSeule = true},
       {{"scene", Donnee::texte},
        {"dossier", Donnee::texte},
        {"autres_scenes", Donnee::liste},
        {"crew", Donnee::liste},
        {"agents", Donnee::liste},
        {"ailleurs", Donnee::liste},
        {"postits", Donnee::liste},
        {"fermes", Donnee::liste},
        {"fenetres", Donnee::liste},
        {"messages", Donnee::liste},
        {"relais", Donnee::liste},
        {"laBas", Donnee::liste},
        {"oreille", Donnee::texte},
        {"avis", Donnee::liste},
        {"avis_nouveaux", Donnee::nombre}}},

      {2,
       {"focus",
        "Met une fenêtre EN GRAND sur la scène visible : un agent de terminal, un membre du crew, ou une "
        "fenêtre nommée. « mets Harfang sur scène », « montre-moi Merlin ». Ne change PAS de scène "
        "(aller_scene) et n'ouvre aucun terminal (ouvrir_agent).",
        {requis("cible", "Le nom de l'agent, du membre du crew ou de la fenêtre")}},
       "Met une fenêtre en grand, par son nom.",
       "Bring a window or an agent to the front, maximize it, show it.",
       {},
       [](Args a) { return C{C::focus{.cible = texte(a, "cible")}}; },
       {{"cible", Designe::agent}},
       {.repetable = true},
       {{"cible", Donnee::texte}}},

      {3,
       {"aller_scene",
        "Bascule vers une autre SCÈNE de travail, nommée d'après un projet ou un dossier (« Sources », "
        "« Boutique ») : « va sur la scène Sources », « change de scène ». Un SITE ou une adresse n'est PAS "
        "une scène : c'est ouvrir_web.",
        {requis("nom", "Le nom de la scène (ou de son dossier)")}},
       "Passe sur une autre scène de travail.",
       "Switch to another scene, workspace or project.",
       {"scene"},
       [](Args a) { return C{C::allerScene{.nom = texte(a, "nom")}}; },
       {},
       {.repetable = true},
       {{"scene", Donnee::texte}, {"dossier", Donnee::texte}}},

      {6,
       {"ouvrir_web",
        "Ouvre une page WEB dans la carte navigateur : une adresse (« va sur debian.org ») ou une recherche. "
        "Tranche la confusion « va sur … » : un nom de scène → aller_scene ; un domaine, une URL ou une "
        "recherche → ouvrir_web.",
        {requis("cible", "L'adresse ou la recherche, telle que dite"),
         drapeau("externe", "true pour le navigateur système. Défaut false.")}},
       "Ouvre une page au navigateur : adresse, fichier, recherche.",
       "Open a web page, a URL, a file or a search in the browser.",
       {"browser"},
       [](Args a) {
         return C{C::ouvrirWeb{.cible = texte(a, "cible"), .externe = booleen(a, "externe", false)}};
       },
       {{"cible", Designe::cheminOuNom}},
       {.ouvert = true},
       {{"cible", Donnee::texte}}},

      {17,
       {"capture",
        "Prend une PHOTO de la fenêtre Tarnavelle telle qu'elle est peinte à l'écran, et la rend en PNG. À "
        "appeler pour « prends une capture », « photographie le terminal de Merlin », ou pour voir l'effet "
        "de ce que tu viens de modifier. Avec cible, SEULE la carte nommée est photographiée, recadrée. Le "
        "contenu web d'une carte navigateur y sort BLANC : la page rendue, c'est l'affaire de capture_web.",
        {facultatif("cible", "Le nom d'un agent, d'une session ou d'une carte. Vide = la fenêtre entière."),
         facultatif("chemin",
                    "Où écrire le PNG (fichier .png, ou dossier). Vide = un fichier daté dans le dossier de "
                    "captures."),
         drapeau("inline",
                 "true pour recevoir le PNG en base64 dans la réponse au lieu d'un chemin. Défaut false.")}},
       "Photographie la fenêtre du cockpit, ou une seule carte.",
       "Take a screenshot of a terminal, of one card or of the whole window, as a PNG image.",
       {"screenshot", "window_screenshot"},
       [](Args a) {
         return C{C::capture{
             .cible = texte(a, "cible"), .chemin = texte(a, "chemin"), .inline_ = booleen(a, "inline", false)}};
       },
       {{"cible", Designe::agent}, {"chemin", Designe::chemin}},
       {},
       {{"chemin", Donnee::texte}, {"png", Donnee::texte}}},

      {18,
       {"capture_web",
        "Prend une photo du VIEWPORT RENDU de la carte navigateur — la page telle que le moteur web la "
        "peint, ce que capture ne sait pas voir. « photographie la page », « à quoi ressemble le site ? ». "
        "Ne va sur AUCUNE page : l'ouvrir, c'est ouvrir_web. Ne photographie PAS le reste du canvas "
        "(terminaux, post-its) : là, c'est capture.",
        {facultatif("chemin",
                    "Où écrire le PNG (fichier .png, ou dossier). Vide = un fichier daté dans le dossier de "
                    "captures."),
         drapeau("inline",
                 "true pour recevoir le PNG en base64 dans la réponse au lieu d'un chemin. Défaut false.")}},
       "Photographie la page affichée au navigateur.",
       "Take a screenshot of the web page shown in the browser, as a PNG image.",
       {"browser_screenshot"},
       [](Args a) {
         return C{C::captureWeb{.chemin = texte(a, "chemin"), .inline_ = booleen(a, "inline", false)}};
       },
       {{"chemin", Designe::chemin}},
       {},
       {{"chemin", Donnee::texte}, {"png", Donnee::texte}}},

      {23,
       {"nommer_zone",
        "Donne un NOM à une fenêtre du plateau — et ce nom devient une CIBLE VALIDE de focus et de capture. "
        "« appelle cette fenêtre le tunnel de paiement », « étiquette Milan : le front ». C'est un ALIAS de "
        "désignation, pas un déplacement (focus) ni un renommage de session : le nom que la fenêtre avait "
        "déjà continue de marcher.",
        {requis("nom", "L'étiquette à poser, en clair : « le tunnel de paiement », « le front »"),
         facultatif("cible",
                    "La fenêtre à étiqueter (nom d'agent, de session ou de carte). Vide = celle au regard.")}},
       "Donne un nom de plus à une fenêtre.",
       "Give a window a name, a label or an alias.",
       {"label_area"},
       [](Args a) { return C{C::nommerZone{.nom = texte(a, "nom"), .cible = texte(a, "cible")}}; },
       {{"cible", Designe::agent}},
       {.repetable = true},
       {{"cible", Donnee::texte}, {"nom", Donnee::texte}}},

      {30,
       {"ranger",
        "RANGE les fenêtres de la scène visible selon un PLAN : grille (des quadrants réguliers), colonnes "
        "(côte à côte, pleine hauteur), scene (une grande en haut, les autres en rangée dessous), "
        "apercu_agents (UNE grande à GAUCHE, toutes les autres empilées en rail vertical à droite), auto (le "
        "cockpit choisit selon le nombre de fenêtres). « fais le ménage », « mets tout en colonnes », « mets "
        "Merlin en grand et tous les autres à côté ». La vedette ne compte que pour scene et apercu_agents ; "
        "en nommer une suffit à choisir apercu_agents. Ce n'est PAS focus, qui met UNE fenêtre en grand : "
        "ici, c'est toute la scène qui se range.",
        {facultatif("plan",
                    "grille, colonnes, scene, apercu_agents ou auto. Vide = apercu_agents si une vedette est "
                    "nommée, sinon auto."),
         facultatif("vedette",
                    "La fenêtre qui prend la grande place (nom d'agent, de session, ou étiquette posée par "
                    "nommer_zone). Vide = le cockpit la déduit.")}},
       "Range les fenêtres de la scène selon un plan.",
       "Arrange, tile or tidy up the windows: layout, grid, columns.",
       {"arrange", "organize", "tidy", "organise"},
       [](Args a) {
         return C{
             C::ranger{.plan = texte(a, "plan"), .vedette = premier(texte(a, "vedette"), texte(a, "cible"))}};
       },
       {{"vedette", Designe::agent}},
       {.repetable = true},
       {{"scene", Donnee::texte}, {"plan", Donnee::texte}, {"vedette", Donnee::texte}}},

      {32,
       {"fermer",
        "FERME une surface du plateau, désignée par son nom : un terminal d'agent, une conversation Hermès, "
        "un document, une fenêtre du crew, ou une fenêtre nommée par nommer_zone. « ferme Harfang », « ferme "
        "la conversation », « ferme le document », « ferme ça ». Sans cible, c'est la fenêtre AU REGARD qui "
        "se ferme, quelle qu'elle soit. Fermer un terminal ne TUE PAS l'agent : sa session tmux survit et se "
        "rattache — c'est relancer_agent qui redémarre un processus. Pour vider toute la scène d'un coup, "
        "c'est fermer_tout.",
        {facultatif("cible",
                    "Le nom de l'agent, de la conversation ou de la fenêtre. Vide = celle qu'on regarde.")}},
       "Ferme une fenêtre ; l'agent, lui, continue.",
       "Close a window, a terminal, a document or a conversation.",
       {"close_node", "close"},
       [](Args a) { return C{C::fermer{.cible = premier(texte(a, "cible"), texte(a, "target"))}}; },
       {{"cible", Designe::agent}},
       {.destructif = true},
       {{"ferme", Donnee::liste}}},

      {33,
       {"fermer_tout",
        "FERME TOUT ce qui se ferme sur la scène visible — terminaux, conversations, documents, fenêtres du "
        "crew — sauf les noms qu'on épargne. « ferme tout sauf Merlin », « ferme toutes les fenêtres ». Les "
        "sessions tmux des agents SURVIVENT : l'écran se vide, AUCUN travail ne s'arrête. Les autres scènes "
        "restent intactes. Disposer sans fermer : ranger ; une seule surface : fermer.",
        {facultatif(
            "sauf",
            "Les noms à ÉPARGNER, séparés par des virgules : « Merlin, Milan ». Vide = on ferme tout.")}},
       "Ferme toutes les fenêtres de la scène, sauf exceptions.",
       "Close all windows of the scene, except some.",
       {"close_all"},
       [](Args a) { return C{C::fermerTout{.sauf = epargnes(a)}}; },
       {},
       {.destructif = true, .repetable = true},
       {{"ferme", Donnee::liste}}},
  };
}

}  // namespace tarnavelle::interne
