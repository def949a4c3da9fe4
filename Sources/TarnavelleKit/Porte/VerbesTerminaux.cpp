// The verbs of terminals: what is typed into one, read from it, run in it, awaited of it.
#include "LigneVerbeInterne.hpp"

namespace tarnavelle::interne {

std::vector<LigneVerbe> verbesTerminaux() {
  return {
      {4,
       {"dicter",
        "Tape un texte DANS le terminal d'un agent (Merlin, Milan…) et l'envoie — ou l'envoie à la "
        "CONVERSATION Hermès qui porte ce nom, c'est le même geste. C'est LE verbe de toute consigne "
        "adressée à un agent visible (« Merlin, relance les tests du front ») : tu la transmets MOT POUR "
        "MOT, sans l'adresse. Ce n'est PAS le repli des demandes sans terminal cible : le repli, c'est "
        "commande.",
        {requis("texte", "La consigne à taper, VERBATIM, sans l'adresse"),
         facultatif("agent", "Le nom de l'agent visé. Vide = celui qu'on regarde."),
         drapeau("valider", "false pour poser sans envoyer. Défaut true.")}},
       "Tape un texte dans le terminal d'un agent, et l'envoie.",
       "Type a message or an instruction to another agent, into its terminal, and send it.",
       {"type"},
       [](Args a) {
         return C{C::dicter{
             .agent = texte(a, "agent"), .texte = texte(a, "texte"), .valider = booleen(a, "valider", true)}};
       },
       {},
       {.destructif = true, .ouvert = true},
       {{"agent", Donnee::texte}, {"etat", Donnee::texte}}},

      {7,
       {"lire",
        "Lit le BAS DE L'ÉCRAN d'un agent et te le rend TEL QUEL : « qu'est-ce que Merlin a répondu ? », "
        "« lis-moi l'erreur ». Pour un compte rendu condensé, préfère resumer.",
        {facultatif("agent", "Le nom de l'agent à lire. Vide = celui qu'on regarde.")}},
       "Montre le bas de l'écran d'un agent, tel quel.",
       "Read the screen of an agent or of a terminal: what it shows now, its last output.",
       {"read"},
       [](Args a) { return C{C::lire{.agent = texte(a, "agent")}}; },
       {},
       {.lectureSeule = true},
       {{"agent", Donnee::texte},
        {"etat", Donnee::texte},
        {"statut", Donnee::nombre},
        {"texte", Donnee::lignes}}},

      {8,
       {"resumer",
        "Donne le RÉSUMÉ du travail d'un agent, déjà condensé par le cockpit : « où en est Merlin ? », "
        "« résume les résultats ». Moins bavard que lire.",
        {facultatif("agent", "Le nom de l'agent à résumer. Vide = celui qu'on regarde.")}},
       "Résume le travail d'un agent.",
       "Summary of an agent's work, its last answer.",
       {"summarize"},
       [](Args a) { return C{C::resumer{.agent = texte(a, "agent")}}; },
       {},
       {.lectureSeule = true},
       {{"agent", Donnee::texte},
        {"etat", Donnee::texte},
        {"source", Donnee::texte},
        {"texte", Donnee::texte}}},

      {13,
       {"souffler",
        "Envoie un message NON tracké à un agent déjà ouvert (messagerie, pas machine à états). Pour une "
        "consigne de travail suivie, c'est pondre_agent ; pour taper dans le terminal visible, c'est dicter.",
        {requis("agent", "Le nom de l'agent visé"), requis("texte", "Le message à souffler")}},
       "Envoie un message à un agent, sans suivi.",
       "Leave a message for another agent, in its inbox, to be given when it is free.",
       {"prompt"},
       [](Args a) { return C{C::souffler{.agent = texte(a, "agent"), .texte = texte(a, "texte")}}; },
       {},
       {.destructif = true, .ouvert = true},
       {{"agent", Donnee::texte},
        {"etat", Donnee::texte},
        {"message", Donnee::nombre},
        {"donne", Donnee::booleen}}},

      {14,
       {"lire_terminal",
        "Lit le tampon d'un agent, éventuellement DEPUIS le dernier prompt (depuis_prompt) — pour ne relire "
        "que ce qui a été produit depuis la dernière consigne.",
        {requis("agent", "Le nom de l'agent"),
         drapeau("depuis_prompt", "true pour ne lire que depuis le dernier prompt. Défaut false.")}},
       "Montre le tampon d'un agent, au besoin depuis son prompt.",
       "Read the scrollback of a terminal: its whole output, its history, the log since the last prompt.",
       {"read_terminal"},
       [](Args a) {
         return C{
             C::lireTerminal{.agent = texte(a, "agent"), .depuisPrompt = booleen(a, "depuis_prompt", false)}};
       },
       {},
       {.lectureSeule = true},
       {{"agent", Donnee::texte},
        {"etat", Donnee::texte},
        {"statut", Donnee::nombre},
        {"texte", Donnee::lignes}}},

      {16,
       {"shell",
        "Lance une commande shell dans un terminal dédié du plateau : « lance les tests », « fais un git "
        "status ». La commande s'exécute dans un nouveau terminal (ou celui nommé par cible).",
        {requis("commande", "La commande shell à exécuter"),
         facultatif("cible", "Le node/terminal où l'exécuter. Vide = un terminal dédié.")}},
       "Lance une commande shell dans un terminal du plateau.",
       "Run a shell command in a terminal: build, server, watcher, script.",
       {},
       [](Args a) { return C{C::shell{.commande = texte(a, "commande"), .cible = texte(a, "cible")}}; },
       {},
       {.destructif = true, .ouvert = true},
       {{"nom", Donnee::texte}, {"commande", Donnee::texte}, {"dossier", Donnee::texte}}},

      {19,
       {"diffuser",
        "Envoie le MÊME texte, VERBATIM, dans le terminal de TOUS les agents ouverts d'un coup : « dis à "
        "tout le monde de committer », « préviens tous les agents que la base a bougé », « stop général ». "
        "Rend qui a reçu et qui a manqué. Pour UN SEUL agent, préfère souffler (dans sa messagerie) ou "
        "dicter (tapé dans son terminal).",
        {requis("texte", "Le message à diffuser, MOT POUR MOT, sans adresse"),
         drapeau("scene_seulement",
                 "true pour ne viser que les agents de la scène visible. Défaut false (tous les agents "
                 "ouverts).")}},
       "Envoie le même texte à tous les agents ouverts.",
       "Broadcast: send the same message to all agents at once.",
       {"broadcast"},
       [](Args a) {
         return C{
             C::diffuser{.texte = texte(a, "texte"), .sceneSeulement = booleen(a, "scene_seulement", false)}};
       },
       {},
       {.destructif = true, .ouvert = true}},

      {25,
       {"script",
        "Lance le script TYPÉ d'un chantier dans un terminal dédié, en DÉDUISANT la commande de ce qui est "
        "sur le disque : package.json donne npm test / npm install, un Makefile donne make test, Cargo.toml "
        "donne cargo test / cargo build. « joue les tests du chantier », « installe les dépendances ». Pour "
        "une commande LIBRE, que tu donnes, c'est shell ; pour attester une tâche suivie, c'est le verify de "
        "pondre_agent.",
        {requis("genre", "test (jouer les tests) ou install (installer les dépendances)"),
         facultatif("dossier", "Le dossier du chantier. Vide = celui de la scène courante.")}},
       "Lance les tests d'un chantier, ou son installation.",
       "Run the tests of a project, or install its dependencies.",
       {"run_script"},
       [](Args a) { return C{C::script{.genre = texte(a, "genre"), .dossier = texte(a, "dossier")}}; },
       {{"dossier", Designe::cheminOuNom}},
       {.destructif = true, .ouvert = true},
       {{"nom", Donnee::texte},
        {"commande", Donnee::texte},
        {"dossier", Donnee::texte},
        {"scene", Donnee::texte}}},

      {28,
       {"attendre",
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
       "Wait until an agent is done, idle, asks a question or dies, or until a pattern shows on its screen.",
       {"wait"},
       [](Args a) {
         return C{C::attendre{.agent = texte(a, "agent"),
                              .jusquA = texte(a, "jusqu_a"),
                              .motif = texte(a, "motif"),
                              .timeoutS = entier(a, "timeout_s", 0)}};
       },
       {},
       {.lectureSeule = true},
       {{"agent", Donnee::texte},
        {"nom", Donnee::texte},
        {"atteint", Donnee::booleen},
        {"raison", Donnee::texte},
        {"duree_s", Donnee::nombre},
        {"etat", Donnee::texte},
        {"fini", Donnee::booleen},
        {"statut", Donnee::nombre}},
       "timeout_s"},

      {29,
       {"envoyer_touches",
        "Envoie des TOUCHES dans le terminal d'un agent — ce qu'un texte ne sait pas faire : répondre à un "
        "menu (« 1 entree »), sortir d'un dialogue (« esc »), interrompre un travail en cours (« ctrl+c »), "
        "naviguer dans une liste (« bas bas entree »). Les touches sont séparées par des espaces et envoyées "
        "dans l'ordre ; UNE touche inconnue fait refuser TOUTE la séquence, sans rien taper. Noms connus : "
        "esc, entree, tab, haut, bas, gauche, droite, espace, ctrl+c, ctrl+d, ctrl+z, ctrl+u, ctrl+r — plus "
        "tout caractère seul (1, y, n…). Un TEXTE s'envoie avec dicter ou souffler, JAMAIS avec ce verbe.",
        {requis("agent", "Le nom de l'agent visé"),
         requis("touches", "La séquence, séparée par des espaces : « esc », « 1 entree », « ctrl+c »")}},
       "Frappe des touches chez un agent : esc, entree, ctrl+c…",
       "Press keys in a terminal: enter, escape, arrows, ctrl+c; answer a menu, interrupt.",
       {"send_keys"},
       [](Args a) { return C{C::envoyerTouches{.agent = texte(a, "agent"), .touches = texte(a, "touches")}}; },
       {},
       {.destructif = true, .ouvert = true},
       {{"agent", Donnee::texte},
        {"etat", Donnee::texte},
        {"touches", Donnee::liste},
        {"texte", Donnee::texte}}},
  };
}

}  // namespace tarnavelle::interne
