#include "Motif.hpp"

#include <re2/re2.h>

#include <algorithm>

#include "Socle/Texte.hpp"

namespace tarnavelle::Plateau {

struct Motif::Interne {
  explicit Interne(std::string_view texte)
      : expression(re2::StringPiece(texte.data(), texte.size()), RE2::Quiet) {}
  RE2 expression;
};

Resultat<Motif, Motif::Refus> Motif::lire(std::string_view expression) {
  if (Texte::caracteres(expression) > caracteresMax) return Sinon{Refus::tropLong};
  auto interne = std::make_shared<const Interne>(expression);
  if (interne->expression.ok()) return Motif(std::move(interne));
  const auto code = interne->expression.error_code();
  return Sinon{code == RE2::ErrorPatternTooLarge || code == RE2::ErrorRepeatSize ? Refus::tropCouteux
                                                                                 : Refus::malforme};
}

bool Motif::present(const std::vector<std::string>& lignes) const {
  return std::ranges::any_of(lignes, [this](const std::string& ligne) {
    return RE2::PartialMatch(re2::StringPiece(ligne.data(), ligne.size()), interne_->expression);
  });
}

}  // namespace tarnavelle::Plateau
