#include "Plateau.hpp"

#include <algorithm>

#include "Socle/Inoffensif.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Voix {
namespace {

constexpr std::size_t nomMax = 80, agentsMax = 200;

std::string court(const Json& objet, std::string_view cle) {
  return Inoffensif::epurer(Texte::tronquer(Texte::rogner(Champ::texte(objet, cle)), nomMax));
}

std::vector<std::string> noms(const Json& donnees, std::string_view cle) {
  std::vector<std::string> liste;
  if (const Json* tableau = Champ::membre(donnees, cle); tableau && tableau->is_array())
    for (const Json& nom : *tableau)
      if (nom.is_string() && liste.size() < agentsMax)
        liste.push_back(Inoffensif::epurer(Texte::tronquer(nom.get<std::string>(), nomMax)));
  return liste;
}

void ajouterAgents(const Json& donnees, std::string_view cle, std::vector<AgentVu>& tous) {
  const Json* tableau = Champ::membre(donnees, cle);
  if (!tableau || !tableau->is_array()) return;
  for (const Json& ligne : *tableau) {
    AgentVu vu{.nom = court(ligne, "nom"),
               .programme = court(ligne, "cli"),
               .etat = court(ligne, "etat"),
               .scene = court(ligne, "scene")};
    if (const std::string hote = court(ligne, "hote"); !hote.empty()) vu.programme += " sur " + hote;
    if (!vu.nom.empty() && tous.size() < agentsMax) tous.push_back(std::move(vu));
  }
}

std::string dire(const AgentVu& a) {
  return a.nom + (a.programme.empty() ? "" : " (" + a.programme + ")") + " : " + a.etat +
         (a.scene.empty() ? "" : ", sur la scène " + a.scene);
}

}  // namespace

std::optional<PlateauVu> PlateauVu::lire(std::string_view reponse) {
  const auto objet = LectureJSON::objet(reponse);
  if (!objet || !Champ::booleen(*objet, "ok", false)) return std::nullopt;
  const Json* donnees = Champ::membre(*objet, "data");
  PlateauVu vu;
  if (!donnees) return vu;
  ajouterAgents(*donnees, "agents", vu.agents);
  ajouterAgents(*donnees, "ailleurs", vu.agents);
  for (const AgentVu& a : vu.agents) vu.monde.nomsAgents.push_back(a.nom);

  std::string& recit = vu.monde.recit;
  const auto phrase = [&](std::string_view quoi, const std::string& detail) {
    if (!detail.empty()) recit.append(recit.empty() ? "" : " ").append(quoi).append(detail).append(".");
  };
  phrase("Scène visible : ", court(*donnees, "scene"));
  phrase("Agents : ", Texte::joindre(vu.agents, " ; ", dire));
  phrase("Autres scènes : ", Texte::joindre(noms(*donnees, "autres_scenes"), ", "));
  phrase("Fenêtres et équipe : ", Texte::joindre(noms(*donnees, "crew"), ", "));
  return vu;
}

std::vector<std::string> appelsNouveaux(const PlateauVu& avant, const PlateauVu& maintenant) {
  std::vector<std::string> appels;
  for (const AgentVu& a : maintenant.agents) {
    const bool deja =
        std::ranges::any_of(avant.agents, [&](const AgentVu& d) { return d.nom == a.nom && d.attend(); });
    if (a.attend() && !deja) appels.push_back(a.nom);
  }
  return appels;
}

}  // namespace tarnavelle::Voix
