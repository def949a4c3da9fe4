#include "Enfants/Enfant.hpp"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

namespace tarnavelle::Plateau {
namespace {

/// What a spawned program is given.
class Consignes {
 public:
  Consignes() {
    posix_spawn_file_actions_init(&actes);
    posix_spawnattr_init(&attributs);
  }
  ~Consignes() {
    posix_spawn_file_actions_destroy(&actes);
    posix_spawnattr_destroy(&attributs);
  }
  Consignes(const Consignes&) = delete;
  Consignes& operator=(const Consignes&) = delete;

  posix_spawn_file_actions_t actes;
  posix_spawnattr_t attributs;
};

/// Nothing of ours beyond these, even what another thread has just opened.
void fermerAuDela(Consignes& consignes, int dernier, short& drapeaux) {
#if defined(__APPLE__)
  static_cast<void>(consignes);
  static_cast<void>(dernier);
  drapeaux = static_cast<short>(drapeaux | POSIX_SPAWN_CLOEXEC_DEFAULT);
#elif defined(__GLIBC__)
  static_cast<void>(drapeaux);
  posix_spawn_file_actions_addclosefrom_np(&consignes.actes, dernier + 1);
#endif
}

}  // namespace

std::vector<char*> pointeurs(const std::vector<std::string>& textes) {
  std::vector<char*> liste;
  for (const auto& texte : textes) liste.push_back(const_cast<char*>(texte.c_str()));
  liste.push_back(nullptr);
  return liste;
}

std::optional<Enfant> Enfant::lancer(const Embarque& embarque) {
  auto entree = Tube::creer();
  auto sortie = Tube::creer();
  if (!entree || !sortie || !rendreNonBloquant(*entree->ecriture) || !rendreNonBloquant(*sortie->lecture))
    return std::nullopt;
  std::vector<std::string> entrees;
  for (const auto& [nom, valeur] : embarque.environnement) entrees.push_back(nom + "=" + valeur);

  Consignes consignes;
  auto* const actes = &consignes.actes;
  if (!embarque.dossier.empty()) posix_spawn_file_actions_addchdir_np(actes, embarque.dossier.c_str());
  posix_spawn_file_actions_adddup2(actes, *entree->lecture, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(actes, *sortie->ecriture, STDOUT_FILENO);
  int dernier = STDERR_FILENO;
  if (embarque.tientSaSortie) posix_spawn_file_actions_adddup2(actes, *sortie->lecture, ++dernier);
  if (embarque.erreurs)
    posix_spawn_file_actions_adddup2(actes, STDOUT_FILENO, STDERR_FILENO);
  else
    posix_spawn_file_actions_addopen(actes, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  auto drapeaux = static_cast<short>(POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  fermerAuDela(consignes, dernier, drapeaux);
  sigset_t aucun;
  sigset_t tous;
  sigemptyset(&aucun);
  sigfillset(&tous);
  posix_spawnattr_setsigmask(&consignes.attributs, &aucun);
  posix_spawnattr_setsigdefault(&consignes.attributs, &tous);
  posix_spawnattr_setflags(&consignes.attributs, drapeaux);
  Enfant enfant;
  if (::posix_spawnp(&enfant.pid, embarque.mots.front().c_str(), actes, &consignes.attributs,
                     pointeurs(embarque.mots).data(), pointeurs(entrees).data()) != 0)
    return std::nullopt;
  enfant.entree = std::move(entree->ecriture);
  enfant.sortie = std::move(sortie->lecture);
  return enfant;
}

}  // namespace tarnavelle::Plateau
