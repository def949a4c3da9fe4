#include "FichierEndpoint.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::PorteEssai {
namespace {

bool creerDossiers(const std::filesystem::path& dossier) {
  if (dossier.empty() || ::access(dossier.c_str(), F_OK) == 0) return true;
  return creerDossiers(dossier.parent_path()) && (::mkdir(dossier.c_str(), 0700) == 0 || errno == EEXIST);
}

}  // namespace

std::optional<FichierEndpoint> FichierEndpoint::ecrire(const std::filesystem::path& chemin,
                                                       const EndpointPorte& endpoint) {
  const auto contenu = EcritureJSON::compacte(endpoint.json());
  if (!contenu || !creerDossiers(chemin.parent_path()) || !ecrireFichierPrive(chemin, *contenu))
    return std::nullopt;
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
