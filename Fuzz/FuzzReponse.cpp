// One reply of the door: what the bridge makes of it, and what the kit reads in it.
#include "Cible.hpp"
#include "ContenuReponse.hpp"
#include "Porte/MCPEtendu.hpp"
#include "Porte/ReponsePorte.hpp"
#include "Socle/EcritureJSON.hpp"
#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const std::string corps(vue(octets, taille));
  const auto document = LectureJSON::valeur(corps);
  const Json* ok = document ? Champ::membre(*document, "ok") : nullptr;
  const auto lu = LectureJSON::booleenDeTete(corps, "ok");
  exiger(lu.lisible == document.has_value());
  if (ok && ok->is_boolean())
    exiger(lu.valeur == ok->get<bool>());
  else
    exiger(!lu.valeur);

  const auto appel = contenuReponse({corps, 200});
  exiger(appel.ok == (document && document->is_object() && lu.valeur == true));
  exiger(appel.corpsJSON ==
         (Texte::utf8Valide(corps) ? corps : R"({"error":"La porte n'a pas répondu (HTTP 200).","ok":false})"));
  const auto ligne = LectureJSON::objet(PorteMCP::ligneAppel(7, appel));
  exiger(ligne && (*ligne)["result"] == PorteMCP::contenuAppel(appel.corpsJSON, appel.ok));
  for (const auto* outil : {"trv_lire", "trv_etat"}) {
    const auto etendue = MCPEtendu::resultatAppel(appel, MCPEtendu::ligne(outil), MCPEtendu::derniere);
    exiger(etendue.find('\n') == std::string::npos);
    const auto lue = Json::parse(etendue, nullptr, false);
    exiger(lue.is_object() && lue["isError"] == !appel.ok);
    if (lue.contains("structuredContent"))
      exiger(lue["structuredContent"] == Json::parse(appel.corpsJSON, nullptr, false));
  }

  if (const auto reponse = ReponsePorte::lire(corps)) {
    // As numbers: a fraction of 2^53 or more is written as the whole number that a double makes of it.
    exiger(ReponsePorte::lire(EcritureJSON::compacte(reponse->json()).value()).value().json() ==
           reponse->json());
    exiger(!ComptesRendusVoix::porteDit(*reponse).empty());
  }
  return 0;
}
