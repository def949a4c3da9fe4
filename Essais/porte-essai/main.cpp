#include <unistd.h>

#include <cstdio>
#include <string>

#include "Accueil/FichierEndpoint.hpp"
#include "Accueil/Signaux.hpp"
#include "Options.hpp"
#include "Porte/PorteControle.hpp"
#include "Socle/LectureJSON.hpp"
#include "TerminauxSimules/PlateauSimule.hpp"

namespace {

using namespace tarnavelle;
using namespace tarnavelle::Plateau;
using tarnavelle::PorteEssai::Options;

int echouer(const std::string& message, int code) {
  std::fprintf(stderr, "porte-essai : %s\n", message.c_str());
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  Signaux::retenir();
  auto lu = Options::lire({argv + (argc > 0 ? 1 : 0), argv + argc});
  if (!lu) return echouer(lu.raison(), 2);
  Options& options = *lu;
  if (options.aide) {
    std::fputs(Options::texteAide().c_str(), stdout);
    return 0;
  }
  if (options.jeton.empty()) {
    const auto jeton = jetonAleatoire();
    if (!jeton) return echouer("Le système n'a pas donné de hasard pour le jeton.", 1);
    options.jeton = *jeton;
  }
  if (options.fichier.empty()) options.fichier = PorteControle::cheminEndpoint(Variables::duProcessus());

  HorlogeReelle horloge;
  const auto plateau = PlateauSimule::depart(horloge);
  if (!plateau) return echouer("Le plateau n'a pas pu être dressé.", 1);
  Executeur& executeur = plateau->executeur();
  executeur.veiller();
  const auto serveur = ServeurHTTP::ouvrir(
      options.serveur, Trousseau(options.jeton),
      [&](const Json& corps, const Appelant& appelant) { return executeur.executer(corps, appelant); });
  if (!serveur) return echouer("Le port " + std::to_string(options.serveur.port) + " n'est pas libre.", 1);
  const auto fichier = FichierEndpoint::ecrire(
      options.fichier,
      {.host = "127.0.0.1", .pid = ::getpid(), .port = serveur->port(), .token = options.jeton});
  if (!fichier) return echouer("Impossible d'écrire " + options.fichier.string() + ".", 1);
  serveur->servir();

  std::printf("Porte d'essai ouverte : http://127.0.0.1:%u\n", static_cast<unsigned>(serveur->port()));
  std::fflush(stdout);
  Signaux::attendreFin();
  executeur.arreter();  // the file goes first, then the server, which waits for its handlers
  return 0;
}
