#include "Porte/GuideAgent.hpp"

#include <utility>

#include "Porte/CommandeControle.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::GuideAgent {
namespace {

// The house rules name the tools as they are published.
static_assert(PorteMCP::prefixe == "trv_");

std::string ligneOutil(const OutilVoix& outil) {
  return "- `" + std::string(PorteMCP::prefixe) + outil.nom + "` : " + outil.description + "\n";
}

/// The variables that the guide shows, in its order, and where their values are kept.
constexpr std::pair<const char*, std::string Contexte::*> variables[] = {
    {"TARNAVELLE_CONTROL_URL", &Contexte::urlControle}, {"TARNAVELLECTL", &Contexte::binaireCtl},
    {"TARNAVELLE_MCP_SERVER", &Contexte::binaireMCP},   {"TARNAVELLE_NODE_ID", &Contexte::nodeId},
    {"TARNAVELLE_AGENT_GUIDE", &Contexte::cheminGuide}, {"TARNAVELLE_MCP_CONFIG", &Contexte::cheminConfigMCP},
};

}  // namespace

Contexte Contexte::depuisEnvironnement(const Variables& environnement, Defauts defauts) {
  Contexte c;
  c.binaireCtl = std::move(defauts.binaireCtl);
  c.binaireMCP = std::move(defauts.binaireMCP);
  for (const auto& [nom, champ] : variables)
    if (auto valeur = environnement.texte(nom)) c.*champ = std::move(*valeur);
  c.scene = environnement.texte("TARNAVELLE_SCENE").value_or("");
  c.urlControle.resize(PorteControle::urlBase(c.urlControle).size());
  return c;
}

std::string markdown(const Contexte& contexte) {
  return enTete(contexte) + "\n" + sectionEnvironnement(contexte) + "\n" + sectionMCP(contexte) + "\n" +
         sectionRepliCLI() + "\n" + sectionRegles();
}

std::string nomFichier(std::string_view session) { return "guide-" + std::string(session) + ".md"; }

std::string enTete(const Contexte& contexte) {
  std::string texte =
      "# Guide de l'agent Tarnavelle\n\n"
      "Tu tournes DANS un terminal du cockpit Tarnavelle : un plateau macOS où cohabitent des terminaux "
      "d'agents vivants, une carte navigateur, une conversation Hermès, des post-its et une mémoire partagée.";
  if (!contexte.scene.empty()) texte += " La scène courante s'appelle « " + contexte.scene + " ».";
  return texte +
         "\n\nSers-toi de la porte de commande dès que tu as besoin de REGARDER ou de DÉPLACER quelque chose "
         "sur le plateau. Ne demande jamais à l'humain de focaliser, d'ouvrir, de fermer ou de relancer une "
         "fenêtre à ta place quand un outil `trv_*` ou une commande `tarnavellectl` sait le faire.\n";
}

std::string sectionEnvironnement(const Contexte& contexte) {
  std::vector<std::string> connues;
  for (const auto& [nom, champ] : variables)
    if (const std::string& valeur = contexte.*champ; !valeur.empty())
      connues.push_back("- `" + std::string(nom) + "=" + valeur + "`");
  const std::string lignes =
      connues.empty()
          ? "- (aucune variable de contrôle dans cet environnement : la porte est fermée, ou tu n'as "
            "pas été lancé par le cockpit.)"
          : Texte::joindre(connues, "\n");
  return "## Environnement\n\n" + lignes +
         "\n\n`TARNAVELLE_CONTROL_TOKEN` porte le bearer de la porte. Il est dans ton environnement, jamais "
         "dans ce document : ne le recopie nulle part.\n";
}

std::string sectionMCP(const Contexte& contexte) {
  std::string texte =
      "## MCP\n\n"
      "Quand ton CLI expose des outils MCP, préfère le serveur nommé `tarnavelle` : c'est la porte "
      "elle-même, en direct. Le binaire est `$TARNAVELLE_MCP_SERVER` ; une config prête à coller sort de "
      "`$TARNAVELLECTL mcp-config`.";
  if (!contexte.cheminConfigMCP.empty())
    texte += "\nLa même config est déjà écrite dans `$TARNAVELLE_MCP_CONFIG`.";
  texte += "\n\nLes outils disponibles :\n";
  for (const OutilVoix& outil : CommandeControle::outilsPorte()) texte += ligneOutil(outil);
  return texte + ligneOutil(PorteMCP::outilGuide());
}

