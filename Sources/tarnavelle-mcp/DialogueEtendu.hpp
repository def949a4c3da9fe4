// The bridge as it speaks today's protocol: versions, several calls at once, cancellation, progress. Lines go
// in on one thread; their replies leave as they are ready, from any.
// https://modelcontextprotocol.io/specification/2025-11-25/basic, and the versions before it.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "AppelsEnCours.hpp"
#include "LecteurLignes.hpp"
#include "Porte/MCPEtendu.hpp"
#include "Repartiteur.hpp"

namespace tarnavelle {

class DialogueEtendu {
 public:
  /// Whether the environment asks for it: by exactly this value.
  static bool demande(const Variables& environnement) {
    return environnement.octets("TARNAVELLE_MCP_ETENDU") == "1";
  }

  /// Replies go to `sortie`, a file descriptor.
  DialogueEtendu(Repartiteur::Monde monde, int sortie,
                 std::chrono::milliseconds battement = AppelsEnCours::cadence)
      : monde_(std::move(monde)), ecrivain_(sortie), appels_(monde_, ecrivain_, battement) {}

  /// With `entree`, a descriptor, no other line has come yet: it would come from there.
  void recevoir(const LecteurLignes::Ligne& ligne, std::optional<int> entree = {});

  /// No line comes any more. Returns once all that is owed is answered.
  void finir() { appels_.finir(); }

 private:
  using Vers = std::shared_ptr<Destination>;

  void recevoirLot(Json messages);
  void traiter(Json& message, const Vers& vers, std::optional<int> entree = {});
  void appeler(Json id, Json& params, const Vers& vers, std::optional<int> entree);
  std::optional<std::string> repondre(const std::string& methode, const Json& id, const Json& params);
  std::string ligneErreur(PorteMCP::Identifiant id, PorteMCP::CodeErreur code, std::string_view message) const;
  std::string guide() const;

  const Repartiteur::Monde monde_;
  Ecrivain ecrivain_;
  MCPEtendu::Version version_ = MCPEtendu::derniere;
  std::optional<std::string> outils_;  ///< of that version, written once
  AppelsEnCours appels_;
};

/// As `servir`, until the end of input.
void servirEtendu(int entree, DialogueEtendu& dialogue);

}  // namespace tarnavelle
