#include "Noms.hpp"

#include "Registre/Registre.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace Noms {
namespace {

/// One's own name twice counts once.
void ajouter(Seance& seance, std::string_view porteur, std::string_view nom) {
  const std::string replie = Texte::replier(nom);
  seance.executer(
      "INSERT INTO noms(replie, texte, porteur, rang) "
      "SELECT ?1, ?2, ?3, 1 + coalesce(max(rang), -1) FROM noms WHERE porteur = ?3 ON CONFLICT DO NOTHING",
      replie, nom, porteur);
  if (seance.entier("SELECT count(*) FROM noms WHERE replie = ? AND porteur <> ?", replie, porteur) > 0)
    seance.refuser(Avarie::Cas::pris,
                   "« " + Texte::tronquer(nom, Registre::extraitMax) + " » désigne déjà autre chose.");
}

}  // namespace

void donner(Seance& seance, std::string_view porteur, std::string_view nom,
            const std::vector<std::string>& etiquettes) {
  liberer(seance, porteur);
  ajouter(seance, porteur, nom);
  for (const std::string& etiquette : etiquettes) ajouter(seance, porteur, etiquette);
}

void liberer(Seance& seance, std::string_view porteur) {
  seance.executer("DELETE FROM noms WHERE porteur = ?", porteur);
}

std::map<std::string, Portes> tous(Seance& seance) {
  struct Un {
    std::string porteur;
    std::string texte;
    bool etiquette;
  };
  std::map<std::string, Portes> portes;
  const auto lire = [](Ligne& l) {
    return Un{.porteur = l.texte(), .texte = l.texte(), .etiquette = l.vrai()};
  };
  for (Un& un : seance.lignes(lire, "SELECT porteur, texte, rang FROM noms ORDER BY porteur, rang")) {
    Portes& de = portes[un.porteur];
    if (un.etiquette)
      de.etiquettes.push_back(std::move(un.texte));
    else
      de.nom = std::move(un.texte);
  }
  return portes;
}

}  // namespace Noms

Garde<std::optional<std::string>> Registre::designe(std::string_view nom) const {
  Seance seance(*base_);
  return seance.conclure(
      seance.ligne([](Ligne& l) { return l.texte(); },
                   "SELECT porteur FROM noms WHERE replie = ?1 "
                   "UNION ALL SELECT id FROM agents WHERE session = ?2 AND session <> '' "
                   "UNION ALL SELECT id FROM fenetres WHERE session = ?2 AND session <> '' LIMIT 1",
                   Texte::replier(nom), Texte::rogner(nom)));
}

Garde<Fait> Registre::etiqueter(std::string_view id, std::string_view etiquette) {
  Ecriture ecriture(*base_);
  if (ecriture.entier("SELECT count(*) FROM noms WHERE porteur = ?", id) == 0)
    ecriture.refuser(Avarie::Cas::absent, "Cette fenêtre n'est plus dans le registre.");
  Noms::ajouter(ecriture, id, etiquette);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<std::string>> Registre::indicatifs() const {
  Seance seance(*base_);
  return seance.conclure(
      seance.lignes([](Ligne& l) { return l.texte(); }, "SELECT nom FROM indicatifs ORDER BY rang"));
}

Garde<Fait> Registre::reglerIndicatifs(const std::vector<std::string>& noms) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM indicatifs");
  for (const std::string& nom : noms) {
    ecriture.exigerPlace("SELECT count(*) FROM indicatifs", fichesMax);
    ecriture.executer("INSERT INTO indicatifs(nom) VALUES (?)", nom);
  }
  return ecriture.conclure(Fait{});
}

}  // namespace tarnavelle::Plateau
