#include "Socle/EcritureJSON.hpp"

#include <charconv>
#include <cmath>

#include "Socle/Texte.hpp"

namespace tarnavelle::EcritureJSON {
namespace {

enum class Style { compact, lisible };

constexpr std::size_t grandTexte = 4096;  // bytes

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
      case Json::value_t::binary:
      case Json::value_t::discarded: valide_ = false; break;
    }
  }

  void texte(std::string_view t) {
    // A large text would otherwise be moved again and again while the output grows.
    if (t.size() > grandTexte) sortie_.reserve(sortie_.size() + t.size() + t.size() / 8);
    sortie_ += '"';
    std::size_t debut = 0;  // what precedes it is written
    std::size_t i = 0;
    while ((i += Texte::plageOrdinaire(t.substr(i))) < t.size()) {
      if (static_cast<unsigned char>(t[i]) >= 0x80) {
        const auto n = Texte::longueurSequence(t.substr(i));
        if (n == 0) {
          valide_ = false;
          return;
        }
        i += n;
        continue;
      }
      sortie_.append(t, debut, i - debut);
      debut = echapper(t[i]) ? i + 1 : i;
      ++i;
    }
    sortie_.append(t, debut);
    sortie_ += '"';
  }

  template <class Entier>
  void entier(Entier n) {
    char tampon[24];
    sortie_.append(tampon, std::to_chars(tampon, tampon + sizeof tampon, n).ptr);
  }

  /// Writes the escape of a character, or only its backslash when the character itself follows it;
  /// returns whether the character is written.
  bool echapper(char c) {
    sortie_ += '\\';
    switch (c) {
      case '"':
      case '\\': return false;
      case '\b': sortie_ += 'b'; break;
      case '\f': sortie_ += 'f'; break;
      case '\n': sortie_ += 'n'; break;
      case '\r': sortie_ += 'r'; break;
      case '\t': sortie_ += 't'; break;
      default: {
        constexpr char chiffres[] = "0123456789abcdef";
        sortie_ += "u00";
        sortie_ += chiffres[static_cast<unsigned char>(c) >> 4];
        sortie_ += chiffres[static_cast<unsigned char>(c) & 15];
      }
    }
    return true;
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
