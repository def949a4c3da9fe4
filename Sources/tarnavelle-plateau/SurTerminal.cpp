#include "SurTerminal.hpp"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "Agents/AgentCLI.hpp"
#include "Enfants/Enfant.hpp"
#include "Socle/Shell.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau::SurTerminal {
namespace {

/// Runs tmux on our terminal. Its exit status, -1 when it could not be started.
int attacher(const std::vector<std::string>& mots) {
  const auto liste = pointeurs(mots);
  // Ours to wait, tmux's to be interrupted.
  for (const int signal : {SIGINT, SIGQUIT}) std::signal(signal, SIG_IGN);
  const pid_t pid = ::fork();
  if (pid == 0) {
    sigset_t aucun;
    sigemptyset(&aucun);
    ::sigprocmask(SIG_SETMASK, &aucun, nullptr);
    for (const int signal : {SIGINT, SIGQUIT, SIGPIPE}) std::signal(signal, SIG_DFL);
    ::execvp(liste.front(), liste.data());
    ::_exit(127);
  }
  int statut = 0;
  while (pid > 0 && ::waitpid(pid, &statut, 0) < 0 && errno == EINTR) continue;
  return pid > 0 && WIFEXITED(statut) ? WEXITSTATUS(statut) : -1;
}

}  // namespace

std::string ligne(const std::vector<std::string>& mots) {
  constexpr std::string_view simples = "-_./abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  return Texte::joindre(mots, " ", [&](const std::string& mot) {
    return !mot.empty() && mot.find_first_not_of(simples) == mot.npos ? mot : Shell::mot(mot);
  });
}

bool present() { return ::isatty(STDIN_FILENO) == 1 && ::isatty(STDOUT_FILENO) == 1; }

int montrer(const Regard& regard, const std::filesystem::path& fichier) {
  if (const char* tmux = std::getenv("TMUX"); tmux && *tmux) {
    std::printf("Ce terminal est déjà dans tmux. Pour voir le plateau, dans un autre terminal :\n  %s\n",
                ligne(regard.mots).c_str());
    return 0;
  }
  const int statut = attacher(regard.mots);
  if (statut != 0)
    std::printf("tmux n'a pas montré le plateau. À essayer :\n  %s\n", ligne(regard.mots).c_str());
  ::waitpid(regard.porte, nullptr, WNOHANG);   // it may be a child of ours, and have ended
  const auto encore = Regard::garde(fichier);  // perhaps of another door than the one that was there
  if (!encore) {
    std::printf("La porte est fermée. Pour la rouvrir, et retrouver les agents : tarnavelle-plateau\n");
    return statut == 0 ? 0 : 1;
  }
  std::printf(
      "Le plateau continue sans être regardé : la porte (processus %d) et ses agents.\n"
      "  y revenir              tarnavelle-plateau\n"
      "  fermer la porte seule  kill %d   (les agents continuent)\n"
      "  tout éteindre          tarnavellectl eteindre\n",
      static_cast<int>(encore->porte), static_cast<int>(encore->porte));
  return statut == 0 ? 0 : 1;
}

std::string sansAgent(LanceursReels& lanceurs) {
  if (lanceurs.usuel()) return "";
  std::string texte = "Aucun programme d'agent n'est installé. Le plateau connaît :\n";
  for (const AgentCLI& cli : AgentCLI::tous()) {
    std::string nom = "  " + cli.id;
    nom.resize(std::max<std::size_t>(nom.size() + 1, 10), ' ');
    texte += nom + cli.titre + ", " + cli.editeur + " (cherché sur le PATH";
    for (const std::string& chemin : cli.cheminsBinaires) texte += ", " + chemin;
    texte += ")\n";
  }
  return texte;
}

}  // namespace tarnavelle::Plateau::SurTerminal
