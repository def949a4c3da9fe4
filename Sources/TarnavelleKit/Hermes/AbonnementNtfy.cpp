#include "Hermes/AbonnementNtfy.hpp"

#include <algorithm>
#include <boost/url/encode.hpp>
#include <boost/url/rfc/unreserved_chars.hpp>
#include <cmath>

#include "PhraseReseauInterne.hpp"
#include "Socle/Selon.hpp"
#include "Socle/Texte.hpp"
#include "Socle/URL.hpp"

namespace tarnavelle::AbonnementNtfy {
namespace {

std::string avecSince(const std::string& texte, const std::string& depuis) {
  const auto url = URL::lire(texte);
  if (!url) return texte;
  const auto derniere = url->cible.empty() ? url->hoteEtPort : url->cible;  // what a fragment may follow
  const auto avant = static_cast<std::size_t>(derniere.data() + derniere.size() - texte.data());
  const char* separateur = url->cible.find('?') == url->cible.npos ? "?" : "&";
  return texte.substr(0, avant) + separateur +
         "since=" + boost::urls::encode(depuis, boost::urls::unreserved_chars) + texte.substr(avant);
}

std::string arrondiEn(double nombre, char unite) {
  return std::to_string(static_cast<int>(std::ceil(nombre))) + unite;
}

}  // namespace

bool doitSAbonner(const ReglageNtfy& reglage, bool headless, bool demo) {
  return !headless && !demo && reglage.urlFlux();
}

std::optional<RequeteHTTP> requete(const ReglageNtfy& reglage, const std::optional<std::string>& depuis) {
  auto url = reglage.urlFlux();
  if (!url) return std::nullopt;
  if (depuis && !depuis->empty()) url = avecSince(*url, *depuis);
  RequeteHTTP requete{.methode = "GET",
                      .url = std::move(*url),
                      .entetes = {{"Accept", "text/event-stream"}, {"Cache-Control", "no-cache"}},
                      .corps = "",
                      .delai = std::chrono::duration_cast<std::chrono::milliseconds>(silenceTolere)};
  const auto jeton = Texte::rognerBlancs(reglage.jeton);
  if (!jeton.empty() && !Texte::porteControle(jeton))
    requete.entetes.push_back({"Authorization", std::string("Bearer ").append(jeton)});
  return requete;
}

std::optional<std::string> depuis(std::optional<Secondes> secondesDepuisDernierSigne) {
  if (!secondesDepuisDernierSigne || !std::isfinite(secondesDepuisDernierSigne->count())) return std::nullopt;
  const double secondes = secondesDepuisDernierSigne->count();
  if (secondes < 1) return "1s";
  if (secondes < 60) return arrondiEn(secondes, 's');
  return arrondiEn(std::min(secondes, rattrapageMax.count()) / 60, 'm');
}

Secondes recul(int tentative) { return std::min(Secondes(std::exp2(std::clamp(tentative, 1, 16))), reculMax); }

Verdict verdict(const EchecNtfy& echec, int tentative, bool dejaRepris) {
  const Verdict plusTard{Verdict::reprendre{recul(tentative), true}};
  return std::visit(
      Selon{[&](const EchecNtfy::http& e) -> Verdict {
              if (e.statut == 400 && !dejaRepris) return {Verdict::reprendre{Secondes(0), false}};
              if (e.statut == 400)
                return {Verdict::abandonner{"L'oreille d'Hermès se tait : le serveur refuse la demande."}};
              if (e.statut == 401 || e.statut == 403)
                return {
                    Verdict::abandonner{"L'oreille d'Hermès se tait : le serveur refuse l'accès à ce canal."}};
              if (e.statut == 429) return {Verdict::reprendre{reculMax, true}};
              return plusTard;
            },
            [&](const EchecNtfy::transport&) { return plusTard; },
            [&](const EchecNtfy::flotEnLoques&) { return plusTard; }},
      echec.cas);
}

std::string_view phrase(ErreurReseau code) {
  return interne::phraseReseau(code, "le serveur ntfy est injoignable");
}

}  // namespace tarnavelle::AbonnementNtfy
