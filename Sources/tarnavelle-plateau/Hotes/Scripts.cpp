#include <algorithm>

#include "Agents/CarnetDeVol.hpp"
#include "Agents/LancementVol.hpp"
#include "Agents/VoliereTmux.hpp"
#include "ScriptsInterne.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::interne::Scripts {
namespace {

/// A shell that is not a login shell has a short PATH, on a Mac above all.
constexpr std::string_view chemins =
    "PATH=\"$PATH:$HOME/.local/bin:/opt/homebrew/bin:/usr/local/bin\"; export PATH\n";

/// tmux draws "_" for what is not ASCII where no locale says UTF-8, and nothing at all on a terminal that it
/// does not know.
constexpr std::string_view affichage = R"SH(case "${LC_ALL:-${LC_CTYPE:-${LANG:-}}}" in
*[Uu][Tt][Ff]*8*) ;;
*) unset LC_ALL; LC_CTYPE=C.UTF-8; export LC_CTYPE ;;
esac
case "$(tput -T "$TERM" smcup 2>/dev/null)" in *1049h*) ;; *) TERM=xterm-256color; export TERM ;; esac
)SH";

/// A target of tmux, exact, for a shell.
std::string cible(std::string_view session) { return Shell::mot("=" + std::string(session) + ":"); }

/// tmux's commands after the one that shows the session: of its own options only, so that it shows as a
/// terminal without any frame, as large as the one here, and takes every key.
std::string reglages(std::string_view session) {
  const std::string c = cible(session);
  return " ';' set -t " + c + " status off ';' set -t " + c + " prefix None ';' set -t " + c +
         " prefix2 None ';' set -w -t " + c + " window-size largest ';' set -F -t " + c +
         " @tarnavelle-client '#{client_pid}'\n";
}

std::string dansLaMaison(std::string_view chemin) { return "\"$HOME\"/" + Shell::mot(chemin); }

/// A folder as it is asked for: from the home, unless it is absolute.
std::string dossierEnShell(std::string_view dossier) {
  if (dossier.starts_with('/')) return Shell::mot(dossier);
  if (dossier.starts_with("~/")) dossier.remove_prefix(2);
  if (dossier.empty() || dossier == "~") return "\"$HOME\"";
  return dansLaMaison(dossier);
}

/// What tmux says where it does not run.
bool sansServeur(std::string_view ligne) {
  const auto dit = [&](std::string_view quoi) { return ligne.find(quoi) != std::string_view::npos; };
  return dit("no server running") || (dit("error connecting") && (dit("No such file") || dit("refused")));
}

template <class Voir>
void parLigne(std::string_view texte, Voir voir) {
  while (!texte.empty()) {
    const auto fin = std::min(texte.find('\n'), texte.size());
    voir(texte.substr(0, fin));
    texte.remove_prefix(std::min(fin + 1, texte.size()));
  }
}

}  // namespace

std::string sonder(std::string_view programme, std::string_view dossier) {
  return std::string(chemins) + "command -v tmux >/dev/null 2>&1 && echo tmux=oui\ncommand -v " +
         Shell::mot(programme) +
         " >/dev/null 2>&1 && echo programme=oui\np=$(command -v tarnavelle-mcp 2>/dev/null) && printf "
         "'pont=%s\\n' \"$p\"\n"
         "printf 'maison=%s\\n' \"$HOME\"\ntmux -u list-sessions -F 'session=#{session_name}' "
         "2>/dev/null\ncd " +
         dossierEnShell(dossier) + " 2>/dev/null && printf 'dossier=%s\\n' \"$(pwd)\"\n:";
}

Lieu lieu(std::string_view sortie) {
  Lieu lieu;
  parLigne(sortie, [&](std::string_view ligne) {
    const auto egal = ligne.find('=');
    if (egal == std::string_view::npos) return;
    const auto cle = ligne.substr(0, egal), valeur = ligne.substr(egal + 1);
    if (cle == "tmux") lieu.tmux = true;
    if (cle == "programme") lieu.programme = true;
    if (cle == "pont" && valeur.starts_with('/')) lieu.pont = Texte::reparer(valeur);
    if (cle == "dossier") lieu.dossier = Texte::reparer(valeur);
    if (cle == "maison") lieu.maison = Texte::reparer(valeur);
    if (cle == "session") lieu.sessions.push_back(Texte::reparer(valeur));
  });
  return lieu;
}

std::string cheminDepart(std::string_view session) {
  return std::string(CarnetDeVol::dossierDistant) + "/" + CarnetDeVol::nomSur(session) + ".depart";
}
std::string cheminRetour(std::string_view session) {
  return std::string(CarnetDeVol::dossierDistant) + "/" + CarnetDeVol::nomSur(session) + ".retour";
}

std::string cheminPorte(std::string_view session) {
  return std::string(CarnetDeVol::dossierDistant) + "/" + CarnetDeVol::nomSur(session) + ".porte.json";
}

std::string cheminPont(std::string_view session) {
  return std::string(CarnetDeVol::dossierDistant) + "/" + CarnetDeVol::nomSur(session) + ".pont";
}

