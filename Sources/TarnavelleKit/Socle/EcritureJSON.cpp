#include "Socle/EcritureJSON.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "Socle/LectureJSON.hpp"
#include "Socle/Texte.hpp"

namespace tarnavelle::EcritureJSON {
namespace {

enum class Style { compact, lisible };

constexpr std::size_t courtMax = 512;      ///< bytes of a short text
constexpr std::size_t grandTexte = 4096;   ///< bytes from which room is made at once
constexpr std::size_t echappementMax = 6;  ///< bytes of an escape: backslash, "u", four digits

class Ecrivain {
 public:
  Ecrivain(std::string& sortie, Style style) : sortie_(sortie), lisible_(style == Style::lisible) {}

  /// Appends the value; false when JSON has no form for something in it, the output as it was.
  bool ecrire(const Json& v) {
    return tenter([&] { valeur(v); });
  }

  /// The same for one text.
  bool ecrireTexte(std::string_view t) {
    return tenter([&] { texte(t); });
  }

 private:
  template <class Ecriture>
  bool tenter(Ecriture ecriture) {
    const auto debut = sortie_.size();
    ecriture();
    if (!valide_) sortie_.resize(debut);
    return valide_;
  }

  void valeur(const Json& v) {
    switch (v.type()) {
      case Json::value_t::null: sortie_ += "null"; break;
      case Json::value_t::boolean: sortie_ += v.get<bool>() ? "true" : "false"; break;
      case Json::value_t::number_integer: entier(v.get<std::int64_t>()); break;
      case Json::value_t::number_unsigned: entier(v.get<std::uint64_t>()); break;
      case Json::value_t::number_float:
        if (!std::isfinite(v.get<double>())) valide_ = false;
        sortie_ += v.dump();
        break;
      case Json::value_t::string: texte(v.get_ref<const std::string&>()); break;
      case Json::value_t::array:
        contenu('[', ']', v.get_ref<const Json::array_t&>(), [&](const Json& e) { valeur(e); });
        break;
      case Json::value_t::object:
        contenu('{', '}', v.get_ref<const Json::object_t&>(), [&](const auto& membre) {
          texte(membre.first);
          sortie_ += lisible_ ? " : " : ":";
          valeur(membre.second);
        });
        break;
      case Json::value_t::binary: {
        const auto nombre = nombreEcrit(v);
        sortie_ += nombre.value_or("");
        valide_ = valide_ && nombre;
        break;
      }
      case Json::value_t::discarded: valide_ = false; break;
    }
  }

  void texte(std::string_view t) {
    sortie_ += '"';
    if (t.size() <= courtMax)
      texteCourt(t);
    else
      texteLong(t);
    sortie_ += '"';
  }

  /// Byte by byte: runs are shorter than what it costs to look for their ends.
  void texteCourt(std::string_view t) {
    char place[courtMax * echappementMax];
    char* fin = place;
    for (std::size_t i = 0; i < t.size();) {
      const char c = t[i];
      if (Texte::ordinaire(c)) {
        *fin++ = c;
        ++i;
      } else if (Texte::ascii(c)) {
        fin = echapper(c, fin);
        ++i;
      } else {
        const auto n = sequence(t.substr(i));
        fin = std::copy_n(t.data() + i, n, fin);
        i += n;
      }
    }
    sortie_.append(place, fin);
  }

  /// In runs that stand as they are.
  void texteLong(std::string_view t) {
    // A large text would otherwise be moved again and again while the output grows.
    if (t.size() > grandTexte) sortie_.reserve(sortie_.size() + t.size() + t.size() / 8);
    std::size_t debut = 0;  // what precedes it is written
    for (std::size_t i = 0; (i += Texte::plageOrdinaire(t.substr(i))) < t.size();) {
      if (!Texte::ascii(t[i])) {
        i += sequence(t.substr(i));
        continue;
      }
      char echappement[echappementMax];
      sortie_.append(t, debut, i - debut).append(echappement, echapper(t[i], echappement));
      debut = ++i;
    }
    sortie_.append(t, debut);
  }

  /// Length of the UTF-8 sequence that starts a text; an invalid byte makes the whole invalid.
  std::size_t sequence(std::string_view t) {
    const auto n = Texte::longueurSequence(t);
    valide_ = valide_ && n > 0;
    return std::max<std::size_t>(n, 1);
  }

  template <class Entier>
  void entier(Entier n) {
    char tampon[24];
    sortie_.append(tampon, std::to_chars(tampon, tampon + sizeof tampon, n).ptr);
  }

  /// Writes the escape of an ASCII character and returns its end.
  static char* echapper(char c, char* fin) {
    *fin++ = '\\';
    switch (c) {
      case '"':
      case '\\': *fin++ = c; return fin;
      case '\b': *fin++ = 'b'; return fin;
      case '\f': *fin++ = 'f'; return fin;
      case '\n': *fin++ = 'n'; return fin;
      case '\r': *fin++ = 'r'; return fin;
      case '\t': *fin++ = 't'; return fin;
      default: break;
    }
    constexpr char chiffres[] = "0123456789abcdef";
    for (const char e : {'u', '0', '0', chiffres[c >> 4], chiffres[c & 15]}) *fin++ = e;
    return fin;
  }

  template <class Elements, class Ecrire>
  void contenu(char ouvrante, char fermante, const Elements& elements, Ecrire ecrire) {
    sortie_ += ouvrante;
    ++niveau_;
    bool premier = true;
    for (const auto& element : elements) {
      if (!premier) sortie_ += ',';
      premier = false;
      allerALaLigne();
      ecrire(element);
    }
    --niveau_;
    if (!premier) allerALaLigne();
    sortie_ += fermante;
  }

  void allerALaLigne() {
    if (!lisible_) return;
    sortie_ += '\n';
    sortie_.append(2 * niveau_, ' ');
  }

  std::string& sortie_;
  std::size_t niveau_ = 0;
  bool lisible_;
  bool valide_ = true;
};

std::optional<std::string> ecrire(const Json& valeur, Style style) {
  std::string texte;
  if (!Ecrivain(texte, style).ecrire(valeur)) return std::nullopt;
  return texte;
}

}  // namespace

bool ajouter(std::string& texte, const Json& valeur) { return Ecrivain(texte, Style::compact).ecrire(valeur); }

bool ajouterTexte(std::string& sortie, std::string_view texte) {
  return Ecrivain(sortie, Style::compact).ecrireTexte(texte);
}

std::optional<std::string> compacte(const Json& valeur) { return ecrire(valeur, Style::compact); }

std::optional<std::string> lisible(const Json& valeur) { return ecrire(valeur, Style::lisible); }

}  // namespace tarnavelle::EcritureJSON
