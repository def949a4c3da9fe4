#include "Porte/TableVerbes.hpp"

#include "LigneVerbeInterne.hpp"

namespace tarnavelle {
namespace {

using namespace Champ;
using namespace interne;
using Args = const Json&;
using C = CommandeControle;

}  // namespace

const std::vector<LigneVerbe>& tableVerbes() {
  static const std::vector<LigneVerbe> table = {
      {{"etat",
        "Dit ce qui se passe sur TOUT le plateau : quels agents sont ouverts, dans quel état (travaille, "
        "attend une réponse, au repos) et sur quelle scène. À appeler pour « où on en est ? », « qui "
        "travaille ? », « fais le point ».",
        {facultatif("format", "texte (défaut) ou json.")}},
       "Dit où en est tout le plateau.",
       {"state"},
       [](Args) { return C{C::etat{}}; },
       {},
       {.lectureSeule = true}},

      {{"focus",
        "Met une fenêtre EN GRAND sur la scène visible : un agent de terminal, un membre du crew, ou une "
        "fenêtre nommée. « mets Harfang sur scène », « montre-moi Merlin ». Ne change PAS de scène "
        "(aller_scene) et n'ouvre aucun terminal (ouvrir_agent).",
        {requis("cible", "Le nom de l'agent, du membre du crew ou de la fenêtre")}},
       "Met une fenêtre en grand, par son nom.",
       {},
       [](Args a) { return C{C::focus{.cible = texte(a, "cible")}}; },
       {{"cible", Designe::agent}}},

      {{"aller_scene",
        "Bascule vers une autre SCÈNE de travail, nommée d'après un projet ou un dossier (« Sources », "
        "« Boutique ») : « va sur la scène Sources », « change de scène ». Un SITE ou une adresse n'est PAS "
        "une scène : c'est ouvrir_web.",
        {requis("nom", "Le nom de la scène (ou de son dossier)")}},
       "Passe sur une autre scène de travail.",
       {"scene"},
       [](Args a) { return C{C::allerScene{.nom = texte(a, "nom")}}; }},

      {{"dicter",
        "Tape un texte DANS le terminal d'un agent (Merlin, Milan…) et l'envoie — ou l'envoie à la "
        "CONVERSATION Hermès qui porte ce nom, c'est le même geste. C'est LE verbe de toute consigne "
        "adressée à un agent visible (« Merlin, relance les tests du front ») : tu la transmets MOT POUR "
        "MOT, sans l'adresse. Ce n'est PAS le repli des demandes sans terminal cible : le repli, c'est "
        "commande.",
        {requis("texte", "La consigne à taper, VERBATIM, sans l'adresse"),
         facultatif("agent", "Le nom de l'agent visé. Vide = celui qu'on regarde."),
         drapeau("valider", "false pour poser sans envoyer. Défaut true.")}},
       "Tape un texte dans le terminal d'un agent, et l'envoie.",
       {"type"},
       [](Args a) {
         return C{C::dicter{
             .agent = texte(a, "agent"), .texte = texte(a, "texte"), .valider = booleen(a, "valider", true)}};
       }},

      {{"ouvrir_agent",
        "Ouvre un NOUVEAU terminal d'agent : « ouvre un agent claude », « lance un codex dans Sources », "
        "« ouvre un grok sur mac-atelier ». Le nouvel agent reçoit un nom propre. Pour parler à un agent "
        "DÉJÀ ouvert, c'est dicter.",
        {facultatif("cli", "Le CLI à lancer : claude, codex, grok, gemini. Vide = le premier installé."),
         facultatif("dossier", "Le dossier de travail. Vide = la scène courante."),
         facultatif("hote", "L'hôte distant. Vide = cette machine.")}},
       "Ouvre un nouveau terminal d'agent.",
       {"spawn_terminal"},
       [](Args a) {
         return C{
             C::ouvrirAgent{.cli = texte(a, "cli"), .dossier = texte(a, "dossier"), .hote = texte(a, "hote")}};
       },
       {{"dossier", Designe::cheminOuNom}, {"hote", Designe::machine}}},

      {{"ouvrir_web",
        "Ouvre une page WEB dans la carte navigateur : une adresse (« va sur debian.org ») ou une recherche. "
        "Tranche la confusion « va sur … » : un nom de scène → aller_scene ; un domaine, une URL ou une "
        "recherche → ouvrir_web.",
        {requis("cible", "L'adresse ou la recherche, telle que dite"),
         drapeau("externe", "true pour le navigateur système. Défaut false.")}},
       "Ouvre une page au navigateur : adresse, fichier, recherche.",
       {"browser"},
       [](Args a) {
         return C{C::ouvrirWeb{.cible = texte(a, "cible"), .externe = booleen(a, "externe", false)}};
       },
       {{"cible", Designe::cheminOuNom}}},

      {{"lire",
        "Lit le BAS DE L'ÉCRAN d'un agent et te le rend TEL QUEL : « qu'est-ce que Merlin a répondu ? », "
        "« lis-moi l'erreur ». Pour un compte rendu condensé, préfère resumer.",
        {facultatif("agent", "Le nom de l'agent à lire. Vide = celui qu'on regarde.")}},
       "Montre le bas de l'écran d'un agent, tel quel.",
       {"read"},
       [](Args a) { return C{C::lire{.agent = texte(a, "agent")}}; },
       {},
       {.lectureSeule = true}},

      {{"resumer",
        "Donne le RÉSUMÉ du travail d'un agent, déjà condensé par le cockpit : « où en est Merlin ? », "
        "« résume les résultats ». Moins bavard que lire.",
        {facultatif("agent", "Le nom de l'agent à résumer. Vide = celui qu'on regarde.")}},
       "Résume le travail d'un agent.",
       {"summarize"},
       [](Args a) { return C{C::resumer{.agent = texte(a, "agent")}}; },
       {},
       {.lectureSeule = true}},

      {{"retiens",
        "Écrit une note dans la mémoire CANONIQUE du canvas — la seule mémoire durable partagée : « retiens "
        "que le port dev est 5173 », « note que la démo est jeudi ». La portee canvas (défaut) rattache la "
        "note à la scène courante ; global la rend visible partout.",
        {requis("texte", "La note à retenir, fidèle et complète"),
         facultatif("portee", "canvas (défaut) ou global.")}},
       "Écrit une note dans la mémoire partagée.",
       {"remember"},
       [](Args a) {
         return C{C::retiens{.texte = texte(a, "texte"), .portee = premier(texte(a, "portee"), "canvas")}};
       }},

      {{"rappelle",
        "Cherche dans la mémoire canonique du canvas : « rappelle-moi le port dev », « qu'est-ce que je sais "
        "sur la démo ? ». Rend les fiches les plus pertinentes.",
        {facultatif("requete", "Ce qu'on cherche. Vide = les plus récentes."),
         facultatif("limite", "Combien de fiches au plus. Défaut 5.")}},
       "Cherche dans la mémoire partagée.",
       {"recall"},
       [](Args a) { return C{C::rappelle{.requete = texte(a, "requete"), .limite = entier(a, "limite", 5)}}; },
       {},
       {.lectureSeule = true}},

      {{"commande",
        "LE REPLI : transmet la demande au cockpit quand AUCUN verbe dédié ne convient — missions et plans, "
        "musique, documents, thèmes, jobs, connexions. « lance une mission pour refaire la page de prix », "
        "« coupe la musique ». Tu transmets la demande TELLE QUE DITE.",
        {requis("texte", "La demande, fidèle et complète, en français")}},
       "Transmet au cockpit toute autre demande, telle quelle.",
       {"command"},
       [](Args a) { return C{C::commande{.texte = texte(a, "texte")}}; }},

      {{"pondre_agent",
        "Pond un agent TRACKÉ : un chantier avec prompt, une commande de vérification (verify) et un nombre "
        "d'exemplaires. La tâche passe à « done » seulement si le worker a reporté ET que verify exite 0. "
        "Différent de souffler (simple messagerie).",
        {requis("cli", "Le CLI à lancer"), requis("prompt", "La consigne de fond de l'agent"),
         facultatif("verify", "La commande shell qui atteste la réussite (exit 0). Vide = pas de verify."),
         facultatif("nom", "Le nom à donner. Vide = attribué."),
         facultatif("nombre", "Combien d'exemplaires. Défaut 1.")}},
       "Confie un chantier à un nouvel agent, avec suivi.",
       {"spawn_agent"},
       [](Args a) {
         return C{C::pondreAgent{.cli = texte(a, "cli"),
                                 .prompt = texte(a, "prompt"),
                                 .verify = texte(a, "verify"),
                                 .nom = texte(a, "nom"),
                                 .nombre = entier(a, "nombre", 1)}};
       }},

      {{"souffler",
        "Envoie un message NON tracké à un agent déjà ouvert (messagerie, pas machine à états). Pour une "
        "consigne de travail suivie, c'est pondre_agent ; pour taper dans le terminal visible, c'est dicter.",
        {requis("agent", "Le nom de l'agent visé"), requis("texte", "Le message à souffler")}},
       "Envoie un message à un agent, sans suivi.",
       {"prompt"},
       [](Args a) { return C{C::souffler{.agent = texte(a, "agent"), .texte = texte(a, "texte")}}; }},

      {{"lire_terminal",
        "Lit le tampon d'un agent, éventuellement DEPUIS le dernier prompt (depuis_prompt) — pour ne relire "
        "que ce qui a été produit depuis la dernière consigne.",
        {requis("agent", "Le nom de l'agent"),
         drapeau("depuis_prompt", "true pour ne lire que depuis le dernier prompt. Défaut false.")}},
       "Montre le tampon d'un agent, au besoin depuis son prompt.",
       {"read_terminal"},
       [](Args a) {
         return C{
             C::lireTerminal{.agent = texte(a, "agent"), .depuisPrompt = booleen(a, "depuis_prompt", false)}};
       },
       {},
       {.lectureSeule = true}},

      {{"taches",
        "Le ledger des tâches trackées (pondre_agent) : chacune avec son état (en cours, done, unknown). À "
        "appeler pour « où en sont les tâches ? ».",
        {}},
       "Liste les chantiers suivis et leur état.",
       {"pipe_list"},
       [](Args) { return C{C::taches{}}; },
       {},
       {.lectureSeule = true}},

      {{"shell",
        "Lance une commande shell dans un terminal dédié du plateau : « lance les tests », « fais un git "
        "status ». La commande s'exécute dans un nouveau terminal (ou celui nommé par cible).",
        {requis("commande", "La commande shell à exécuter"),
         facultatif("cible", "Le node/terminal où l'exécuter. Vide = un terminal dédié.")}},
       "Lance une commande shell dans un terminal du plateau.",
       {},
       [](Args a) { return C{C::shell{.commande = texte(a, "commande"), .cible = texte(a, "cible")}}; }},

      {{"capture",
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
       {"screenshot", "window_screenshot"},
       [](Args a) {
         return C{C::capture{
             .cible = texte(a, "cible"), .chemin = texte(a, "chemin"), .inline_ = booleen(a, "inline", false)}};
       },
       {{"cible", Designe::agent}, {"chemin", Designe::chemin}}},

      {{"capture_web",
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
       {"browser_screenshot"},
       [](Args a) {
         return C{C::captureWeb{.chemin = texte(a, "chemin"), .inline_ = booleen(a, "inline", false)}};
       },
       {{"chemin", Designe::chemin}}},

      {{"diffuser",
        "Envoie le MÊME texte, VERBATIM, dans le terminal de TOUS les agents ouverts d'un coup : « dis à "
        "tout le monde de committer », « préviens tous les agents que la base a bougé », « stop général ». "
        "Rend qui a reçu et qui a manqué. Pour UN SEUL agent, préfère souffler (dans sa messagerie) ou "
        "dicter (tapé dans son terminal).",
        {requis("texte", "Le message à diffuser, MOT POUR MOT, sans adresse"),
         drapeau("scene_seulement",
                 "true pour ne viser que les agents de la scène visible. Défaut false (tous les agents "
                 "ouverts).")}},
       "Envoie le même texte à tous les agents ouverts.",
       {"broadcast"},
       [](Args a) {
         return C{
             C::diffuser{.texte = texte(a, "texte"), .sceneSeulement = booleen(a, "scene_seulement", false)}};
       }},

      {{"fini",
        "LE PIPE — un agent DÉCLARE qu'il a fini son travail, et le cockpit le sait sur-le-champ : la "
        "pastille passe au repos et les relais armés sur « quand X aura fini » se déclenchent. C'est le "
        "verbe qu'un CLI appelle sur LUI-MÊME, dans son terminal (« tarnavellectl fini »), pas un ordre pour "
        "un autre. L'inverse : bloque ; les tâches : taches ; armer un relais : commande.",
        {facultatif("note", "Ce qui a été fait, en une phrase. Facultatif — c'est le journal qui la porte."),
         facultatif("agent", "Qui déclare. Vide = l'agent du terminal appelant (TARNAVELLE_NODE_ID).")}},
       "Déclare que l'agent appelant a fini.",
       {"pipe_done"},
       [](Args a) { return C{C::fini{.agent = texte(a, "agent"), .note = texte(a, "note")}}; }},

      {{"bloque",
        "LE PIPE — un agent DÉCLARE qu'il est bloqué et qu'il attend une décision humaine : la pastille "
        "passe à « besoin de vous » et les relais armés sur « quand X aura besoin de moi » se déclenchent. "
        "La raison est OBLIGATOIRE — un blocage muet n'apprend rien à personne. L'inverse est fini.",
        {requis(
             "raison",
             "Ce qui bloque, en une phrase : la question posée, la permission attendue, l'erreur rencontrée"),
         facultatif("agent", "Qui déclare. Vide = l'agent du terminal appelant (TARNAVELLE_NODE_ID).")}},
       "Déclare que l'agent appelant attend une décision.",
       {"pipe_blocked"},
       [](Args a) { return C{C::bloque{.agent = texte(a, "agent"), .raison = texte(a, "raison")}}; }},

      {{"postit",
        "Pose un POST-IT sur le canvas : une note qui reste À L'ÉCRAN, sous les yeux, à côté des agents. "
        "« colle un post-it : relire la migration », « garde sous mes yeux : démo à 14 h », « affiche : le "
        "lot 7 à livrer ». Ce n'est PAS retiens : un post-it se REGARDE, une note de mémoire se RAPPELLE "
        "(avec rappelle).",
        {requis("texte", "Ce qui est écrit sur la note, tel quel")}},
       "Colle un post-it à l'écran, à côté des agents.",
       {"sticky_note"},
       [](Args a) { return C{C::postit{.texte = texte(a, "texte")}}; }},

      {{"nommer_zone",
        "Donne un NOM à une fenêtre du plateau — et ce nom devient une CIBLE VALIDE de focus et de capture. "
        "« appelle cette fenêtre le tunnel de paiement », « étiquette Milan : le front ». C'est un ALIAS de "
        "désignation, pas un déplacement (focus) ni un renommage de session : le nom que la fenêtre avait "
        "déjà continue de marcher.",
        {requis("nom", "L'étiquette à poser, en clair : « le tunnel de paiement », « le front »"),
         facultatif("cible",
                    "La fenêtre à étiqueter (nom d'agent, de session ou de carte). Vide = celle au regard.")}},
       "Donne un nom de plus à une fenêtre.",
       {"label_area"},
       [](Args a) { return C{C::nommerZone{.nom = texte(a, "nom"), .cible = texte(a, "cible")}}; },
       {{"cible", Designe::agent}}},

      {{"relancer_agent",
        "REDÉMARRE un agent déjà ouvert : le même CLI, le même dossier, mais un processus NEUF. « relance "
        "Merlin », « redémarre Milan, il ne répond plus », « repars de zéro avec Harfang ». Le travail en "
        "cours est PERDU : la session est réellement tuée, pas seulement sa fenêtre. Ce n'est ni "
        "ouvrir_agent (qui en ouvre un de plus) ni souffler (qui lui laisse un message sans toucher au "
        "processus). Un agent DISTANT ne peut pas être relancé d'ici.",
        {requis("agent",
                "Le nom de l'agent à relancer. Exigé : on ne relance jamais « celui qu'on regarde » par "
                "défaut.")}},
       "Redémarre un agent ; son travail en cours est perdu.",
       {"restart_agent"},
       [](Args a) { return C{C::relancerAgent{.agent = texte(a, "agent")}}; }},

      {{"script",
        "Lance le script TYPÉ d'un chantier dans un terminal dédié, en DÉDUISANT la commande de ce qui est "
        "sur le disque : package.json donne npm test / npm install, un Makefile donne make test, Cargo.toml "
        "donne cargo test / cargo build. « joue les tests du chantier », « installe les dépendances ». Pour "
        "une commande LIBRE, que tu donnes, c'est shell ; pour attester une tâche suivie, c'est le verify de "
        "pondre_agent.",
        {requis("genre", "test (jouer les tests) ou install (installer les dépendances)"),
         facultatif("dossier", "Le dossier du chantier. Vide = celui de la scène courante.")}},
       "Lance les tests d'un chantier, ou son installation.",
       {"run_script"},
       [](Args a) { return C{C::script{.genre = texte(a, "genre"), .dossier = texte(a, "dossier")}}; },
       {{"dossier", Designe::cheminOuNom}}},

      {{"ouvrir_chat",
        "Ouvre la CONVERSATION avec Hermès sur le canvas — la carte à qui l'on PARLE, la seule du plateau "
        "qui porte un fil de messages plutôt qu'un écran de terminal. « ouvre la conversation avec Hermès ». "
        "S'il y en a déjà une pour le même hôte, le cockpit la RAMÈNE sous les yeux au lieu d'en ouvrir une "
        "seconde. Avec texte, la première demande part sans attendre. Ce n'est PAS ouvrir_agent, qui ouvre, "
        "lui, un terminal.",
        {facultatif("hote",
                    "La machine où Hermès tourne. Vide = celle que le cockpit a présentie (session ouverte, "
                    "puis réglage, puis hôte joignable)."),
         facultatif("texte",
                    "Une première demande à envoyer tout de suite. Vide = la carte s'ouvre et attend.")}},
       "Ouvre la conversation avec Hermès.",
       {"open_chat"},
       [](Args a) { return C{C::ouvrirChat{.hote = texte(a, "hote"), .texte = texte(a, "texte")}}; }},

      {{"message_chat",
        "Envoie un message à Hermès DANS SA CARTE de conversation, et rend la main TOUT DE SUITE : la "
        "réponse s'affiche sur la carte, elle n'est pas dans cette réponse-ci — Hermès prend cinq à soixante "
        "secondes. Pour la voir ensuite, c'est capture sur cette carte. Si aucune conversation n'est "
        "ouverte, le cockpit en ouvre une d'abord ; si plusieurs le sont, cible nomme l'HÔTE visé. Pour le "
        "terminal d'un agent, c'est dicter ; pour tous d'un coup, diffuser ; pour le cockpit, commande.",
        {requis("texte", "Le message à écrire à Hermès, fidèle et complet, sans l'adresse"),
         facultatif("cible",
                    "L'hôte de la conversation visée, quand plusieurs sont ouvertes. Vide = la dernière "
                    "ouverte.")}},
       "Écrit à Hermès, sans attendre sa réponse.",
       {},
       [](Args a) { return C{C::messageChat{.texte = texte(a, "texte"), .cible = texte(a, "cible")}}; }},

      {{"attendre",
        "SUSPEND la réponse jusqu'à ce qu'il se passe quelque chose chez un agent — c'est le SEUL verbe de "
        "la porte qui prend son temps au lieu de rendre la main tout de suite. À appeler APRÈS avoir mis un "
        "agent au travail, au lieu de relire son écran en boucle : « attends que Merlin ait terminé », "
        "« attends que Milan pose une question ». D'ici là, tu ne fais rien d'autre. Rend TOUJOURS ce qui "
        "s'est passé — atteint ou non, la raison, la durée, l'état final —, y compris quand le délai expire "
        "(raison « timeout ») ou que la session meurt (raison « mort »). Ne tape RIEN et ne consomme rien. "
        "L'état du plateau sans attendre, c'est etat ; ce que montre un écran, lire.",
        {requis("agent", "Le nom de l'agent à observer"),
         facultatif("jusqu_a",
                    "idle (l'écran s'est calmé, défaut), besoin (il pose une question), fini (il a déclaré "
                    "avoir fini), mort (le processus est sorti) ou motif (une expression régulière paraît à "
                    "l'écran)."),
         facultatif("motif",
                    "L'expression régulière à guetter dans l'écran (200 caractères au plus). La donner suffit "
                    "à choisir jusqu_a: motif."),
         facultatif("timeout_s", "Combien de secondes au plus. Défaut 60, plafond 300.")}},
       "Attend qu'un agent se calme, finisse ou pose une question.",
       {"wait"},
       [](Args a) {
         return C{C::attendre{.agent = texte(a, "agent"),
                              .jusquA = texte(a, "jusqu_a"),
                              .motif = texte(a, "motif"),
                              .timeoutS = entier(a, "timeout_s", 0)}};
       },
       {},
       {.lectureSeule = true}},

      {{"envoyer_touches",
        "Envoie des TOUCHES dans le terminal d'un agent — ce qu'un texte ne sait pas faire : répondre à un "
        "menu (« 1 entree »), sortir d'un dialogue (« esc »), interrompre un travail en cours (« ctrl+c »), "
        "naviguer dans une liste (« bas bas entree »). Les touches sont séparées par des espaces et envoyées "
        "dans l'ordre ; UNE touche inconnue fait refuser TOUTE la séquence, sans rien taper. Noms connus : "
        "esc, entree, tab, haut, bas, gauche, droite, espace, ctrl+c, ctrl+d, ctrl+z, ctrl+u, ctrl+r — plus "
        "tout caractère seul (1, y, n…). Un TEXTE s'envoie avec dicter ou souffler, JAMAIS avec ce verbe.",
        {requis("agent", "Le nom de l'agent visé"),
         requis("touches", "La séquence, séparée par des espaces : « esc », « 1 entree », « ctrl+c »")}},
       "Frappe des touches chez un agent : esc, entree, ctrl+c…",
       {"send_keys"},
       [](Args a) { return C{C::envoyerTouches{.agent = texte(a, "agent"), .touches = texte(a, "touches")}}; }},

      {{"ranger",
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
       {"arrange", "organize", "tidy", "organise"},
       [](Args a) {
         return C{
             C::ranger{.plan = texte(a, "plan"), .vedette = premier(texte(a, "vedette"), texte(a, "cible"))}};
       },
       {{"vedette", Designe::agent}}},

      {{"nommage",
        "Règle les INDICATIFS que porteront les agents ouverts ENSUITE : « appelle mes agents Mal, Zoe et "
        "Wash », « nomme-les comme l'équipage de Firefly », « remets les noms d'origine ». Si on te donne un "
        "thème et pas de noms, c'est TOI qui composes la liste. Les noms sont distribués DANS L'ORDRE, un "
        "par agent ; la liste épuisée, le cockpit numérote. Une liste VIDE ramène au roster d'usine, celui "
        "des oiseaux de proie (Merlin, Milan, Harfang…). Le nom d'un lanceur (claude, codex) ou d'un modèle "
        "(sonnet, opus) est REFUSÉ : « ouvre un claude » crée un agent, il ne peut pas aussi en désigner un. "
        "Les agents DÉJÀ ouverts gardent leur nom : seuls les suivants prennent un indicatif. Pour étiqueter "
        "une fenêtre qui existe déjà, c'est nommer_zone.",
        {requis("noms",
                "Les indicatifs séparés par des virgules, dans l'ordre où ils seront distribués : « Mal, Zoe, "
                "Wash ». Un tableau JSON ([\"Mal\",\"Zoe\"]) est accepté aussi. Une chaîne VIDE demande "
                "explicitement le retour au roster d'usine.")}},
       "Choisit les noms des prochains agents.",
       {"set_agent_naming", "set_naming"},
       [](Args a) { return C{C::nommage{.noms = premier(liste(a, "noms"), liste(a, "call_signs"))}}; }},

      {{"fermer",
        "FERME une surface du plateau, désignée par son nom : un terminal d'agent, une conversation Hermès, "
        "un document, une fenêtre du crew, ou une fenêtre nommée par nommer_zone. « ferme Harfang », « ferme "
        "la conversation », « ferme le document », « ferme ça ». Sans cible, c'est la fenêtre AU REGARD qui "
        "se ferme, quelle qu'elle soit. Fermer un terminal ne TUE PAS l'agent : sa session tmux survit et se "
        "rattache — c'est relancer_agent qui redémarre un processus. Pour vider toute la scène d'un coup, "
        "c'est fermer_tout.",
        {facultatif("cible",
                    "Le nom de l'agent, de la conversation ou de la fenêtre. Vide = celle qu'on regarde.")}},
       "Ferme une fenêtre ; l'agent, lui, continue.",
       {"close_node", "close"},
       [](Args a) { return C{C::fermer{.cible = premier(texte(a, "cible"), texte(a, "target"))}}; },
       {{"cible", Designe::agent}}},

      {{"fermer_tout",
        "FERME TOUT ce qui se ferme sur la scène visible — terminaux, conversations, documents, fenêtres du "
        "crew — sauf les noms qu'on épargne. « ferme tout sauf Merlin », « ferme toutes les fenêtres ». Les "
        "sessions tmux des agents SURVIVENT : l'écran se vide, AUCUN travail ne s'arrête. Les autres scènes "
        "restent intactes. Disposer sans fermer : ranger ; une seule surface : fermer.",
        {facultatif(
            "sauf",
            "Les noms à ÉPARGNER, séparés par des virgules : « Merlin, Milan ». Vide = on ferme tout.")}},
       "Ferme toutes les fenêtres de la scène, sauf exceptions.",
       {"close_all"},
       [](Args a) { return C{C::fermerTout{.sauf = epargnes(a)}}; }},
  };
  return table;
}

}  // namespace tarnavelle