std::string pont(std::string_view binaire, const InjectionPorte::Porte& porte) {
  std::string script = "#!/bin/sh\n";
  for (const auto& [nom, valeur] : InjectionPorte::envPipe(porte))
    script += nom + "=" + Shell::mot(valeur) + "\nexport " + nom + "\n";
  return script + "exec " + Shell::mot(binaire) + " \"$@\"\n";
}

std::string effacer(std::string_view session) {
  return "rm -f " + dansLaMaison(CarnetDeVol::journalDistant(session)) + "; ";
}

std::string deposer(std::string_view chemin, bool programme) {
  const std::string fichier = dansLaMaison(chemin);
  // In one step: what is read is whole.
  return "umask 077; mkdir -p " + dansLaMaison(CarnetDeVol::dossierDistant) + " && cat > " + fichier +
         ".$$ && " + (programme ? "chmod 700 " + fichier + ".$$ && " : "") + "mv -f " + fichier + ".$$ " +
         fichier;
}

std::string depart(const Depart& d) {
  return "rm -f " + dansLaMaison(cheminDepart(d.session)) + "\n" + std::string(chemins) +
         std::string(affichage) + "cd " + Shell::mot(d.dossier) + " || exit\n" +
         CarnetDeVol::commandeLancement(d.cli, d.session, d.extra) + reglages(d.session);
}

std::string retour(std::string_view session) {
  const std::string c = cible(session);
  // A lone end of a paste means nothing to a program, in one piece; a key by key one would be an Esc.
  return std::string(chemins) + std::string(affichage) + "c=$(tmux show-options -qv -t " + c +
         " @tarnavelle-client 2>/dev/null)\ncase $c in ''|*[!0-9]*) c=0 ;; esac\nt=$(tmux list-clients -t " +
         Shell::mot("=" + std::string(session)) +
         " -F '#{client_pid} #{client_tty}' 2>/dev/null | sed -n \"s/^$c //p\")\n"
         "[ -n \"$t\" ] && tmux detach-client -t \"$t\" 2>/dev/null\n"
         "tmux set-buffer -b tarnavelle-fin \"$(printf '\\033[201~')\" 2>/dev/null && tmux if-shell -F -t " +
         c + " '#{pane_dead}' 'delete-buffer -b tarnavelle-fin' 'paste-buffer -r -d -b tarnavelle-fin -t \"=" +
         std::string(session) + ":\"' 2>/dev/null\n" + "exec tmux attach-session -t " +
         Shell::mot("=" + std::string(session)) + reglages(session);
}

std::string lancer(std::string_view chemin) {
  return "exec sh -c 'exec sh \"$HOME/" + std::string(chemin) + "\"'";
}

std::string presence(std::string_view session) {
  return std::string(chemins) + deposer(cheminRetour(session)) + "\n[ -f " +
         dansLaMaison(cheminDepart(session)) +
         " ] && echo depart\ntmux -u list-sessions -F 'session=#{session_name}' 2>&1\necho statut=$?";
}

Presence presence(std::string_view sortie, std::string_view session) {
  const std::string elle = "session=" + std::string(session);
  Presence vue = Presence::inconnue;
  bool aPartir = false, vit = false;
  parLigne(sortie, [&](std::string_view ligne) {
    vit = vit || ligne == elle;
    aPartir = aPartir || ligne == "depart";
    // Only a server that answers, or that is not there, knows that a session is gone.
    if (ligne == "statut=0" || sansServeur(ligne)) vue = Presence::finie;
  });
  if (vit) return Presence::vit;
  return aPartir ? Presence::aPartir : vue;
}

std::string lister(std::int64_t queueTitres) {
  return std::string(chemins) + "e=$(tmux list-sessions 2>&1 >/dev/null) || printf 'E:%s\\n' \"$e\"\n" +
         VoliereTmux::commandeLister(queueTitres);
}

std::optional<std::string> tmuxMuet(std::string_view sortie) {
  std::optional<std::string> muet;
  parLigne(sortie, [&](std::string_view ligne) {
    if (!ligne.starts_with("E:") || sansServeur(ligne) || ligne.find("not found") != std::string_view::npos)
      return;
    muet = Texte::tronquer(Texte::reparer(ligne.substr(2)), 200);
  });
  return muet;
}

std::string historique(std::string_view session, int lignes) {
  return std::string(chemins) + "tmux -u capture-pane -p -S -" + std::to_string(lignes) + " -t " +
         cible(session);
}

std::string tailles(const std::vector<std::string>& sessions) {
  std::string ligne = "cd " + dansLaMaison(CarnetDeVol::dossierDistant) + " 2>/dev/null && wc -c";
  for (const std::string& session : sessions)
    ligne += " " + Shell::mot(CarnetDeVol::nomSur(session) + ".jsonl");
  return ligne + " 2>/dev/null";
}

std::vector<std::pair<std::string, std::int64_t>> lireTailles(std::string_view sortie) {
  std::vector<std::pair<std::string, std::int64_t>> tailles;
  parLigne(sortie, [&](std::string_view ligne) {
    const auto mots = Texte::mots(ligne);
    const auto octets = mots.size() == 2 ? entierDecimal(mots[0]) : std::nullopt;
    if (octets) tailles.emplace_back(mots[1], *octets);
  });
  return tailles;
}

}  // namespace tarnavelle::Plateau::interne::Scripts
