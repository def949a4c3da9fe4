#include "Porte/TableVerbes.hpp"

#include <algorithm>
#include <iterator>

#include "LigneVerbeInterne.hpp"

namespace tarnavelle {
namespace {

/// The order in which the verbs are listed, wherever they are; one that is not named here comes last.
constexpr std::string_view ordre[] = {
    "etat",     "focus",         "aller_scene",  "dicter",   "ouvrir_agent",    "ouvrir_web",
    "lire",     "resumer",       "retiens",      "rappelle", "commande",        "pondre_agent",
    "souffler", "lire_terminal", "taches",       "shell",    "capture",         "capture_web",
    "diffuser", "fini",          "bloque",       "postit",   "nommer_zone",     "relancer_agent",
    "script",   "ouvrir_chat",   "message_chat", "attendre", "envoyer_touches", "ranger",
    "nommage",  "fermer",        "fermer_tout"};

auto rang(const LigneVerbe& ligne) { return std::ranges::find(ordre, ligne.outil.nom) - std::begin(ordre); }

}  // namespace

const std::vector<LigneVerbe>& tableVerbes() {
  static const auto table = [] {
    std::vector<LigneVerbe> lignes;
    for (auto* genre :
         {interne::verbesPlateau, interne::verbesAgents, interne::verbesTerminaux, interne::verbesMessages})
      std::ranges::move(genre(), std::back_inserter(lignes));
    std::ranges::stable_sort(lignes, {}, rang);
    return lignes;
  }();
  return table;
}

}  // namespace tarnavelle
