#include "Options.hpp"

#include "Accueil/TableOptions.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr LigneOption<Options> table[] = {
    {"--detache", "", "rester en arrière-plan",
     [](Options& o, const std::string&) { return o.detache = true; }},
    {"--reprendre", "", "rouvrir les agents dont le terminal a disparu",
     [](Options& o, const std::string&) { return o.reprendre = true; }},
    {"--socket", "NOM", "prise de tmux : un nom ou un chemin (défaut : tarnavelle)",
     [](Options& o, const std::string& v) {
       o.socket = v;
       return !v.empty() && !v.starts_with('-') && !Texte::porteControle(v);
     }},
    {"--dossier-etat", "CHEMIN", "où le plateau se souvient (défaut : ~/.local/state/tarnavelle)",
     [](Options& o, const std::string& v) {
       o.dossierEtat = v;
       return o.dossierEtat.is_absolute();
     }},
    {"--config-ssh", "FICHIER", "configuration de ssh, au lieu de ~/.ssh/config",
     [](Options& o, const std::string& v) {
       o.ssh = v;
       return o.ssh.is_absolute();
     }},
    {"--service", "", "écrire de quoi ouvrir le plateau avec la session (systemd, ou launchd sur un Mac)",
     [](Options& o, const std::string&) { return o.service = true; }},
    {"--aide", "", "cette aide", [](Options& o, const std::string&) { return o.aide = true; }},
    {"--help", "", "la même", [](Options& o, const std::string&) { return o.aide = true; }},
    {"--version", "", "la version", [](Options& o, const std::string&) { return o.version = true; }},
};

}  // namespace

Resultat<Options, std::string> Options::lire(const std::vector<std::string>& arguments) {
  return TableOptions::lire<Options>(table, arguments, "--aide");
}

std::string Options::texteAide() {
  return "tarnavelle-plateau : des agents dans de vrais terminaux (tmux), et la porte qui les conduit.\n\n" +
         TableOptions::aide<Options>(table);
}

}  // namespace tarnavelle::Plateau
