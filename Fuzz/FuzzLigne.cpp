// One request line, as the bridge reads it, with no door within reach.
#include "Cible.hpp"
#include "Porte/PorteMCP.hpp"
#include "Repartiteur.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  static Repartiteur repartiteur({.environnement =
                                      [] {
                                        return Variables{{"HOME", "/dev/null"}};
                                      },
                                  .binaireMCP = "mcp"});
  const auto objet = LectureJSON::objet(Texte::rogner(vue(octets, taille)));
  if (!objet) return 0;
  const auto ecrit = EcritureJSON::compacte(*objet);
  exiger(ecrit && LectureJSON::objet(*ecrit) == objet);
  exiger(LectureJSON::objet(EcritureJSON::lisible(*objet).value()) == objet);

  const auto message = LectureJSON::objet(Texte::rogner(vue(octets, taille)), Repartiteur::membresLus);
  exiger(message.has_value());
  if (const auto ligne = repartiteur.traiter(*message)) {
    exiger(ligne->find('\n') == std::string::npos);
    const auto reponse = LectureJSON::objet(*ligne);
    exiger(reponse && PorteMCP::ligne(*reponse) == *ligne);
    exiger(reponse->at("id") == objet->value("id", Json()));
    exiger(reponse->contains("result") != reponse->contains("error"));
  }
  return 0;
}
