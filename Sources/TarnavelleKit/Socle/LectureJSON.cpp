#include "Socle/LectureJSON.hpp"

#include <algorithm>
#include <array>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/json/src.hpp>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "Socle/Texte.hpp"

namespace tarnavelle {
namespace {

using Erreur = boost::system::error_code;
using Morceau = boost::json::string_view;

/// What every handler of the parser must declare; the limits are on sizes, which the input bounds.
struct Gestionnaire {
  static constexpr std::size_t max_object_size = std::numeric_limits<std::size_t>::max();
  static constexpr std::size_t max_array_size = std::numeric_limits<std::size_t>::max();
  static constexpr std::size_t max_key_size = std::numeric_limits<std::size_t>::max();
  static constexpr std::size_t max_string_size = std::numeric_limits<std::size_t>::max();

  bool on_document_begin(Erreur&) { return true; }
  bool on_document_end(Erreur&) { return true; }
  bool on_comment_part(Morceau, Erreur&) { return true; }
  bool on_comment(Morceau, Erreur&) { return true; }
};

/// The integer part of a decimal of 2^53 or more, nothing beyond 64 bits, and whether a fraction follows.
struct Ecrit {
  std::optional<std::int64_t> entier;
  bool fraction = false;

  explicit Ecrit(std::string_view texte) {
    const auto e = std::min(texte.find_first_of("eE"), texte.size());
    std::string chiffres(texte.substr(0, e));
    std::int64_t exposant = e < texte.size() ? entierDecimal(texte.substr(e + 1)).value_or(0) : 0;
    if (const auto point = chiffres.find('.'); point != std::string::npos) {
      exposant -= static_cast<std::int64_t>(chiffres.size() - point - 1);
      chiffres.erase(point, 1);
    }
    for (; exposant < 0 && !chiffres.empty(); ++exposant) {
      fraction = fraction || chiffres.back() != '0';
      chiffres.pop_back();
    }
    constexpr int chiffresMax = 19;  // of 64 bits
    if (exposant > chiffresMax) return;
    entier = entierDecimal(chiffres.append(static_cast<std::size_t>(exposant), '0'));
  }
};

/// A number as it is written, in the kind of node that JSON itself has no use for.
constexpr std::uint8_t marqueEcrit = 'n';

std::optional<Ecrit> ecrit(const Json& nombre) {
  const auto texte = nombreEcrit(nombre);
  return texte ? std::optional<Ecrit>(*texte) : std::nullopt;
}

/// The number that the text writes. The parser's own conversion may be off by one unit in the last
/// place; this one is exact, and where a double is too short for the integer part, it is the text itself.
/// An error when no double holds it.
Json decimal(std::string_view texte, Erreur& e) {
  Json exact = Json::parse(texte, nullptr, false);
  if (exact.is_discarded()) {
    e = boost::json::error::exponent_overflow;
  } else if (constexpr double entiersSurs = 9007199254740992.0;  // 2^53
             std::abs(exact.get<double>()) >= entiersSurs) {
    const auto entier = entierTronque(exact);
    const Ecrit ecrit(texte);
    if (entier != ecrit.entier || (entier && ecrit.fraction))
      return Json::binary({texte.begin(), texte.end()}, marqueEcrit);
  }
  return exact;
}

/// Whether a double holds the number that the parser converted to `d`; an error when none does.
bool representable(double d, std::string_view texte, Erreur& e) {
  if (!(std::abs(d) < 1e308)) decimal(texte, e);  // too close to the limit to trust
  return !e;
}

/// Builds a document, of the wanted members alone when they are named. The containers that are still open are
/// kept as pointers into it, which stay valid because a parent grows only once its child is closed.
class Batisseur : public Gestionnaire {
 public:
  Json racine;

  // Written out, so that `ouverts_` is not zeroed for every document.
  explicit Batisseur(const LectureJSON::Filtre& filtre) : filtre_(filtre) {}

