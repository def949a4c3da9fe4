// What each JSON-RPC request means. Keeps nothing between requests but the door's connection.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "Appel/AppelPorte.hpp"
#include "Porte/PorteControle.hpp"
#include "Porte/PorteMCP.hpp"
#include "Socle/Environnement.hpp"
#include "Socle/LectureJSON.hpp"

namespace tarnavelle {

class Repartiteur {
 public:
  /// What is read of a request.
  static const LectureJSON::Filtre membresLus;

  /// What the dispatcher reads of the outside, asked afresh at every call.
  struct Monde {
    std::function<Variables()> environnement = Variables::duProcessus;
    std::string binaireMCP;  ///< the path this process was started by
    BornesHTTP bornes = AppelPorte::bornes;
  };

  explicit Repartiteur(Monde monde) : monde_(std::move(monde)), appel_(monde_.bornes) {}

  /// The reply line to one request, without its line feed; nothing when it must not be answered.
  std::optional<std::string> traiter(Json message);

 private:
  std::optional<std::string> repondre(Json& message);
  PorteMCP::ResultatAppel appeler(const std::string& outil, Json arguments);

  Monde monde_;
  AppelPorte appel_;
};

}  // namespace tarnavelle
