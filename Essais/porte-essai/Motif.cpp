#include "Motif.hpp"

// What the library lets a search visit before it gives up; its own default is a hundred times that.
#define BOOST_REGEX_MAX_STATE_COUNT 1000000

#include <boost/locale/encoding_utf.hpp>
#include <boost/regex.hpp>
#include <stdexcept>
#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle::PorteEssai {
namespace {

/// One element per code point, so that "." and classes see characters rather than bytes.
std::wstring large(std::string_view texte) {
  return boost::locale::conv::utf_to_utf<wchar_t>(texte.data(), texte.data() + texte.size());
}

}  // namespace

struct Motif::Interne {
  boost::wregex expression;
};

Motif::Motif(std::shared_ptr<const Interne> interne) : interne_(std::move(interne)) {}

std::optional<Motif> Motif::lire(std::string_view expression) {
  if (Texte::caracteres(expression) > caracteresMax) return std::nullopt;
  try {
    return Motif(std::make_shared<const Interne>(Interne{boost::wregex(large(expression))}));
  } catch (const std::runtime_error&) {  // boost::regex_error
    return std::nullopt;
  }
}

Motif::Resultat Motif::chercher(const std::deque<std::string>& lignes) const {
  try {
    for (const std::string& ligne : lignes)
      if (boost::regex_search(large(ligne), interne_->expression)) return Resultat::present;
    return Resultat::absent;
  } catch (const std::runtime_error&) {
    return Resultat::tropCouteux;
  }
}

}  // namespace tarnavelle::PorteEssai
