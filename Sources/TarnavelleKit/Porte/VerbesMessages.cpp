// The verbs of what is told to no terminal: memory, notes on the board, Hermès, and any other request.
#include "LigneVerbeInterne.hpp"

namespace tarnavelle::interne {

std::vector<LigneVerbe> verbesMessages() {
  return {
      {9,
       {"retiens",
        "Écrit une note dans la mémoire CANONIQUE du canvas — la seule mémoire durable partagée : « retiens "
        "que le port dev est 5173 », « note que la démo est jeudi ». La portee canvas (défaut) rattache la "
        "note à la scène courante ; global la rend visible partout.",
        {requis("texte", "La note à retenir, fidèle et complète"),
         facultatif("portee", "canvas (défaut) ou global.")}},
       "Écrit une note dans la mémoire partagée.",
       "Remember: write a note into the shared memory.",
       {"remember"},
       [](Args a) {
         return C{C::retiens{.texte = texte(a, "texte"), .portee = premier(texte(a, "portee"), "canvas")}};
       },
       {},
       {},
       {{"portee", Donnee::texte}}},

      {10,
       {"rappelle",
        "Cherche dans la mémoire canonique du canvas : « rappelle-moi le port dev », « qu'est-ce que je sais "
        "sur la démo ? ». Rend les fiches les plus pertinentes.",
        {facultatif("requete", "Ce qu'on cherche. Vide = les plus récentes."),
         facultatif("limite", "Combien de fiches au plus. Défaut 5.")}},
       "Cherche dans la mémoire partagée.",
       "Recall: search the shared memory and its notes.",
       {"recall"},
       [](Args a) { return C{C::rappelle{.requete = texte(a, "requete"), .limite = entier(a, "limite", 5)}}; },
       {},
       {.lectureSeule = true},
       {{"fiches", Donnee::liste}}},

      {11,
       {"commande",
        "LE REPLI : transmet la demande au cockpit quand AUCUN verbe dédié ne convient — missions et plans, "
        "musique, documents, thèmes, jobs, connexions. « lance une mission pour refaire la page de prix », "
        "« coupe la musique ». Tu transmets la demande TELLE QUE DITE.",
        {requis("texte", "La demande, fidèle et complète, en français")}},
       "Transmet au cockpit toute autre demande, telle quelle.",
       "Any other request to the cockpit: music, themes, documents, missions.",
       {"command"},
       [](Args a) { return C{C::commande{.texte = texte(a, "texte")}}; },
       {},
       {.destructif = true, .ouvert = true}},

      {22,
       {"postit",
        "Pose un POST-IT sur le canvas : une note qui reste À L'ÉCRAN, sous les yeux, à côté des agents. "
        "« colle un post-it : relire la migration », « garde sous mes yeux : démo à 14 h », « affiche : le "
        "lot 7 à livrer ». Ce n'est PAS retiens : un post-it se REGARDE, une note de mémoire se RAPPELLE "
        "(avec rappelle).",
        {requis("texte", "Ce qui est écrit sur la note, tel quel")}},
       "Colle un post-it à l'écran, à côté des agents.",
       "Put a sticky note, a reminder, on the screen.",
       {"sticky_note"},
       [](Args a) { return C{C::postit{.texte = texte(a, "texte")}}; },
       {},
       {},
       {{"scene", Donnee::texte}}},

      {26,
       {"ouvrir_chat",
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
       "Open the chat with Hermes, the remote agent.",
       {"open_chat"},
       [](Args a) { return C{C::ouvrirChat{.hote = texte(a, "hote"), .texte = texte(a, "texte")}}; },
       {},
       {.ouvert = true}},

      {27,
       {"message_chat",
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
       "Send a chat message to Hermes, the remote agent.",
       {},
       [](Args a) { return C{C::messageChat{.texte = texte(a, "texte"), .cible = texte(a, "cible")}}; },
       {},
       {.destructif = true, .ouvert = true}},
  };
}

}  // namespace tarnavelle::interne
