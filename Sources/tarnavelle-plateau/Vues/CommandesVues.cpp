#include <algorithm>
#include <charconv>
#include <system_error>

#include "CommandesVuesInterne.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/MotsTmux.hpp"
#include "TerminauxTmux/TerminauxTmux.hpp"
#include "TextesVuesInterne.hpp"

namespace tarnavelle::Plateau::CommandesVues {
namespace {

using MotsTmux::citer;

constexpr char separateur = '\t';

template <class Entier>
Entier nombre(std::string_view texte) {
  Entier lu = 0;
  std::from_chars(texte.data(), texte.data() + texte.size(), lu);
  return lu;
}

/// The rows of a listing that have that many fields: no field holds the separator, being ours or a number.
std::vector<std::vector<std::string>> rangees(std::string_view texte, std::size_t champs) {
  std::vector<std::vector<std::string>> lues;
  for (std::size_t fin = 0; (fin = texte.find('\n')) != std::string_view::npos; texte.remove_prefix(fin + 1)) {
    std::vector<std::string> rangee(1);
    for (const char c : texte.substr(0, fin))
      if (c == separateur)
        rangee.emplace_back();
      else
        rangee.back() += c;
    if (rangee.size() == champs) lues.push_back(std::move(rangee));
  }
  return lues;
}

std::string cible(std::int64_t scene) { return "=" + session(scene) + ":"; }

std::string motsCites(const std::vector<std::string>& mots) { return Texte::joindre(mots, " ", citer); }

/// For the pane that has just been made, which has the keyboard.
std::string marquer(std::string_view fenetre, std::string_view option, const std::string& valeur) {
  return " ; set-option -p -t " + std::string(fenetre) + " " + std::string(option) + " " + citer(valeur);
}

/// A format, for a door that is open and for one that is not.
std::string selonPorte(const std::string& ouverte, const std::string& fermee) {
  return "#{?@tarnavelle-porte," + ouverte + "," + fermee + "}";
}

/// Room is made in the window first: a pane too small to be split is refused.
std::string scinder(const SceneMontree& scene, const std::vector<std::string>& mots) {
  return "select-layout -t " + scene.fenetre + " tiled ; split-window -t " + scene.volets.back().id +
         " -e TMUX= -e TMUX_PANE= -- " + motsCites(mots);
}

}  // namespace

bool Releve::regardee(std::int64_t scene) const {
  return std::ranges::any_of(spectateurs, [&](const Spectateur& s) { return s.scene == scene; });
}

std::string session(std::int64_t scene) { return "tarnavelle-scene-" + std::to_string(scene); }

std::string relever() {
  const auto ligne = [](std::initializer_list<std::string_view> champs) {
    return citer(Texte::joindre(champs, "\t"));
  };
  return "list-panes -a -f \"#{&&:#{@tarnavelle-scene},#{@tarnavelle-fenetre}}\" -F " +
         ligne({"#{@tarnavelle-scene}", "#{window_id}", "#{window_width}", "#{window_height}", "#{pane_id}",
                "#{pane_active}", "#{@tarnavelle-liste}", "#{@tarnavelle-vue}", "#{@tarnavelle-regarde}",
                "#{pane_width}", "#{pane_height}", "#{@tarnavelle-plan}", "#{session_id}", "#{session_name}"}) +
         " ; list-panes -a -f \"#{&&:#{@tarnavelle-cle},#{!=:#{session_name}," + std::string(sessionPlateau) +
         "}}\" -F " +
         ligne({"#{@tarnavelle-cle}", "#{pane_id}", "#{session_name}", "#{window_width}", "#{window_height}"}) +
         " ; list-clients -F " +
         ligne({"#{client_name}", "#{client_control_mode}", "#{m:*ignore-size*,#{client_flags}}",
                "#{@tarnavelle-scene}", "#{session_name}", "#{client_width}", "#{client_height}"});
}

Releve releve(const std::vector<std::string>& ecrits) {
  Releve lu;
  if (ecrits.size() != 3) return lu;
  for (auto& r : rangees(ecrits[0], 14)) {
    SceneMontree& scene = lu.scenes[nombre<std::int64_t>(r[0])];
    scene.fenetre = r[1];
    scene.taille = {nombre<int>(r[2]), nombre<int>(r[3])};
    if (r[5] == "1") scene.actif = r[4];
    scene.plan = r[11];
    scene.session = r[12];
    scene.nom = r[13];
    scene.volets.push_back({.id = r[4],
                            .vue = r[7],
                            .regarde = r[8],
                            .liste = r[6] == "1",
                            .taille = {nombre<int>(r[9]), nombre<int>(r[10])}});
  }
  for (auto& r : rangees(ecrits[1], 5)) {
    lu.terminaux[r[0]] = {r[1], r[2], {nombre<int>(r[3]), nombre<int>(r[4])}};
  }
  for (auto& r : rangees(ecrits[2], 7)) {
    if (r[1] == "1" && r[4] == sessionPlateau) lu.lien = r[0];
    if (r[1] == "1" || r[2] == "1") continue;  // no terminal of tmux's drawing, or a view
    lu.spectateurs.push_back({r[0], nombre<std::int64_t>(r[3]), r[4], {nombre<int>(r[5]), nombre<int>(r[6])}});
  }
  return lu;
}

std::string suivreTailles(bool suivre) {
  constexpr std::string_view nom = "tarnavelle-tailles";
  if (!suivre) return "refresh-client -B " + std::string(nom);
  return "refresh-client -B " +
         citer(std::string(nom) +
               "::#{S:#{?@tarnavelle-scene,#{W:#{P:#{pane_id} #{pane_width}x#{pane_height} }},}}");
}

std::string ouvrirScene(std::int64_t scene, const std::vector<std::string>& motsListe, bool dansSaSession) {
  const std::string la = cible(scene);
  const std::string tailleNeuve =
      " -x " + std::to_string(Taille{}.colonnes) + " -y " + std::to_string(Taille{}.lignes);
  std::string ligne =
      (dansSaSession ? "new-window -t " + la : "new-session -d -s " + session(scene) + tailleNeuve) +
      " -n plateau -c / -- " + motsCites(motsListe);
  const auto regler = [&](std::string_view option, const std::string& valeur) {
    ligne += " ; set-option -t " + la + " " + std::string(option) + " " + citer(valeur);
  };
  regler("@tarnavelle-scene", std::to_string(scene));
  regler("prefix", "C-b");
  regler("status-style", "fg=colour250,bg=colour235");
  regler("status-format[0]",
         selonPorte("#{@tarnavelle-ligne}", MotsTmux::comparable(TextesVues::porteFermee())));
  regler("status-interval", "0");
  regler("status", "on");
  ligne += " ; set-option -w -t " + la + " @tarnavelle-fenetre 1 ; set-option -w -t " + la +
           " pane-border-status top ; set-option -w -t " + la + " pane-border-format " +
           citer(selonPorte("#{@tarnavelle-titre}",
                            "#{?@tarnavelle-liste," + MotsTmux::comparable(TextesVues::etatDAlors()) + ",}"));
  return ligne + marquer(la, "@tarnavelle-liste", "1");
}

std::string ouvrirListe(const SceneMontree& scene, const std::vector<std::string>& motsListe) {
  return scinder(scene, motsListe) + marquer(scene.fenetre, "@tarnavelle-liste", "1") + " ; " +
         choisir(scene.actif);
}

std::string ouvrirVue(const SceneMontree& scene, const std::string& cle, const Montrable& montrable,
                      const std::vector<std::string>& mots) {
  return scinder(scene, mots) + marquer(scene.fenetre, "@tarnavelle-vue", cle) +
         marquer(scene.fenetre, "@tarnavelle-regarde", montrable.terminal) + " ; " + choisir(scene.actif);
}

std::string fermerVolet(const std::string& volet) { return "kill-pane -t " + volet; }

std::string ordonner(const SceneMontree& scene, const std::vector<std::string>& ordre) {
  std::vector<std::string> places;
  for (const Volet& v : scene.volets) places.push_back(v.id);
  std::string ligne;
  for (std::size_t i = 0; i < ordre.size() && i < places.size(); ++i) {
    const auto ou = std::find(places.begin() + static_cast<std::ptrdiff_t>(i), places.end(), ordre[i]);
    if (places[i] == ordre[i] || ou == places.end()) continue;
    ligne += std::string(ligne.empty() ? "" : " ; ") + "swap-pane -d -s " + ordre[i] + " -t " + places[i];
    std::swap(places[i], *ou);
  }
  return ligne;
}

std::string disposer(const SceneMontree& scene, const std::string& disposition) {
  return "select-layout -t " + scene.fenetre + " " + citer(disposition);
}

std::string retenirPlan(const std::string& session, const std::string& plan) {
  return "set-option -t " + citer(session) + " @tarnavelle-plan " + citer(plan);
}

std::string choisir(const std::string& volet) { return "select-pane -t " + volet; }

std::string titrer(const std::string& volet, const std::string& titre) {
  return "set-option -p -t " + volet + " @tarnavelle-titre " + citer(titre);
}

std::string fermerPorte() { return "set-option -s @tarnavelle-porte 0"; }

std::string ecrireLigne(const std::string& session, const std::string& ligne) {
  return "set-option -t " + citer(session) + " @tarnavelle-ligne " + citer(ligne);
}

std::string mener(const std::string& client, const std::string& session) {
  return "switch-client -c " + citer(client) + " -t " + citer(session);
}

std::string redimensionner(const std::string& terminal, Taille taille) {
  return "resize-window -t " + terminal + " -x " + std::to_string(taille.colonnes) + " -y " +
         std::to_string(taille.lignes);
}

std::string annoncer(const std::vector<std::string>& clients, const std::string& texte) {
  constexpr std::string_view duree = "2000";  // ms
  std::string ligne = "set-option -s @tarnavelle-alerte " + citer(texte);
  for (const std::string& client : clients)
    ligne +=
        " ; display-message -d " + std::string(duree) + " -c " + citer(client) + " \"#{@tarnavelle-alerte}\"";
  return ligne;
}

}  // namespace tarnavelle::Plateau::CommandesVues
