#include "Agents/CarnetDeVol.hpp"

#include <algorithm>
#include <utility>

#include "Agents/LigneTmux.hpp"
#include "Socle/Chemin.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LignesJSON.hpp"
#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace CarnetDeVol {
namespace {

constexpr std::int64_t delaiHook = 5;  // seconds

std::string fichierDistant(std::string_view session, std::string_view suffixe) {
  return std::string(dossierDistant).append("/").append(nomSur(session)).append(suffixe);
}

/// Nothing when a member is mistyped, or missing where it is not optional.
std::optional<Reglages::Commande> lireCommande(const Json& objet) {
  const std::string* type = Champ::chaine(objet, "type");
  const std::string* command = Champ::chaine(objet, "command");
  if (!type || !command) return std::nullopt;
  Reglages::Commande commande{*type, *command, {}};
  if (const Json* timeout = Champ::membre(objet, "timeout"); timeout && !timeout->is_null()) {
    if (!timeout->is_number_integer()) return std::nullopt;
    if (!(commande.timeout = entierTronque(*timeout))) return std::nullopt;
  }
  return commande;
}

/// Reads each element of a list; nothing when it is no list or one element is refused.
template <class Element>
std::optional<std::vector<Element>> lireListe(const Json* liste,
                                              std::optional<Element> (*lireElement)(const Json&)) {
  if (!liste || !liste->is_array()) return std::nullopt;
  std::vector<Element> elements;
  for (const Json& objet : *liste) {
    auto element = lireElement(objet);
    if (!element) return std::nullopt;
    elements.push_back(std::move(*element));
  }
  return elements;
}

std::optional<Reglages::Entree> lireEntree(const Json& objet) {
  auto hooks = lireListe(Champ::membre(objet, "hooks"), lireCommande);
  if (!hooks) return std::nullopt;
  Reglages::Entree entree{{}, std::move(*hooks)};
  if (const Json* matcher = Champ::membre(objet, "matcher"); matcher && !matcher->is_null()) {
    if (!matcher->is_string()) return std::nullopt;
    entree.matcher = matcher->get<std::string>();
  }
  return entree;
}

Json enJSON(const Reglages::Commande& commande) {
  Json objet = {{"type", commande.type}, {"command", commande.command}};
  if (commande.timeout) objet["timeout"] = *commande.timeout;
  return objet;
}

Json enJSON(const Reglages::Entree& entree) {
  Json objet = {{"hooks", Json::array()}};
  if (entree.matcher) objet["matcher"] = *entree.matcher;
  for (const auto& commande : entree.hooks) objet["hooks"].push_back(enJSON(commande));
  return objet;
}

/// The words that start the agent in its session, or attach to it. `reglages` goes last among the
/// agent's, quoted already.
std::string demarrage(const AgentCLI& cli, std::string_view tmux, const std::vector<std::string>& extra,
                      std::string_view reglages) {
  std::string ligne = "tmux new -A -s " + LigneTmux::motDeFormat(tmux) + ' ' + LigneTmux::mot(cli.id);
  for (const auto* mots : {&cli.arguments, &extra})
    for (const std::string& mot : *mots) ligne += ' ' + LigneTmux::mot(mot);
  ligne += reglages;
  return ligne + " ';' set -t " + LigneTmux::mot(tmux) + " mouse on";
}

/// A text that printf's format prints as it stands, within single quotes.
std::string dansUnFormat(std::string_view texte) {
  std::string format;
  for (const char c : texte) {
    if (c == '\'') {
      format += R"('\'')";
      continue;
    }
    if (c == '%' || c == '\\') format += c;
    format += c;
  }
  return format;
}

std::string consigneNormalisee(std::string_view texte) {
  return Texte::tronquer(Texte::rogner(texte), bulleMax);
}

std::string_view texteOuVide(const Json& objet, std::string_view cle) {
  const std::string* chaine = Champ::chaine(objet, cle);
  return chaine ? std::string_view(*chaine) : std::string_view();
}

std::string_view resumeOutil(const Json& d) {
  const Json* entree = Champ::membre(d, "tool_input");
  if (!entree) return {};
  for (const std::string_view cle : {"file_path", "command", "pattern", "url", "path", "query", "description"})
    if (const auto valeur = texteOuVide(*entree, cle); !valeur.empty())
      return cle == "file_path" || cle == "path" ? Chemin::dernierComposant(valeur) : valeur;
  return {};
}

}  // namespace

