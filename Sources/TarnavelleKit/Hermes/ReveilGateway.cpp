#include "Hermes/ReveilGateway.hpp"

#include "Liaison/RequeteHTTP.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::ReveilGateway {
namespace {

Geste abandon(EchecGateway echec) { return {Geste::abandonner{std::move(echec)}}; }

Geste sansLiaison(std::string_view hote) { return abandon({EchecGateway::liaison{std::string(hote)}}); }

}  // namespace

std::optional<EchecGateway> apresEnv(const LectureEnvHermes& lecture) {
  if (!lecture.serveurActif) return EchecGateway{EchecGateway::serveurDesactive{}};
  if (!lecture.cle || lecture.cle->empty()) return EchecGateway{EchecGateway::cleIntrouvable{}};
  return std::nullopt;
}

Geste apresSante(std::optional<int> code) {
  if (code == 401 || code == 403) return abandon({EchecGateway::refusee{}});
  if (code && estUnSucces(*code)) return {Geste::rienAFaire{}};
  return {Geste::sonderProcessus{}};
}

Geste apresPgrep(std::optional<std::int32_t> ec, bool aSentinelle, std::string_view hote) {
  if (aSentinelle && ec == 0) return {Geste::attendreSante{essaisSante}};
  if (aSentinelle && ec == 1) return {Geste::lancer{}};
  return sansLiaison(hote);
}

Geste apresLancement(const Lancement& lancement) {
  if (lancement.ec == 0) return {Geste::attendreSante{essaisSante}};
  if (lancement.ec != 127) return sansLiaison(lancement.hote);
  const auto texte = Texte::rogner(lancement.err);  // 127: command not found
  return abandon({EchecGateway::binaireAbsent{std::string(texte.empty() ? lancement.hote : texte)}});
}

}  // namespace tarnavelle::ReveilGateway
