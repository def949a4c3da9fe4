#include "Photo.hpp"

#include <ctime>
#include <nlohmann/json.hpp>
#include <system_error>

#include "Socle/Base64.hpp"

namespace tarnavelle::Photo {
namespace {

const std::string* codee(const Json& valeur) {
  constexpr std::string_view prefixe = "data:image/png;base64,";
  constexpr std::string_view signature = "iVBORw0KGgo";  // the eight bytes that begin a PNG
  if (const auto* texte = valeur.get_ptr<const std::string*>()) {
    const std::string_view vue = *texte;
    return vue.substr(vue.starts_with(prefixe) ? prefixe.size() : 0).starts_with(signature) ? texte : nullptr;
  }
  if (valeur.is_structured())
    for (const Json& element : valeur)
      if (const auto* trouvee = codee(element)) return trouvee;
  return nullptr;
}

}  // namespace

std::optional<std::string> png(const Json& donnees) {
  const std::string* texte = codee(donnees);
  if (!texte) return std::nullopt;
  const auto octets = Base64::decoder(std::string_view(*texte).substr(texte->find(',') + 1));
  if (!octets) return std::nullopt;
  return std::string(octets->begin(), octets->end());
}

std::filesystem::path chemin(const std::string& demande) {
  std::error_code erreur;
  if (!demande.empty() && !std::filesystem::is_directory(demande, erreur)) return demande;
  char nom[64];
  const std::time_t maintenant = std::time(nullptr);
  std::tm date{};
  ::localtime_r(&maintenant, &date);
  std::strftime(nom, sizeof nom, "capture-%Y%m%d-%H%M%S.png", &date);
  const auto libre = std::filesystem::path(demande) / nom;
  auto candidat = libre;
  for (int n = 2; std::filesystem::exists(candidat, erreur); ++n)
    candidat.replace_filename(libre.stem().string() + "-" + std::to_string(n) + ".png");
  return candidat;
}

}  // namespace tarnavelle::Photo
