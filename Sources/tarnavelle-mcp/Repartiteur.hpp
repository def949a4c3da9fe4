// What each JSON-RPC line means: a line goes in, its reply comes out. Keeps nothing between requests but the
// door's connection, and what `PorteControle` remembers of an address. One thread.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Appel/AppelPorte.hpp"
#include "LecteurLignes.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Environnement.hpp"

namespace tarnavelle {

class Repartiteur {
 public:
  /// What the dispatcher reads of the outside, asked afresh at every call.
  struct Monde {
    std::function<Variables()> environnement = Variables::duProcessus;
    std::string binaireMCP;  ///< the path this process was started by
    BornesHTTP bornes = AppelPorte::bornes;
  };

  explicit Repartiteur(Monde monde) : monde_(std::move(monde)), appel_(monde_.bornes) {}

  /// The reply to one line, without its line feed; nothing when it must not be answered. What is no JSON
  /// object, or is too long to be read, is answered as unreadable.
  std::optional<std::string> repondre(const LecteurLignes::Ligne& ligne);

 private:
  std::optional<std::string> traiter(Json& message);
  PorteMCP::ResultatAppel appeler(const std::string& outil, Json arguments);

  Monde monde_;
  AppelPorte appel_;
};

}  // namespace tarnavelle
