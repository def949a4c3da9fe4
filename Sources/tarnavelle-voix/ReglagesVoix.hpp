// What is set for the voice: keys, the service, the devices. In the environment, else in the private file
// "voix" beside the cockpit's other settings. What the command line says comes first. A plain value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Socle/Reglages.hpp"
#include "Socle/Resultat.hpp"
#include "Voix/RealtimeProvider.hpp"

namespace tarnavelle::Voix {

namespace Cles {
inline constexpr std::string_view service = "TARNAVELLE_VOIX_SERVICE";
inline constexpr std::string_view modele = "TARNAVELLE_VOIX_MODELE";
inline constexpr std::string_view voix = "TARNAVELLE_VOIX_VOIX";
inline constexpr std::string_view profil = "TARNAVELLE_VOIX_PROFIL";
inline constexpr std::string_view micro = "TARNAVELLE_VOIX_MICRO";
inline constexpr std::string_view hautParleur = "TARNAVELLE_VOIX_HAUT_PARLEUR";
// Any other service that speaks one of the dialects.
inline constexpr std::string_view url = "TARNAVELLE_VOIX_URL";
inline constexpr std::string_view cle = "TARNAVELLE_VOIX_CLE";
inline constexpr std::string_view dialecte = "TARNAVELLE_VOIX_DIALECTE";
}  // namespace Cles

const Reglages::Famille& familleVoix();

/// The service that a session will be held with, and its key.
struct Service {
  RealtimeProvider provider;
  std::string cle;
};

/// Of the settings, or as `choisi` says; or why there is none, in French: what, and what to do.
struct RefusService {
  std::string phrase;
  std::string conseil;
};
Resultat<Service, RefusService> choisirService(const Reglages& reglages,
                                               const std::optional<std::string>& choisi);

}  // namespace tarnavelle::Voix