std::optional<Reglages> Reglages::lire(std::string_view texte) {
  const auto objet = LectureJSON::objet(texte);
  const Json* hooks = objet ? Champ::membre(*objet, "hooks") : nullptr;
  if (!hooks || !hooks->is_object()) return std::nullopt;
  Reglages reglages;
  for (const auto& [evenement, liste] : hooks->items()) {
    auto entrees = lireListe(&liste, lireEntree);
    if (!entrees) return std::nullopt;
    reglages.hooks.emplace(evenement, std::move(*entrees));
  }
  return reglages;
}

Json Reglages::json() const {
  Json parEvenement = Json::object();
  for (const auto& [evenement, entrees] : hooks) {
    Json& liste = parEvenement[evenement] = Json::array();
    for (const auto& entree : entrees) liste.push_back(enJSON(entree));
  }
  return {{"hooks", std::move(parEvenement)}};
}

std::string nomSur(std::string_view nom) {
  const std::string sur = Texte::lettresEtNombres(nom, "._-");
  return sur.empty() ? "session" : sur;
}

std::string journalDistant(std::string_view session) { return fichierDistant(session, ".jsonl"); }

std::string reglagesDistant(std::string_view session) { return fichierDistant(session, ".hooks.json"); }

std::string commandeHook(std::string_view journal) {
  std::string chemin;
  for (const char c : journal) {
    if (c == '\\' || c == '"' || c == '`') chemin += '\\';
    chemin += c;
  }
  return R"(/bin/sh -c '{ tr -d "\n"; printf "\n"; } >> ")" + chemin + R"(" 2>/dev/null')";
}

Reglages reglages(std::string_view journal) {
  const Reglages::Entree entree{{}, {{"command", commandeHook(journal), delaiHook}}};
  Reglages reglages;
  for (const auto evenement : evenements) reglages.hooks.emplace(evenement, std::vector{entree});
  return reglages;
}

std::optional<std::string> json(std::string_view journal) {
  return EcritureJSON::lisible(reglages(journal).json());
}

std::string commandeLancement(const AgentCLI& cli, std::string_view tmux,
                              const std::vector<std::string>& extra) {
  if (cli.id != AgentCLI::claude().id) return demarrage(cli, tmux, extra, "");
  const std::string journal = "$HOME/" + journalDistant(tmux);
  const std::string fichierReglages = "$HOME/" + reglagesDistant(tmux);
  const auto texte = json(journal);
  if (!texte) return demarrage(cli, tmux, extra, "");
  return "tmux has-session -t " + LigneTmux::mot(tmux) + " 2>/dev/null || { mkdir -p \"$HOME/" +
         std::string(dossierDistant) + "\" && : > \"" + journal + "\" && cat > \"" + fichierReglages +
         "\" <<'TV_VOL_EOF'\n" + *texte + "\nTV_VOL_EOF\n }; " +
         demarrage(cli, tmux, extra, " '--settings' \"" + fichierReglages + '"');
}

std::string impressionDepuis(std::string_view chemin, std::int64_t curseur) {
  const auto premier = static_cast<std::uint64_t>(std::max<std::int64_t>(curseur, 0)) + 1;
  const std::string fichier = '"' + std::string(chemin) + '"';
  return "{ [ -f " + fichier + " ] && tail -c +" + std::to_string(premier) + ' ' + fichier + " | head -c " +
         std::to_string(lectureMax) + "; } || :";
}

