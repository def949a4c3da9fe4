// The verbs of an agent's life: opened, named, given a task, started again; and what it declares of itself.
#include "LigneVerbeInterne.hpp"

namespace tarnavelle::interne {

std::vector<LigneVerbe> verbesAgents() {
  return {
      {5,
       {"ouvrir_agent",
        "Ouvre un NOUVEAU terminal d'agent : « ouvre un agent claude », « lance un codex dans Sources », "
        "« ouvre un grok sur mac-atelier ». Le nouvel agent reçoit un nom propre. Pour parler à un agent "
        "DÉJÀ ouvert, c'est dicter.",
        {facultatif("cli", "Le CLI à lancer : claude, codex, grok, gemini. Vide = le premier installé."),
         facultatif("dossier", "Le dossier de travail. Vide = la scène courante."),
         facultatif("hote", "L'hôte distant. Vide = cette machine.")}},
       "Ouvre un nouveau terminal d'agent.",
       "Open a new agent: start another claude, codex or gemini in a terminal.",
       {"spawn_terminal"},
       [](Args a) {
         return C{
             C::ouvrirAgent{.cli = texte(a, "cli"), .dossier = texte(a, "dossier"), .hote = texte(a, "hote")}};
       },
       {{"dossier", Designe::cheminOuNom}, {"hote", Designe::machine}},
       {.ouvert = true},
       {{"nom", Donnee::texte},
        {"cli", Donnee::texte},
        {"dossier", Donnee::texte},
        {"hote", Donnee::texte},
        {"scene", Donnee::texte},
        {"tmux", Donnee::texte},
        {"pret", Donnee::booleen}}},

      {12,
       {"pondre_agent",
        "Pond un agent TRACKÉ : un chantier avec prompt, une commande de vérification (verify) et un nombre "
        "d'exemplaires. La tâche passe à « done » seulement si le worker a reporté ET que verify exite 0. "
        "Différent de souffler (simple messagerie).",
        {requis("cli", "Le CLI à lancer"), requis("prompt", "La consigne de fond de l'agent"),
         facultatif("verify", "La commande shell qui atteste la réussite (exit 0). Vide = pas de verify."),
         facultatif("nom", "Le nom à donner. Vide = attribué."),
         facultatif("nombre", "Combien d'exemplaires. Défaut 1.")}},
       "Confie un chantier à un nouvel agent, avec suivi.",
       "Spawn an agent on a tracked task: delegate work to a subagent, with a check.",
       {"spawn_agent"},
       [](Args a) {
         return C{C::pondreAgent{.cli = texte(a, "cli"),
                                 .prompt = texte(a, "prompt"),
                                 .verify = texte(a, "verify"),
                                 .nom = texte(a, "nom"),
                                 .nombre = entier(a, "nombre", 1)}};
       },
       {},
       {.destructif = true, .ouvert = true},
       {{"agents", Donnee::liste}}},

      {15,
       {"taches",
        "Le ledger des tâches trackées (pondre_agent) : chacune avec son état (en cours, done, unknown). À "
        "appeler pour « où en sont les tâches ? ».",
        {}},
       "Liste les chantiers suivis et leur état.",
       "List the tracked tasks and their state: progress of delegated work.",
       {"pipe_list"},
       [](Args) { return C{C::taches{}}; },
       {},
       {.lectureSeule = true},
       {{"taches", Donnee::liste}}},

      {20,
       {"fini",
        "LE PIPE — un agent DÉCLARE qu'il a fini son travail, et le cockpit le sait sur-le-champ : la "
        "pastille passe au repos et les relais armés sur « quand X aura fini » se déclenchent. C'est le "
        "verbe qu'un CLI appelle sur LUI-MÊME, dans son terminal (« tarnavellectl fini »), pas un ordre pour "
        "un autre. L'inverse : bloque ; les tâches : taches ; armer un relais : commande.",
        {facultatif("note", "Ce qui a été fait, en une phrase. Facultatif — c'est le journal qui la porte."),
         facultatif("agent", "Qui déclare. Vide = l'agent du terminal appelant (TARNAVELLE_NODE_ID).")}},
       "Déclare que l'agent appelant a fini.",
       "Report that you are done: your task is finished.",
       {"pipe_done"},
       [](Args a) { return C{C::fini{.agent = texte(a, "agent"), .note = texte(a, "note")}}; },
       {},
       {.repetable = true},
       {{"agent", Donnee::texte}, {"etat", Donnee::texte}}},

      {21,
       {"bloque",
        "LE PIPE — un agent DÉCLARE qu'il est bloqué et qu'il attend une décision humaine : la pastille "
        "passe à « besoin de vous » et les relais armés sur « quand X aura besoin de moi » se déclenchent. "
        "La raison est OBLIGATOIRE — un blocage muet n'apprend rien à personne. L'inverse est fini.",
        {requis(
             "raison",
             "Ce qui bloque, en une phrase : la question posée, la permission attendue, l'erreur rencontrée"),
         facultatif("agent", "Qui déclare. Vide = l'agent du terminal appelant (TARNAVELLE_NODE_ID).")}},
       "Déclare que l'agent appelant attend une décision.",
       "Report that you are blocked: ask a person for help, a decision or a permission.",
       {"pipe_blocked"},
       [](Args a) { return C{C::bloque{.agent = texte(a, "agent"), .raison = texte(a, "raison")}}; },
       {},
       {.repetable = true},
       {{"agent", Donnee::texte}, {"etat", Donnee::texte}}},

      {24,
       {"relancer_agent",
        "REDÉMARRE un agent déjà ouvert : le même CLI, le même dossier, mais un processus NEUF. « relance "
        "Merlin », « redémarre Milan, il ne répond plus », « repars de zéro avec Harfang ». Le travail en "
        "cours est PERDU : la session est réellement tuée, pas seulement sa fenêtre. Ce n'est ni "
        "ouvrir_agent (qui en ouvre un de plus) ni souffler (qui lui laisse un message sans toucher au "
        "processus). Un agent DISTANT ne peut pas être relancé d'ici.",
        {requis("agent",
                "Le nom de l'agent à relancer. Exigé : on ne relance jamais « celui qu'on regarde » par "
                "défaut.")}},
       "Redémarre un agent ; son travail en cours est perdu.",
       "Restart an agent: kill it and start it anew.",
       {"restart_agent"},
       [](Args a) { return C{C::relancerAgent{.agent = texte(a, "agent")}}; },
       {},
       {.destructif = true}},

      {31,
       {"nommage",
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
       "Choose the names of the next agents.",
       {"set_agent_naming", "set_naming"},
       [](Args a) { return C{C::nommage{.noms = premier(liste(a, "noms"), liste(a, "call_signs"))}}; },
       {},
       {.repetable = true},
       {{"noms", Donnee::liste}}},
  };
}

}  // namespace tarnavelle::interne