  bool on_object_begin(Erreur&) { return ouvrir(Json::value_t::object); }
  bool on_object_end(std::size_t, Erreur&) { return fermer(); }
  bool on_array_begin(Erreur&) { return ouvrir(Json::value_t::array); }
  bool on_array_end(std::size_t, Erreur&) { return fermer(); }
  bool on_key_part(Morceau m, std::size_t, Erreur&) { return ecartes_ || accumuler(m); }
  bool on_key(Morceau m, std::size_t, Erreur&) {
    if (ecartes_) return true;
    std::string_view entiere(m.data(), m.size());
    if (!partiel_.empty()) {
      accumuler(m);
      entiere = partiel_;
    }
    if (voulue(entiere))
      cle_ = entiere;
    else
      ecartes_ = 1;
    partiel_.clear();
    return true;
  }
  bool on_string_part(Morceau m, std::size_t, Erreur&) { return ecartes_ || accumuler(m); }
  bool on_string(Morceau m, std::size_t, Erreur&) {
    if (!ecarter()) poser(Json(achever(m)));
    return true;
  }
  bool on_number_part(Morceau m, Erreur&) { return accumuler(m); }
  bool on_int64(std::int64_t n, Morceau, Erreur&) { return nombre(n); }
  bool on_uint64(std::uint64_t n, Morceau, Erreur&) { return nombre(n); }
  bool on_double(double d, Morceau m, Erreur& e) {
    const std::string texte = achever(m);
    if (ecarter()) return representable(d, texte, e);
    poser(decimal(texte, e));
    return !e;
  }
  bool on_bool(bool b, Erreur&) {
    if (!ecarter()) poser(Json(b));
    return true;
  }
  bool on_null(Erreur&) {
    if (!ecarter()) poser(Json(nullptr));
    return true;
  }

 private:
  bool voulue(std::string_view cle) const {
    return filtre_.cles.empty() || (filtre_.enTeteSeulement && profondeur_ > 1) ||
           std::ranges::binary_search(filtre_.cles, cle);
  }
  bool accumuler(Morceau m) {
    partiel_.append(m.data(), m.size());
    return true;
  }
  /// The whole of a text or number whose last part is `m`; most come in one part.
  std::string achever(Morceau m) {
    if (partiel_.empty()) return std::string(m.data(), m.size());
    accumuler(m);
    return std::exchange(partiel_, {});
  }
  template <class Entier>
  bool nombre(Entier n) {
    partiel_.clear();
    if (!ecarter()) poser(Json(n));
    return true;
  }
  /// Whether the value that was just read is of no use.
  bool ecarter() {
    if (ecartes_ > 1) return true;
    return std::exchange(ecartes_, 0) == 1;
  }
  Json* poser(Json valeur) {
    if (profondeur_ == 0) return &(racine = std::move(valeur));
    Json& parent = *ouverts_[profondeur_ - 1];
    if (parent.is_array()) return &parent.get_ref<Json::array_t&>().emplace_back(std::move(valeur));
    return &parent.get_ref<Json::object_t&>()
                .insert_or_assign(std::move(cle_), std::move(valeur))
                .first->second;
  }
  bool ouvrir(Json::value_t genre) {
    if (ecartes_) {
      ++ecartes_;
      return true;
    }
    Json* conteneur = poser(Json(genre));
    ouverts_[profondeur_++] = conteneur;
    return true;
  }
  bool fermer() {
    if (!ecartes_)
      --profondeur_;
    else if (--ecartes_ == 1)
      ecartes_ = 0;
    return true;
  }

  std::array<Json*, LectureJSON::profondeurMax> ouverts_;  // the parser refuses to go deeper
  std::size_t profondeur_ = 0;
  const LectureJSON::Filtre& filtre_;
  std::size_t ecartes_ = 0;  ///< within an unwanted member: one, and one more for each container open there
  std::string cle_;
  std::string partiel_;
};

/// Keeps one boolean member of the top-level object and forgets all the rest.
class ChercheurBooleen : public Gestionnaire {
 public:
  explicit ChercheurBooleen(std::string_view cle) : cherchee_(cle) {}
  std::optional<bool> trouve;