const std::vector<std::string_view>& exemplesCLI() {
  static const std::vector<std::string_view> exemples = {
      "etat --json",
      "focus Merlin",
      "dicter \"lance les tests\" --agent Milan",
      "lire_terminal Merlin --depuis-prompt",
      "attendre Merlin --jusqu-a fini --timeout-s 120",
      "shell \"npm test\"",
      "ouvrir_web example.com",
      "ouvrir_web ./rapport.html",
      "capture --chemin /tmp/canvas.png",
      "retiens \"le port dev est 5173\"",
      "rappelle port --limite 3",
      "fini --note \"lot C livré\"",
      "bloque \"il me faut le mot de passe staging\"",
  };
  return exemples;
}

std::string sectionRepliCLI() {
  std::string exemples;
  for (const auto exemple : exemplesCLI()) exemples.append("- `$TARNAVELLECTL ").append(exemple).append("`\n");
  return "## Repli CLI\n\n"
         "Sans outils MCP (gemini, grok, un simple shell), tout passe par `$TARNAVELLECTL` — les mêmes "
         "verbes, les mêmes arguments, la sortie humaine par défaut et `--json` pour le corps brut :\n\n" +
         exemples +
         "\n`$TARNAVELLECTL --help` liste TOUS les verbes, générés depuis la même table que les outils "
         "ci-dessus. Le code de sortie est ≠ 0 dès que la porte refuse : de quoi enchaîner dans un script.\n";
}

std::string sectionRegles() {
  return "## Règles de conduite\n\n"
         "- Appelle `trv_etat` (ou `$TARNAVELLECTL etat --json`) AVANT d'agir sur ce qui existe déjà : c'est "
         "lui qui donne les noms exacts des agents et des fenêtres, et ces noms sont les cibles valides de "
         "tous les autres verbes. Ne devine jamais un nom.\n"
         "- La mémoire du canvas est ta mémoire CANONIQUE. `trv_retiens` pour ce qu'un autre agent du "
         "plateau pourrait avoir besoin de savoir (décisions, pièges, où vivent les choses, ce que tu viens "
         "de finir), `trv_rappelle` avant de re-déduire un contexte. Garde ta mémoire privée pour tes "
         "brouillons : elle, personne d'autre ne la lit.\n"
         "- `trv_fini` est le SEUL signal de fin, et `trv_bloque` le seul signal d'arrêt. Si tu t'arrêtes "
         "sans rien dire, le cockpit ne sait pas si tu as réussi, échoué, ou disparu — et les relais armés "
         "sur « quand X aura fini » ne partent pas.\n"
         "- Un serveur, un watcher, une compilation qui tourne longtemps : `trv_shell` sans cible, pour que "
         "le cockpit ouvre un terminal DÉDIÉ. Garde le tien pour raisonner et éditer — un `npm run dev` dans "
         "ton propre terminal te bloque toi.\n"
         "- Pour savoir si un autre agent a avancé, `trv_attendre` plutôt que relire l'écran en boucle : "
         "c'est le seul verbe qui prend son temps, et il rend toujours ce qui s'est passé (atteint, timeout "
         "ou mort).\n"
         "- Un TEXTE se colle (`trv_dicter`, `trv_souffler`) ; une TOUCHE se frappe (`trv_envoyer_touches`) "
         "— un menu, un `esc`, un `ctrl+c` ne passent jamais par un texte.\n"
         "- Un FICHIER que tu produis pour qu'il soit REGARDÉ (un rapport html, un graphe svg) se montre sur "
         "le plateau : `open rapport.html` suffit — le cockpit route `open` vers sa carte Navigateur, tu "
         "n'as rien à faire de plus. `trv_ouvrir_web` ou `$TARNAVELLECTL ouvrir_web <chemin>` font la même "
         "chose quand tu préfères un outil. Ce qui n'est pas une page (image, pdf) part à l'outil natif, "
         "comme toujours ; ajoute `--externe` pour forcer le navigateur du système.\n"
         "- Pour VOIR ce que tu viens de changer, `trv_capture` (la fenêtre, un terminal) ou "
         "`trv_capture_web` (la page rendue). Une question visuelle se tranche sur une image, pas sur une "
         "supposition.\n"
         "- Aucun verbe dédié ne convient ? `trv_commande` transmet la demande au cockpit telle qu'elle a "
         "été dite. C'est le repli, pas le premier réflexe.\n";
}

}  // namespace tarnavelle::GuideAgent
