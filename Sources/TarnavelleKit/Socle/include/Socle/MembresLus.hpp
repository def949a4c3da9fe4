// Looking into a document of which only some members were built (LectureJSON::Filtre). The compiler checks each
// key that is asked for against those of the filter: a reader cannot ask for one that its filter leaves out.
// Safe from any thread, on a document that no one changes.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "Socle/LectureJSON.hpp"

namespace tarnavelle {

/// The keys of these lists, as a filter takes them.
template <std::size_t... n>
consteval auto clesReunies(const std::array<std::string_view, n>&... listes) {
  std::array<std::string_view, (n + ...)> toutes;
  auto fin = toutes.begin();
  ((fin = std::copy(listes.begin(), listes.end(), fin)), ...);
  std::sort(toutes.begin(), toutes.end());
  return toutes;
}

/// A value of such a document, or none: a view. `cles` is what `clesReunies` gives. What is asked of no value,
/// or of one of another type, is none.
template <const auto& cles>
class MembresLus {
 public:
  /// What the text is read with.
  static constexpr LectureJSON::Filtre filtre{.cles = cles};

  /// One of the keys: any other does not compile.
  class Cle {
   public:
    consteval Cle(const char* texte) : Cle(std::string_view(texte)) {}
    std::string_view texte() const { return texte_; }

   private:
    friend MembresLus;
    consteval explicit Cle(std::string_view texte) : texte_(texte) {
      if (!std::ranges::binary_search(cles, texte)) throw "a key that is not among those of the filter";
    }
    std::string_view texte_;
  };

  /// Some of the keys.
  template <std::size_t n>
  static consteval std::array<Cle, n> liste(const std::array<std::string_view, n>& textes) {
    return verifiees(textes, std::make_index_sequence<n>());
  }

  explicit MembresLus(const Json& valeur) : valeur_(&valeur) {}

  /// Whether there is a value, and one of that type.
  explicit operator bool() const { return valeur_ != nullptr; }
  bool est(Json::value_t genre) const { return valeur_ && valeur_->type() == genre; }

  /// The member of an object.
  MembresLus operator[](const Cle& cle) const {
    return MembresLus(valeur_ ? Champ::membre(*valeur_, cle.texte()) : nullptr);
  }

  /// A string, or null.
  const std::string* chaine() const { return valeur_ ? valeur_->get_ptr<const std::string*>() : nullptr; }
  /// A string, else the empty text.
  std::string_view texte() const { return chaine() ? std::string_view(*chaine()) : std::string_view(); }
  /// The first string under these keys that is not empty, or null.
  const std::string* premierTexte(std::span<const Cle> aEssayer) const {
    for (const Cle cle : aEssayer)
      if (const std::string* texte = (*this)[cle].chaine(); texte && !texte->empty()) return texte;
    return nullptr;
  }
  /// A number.
  std::optional<double> reel() const { return valeur_ ? tarnavelle::reel(*valeur_) : std::nullopt; }

  /// The elements of an array.
  class Iterateur {
   public:
    explicit Iterateur(const Json* element) : element_(element) {}
    MembresLus operator*() const { return MembresLus(element_); }
    Iterateur& operator++() {
      ++element_;
      return *this;
    }
    bool operator==(const Iterateur&) const = default;

   private:
    const Json* element_;
  };
  Iterateur begin() const { return Iterateur(elements().data()); }
  Iterateur end() const { return Iterateur(elements().data() + elements().size()); }
  /// The first of them.
  MembresLus premier() const { return MembresLus(elements().empty() ? nullptr : elements().data()); }

 private:
  explicit MembresLus(const Json* valeur) : valeur_(valeur) {}

  template <std::size_t n, std::size_t... rang>
  static consteval std::array<Cle, n> verifiees(const std::array<std::string_view, n>& textes,
                                                std::index_sequence<rang...>) {
    return {Cle(textes[rang])...};
  }

  std::span<const Json> elements() const {
    const auto* tableau = valeur_ ? valeur_->get_ptr<const Json::array_t*>() : nullptr;
    return tableau ? std::span(tableau->data(), tableau->size()) : std::span<const Json>();
  }

  const Json* valeur_;
};

}  // namespace tarnavelle
