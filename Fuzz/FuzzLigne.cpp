// One request line, as the bridge reads it, with no door within reach.
#include "Cible.hpp"
#include "Porte/PorteMCP.hpp"
#include "Repartiteur.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  static Repartiteur repartiteur({.environnement =
                                      [] {
                                        return Variables{{"HOME", "/dev/null"}};
                                      },
                                  .binaireMCP = "mcp"});
  const auto texte = vue(octets, taille);
  const auto reponse = repartiteur.repondre({texte});
  const auto objet = LectureJSON::objet(Texte::rogner(texte));
  if (objet) {
    const auto ecrit = EcritureJSON::compacte(*objet);
    exiger(ecrit && LectureJSON::objet(*ecrit) == objet);
    exiger(LectureJSON::objet(EcritureJSON::lisible(*objet).value()) == objet);
  }
  if (!reponse) {
    exiger(objet || Texte::rogner(texte).empty());
    return 0;
  }
  exiger(reponse->find('\n') == std::string::npos);
  const auto lue = LectureJSON::objet(*reponse);
  exiger(lue && PorteMCP::ligne(*lue) == *reponse);
  exiger(lue->at("id") == (objet ? objet->value("id", Json()) : Json()));
  exiger(lue->contains("result") != lue->contains("error"));
  exiger((lue->contains("error") && lue->at("error").at("code") == -32700) == !objet);
  return 0;
}
