#include "CommandesTmuxInterne.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <system_error>

#include "PriseTmuxInterne.hpp"
#include "Socle/Texte.hpp"
#include "TerminauxTmux/LectureEcran.hpp"
#include "TerminauxTmux/MotsTmux.hpp"

namespace tarnavelle::Plateau::CommandesTmux {
namespace {

constexpr std::string_view fait = "fait";
constexpr std::string_view mort = "mort";
constexpr std::string_view inconnu = "inconnu";
constexpr std::string_view condition = "condition";
constexpr int signalStatut = 128;  ///< the exit status of a program ended by a signal, as shells tell it

/// A hostile text in a row of a listing: a title or a program's name may hold tabs and line feeds.
std::string propre(std::string_view variable) {
  return "#{s/[\001-\037\177]/_/:" + std::string(variable) + "}";
}

std::optional<int> nombre(std::string_view texte) {
  int lu = 0;
  const auto fin = std::from_chars(texte.data(), texte.data() + texte.size(), lu);
  if (fin.ec != std::errc() || fin.ptr != texte.data() + texte.size()) return std::nullopt;
  return lu;
}

/// The fields of a row; the last may hold the separator.
template <std::size_t N>
std::optional<std::array<std::string_view, N>> champs(std::string_view ligne, char separateur) {
  std::array<std::string_view, N> lus;
  for (std::size_t i = 0; i + 1 < N; ++i) {
    const auto fin = ligne.find(separateur);
    if (fin == std::string_view::npos) return std::nullopt;
    lus[i] = ligne.substr(0, fin);
    ligne.remove_prefix(fin + 1);
  }
  lus[N - 1] = ligne;
  return lus;
}

std::string motsCites(const std::vector<std::string>& mots) {
  return Texte::joindre(mots, " ", MotsTmux::citer);
}

/// Size, mark and the screen that stays after the program: in the line that starts it, which nothing can slip
/// into.
std::string apprets(const std::string& cible, const Lancement& lancement) {
  return " ; resize-window -t " + cible + " -x " + std::to_string(lancement.taille.colonnes) + " -y " +
         std::to_string(lancement.taille.lignes) + " ; set-option -w -t " + cible +
         " remain-on-exit on ; set-option -p -t " + cible + " @tarnavelle-cle " +
         MotsTmux::citer(lancement.cle);
}

/// Whether that is the terminal which is meant, as a condition.
std::string leSien(const IdTerminal& id) {
  const std::string la = "#{==:#{pane_id}," + id.valeur + "}";
  if (id.cle.empty()) return la;
  return "#{&&:" + la + ",#{==:#{@tarnavelle-cle}," + MotsTmux::comparable(id.cle) + "}}";
}

constexpr std::string_view quiEtOu = "\"#{pane_id} #{pane_pid}\"";

}  // namespace

std::string lister() {
  // A watched window is linked into the board's own session too.
  return "list-panes -a -f \"#{&&:#{@tarnavelle-cle},#{!=:#{session_name}," + std::string(sessionPlateau) +
         "}}\" -F " +
         MotsTmux::citer("#{pane_id}\t#{session_name}\t#{pane_pid}\t#{pane_dead}\t#{pane_dead_status}\t" +
                         std::string("#{pane_dead_signal}\t") + propre("@tarnavelle-cle") + "\t" +
                         propre("pane_current_command") + "\t" + propre("pane_title"));
}

std::vector<Terminal> terminaux(const Blocs& blocs) {
  std::vector<Terminal> lus;
  std::string_view texte = blocs.empty() ? std::string_view() : std::string_view(blocs.front().texte);
  for (std::size_t fin = 0; (fin = texte.find('\n')) != std::string_view::npos; texte.remove_prefix(fin + 1)) {
    const auto rangee = champs<9>(texte.substr(0, fin), '\t');
    if (!rangee || !MotsTmux::idValide((*rangee)[0])) continue;
    const auto& [id, session, pid, estMort, statut, signal, cle, commande, titre] = *rangee;
    Terminal terminal{.id = {std::string(id), Texte::reparer(cle)},
                      .cle = Texte::reparer(cle),
                      .session = Texte::reparer(session),
                      .processus = nombre(pid).value_or(0),
                      .mort = estMort == "1",
                      .statut = {},
                      .titre = Texte::reparer(titre),
                      .commande = Texte::reparer(commande)};
    if (terminal.mort) {
      terminal.statut = nombre(statut);
      if (const auto par = nombre(signal); par && !terminal.statut) terminal.statut = signalStatut + *par;
    }
    lus.push_back(std::move(terminal));
  }
  return lus;
}

std::string ouvrir(const Lancement& lancement, const std::vector<std::string>& mots) {
  const auto& [colonnes, lignes] = lancement.taille;
  return "new-session -d -P -F " + std::string(quiEtOu) + " -s " + lancement.session + " -x " +
         std::to_string(colonnes) + " -y " + std::to_string(lignes) + " -c " +
         MotsTmux::citer(MotsTmux::formatDe(lancement.dossier)) + " -- " + motsCites(mots) +
         apprets("=" + lancement.session + ":", lancement);
}

std::string relancer(std::string_view id, const Lancement& lancement, const std::vector<std::string>& mots) {
  const std::string cible(id);
  return "respawn-pane -t " + cible + " -c " + MotsTmux::citer(MotsTmux::formatDe(lancement.dossier)) + " -- " +
         motsCites(mots) + apprets(cible, lancement) + " ; display-message -p -t " + cible + " " +
         std::string(quiEtOu);
}

std::optional<Ouvert> ouvert(const Blocs& blocs) {
  for (const auto& bloc : blocs) {
    const auto mots = Texte::mots(bloc.texte);
    if (mots.size() != 2 || !MotsTmux::idValide(mots[0])) continue;
    if (const auto pid = nombre(mots[1])) return Ouvert{std::string(mots[0]), *pid};
  }
  return std::nullopt;
}

std::string ecran(std::string_view id) {
  const std::string cible(id);
  return "capture-pane -p -e -t " + cible + " ; display-message -p -t " + cible + " " +
         MotsTmux::citer("#{pane_height}\t#{cursor_x}\t#{cursor_y}\t#{alternate_on}\t#{pane_in_mode}\t" +
                         std::string("#{bracket_paste_flag}\t") + propre("pane_title"));
}

std::optional<Ecran> ecran(const Blocs& blocs) {
  if (blocs.size() != 2 || !blocs[1].texte.ends_with('\n')) return std::nullopt;
  const auto lus = champs<7>(std::string_view(blocs[1].texte).substr(0, blocs[1].texte.size() - 1), '\t');
  if (!lus) return std::nullopt;
  const auto& [hauteur, x, y, alterne, mode, collage, titre] = *lus;
  auto lignes = LectureEcran::lire(blocs[0].texte);
  const auto haut = nombre(hauteur);
  if (!haut || lignes.vues.size() != static_cast<std::size_t>(std::max(*haut, 0))) return std::nullopt;
  Ecran ecran;
  ecran.lignes = std::move(lignes.vues);
  ecran.attenuees = std::move(lignes.attenuees);
  ecran.curseurLigne = nombre(y).value_or(0);
  ecran.curseurColonne = nombre(x).value_or(0);
  ecran.ecranAlterne = alterne == "1";
  ecran.modeCopie = nombre(mode).value_or(0) > 0;
  if (!collage.empty()) ecran.collageEncadre = collage == "1";
  ecran.titre = Texte::reparer(titre);
  ecran.revision = std::hash<std::string>()(blocs[0].texte) * 31 + std::hash<std::string>()(blocs[1].texte);
  return ecran;
}

std::string peinture(std::string_view id) {
  const std::string cible(id);
  // With the blanks that end a line: they may be coloured.
  return "capture-pane -p -e -N -t " + cible + " ; display-message -p -t " + cible + " " +
         MotsTmux::citer("#{pane_width}\t#{pane_height}\t#{cursor_x}\t#{cursor_y}\t#{cursor_flag}");
}

std::optional<Peinture> peinture(const Blocs& blocs) {
  if (blocs.size() != 2) return std::nullopt;
  const auto lus = champs<5>(Texte::rogner(blocs[1].texte), '\t');
  if (!lus) return std::nullopt;
  const auto& [largeur, hauteur, x, y, curseur] = *lus;
  const auto large = nombre(largeur);
  const auto haut = nombre(hauteur);
  Peinture peinture;
  peinture.lignes = LectureEcran::peindre(blocs[0].texte);
  if (!large || !haut || *large < 1 || peinture.lignes.size() != static_cast<std::size_t>(std::max(*haut, 0)))
    return std::nullopt;
  peinture.taille = {*large, *haut};
  if (curseur == "1") peinture.curseur = {nombre(y).value_or(0), nombre(x).value_or(0)};
  return peinture;
}

std::string historique(std::string_view id, int lignes) {
  constexpr int lignesMax = 1'000'000;
  const std::string cible(id);
  const auto capture = "{ capture-pane -p -e -t " + cible;
  return "if-shell -F -t " + cible + " \"#{alternate_on}\" " + capture + " } " + capture + " -S -" +
         std::to_string(std::clamp(lignes, 0, lignesMax)) + " }";
}

std::string reconnaitre(const IdTerminal& id) {
  // Not compared there: display-message reads "%" as the date's.
  return "display-message -p -t " + id.valeur + " " + MotsTmux::citer(propre("@tarnavelle-cle"));
}

bool reconnu(const IdTerminal& id, const BlocTmux& bloc) { return Texte::rogner(bloc.texte) == id.cle; }

std::string agir(const IdTerminal& id, std::string_view acte) {
  const std::string& cible = id.valeur;
  return "if-shell -F -t " + cible + " " + MotsTmux::citer("#{&&:" + leSien(id) + ",#{!=:#{pane_dead},1}}") +
         " { copy-mode -q -t " + cible + " ; " + std::string(acte) + " ; display-message -p " +
         std::string(fait) + " } { if-shell -F -t " + cible + " " + MotsTmux::citer(leSien(id)) +
         " { display-message -p " + std::string(mort) + " } { display-message -p " + std::string(inconnu) +
         " } }";
}

std::string valider(const IdTerminal& id, const std::vector<std::string>& saufSi) {
  std::string trouve;
  std::string rien;
  for (const auto& texte : saufSi)
    if (!texte.empty()) {
      trouve += MotsTmux::chercher(texte);
      rien += '0';
    }
  const std::string entrer = "send-keys -t " + id.valeur + " Enter";
  if (rien.empty()) return agir(id, entrer);
  return agir(id, "if-shell -F -t " + id.valeur + " " + MotsTmux::citer("#{==:" + trouve + "," + rien + "}") +
                      " { " + entrer + " } { display-message -p " + std::string(condition) + " }");
}

Ou<Fait> issue(const Blocs& blocs) {
  const auto dit = [&](std::string_view quoi) {
    return std::ranges::any_of(blocs, [&](const BlocTmux& bloc) { return Texte::rogner(bloc.texte) == quoi; });
  };
  if (dit(condition)) return Sinon{Panne::condition};
  if (dit(fait)) return Fait{};
  if (dit(inconnu)) return Sinon{Panne::inconnu};
  return Sinon{dit(mort) ? Panne::mort : Panne::refuse};
}

}  // namespace tarnavelle::Plateau::CommandesTmux