  bool on_object_begin(Erreur&) { return monter(); }
  bool on_object_end(std::size_t, Erreur&) { return descendre(); }
  bool on_array_begin(Erreur&) { return monter(); }
  bool on_array_end(std::size_t, Erreur&) { return descendre(); }
  bool on_key_part(Morceau m, std::size_t, Erreur&) {
    if (enTete()) cle_.append(m.data(), m.size());
    return true;
  }
  bool on_key(Morceau m, std::size_t, Erreur&) {
    if (!enTete()) return true;
    cle_.append(m.data(), m.size());
    attendue_ = cle_ == cherchee_;
    cle_.clear();
    return true;
  }
  bool on_string_part(Morceau, std::size_t, Erreur&) { return true; }
  bool on_string(Morceau, std::size_t, Erreur&) { return autre(); }
  bool on_number_part(Morceau, Erreur&) { return true; }
  bool on_int64(std::int64_t, Morceau, Erreur&) { return autre(); }
  bool on_uint64(std::uint64_t, Morceau, Erreur&) { return autre(); }
  bool on_double(double d, Morceau m, Erreur& e) {
    return representable(d, {m.data(), m.size()}, e) && autre();
  }
  bool on_bool(bool b, Erreur&) {
    if (enTete() && attendue_) trouve = b;
    attendue_ = false;
    return true;
  }
  bool on_null(Erreur&) { return autre(); }

 private:
  /// Asked of a key or of its value: within a top-level array, keys stand deeper.
  bool enTete() const { return profondeur_ == 1; }
  /// A value that is not a boolean: under the key looked for, it hides an earlier one.
  bool autre() {
    if (attendue_) trouve.reset();
    attendue_ = false;
    return true;
  }
  bool monter() {
    autre();
    ++profondeur_;
    return true;
  }
  bool descendre() {
    --profondeur_;
    return true;
  }

