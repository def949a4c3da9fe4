#include "Voix/MoteurIntentions.hpp"

#include <algorithm>
#include <locale>
#include <sstream>

#include "Socle/Texte.hpp"

namespace tarnavelle::MoteurIntentions {
namespace {

constexpr std::string_view tete =
    "Tu es le MOTEUR D'INTENTIONS de Tarnavelle, un cockpit d'agents de code piloté à la voix. Tu "
    "convertis UNE phrase parlée (déjà transcrite, parfois mal) en commandes du cockpit. Tu ne parles "
    "à personne : tu ne rends que du JSON.\n"
    "\n"
    "LE PLATEAU, MAINTENANT. ";

constexpr std::string_view commandes = R"(.

RENDS EXACTEMENT CE JSON, sans prose, sans balises de code :
{"adressee": <bool>, "confiance": <0..1>, "raison": "<8 mots max>", "commandes": [ … ]}

Les commandes possibles (n'emploie QUE celles-là, avec les champs utiles) :
- {"action":"dicter","agent":"<nom|null>","texte":"<consigne mot pour mot>","valider":true}
- {"action":"focus","cible":"<nom d'agent ou de fenêtre>"}
- {"action":"aller_scene","nom":"<nom de scène>"}
- {"action":"ouvrir_agent","cli":"<claude|codex|grok|gemini|kimi>","dossier":"<chemin|null>","hote":"<hôte|null>"}
- {"action":"ouvrir_web","cible":"<url ou recherche>","externe":false}
- {"action":"lire","agent":"<nom|null>","depuis_prompt":<bool>}
- {"action":"resumer","agent":"<nom|null>"}
- {"action":"etat"}
- {"action":"repli","texte":"<la phrase entière>"}
- {"action":"rien"}

)";

constexpr std::string_view regles =
    "RÈGLES QUI COMPTENT :\n"
    "- DICTER EXIGE UNE ADRESSE. Seule une phrase qui NOMME son destinataire (« dis à Merlin de… », "
    "« envoie à Milan : … », « Merlin, … ») devient \"dicter\" : tu ôtes l'adresse et tu gardes le "
    "reste MOT POUR MOT (tu es le microphone, pas l'auteur). Un ordre donné au cockpit sans "
    "destinataire nommé n'est JAMAIS un \"dicter\" : faute de commande dédiée, il part en \"repli\". "
    "« tout le monde » ne nomme personne : \"repli\" aussi. valider vaut true, et false SEULEMENT si "
    "l'opérateur demande de poser le texte sans l'envoyer (« ne valide pas »).\n"
    "- LES NOMS SONT CEUX DU PLATEAU (Merlin, Milan…), JAMAIS le nom du CLI. Dit avec un verbe "
    "d'ouverture (« ouvre », « lance », « démarre »), un nom absent du plateau veut dire OUVRIR, jamais "
    "\"focus\" : un programme (claude, codex…) donne \"ouvrir_agent\", un site ou une page "
    "\"ouvrir_web\", tout le reste \"repli\".\n"
    "- PLUSIEURS CONSIGNES DANS UNE PHRASE font plusieurs commandes, dans l'ordre où elles sont "
    "dites. Si l'opérateur se reprend (« non, Milan d'abord », « finalement, laisse tomber le "
    "navigateur »), tu les remets en ordre et la consigne annulée disparaît.\n"
    "- CE QUI N'A PAS DE COMMANDE DÉDIÉE (missions, mémoire, musique, documents, thèmes, quotas, "
    "questions ouvertes) part en \"repli\" avec la phrase ENTIÈRE. Le repli n'est pas un échec : "
    "c'est la porte de l'orchestrateur.\n"
    "- LES QUESTIONS SUR CE QU'UN AGENT DIT, ATTEND OU AFFICHE (« que dit Merlin ? », « il attend "
    "quoi ? », « lis-moi l'erreur ») deviennent \"lire\", avec depuis_prompt à true quand on demande "
    "ce qu'il a répondu DEPUIS la dernière consigne (« il a répondu quoi ? »), à false sinon ; "
    "« résume ce qu'il a fait » devient \"resumer\". Si personne n'est nommé, agent vaut null : "
    "c'est celui qu'on regarde.\n"
    "- TU N'INVENTES NI CHEMIN, NI URL, NI NOM. Dans le doute, \"repli\".\n"
    "- AUCUNE prose, AUCUN commentaire, AUCUNE balise ```.\n"
    "\n";

constexpr std::string_view queueTouche =
    "IMPORTANT — ON T'A EXPLICITEMENT ADRESSÉ LA PAROLE : l'opérateur a maintenu la touche, dit le "
    "mot d'appel ou nommé un agent en tête de phrase. C'est TOUJOURS une consigne, aussi longue, "
    "hésitante ou bavarde soit-elle : adressee vaut TOUJOURS true, et {\"action\":\"rien\"} est "
    "INTERDIT. Tu ôtes le remplissage (« euh », « bon, alors », « du coup ») et tu EXTRAIS la "
    "consigne. Si la phrase est vide ou inintelligible, tu rends ta meilleure supposition, en "
    "\"repli\".";

constexpr std::string_view queueMicro =
    "CRUCIAL — EST-CE QU'ON TE PARLE ? Le micro reste ouvert : l'opérateur pense tout haut, parle à "
    "quelqu'un d'autre ou à sa caméra, et ces phrases-là nomment souvent un agent, le navigateur ou "
    "une scène. NOMMER N'EST PAS ORDONNER. S'il pense tout haut ou parle à quelqu'un : adressee=false "
    "et commandes=[{\"action\":\"rien\"}].\n"
    "- « claude est vraiment bon là-dessus » → rien\n"
    "- « j'adore ce que Merlin a fait » → rien\n"
    "- « bon, faut que je me concentre deux minutes » → rien\n"
    "- « je vais vous montrer un truc » → rien\n"
    "- « j'ai dit à Merlin de s'en occuper hier » → rien\n"
    "- « je me demande si Milan a bientôt fini » → rien\n"
    "adressee=true SEULEMENT pour une consigne claire, donnée au cockpit ou à un agent ; une question "
    "posée sur un agent en est une :\n"
    "- « ouvre un agent claude »\n"
    "- « dis à Merlin de relancer les tests »\n"
    "- « montre-moi Milan »\n"
    "- « qu'est-ce que Merlin a répondu ? »\n"
    "Dans le doute : adressee=false.";

/// A text as the model means it: trimmed, "null" in any case being none.
std::string lireCle(const Json& objet, std::string_view cle) {
  const std::string* texte = Champ::chaine(objet, cle);
  if (!texte || Texte::minuscules(*texte) == "null") return {};
  return std::string(Texte::rogner(*texte));
}

std::string lireCle(const Json& objet, std::string_view cle, std::string_view repli) {
  auto texte = lireCle(objet, cle);
  return texte.empty() ? lireCle(objet, repli) : texte;
}

/// Only a boolean: "false" as a text is a mistake of the model's, and takes the default.
std::optional<bool> booleen(const Json& objet, std::string_view cle) {
  const Json* valeur = Champ::membre(objet, cle);
  const auto* b = valeur ? valeur->get_ptr<const Json::boolean_t*>() : nullptr;
  return b ? std::optional(*b) : std::nullopt;
}

std::optional<double> nombre(const Json& objet, std::string_view cle) {
  const Json* valeur = Champ::membre(objet, cle);
  return valeur ? MoteurIntentions::nombre(*valeur) : std::nullopt;
}

}  // namespace

std::string prompt(const MondeVoix& monde, const std::vector<std::string>& clis, AdresseVoix adresse) {
  std::string texte(tete);
  texte.append(monde.recit.empty() ? "Le plateau est vide." : monde.recit)
      .append("\nCLIs d'agents installés : ")
      .append(clis.empty() ? "aucun" : Texte::joindre(clis, ", "))
      .append(commandes)
      .append(regles)
      .append(queue(adresse));
  return texte;
}

std::string_view queue(AdresseVoix adresse) {
  switch (adresse) {
    case AdresseVoix::microOuvert: return queueMicro;
    case AdresseVoix::pressionTouche: return queueTouche;
  }
  return {};
}

std::optional<Json> objetJSON(std::string_view texte) {
  const auto debut = texte.find('{');
  const auto fin = texte.rfind('}');
  if (debut == texte.npos || fin == texte.npos || fin < debut) return std::nullopt;
  return LectureJSON::objet(texte.substr(debut, fin - debut + 1));
}

std::optional<double> nombre(const Json& valeur) {
  if (valeur.is_number()) return valeur.get<double>();
  if (!valeur.is_string()) return std::nullopt;
  auto texte = valeur.get<std::string>();
  std::ranges::replace(texte, ',', '.');
  if (texte.find_first_not_of("+-.0123456789eE") != texte.npos) return std::nullopt;
  // A stream, because not every standard library converts decimals with from_chars.
  std::istringstream flux(texte);
  flux.imbue(std::locale::classic());
  double d = 0;
  if (!(flux >> d) || flux.peek() != std::istringstream::traits_type::eof()) return std::nullopt;
  return d;
}

std::optional<VerdictIntentions> decoder(std::string_view reponse) {
  const auto objet = objetJSON(reponse);
  if (!objet) return std::nullopt;

  VerdictIntentions verdict;
  const auto adressee = booleen(*objet, "adressee");
  verdict.adressee = adressee ? *adressee : booleen(*objet, "directed_at_app").value_or(true);
  const auto confiance = nombre(*objet, "confiance");
  verdict.confiance = std::clamp(confiance ? *confiance : nombre(*objet, "confidence").value_or(0), 0.0, 1.0);
  const std::string* raison = Champ::chaine(*objet, "raison");
  if (!raison) raison = Champ::chaine(*objet, "reasoning");
  if (raison) verdict.raison = Texte::premiers(*raison, raisonMax);
  for (const char* cle : {"commandes", "commands"}) {
    const Json* liste = Champ::membre(*objet, cle);
    if (!liste || !liste->is_array()) continue;
    for (const Json& element : *liste)
      if (auto intention = commande(element)) verdict.commandes.push_back(std::move(*intention));
    break;
  }
  return verdict;
}

std::optional<IntentionTarnavelle> commande(const Json& objet) {
  using I = IntentionTarnavelle;
  const auto action = Texte::minuscules(Champ::texte(objet, "action"));
  if (action == "dicter" || action == "prompt_agent") {
    auto texte = lireCle(objet, "texte", "text");
    if (texte.empty()) return std::nullopt;
    return I{I::dicter{.agent = lireCle(objet, "agent"),
                       .texte = std::move(texte),
                       .valider = booleen(objet, "valider").value_or(true)}};
  }
  if (action == "focus") {
    auto cible = lireCle(objet, "cible", "target");
    if (cible.empty()) return std::nullopt;
    return I{I::focus{.cible = std::move(cible)}};
  }
  if (action == "aller_scene") {
    auto nom = lireCle(objet, "nom");
    if (nom.empty()) return std::nullopt;
    return I{I::allerScene{.nom = std::move(nom)}};
  }
  if (action == "ouvrir_agent" || action == "spawn_agent")
    return I{I::ouvrirAgent{.cli = lireCle(objet, "cli", "agent"),
                            .dossier = lireCle(objet, "dossier"),
                            .hote = lireCle(objet, "hote")}};
  if (action == "ouvrir_web" || action == "open_browser") {
    auto cible = lireCle(objet, "cible", "url");
    if (cible.empty()) return std::nullopt;
    return I{I::ouvrirWeb{.cible = std::move(cible), .externe = booleen(objet, "externe").value_or(false)}};
  }
  if (action == "lire")
    return I{I::lire{.agent = lireCle(objet, "agent"),
                     .depuisPrompt = booleen(objet, "depuis_prompt").value_or(false)}};
  if (action == "resumer") return I{I::resumer{.agent = lireCle(objet, "agent")}};
  if (action == "etat") return I{I::etat{}};
  if (action == "repli") {
    auto texte = lireCle(objet, "texte");
    if (texte.empty()) return std::nullopt;
    return I{I::repli{.texte = std::move(texte)}};
  }
  return std::nullopt;
}

}  // namespace tarnavelle::MoteurIntentions
