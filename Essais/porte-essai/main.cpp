#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>

#include "FichierEndpoint.hpp"
#include "Jeton.hpp"
#include "Options.hpp"
#include "Plateau.hpp"
#include "Porte/PorteControle.hpp"

namespace {

using namespace tarnavelle;
using namespace tarnavelle::PorteEssai;

int echouer(const std::string& message, int code) {
  std::fprintf(stderr, "porte-essai : %s\n", message.c_str());
  return code;
}

/// The signals that end the door, held back in every thread until main waits for them.
sigset_t retenirSignaux() {
  sigset_t fins;
  sigemptyset(&fins);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::signal(signal, SIG_DFL);  // a shell starts its background jobs with SIGINT ignored
    sigaddset(&fins, signal);
  }
  pthread_sigmask(SIG_BLOCK, &fins, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  return fins;
}

}  // namespace

int main(int argc, char** argv) {
  const sigset_t fins = retenirSignaux();
  auto lu = Options::lire({argv + (argc > 0 ? 1 : 0), argv + argc});
  if (!lu) return echouer(lu.raison(), 2);
  Options& options = *lu;
  if (options.aide) {
    std::fputs(Options::texteAide().c_str(), stdout);
    return 0;
  }
  if (options.serveur.jeton.empty()) {
    const auto jeton = jetonAleatoire();
    if (!jeton) return echouer("Le système n'a pas donné de hasard pour le jeton.", 1);
    options.serveur.jeton = *jeton;
  }
  if (options.fichier.empty()) options.fichier = PorteControle::cheminEndpoint(Variables::duProcessus());

  HorlogeReelle horloge;
  Plateau plateau(horloge);
  const auto serveur = ServeurHTTP::ouvrir(
      options.serveur, [&plateau](const CommandeControle& commande) { return plateau.executer(commande); });
  if (!serveur) return echouer("Le port " + std::to_string(options.serveur.port) + " n'est pas libre.", 1);
  const auto fichier = FichierEndpoint::ecrire(
      options.fichier,
      {.host = "127.0.0.1", .pid = ::getpid(), .port = serveur->port(), .token = options.serveur.jeton});
  if (!fichier) return echouer("Impossible d'écrire " + options.fichier.string() + ".", 1);

  std::printf("Porte d'essai ouverte : http://127.0.0.1:%u\n", static_cast<unsigned>(serveur->port()));
  std::fflush(stdout);
  int signal = 0;
  while (sigwait(&fins, &signal) != 0) {
  }
  plateau.arreter();  // the file goes first, then the server, which waits for its handlers
  return 0;
}
