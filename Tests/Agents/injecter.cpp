// Prints, as JSON, what InjectionPorte adds to the launch described on standard input, for injection.py.
#include <iostream>
#include <iterator>
#include <string>

#include "Agents/InjectionPorte.hpp"
#include "Socle/EcritureJSON.hpp"

int main() {
  using namespace tarnavelle;
  const std::string entree(std::istreambuf_iterator<char>(std::cin), {});
  const auto demande = LectureJSON::objet(entree);
  const AgentCLI* cli = demande ? AgentCLI::parId(Champ::texte(*demande, "cli")) : nullptr;
  if (!cli) return 2;
  const auto texte = [&](const char* cle) { return Champ::texte(*demande, cle); };
  const InjectionPorte::Lancement lancement{
      .cli = *cli,
      .actif = true,
      .cheminConfig = texte("cheminConfig"),
      .binaireMCP = texte("binaireMCP"),
      .porte = {.url = texte("url"), .token = texte("token"), .nodeId = texte("nodeId")}};
  const Json reponse = {{"arguments", InjectionPorte::arguments(lancement)},
                        {"config", InjectionPorte::configLigne(lancement.binaireMCP, lancement.porte)},
                        {"environnement", InjectionPorte::environnement(*cli, true, lancement.porte)}};
  std::cout << EcritureJSON::compacte(reponse).value_or("") << std::endl;
  return 0;
}