std::string commandeLecture(std::string_view session, std::int64_t curseur) {
  return "sh -c 'f=\"$HOME/" + journalDistant(session) + "\"; " + impressionDepuis("$f", curseur) + '\'';
}

std::string commandeTitres(std::string_view marque, std::int64_t queue) {
  std::string script = R"(for c in "$HOME/)" + std::string(dossierDistant) + R"SH("/*.jsonl; do
[ -f "$c" ] || continue
s=${c##*/}; s=${s%.jsonl}
p=$(grep -o '"transcript_path":"[^"]*"' "$c" 2>/dev/null | tail -1 | sed 's/.*"transcript_path":"//; s/"$//')
[ -n "$p" ] && [ -f "$p" ] || continue
t=$(tail -c )SH";
  script += std::to_string(queue);
  script += R"SH( "$p" 2>/dev/null | grep -o '"aiTitle":"[^"]*"' | tail -1 | sed 's/.*"aiTitle":"//; s/"$//')
[ -n "$t" ] && printf ')SH";
  script += dansUnFormat(marque);
  script += R"SH(%s:%s\n' "$s" "$t"
done
exit 0)SH";
  return script;
}

EvenementVol evenement(std::string_view nom, const Json& d) {
  if (nom == "SessionStart") return {EvenementVol::demarre{}};
  if (nom == "Stop" || nom == "SessionEnd") return {EvenementVol::fini{}};
  if (nom == "UserPromptSubmit") {
    std::string consigne = consigneNormalisee(texteOuVide(d, "prompt"));
    if (!consigne.empty()) return {EvenementVol::consigne{std::move(consigne)}};
  }
  if (nom == "PreToolUse") {
    if (const std::string* outil = Champ::chaine(d, "tool_name"))
      return {EvenementVol::outil{*outil, Texte::tronquer(resumeOutil(d), bulleMax)}};
  }
  if (nom == "Notification")
    return {EvenementVol::besoin{Texte::tronquer(Texte::rogner(texteOuVide(d, "message")), bulleMax)}};
  return {EvenementVol::inconnu{}};
}

std::vector<ObjetDecode> decoder(std::string_view ligne) {
  std::vector<ObjetDecode> decodes;
  LignesJSON::objets(ligne, [&](const Json& objet) {
    const std::string* nom = Champ::chaine(objet, "hook_event_name");
    if (!nom) return;
    const std::string* transcript = Champ::chaine(objet, "transcript_path");
    decodes.push_back({evenement(*nom, objet), transcript ? std::optional(*transcript) : std::nullopt});
  });
  return decodes;
}

Lecture lire(std::string_view data) {
  Lecture lecture;
  lecture.consommes = LignesJSON::parcourir(data, [&](std::string_view ligne) {
    for (ObjetDecode& decode : decoder(ligne)) {
      if (decode.transcript) lecture.transcript = std::move(decode.transcript);
      if (!std::holds_alternative<EvenementVol::inconnu>(decode.evenement.cas))
        lecture.evenements.push_back(std::move(decode.evenement));
    }
  });
  return lecture;
}

std::int64_t curseurSuivant(std::int64_t curseur, std::size_t octets, std::size_t consommes) {
  const bool sansFin = consommes == 0 && octets >= static_cast<std::size_t>(lectureMax);
  return curseur + static_cast<std::int64_t>(sansFin ? octets : consommes);
}

SansEcho sansEcho(std::vector<EvenementVol> recus, const std::optional<std::string>& echo) {
  SansEcho resultat{std::move(recus), false};
  if (!echo) return resultat;
  const EvenementVol attendu{EvenementVol::consigne{consigneNormalisee(*echo)}};
  const auto trouve = std::ranges::find(resultat.evenements, attendu);
  resultat.echoConsomme = trouve != resultat.evenements.end();
  if (resultat.echoConsomme) resultat.evenements.erase(trouve);
  return resultat;
}

}  // namespace CarnetDeVol
}  // namespace tarnavelle