  std::string_view cherchee_;
  std::string cle_;
  std::size_t profondeur_ = 0;
  bool attendue_ = false;
};

boost::json::parse_options options() {
  boost::json::parse_options o;
  o.max_depth = LectureJSON::profondeurMax;
  return o;
}

struct Parcours {
  bool lisible;  ///< a value begins the text
  std::size_t octets;
};

template <class G>
Parcours parcourirDebut(boost::json::basic_parser<G>& analyseur, std::string_view texte) {
  Erreur erreur;
  const auto lus = analyseur.write_some(false, texte.data(), texte.size(), erreur);
  return {!erreur && analyseur.done(), lus};
}

template <class G>
bool parcourir(boost::json::basic_parser<G>& analyseur, std::string_view texte) {
  const auto [lisible, octets] = parcourirDebut(analyseur, texte);
  return lisible && octets == texte.size();
}

}  // namespace

namespace LectureJSON {

std::optional<Json> valeur(std::string_view texte) { return valeur(texte, {}); }

std::optional<Json> valeur(std::string_view texte, const Filtre& filtre) {
  boost::json::basic_parser<Batisseur> analyseur(options(), filtre);
  if (!parcourir(analyseur, texte)) return std::nullopt;
  return std::move(analyseur.handler().racine);
}

std::optional<Json> objet(std::string_view texte) { return objet(texte, {}); }

std::optional<Json> objet(std::string_view texte, const Filtre& filtre) {
  auto lu = valeur(texte, filtre);
  if (lu && !lu->is_object()) lu.reset();
  return lu;
}

Debut debut(std::string_view texte) {
  auto souples = options();
  souples.allow_trailing_commas = true;
  const Filtre tout;
  boost::json::basic_parser<Batisseur> analyseur(souples, tout);
  const auto [lisible, octets] = parcourirDebut(analyseur, texte);
  if (!lisible) return {{}, octets};
  return {std::move(analyseur.handler().racine), octets};
}

BooleenDeTete booleenDeTete(std::string_view texte, std::string_view cle) {
  boost::json::basic_parser<ChercheurBooleen> analyseur(options(), cle);
  if (!parcourir(analyseur, texte)) return {};
  return {true, analyseur.handler().trouve};
}

}  // namespace LectureJSON

std::optional<std::string_view> nombreEcrit(const Json& nombre) {
  if (!nombre.is_binary()) return std::nullopt;
  const auto& octets = nombre.get_binary();
  if (!octets.has_subtype() || octets.subtype() != marqueEcrit) return std::nullopt;
  return std::string_view(reinterpret_cast<const char*>(octets.data()), octets.size());
}

std::optional<double> reel(const Json& nombre) {
  if (const auto texte = nombreEcrit(nombre)) return Json::parse(*texte, nullptr, false).get<double>();
  if (!nombre.is_number()) return std::nullopt;
  return nombre.get<double>();
}

std::optional<std::int64_t> entierTronque(const Json& nombre) {
  if (const auto e = ecrit(nombre)) return e->entier;
  if (nombre.is_number_unsigned()) {
    const auto n = nombre.get<std::uint64_t>();
    if (n > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
    return static_cast<std::int64_t>(n);
  }
  if (nombre.is_number_integer()) return nombre.get<std::int64_t>();
  if (!nombre.is_number_float()) return std::nullopt;
  const double d = std::trunc(nombre.get<double>());
  constexpr double borne = 9223372036854775808.0;  // 2^63, the first double that does not fit
  if (!(d >= -borne && d < borne)) return std::nullopt;
  return static_cast<std::int64_t>(d);
}

std::optional<std::int64_t> entierExact(const Json& nombre) {
  if (const auto e = ecrit(nombre)) return e->fraction ? std::nullopt : e->entier;
  const auto n = entierTronque(nombre);
  if (!n || !nombre.is_number_float() || nombre.get<double>() == static_cast<double>(*n)) return n;
  return std::nullopt;
}

std::optional<std::int64_t> entierDecimal(std::string_view texte) {
  if (texte.starts_with('+')) {
    texte.remove_prefix(1);
    if (texte.starts_with('-')) return std::nullopt;
  }
  std::int64_t n = 0;
  const auto [fin, erreur] = std::from_chars(texte.data(), texte.data() + texte.size(), n);
  if (erreur != std::errc{} || fin != texte.data() + texte.size()) return std::nullopt;
  return n;
}

namespace Champ {

const Json* membre(const Json& objet, std::string_view cle) {
  if (!objet.is_object()) return nullptr;
  const auto trouve = objet.find(cle);
  return trouve == objet.end() ? nullptr : &*trouve;
}

const std::string* chaine(const Json& objet, std::string_view cle) {
  const Json* v = membre(objet, cle);
  return v ? v->get_ptr<const std::string*>() : nullptr;
}

std::string texte(const Json& objet, std::string_view cle) {
  const std::string* t = chaine(objet, cle);
  return t ? *t : std::string{};
}

bool booleen(const Json& objet, std::string_view cle, bool defaut) {
  const Json* v = membre(objet, cle);
  if (!v) return defaut;
  if (v->is_boolean()) return v->get<bool>();
  if (const auto nombre = reel(*v)) return *nombre != 0;
  if (!v->is_string()) return defaut;
  const std::string mot = Texte::minuscules(Texte::rognerBlancs(v->get_ref<const std::string&>()));
  for (const char* faux : {"false", "non", "no", "0"})
    if (mot == faux) return false;
  for (const char* vrai : {"true", "oui", "yes", "1"})
    if (mot == vrai) return true;
  return defaut;
}

std::int64_t entier(const Json& objet, std::string_view cle, std::int64_t defaut) {
  const Json* v = membre(objet, cle);
  if (!v) return defaut;
  if (v->is_string())
    return entierDecimal(Texte::rognerBlancs(v->get_ref<const std::string&>())).value_or(defaut);
  return entierTronque(*v).value_or(defaut);
}

std::vector<std::string> liste(const Json& objet, std::string_view cle) {
  std::vector<std::string> pieces;
  const auto decouper = [&](std::string_view texte) {
    while (true) {
      const auto fin = texte.find_first_of(",;\n");
      if (const auto piece = Texte::rogner(texte.substr(0, fin)); !piece.empty()) pieces.emplace_back(piece);
      if (fin == std::string_view::npos) return;
      texte.remove_prefix(fin + 1);
    }
  };
  const Json* v = membre(objet, cle);
  if (v && v->is_string()) decouper(v->get_ref<const std::string&>());
  if (v && v->is_array())
    for (const Json& element : *v)
      if (element.is_string()) decouper(element.get_ref<const std::string&>());
  return pieces;
}

}  // namespace Champ
}  // namespace tarnavelle
