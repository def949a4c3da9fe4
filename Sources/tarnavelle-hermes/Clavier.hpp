// What is typed on a terminal in raw mode, told key by key: texts, bracketed pastes, keys; whatever the pieces
// that the bytes come in. A plain value, for one thread at a time.
#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarnavelle {

struct Frappe {
  struct saisie {
    std::string texte;  ///< well-formed UTF-8 without control characters
    bool operator==(const saisie&) const = default;
  };
  struct collage {
    std::string texte;  ///< the same, with line feeds and tabs
    bool operator==(const collage&) const = default;
  };
  enum class Touche {
    entree,
    nouvelleLigne,
    tabulation,
    retourArriere,
    supprimer,
    gauche,
    droite,
    haut,
    bas,
    debut,
    fin,
    vider,       ///< ctrl+u
    finDeLigne,  ///< ctrl+k
    mot,         ///< ctrl+w
    echap,
    ctrlC,
    ctrlD,
    ctrlL,
  };

  std::variant<saisie, collage, Touche> cas;
  bool operator==(const Frappe&) const = default;
};

class Clavier {
 public:
  static constexpr std::size_t collageMax = std::size_t{4}
                                            << 20;  ///< bytes of a paste; the rest is passed over

  /// What these bytes end.
  std::vector<Frappe> lire(std::string_view octets);
  /// Nothing has followed for a moment: an Esc was a key of its own.
  std::vector<Frappe> calme();
  /// Whether `calme` would tell something.
  bool enSuspens() const { return !reste_.empty() && !enCollage_; }

 private:
  std::vector<Frappe> avancer(bool calme);

  std::string reste_;
  std::string collage_;
  bool enCollage_ = false;
};

}  // namespace tarnavelle
