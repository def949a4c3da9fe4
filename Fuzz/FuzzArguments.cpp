// First line: the action; the rest: the JSON text of its arguments.
#include "Cible.hpp"
#include "Porte/CommandeControle.hpp"

using namespace tarnavelle;

int LLVMFuzzerTestOneInput(const unsigned char* octets, std::size_t taille) {
  const auto entree = vue(octets, taille);
  const auto action = entree.substr(0, entree.find('\n'));
  const auto arguments = entree.substr(action.size());

  const auto nom = CommandeControle::canonique(action);
  exiger(CommandeControle::canonique(nom) == nom);
  const auto commande = CommandeControle::decoder(action, arguments);
  exiger(std::holds_alternative<CommandeControle::inconnue>(commande.cas) !=
         bool(CommandeControle::outil(nom)));
  exiger(CommandeControle::decoder(nom, arguments).cas.index() == commande.cas.index());

  for (const auto& piece : CommandeControle::listeTextes("noms", arguments)) exiger(!piece.empty());
  const bool lu = CommandeControle::booleen("valider", arguments, false);
  exiger(!lu || CommandeControle::booleen("valider", arguments, true));
  (void)CommandeControle::entier("limite", arguments, 5);
  (void)CommandeControle::texte("texte", arguments);
  return 0;
}
