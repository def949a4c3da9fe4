#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"

namespace tarnavelle::Plateau {

Garde<bool> Registre::alerter(std::string_view sujet) {
  Ecriture ecriture(*base_);
  ecriture.executer("INSERT INTO alertes(sujet) VALUES (?) ON CONFLICT DO NOTHING", sujet);
  const bool neuve = !ecriture.enEchec() && ecriture.changees() > 0;
  if (neuve)
    ecriture.executer(
        "DELETE FROM alertes WHERE numero <= (SELECT numero FROM alertes ORDER BY numero DESC LIMIT 1 OFFSET "
        "?)",
        alertesMax);
  return ecriture.conclure(bool{neuve});
}

Garde<Fait> Registre::apaiser(std::string_view sujet) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM alertes WHERE sujet = ?", sujet);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<std::string>> Registre::alertes() const {
  Seance seance(*base_);
  return seance.conclure(
      seance.lignes([](Ligne& l) { return l.texte(); }, "SELECT sujet FROM alertes ORDER BY numero"));
}

}  // namespace tarnavelle::Plateau
