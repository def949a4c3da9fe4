#include "Agents/LancementVol.hpp"

#include "Agents/CarnetDeVol.hpp"
#include "Agents/HooksVol.hpp"
#include "Agents/LigneTmux.hpp"
#include "TableAgentsInterne.hpp"

namespace tarnavelle::CarnetDeVol {
namespace {

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

}  // namespace

std::string commandeLancement(const AgentCLI& cli, std::string_view tmux,
                              const std::vector<std::string>& extra) {
  const auto* ligne = interne::ligneAgent(cli.id);
  if (!ligne || ligne->drapeauHooks.empty()) return demarrage(cli, tmux, extra, "");
  const std::string journal = "$HOME/" + journalDistant(tmux);
  const std::string fichierReglages = "$HOME/" + reglagesDistant(tmux);
  const auto texte = json(journal);
  if (!texte) return demarrage(cli, tmux, extra, "");
  return "tmux has-session -t " + LigneTmux::mot(tmux) + " 2>/dev/null || { mkdir -p \"$HOME/" +
         std::string(dossierDistant) + "\" && : > \"" + journal + "\" && cat > \"" + fichierReglages +
         "\" <<'TV_VOL_EOF'\n" + *texte + "\nTV_VOL_EOF\n }; " +
         demarrage(cli, tmux, extra, ' ' + LigneTmux::mot(ligne->drapeauHooks) + " \"" + fichierReglages + '"');
}

}  // namespace tarnavelle::CarnetDeVol
