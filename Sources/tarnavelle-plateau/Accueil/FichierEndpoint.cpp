#include "Accueil/FichierEndpoint.hpp"

#include <unistd.h>

#include <boost/asio/ip/tcp.hpp>
#include <cerrno>
#include <climits>
#include <csignal>
#include <nlohmann/json.hpp>
#include <utility>

#include "Socle/EcritureJSON.hpp"
#include "Socle/Fichiers.hpp"

namespace tarnavelle::Plateau {
namespace {

bool deposer(const std::filesystem::path& chemin, const EndpointPorte& endpoint) {
  const auto contenu = EcritureJSON::compacte(endpoint.json());
  return contenu && creerDossierPrive(chemin.parent_path()) && ecrireFichierPrive(chemin, *contenu);
}

/// Whether somebody takes connections there.
bool ecoute(std::int64_t port) {
  using boost::asio::ip::tcp;
  if (port < 1 || port > 65535) return false;
  tcp::iostream lien;
  lien.expires_after(std::chrono::milliseconds(500));
  lien.connect(tcp::endpoint(boost::asio::ip::address_v4::loopback(), static_cast<std::uint16_t>(port)));
  return static_cast<bool>(lien);
}

}  // namespace

std::optional<EndpointPorte> FichierEndpoint::autrePorte(const std::filesystem::path& chemin) {
  auto present = PorteControle::lireEndpoint(chemin);
  if (!present || present->pid <= 1 || present->pid > INT_MAX || present->pid == ::getpid())
    return std::nullopt;
  const bool vit = ::kill(static_cast<pid_t>(present->pid), 0) == 0 || errno == EPERM;
  return vit && ecoute(present->port) ? present : std::nullopt;
}

std::optional<FichierEndpoint> FichierEndpoint::ecrire(const std::filesystem::path& chemin,
                                                       const EndpointPorte& endpoint) {
  if (!deposer(chemin, endpoint)) return std::nullopt;
  return FichierEndpoint(chemin, endpoint);
}

FichierEndpoint::FichierEndpoint(std::filesystem::path chemin, EndpointPorte endpoint)
    : chemin_(std::move(chemin)), endpoint_(std::move(endpoint)) {}

FichierEndpoint::FichierEndpoint(FichierEndpoint&& autre) noexcept
    : chemin_(std::exchange(autre.chemin_, {})), endpoint_(std::move(autre.endpoint_)) {}

bool FichierEndpoint::retablir() const {
  std::error_code erreur;
  return std::filesystem::exists(chemin_, erreur) || deposer(chemin_, endpoint_);
}

FichierEndpoint::~FichierEndpoint() {
  if (chemin_.empty()) return;
  const auto present = PorteControle::lireEndpoint(chemin_);
  if (present && present->pid == endpoint_.pid) ::unlink(chemin_.c_str());
}

}  // namespace tarnavelle::Plateau
