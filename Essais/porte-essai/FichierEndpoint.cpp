#include "FichierEndpoint.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "Socle/EcritureJSON.hpp"

namespace tarnavelle::PorteEssai {
namespace {

bool creerDossiers(const std::filesystem::path& dossier) {
  if (dossier.empty() || ::access(dossier.c_str(), F_OK) == 0) return true;
  return creerDossiers(dossier.parent_path()) && (::mkdir(dossier.c_str(), 0700) == 0 || errno == EEXIST);
}

bool ecrireTout(int fd, std::string_view octets) {
  while (!octets.empty()) {
    const auto ecrits = ::write(fd, octets.data(), octets.size());
    if (ecrits < 0 && errno == EINTR) continue;
    if (ecrits <= 0) return false;
    octets.remove_prefix(static_cast<std::size_t>(ecrits));
  }
  return true;
}

}  // namespace

std::optional<FichierEndpoint> FichierEndpoint::ecrire(const std::filesystem::path& chemin,
                                                       const EndpointPorte& endpoint) {
  const auto contenu = EcritureJSON::compacte(endpoint.json());
  if (!contenu || !creerDossiers(chemin.parent_path())) return std::nullopt;
  std::string provisoire = chemin.string() + ".XXXXXX";
  const int fd = ::mkstemp(provisoire.data());  // created 0600
  if (fd < 0) return std::nullopt;
  const bool ecrit = ecrireTout(fd, *contenu);
  if (::close(fd) != 0 || !ecrit || ::rename(provisoire.c_str(), chemin.c_str()) != 0) {
    ::unlink(provisoire.c_str());
    return std::nullopt;
  }
  return FichierEndpoint(chemin, endpoint.pid);
}

FichierEndpoint::FichierEndpoint(std::filesystem::path chemin, std::int64_t pid)
    : chemin_(std::move(chemin)), pid_(pid) {}

FichierEndpoint::FichierEndpoint(FichierEndpoint&& autre) noexcept
    : chemin_(std::exchange(autre.chemin_, {})), pid_(autre.pid_) {}

FichierEndpoint::~FichierEndpoint() {
  if (chemin_.empty()) return;
  const auto present = PorteControle::lireEndpoint(chemin_);
  if (present && present->pid == pid_) ::unlink(chemin_.c_str());
}

}  // namespace tarnavelle::PorteEssai
