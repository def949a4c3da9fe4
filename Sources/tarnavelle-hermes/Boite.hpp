// The box in which a message is written: its text, where the cursor stands, and the lines that show of it. A
// plain value.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "Clavier.hpp"

namespace tarnavelle {

/// A text on lines of at most that many columns; `mots`: broken between words where it can be. One line at
/// least.
std::vector<std::string> enLignes(std::string_view texte, std::size_t colonnes, bool mots);

class Boite {
 public:
  const std::string& texte() const { return texte_; }
  bool vide() const { return texte_.empty(); }

  void inserer(std::string_view texte);
  /// A key that changes the text or moves the cursor; false for any other.
  bool toucher(Frappe::Touche touche);
  /// What it holds, which it no longer does.
  std::string prendre();

  struct Vue {
    std::vector<std::string> lignes;  ///< harmless
    std::size_t ligne = 0;            ///< of the cursor
    std::size_t colonne = 0;
    bool suite = false;  ///< there is more above or below
  };
  /// At most that many lines, those around the cursor.
  Vue vue(std::size_t colonnes, std::size_t lignesMax) const;

 private:
  std::size_t avant(std::size_t ou) const;
  std::size_t apres(std::size_t ou) const;
  std::size_t debutDeLigne(std::size_t ou) const;
  std::size_t finDeLigne(std::size_t ou) const;
  void monter(bool vers);

  std::string texte_;
  std::size_t curseur_ = 0;  ///< bytes before it
};

}  // namespace tarnavelle
