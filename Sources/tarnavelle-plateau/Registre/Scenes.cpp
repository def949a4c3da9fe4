#include "BaseSQLite.hpp"
#include "Registre/Registre.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {
namespace {

constexpr std::string_view cetteScene = "Cette scène";

FicheScene sceneLue(Ligne& l) {
  return {
      .numero = l.entier(), .nom = l.texte(), .dossier = l.texte(), .auRegard = l.texte(), .visible = l.vrai()};
}

FichePostIt postitLu(Ligne& l) {
  return {.numero = l.entier(), .texte = l.texte(), .scene = l.entier(), .quand = l.instant()};
}

}  // namespace

Garde<std::int64_t> Registre::ajouterScene(std::string_view nom, std::string_view dossier) {
  Ecriture ecriture(*base_);
  ecriture.exigerPlace("SELECT count(*) FROM scenes", scenesMax);
  ecriture.executer(
      "INSERT INTO scenes(nom, replie, dossier, visible) SELECT ?, ?, ?, NOT EXISTS (SELECT 1 FROM scenes) "
      "WHERE true ON CONFLICT DO NOTHING",
      nom, Texte::replier(nom), dossier);
  if (!ecriture.enEchec() && ecriture.changees() == 0)
    ecriture.refuser(Avarie::Cas::pris,
                     "Une scène s'appelle déjà « " + Texte::tronquer(nom, Registre::extraitMax) + " ».");
  return ecriture.conclure(ecriture.dernierNumero());
}

Garde<Fait> Registre::montrerScene(std::int64_t numero) {
  Ecriture ecriture(*base_);
  ecriture.executer("UPDATE scenes SET visible = 0");
  ecriture.executer("UPDATE scenes SET visible = 1 WHERE numero = ?", numero);
  ecriture.exigerChange(cetteScene);
  return ecriture.conclure(Fait{});
}

Garde<Fait> Registre::regarder(std::int64_t scene, std::string_view id) {
  Ecriture ecriture(*base_);
  ecriture.executer("UPDATE scenes SET au_regard = ? WHERE numero = ?", id, scene);
  ecriture.exigerChange(cetteScene);
  return ecriture.conclure(Fait{});
}

Garde<std::vector<FicheScene>> Registre::scenes() const {
  Seance seance(*base_);
  return seance.conclure(
      seance.lignes(sceneLue, "SELECT numero, nom, dossier, au_regard, visible FROM scenes ORDER BY numero"));
}

Garde<std::int64_t> Registre::coller(const FichePostIt& postit) {
  Ecriture ecriture(*base_);
  ecriture.exigerPlace("SELECT count(*) FROM postits", fichesMax);
  ecriture.executer("INSERT INTO postits(texte, scene, quand) VALUES (?, ?, ?)", postit.texte, postit.scene,
                    postit.quand);
  return ecriture.conclure(ecriture.dernierNumero());
}

Garde<Fait> Registre::decoller(std::int64_t numero) {
  Ecriture ecriture(*base_);
  ecriture.executer("DELETE FROM postits WHERE numero = ?", numero);
  ecriture.exigerChange("Ce post-it");
  return ecriture.conclure(Fait{});
}

Garde<std::vector<FichePostIt>> Registre::postits() const {
  Seance seance(*base_);
  return seance.conclure(
      seance.lignes(postitLu, "SELECT numero, texte, scene, quand FROM postits ORDER BY numero"));
}

}  // namespace tarnavelle::Plateau
