// The tools' texts are read by a model that must pick the right one: imperative, with the operator's own
// phrasings, and each telling where its neighbour begins.
#include "Voix/ContratVoix.hpp"

namespace tarnavelle {
namespace {

constexpr auto booleen = ParamVoix::Genre::booleen;

}  // namespace

const std::vector<OutilVoix>& ContratVoix::outilsTarnavelleV2() {
  static const std::vector<OutilVoix> outils = {
      {.nom = "dicter",
       .description = "Tape un texte DANS le terminal d'un agent (Merlin, Milan, Harfang…) et l'envoie — "
                      "ou l'envoie à la CONVERSATION Hermès qui porte ce nom, c'est le même geste et tu "
                      "n'as pas à savoir lequel des deux tu vises. C'est l'outil de TOUTE consigne "
                      "adressée à un agent : « dis à Merlin de relire le patch », « envoie à Milan : "
                      "lance les tests », « demande à Harfang d'ouvrir le fichier ». Tu transmets la "
                      "consigne MOT POUR MOT, débarrassée de la seule adresse (« dis à Merlin de ») : "
                      "jamais reformulée, jamais résumée, jamais enrichie, et tu ne demandes JAMAIS "
                      "confirmation avant de taper. Ce n'est PAS l'outil des demandes qui ne visent "
                      "aucun agent (missions, musique, documents, mémoire) — celles-là passent par "
                      "handle_command.",
       .parametres = {{.nom = "texte",
                       .description = "La consigne à taper, VERBATIM, en français, sans l'adresse",
                       .requis = true},
                      {.nom = "agent",
                       .description = "Le nom de l'agent visé (Merlin, Milan…). Vide = celui qu'on regarde."},
                      {.nom = "valider",
                       .genre = booleen,
                       .description =
                           "false pour poser le texte SANS l'envoyer (« sans l'envoyer », « ne valide pas »). "
                           "Par défaut true."}}},
      {.nom = "focus",
       .description = "Met une fenêtre EN GRAND sur la scène visible : un agent de terminal, un membre "
                      "du crew du cockpit, ou une fenêtre nommée. Les tournures : « mets Harfang sur "
                      "scène », « montre-moi Merlin », « agrandis Milan », « passe sur la Forge ». Ne "
                      "change PAS de scène et n'ouvre aucun terminal — ça, c'est aller_scene et "
                      "ouvrir_agent.",
       .parametres = {{.nom = "cible",
                       .description = "Le nom de l'agent, du membre du crew ou de la fenêtre à mettre en grand",
                       .requis = true}}},
      {.nom = "aller_scene",
       .description = "Bascule vers une autre SCÈNE de travail, un espace du cockpit nommé d'après un "
                      "projet ou un dossier (« Sources », « Boutique ») : « va sur la scène Sources », "
                      "« change de scène ». Les scènes qui existent te sont données plus haut : "
                      "n'appelle cet outil QUE pour l'une d'elles. Un SITE ou une adresse n'est PAS une "
                      "scène : c'est ouvrir_web.",
       .parametres = {{.nom = "nom", .description = "Le nom de la scène (ou de son dossier)", .requis = true}}},
      {.nom = "ouvrir_agent",
       .description = "Ouvre un NOUVEAU terminal d'agent sur le plateau : « ouvre un agent claude », "
                      "« lance un codex dans Sources », « ouvre un grok sur mac-atelier ». Le nouvel "
                      "agent reçoit un nom PROPRE (Merlin, Milan, Harfang…), que tu ANNONCES. Cet outil "
                      "ne fait que CRÉER : parler à un agent déjà ouvert, c'est dicter ; le regarder, "
                      "c'est focus.",
       .parametres =
           {{.nom = "cli",
             .description =
                 "Le CLI à lancer : claude, codex, grok, gemini, hermes. Vide = le premier installé."},
            {.nom = "dossier",
             .description = "Le dossier de travail (« dans Sources »). Vide = la scène courante."},
            {.nom = "hote",
             .description = "L'hôte distant où le lancer (« sur mac-atelier »). Vide = cette machine."}}},
      {.nom = "ouvrir_web",
       .description = "Ouvre une page WEB dans la carte navigateur du cockpit : une adresse (« va sur "
                      "example.com », « ouvre la doc sur docs.example.com ») ou une recherche (« cherche "
                      "la météo à Lyon »). C'est TOI qui tranches la confusion « va sur … » : le nom "
                      "d'une scène connue → aller_scene ; un domaine, une URL, un site ou une "
                      "recherche → ouvrir_web.",
       .parametres =
           {{.nom = "cible", .description = "L'adresse ou la recherche, telle que dite", .requis = true},
            {.nom = "externe",
             .genre = booleen,
             .description = "true si l'opérateur demande Safari, Chrome ou « le navigateur externe ». Par "
                            "défaut false (carte in-app)."}}},
      {.nom = "lire",
       .description = "Lit l'ÉCRAN d'un agent et te le rend TEL QUEL. À utiliser dès qu'on te demande ce "
                      "qu'un agent dit, répond, demande ou affiche : « qu'est-ce que Merlin a "
                      "répondu ? », « lis-moi l'erreur », « il attend quoi ? ». Tu ÉNONCES ensuite ce "
                      "qu'on te rend, fidèlement — jamais un résumé de ton cru. Pour un compte rendu "
                      "condensé du travail, préfère resumer.",
       .parametres = {{.nom = "agent", .description = "Le nom de l'agent à lire. Vide = celui qu'on regarde."},
                      {.nom = "depuis_prompt",
                       .genre = booleen,
                       .description =
                           "true quand la question porte sur la RÉPONSE à ce qu'on vient d'envoyer "
                           "(« qu'est-ce qu'il a répondu ? », « ça a donné quoi ? », « il en dit quoi ? ») : "
                           "la lecture ne rend alors que ce qui est arrivé DEPUIS la dernière consigne. false "
                           "(défaut) pour l'écran tel quel (« lis-moi l'erreur », « il affiche quoi ? »)."}}},
      {.nom = "resumer",
       .description = "Donne le RÉSUMÉ du travail d'un agent, déjà condensé par le cockpit : « où en est "
                      "Merlin ? », « résume les résultats », « qu'est-ce que ça donne ? ». Moins bavard "
                      "que lire, qui rend l'écran brut.",
       .parametres = {{.nom = "agent",
                       .description = "Le nom de l'agent à résumer. Vide = celui qu'on regarde."}}},
      {.nom = "etat",
       .description = "Dit ce qui se passe sur TOUT le plateau : quels agents sont ouverts, dans quel "
                      "état (travaille, attend une réponse, au repos) et sur quelle scène. À appeler "
                      "pour « où on en est ? », « qui travaille ? », « fais le point », « qu'est-ce qui "
                      "tourne ? ».",
       .parametres = {}},
      {.nom = "handle_command",
       .description = "LE REPLI : transmet la demande au cockpit quand AUCUN outil dédié ne convient — "
                      "missions et plans, mémoire et notes, musique, documents, thèmes, jobs et relais, "
                      "recherches, connexions et outils externes. Exemples : « lance une mission pour "
                      "refaire la page de prix », « note que la démo est jeudi », « coupe la musique », "
                      "« crée un document », « passe le thème en Crépuscule ». Tu transmets la demande "
                      "TELLE QUE DITE. La réponse peut mettre une minute à revenir.",
       .parametres = {{.nom = "text",
                       .description = "La demande de l'opérateur, fidèle et complète, en français",
                       .requis = true}}},
      {.nom = "confirm",
       .description = "Verdict de l'opérateur sur une action qui attend un feu vert. "
                      "« vas-y »/« ok »/« fais-le » → true ; « annule »/« non »/« laisse tomber » → "
                      "false. N'appelle cet outil QUE lorsqu'une action est effectivement en attente.",
       .parametres = {{.nom = "verdict", .genre = booleen, .description = "", .requis = true}}},
  };
  return outils;
}

const std::vector<OutilVoix>& ContratVoix::outilsPerchoir() {
  static const std::vector<OutilVoix> outils = {
      {.nom = "lire",
       .description = "Lit le BAS DE L'ÉCRAN d'un agent du perchoir et te le rend TEL QUEL : « qu'est-ce "
                      "que Merlin a répondu ? », « il attend quoi ? », « lis-moi l'erreur ». Tu ÉNONCES "
                      "ensuite ce qu'on te rend, fidèlement — jamais un résumé de ton cru. Ne tape "
                      "RIEN : répondre à ce qui s'affiche, c'est envoyer_touche ; avoir l'écran sous les "
                      "yeux, c'est focus.",
       .parametres = {{.nom = "agent",
                       .description = "Le nom de l'agent à lire. Vide = celui qu'on regarde."}}},
      {.nom = "envoyer_touche",
       .description = "Envoie UNE touche au terminal d'un agent du perchoir : « valide », « fais "
                      "échap », « interromps Milan », « descends d'un cran ». C'est l'outil des menus à "
                      "parcourir, des dialogues à accepter ou à quitter, du travail à interrompre. Une "
                      "touche par appel : « deux fois en bas, puis entrée » fait trois appels, dans cet "
                      "ordre. Si tu ne sais pas ce qui est à l'écran, appelle d'abord lire. Une liaison "
                      "tombée ne se relève pas d'une touche : c'est reconnecter.",
       .parametres = {{.nom = "touche",
                       .description =
                           "La touche à envoyer : entrée, échap, ctrl-c (interrompre), haut, bas, tab",
                       .requis = true},
                      {.nom = "agent", .description = "Le nom de l'agent visé. Vide = celui qu'on regarde."}}},
      {.nom = "focus",
       .description = "Met EN GRAND la carte d'un agent du perchoir : « montre-moi Merlin », « agrandis "
                      "Milan », « passe sur Harfang ». Ne lit pas son écran et n'y tape rien — ça, c'est "
                      "lire et envoyer_touche.",
       .parametres = {{.nom = "cible",
                       .description = "Le nom de l'agent dont la carte passe en grand",
                       .requis = true}}},
      {.nom = "reconnecter",
       .description = "Rétablit la liaison TOMBÉE avec un agent du perchoir : « reconnecte Merlin », "
                      "« rebranche Milan », « la liaison avec Harfang est coupée ». L'agent, lui, tourne "
                      "toujours sur sa machine : rien n'est relancé, rien n'est perdu. Ce n'est PAS "
                      "l'outil d'un agent relié qui se tait : son écran se regarde avec lire.",
       .parametres = {{.nom = "agent",
                       .description = "Le nom de l'agent à reconnecter. Vide = celui qu'on regarde."}}},
      {.nom = "retirer",
       .description = "Retire du perchoir la CARTE d'un agent : « enlève la carte de Milan », « retire "
                      "Merlin du perchoir ». Seule la carte s'en va : l'agent continue de tourner sur sa "
                      "machine. Interrompre son travail, c'est envoyer_touche avec ctrl-c ; une liaison "
                      "tombée se rétablit avec reconnecter, elle ne se retire pas.",
       .parametres = {{.nom = "agent",
                       .description =
                           "Le nom de l'agent dont la carte s'en va. Exigé : on ne retire jamais « celui "
                           "qu'on regarde » par défaut.",
                       .requis = true}}},
  };
  return outils;
}

const std::vector<OutilVoix>& ContratVoix::outilsPlateauMac() {
  static const std::vector<OutilVoix> outils = {
      {.nom = "focus",
       .description = "Met une fenêtre EN GRAND sur la scène visible du Mac, là-bas : un agent de "
                      "terminal ou une fenêtre de son cockpit. Les tournures : « montre Merlin sur le "
                      "Mac », « mets Harfang en grand là-bas ». Ne change PAS de scène et n'ouvre aucun "
                      "terminal — ça, c'est aller_scene et ouvrir_agent.",
       .parametres = {{.nom = "cible",
                       .description = "Le nom de l'agent ou de la fenêtre à mettre en grand",
                       .requis = true}}},
      {.nom = "aller_scene",
       .description = "Bascule le Mac vers une autre de SES scènes de travail : « va sur la scène "
                      "Sources là-bas », « change de scène sur le Mac ». Ses scènes te sont données plus "
                      "haut : n'appelle cet outil QUE pour l'une d'elles. Un SITE ou une adresse n'est PAS une "
                      "scène : c'est ouvrir_web.",
       .parametres = {{.nom = "nom", .description = "Le nom de la scène (ou de son dossier)", .requis = true}}},
      {.nom = "ouvrir_agent",
       .description = "Ouvre un NOUVEAU terminal d'agent sur le plateau du Mac : « ouvre un agent claude "
                      "là-bas », « lance un codex dans Sources sur le Mac ». Le nouvel agent reçoit un "
                      "nom PROPRE (Merlin, Milan, Harfang…), que tu ANNONCES. Cet outil ne fait que "
                      "CRÉER : un agent déjà ouvert là-bas se montre avec focus.",
       .parametres =
           {{.nom = "cli",
             .description = "Le CLI à lancer : claude, codex, grok, gemini, hermes. Vide = le premier installé "
                            "sur le Mac."},
            {.nom = "dossier",
             .description = "Le dossier de travail, sur le Mac (« dans Sources »). Vide = sa scène courante."},
            {.nom = "hote",
             .description = "L'hôte distant où le Mac doit le lancer (« sur vm-essais »). Vide = le Mac "
                            "lui-même."}}},
      {.nom = "ouvrir_web",
       .description = "Ouvre une page WEB sur le Mac, dans la carte navigateur de son cockpit : une "
                      "adresse (« ouvre example.com sur le Mac ») ou une recherche (« cherche la météo à "
                      "Lyon, là-bas »). C'est TOI qui tranches la confusion « va sur … » : le nom d'une "
                      "de ses scènes → aller_scene ; un domaine, une URL, un site ou une recherche → "
                      "ouvrir_web.",
       .parametres =
           {{.nom = "cible", .description = "L'adresse ou la recherche, telle que dite", .requis = true},
            {.nom = "externe",
             .genre = booleen,
             .description = "true si l'opérateur demande Safari, Chrome ou « le navigateur externe » du Mac. "
                            "Par défaut false (carte in-app)."}}},
      {.nom = "etat",
       .description = "Dit ce qui se passe sur TOUT le plateau du Mac : quels agents y sont ouverts, "
                      "dans quel état (travaille, attend une réponse, au repos) et sur quelle scène. À "
                      "appeler pour « où on en est là-bas ? », « qui travaille sur le Mac ? », "
                      "« qu'est-ce qui tourne là-bas ? ». Il rend l'état, pas les écrans : ce qu'un "
                      "agent du Mac a écrit ne se lit pas d'ici.",
       .parametres = {}},
  };
  return outils;
}

}  // namespace tarnavelle
