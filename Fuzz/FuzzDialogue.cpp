// A client's lines, as the bridge reads them when it speaks today's protocol, with no door within reach.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "Cible.hpp"
#include "DialogueEtendu.hpp"
#include "Socle/LectureJSON.hpp"

using namespace tarnavelle;

namespace {

void verifier(const Json& reponse) {
  exiger(Champ::texte(reponse, "jsonrpc") == "2.0");
  exiger(reponse.contains("result") != reponse.contains("error"));
  exiger(reponse.contains("id") || reponse.contains("error"));
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  static const int sortie = ::fileno(std::tmpfile());
  exiger(::ftruncate(sortie, 0) == 0 && ::lseek(sortie, 0, SEEK_SET) == 0);
  {
    DialogueEtendu dialogue({.environnement =
                                 [] {
                                   return Variables{{"HOME", "/dev/null"}};
                                 },
                             .binaireMCP = "mcp"},
                            sortie);
    const auto texte = vue(octets, taille);
    for (std::size_t debut = 0; debut < texte.size();) {
      const auto fin = std::min(texte.find('\n', debut), texte.size());
      dialogue.recevoir({texte.substr(debut, fin - debut)});
      debut = fin + 1;
    }
    dialogue.finir();
  }
  std::string dit(static_cast<std::size_t>(::lseek(sortie, 0, SEEK_CUR)), '\0');
  exiger(::pread(sortie, dit.data(), dit.size(), 0) == static_cast<ssize_t>(dit.size()));
  for (std::size_t debut = 0; debut < dit.size();) {
    const auto fin = dit.find('\n', debut);
    exiger(fin != std::string::npos);
    const auto lue = LectureJSON::valeur(std::string_view(dit).substr(debut, fin - debut));
    exiger(lue && (lue->is_object() || (lue->is_array() && !lue->empty())));
    if (lue->is_object()) verifier(*lue);
    if (lue->is_array())
      for (const Json& reponse : *lue) verifier(reponse);
    debut = fin + 1;
  }
  return 0;
}
