// A slice of a transcript, and a transcript's path, as another machine tells them.
#include <functional>

#include "Agents/TranscriptClaude.hpp"
#include "Cible.hpp"
#include "Socle/Texte.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto tout = vue(octets, taille);
  const auto entiere = TranscriptClaude::lire(tout);
  exiger(entiere.consommes <= taille && tout.find('\n', entiere.consommes) == tout.npos);
  exiger(entiere.consommes == 0 || tout[entiere.consommes - 1] == '\n');
  for (const std::string& texte : entiere.textes)
    exiger(!texte.empty() && Texte::caracteres(texte) <= TranscriptClaude::reponseMax + 1);

  auto debut = TranscriptClaude::lire(tout.substr(0, std::hash<std::string_view>()(tout) % (taille + 1)));
  const auto suite = TranscriptClaude::lire(tout.substr(debut.consommes));
  debut.textes.insert(debut.textes.end(), suite.textes.begin(), suite.textes.end());
  exiger(debut.textes == entiere.textes && debut.consommes + suite.consommes == entiere.consommes);

  const auto ligne = TranscriptClaude::commandeLecture(tout, 0);
  exiger(ligne.has_value() == TranscriptClaude::cheminSur(tout));
  if (ligne)
    exiger(Texte::utf8Valide(tout) && tout.find_first_of("\"'$`\\\n\r\t;&|<>(){}*?[]~!#%") == tout.npos);
  return 0;
}
