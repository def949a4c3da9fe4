// The text model of the intent engine, asked over the network. One thread at a time; the caller waits.
#pragma once

#include <chrono>
#include <string>

#include "Reseau/ClientHTTP.hpp"
#include "Socle/Resultat.hpp"
#include "Voix/RequeteIntentions.hpp"

namespace tarnavelle {

class ModeleTexte {
 public:
  static constexpr std::chrono::seconds attente{30};
  static constexpr std::size_t reponseMax = std::size_t{1024} * 1024;  ///< bytes

  explicit ModeleTexte(AccesTexte acces) : acces_(std::move(acces)) {}

  /// What the model makes of the sentence; or why it said nothing, in French. The key appears nowhere.
  Resultat<LectureVerdict, std::string> demander(const RequeteIntentions::Demande& demande);

 private:
  AccesTexte acces_;
  ClientHTTP client_;
};

}  // namespace tarnavelle
